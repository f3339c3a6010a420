#include "objects/ParameterValueArraySeparate.h"

#include "core/Assert.h"
#include "core/Result.h"
#include "objects/ParameterValueConsole.h"
#include "objects/ParameterValueExpression.h"
#include "quillon/IQLPrimitive.h"
#include "quillon/IQLProgram.h"
#include "syntax/Syntax.h"
#include "values/AccessSeparate.h"
#include "values/ValueFactory.h"

namespace Tarsel::Effects
{

ParameterValueArray* ParameterValueArraySeparate::Create(IMgrEffects* pMgrEffects,
                                                         const VariableDeclaration* pDecl,
                                                         const std::string& sName, Result* pResult)
{
	auto* pParameter = new ParameterValueAccessors<ParameterValueArraySeparate>();
	if (pParameter->Init(pMgrEffects, pDecl, sName, pResult))
		return pParameter;
	delete pParameter;
	return nullptr;
}

ParameterValueArraySeparate::~ParameterValueArraySeparate()
{
	Shutdown();
}

bool ParameterValueArraySeparate::Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                                       const std::string& sName, Result* pResult)
{
	Shutdown();
	if (!pDecl)
		return false;
	_InitName(pMgrEffects, pDecl, sName);
	_nLength = 0;
	const Expression* pLength = pDecl->GetType()->GetLength();
	const Expression* pInitializer = pDecl->GetInitializer();
	_bResizable = pLength == nullptr;
	if (pLength)
	{
		TARSEL_ASSERT(kClass_IntConstant == _pDecl->GetType()->GetLength()->GetClass());
		if (pLength->GetClass() != kClass_IntConstant)
			return false;
		_nLength = int(static_cast<const IntConstant*>(pLength)->GetValue());
	}
	else if (IsArrayConstructor(pInitializer))
		_nLength = int(static_cast<const FunctionCall*>(pInitializer)->GetCountParameters());
	_sNameLengthMangled = _sNameMangled + "Length";

	const TypeSpecifier eType = GetTypeSpecifier();
	auto* pAccess = new AccessBuffer();
	_pAccess = pAccess;
	if (!_SetStorage(
	        CreateStorageBuffer<ParameterValueArray>(pMgrEffects, this, eType, _nLength, _bResizable)) ||
	    !pAccess->Init(eType, GetName(), _sNameMangled))
	{
		ConsoleOf(pMgrEffects)->Message("ParameterValueArraySeparate::Init Storage\n");
		if (pResult)
		{
			pResult->Add("Unsupported type \"%s\"", TypeSpecifierToString(eType));
			pResult->Add("%s", GetName().c_str());
		}
		Shutdown();
		return false;
	}
	_bBuffer = true;
	const bool bInitialized = !pInitializer || InitializeValueArray(pMgrEffects, _pStorage, eType,
	                                                                pInitializer, _bResizable, pResult);
	_nLength = _pStorage->GetLength();
	if (!bInitialized && pResult)
		pResult->Add("%s", GetName().c_str());
	return bInitialized;
}

bool ParameterValueArraySeparate::Shutdown()
{
	delete _pAccess;
	_pAccess = nullptr;
	_bBuffer = false;
	_nLength = 0;
	_ShutdownValue();
	return true;
}

bool ParameterValueArraySeparate::CollectShader(Module* pModule)
{
	TARSEL_ASSERT(_pStorage != NULL);
	if (!pModule || !_pStorage || !_pAccess->CollectShader(pModule))
		return false;
	return AddUniformDeclaration(pModule, pModule->CreateType(kType_Int), _sNameLengthMangled);
}

bool ParameterValueArraySeparate::VisitTransformations(VisitorTransformation& delegate)
{
	if (!_pAccess || !_pAccess->VisitTransformations(delegate))
		return false;
	TVisitorSyntaxDelegate<FieldSelection, TIParentSyntax<Expression>> visitor(
	    MakeDelegate(this, &ParameterValueArraySeparate::_ReplaceReferenceLength));
	return delegate(kClass_FieldSelection, &visitor);
}

bool ParameterValueArraySeparate::_ReplaceReferenceLength(FieldSelection* pSelection,
                                                          TIParentSyntax<Expression>* pParent)
{
	return ReplaceReferenceLength(pSelection, pParent, GetName(), _sNameLengthMangled);
}

bool ParameterValueArraySeparate::SetLength(int nLength)
{
	if (!_bResizable)
	{
		ConsoleOf(_pMgrEffects)->Message("ParameterValueArraySeparate::SetLength Not Resizable\n");
		return false;
	}
	if (nLength < 0)
		return false;
	if (nLength == _nLength)
		return true;
	TARSEL_ASSERT(_pStorage != NULL);
	if (!_pStorage || !_pStorage->SetLength(nLength))
		return false;
	// Parameter and storage always agree on the length: a failed evaluation takes the storage back.
	if (nLength > _nLength &&
	    !InitializeValueArrayPartial(_pMgrEffects, _pStorage, GetTypeSpecifier(), _pDecl->GetInitializer(),
	                                 _nLength, nLength, nullptr))
	{
		_pStorage->SetLength(_nLength);
		return false;
	}
	_nLength = nLength;
	_NotifyChangeLength();
	return true;
}

bool ParameterValueArraySeparate::ApplyStorage(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation)
{
	TARSEL_ASSERT(_pStorage);
	return _pStorage && _pStorage->Apply(pPrimitive, pProgram, _sNameMangled, iLocation);
}

bool ParameterValueArraySeparate::ApplyLength(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation)
{
	const int iLocationLength =
	    pProgram ? pProgram->GetUniformLocation(_sNameLengthMangled.c_str()) : iLocation;
	if (pPrimitive && _pStorage &&
	    pPrimitive->SetUniform(_sNameLengthMangled, iLocationLength, _pStorage->GetLength()))
		return true;
	ConsoleOf(_pMgrEffects)->Message("ParameterValueArraySeparate::_ApplyLength Set Uniform\n");
	return false;
}

} // namespace Tarsel::Effects
