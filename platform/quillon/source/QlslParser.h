#pragma once

#include "QlslTyping.h"

#include <vector>

namespace Tarsel
{
namespace Qlsl
{

// Reads the tokens of one text into the unit's typed tree, typing each node as it is built.
// Statements recurse once per nesting level (bounded by kMaxStatementNesting); expressions never recurse.
class Parser
{
public:
	Parser(const std::vector<Token>& tokens, int type, QLUnit& unit, Diagnostics& diagnostics);

	void Run();

private:
	// An operator or an open group waiting on the expression stack.
	struct Pending
	{
		enum Kind : uint8_t
		{
			kBinary,
			kPrefix,
			kAssign,
			kComma,
			kColon,    // the ?: once its ':' is seen
			kQuestion, // a '?' waiting for its ':'
			kParen,
			kCall,
			kConstruct,
			kSubscript
		};
		Kind kind;
		int precedence;
		const Token* token; // the operator, '?', '(' or '[', the function or type name for calls
		size_t values;      // size of the value stack when a group opened
		bool IsGroup() const { return kind >= kQuestion; }
	};

	// Tokens (QlslParser.cpp).
	const Token& _Peek(size_t ahead = 0) const
	{
		size_t i = _iPos + ahead;
		return i < _vTokens.size() ? _vTokens[i] : _vTokens.back();
	}
	const Token& _Next();
	bool _Accept(char c);
	bool _Accept(Keyword k);
	const Token& _Expect(char c);
	[[noreturn]] void _Missing(const char* expected);
	[[noreturn]] void _SyntaxError(const Token& token, const std::string& expected);
	const Token& _ExpectIdentifier(const char* what);

	// Declarations (QlslParser.cpp).
	bool _StartsDeclaration() const;
	static bool _IsStorageStart(const Token& t);
	QLStorage _Storage();
	void _CheckStorageForStage(QLStorage storage, int line);
	Type _Type();
	int _ArraySuffix();
	void _External();
	void _GlobalDeclarators(const Type& type, const Token& first, QLStorage storage, bool isConst);
	void _Aggregate();
	void _Function(const Type& returnType, const Token& name);
	Symbol* _Parameter();

	// Statements (QlslStatements.cpp).
	Stmt* _NewStmt(StmtKind kind, int line);
	Stmt* _Statement();
	Stmt* _Block(bool newScope);
	Stmt* _LocalDeclaration();
	void _Condition(Stmt* statement);
	Stmt* _ScopedStatement();
	Stmt* _If();
	Stmt* _While();
	Stmt* _DoWhile();
	Stmt* _For();
	Stmt* _Return();

	// Expressions (QlslExpressions.cpp).
	Expr* _Expression(bool allowComma = true);
	Expr* _Assignment() { return _Expression(false); }
	void _Push(Pending::Kind kind, int precedence, const Token& token);
	void _Reduce();
	void _ReduceAbove(int precedence, bool rightAssociative);
	// Reduces every operator above the innermost open group; answers the group, null when none is open.
	Pending* _ReduceToGroup(size_t base);
	void _CloseCall(const Pending& group);
	Expr* _PopValue();

	const std::vector<Token>& _vTokens;
	size_t _iPos = 0;
	int _iType;
	QLUnit& _rUnit;
	Tree& _rTree;
	Diagnostics& _rDiagnostics;
	Scopes _scopes;
	Typing _typing;
	int _nStatementDepth = 0;
	int _nLoops = 0;
	Type _tReturn;
	std::vector<Pending> _vPending;
	std::vector<Expr*> _vValues;
	std::vector<Stmt*> _vStatements;
};

} // namespace Qlsl
} // namespace Tarsel
