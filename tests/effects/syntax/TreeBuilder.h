#pragma once

// Terse construction of trees through a module's factories, for the syntax-tree tests.
#include "syntax/Syntax.h"

namespace Tarsel::Effects::Test
{

class TreeBuilder
{
public:
	explicit TreeBuilder(Module* pModule) : m(pModule) {}

	Variable* Var(const char* pName) { return m->CreateVariable(m->CreateString(pName)); }
	IntConstant* Int(long i) { return m->CreateIntConstant(i); }
	FloatConstant* Float(const char* pText) { return m->CreateFloatConstant(m->CreateString(pText)); }
	BinaryOperator* Bin(Operator e, Expression* pLeft, Expression* pRight)
	{
		return m->CreateBinaryOperator(e, pLeft, pRight);
	}
	Assignment* Assign(Operator e, Expression* pLeft, Expression* pRight)
	{
		return m->CreateAssignment(e, pLeft, pRight);
	}
	ExpressionStatement* Stmt(Expression* p) { return m->CreateExpressionStatement(p); }
	JumpStatement* Return(Expression* p = nullptr) { return m->CreateJumpStatement(kJump_Return, p); }
	FunctionCall* Call(const char* pName, std::initializer_list<Expression*> arguments)
	{
		FunctionCall* p = m->CreateFunctionCall(m->CreateString(pName));
		for (Expression* pArgument : arguments)
			p->AddParameter(pArgument);
		return p;
	}
	VariableDeclaration* Decl(TypeSpecifier e, const char* pName, Expression* pInit = nullptr)
	{
		return m->CreateVariableDeclaration(m->CreateType(e), m->CreateString(pName), pInit);
	}
	FunctionParameter* Param(TypeSpecifier e, const char* pName, ParameterQualifier q = kParameter_In)
	{
		FunctionParameter* p = m->CreateFunctionParameter(m->CreateType(e));
		p->SetName(m->CreateString(pName));
		p->SetParameterQualifier(q);
		return p;
	}
	FunctionPrototype* Proto(TypeSpecifier eReturn, const char* pName,
	                         std::initializer_list<FunctionParameter*> params)
	{
		FunctionPrototype* p =
		    m->CreateFunctionPrototype(kFunction_None, m->CreateType(eReturn), m->CreateString(pName));
		for (FunctionParameter* pParam : params)
			p->AddParameter(pParam);
		return p;
	}
	CompoundStatement* Block(std::initializer_list<Statement*> statements)
	{
		CompoundStatement* p = m->CreateCompoundStatement();
		for (Statement* pStatement : statements)
			p->AddStatement(pStatement);
		return p;
	}
	static LocationRange Range(int iLine, int iColumn, int iEndLine, int iEndColumn,
	                           const std::string* pSource = nullptr)
	{
		return LocationRange(pSource, iLine, iColumn, iEndLine, iEndColumn);
	}

	// float shade(float a, out vec3 c) touching every statement and expression kind.
	FunctionDefinition* EveryKind()
	{
		FunctionPrototype* pProto =
		    Proto(kType_Float, "shade", {Param(kType_Float, "a"), Param(kType_Vec3, "c", kParameter_Out)});
		ForStatement* pFor = m->CreateForStatement(m->CreatePostOperator(kOperator_Increment, Var("i")));
		pFor->SetInitialization(m->CreateDeclarationStatement(Decl(kType_Int, "i", Int(0))));
		pFor->SetCondition(m->CreateCondition(Bin(kOperator_Less, Var("i"), Int(4))));
		pFor->SetStatement(Block({Stmt(Assign(kOperator_Add, Var("a"), Float("0.5"))),
		                          m->CreateJumpStatement(kJump_Continue, nullptr)}));
		SelectionStatement* pIf = m->CreateSelectionStatement();
		pIf->SetCondition(m->CreateUnaryOperator(kOperator_Not, m->CreateBoolConstant(false)));
		pIf->SetThen(m->CreateJumpStatement(kJump_Break, nullptr));
		pIf->SetElse(m->CreateEmptyStatement());
		FunctionCall* pCtor = m->CreateFunctionCall(m->CreateType(kType_Vec3));
		pCtor->AddParameter(m->CreateConditional(Var("a"), Int(1), Int(2)));
		Expression* pSelect = m->CreateFunctionSelection(
		    Var("light"), Call("Shade", {m->CreateFieldSelection(Var("p"), m->CreateString("xyz"))}));
		CompoundStatement* pBody = Block({
		    pFor,
		    m->CreateWhileStatement(m->CreateCondition(Decl(kType_Bool, "go", m->CreateBoolConstant(true))),
		                            pIf),
		    m->CreateDoWhileStatement(Stmt(Assign(kOperator_Assign, Var("c"), pCtor)),
		                              Bin(kOperator_LogicalAnd, Var("a"), pSelect)),
		    Stmt(m->CreateSubscript(Var("arr"), Int(3))),
		    Return(Var("a")),
		});
		FunctionDefinition* pDefinition = m->CreateFunctionDefinition(pProto, pBody);
		int iLine = 1;
		SetRanges(pBody, iLine);
		return pDefinition;
	}

private:
	// Distinct ranges per statement so that range copies can be checked.
	static void SetRanges(CompoundStatement* pBlock, int& iLine)
	{
		for (Statement* p : pBlock->GetStatements())
		{
			p->SetRange(Range(iLine, 1, iLine, 10));
			++iLine;
		}
	}

	Module* m;
};

} // namespace Tarsel::Effects::Test
