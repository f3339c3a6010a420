#pragma once

#include <cstddef>

namespace Tarsel::Effects
{

// Node kinds. Values 28 to 31 and 34 name no node class; they only have text.
enum Class
{
	kClass_Expression = 0,
	kClass_Assignment = 1,
	kClass_BoolConstant = 2,
	kClass_IntConstant = 3,
	kClass_FloatConstant = 4,
	kClass_UnaryOperator = 5,
	kClass_PostOperator = 6,
	kClass_BinaryOperator = 7,
	kClass_Conditional = 8,
	kClass_Variable = 9,
	kClass_FieldSelection = 10,
	kClass_FunctionSelection = 11,
	kClass_Subscript = 12,
	kClass_FunctionCall = 13,
	kClass_Condition = 14,
	kClass_Statement = 15,
	kClass_EmptyStatement = 16,
	kClass_DeclarationStatement = 17,
	kClass_ExpressionStatement = 18,
	kClass_CompoundStatement = 19,
	kClass_SelectionStatement = 20,
	kClass_IterationStatement = 21,
	kClass_WhileStatement = 22,
	kClass_DoWhileStatement = 23,
	kClass_ForStatement = 24,
	kClass_JumpStatement = 25,
	kClass_Type = 26,
	kClass_UserType = 27,
	kClass_StructField = 28,
	kClass_StructVariableField = 29,
	kClass_StructArrayField = 30,
	kClass_StructFieldDeclaration = 31,
	kClass_Declaration = 32,
	kClass_VariableDeclaration = 33,
	kClass_DeclarationList = 34,
	kClass_FunctionParameter = 35,
	kClass_FunctionDefinition = 36,
	kClass_FunctionPrototype = 37,
	kClass_StructDefinition = 38,
	kClass_ClassDefinition = 39,
	kClass_InterfaceDefinition = 40,
	kClass_Module = 41,
};

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

enum TypeSpecifier
{
	kType_Void = 0,
	kType_Float = 1,
	kType_Int = 2,
	kType_Bool = 3,
	kType_Vec2 = 4,
	kType_Vec3 = 5,
	kType_Vec4 = 6,
	kType_BVec2 = 7,
	kType_BVec3 = 8,
	kType_BVec4 = 9,
	kType_IVec2 = 10,
	kType_IVec3 = 11,
	kType_IVec4 = 12,
	kType_Mat2 = 13,
	kType_Mat3 = 14,
	kType_Mat4 = 15,
	kType_Sampler2D = 16,
	kType_Sampler3D = 17,
	kType_SamplerCube = 18,
	kType_Primitive = 19,
	kType_UserDefined = 20,
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

enum TransformationCoord
{
	kTransformation_Coord = 0,
	kTransformation_Normal = 1,
	kTransformation_Tangent = 2,
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
