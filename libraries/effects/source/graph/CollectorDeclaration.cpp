#include "graph/CollectorDeclaration.h"

#include "codegen/IAttributeVertex.h"
#include "syntax/Module.h"

namespace Tarsel::Effects
{

bool CollectorDeclaration::Collect(TypeSpecifier type, const std::string& name)
{
	VariableDeclaration* declaration = _pModule->CreateVariableDeclaration(
	    _pModule->CreateType(type), _pModule->CreateString(name), nullptr);
	declaration->SetStorageQualifier(_eQualifier);
	_pModule->AddVariableDeclaration(_pModule->CreateDeclarationStatement(declaration));
	return true;
}

bool CollectorDeclarationAttributeRay::CollectAttributeVertex(const std::string&, IAttributeVertex* attribute)
{
	return attribute->CollectDeclarationsRay(_pModule);
}

} // namespace Tarsel::Effects
