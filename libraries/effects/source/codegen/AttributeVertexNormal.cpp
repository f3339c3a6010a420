#include "codegen/AttributeVertexNormal.h"

#include "codegen/SyntaxBuild.h"

namespace Tarsel::Effects
{

bool AttributeVertexNormal::Init(TypeSpecifier type, const std::string& name)
{
	return _Init(type, name, kStorage_TransformedVarying);
}

bool AttributeVertexNormal::CollectTransformation(Module* module, CompoundStatement* body)
{
	AddAssignment(module, body, BuildVariable(module, _sNameVarying), BuildVariable(module, _sNameAttribute));
	return true;
}

} // namespace Tarsel::Effects
