#include "QlslParser.h"

namespace Tarsel
{
namespace Qlsl
{
namespace
{

// Refuses nesting deeper than statements can safely recurse.
class StatementNest
{
public:
	StatementNest(int& depth, Diagnostics& diagnostics, int line) : _rDepth(depth)
	{
		if (++_rDepth > kMaxStatementNesting)
			diagnostics.Fatal(line, "nesting too deep (more than " + std::to_string(kMaxStatementNesting) +
			                            " levels)");
	}
	~StatementNest() { --_rDepth; }

private:
	int& _rDepth;
};

// Loop bodies see break and continue.
class LoopBody
{
public:
	explicit LoopBody(int& loops) : _rLoops(loops) { ++_rLoops; }
	~LoopBody() { --_rLoops; }

private:
	int& _rLoops;
};

} // namespace

Stmt* Parser::_NewStmt(StmtKind kind, int line)
{
	Stmt* statement = _rTree.arena.New<Stmt>();
	statement->kind = kind;
	statement->line = line;
	return statement;
}

Stmt* Parser::_Block(bool newScope)
{
	StatementNest nest(_nStatementDepth, _rDiagnostics, _Peek().line);
	Stmt* block = _NewStmt(kStmt_Block, _Expect('{').line);
	if (newScope)
		_scopes.Push();
	// Children wait on one shared stack, which saves a vector per block.
	size_t first = _vStatements.size();
	while (!_Accept('}'))
	{
		if (_Peek().kind == kToken_End)
			_SyntaxError(_Peek(), "'}'");
		Stmt* child = _Statement();
		_vStatements.push_back(child);
	}
	if (newScope)
		_scopes.Pop();
	block->count = uint32_t(_vStatements.size() - first);
	block->children = _rTree.arena.Array<Stmt>(_vStatements.data() + first, block->count);
	_vStatements.resize(first);
	return block;
}

Stmt* Parser::_Statement()
{
	const Token& t = _Peek();
	if (t.Is('{'))
		return _Block(true);
	StatementNest nest(_nStatementDepth, _rDiagnostics, t.line);
	if (_Accept(';'))
		return _NewStmt(kStmt_Empty, t.line);
	switch (t.kind == kToken_Keyword ? t.keyword : kKw_None)
	{
	case kKw_If:
		return _If();
	case kKw_While:
		return _While();
	case kKw_Do:
		return _DoWhile();
	case kKw_For:
		return _For();
	case kKw_Return:
		return _Return();
	case kKw_Break:
	case kKw_Continue:
		_Next();
		if (_nLoops == 0)
			_rDiagnostics.Error(t.line, Quote(t.text) + " : only allowed inside a loop");
		_Expect(';');
		return _NewStmt(t.Is(kKw_Break) ? kStmt_Break : kStmt_Continue, t.line);
	default:
		break;
	}
	if (_StartsDeclaration())
		return _LocalDeclaration();
	Stmt* statement = _NewStmt(kStmt_Expression, t.line);
	statement->expr = _Expression();
	_Expect(';');
	return statement;
}

Stmt* Parser::_LocalDeclaration()
{
	int line = _Peek().line;
	_Accept(kKw_Static);
	bool isConst = _Accept(kKw_Const);
	if (_IsStorageStart(_Peek()))
	{
		QLStorage storage = _Storage();
		_rDiagnostics.Error(line, Quote(QLStorageText(storage)) + " : not allowed on local variables");
	}
	Type type = _Type();
	std::vector<Symbol*> declared;
	for (;;)
	{
		const Token& name = _ExpectIdentifier("an identifier");
		Type variable = type;
		variable.array = _ArraySuffix();
		if (variable.base == kBase_Void)
			_rDiagnostics.Error(name.line, Quote(name.text) + " : variables cannot be void");
		else if (variable.HasOpaque())
			_rDiagnostics.Error(name.line,
			                    Quote(name.text) + " : " + Quote(variable) + " cannot be a local variable");
		// The initializer cannot see the variable it initializes.
		const Expr* initializer = nullptr;
		if (_Accept('='))
		{
			initializer = _Assignment();
			_typing.Initializer(name, variable, initializer);
		}
		else if (isConst)
			_rDiagnostics.Error(name.line, Quote(name.text) + " : 'const' variable needs an initializer");
		Symbol* symbol = _scopes.DeclareLocal(name, variable, kSymbol_Local);
		symbol->isConst = isConst;
		symbol->readOnly = isConst;
		symbol->initializer = initializer;
		declared.push_back(symbol);
		if (!_Accept(','))
			break;
	}
	_Expect(';');
	Stmt* statement = _NewStmt(kStmt_Declaration, line);
	statement->declared = _rTree.arena.Array<Symbol>(declared.data(), declared.size());
	statement->declaredCount = uint32_t(declared.size());
	return statement;
}

// "( expression )" or "( type name = initializer )"; a declared name becomes the condition itself.
void Parser::_Condition(Stmt* statement)
{
	_Expect('(');
	if (_StartsDeclaration())
	{
		int line = _Peek().line;
		Type type = _Type();
		const Token& name = _ExpectIdentifier("an identifier");
		_Expect('=');
		Expr* initializer = _Assignment();
		_typing.Initializer(name, type, initializer);
		Symbol* symbol = _scopes.DeclareLocal(name, type, kSymbol_Local);
		symbol->initializer = initializer;
		statement->init = _NewStmt(kStmt_Declaration, line);
		statement->init->declared = _rTree.arena.Array<Symbol>(&symbol, 1);
		statement->init->declaredCount = 1;
		statement->expr = _typing.Variable(name);
	}
	else
	{
		statement->expr = _Expression();
	}
	_typing.Condition(statement->expr, statement->kind == kStmt_If ? "if" : "while");
	_Expect(')');
}

Stmt* Parser::_ScopedStatement()
{
	_scopes.Push();
	Stmt* statement = _Statement();
	_scopes.Pop();
	return statement;
}

Stmt* Parser::_If()
{
	Stmt* statement = _NewStmt(kStmt_If, _Next().line);
	_scopes.Push();
	_Condition(statement);
	statement->body = _ScopedStatement();
	if (_Accept(kKw_Else))
		statement->otherwise = _ScopedStatement();
	_scopes.Pop();
	return statement;
}

Stmt* Parser::_While()
{
	Stmt* statement = _NewStmt(kStmt_While, _Next().line);
	_scopes.Push();
	_Condition(statement);
	LoopBody loop(_nLoops);
	statement->body = _ScopedStatement();
	_scopes.Pop();
	return statement;
}

Stmt* Parser::_DoWhile()
{
	Stmt* statement = _NewStmt(kStmt_DoWhile, _Next().line);
	{
		LoopBody loop(_nLoops);
		statement->body = _ScopedStatement();
	}
	if (!_Accept(kKw_While))
		_SyntaxError(_Peek(), "'while'");
	_Expect('(');
	statement->expr = _Expression();
	_typing.Condition(statement->expr, "while");
	_Expect(')');
	_Expect(';');
	return statement;
}

Stmt* Parser::_For()
{
	Stmt* statement = _NewStmt(kStmt_For, _Next().line);
	_scopes.Push();
	_Expect('(');
	if (_StartsDeclaration())
		statement->init = _LocalDeclaration();
	else if (!_Peek().Is(';'))
	{
		statement->init = _NewStmt(kStmt_Expression, _Peek().line);
		statement->init->expr = _Expression();
		_Expect(';');
	}
	else
		_Next();
	if (!_Peek().Is(';'))
	{
		statement->expr = _Expression();
		_typing.Condition(statement->expr, "for");
	}
	_Expect(';');
	if (!_Peek().Is(')'))
		statement->step = _Expression();
	_Expect(')');
	LoopBody loop(_nLoops);
	statement->body = _ScopedStatement();
	_scopes.Pop();
	return statement;
}

Stmt* Parser::_Return()
{
	Stmt* statement = _NewStmt(kStmt_Return, _Next().line);
	if (!_Peek().Is(';'))
		statement->expr = _Expression();
	_Expect(';');
	_typing.Return(statement->line, _tReturn, statement->expr);
	return statement;
}

} // namespace Qlsl
} // namespace Tarsel
