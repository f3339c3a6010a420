#pragma once

#include <cstddef>

// The node kinds, types and coordinate transformations that the exported interfaces name.
#include "effects/Types.h"

namespace Tarsel::Effects
{

// Operators of unary, postfix, binary and assignment nodes. In an Assignment, 0 is plain "=" and any
// other value the compound form of that operator.
enum Operator
{
	kOperator_Equal = 0,
	kOperator_Assign = 0,
	kOperator_NotEqual = 1,
	kOperator_Multiply = 2,
	kOperator_Divide = 3,
	kOperator_Modulo = 4,
	kOperator_Add = 5,
	kOperator_Subtract = 6,
	kOperator_ShiftLeft = 7,
	kOperator_ShiftRight = 8,
	kOperator_BitAnd = 9,
	kOperator_BitXor = 10,
	kOperator_BitOr = 11,
	kOperator_Increment = 12,
	kOperator_Decrement = 13,
	kOperator_Not = 14,
	kOperator_Complement = 15,
	kOperator_LogicalAnd = 16,
	kOperator_LogicalXor = 17,
	kOperator_LogicalOr = 18,
	kOperator_Less = 19,
	kOperator_Greater = 20,
	kOperator_LessEqual = 21,
	kOperator_GreaterEqual = 22,
	kOperator_Comma = 23,
};

enum JumpType
{
	kJump_Continue = 0,
	kJump_Break = 1,
	kJump_Return = 2,
};

enum StorageQualifier
{
	kStorage_None = 0,
	kStorage_Attribute = 1,
	kStorage_Varying = 2,
	kStorage_Reserved3 = 3,
	kStorage_TransformedVarying = 4,
	kStorage_TransformedInvariantVarying = 5,
	kStorage_Uniform = 6,
	kStorage_MutableUniform = 7,
	kStorage_RayAttribute = 8,
	kStorage_Input = 9,
	kStorage_Coord = 10,
};

enum PrecisionQualifier
{
	kPrecision_None = 0,
	kPrecision_High = 1,
	kPrecision_Medium = 2,
	kPrecision_Low = 3,
};

enum ParameterQualifier
{
	kParameter_None = 0,
	kParameter_In = 1,
	kParameter_Out = 2,
	kParameter_InOut = 3,
};

enum FunctionQualifier
{
	kFunction_None = 0,
	kFunction_Static = 1,
};

// Mark left on calls, prototypes and definitions by the unused-function pass.
enum Optimization
{
	kOptimization_Kept = 0,
	kOptimization_Empty = 1,
	kOptimization_NeverCalled = 2,
};

// Display texts; values outside a table give "Unknown" ("UNKNOWN" for type specifiers).
const char* ClassToString(Class eClass);
const char* OperatorToString(Operator eOperator);
const char* JumpTypeToString(JumpType eType);
const char* TypeSpecifierToString(TypeSpecifier eType);
const char* StorageQualifierToString(StorageQualifier eStorage);
const char* PrecisionQualifierToString(PrecisionQualifier ePrecision);
const char* ParameterQualifierToString(ParameterQualifier eQualifier);
const char* TransformationCoordToString(TransformationCoord eTransformation);

// Size of one value in bytes and its channel count; 0 outside the table or where the type has no value form.
size_t TypeSpecifierToSizeInBytes(TypeSpecifier eType);
int TypeSpecifierToCountChannels(TypeSpecifier eType);

} // namespace Tarsel::Effects
