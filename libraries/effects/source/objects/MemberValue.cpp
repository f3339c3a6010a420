#include "objects/MemberValue.h"

#include "effects/IMgrEffects.h"
#include "graph/ReferenceParameter.h"
#include "syntax/Syntax.h"
#include "values/AccessSeparate.h"

namespace Tarsel::Effects
{

MemberValue::~MemberValue()
{
	Shutdown();
}

bool MemberValue::AddListenerChangeLength(const ListenerChangeLength& listener)
{
	return _setListenersChangeLength.Add(listener);
}

bool MemberValue::RemoveListenerChangeLength(const ListenerChangeLength& listener)
{
	return _setListenersChangeLength.Remove(listener);
}

IReferenceMember* MemberValue::CreateReference(IGraph* pGraph)
{
	return ReferenceMember::Create(pGraph, this);
}

bool MemberValue::DestroyReference(IReferenceMember* pReference)
{
	delete pReference;
	return true;
}

std::string MemberValue::GetType() const
{
	return TypeSpecifierToString(GetTypeSpecifier());
}

std::string MemberValue::GetName() const
{
	return _pDecl ? _pDecl->GetIdentifier()->GetString() : std::string();
}

TypeSpecifier MemberValue::GetTypeSpecifier() const
{
	return _pDecl ? _pDecl->GetType()->GetTypeSpecifier() : kType_Void;
}

bool MemberValue::Shutdown()
{
	delete _pAccess;
	_pAccess = nullptr;
	if (_pMgrEffects)
	{
		_sNameMangled = "Shutdown";
		_pMgrEffects->DestroyKey(_key);
	}
	_key = Key::Null();
	_pMgrEffects = nullptr;
	_pDecl = nullptr;
	return true;
}

void MemberValue::_InitName(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                            const std::string& sName)
{
	Shutdown();
	_pMgrEffects = pMgrEffects;
	_pDecl = pDecl;
	_key = pMgrEffects ? pMgrEffects->CreateKey() : Key::Null();
	_sNameMangled = sName + _key.ToString();
}

int MemberValue::_GetAccessMode() const
{
	return _pDecl && _pDecl->IsConst() ? AccessSeparate::kMode_MutableUniform : AccessSeparate::kMode_Global;
}

bool MemberValue::_VisitAccessTransformations(VisitorTransformation& delegate)
{
	return _pAccess && _pAccess->VisitTransformations(delegate);
}

bool MemberValue::_NotifyChangeLength()
{
	return _setListenersChangeLength.Notify(static_cast<IMember*>(this));
}

} // namespace Tarsel::Effects
