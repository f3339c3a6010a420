#pragma once

#include "QlslTypes.h"

#include <string_view>
#include <vector>

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
	bool writable; // outputs of the stage; everything else is read-only input
};

// One concrete signature of a built-in function.
struct BuiltinOverload
{
	std::string_view name;
	Type result;
	Type parameters[4];
	int count = 0;
	unsigned stages = 0;
	bool constant = false; // with constant arguments the call is a constant expression
};

// Null when the name is not built in for that stage.
const BuiltinVariable* FindBuiltinVariable(std::string_view name, unsigned stage);
// Every overload of a built-in function of any stage; null when the name is no built-in function.
const std::vector<BuiltinOverload>* FindBuiltinOverloads(std::string_view name);
// Whether the name is built in for some stage (for a clearer message when used in the wrong one).
bool IsBuiltinName(std::string_view name);

} // namespace Qlsl
} // namespace Tarsel
