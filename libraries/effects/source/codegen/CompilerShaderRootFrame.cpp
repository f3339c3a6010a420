#include "codegen/CompilerShaderRootFrame.h"

namespace Tarsel::Effects
{

CompilerShaderRootFrame::CompilerShaderRootFrame(IMgrEffects* mgrEffects, IReferenceGraph* referenceGraph,
                                                 IQLShader* qlShader)
    : CompilerShaderRoot(mgrEffects, referenceGraph, qlShader, Kind{"Render", false, nullptr})
{
}

} // namespace Tarsel::Effects
