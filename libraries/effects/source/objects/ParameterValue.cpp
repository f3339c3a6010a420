#include "objects/ParameterValue.h"

#include "effects/IMgrEffects.h"
#include "graph/ReferenceParameter.h"
#include "syntax/Syntax.h"
#include "values/IStorage.h"
#include "values/IValue.h"

namespace Tarsel::Effects
{

bool AddUniformDeclaration(Module* pModule, Type* pType, const std::string& sName)
{
	VariableDeclaration* pDecl =
	    pModule->CreateVariableDeclaration(pType, pModule->CreateString(sName), nullptr);
	pDecl->SetStorageQualifier(kStorage_Uniform);
	return pModule->AddVariableDeclaration(pModule->CreateDeclarationStatement(pDecl));
}

bool ReplaceReferenceLength(FieldSelection* pSelection, TIParentSyntax<Expression>* pParent,
                            const std::string& sName, const std::string& sNameLength)
{
	const Expression* pObject = pSelection->GetExpression();
	if (!pObject || pObject->GetClass() != kClass_Variable ||
	    static_cast<const Variable*>(pObject)->GetIdentifier()->GetString() != sName)
		return true;
	if (pSelection->GetField()->GetString() != "length")
		return false;
	Module* pModule = pSelection->GetModule();
	Variable* pLength = pModule->CreateVariable(pModule->CreateString(sNameLength));
	if (pParent->SetReplacement(pLength))
		return true;
	delete pLength;
	return false;
}

ParameterValue::~ParameterValue()
{
	_ShutdownValue();
}

bool ParameterValue::AddListenerChangeValue(const Listener& listener)
{
	return _setListenersChangeValue.Add(listener);
}

bool ParameterValue::RemoveListenerChangeValue(const Listener& listener)
{
	return _setListenersChangeValue.Remove(listener);
}

bool ParameterValue::CollectConstructor(CompoundStatement*)
{
	return true;
}

TypeSpecifier ParameterValue::GetTypeSpecifier() const
{
	return _pDecl ? _pDecl->GetType()->GetTypeSpecifier() : kType_Void;
}

std::string ParameterValue::GetType() const
{
	return TypeSpecifierToString(GetTypeSpecifier());
}

std::string ParameterValue::GetName() const
{
	return _pDecl ? _pDecl->GetIdentifier()->GetString() : std::string();
}

bool ParameterValue::GetAsString(std::string& sValue, int index) const
{
	return _pStorage && _pStorage->GetValue()->GetValueAsString(sValue, index);
}

bool ParameterValue::GetAsString(std::string& sValue) const
{
	return GetAsString(sValue, 0);
}

void ParameterValue::_InitName(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                               const std::string& sName)
{
	_pMgrEffects = pMgrEffects;
	_pDecl = pDecl;
	_key = pMgrEffects ? pMgrEffects->CreateKey() : Key::Null();
	_sNameMangled = sName + _key.ToString();
}

bool ParameterValue::_SetStorage(IStorage* pStorage)
{
	_pStorage = pStorage;
	return pStorage && pStorage->AddListenerChangeValue(MakeDelegate(this, &ParameterValue::_OnChangeValue));
}

void ParameterValue::_ShutdownValue()
{
	delete _pStorage;
	_pStorage = nullptr;
	if (_pMgrEffects)
	{
		_sNameMangled = "Shutdown";
		_pMgrEffects->DestroyKey(_key);
	}
	_key = Key::Null();
	_pMgrEffects = nullptr;
	_pDecl = nullptr;
}

bool ParameterValue::_OnChangeValue(IStorage*)
{
	return _setListenersChangeValue.Notify(static_cast<IParameter*>(this));
}

} // namespace Tarsel::Effects
