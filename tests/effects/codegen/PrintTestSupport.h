#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "codegen/VisitorPrintTsl.h"
#include "quillon/Reference.h"
#include "syntax/Syntax.h"
#include "syntax/TslParser.h"

namespace Tarsel::Effects::Testing
{

// Builds trees through the module factories, as the graph and the root compilers do.
struct Tree
{
	std::unique_ptr<Module> m{Module::Create()};

	String* S(const std::string& s) { return m->CreateString(s); }
	Variable* V(const char* pName) { return m->CreateVariable(S(pName)); }
	IntConstant* I(long i) { return m->CreateIntConstant(i); }
	FloatConstant* F(const char* pText) { return m->CreateFloatConstant(S(pText)); }
	Expression* Op(Operator e, Expression* pL, Expression* pR) { return m->CreateBinaryOperator(e, pL, pR); }
	// Hands a node printed on its own to the module, which deletes it.
	Expression* Keep(Expression* p) { return m->AddExpression(p), p; }
	Statement* Keep(Statement* p) { return m->AddStatement(p), p; }
	Expression* Un(Operator e, Expression* p) { return m->CreateUnaryOperator(e, p); }
	Expression* Post(Operator e, Expression* p) { return m->CreatePostOperator(e, p); }
	Expression* Cond(Expression* pC, Expression* pT, Expression* pF)
	{
		return m->CreateConditional(pC, pT, pF);
	}
	Expression* Field(Expression* p, const char* pField) { return m->CreateFieldSelection(p, S(pField)); }
	Expression* Sub(Expression* pArray, Expression* pIndex) { return m->CreateSubscript(pArray, pIndex); }
	Expression* Set(Expression* pL, Expression* pR, Operator e = kOperator_Assign)
	{
		return m->CreateAssignment(e, pL, pR);
	}
	FunctionCall* Call(FunctionCall* pCall, const std::vector<Expression*>& vArguments)
	{
		for (Expression* pArgument : vArguments)
			pCall->AddParameter(pArgument);
		return pCall;
	}
	FunctionCall* Call(const char* pName, const std::vector<Expression*>& vArguments = {})
	{
		return Call(m->CreateFunctionCall(S(pName)), vArguments);
	}
	Statement* E(Expression* pExpression) { return m->CreateExpressionStatement(pExpression); }
	Statement* If(Expression* pCondition, Statement* pThen, Statement* pElse = nullptr)
	{
		SelectionStatement* pIf = m->CreateSelectionStatement();
		pIf->SetCondition(pCondition);
		pIf->SetThen(pThen);
		pIf->SetElse(pElse);
		return pIf;
	}
	CompoundStatement* Block(const std::vector<Statement*>& vStatements)
	{
		CompoundStatement* pBlock = m->CreateCompoundStatement();
		for (Statement* pStatement : vStatements)
			pBlock->AddStatement(pStatement);
		return pBlock;
	}
	VariableDeclaration* Decl(Type* pType, const char* pName, Expression* pInit = nullptr,
	                          StorageQualifier eStorage = kStorage_None)
	{
		VariableDeclaration* pDeclaration = m->CreateVariableDeclaration(pType, S(pName), pInit);
		pDeclaration->SetStorageQualifier(eStorage);
		return pDeclaration;
	}
	DeclarationStatement* Local(TypeSpecifier e, const char* pName, Expression* pInit = nullptr)
	{
		return m->CreateDeclarationStatement(Decl(m->CreateType(e), pName, pInit));
	}
	DeclarationStatement* Global(TypeSpecifier e, const char* pName,
	                             StorageQualifier eStorage = kStorage_None)
	{
		DeclarationStatement* pStatement =
		    m->CreateDeclarationStatement(Decl(m->CreateType(e), pName, nullptr, eStorage));
		m->AddVariableDeclaration(pStatement);
		return pStatement;
	}
	void Globals(const std::vector<std::pair<TypeSpecifier, const char*>>& v,
	             StorageQualifier e = kStorage_None)
	{
		for (const auto& [eType, pName] : v)
			Global(eType, pName, e);
	}
	FunctionParameter* Parameter(Type* pType, const char* pName, ParameterQualifier e = kParameter_None)
	{
		FunctionParameter* pParameter = m->CreateFunctionParameter(pType);
		pParameter->SetName(S(pName));
		pParameter->SetParameterQualifier(e);
		return pParameter;
	}
	FunctionPrototype* Proto(TypeSpecifier eReturn, const char* pName,
	                         const std::vector<FunctionParameter*>& v = {})
	{
		FunctionPrototype* pPrototype =
		    m->CreateFunctionPrototype(kFunction_None, m->CreateType(eReturn), S(pName));
		for (FunctionParameter* pParameter : v)
			pPrototype->AddParameter(pParameter);
		return pPrototype;
	}
	FunctionDefinition* Define(FunctionPrototype* pPrototype, const std::vector<Statement*>& vBody)
	{
		FunctionDefinition* pDefinition = m->CreateFunctionDefinition(pPrototype, Block(vBody));
		m->AddFunctionDefinition(pDefinition);
		return pDefinition;
	}
};

// The text of one expression or statement printed on its own.
template <class Base>
std::string PrintNodeAs(Base* pNode, bool bExpectSuccess = true)
{
	VisitorPrintTsl printer(nullptr, nullptr, false);
	EXPECT_EQ(pNode->AcceptVisitor(&printer, static_cast<TIParentSyntax<Base>*>(nullptr)), bExpectSuccess);
	return printer.result();
}
inline std::string PrintNode(Expression* pNode)
{
	return PrintNodeAs<Expression>(pNode);
}
inline std::string PrintNode(Statement* pNode)
{
	return PrintNodeAs<Statement>(pNode);
}

// Parses text that holds one lone expression ("{e}") or statement ("[s]") into the module; null when the
// text does not parse.
inline bool ParseInto(Module* pModule, const std::string& sText)
{
	std::vector<std::string> vErrors;
	const bool bParsed = TslParser::Parse(pModule, vErrors, "printed", sText, 0);
	for (const std::string& sError : vErrors)
		ADD_FAILURE() << sError << " in " << sText;
	return bParsed;
}

inline Expression* ParseExpression(Module* pModule, const std::string& sText)
{
	const size_t nBefore = pModule->GetExpressions().size();
	return ParseInto(pModule, "{" + sText + "}") && pModule->GetExpressions().size() == nBefore + 1
	           ? pModule->GetExpressions().back()
	           : nullptr;
}

inline Statement* ParseStatement(Module* pModule, const std::string& sText)
{
	const size_t nBefore = pModule->GetStatements().size();
	return ParseInto(pModule, "[" + sText + "]") && pModule->GetStatements().size() == nBefore + 1
	           ? pModule->GetStatements().back()
	           : nullptr;
}

inline std::string ReadFile(const std::string& sPath)
{
	std::ifstream stream(sPath, std::ios::binary);
	std::ostringstream text;
	text << stream.rdbuf();
	return text.str();
}

inline std::string Fixture(const std::string& sName)
{
	return ReadFile(std::string(TARSEL_TEST_DATA_DIR) + "/print/" + sName);
}

// The errors of compiling text as a shader of the given kind on the reference device.
inline std::vector<std::string> CompileOnDevice(const std::string& text, int iKind)
{
	ReferenceContext context;
	IQLShader* pShader = context.CreateShader(iKind);
	std::vector<std::string> errors;
	pShader->SetString(text, errors);
	context.DestroyShader(pShader);
	return errors;
}

} // namespace Tarsel::Effects::Testing
