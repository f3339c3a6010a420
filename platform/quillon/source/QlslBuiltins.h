#pragma once

#include <string_view>

namespace Tarsel
{
namespace Qlsl
{

// Stage bits, one per IQLShader::Type.
enum StageMask : unsigned
{
	kStage_Ray = 1u << 0,
	kStage_Vertex = 1u << 1,
	kStage_Frame = 1u << 2,
	kStage_PrefixRay = 1u << 3,
	kStage_Tracing = kStage_Ray | kStage_Frame | kStage_PrefixRay,
	kStage_All = kStage_Tracing | kStage_Vertex
};

inline unsigned StageBit(int type)
{
	return (type >= 0 && type < 4) ? (1u << type) : 0u;
}

struct BuiltinVariable
{
	const char* name;
	const char* type;
	int arraySize; // 0: not an array
	unsigned stages;
};

// Return types: a type name, "$1" for the type of the first argument, "" when not tracked.
struct BuiltinFunction
{
	const char* name;
	int minArgs;
	int maxArgs;
	const char* returnType;
	unsigned stages;
};

// Null when the name is not built in for that stage.
const BuiltinVariable* FindBuiltinVariable(std::string_view name, unsigned stage);
// Any entry of that name for the stage, null when none; arity is checked by the caller.
const BuiltinFunction* FindBuiltinFunction(std::string_view name, unsigned stage);
// Whether the name is built in for some stage (for a clearer message when used in the wrong one).
bool IsBuiltinName(std::string_view name);

} // namespace Qlsl
} // namespace Tarsel
