#pragma once

#include "syntax/Expression.h"

#include <vector>

namespace Tarsel::Effects
{

class VariableDeclaration;

class Statement : public Syntax
{
public:
	explicit Statement(Module* pModule) : _pModule(pModule) {}
	~Statement() override = default;

	static Class ClassStatic() { return kClass_Statement; }
	virtual Class GetClass() const = 0;
	virtual Statement* Clone(Module* pModule) const = 0;
	virtual bool Equals(const Statement* pOther) const = 0;
	virtual bool AcceptVisitor(Visitor* pVisitor, TParentSyntaxConst<Statement>* pParent) const = 0;
	virtual bool AcceptVisitor(Visitor* pVisitor, TIParentSyntax<Statement>* pParent) = 0;
	virtual Module* GetModule() const { return _pModule; }

private:
	Module* _pModule;
};

#define TARSEL_STATEMENT_NODE(Name) TARSEL_PARENTED_NODE(Name, Statement)

class EmptyStatement : public Statement
{
public:
	explicit EmptyStatement(Module* pModule) : Statement(pModule) {}
	TARSEL_STATEMENT_NODE(EmptyStatement);
};

class DeclarationStatement : public Statement
{
public:
	DeclarationStatement(Module* pModule, VariableDeclaration* pDeclaration);
	~DeclarationStatement() override;
	TARSEL_STATEMENT_NODE(DeclarationStatement);
	// By class, then by the declarations' order.
	virtual bool operator<(const DeclarationStatement& other) const;

	VariableDeclaration* GetDeclaration() { return _pDeclaration; }
	const VariableDeclaration* GetDeclaration() const { return _pDeclaration; }

private:
	VariableDeclaration* _pDeclaration;
};

class ExpressionStatement : public Statement
{
public:
	ExpressionStatement(Module* pModule, Expression* pExpression);
	~ExpressionStatement() override;
	TARSEL_STATEMENT_NODE(ExpressionStatement);

	Expression* GetExpression() { return _pExpression; }
	const Expression* GetExpression() const { return _pExpression; }
	bool SetExpression(Expression* pExpression) { return _Replace(_pExpression, pExpression); }

private:
	Expression* _pExpression;
};

class CompoundStatement : public Statement
{
public:
	explicit CompoundStatement(Module* pModule) : Statement(pModule) {}
	// The first statement is appended without touching the range.
	CompoundStatement(Module* pModule, Statement* pStatement);
	~CompoundStatement() override;
	TARSEL_STATEMENT_NODE(CompoundStatement);

	std::vector<Statement*>& GetStatements() { return _vStatements; }
	const std::vector<Statement*>& GetStatements() const { return _vStatements; }
	size_t GetCountStatements() const { return _vStatements.size(); }
	// The first statement sets the range, later ones expand it.
	void AddStatement(Statement* pStatement);

private:
	std::vector<Statement*> _vStatements;
};

class SelectionStatement : public Statement
{
public:
	explicit SelectionStatement(Module* pModule) : Statement(pModule) {}
	~SelectionStatement() override;
	TARSEL_STATEMENT_NODE(SelectionStatement);

	Expression* GetCondition() { return _pCondition; }
	const Expression* GetCondition() const { return _pCondition; }
	bool SetCondition(Expression* pCondition) { return _Replace(_pCondition, pCondition); }
	Statement* GetThen() { return _pThen; }
	const Statement* GetThen() const { return _pThen; }
	bool SetThen(Statement* pThen) { return _Replace(_pThen, pThen); }
	Statement* GetElse() { return _pElse; }
	const Statement* GetElse() const { return _pElse; }
	bool SetElse(Statement* pElse) { return _Replace(_pElse, pElse); }

private:
	Expression* _pCondition = nullptr;
	Statement* _pThen = nullptr;
	Statement* _pElse = nullptr;
};

class IterationStatement : public Statement
{
public:
	explicit IterationStatement(Module* pModule, Statement* pStatement = nullptr)
	    : Statement(pModule), _pStatement(pStatement)
	{
	}
	~IterationStatement() override;
	static Class ClassStatic() { return kClass_IterationStatement; }

	Statement* GetStatement() { return _pStatement; }
	const Statement* GetStatement() const { return _pStatement; }
	bool SetStatement(Statement* pStatement) { return _Replace(_pStatement, pStatement); }

private:
	Statement* _pStatement;
};

class WhileStatement : public IterationStatement
{
public:
	WhileStatement(Module* pModule, Condition* pCondition, Statement* pStatement);
	~WhileStatement() override;
	TARSEL_STATEMENT_NODE(WhileStatement);

	Condition* GetCondition() { return _pCondition; }
	const Condition* GetCondition() const { return _pCondition; }
	bool SetCondition(Condition* pCondition) { return _Replace(_pCondition, pCondition); }

private:
	Condition* _pCondition;
};

class DoWhileStatement : public IterationStatement
{
public:
	DoWhileStatement(Module* pModule, Statement* pStatement, Expression* pExpression);
	~DoWhileStatement() override;
	TARSEL_STATEMENT_NODE(DoWhileStatement);

	Expression* GetExpression() { return _pExpression; }
	const Expression* GetExpression() const { return _pExpression; }
	bool SetExpression(Expression* pExpression) { return _Replace(_pExpression, pExpression); }

private:
	Expression* _pExpression;
};

class ForStatement : public IterationStatement
{
public:
	ForStatement(Module* pModule, Expression* pIteration);
	~ForStatement() override;
	TARSEL_STATEMENT_NODE(ForStatement);

	Statement* GetInitialization() { return _pInitialization; }
	const Statement* GetInitialization() const { return _pInitialization; }
	bool SetInitialization(Statement* pStatement) { return _Replace(_pInitialization, pStatement); }
	Condition* GetCondition() { return _pCondition; }
	const Condition* GetCondition() const { return _pCondition; }
	bool SetCondition(Condition* pCondition) { return _Replace(_pCondition, pCondition); }
	Expression* GetIteration() { return _pIteration; }
	const Expression* GetIteration() const { return _pIteration; }
	bool SetIteration(Expression* pIteration) { return _Replace(_pIteration, pIteration); }

private:
	Statement* _pInitialization = nullptr;
	Condition* _pCondition = nullptr;
	Expression* _pIteration;
};

class JumpStatement : public Statement
{
public:
	JumpStatement(Module* pModule, JumpType eType, Expression* pExpression);
	~JumpStatement() override;
	TARSEL_STATEMENT_NODE(JumpStatement);

	JumpType GetType() const { return _eType; }
	Expression* GetExpression() { return _pExpression; }
	const Expression* GetExpression() const { return _pExpression; }
	bool SetExpression(Expression* pExpression) { return _Replace(_pExpression, pExpression); }

private:
	JumpType _eType;
	Expression* _pExpression;
};

} // namespace Tarsel::Effects
