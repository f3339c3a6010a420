#include "objects/PrototypeParameterInterfaceSingle.h"

#include "core/Assert.h"
#include "effects/IShader.h"
#include "objects/ParameterInterfaceSingle.h"
#include "syntax/Syntax.h"

namespace Tarsel::Effects
{

bool PrototypeParameterInterfaceSingle::Init(const VariableDeclaration* pDecl, IPrototypeInterface* pTarget,
                                             const std::string& sName)
{
	_Init(pDecl, pTarget, nullptr, sName);
	_CheckInitializer();
	_sNameIndices = "InterfaceIndices" + _key.ToString();
	return true;
}

bool PrototypeParameterInterfaceSingle::Init(const VariableDeclaration* pDecl, IPrototypeShader* pTarget,
                                             const std::string& sName)
{
	_Init(pDecl, nullptr, pTarget, sName);
	_CheckInitializer();
	_sNameIndices = "InterfaceIndices" + _key.ToString();
	return true;
}

IParameter* PrototypeParameterInterfaceSingle::CreateParameter(IShader* pShader, Result* pResult)
{
	return ParameterInterfaceSingle::Create(_pMgrEffects, _pDecl, pShader->GetKeyString(), pResult);
}

// The initializer names the class of the default shader: Spot().
void PrototypeParameterInterfaceSingle::_CheckInitializer() const
{
	if (!_pDecl || !_pDecl->GetInitializer())
		return;
	TARSEL_ASSERT(_pDecl->GetInitializer()->GetClass() == kClass_FunctionCall);
	if (_pDecl->GetInitializer()->GetClass() != kClass_FunctionCall)
		return;
	const FunctionCall* pInit = static_cast<const FunctionCall*>(_pDecl->GetInitializer());
	const Type* pType = pInit->GetType();
	if (!pType)
		return;
	TARSEL_ASSERT(pInit->GetType()->GetClass() == kClass_UserType);
	if (pType->GetClass() == kClass_UserType)
		TARSEL_ASSERT(static_cast<const UserType*>(pType)->GetName() != NULL);
}

} // namespace Tarsel::Effects
