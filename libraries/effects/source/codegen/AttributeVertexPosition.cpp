#include "codegen/AttributeVertexPosition.h"

#include "codegen/SyntaxBuild.h"

namespace Tarsel::Effects
{

bool AttributeVertexPosition::Init(TypeSpecifier type, const std::string& name)
{
	return _Init(type, name, kStorage_TransformedVarying, kType_Vec4, name + "_WorldSpace");
}

bool AttributeVertexPosition::CollectTransformation(Module* module, CompoundStatement* body)
{
	for (const std::string& target : {std::string("ql_Position"), _sNameVarying})
	{
		FunctionCall* position = module->CreateFunctionCall(module->CreateType(kType_Vec4));
		position->AddParameter(BuildVariable(module, _sNameAttribute));
		position->AddParameter(module->CreateFloatConstant(1.0));
		AddAssignment(module, body, BuildVariable(module, target), position);
	}
	return true;
}

} // namespace Tarsel::Effects
