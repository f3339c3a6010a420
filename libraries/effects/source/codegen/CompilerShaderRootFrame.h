#pragma once

#include "codegen/CompilerShaderRoot.h"

namespace Tarsel::Effects
{

// Entry points of a renderer effect: one frame, rendered by the root's Render.
class CompilerShaderRootFrame : public CompilerShaderRoot
{
public:
	CompilerShaderRootFrame(IMgrEffects* mgrEffects, IReferenceGraph* referenceGraph, IQLShader* qlShader);

	static IQLShader::Type GetType() { return IQLShader::kType_Frame; }
};

} // namespace Tarsel::Effects
