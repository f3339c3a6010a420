#include "QlslBuiltins.h"

#include <string>
#include <unordered_map>

namespace Tarsel
{
namespace Qlsl
{
namespace
{

// The whole built-in vocabulary of the device. docs/qlsl.md mirrors these tables; change both together.
const BuiltinVariable kVariables[] = {
    // Vertex stage.
    {"ql_Position", "vec4", 0, kStage_Vertex, true},
    {"ql_PrimitiveTransformMatrix", "mat4", 0, kStage_All, false},
    {"ql_PrimitiveTransformMatrixInverseTranspose", "mat4", 0, kStage_All, false},
    // One ray count per output ray class for ray stages; frames spawn a single kind of ray.
    {"ql_OutputRayCount", "int", 8, kStage_Ray | kStage_PrefixRay, true},
    {"ql_OutputRayCount", "int", 0, kStage_Frame, true},
    // The ray being shaded.
    {"ql_RayOrigin", "vec3", 0, kStage_Ray | kStage_PrefixRay, false},
    {"ql_RayDirection", "vec3", 0, kStage_Ray | kStage_PrefixRay, false},
    {"ql_RayDepth", "int", 0, kStage_Ray | kStage_PrefixRay, false},
    {"ql_RayClass", "int", 0, kStage_Ray | kStage_PrefixRay, false},
    {"ql_RayContribution", "vec3", 0, kStage_Ray | kStage_PrefixRay, false},
    {"ql_HitDistance", "float", 0, kStage_Ray, false},
    // The frame being rendered.
    {"ql_PixelCoord", "ivec2", 0, kStage_Frame | kStage_PrefixRay, false},
    {"ql_FrameSize", "ivec2", 0, kStage_Frame | kStage_PrefixRay, false},
    {"ql_FrameIndex", "int", 0, kStage_All, false},
    {"ql_Time", "float", 0, kStage_All, false},
};

// Signatures as in GLSL 4.50. Families expand with one size for the whole signature: G float/vec2-4,
// GI int/ivec2-4, GB bool/bvec2-4, V vec2-4, VI ivec2-4, VB bvec2-4, M mat2-4.
struct Signature
{
	const char* name;
	const char* parameters; // space separated
	const char* result;
	unsigned stages;
	bool constant;
};

const unsigned kAll = kStage_All;
const unsigned kTrace = kStage_Tracing;

const Signature kSignatures[] = {
    // Angles and trigonometry.
    {"radians", "G", "G", kAll, true},
    {"degrees", "G", "G", kAll, true},
    {"sin", "G", "G", kAll, true},
    {"cos", "G", "G", kAll, true},
    {"tan", "G", "G", kAll, true},
    {"asin", "G", "G", kAll, true},
    {"acos", "G", "G", kAll, true},
    {"atan", "G G", "G", kAll, true},
    {"atan", "G", "G", kAll, true},
    // Exponentials.
    {"pow", "G G", "G", kAll, true},
    {"exp", "G", "G", kAll, true},
    {"log", "G", "G", kAll, true},
    {"exp2", "G", "G", kAll, true},
    {"log2", "G", "G", kAll, true},
    {"sqrt", "G", "G", kAll, true},
    {"inversesqrt", "G", "G", kAll, true},
    // Common.
    {"abs", "G", "G", kAll, true},
    {"abs", "GI", "GI", kAll, true},
    {"sign", "G", "G", kAll, true},
    {"sign", "GI", "GI", kAll, true},
    {"floor", "G", "G", kAll, true},
    {"ceil", "G", "G", kAll, true},
    {"round", "G", "G", kAll, true},
    {"trunc", "G", "G", kAll, true},
    {"fract", "G", "G", kAll, true},
    {"mod", "G float", "G", kAll, true},
    {"mod", "G G", "G", kAll, true},
    {"min", "G G", "G", kAll, true},
    {"min", "G float", "G", kAll, true},
    {"min", "GI GI", "GI", kAll, true},
    {"min", "GI int", "GI", kAll, true},
    {"max", "G G", "G", kAll, true},
    {"max", "G float", "G", kAll, true},
    {"max", "GI GI", "GI", kAll, true},
    {"max", "GI int", "GI", kAll, true},
    {"clamp", "G G G", "G", kAll, true},
    {"clamp", "G float float", "G", kAll, true},
    {"clamp", "GI GI GI", "GI", kAll, true},
    {"clamp", "GI int int", "GI", kAll, true},
    {"mix", "G G G", "G", kAll, true},
    {"mix", "G G float", "G", kAll, true},
    {"mix", "G G GB", "G", kAll, true},
    {"step", "G G", "G", kAll, true},
    {"step", "float G", "G", kAll, true},
    {"smoothstep", "G G G", "G", kAll, true},
    {"smoothstep", "float float G", "G", kAll, true},
    {"isnan", "G", "GB", kAll, true},
    {"isinf", "G", "GB", kAll, true},
    // Geometry.
    {"length", "G", "float", kAll, true},
    {"distance", "G G", "float", kAll, true},
    {"dot", "G G", "float", kAll, true},
    {"cross", "vec3 vec3", "vec3", kAll, true},
    {"normalize", "G", "G", kAll, true},
    {"faceforward", "G G G", "G", kAll, true},
    {"reflect", "G G", "G", kAll, true},
    {"refract", "G G float", "G", kAll, true},
    // Matrices.
    {"matrixCompMult", "M M", "M", kAll, true},
    {"transpose", "M", "M", kAll, true},
    {"determinant", "M", "float", kAll, true},
    {"inverse", "M", "M", kAll, true},
    // Vector relations.
    {"lessThan", "V V", "VB", kAll, true},
    {"lessThan", "VI VI", "VB", kAll, true},
    {"lessThanEqual", "V V", "VB", kAll, true},
    {"lessThanEqual", "VI VI", "VB", kAll, true},
    {"greaterThan", "V V", "VB", kAll, true},
    {"greaterThan", "VI VI", "VB", kAll, true},
    {"greaterThanEqual", "V V", "VB", kAll, true},
    {"greaterThanEqual", "VI VI", "VB", kAll, true},
    {"equal", "V V", "VB", kAll, true},
    {"equal", "VI VI", "VB", kAll, true},
    {"equal", "VB VB", "VB", kAll, true},
    {"notEqual", "V V", "VB", kAll, true},
    {"notEqual", "VI VI", "VB", kAll, true},
    {"notEqual", "VB VB", "VB", kAll, true},
    {"any", "VB", "bool", kAll, true},
    {"all", "VB", "bool", kAll, true},
    {"not", "VB", "VB", kAll, true},
    // Textures: sampler, coordinate, optional bias; textureLod with a level; textureSize of a level.
    {"texture", "sampler2D vec2", "vec4", kAll, false},
    {"texture", "sampler2D vec2 float", "vec4", kAll, false},
    {"texture", "sampler3D vec3", "vec4", kAll, false},
    {"texture", "sampler3D vec3 float", "vec4", kAll, false},
    {"texture", "samplerCube vec3", "vec4", kAll, false},
    {"texture", "samplerCube vec3 float", "vec4", kAll, false},
    {"texture2D", "sampler2D vec2", "vec4", kAll, false},
    {"texture2D", "sampler2D vec2 float", "vec4", kAll, false},
    {"texture3D", "sampler3D vec3", "vec4", kAll, false},
    {"texture3D", "sampler3D vec3 float", "vec4", kAll, false},
    {"textureCube", "samplerCube vec3", "vec4", kAll, false},
    {"textureCube", "samplerCube vec3 float", "vec4", kAll, false},
    {"textureLod", "sampler2D vec2 float", "vec4", kAll, false},
    {"textureLod", "sampler3D vec3 float", "vec4", kAll, false},
    {"textureLod", "samplerCube vec3 float", "vec4", kAll, false},
    {"textureSize", "sampler2D int", "ivec2", kAll, false},
    {"textureSize", "sampler3D int", "ivec3", kAll, false},
    {"textureSize", "samplerCube int", "ivec2", kAll, false},
    // The device's level-0 shorthand.
    {"textureSize", "sampler2D", "ivec2", kAll, false},
    {"textureSize", "sampler3D", "ivec3", kAll, false},
    {"textureSize", "samplerCube", "ivec2", kAll, false},
    // Screen-space differentials exist only where rays travel in bundles.
    {"dFdx", "G", "G", kTrace, false},
    {"dFdy", "G", "G", kTrace, false},
    {"fwidth", "G", "G", kTrace, false},
    // Ray tracing: adds value to the output attachment of an index.
    {"accumulate", "int float", "void", kTrace, false},
    {"accumulate", "int vec2", "void", kTrace, false},
    {"accumulate", "int vec3", "void", kTrace, false},
    {"accumulate", "int vec4", "void", kTrace, false},
    // emitRay(class, origin, direction[, contribution]) queues a ray of an output class.
    {"emitRay", "int vec3 vec3", "void", kTrace, false},
    {"emitRay", "int vec3 vec3 vec3", "void", kTrace, false},
    // traceShadow(origin, direction, maxDistance): 1.0 when unoccluded, 0.0 when blocked.
    {"traceShadow", "vec3 vec3 float", "float", kTrace, false},
    // A uniform random number in [0, 1), different per ray.
    {"random", "", "float", kTrace, false},
};

// The concrete type of a token for family size n; an error type when the family has no such size.
Type Resolve(std::string_view token, int n)
{
	struct Family
	{
		const char* token;
		BaseType base;
		int minSize;
		bool matrix;
	};
	static const Family kFamilies[] = {{"G", kBase_Float, 1, false}, {"GI", kBase_Int, 1, false},
	                                   {"GB", kBase_Bool, 1, false}, {"V", kBase_Float, 2, false},
	                                   {"VI", kBase_Int, 2, false},  {"VB", kBase_Bool, 2, false},
	                                   {"M", kBase_Float, 2, true}};
	for (const Family& family : kFamilies)
	{
		if (token != family.token)
			continue;
		if (n < family.minSize)
			return Type();
		return family.matrix ? Type::Matrix(n) : Type::Vector(family.base, n);
	}
	return BasicTypeNamed(token);
}

std::vector<std::string_view> Split(std::string_view text)
{
	std::vector<std::string_view> tokens;
	size_t start = 0;
	while (start < text.size())
	{
		size_t end = text.find(' ', start);
		if (end == std::string_view::npos)
			end = text.size();
		tokens.push_back(text.substr(start, end - start));
		start = end + 1;
	}
	return tokens;
}

// mod(float, float) comes from both of its signatures; one entry is enough.
bool Contains(const std::vector<BuiltinOverload>& overloads, const BuiltinOverload& candidate)
{
	for (const BuiltinOverload& overload : overloads)
	{
		bool same = overload.count == candidate.count;
		for (int i = 0; same && i < overload.count; ++i)
			same = overload.parameters[i] == candidate.parameters[i];
		if (same)
			return true;
	}
	return false;
}

// Adds the overloads of one signature: one per family size, or one when it names no family.
void Expand(const Signature& signature, std::vector<BuiltinOverload>& overloads)
{
	std::vector<std::string_view> tokens = Split(signature.parameters);
	tokens.push_back(signature.result);
	bool generic = false;
	for (std::string_view token : tokens)
		generic = generic || BasicTypeNamed(token).IsError();
	for (int n = generic ? 1 : 4; n <= 4; ++n)
	{
		BuiltinOverload overload;
		overload.name = signature.name;
		overload.stages = signature.stages;
		overload.constant = signature.constant;
		overload.count = int(tokens.size()) - 1;
		bool valid = true;
		for (int i = 0; i < overload.count; ++i)
		{
			overload.parameters[i] = Resolve(tokens[size_t(i)], n);
			valid = valid && !overload.parameters[i].IsError();
		}
		overload.result = Resolve(tokens.back(), n);
		if (valid && !overload.result.IsError() && !Contains(overloads, overload))
			overloads.push_back(overload);
	}
}

const std::unordered_map<std::string_view, std::vector<BuiltinOverload>>& Overloads()
{
	static const std::unordered_map<std::string_view, std::vector<BuiltinOverload>> overloads = []
	{
		std::unordered_map<std::string_view, std::vector<BuiltinOverload>> built;
		for (const Signature& signature : kSignatures)
			Expand(signature, built[signature.name]);
		return built;
	}();
	return overloads;
}

} // namespace

const BuiltinVariable* FindBuiltinVariable(std::string_view name, unsigned stage)
{
	for (const BuiltinVariable& entry : kVariables)
	{
		if ((entry.stages & stage) && name == entry.name)
			return &entry;
	}
	return nullptr;
}

const std::vector<BuiltinOverload>* FindBuiltinOverloads(std::string_view name)
{
	auto it = Overloads().find(name);
	return it == Overloads().end() ? nullptr : &it->second;
}

bool IsBuiltinName(std::string_view name)
{
	return FindBuiltinVariable(name, kStage_All) || FindBuiltinOverloads(name);
}

} // namespace Qlsl
} // namespace Tarsel
