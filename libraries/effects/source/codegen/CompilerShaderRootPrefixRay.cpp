#include "codegen/CompilerShaderRootPrefixRay.h"

namespace Tarsel::Effects
{

CompilerShaderRootPrefixRay::CompilerShaderRootPrefixRay(IMgrEffects* mgrEffects,
                                                         IReferenceGraph* referenceGraph, IQLShader* qlShader)
    : CompilerShaderRoot(mgrEffects, referenceGraph, qlShader,
                         Kind{"Shade", true, "CompilerShaderRootPrefixRay::Compile SetString\n"})
{
}

} // namespace Tarsel::Effects
