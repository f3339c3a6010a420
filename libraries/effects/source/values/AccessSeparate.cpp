#include "values/AccessSeparate.h"

#include "core/Assert.h"

#include <algorithm>

namespace Tarsel::Effects
{

namespace
{
bool IsVariableNamed(const Expression* pExpression, const std::string& sName)
{
	if (!pExpression || pExpression->GetClass() != kClass_Variable)
		return false;
	const String* pIdentifier = static_cast<const Variable*>(pExpression)->GetIdentifier();
	return pIdentifier && pIdentifier->GetString() == sName;
}

// The arrays the printer knows are declared with a constant length; the block's member always has one
// element.
Type* CreateArrayType(Module* pModule, TypeSpecifier eType, int nLength)
{
	Type* pType = pModule->CreateType(eType);
	pType->SetArray(true);
	pType->SetLength(pModule->CreateIntConstant(nLength));
	return pType;
}
} // namespace

bool RenameVariable(Variable* pVariable, TIParentSyntax<Expression>* pParent, const std::string& sName,
                    const std::string& sNameMangled)
{
	if (!IsVariableNamed(pVariable, sName))
		return true;
	Module* pModule = pVariable->GetModule();
	Variable* pReplacement = pModule->CreateVariable(pModule->CreateString(sNameMangled));
	if (pParent->SetReplacement(pReplacement))
		return true;
	delete pReplacement;
	return false;
}

bool AccessSeparate::Init(TypeSpecifier eType, const std::string& sName, const std::string& sNameMangled,
                          int nLength, int iMode, const Expression* pInitializer)
{
	const bool bValid = pInitializer == nullptr || iMode == kMode_Global;
	TARSEL_ASSERT_MSG(bValid,
	                  "Internal error: Initializer for the access should be defined only for member values.");
	if (!bValid || iMode < kMode_Global || iMode > kMode_MutableUniform || nLength < 0)
		return false;
	_eType = eType;
	_sName = sName;
	_sNameMangled = sNameMangled;
	_nLength = nLength;
	_iMode = iMode;
	_pInitializer = pInitializer;
	return true;
}

bool AccessSeparate::_Declare(Module* pModule, Expression* pArrayLength) const
{
	if (!pModule)
		return false;
	Type* pType = pModule->CreateType(_eType);
	if (pArrayLength)
	{
		pType->SetArray(true);
		pType->SetLength(pArrayLength);
	}
	Expression* pInitializer = _pInitializer ? _pInitializer->Clone(pModule) : nullptr;
	VariableDeclaration* pDecl =
	    pModule->CreateVariableDeclaration(pType, pModule->CreateString(_sNameMangled), pInitializer);
	// Uniform and mutable uniform follow each other in the storage qualifiers.
	if (_iMode != kMode_Global)
		pDecl->SetStorageQualifier(StorageQualifier(_iMode + kStorage_TransformedInvariantVarying));
	return pModule->AddVariableDeclaration(pModule->CreateDeclarationStatement(pDecl));
}

bool AccessSeparate::_IsDeclaredName(const Expression* pExpression) const
{
	return IsVariableNamed(pExpression, _sName);
}

Variable* AccessSeparate::_CreateMangled(Module* pModule) const
{
	return pModule->CreateVariable(pModule->CreateString(_sNameMangled));
}

bool AccessVariableSeparate::CollectShader(Module* pModule)
{
	return _Declare(pModule, nullptr);
}

bool AccessVariableSeparate::VisitTransformations(VisitorTransformation& delegate)
{
	TVisitorSyntaxDelegate<Variable, TIParentSyntax<Expression>> visitor(
	    MakeDelegate(this, &AccessVariableSeparate::_ReplaceVariable));
	return delegate(kClass_Variable, &visitor);
}

bool AccessVariableSeparate::_ReplaceVariable(Variable* pVariable, TIParentSyntax<Expression>* pParent)
{
	return RenameVariable(pVariable, pParent, _sName, _sNameMangled);
}

bool AccessSubscriptSeparate::CollectShader(Module* pModule)
{
	if (!pModule)
		return false;
	return _Declare(pModule, pModule->CreateIntConstant(std::max(_nLength, 1)));
}

bool AccessSubscriptSeparate::VisitTransformations(VisitorTransformation& delegate)
{
	TVisitorSyntaxDelegate<Subscript, TIParentSyntax<Expression>> visitor(
	    MakeDelegate(this, &AccessSubscriptSeparate::_ReplaceSubscript));
	return delegate(kClass_Subscript, &visitor);
}

// The index has been walked already, so renaming the array in place needs no second visit.
bool AccessSubscriptSeparate::_ReplaceSubscript(Subscript* pSubscript, TIParentSyntax<Expression>*)
{
	if (!_IsDeclaredName(pSubscript->GetArray()))
		return true;
	return pSubscript->SetArray(_CreateMangled(pSubscript->GetModule()));
}

bool AccessBuffer::Init(TypeSpecifier eType, const std::string& sName, const std::string& sNameMangled)
{
	_eType = eType;
	_sName = sName;
	_sNameMangled = sNameMangled;
	return true;
}

bool AccessBuffer::CollectShader(Module* pModule)
{
	if (!pModule)
		return false;
	StructDefinition* pBlock = pModule->CreateStructDefinition(pModule->CreateString(_sNameMangled));
	pBlock->SetUniform(true);
	pBlock->AddMemberVariable(pModule->CreateVariableDeclaration(
	    CreateArrayType(pModule, _eType, 1), pModule->CreateString(FieldName()), nullptr));
	return pModule->AddStructDefinition(pBlock);
}

bool AccessBuffer::VisitTransformations(VisitorTransformation& delegate)
{
	TVisitorSyntaxDelegate<Subscript, TIParentSyntax<Expression>> visitor(
	    MakeDelegate(this, &AccessBuffer::_ReplaceSubscript));
	return delegate(kClass_Subscript, &visitor);
}

bool AccessBuffer::_ReplaceSubscript(Subscript* pSubscript, TIParentSyntax<Expression>* pParent)
{
	if (!IsVariableNamed(pSubscript->GetArray(), _sName))
		return true;
	Module* pModule = pSubscript->GetModule();
	Variable* pBlock = pModule->CreateVariable(pModule->CreateString(_sNameMangled));
	FieldSelection* pField = pModule->CreateFieldSelection(pBlock, pModule->CreateString(FieldName()));
	Subscript* pReplacement = pModule->CreateSubscript(pField, pSubscript->GetIndex()->Clone(pModule));
	if (pParent->SetReplacement(pReplacement))
		return true;
	delete pReplacement;
	return false;
}

} // namespace Tarsel::Effects
