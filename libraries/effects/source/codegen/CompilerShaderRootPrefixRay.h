#pragma once

#include "codegen/CompilerShaderRoot.h"

namespace Tarsel::Effects
{

// Entry points of a prefix-ray effect.
class CompilerShaderRootPrefixRay : public CompilerShaderRoot
{
public:
	CompilerShaderRootPrefixRay(IMgrEffects* mgrEffects, IReferenceGraph* referenceGraph,
	                            IQLShader* qlShader);

	static IQLShader::Type GetType() { return IQLShader::kType_PrefixRay; }
};

} // namespace Tarsel::Effects
