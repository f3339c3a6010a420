#include "syntax/Enumerations.h"

#include <iterator>

namespace Tarsel::Effects
{

namespace
{

template <class T, size_t N>
T Lookup(const T (&aTable)[N], int iIndex, T fallback)
{
	return iIndex >= 0 && static_cast<size_t>(iIndex) < N ? aTable[iIndex] : fallback;
}

const char* const s_aClassTexts[] = {"Expression",
                                     "Assignment",
                                     "Bool Constant",
                                     "Int Constant",
                                     "Float Constant",
                                     "Unary Operator",
                                     "Post Operator",
                                     "Binary Operator",
                                     "Conditional",
                                     "Variable",
                                     "Field Selection",
                                     "Function Selection",
                                     "Subscript",
                                     "Function Call",
                                     "Condition",
                                     "Statement",
                                     "Empty Statement",
                                     "Declaration Statement",
                                     "Expression Statement",
                                     "Compound Statement",
                                     "Selection Statement",
                                     "Iteration Statement",
                                     "While Statement",
                                     "Do While Statement",
                                     "For Statement",
                                     "Jump Statement",
                                     "Type",
                                     "User Type",
                                     "Struct Field",
                                     "Struct Variable Field",
                                     "Struct Array Field",
                                     "Struct Field Declaration",
                                     "Declaration",
                                     "Variable Declaration",
                                     "Declaration List",
                                     "Function Parameter",
                                     "Function Definition",
                                     "Function Prototype",
                                     "Struct Definition",
                                     "Class Definition",
                                     "Interface Definition",
                                     "Module"};

const char* const s_aOperatorTexts[] = {"==", "!=", "*", "/", "%",  "+",  "-",  "<<", ">>", "&",  "^",  "|",
                                        "++", "--", "!", "~", "&&", "^^", "||", "<",  ">",  "<=", ">=", ","};

const char* const s_aJumpTexts[] = {"continue", "break", "return"};

struct TypeInfo
{
	const char* pText;
	size_t nBytes;
	int nChannels;
};

const TypeInfo s_aTypes[] = {{"void", 0, 0},        {"float", 4, 1},     {"int", 4, 1},
                             {"bool", 4, 1},        {"vec2", 8, 2},      {"vec3", 12, 3},
                             {"vec4", 16, 4},       {"bvec2", 0, 2},     {"bvec3", 0, 3},
                             {"bvec4", 0, 4},       {"ivec2", 8, 2},     {"ivec3", 12, 3},
                             {"ivec4", 16, 4},      {"mat2", 0, 2},      {"mat3", 36, 3},
                             {"mat4", 64, 4},       {"sampler2D", 8, 1}, {"sampler3D", 8, 1},
                             {"samplerCube", 8, 1}, {"primitive", 4, 1}, {"USERDEFINED", 0, 0}};

// Values 3 and 10 have no text.
const char* const s_aStorageTexts[] = {"",        "attribute",           "varying",
                                       nullptr,   "transformed varying", "transformed invariant varying",
                                       "uniform", "mutable uniform",     "rayattribute",
                                       "input"};

const char* const s_aPrecisionTexts[] = {"", "highp", "mediump", "lowp"};
const char* const s_aParameterTexts[] = {"", "in", "out", "inout"};
const char* const s_aTransformationTexts[] = {"coord", "normal", "tangent"};

const char* const kUnknown = "Unknown";
const TypeInfo kUnknownType{"UNKNOWN", 0, 0};

} // namespace

const char* ClassToString(Class eClass)
{
	return Lookup(s_aClassTexts, eClass, kUnknown);
}

const char* OperatorToString(Operator eOperator)
{
	return Lookup(s_aOperatorTexts, eOperator, kUnknown);
}

const char* JumpTypeToString(JumpType eType)
{
	return Lookup(s_aJumpTexts, eType, kUnknown);
}

const char* TypeSpecifierToString(TypeSpecifier eType)
{
	return Lookup(s_aTypes, eType, kUnknownType).pText;
}

size_t TypeSpecifierToSizeInBytes(TypeSpecifier eType)
{
	return Lookup(s_aTypes, eType, kUnknownType).nBytes;
}

int TypeSpecifierToCountChannels(TypeSpecifier eType)
{
	return Lookup(s_aTypes, eType, kUnknownType).nChannels;
}

const char* StorageQualifierToString(StorageQualifier eStorage)
{
	const char* pText = Lookup<const char*>(s_aStorageTexts, eStorage, nullptr);
	return pText ? pText : kUnknown;
}

const char* PrecisionQualifierToString(PrecisionQualifier ePrecision)
{
	return Lookup(s_aPrecisionTexts, ePrecision, kUnknown);
}

const char* ParameterQualifierToString(ParameterQualifier eQualifier)
{
	return Lookup(s_aParameterTexts, eQualifier, kUnknown);
}

const char* TransformationCoordToString(TransformationCoord eTransformation)
{
	return Lookup(s_aTransformationTexts, eTransformation, kUnknown);
}

} // namespace Tarsel::Effects
