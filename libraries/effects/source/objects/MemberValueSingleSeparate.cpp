#include "objects/MemberValueSingleSeparate.h"

#include "core/Assert.h"
#include "syntax/Syntax.h"
#include "values/AccessSeparate.h"

namespace Tarsel::Effects
{

MemberValueSingleSeparate* MemberValueSingleSeparate::Create(IMgrEffects* pMgrEffects,
                                                             const VariableDeclaration* pDecl,
                                                             const std::string& sName, Result* pResult)
{
	auto* pMember = new MemberValueSingleSeparate();
	if (pMember->Init(pMgrEffects, pDecl, sName, pResult))
		return pMember;
	delete pMember;
	return nullptr;
}

MemberValueSingleSeparate::~MemberValueSingleSeparate()
{
	Shutdown();
}

// The initializer is assigned by the constructor, so the declaration itself carries none.
bool MemberValueSingleSeparate::Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                                     const std::string& sName, Result*)
{
	if (!pDecl)
		return false;
	_InitName(pMgrEffects, pDecl, sName);
	auto* pAccess = new AccessVariableSeparate();
	_pAccess = pAccess;
	return pAccess->Init(GetTypeSpecifier(), GetName(), _sNameMangled, 1, _GetAccessMode(), nullptr);
}

bool MemberValueSingleSeparate::CollectConstructor(CompoundStatement* pBody)
{
	const Expression* pInitializer = _pDecl ? _pDecl->GetInitializer() : nullptr;
	if (!pBody || !pInitializer)
		return pBody != nullptr;
	Module* pModule = pBody->GetModule();
	Variable* pTarget = pModule->CreateVariable(pModule->CreateString(_sNameMangled));
	pBody->AddStatement(pModule->CreateExpressionStatement(
	    pModule->CreateAssignment(kOperator_Assign, pTarget, pInitializer->Clone(pModule))));
	return true;
}

bool MemberValueSingleSeparate::CollectShader(Module* pModule)
{
	TARSEL_ASSERT(_pAccess != NULL);
	return _pAccess && _pAccess->CollectShader(pModule);
}

bool MemberValueSingleSeparate::VisitTransformations(VisitorTransformation& delegate)
{
	return _VisitAccessTransformations(delegate);
}

} // namespace Tarsel::Effects
