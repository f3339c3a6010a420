#pragma once

#include "syntax/Syntax.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace Tarsel
{
class Result;
class IMgrConsole;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IMgrEffects;

// Turns a finished module into QLSL text, keeping for every line of the text the node that produced it so
// that compiler errors can be traced back to library source. Also lowers accumulate(output, value) onto the
// output attachment index uniforms. One printer prints one module.
class VisitorPrintTsl : public Visitor
{
public:
	// bOutputIndices: whether the program declares the output attachment index uniforms (graph shaders do,
	// root and vertex shaders do not).
	VisitorPrintTsl(Result* pResult, IMgrEffects* pMgrEffects, bool bOutputIndices);

	using Visitor::Visit;

	// Sorts the module's top-level lists in place, then prints it. False when any node cannot be printed;
	// the text is then left empty so that no caller compiles half a program.
	bool Visit(Module* pModule) override;

	std::string& result() { return _sResult; }
	const std::set<std::string>& GetOutputsUsed() const { return _setOutputsUsed; }
	// The node that produced a 1-based line; the module for lines that no node claims or that do not exist.
	Syntax* GetSyntaxForLine(int nLine) const;

	bool Visit(ClassDefinition* pNode) override;
	bool Visit(StructDefinition* pNode) override;
	bool Visit(FunctionParameter* pNode) override;
	bool Visit(FunctionDefinition* pNode) override;
	bool Visit(FunctionPrototype* pNode) override;
	bool Visit(VariableDeclaration* pNode) override;
	bool Visit(UserType* pNode) override;
	bool Visit(Type* pNode) override;
	bool Visit(JumpStatement* pNode, TIParentSyntax<Statement>* pParent) override;
	bool Visit(ForStatement* pNode, TIParentSyntax<Statement>* pParent) override;
	bool Visit(DoWhileStatement* pNode, TIParentSyntax<Statement>* pParent) override;
	bool Visit(WhileStatement* pNode, TIParentSyntax<Statement>* pParent) override;
	bool Visit(SelectionStatement* pNode, TIParentSyntax<Statement>* pParent) override;
	bool Visit(CompoundStatement* pNode, TIParentSyntax<Statement>* pParent) override;
	bool Visit(ExpressionStatement* pNode, TIParentSyntax<Statement>* pParent) override;
	bool Visit(DeclarationStatement* pNode, TIParentSyntax<Statement>* pParent) override;
	bool Visit(EmptyStatement* pNode, TIParentSyntax<Statement>* pParent) override;
	bool Visit(Condition* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(FunctionCall* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(Subscript* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(FunctionSelection* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(FieldSelection* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(Variable* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(Conditional* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(BinaryOperator* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(PostOperator* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(UnaryOperator* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(FloatConstant* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(IntConstant* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(BoolConstant* pNode, TIParentSyntax<Expression>* pParent) override;
	bool Visit(Assignment* pNode, TIParentSyntax<Expression>* pParent) override;

private:
	// Indentation of the current depth; p owns the line being written.
	void StartNewLine(Syntax* p);
	// Ends the line; p owns the line that follows.
	void EndLine(Syntax* p);
	void _Indent();
	// Appends text, with a blank first where the two sides would otherwise lex as other tokens.
	void _Append(std::string_view sText);

	// How loosely a printed expression binds; a position takes without parentheses what binds at least
	// as tightly as its rank.
	enum Rank
	{
		kRank_Postfix,
		kRank_Unary,
		kRank_Conditional,
		kRank_Assignment
	};
	static Rank _RankOf(const Expression* pExpression);
	bool _PrintOperand(Expression* pExpression, Rank eMaximum);
	bool _PrintModule(Module* pModule);
	// A then-branch that would capture the else of its if when printed without braces.
	bool _PrintBracedThen(Statement* pThen);

	// The printer never replaces nodes, so children are visited without parent links. A missing child
	// fails the print instead of crashing it.
	bool _Print(Expression* pExpression)
	{
		return pExpression &&
		       pExpression->AcceptVisitor(this, static_cast<TIParentSyntax<Expression>*>(nullptr));
	}
	bool _Print(Statement* pStatement)
	{
		return pStatement &&
		       pStatement->AcceptVisitor(this, static_cast<TIParentSyntax<Statement>*>(nullptr));
	}
	// Declarations, types and parameters.
	template <class N>
	bool _PrintNode(N* pNode)
	{
		return pNode && pNode->AcceptVisitor(this);
	}
	// Each node, then pTerminator, then a newline owned by pOwner.
	template <class N>
	bool _PrintLines(std::vector<N*>& vNodes, const char* pTerminator, Syntax* pOwner);

	void _AppendInt(long iValue);
	void _PrependOutputIndices();

	// Accumulate lowering. Answers false when the call cannot be printed; sets bOmit when nothing at all is
	// to be printed for it, sFirst to the text that replaces the first argument.
	bool _LowerAccumulate(FunctionCall* pCall, bool& bOmit, std::string& sFirst);
	bool _PrintRemovedCall(FunctionCall* pCall, const std::string& sName);
	// The manager's console, else the process console.
	IMgrConsole* _Console() const;
	// Reports a malformed accumulate to the console and the module.
	void _Fail(const char* pMessage);

	IMgrEffects* _pMgrEffects;
	Result* _pResult;
	bool _bOutputIndices;
	Module* _pModule;
	std::string _sResult;
	int _nIndent;
	std::vector<Syntax*> _vLines;
	std::set<std::string> _setOutputsUsed;
	// Left spines of binary chains being printed, innermost last; shared so that nesting reuses it.
	std::vector<BinaryOperator*> _vChain;
};

} // namespace Tarsel::Effects
