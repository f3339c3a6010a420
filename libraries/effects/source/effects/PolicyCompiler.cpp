#include "effects/PolicyCompiler.h"

#include "codegen/CompilerShaderRootFrame.h"
#include "codegen/CompilerShaderRootPrefixRay.h"
#include "codegen/CompilerShaderRootRay.h"

namespace Tarsel::Effects
{

bool PolicyCompilerRay::Compile(IMgrEffects* mgrEffects, ShaderVertex* vertex,
                                IReferenceGraph* referenceGraph, IQLShader* root, Result* result)
{
	return CompilerShaderRootRay(mgrEffects, vertex, referenceGraph, root).Compile(result);
}

bool PolicyCompilerFrame::Compile(IMgrEffects* mgrEffects, ShaderVertex*, IReferenceGraph* referenceGraph,
                                  IQLShader* root, Result* result)
{
	return CompilerShaderRootFrame(mgrEffects, referenceGraph, root).Compile(result);
}

bool PolicyCompilerPrefixRay::Compile(IMgrEffects* mgrEffects, ShaderVertex*, IReferenceGraph* referenceGraph,
                                      IQLShader* root, Result* result)
{
	return CompilerShaderRootPrefixRay(mgrEffects, referenceGraph, root).Compile(result);
}

} // namespace Tarsel::Effects
