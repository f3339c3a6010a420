#include "objects/ParameterInterfaceSingle.h"

#include "core/Assert.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/ParameterValueConsole.h"
#include "syntax/Syntax.h"
#include "syntax/VisitorDelegate.h"

namespace Tarsel::Effects
{

ParameterInterfaceSingle* ParameterInterfaceSingle::Create(IMgrEffects* pMgrEffects,
                                                           const VariableDeclaration* pDecl,
                                                           const std::string& sOwner, Result* pResult)
{
	auto* pParameter = new ParameterInterfaceSingle();
	if (pParameter->Init(pMgrEffects, pDecl, sOwner, pResult))
		return pParameter;
	delete pParameter;
	return nullptr;
}

bool ParameterInterfaceSingle::Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                                    const std::string&, Result* pResult)
{
	if (!_InitCommon(pMgrEffects, pDecl, "ParameterInterfaceSingle", 1, false))
		return false;
	if (pDecl->GetInitializer() && !_InitInitializer(pResult))
	{
		Shutdown();
		return false;
	}
	return true;
}

bool ParameterInterfaceSingle::_InitInitializer(Result* pResult)
{
	const Expression* pExpression = _pDecl->GetInitializer();
	TARSEL_ASSERT(_pDecl->GetInitializer()->GetClass() == kClass_FunctionCall);
	if (pExpression->GetClass() != kClass_FunctionCall)
		return false;
	const FunctionCall* pInit = static_cast<const FunctionCall*>(pExpression);
	TARSEL_ASSERT(pInit->GetType()->GetClass() == kClass_UserType);
	if (!pInit->GetType() || pInit->GetType()->GetClass() != kClass_UserType)
		return false;
	const UserType* pType = static_cast<const UserType*>(pInit->GetType());
	TARSEL_ASSERT(pType->GetName() != NULL);
	IShader* pShader =
	    _CreateDefault(pInit, "ParameterInterfaceSingle::_InitInitializer Create Shader\n", pResult);
	if (pShader == nullptr)
		return false;
	if (!Set(pShader))
	{
		_pMgrEffects->DestroyShader(pShader);
		return false;
	}
	_vDefaults[0] = true;
	return true;
}

bool ParameterInterfaceSingle::Set(IShader* pShader)
{
	if (!_pValue)
		return false;
	if (pShader && !_Fits(pShader))
	{
		if (MgrEffectsImpl* pImpl = _Impl())
			pImpl->AddResultMessage("Input type mismatch. Expected \"%s\" but got \"%s::%s\"\n",
			                        _sType.c_str(), pShader->GetInterfaceName().c_str(),
			                        pShader->GetClassName().c_str());
		return false;
	}
	if (pShader == _GetSlot(0))
		return true;
	_Release(0);
	_Store(0, pShader, false);
	return _NotifyChangeStructure();
}

bool ParameterInterfaceSingle::Set(IShader* pShader, int index)
{
	return index == 0 && Set(pShader);
}

bool ParameterInterfaceSingle::VisitTransformations(VisitorTransformation& delegate)
{
	TVisitorSyntaxDelegate<FunctionSelection, TIParentSyntax<Expression>> visitor(
	    MakeDelegate(this, &ParameterInterfaceSingle::_ReplaceReference));
	return delegate(kClass_FunctionSelection, &visitor);
}

// input.m(args) becomes the connected shader's own method m.
bool ParameterInterfaceSingle::_ReplaceReference(FunctionSelection* pSelection,
                                                 TIParentSyntax<Expression>* pParent)
{
	const Expression* pObject = pSelection->GetExpression();
	if (!pObject || pObject->GetClass() != kClass_Variable ||
	    static_cast<const Variable*>(pObject)->GetIdentifier()->GetString() != _sName)
		return true;
	IShader* pShader = _GetSlot(0);
	std::string sMangled;
	return pShader && ResolveMethod(pShader, pSelection, sMangled) &&
	       ReplaceSelectionByCall(pSelection, pParent, sMangled, nullptr);
}

} // namespace Tarsel::Effects
