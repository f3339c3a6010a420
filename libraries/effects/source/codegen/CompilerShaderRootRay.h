#pragma once

#include "codegen/CompilerShaderRoot.h"

namespace Tarsel::Effects
{

class ShaderVertex;

// Entry points of a surface effect, which also read the varyings of its vertex stage.
class CompilerShaderRootRay : public CompilerShaderRoot
{
public:
	CompilerShaderRootRay(IMgrEffects* mgrEffects, ShaderVertex* vertex, IReferenceGraph* referenceGraph,
	                      IQLShader* qlShader);

	static IQLShader::Type GetType() { return IQLShader::kType_Ray; }

protected:
	bool _CollectVertexAttributeDeclarations(Module* module) override;

	ShaderVertex* _pVertex;
};

} // namespace Tarsel::Effects
