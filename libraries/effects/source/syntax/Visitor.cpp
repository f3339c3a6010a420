#include "syntax/Syntax.h"

namespace Tarsel::Effects
{

// ---------------------------------------------------------------------------------------------------------
// Double dispatch: every node hands itself to the overload of its own class.
// ---------------------------------------------------------------------------------------------------------

#define TARSEL_ACCEPT_WITH_PARENT(Name, Family)                                                              \
	bool Name::AcceptVisitor(Visitor* pVisitor, TParentSyntaxConst<Family>* pParent) const                   \
	{                                                                                                        \
		return pVisitor->Visit(this, pParent);                                                               \
	}                                                                                                        \
	bool Name::AcceptVisitor(Visitor* pVisitor, TIParentSyntax<Family>* pParent)                             \
	{                                                                                                        \
		return pVisitor->Visit(this, pParent);                                                               \
	}

#define TARSEL_ACCEPT(Name)                                                                                  \
	bool Name::AcceptVisitor(Visitor* pVisitor) const                                                        \
	{                                                                                                        \
		return pVisitor->Visit(this);                                                                        \
	}                                                                                                        \
	bool Name::AcceptVisitor(Visitor* pVisitor)                                                              \
	{                                                                                                        \
		return pVisitor->Visit(this);                                                                        \
	}

TARSEL_ACCEPT_WITH_PARENT(Assignment, Expression)
TARSEL_ACCEPT_WITH_PARENT(BoolConstant, Expression)
TARSEL_ACCEPT_WITH_PARENT(IntConstant, Expression)
TARSEL_ACCEPT_WITH_PARENT(FloatConstant, Expression)
TARSEL_ACCEPT_WITH_PARENT(UnaryOperator, Expression)
TARSEL_ACCEPT_WITH_PARENT(PostOperator, Expression)
TARSEL_ACCEPT_WITH_PARENT(BinaryOperator, Expression)
TARSEL_ACCEPT_WITH_PARENT(Conditional, Expression)
TARSEL_ACCEPT_WITH_PARENT(Variable, Expression)
TARSEL_ACCEPT_WITH_PARENT(FieldSelection, Expression)
TARSEL_ACCEPT_WITH_PARENT(FunctionSelection, Expression)
TARSEL_ACCEPT_WITH_PARENT(Subscript, Expression)
TARSEL_ACCEPT_WITH_PARENT(FunctionCall, Expression)
TARSEL_ACCEPT_WITH_PARENT(Condition, Expression)
TARSEL_ACCEPT_WITH_PARENT(EmptyStatement, Statement)
TARSEL_ACCEPT_WITH_PARENT(DeclarationStatement, Statement)
TARSEL_ACCEPT_WITH_PARENT(ExpressionStatement, Statement)
TARSEL_ACCEPT_WITH_PARENT(CompoundStatement, Statement)
TARSEL_ACCEPT_WITH_PARENT(SelectionStatement, Statement)
TARSEL_ACCEPT_WITH_PARENT(WhileStatement, Statement)
TARSEL_ACCEPT_WITH_PARENT(DoWhileStatement, Statement)
TARSEL_ACCEPT_WITH_PARENT(ForStatement, Statement)
TARSEL_ACCEPT_WITH_PARENT(JumpStatement, Statement)
TARSEL_ACCEPT(Type)
TARSEL_ACCEPT(UserType)
TARSEL_ACCEPT(VariableDeclaration)
TARSEL_ACCEPT(FunctionParameter)
TARSEL_ACCEPT(FunctionPrototype)
TARSEL_ACCEPT(FunctionDefinition)
TARSEL_ACCEPT(StructDefinition)
TARSEL_ACCEPT(InterfaceDefinition)
TARSEL_ACCEPT(ClassDefinition)
TARSEL_ACCEPT(Module)

#undef TARSEL_ACCEPT_WITH_PARENT
#undef TARSEL_ACCEPT

// ---------------------------------------------------------------------------------------------------------
// Declarations. The module's variable declarations and function bodies sit behind null links: they are
// not replaced through a walk.
// ---------------------------------------------------------------------------------------------------------

bool Visitor::Visit(const Module* pModule)
{
	for (size_t i = 0; i < pModule->GetVariableDeclarations().size(); ++i)
	{
		if (!_VisitChild<Statement>(pModule->GetVariableDeclarations()[i], pModule))
			return false;
	}
	if (!_VisitAllConst(pModule->GetFunctionDeclarations()) ||
	    !_VisitAllConst(pModule->GetFunctionDefinitions()) || !_VisitAllConst(pModule->GetClassDefinitions()))
		return false;
	for (const auto& entry : pModule->GetInterfaceIndex())
	{
		const InterfaceDefinition* pInterface = entry.second;
		if (!pInterface->AcceptVisitor(this))
			return false;
	}
	return true;
}

bool Visitor::Visit(Module* pModule)
{
	for (size_t i = 0; i < pModule->GetVariableDeclarations().size(); ++i)
	{
		TParentSyntaxNull<Statement> link;
		if (!_VisitChild<Statement>(pModule->GetVariableDeclarations()[i], &link))
			return false;
	}
	if (!_VisitAll(pModule->GetFunctionDeclarations()) || !_VisitAll(pModule->GetFunctionDefinitions()) ||
	    !_VisitAll(pModule->GetClassDefinitions()))
		return false;
	for (const auto& entry : pModule->GetInterfaceIndex())
	{
		if (!entry.second->AcceptVisitor(this))
			return false;
	}
	return true;
}

bool Visitor::Visit(const InterfaceDefinition* pNode)
{
	return _VisitAllConst(pNode->GetMemberFunctions());
}

bool Visitor::Visit(InterfaceDefinition* pNode)
{
	return _VisitAll(pNode->GetMemberFunctions());
}

bool Visitor::Visit(const ClassDefinition* pNode)
{
	return _VisitAllConst(pNode->GetMemberVariables()) && _VisitAllConst(pNode->GetMemberFunctions());
}

bool Visitor::Visit(ClassDefinition* pNode)
{
	return _VisitAll(pNode->GetMemberVariables()) && _VisitAll(pNode->GetMemberFunctions());
}

bool Visitor::Visit(const StructDefinition* pNode)
{
	return _VisitAllConst(pNode->GetMemberVariables());
}

bool Visitor::Visit(StructDefinition* pNode)
{
	return _VisitAll(pNode->GetMemberVariables());
}

bool Visitor::Visit(const FunctionParameter* pNode)
{
	return !pNode->GetType() || pNode->GetType()->AcceptVisitor(this);
}

bool Visitor::Visit(FunctionParameter* pNode)
{
	return !pNode->GetType() || pNode->GetType()->AcceptVisitor(this);
}

bool Visitor::Visit(const FunctionDefinition* pNode)
{
	const FunctionPrototype* pPrototype = pNode->GetFunctionPrototype();
	if (pPrototype && !pPrototype->AcceptVisitor(this))
		return false;
	return _VisitChild<Statement>(pNode->GetCompoundStatement(), pNode);
}

bool Visitor::Visit(FunctionDefinition* pNode)
{
	FunctionPrototype* pPrototype = pNode->GetFunctionPrototype();
	if (pPrototype && !pPrototype->AcceptVisitor(this))
		return false;
	TParentSyntaxNull<Statement> link;
	return _VisitChild<Statement>(pNode->GetCompoundStatement(), &link);
}

bool Visitor::Visit(const FunctionPrototype* pNode)
{
	const Type* pReturnType = pNode->GetReturnType();
	if (pReturnType && !pReturnType->AcceptVisitor(this))
		return false;
	return _VisitAllConst(pNode->GetParameters());
}

bool Visitor::Visit(FunctionPrototype* pNode)
{
	Type* pReturnType = pNode->GetReturnType();
	if (pReturnType && !pReturnType->AcceptVisitor(this))
		return false;
	return _VisitAll(pNode->GetParameters());
}

bool Visitor::Visit(const VariableDeclaration* pNode)
{
	const Type* pType = pNode->GetType();
	if (pType && !pType->AcceptVisitor(this))
		return false;
	return _VisitChild<Expression>(pNode->GetInitializer(), pNode);
}

bool Visitor::Visit(VariableDeclaration* pNode)
{
	Type* pType = pNode->GetType();
	if (pType && !pType->AcceptVisitor(this))
		return false;
	return _VisitBound<&VariableDeclaration::SetInitializer>(pNode, nullptr, pNode->GetInitializer());
}

bool Visitor::Visit(const UserType*)
{
	return true;
}

bool Visitor::Visit(UserType*)
{
	return true;
}

bool Visitor::Visit(const Type*)
{
	return true;
}

bool Visitor::Visit(Type*)
{
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Statements. Each child link names the holder's setter, and the holder's own link for walking upwards.
// ---------------------------------------------------------------------------------------------------------

bool Visitor::Visit(const JumpStatement* pNode, TParentSyntaxConst<Statement>*)
{
	return _VisitChild<Expression>(pNode->GetExpression(), pNode);
}

bool Visitor::Visit(JumpStatement* pNode, TIParentSyntax<Statement>* pParent)
{
	return _VisitBound<&JumpStatement::SetExpression>(pNode, pParent, pNode->GetExpression());
}

bool Visitor::Visit(const ForStatement* pNode, TParentSyntaxConst<Statement>*)
{
	return _VisitChild<Statement>(pNode->GetInitialization(), pNode) &&
	       _VisitChild<Expression>(pNode->GetCondition(), pNode) &&
	       _VisitChild<Expression>(pNode->GetIteration(), pNode) &&
	       _VisitChild<Statement>(pNode->GetStatement(), pNode);
}

bool Visitor::Visit(ForStatement* pNode, TIParentSyntax<Statement>* pParent)
{
	if (!_VisitBound<&ForStatement::SetInitialization>(pNode, pParent, pNode->GetInitialization()))
		return false;
	ParentExpressionPolicy<ReplaceConditionTyped<ForStatement>> conditionLink(pNode, pParent);
	if (!_VisitChild<Expression>(pNode->GetCondition(), &conditionLink))
		return false;
	return _VisitBound<&ForStatement::SetIteration>(pNode, pParent, pNode->GetIteration()) &&
	       _VisitBound<&ForStatement::SetStatement>(pNode, pParent, pNode->GetStatement());
}

bool Visitor::Visit(const DoWhileStatement* pNode, TParentSyntaxConst<Statement>*)
{
	return _VisitChild<Statement>(pNode->GetStatement(), pNode) &&
	       _VisitChild<Expression>(pNode->GetExpression(), pNode);
}

bool Visitor::Visit(DoWhileStatement* pNode, TIParentSyntax<Statement>* pParent)
{
	return _VisitBound<&DoWhileStatement::SetStatement>(pNode, pParent, pNode->GetStatement()) &&
	       _VisitBound<&DoWhileStatement::SetExpression>(pNode, pParent, pNode->GetExpression());
}

bool Visitor::Visit(const WhileStatement* pNode, TParentSyntaxConst<Statement>*)
{
	return _VisitChild<Expression>(pNode->GetCondition(), pNode) &&
	       _VisitChild<Statement>(pNode->GetStatement(), pNode);
}

bool Visitor::Visit(WhileStatement* pNode, TIParentSyntax<Statement>* pParent)
{
	ParentExpressionPolicy<ReplaceConditionTyped<WhileStatement>> conditionLink(pNode, pParent);
	if (!_VisitChild<Expression>(pNode->GetCondition(), &conditionLink))
		return false;
	return _VisitBound<&WhileStatement::SetStatement>(pNode, pParent, pNode->GetStatement());
}

bool Visitor::Visit(const SelectionStatement* pNode, TParentSyntaxConst<Statement>*)
{
	return _VisitChild<Expression>(pNode->GetCondition(), pNode) &&
	       _VisitChild<Statement>(pNode->GetThen(), pNode) && _VisitChild<Statement>(pNode->GetElse(), pNode);
}

bool Visitor::Visit(SelectionStatement* pNode, TIParentSyntax<Statement>* pParent)
{
	return _VisitBound<&SelectionStatement::SetCondition>(pNode, pParent, pNode->GetCondition()) &&
	       _VisitBound<&SelectionStatement::SetThen>(pNode, pParent, pNode->GetThen()) &&
	       _VisitBound<&SelectionStatement::SetElse>(pNode, pParent, pNode->GetElse());
}

bool Visitor::Visit(const CompoundStatement* pNode, TParentSyntaxConst<Statement>*)
{
	return _VisitElements(pNode->GetStatements(), pNode);
}

bool Visitor::Visit(CompoundStatement* pNode, TIParentSyntax<Statement>*)
{
	return _VisitElements(pNode->GetStatements());
}

bool Visitor::Visit(const ExpressionStatement* pNode, TParentSyntaxConst<Statement>*)
{
	return _VisitChild<Expression>(pNode->GetExpression(), pNode);
}

bool Visitor::Visit(ExpressionStatement* pNode, TIParentSyntax<Statement>* pParent)
{
	return _VisitBound<&ExpressionStatement::SetExpression>(pNode, pParent, pNode->GetExpression());
}

bool Visitor::Visit(const DeclarationStatement* pNode, TParentSyntaxConst<Statement>*)
{
	const VariableDeclaration* pDeclaration = pNode->GetDeclaration();
	return !pDeclaration || pDeclaration->AcceptVisitor(this);
}

bool Visitor::Visit(DeclarationStatement* pNode, TIParentSyntax<Statement>*)
{
	VariableDeclaration* pDeclaration = pNode->GetDeclaration();
	return !pDeclaration || pDeclaration->AcceptVisitor(this);
}

bool Visitor::Visit(const EmptyStatement*, TParentSyntaxConst<Statement>*)
{
	return true;
}

bool Visitor::Visit(EmptyStatement*, TIParentSyntax<Statement>*)
{
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Expressions
// ---------------------------------------------------------------------------------------------------------

bool Visitor::Visit(const Condition* pNode, TParentSyntaxConst<Expression>*)
{
	if (pNode->GetExpression())
		return _VisitChild<Expression>(pNode->GetExpression(), pNode);
	const Declaration* pDeclaration = pNode->GetDeclaration();
	return !pDeclaration || pDeclaration->AcceptVisitor(this);
}

bool Visitor::Visit(Condition* pNode, TIParentSyntax<Expression>* pParent)
{
	if (pNode->GetExpression())
		return _VisitBound<&Condition::SetExpression>(pNode, pParent, pNode->GetExpression());
	Declaration* pDeclaration = pNode->GetDeclaration();
	return !pDeclaration || pDeclaration->AcceptVisitor(this);
}

bool Visitor::Visit(const FunctionCall* pNode, TParentSyntaxConst<Expression>*)
{
	return _VisitElements(pNode->GetParameters(), pNode);
}

bool Visitor::Visit(FunctionCall* pNode, TIParentSyntax<Expression>*)
{
	return _VisitElements(pNode->GetParameters());
}

bool Visitor::Visit(const Subscript* pNode, TParentSyntaxConst<Expression>*)
{
	return _VisitChild<Expression>(pNode->GetArray(), pNode) &&
	       _VisitChild<Expression>(pNode->GetIndex(), pNode);
}

bool Visitor::Visit(Subscript* pNode, TIParentSyntax<Expression>* pParent)
{
	return _VisitBound<&Subscript::SetArray>(pNode, pParent, pNode->GetArray()) &&
	       _VisitBound<&Subscript::SetIndex>(pNode, pParent, pNode->GetIndex());
}

bool Visitor::Visit(const FunctionSelection* pNode, TParentSyntaxConst<Expression>*)
{
	return _VisitChild<Expression>(pNode->GetExpression(), pNode) &&
	       _VisitChild<Expression>(pNode->GetFunction(), pNode);
}

bool Visitor::Visit(FunctionSelection* pNode, TIParentSyntax<Expression>* pParent)
{
	if (!_VisitBound<&FunctionSelection::SetExpression>(pNode, pParent, pNode->GetExpression()))
		return false;
	ParentExpressionPolicy<ReplaceFunction<FunctionSelection>> functionLink(pNode, pParent);
	return _VisitChild<Expression>(pNode->GetFunction(), &functionLink);
}

bool Visitor::Visit(const FieldSelection* pNode, TParentSyntaxConst<Expression>*)
{
	return _VisitChild<Expression>(pNode->GetExpression(), pNode);
}

bool Visitor::Visit(FieldSelection* pNode, TIParentSyntax<Expression>* pParent)
{
	return _VisitBound<&FieldSelection::SetExpression>(pNode, pParent, pNode->GetExpression());
}

bool Visitor::Visit(const Variable*, TParentSyntaxConst<Expression>*)
{
	return true;
}

bool Visitor::Visit(Variable*, TIParentSyntax<Expression>*)
{
	return true;
}

bool Visitor::Visit(const Conditional* pNode, TParentSyntaxConst<Expression>*)
{
	return _VisitChild<Expression>(pNode->GetCondition(), pNode) &&
	       _VisitChild<Expression>(pNode->GetTrue(), pNode) &&
	       _VisitChild<Expression>(pNode->GetFalse(), pNode);
}

bool Visitor::Visit(Conditional* pNode, TIParentSyntax<Expression>* pParent)
{
	return _VisitBound<&Conditional::SetCondition>(pNode, pParent, pNode->GetCondition()) &&
	       _VisitBound<&Conditional::SetTrue>(pNode, pParent, pNode->GetTrue()) &&
	       _VisitBound<&Conditional::SetFalse>(pNode, pParent, pNode->GetFalse());
}

bool Visitor::Visit(const BinaryOperator* pNode, TParentSyntaxConst<Expression>*)
{
	return _VisitChild<Expression>(pNode->GetLeft(), pNode) &&
	       _VisitChild<Expression>(pNode->GetRight(), pNode);
}

bool Visitor::Visit(BinaryOperator* pNode, TIParentSyntax<Expression>* pParent)
{
	return _VisitBound<&BinaryOperator::SetLeft>(pNode, pParent, pNode->GetLeft()) &&
	       _VisitBound<&BinaryOperator::SetRight>(pNode, pParent, pNode->GetRight());
}

bool Visitor::Visit(const PostOperator* pNode, TParentSyntaxConst<Expression>*)
{
	return _VisitChild<Expression>(pNode->GetExpression(), pNode);
}

bool Visitor::Visit(PostOperator* pNode, TIParentSyntax<Expression>* pParent)
{
	return _VisitBound<&PostOperator::SetExpression>(pNode, pParent, pNode->GetExpression());
}

bool Visitor::Visit(const UnaryOperator* pNode, TParentSyntaxConst<Expression>*)
{
	return _VisitChild<Expression>(pNode->GetExpression(), pNode);
}

bool Visitor::Visit(UnaryOperator* pNode, TIParentSyntax<Expression>* pParent)
{
	return _VisitBound<&UnaryOperator::SetExpression>(pNode, pParent, pNode->GetExpression());
}

bool Visitor::Visit(const FloatConstant*, TParentSyntaxConst<Expression>*)
{
	return true;
}

bool Visitor::Visit(FloatConstant*, TIParentSyntax<Expression>*)
{
	return true;
}

bool Visitor::Visit(const IntConstant*, TParentSyntaxConst<Expression>*)
{
	return true;
}

bool Visitor::Visit(IntConstant*, TIParentSyntax<Expression>*)
{
	return true;
}

bool Visitor::Visit(const BoolConstant*, TParentSyntaxConst<Expression>*)
{
	return true;
}

bool Visitor::Visit(BoolConstant*, TIParentSyntax<Expression>*)
{
	return true;
}

bool Visitor::Visit(const Assignment* pNode, TParentSyntaxConst<Expression>*)
{
	return _VisitChild<Expression>(pNode->GetLeft(), pNode) &&
	       _VisitChild<Expression>(pNode->GetRight(), pNode);
}

bool Visitor::Visit(Assignment* pNode, TIParentSyntax<Expression>* pParent)
{
	return _VisitBound<&Assignment::SetLeft>(pNode, pParent, pNode->GetLeft()) &&
	       _VisitBound<&Assignment::SetRight>(pNode, pParent, pNode->GetRight());
}

} // namespace Tarsel::Effects
