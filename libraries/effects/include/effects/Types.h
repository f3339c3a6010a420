#pragma once

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

enum TransformationCoord
{
	kTransformation_Coord = 0,
	kTransformation_Normal = 1,
	kTransformation_Tangent = 2,
};

} // namespace Tarsel::Effects
