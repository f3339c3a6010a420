#include "codegen/AttributeVertexCoord.h"

#include "codegen/SyntaxBuild.h"

namespace Tarsel::Effects
{

namespace
{

// Normals go by the inverse transpose so that they stay perpendicular under non-uniform scaling.
const char* MatrixOf(TransformationCoord transformation)
{
	switch (transformation)
	{
	case kTransformation_Tangent:
		return "ql_PrimitiveTransformMatrix";
	case kTransformation_Normal:
		return "ql_PrimitiveTransformMatrixInverseTranspose";
	default:
		return nullptr;
	}
}

} // namespace

bool AttributeVertexCoord::Init(TypeSpecifier type, const std::string& name,
                                TransformationCoord transformation)
{
	_eTransformation = transformation;
	return _Init(type, name, kStorage_Varying);
}

bool AttributeVertexCoord::CollectTransformation(Module* module, CompoundStatement* body)
{
	Expression* value = BuildVariable(module, _sNameAttribute);
	if (const char* matrix = MatrixOf(_eTransformation))
	{
		FunctionCall* rotation = module->CreateFunctionCall(module->CreateType(kType_Mat3));
		rotation->AddParameter(BuildVariable(module, matrix));
		value = module->CreateBinaryOperator(kOperator_Multiply, rotation, value);
	}
	AddAssignment(module, body, BuildVariable(module, _sNameVarying), value);
	return true;
}

} // namespace Tarsel::Effects
