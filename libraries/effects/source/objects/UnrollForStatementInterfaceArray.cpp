#include "objects/UnrollForStatementInterfaceArray.h"

#include "core/Assert.h"
#include "objects/ParameterInterfaceArray.h"
#include "syntax/Syntax.h"
#include "syntax/VisitorDelegate.h"

namespace Tarsel::Effects
{

namespace
{
bool IsVariable(const Expression* pExpression, const std::string& sName)
{
	return pExpression && pExpression->GetClass() == kClass_Variable &&
	       static_cast<const Variable*>(pExpression)->GetIdentifier()->GetString() == sName;
}

// for (int i = 0; ...): the loop variable, else empty.
std::string LoopVariable(const Statement* pInit)
{
	if (!pInit || pInit->GetClass() != kClass_DeclarationStatement)
		return std::string();
	const VariableDeclaration* pDecl = static_cast<const DeclarationStatement*>(pInit)->GetDeclaration();
	const Expression* pValue = pDecl ? pDecl->GetInitializer() : nullptr;
	if (!pValue || pDecl->GetType()->GetTypeSpecifier() != kType_Int || pDecl->GetType()->IsArray() ||
	    pValue->GetClass() != kClass_IntConstant || static_cast<const IntConstant*>(pValue)->GetValue() != 0)
		return std::string();
	return pDecl->GetIdentifier()->GetString();
}

// i < array.length
bool CountsToLength(const Condition* pCondition, const std::string& sVariable, const std::string& sArray)
{
	const Expression* pExpression = pCondition ? pCondition->GetExpression() : nullptr;
	if (!pExpression || pExpression->GetClass() != kClass_BinaryOperator)
		return false;
	const BinaryOperator* pLess = static_cast<const BinaryOperator*>(pExpression);
	const Expression* pRight = pLess->GetRight();
	return pLess->GetOperator() == kOperator_Less && IsVariable(pLess->GetLeft(), sVariable) && pRight &&
	       pRight->GetClass() == kClass_FieldSelection &&
	       IsVariable(static_cast<const FieldSelection*>(pRight)->GetExpression(), sArray) &&
	       static_cast<const FieldSelection*>(pRight)->GetField()->GetString() == "length";
}

// ++i; the postfix form is another node class and does not qualify.
bool IncrementsByPrefix(const Expression* pIteration, const std::string& sVariable)
{
	return pIteration && pIteration->GetClass() == kClass_UnaryOperator &&
	       static_cast<const UnaryOperator*>(pIteration)->GetOperator() == kOperator_Increment &&
	       IsVariable(static_cast<const UnaryOperator*>(pIteration)->GetExpression(), sVariable);
}

// Walks a loop body and clears the flag at the first use that the unrolled copies could not keep.
class BodyCheck
{
public:
	BodyCheck(const std::string& sVariable, const std::string& sArray)
	    : _sVariable(sVariable), _sArray(sArray)
	{
	}

	bool Run(const Statement* pBody)
	{
		TVisitorSyntaxConstDelegate<FunctionSelection, TParentSyntaxConst<Expression>> selections(
		    MakeDelegate(this, &BodyCheck::_OnSelection));
		TVisitorSyntaxConstDelegate<Variable, TParentSyntaxConst<Expression>> variables(
		    MakeDelegate(this, &BodyCheck::_OnVariable));
		TParentSyntaxConst<Statement> link;
		return pBody->AcceptVisitor(&selections, &link) && pBody->AcceptVisitor(&variables, &link);
	}

private:
	bool _OnSelection(const FunctionSelection* pSelection, TParentSyntaxConst<Expression>*)
	{
		const Expression* pObject = pSelection->GetExpression();
		return !IsElementOf(pObject, _sArray) ||
		       IsVariable(static_cast<const Subscript*>(pObject)->GetIndex(), _sVariable);
	}
	bool _OnVariable(const Variable* pVariable, TParentSyntaxConst<Expression>* pParent)
	{
		if (!IsVariable(pVariable, _sVariable))
			return true;
		const Syntax* pHolder = pParent ? pParent->GetParent() : nullptr;
		const Expression* pHolderExpression = dynamic_cast<const Expression*>(pHolder);
		if (!pHolderExpression)
			return false;
		if (pHolderExpression->GetClass() == kClass_FunctionCall)
			return true;
		return pHolderExpression->GetClass() == kClass_Subscript &&
		       static_cast<const Subscript*>(pHolderExpression)->GetIndex() == pVariable &&
		       IsVariable(static_cast<const Subscript*>(pHolderExpression)->GetArray(), _sArray);
	}

	std::string _sVariable;
	std::string _sArray;
};
} // namespace

bool IsElementOf(const Expression* pExpression, const std::string& sArray)
{
	return pExpression && pExpression->GetClass() == kClass_Subscript &&
	       IsVariable(static_cast<const Subscript*>(pExpression)->GetArray(), sArray);
}

std::string PredicateUnrollForStatementInterfaceArray(const ForStatement* pLoop, const std::string& sArray)
{
	const std::string sVariable = LoopVariable(pLoop->GetInitialization());
	if (sVariable.empty() || !CountsToLength(pLoop->GetCondition(), sVariable, sArray) ||
	    !IncrementsByPrefix(pLoop->GetIteration(), sVariable) || !pLoop->GetStatement())
		return std::string();
	BodyCheck check(sVariable, sArray);
	return check.Run(pLoop->GetStatement()) ? sVariable : std::string();
}

CompoundStatement* UnrollForStatementInterfaceArray::Unroll(const ForStatement* pLoop,
                                                            const std::string& sVariable)
{
	const Statement* pInit = pLoop->GetInitialization();
	TARSEL_ASSERT(pInit);
	TARSEL_ASSERT(kClass_DeclarationStatement == pInit->GetClass());
	if (!pInit || pInit->GetClass() != kClass_DeclarationStatement)
		return nullptr;
	Module* pModule = pLoop->GetModule();
	CompoundStatement* pUnrolled = pModule->CreateCompoundStatement();
	pUnrolled->SetRange(pLoop->GetRange());
	pUnrolled->AddStatement(pInit->Clone(pModule));
	const int nLength = _pParameter->GetLength();
	for (int iIndex = 0; iIndex < nLength; ++iIndex)
	{
		Statement* pBody = pLoop->GetStatement()->Clone(pModule);
		pUnrolled->AddStatement(pBody);
		BakeForStatementIteration bake(_pParameter, sVariable, iIndex);
		if (!bake.Bake(pBody))
		{
			Syntax::Destroy(pUnrolled);
			return nullptr;
		}
		if (iIndex + 1 < nLength)
			pUnrolled->AddStatement(pModule->CreateExpressionStatement(pModule->CreateUnaryOperator(
			    kOperator_Increment, pModule->CreateVariable(pModule->CreateString(sVariable)))));
	}
	return pUnrolled;
}

bool BakeForStatementIteration::Bake(Statement* pBody)
{
	TARSEL_ASSERT(_pParameter->GetLength() > _iIndex);
	TVisitorSyntaxDelegate<FunctionSelection, TIParentSyntax<Expression>> visitor(
	    MakeDelegate(this, &BakeForStatementIteration::_Replace));
	TParentSyntaxNull<Statement> link;
	return _pParameter->GetLength() > _iIndex && pBody->AcceptVisitor(&visitor, &link);
}

bool BakeForStatementIteration::_Replace(FunctionSelection* pSelection, TIParentSyntax<Expression>* pParent)
{
	const Expression* pObject = pSelection->GetExpression();
	if (!IsElementOf(pObject, _pParameter->GetName()) ||
	    !IsVariable(static_cast<const Subscript*>(pObject)->GetIndex(), _sVariable))
		return true;
	IShader* pShader = nullptr;
	std::string sMangled;
	return _pParameter->Get(pShader, _iIndex) && pShader &&
	       _pParameter->ResolveMethod(pShader, pSelection, sMangled) &&
	       ReplaceSelectionByCall(pSelection, pParent, sMangled, nullptr);
}

} // namespace Tarsel::Effects
