#pragma once

#include "quillon/IQLShader.h"

namespace Tarsel
{
class Result;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IMgrEffects;
class IReferenceGraph;
class ShaderVertex;

// What an effect kind compiles: the type of its graph and root shaders, and the root compiler. The vertex
// stage is only read by the ray kind.
struct PolicyCompilerRay
{
	static IQLShader::Type GetType() { return IQLShader::kType_Ray; }
	static bool Compile(IMgrEffects* mgrEffects, ShaderVertex* vertex, IReferenceGraph* referenceGraph,
	                    IQLShader* root, Result* result);
};

struct PolicyCompilerFrame
{
	static IQLShader::Type GetType() { return IQLShader::kType_Frame; }
	static bool Compile(IMgrEffects* mgrEffects, ShaderVertex* vertex, IReferenceGraph* referenceGraph,
	                    IQLShader* root, Result* result);
};

struct PolicyCompilerPrefixRay
{
	static IQLShader::Type GetType() { return IQLShader::kType_PrefixRay; }
	static bool Compile(IMgrEffects* mgrEffects, ShaderVertex* vertex, IReferenceGraph* referenceGraph,
	                    IQLShader* root, Result* result);
};

} // namespace Tarsel::Effects
