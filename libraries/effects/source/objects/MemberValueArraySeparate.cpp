#include "objects/MemberValueArraySeparate.h"

#include "core/Assert.h"
#include "core/Result.h"
#include "objects/ParameterValue.h"
#include "objects/ParameterValueConsole.h"
#include "objects/ParameterValueExpression.h"
#include "quillon/IQLPrimitive.h"
#include "syntax/Syntax.h"
#include "values/AccessSeparate.h"

namespace Tarsel::Effects
{

MemberValueArraySeparate* MemberValueArraySeparate::Create(IMgrEffects* pMgrEffects,
                                                           const VariableDeclaration* pDecl,
                                                           const std::string& sName, Result* pResult)
{
	auto* pMember = new MemberValueArraySeparate();
	if (pMember->Init(pMgrEffects, pDecl, sName, pResult))
		return pMember;
	delete pMember;
	return nullptr;
}

MemberValueArraySeparate::~MemberValueArraySeparate()
{
	Shutdown();
}

bool MemberValueArraySeparate::Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                                    const std::string& sName, Result* pResult)
{
	if (!pDecl)
		return false;
	_InitName(pMgrEffects, pDecl, sName);
	_sNameLengthMangled = _sNameMangled + "Length";
	_nLength = 0;
	_bResizable = true;
	const Expression* pExpressionLength = pDecl->GetType()->GetLength();
	const Expression* pInitializer = pDecl->GetInitializer();
	if (pExpressionLength)
	{
		TARSEL_ASSERT(kClass_IntConstant == pExpressionLength->GetClass());
		if (pExpressionLength->GetClass() != kClass_IntConstant)
			return false;
		_nLength = int(static_cast<const IntConstant*>(pExpressionLength)->GetValue());
		_bResizable = false;
	}
	else if (pInitializer)
	{
		if (!IsArrayConstructor(pInitializer))
		{
			ConsoleOf(pMgrEffects)->Message("MemberValueArraySeparate::Init Initializer\n");
			if (pResult)
			{
				pResult->Add("%s: Unsupported Initializer",
				             pInitializer->GetRange().GetLocationText().c_str());
				pResult->Add("Initializer");
				pResult->Add("%s", GetName().c_str());
			}
			return false;
		}
		_nLength = int(static_cast<const FunctionCall*>(pInitializer)->GetCountParameters());
		_bResizable = false;
	}
	return _InitAccess();
}

bool MemberValueArraySeparate::_InitAccess()
{
	if (!_pAccess)
		_pAccess = new AccessSubscriptSeparate();
	return static_cast<AccessSubscriptSeparate*>(_pAccess)->Init(GetTypeSpecifier(), GetName(), _sNameMangled,
	                                                             _nLength, _GetAccessMode(), nullptr);
}

bool MemberValueArraySeparate::CollectConstructor(CompoundStatement* pBody)
{
	const Expression* pInitializer = _pDecl ? _pDecl->GetInitializer() : nullptr;
	if (!pBody || !pInitializer)
		return pBody != nullptr;
	if (pInitializer->GetClass() != kClass_FunctionCall)
		return false;
	const std::vector<Expression*>& aArguments =
	    static_cast<const FunctionCall*>(pInitializer)->GetParameters();
	if (int(aArguments.size()) != GetLength())
		return false;
	Module* pModule = pBody->GetModule();
	for (size_t i = 0; i < aArguments.size(); ++i)
	{
		Subscript* pTarget =
		    pModule->CreateSubscript(pModule->CreateVariable(pModule->CreateString(_sNameMangled)),
		                             pModule->CreateIntConstant(long(i)));
		pBody->AddStatement(pModule->CreateExpressionStatement(
		    pModule->CreateAssignment(kOperator_Assign, pTarget, aArguments[i]->Clone(pModule))));
	}
	return true;
}

bool MemberValueArraySeparate::CollectShader(Module* pModule)
{
	TARSEL_ASSERT(_pAccess != NULL);
	if (!pModule || !_pAccess || !_pAccess->CollectShader(pModule))
		return false;
	return AddUniformDeclaration(pModule, pModule->CreateType(kType_Int), _sNameLengthMangled);
}

bool MemberValueArraySeparate::VisitTransformations(VisitorTransformation& delegate)
{
	if (!_VisitAccessTransformations(delegate))
		return false;
	TVisitorSyntaxDelegate<FieldSelection, TIParentSyntax<Expression>> visitor(
	    MakeDelegate(this, &MemberValueArraySeparate::_ReplaceReferenceLength));
	return delegate(kClass_FieldSelection, &visitor);
}

bool MemberValueArraySeparate::_ReplaceReferenceLength(FieldSelection* pSelection,
                                                       TIParentSyntax<Expression>* pParent)
{
	return ReplaceReferenceLength(pSelection, pParent, GetName(), _sNameLengthMangled);
}

bool MemberValueArraySeparate::SetLength(int nLength)
{
	if (!_bResizable)
	{
		ConsoleOf(_pMgrEffects)->Message("MemberValueArraySeparate::SetLength Not Resizable\n");
		return false;
	}
	if (nLength < 0)
		return false;
	if (nLength == _nLength)
		return true;
	_nLength = nLength;
	_InitAccess();
	_NotifyChangeLength();
	return true;
}

bool MemberValueArraySeparate::ApplyLength(IQLPrimitive* pPrimitive, IQLProgram*, int iLocation)
{
	if (pPrimitive && pPrimitive->SetUniform(_sNameLengthMangled, iLocation, _nLength))
		return true;
	ConsoleOf(_pMgrEffects)->Message("MemberValueArraySeparate::ApplyLength Set Uniform\n");
	return false;
}

} // namespace Tarsel::Effects
