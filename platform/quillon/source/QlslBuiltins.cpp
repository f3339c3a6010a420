#include "QlslBuiltins.h"

#include <iterator>

namespace Tarsel
{
namespace Qlsl
{
namespace
{

// The whole built-in vocabulary of the device. docs/qlsl.md mirrors this table; change both together.
const BuiltinVariable kVariables[] = {
    // Vertex stage.
    {"ql_Position", "vec4", 0, kStage_Vertex},
    {"ql_PrimitiveTransformMatrix", "mat4", 0, kStage_All},
    {"ql_PrimitiveTransformMatrixInverseTranspose", "mat4", 0, kStage_All},
    // One ray count per output ray class for ray stages; frames spawn a single kind of ray.
    {"ql_OutputRayCount", "int", 8, kStage_Ray | kStage_PrefixRay},
    {"ql_OutputRayCount", "int", 0, kStage_Frame},
    // The ray being shaded.
    {"ql_RayOrigin", "vec3", 0, kStage_Ray | kStage_PrefixRay},
    {"ql_RayDirection", "vec3", 0, kStage_Ray | kStage_PrefixRay},
    {"ql_RayDepth", "int", 0, kStage_Ray | kStage_PrefixRay},
    {"ql_RayClass", "int", 0, kStage_Ray | kStage_PrefixRay},
    {"ql_RayContribution", "vec3", 0, kStage_Ray | kStage_PrefixRay},
    {"ql_HitDistance", "float", 0, kStage_Ray},
    // The frame being rendered.
    {"ql_PixelCoord", "ivec2", 0, kStage_Frame | kStage_PrefixRay},
    {"ql_FrameSize", "ivec2", 0, kStage_Frame | kStage_PrefixRay},
    {"ql_FrameIndex", "int", 0, kStage_All},
    {"ql_Time", "float", 0, kStage_All},
};

const BuiltinFunction kFunctions[] = {
    // Angles and trigonometry.
    {"radians", 1, 1, "$1", kStage_All},
    {"degrees", 1, 1, "$1", kStage_All},
    {"sin", 1, 1, "$1", kStage_All},
    {"cos", 1, 1, "$1", kStage_All},
    {"tan", 1, 1, "$1", kStage_All},
    {"asin", 1, 1, "$1", kStage_All},
    {"acos", 1, 1, "$1", kStage_All},
    {"atan", 1, 2, "$1", kStage_All},
    // Exponentials.
    {"pow", 2, 2, "$1", kStage_All},
    {"exp", 1, 1, "$1", kStage_All},
    {"log", 1, 1, "$1", kStage_All},
    {"exp2", 1, 1, "$1", kStage_All},
    {"log2", 1, 1, "$1", kStage_All},
    {"sqrt", 1, 1, "$1", kStage_All},
    {"inversesqrt", 1, 1, "$1", kStage_All},
    // Common.
    {"abs", 1, 1, "$1", kStage_All},
    {"sign", 1, 1, "$1", kStage_All},
    {"floor", 1, 1, "$1", kStage_All},
    {"ceil", 1, 1, "$1", kStage_All},
    {"round", 1, 1, "$1", kStage_All},
    {"trunc", 1, 1, "$1", kStage_All},
    {"fract", 1, 1, "$1", kStage_All},
    {"mod", 2, 2, "$1", kStage_All},
    {"min", 2, 2, "$1", kStage_All},
    {"max", 2, 2, "$1", kStage_All},
    {"clamp", 3, 3, "$1", kStage_All},
    {"mix", 3, 3, "$1", kStage_All},
    {"step", 2, 2, "", kStage_All},
    {"smoothstep", 3, 3, "", kStage_All},
    {"isnan", 1, 1, "", kStage_All},
    {"isinf", 1, 1, "", kStage_All},
    // Geometry.
    {"length", 1, 1, "float", kStage_All},
    {"distance", 2, 2, "float", kStage_All},
    {"dot", 2, 2, "float", kStage_All},
    {"cross", 2, 2, "vec3", kStage_All},
    {"normalize", 1, 1, "$1", kStage_All},
    {"faceforward", 3, 3, "$1", kStage_All},
    {"reflect", 2, 2, "$1", kStage_All},
    {"refract", 3, 3, "$1", kStage_All},
    // Matrices.
    {"matrixCompMult", 2, 2, "$1", kStage_All},
    {"transpose", 1, 1, "$1", kStage_All},
    {"determinant", 1, 1, "float", kStage_All},
    {"inverse", 1, 1, "$1", kStage_All},
    // Vector relations.
    {"lessThan", 2, 2, "", kStage_All},
    {"lessThanEqual", 2, 2, "", kStage_All},
    {"greaterThan", 2, 2, "", kStage_All},
    {"greaterThanEqual", 2, 2, "", kStage_All},
    {"equal", 2, 2, "", kStage_All},
    {"notEqual", 2, 2, "", kStage_All},
    {"any", 1, 1, "bool", kStage_All},
    {"all", 1, 1, "bool", kStage_All},
    {"not", 1, 1, "", kStage_All},
    // Textures: sampler, coordinate, optional lod or bias.
    {"texture", 2, 3, "vec4", kStage_All},
    {"texture2D", 2, 3, "vec4", kStage_All},
    {"texture3D", 2, 3, "vec4", kStage_All},
    {"textureCube", 2, 3, "vec4", kStage_All},
    {"textureLod", 3, 3, "vec4", kStage_All},
    {"textureSize", 1, 2, "", kStage_All},
    // Screen-space differentials exist only where rays travel in bundles.
    {"dFdx", 1, 1, "$1", kStage_Tracing},
    {"dFdy", 1, 1, "$1", kStage_Tracing},
    {"fwidth", 1, 1, "$1", kStage_Tracing},
    // Ray tracing: adds (output, value) to an output attachment.
    {"accumulate", 2, 2, "void", kStage_Tracing},
    // emitRay(class, origin, direction[, contribution]) queues a ray of an output class.
    {"emitRay", 3, 4, "void", kStage_Tracing},
    // traceShadow(origin, direction, maxDistance): 1.0 when unoccluded, 0.0 when blocked.
    {"traceShadow", 3, 3, "float", kStage_Tracing},
    // A uniform random number in [0, 1), different per ray.
    {"random", 0, 0, "float", kStage_Tracing},
};

template <class Entry, size_t N>
const Entry* FindIn(const Entry (&table)[N], std::string_view name, unsigned stage)
{
	for (const Entry& entry : table)
	{
		if ((entry.stages & stage) && name == entry.name)
			return &entry;
	}
	return nullptr;
}

} // namespace

const BuiltinVariable* FindBuiltinVariable(std::string_view name, unsigned stage)
{
	return FindIn(kVariables, name, stage);
}

const BuiltinFunction* FindBuiltinFunction(std::string_view name, unsigned stage)
{
	return FindIn(kFunctions, name, stage);
}

bool IsBuiltinName(std::string_view name)
{
	return FindIn(kVariables, name, kStage_All) || FindIn(kFunctions, name, kStage_All);
}

} // namespace Qlsl
} // namespace Tarsel
