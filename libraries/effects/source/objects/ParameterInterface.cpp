#include "objects/ParameterInterface.h"

#include <map>
#include <set>

#include "effects/IMgrEffects.h"
#include "effects/IPrototypeInterface.h"
#include "graph/ReferenceParameter.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/ParameterValueConsole.h"
#include "syntax/Syntax.h"

namespace Tarsel::Effects
{

ParameterInterface::~ParameterInterface()
{
	Shutdown();
}

bool ParameterInterface::_InitCommon(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                                     const char* sPrefix, int nLength, bool bResizable)
{
	Shutdown();
	if (!pMgrEffects || !pDecl || pDecl->GetType()->GetClass() != kClass_UserType)
		return false;
	const UserType* pType = static_cast<const UserType*>(pDecl->GetType());
	_pMgrEffects = pMgrEffects;
	_pDecl = pDecl;
	_key = pMgrEffects->CreateKey();
	_sName = pDecl->GetIdentifier()->GetString();
	_sType = pType->GetName() ? pType->GetName()->GetString() : std::string();
	_sNameMangled = sPrefix + _key.ToString();
	_sNameIndex = _sNameMangled + "_Index";
	_pValue = new Value<IShader*>(nLength, bResizable, nullptr);
	_vDefaults.assign(static_cast<size_t>(nLength), false);
	_nEmpty = nLength;
	return true;
}

void ParameterInterface::Shutdown()
{
	if (_pValue)
		_ReleaseAll(std::set<IShader*>());
	delete _pValue;
	_pValue = nullptr;
	_vDefaults.clear();
	_nEmpty = 0;
	if (_pMgrEffects)
		_pMgrEffects->DestroyKey(_key);
	_key = Key::Null();
	_pMgrEffects = nullptr;
	_pDecl = nullptr;
	_setListenersChangeStructure.clear();
}

MgrEffectsImpl* ParameterInterface::_Impl() const
{
	return _pMgrEffects ? _pMgrEffects->GetImplementation() : nullptr;
}

bool ParameterInterface::CollectConstructor(CompoundStatement* pBody)
{
	Module* pModule = pBody->GetModule();
	for (int index = 0; index < GetLength(); ++index)
	{
		IShader* pShader = _GetSlot(index);
		if (pShader && pShader->HasConstructor())
			pBody->AddStatement(pModule->CreateExpressionStatement(
			    pModule->CreateFunctionCall(pModule->CreateString(pShader->GetConstructor()))));
	}
	return true;
}

// A cycle calls itself in the generated code, which programs cannot do: never complete.
bool ParameterInterface::IsComplete() const
{
	if (_nEmpty > 0 || _bChecking)
		return false;
	_bChecking = true;
	bool bComplete = true;
	for (int index = 0; bComplete && index < GetLength(); ++index)
		bComplete = _GetSlot(index)->IsComplete();
	_bChecking = false;
	return bComplete;
}

bool ParameterInterface::_NotifyChangeStructure()
{
	if (_bNotifying)
		return true;
	_bNotifying = true;
	const bool bNotified = _setListenersChangeStructure.Notify(this);
	_bNotifying = false;
	return bNotified;
}

bool ParameterInterface::IsDefault(int index) const
{
	return index >= 0 && index < static_cast<int>(_vDefaults.size()) && _vDefaults[index];
}

bool ParameterInterface::GetAsString(std::string& sValue, int index) const
{
	return _pValue && _pValue->GetValueAsString(sValue, index);
}

bool ParameterInterface::Get(IShader*& pShader, int index)
{
	if (!_pValue || index < 0 || index >= _pValue->GetLength())
		return false;
	pShader = _GetSlot(index);
	return true;
}

bool ParameterInterface::_Fits(IShader* pShader) const
{
	return pShader->GetClassName() == _sType || pShader->GetInterfaceName() == _sType;
}

int ParameterInterface::_FindSlot(IShader* pShader, int iExcept) const
{
	for (int index = 0; index < GetLength(); ++index)
		if (index != iExcept && _GetSlot(index) == pShader)
			return index;
	return -1;
}

void ParameterInterface::_Release(int index)
{
	IShader* pShader = _GetSlot(index);
	const bool bDefault = _vDefaults[index];
	_Put(index, nullptr);
	_vDefaults[index] = false;
	if (pShader == nullptr)
		return;
	const int iOther = _FindSlot(pShader, index);
	if (iOther >= 0)
	{
		_vDefaults[iOther] = _vDefaults[iOther] || bDefault;
		return;
	}
	_Unlisten(pShader);
	if (bDefault)
		_pMgrEffects->DestroyShader(pShader);
}

void ParameterInterface::_Put(int index, IShader* pShader)
{
	_nEmpty += (pShader == nullptr) - (_GetSlot(index) == nullptr);
	_pValue->Set(pShader, index);
}

void ParameterInterface::_Resize(int nLength)
{
	_pValue->SetLength(nLength);
	_vDefaults.resize(static_cast<size_t>(nLength), false);
	_nEmpty = 0;
	for (int index = 0; index < nLength; ++index)
		_nEmpty += _GetSlot(index) == nullptr;
}

void ParameterInterface::_ReleaseAll(const std::set<IShader*>& setKept)
{
	// Each shader once, however many slots hold it; owned unless a slot says otherwise.
	std::map<IShader*, bool> mReleased;
	for (int index = 0; index < GetLength(); ++index)
	{
		if (IShader* pShader = _GetSlot(index))
			mReleased[pShader] = mReleased[pShader] || _vDefaults[index];
		_Put(index, nullptr);
		_vDefaults[index] = false;
	}
	for (const auto& entry : mReleased)
	{
		_Unlisten(entry.first);
		if (entry.second && setKept.count(entry.first) == 0)
			_pMgrEffects->DestroyShader(entry.first);
	}
}

void ParameterInterface::_Store(int index, IShader* pShader, bool bDefault)
{
	_Put(index, pShader);
	_vDefaults[index] = bDefault && pShader;
	if (pShader)
		_Listen(pShader);
}

void ParameterInterface::_Listen(IShader* pShader)
{
	IShader::ListenerShader onDelete = MakeDelegate(this, &ParameterInterface::_OnDeleteShader);
	IShader::ListenerShader onChange = MakeDelegate(this, &ParameterInterface::_OnChangeStructureShader);
	pShader->AddListenerDelete(onDelete);
	pShader->AddListenerChangeStructure(onChange);
}

void ParameterInterface::_Unlisten(IShader* pShader)
{
	IShader::ListenerShader onDelete = MakeDelegate(this, &ParameterInterface::_OnDeleteShader);
	IShader::ListenerShader onChange = MakeDelegate(this, &ParameterInterface::_OnChangeStructureShader);
	pShader->RemoveListenerDelete(onDelete);
	pShader->RemoveListenerChangeStructure(onChange);
}

// The shader is going: it is forgotten without touching it further.
bool ParameterInterface::_OnDeleteShader(IShader* pShader)
{
	bool bHeld = false;
	for (int index = 0; index < GetLength(); ++index)
		if (_GetSlot(index) == pShader)
		{
			_Put(index, nullptr);
			_vDefaults[index] = false;
			bHeld = true;
		}
	return !bHeld || _NotifyChangeStructure();
}

bool ParameterInterface::_OnChangeStructureShader(IShader*)
{
	return _NotifyChangeStructure();
}

IShader* ParameterInterface::_CreateDefault(const FunctionCall* pCall, const char* sFailure,
                                            Result* pResult) const
{
	const String* pName = pCall->GetName();
	if (pName == nullptr && pCall->GetType() && pCall->GetType()->GetClass() == kClass_UserType)
		pName = static_cast<const UserType*>(pCall->GetType())->GetName();
	IShader* pShader = pName ? _pMgrEffects->CreateShader(pName->GetString(), pResult) : nullptr;
	if (pShader == nullptr)
		ConsoleOf(_pMgrEffects)->Message("%s", sFailure);
	return pShader;
}

bool ParameterInterface::ResolveMethod(IShader* pShader, const FunctionSelection* pSelection,
                                       std::string& sMangled) const
{
	const FunctionCall* pCall = pSelection->GetFunction();
	const std::string sMethod = pCall && pCall->GetName() ? pCall->GetName()->GetString() : std::string();
	const std::string sLocation = pSelection->GetRange().GetLocationText();
	const std::string sInterface = pShader->GetInterfaceName();
	IPrototypeInterface* pInterface =
	    _sType == sInterface ? _pMgrEffects->GetPrototypeInterface(sInterface) : nullptr;
	if (pInterface && !pInterface->HasMethod(sMethod))
	{
		if (MgrEffectsImpl* pImpl = _Impl())
			pImpl->AddResultMessage("%s: Interface \"%s\" has no method named \"%s\".\n", sLocation.c_str(),
			                        sInterface.c_str(), sMethod.c_str());
		return false;
	}
	if (pShader->HasMethod(sMethod))
	{
		sMangled = pShader->GetMethodNameMangled(sMethod);
		return true;
	}
	if (MgrEffectsImpl* pImpl = _Impl())
		pImpl->AddResultMessage("%s: Class \"%s\" has no method named \"%s\".\n", sLocation.c_str(),
		                        pShader->GetClassName().c_str(), sMethod.c_str());
	return false;
}

bool ReplaceSelectionByCall(FunctionSelection* pSelection, TIParentSyntax<Expression>* pParent,
                            const std::string& sName, Expression* pFirst)
{
	Module* pModule = pSelection->GetModule();
	FunctionCall* pCall = pModule->CreateFunctionCall(pModule->CreateString(sName));
	pCall->SetRange(pSelection->GetRange());
	if (pFirst)
		pCall->AddParameter(pFirst);
	for (const Expression* pArgument : pSelection->GetFunction()->GetParameters())
		pCall->AddParameter(pArgument->Clone(pModule));
	if (pParent->SetReplacement(pCall))
		return true;
	Syntax::Destroy(pCall);
	return false;
}

} // namespace Tarsel::Effects
