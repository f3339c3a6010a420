#include "QlslParser.h"

namespace Tarsel
{
namespace Qlsl
{

Parser::Parser(const std::vector<Token>& tokens, int type, QLUnit& unit, Diagnostics& diagnostics)
    : _vTokens(tokens), _iType(type), _rUnit(unit), _rTree(unit.tree), _rDiagnostics(diagnostics),
      _scopes(unit, diagnostics, type), _typing(unit.tree.arena, diagnostics, _scopes, type)
{
}

void Parser::Run()
{
	_scopes.CollectAggregateNames(_vTokens);
	while (_Peek().kind != kToken_End)
		_External();
}

const Token& Parser::_Next()
{
	const Token& token = _vTokens[_iPos];
	if (_iPos + 1 < _vTokens.size())
		++_iPos;
	return token;
}

bool Parser::_Accept(char c)
{
	if (!_Peek().Is(c))
		return false;
	_Next();
	return true;
}

bool Parser::_Accept(Keyword k)
{
	if (!_Peek().Is(k))
		return false;
	_Next();
	return true;
}

void Parser::_SyntaxError(const Token& token, const std::string& expected)
{
	std::string found = token.kind == kToken_End ? "end of text" : "'" + std::string(token.text) + "'";
	_rDiagnostics.Fatal(token.line, "syntax error: unexpected " + found + ", expected " + expected);
}

// A missing terminator is reported on the line it belongs to, not where the next token happens to be.
void Parser::_Missing(const char* expected)
{
	const Token& found = _Peek();
	int line = _iPos > 0 ? _vTokens[_iPos - 1].line : found.line;
	std::string text = found.kind == kToken_End ? "end of text" : "'" + std::string(found.text) + "'";
	_rDiagnostics.Fatal(line, "syntax error: unexpected " + text + ", expected " + expected);
}

const Token& Parser::_Expect(char c)
{
	if (!_Peek().Is(c))
	{
		const char expected[] = {'\'', c, '\'', 0};
		_Missing(expected);
	}
	return _Next();
}

const Token& Parser::_ExpectIdentifier(const char* what)
{
	if (_Peek().kind != kToken_Identifier)
		_SyntaxError(_Peek(), what);
	return _Next();
}

bool Parser::_StartsDeclaration() const
{
	const Token& t = _Peek();
	if (t.IsType() || t.Is(kKw_Const) || t.Is(kKw_Static) || t.Is(kKw_HighP) || t.Is(kKw_MediumP) ||
	    t.Is(kKw_LowP) || _IsStorageStart(t))
		return true;
	// Two identifiers in a row can only start a declaration; _Type reports an unknown type name.
	return t.kind == kToken_Identifier && _Peek(1).kind == kToken_Identifier;
}

bool Parser::_IsStorageStart(const Token& t)
{
	return t.Is(kKw_Uniform) || t.Is(kKw_Mutable) || t.Is(kKw_Varying) || t.Is(kKw_Transformed) ||
	       t.Is(kKw_Attribute) || t.Is(kKw_RayAttribute) || t.Is(kKw_Invariant);
}

QLStorage Parser::_Storage()
{
	if (_Accept(kKw_Uniform))
		return kQLStorage_Uniform;
	if (_Accept(kKw_Mutable))
	{
		if (!_Accept(kKw_Uniform))
			_SyntaxError(_Peek(), "'uniform' after 'mutable'");
		return kQLStorage_MutableUniform;
	}
	if (_Accept(kKw_Varying))
		return kQLStorage_Varying;
	if (_Accept(kKw_Attribute))
		return kQLStorage_Attribute;
	if (_Accept(kKw_RayAttribute))
		return kQLStorage_RayAttribute;
	if (_Accept(kKw_Transformed))
	{
		bool invariant = _Accept(kKw_Invariant);
		if (!_Accept(kKw_Varying))
			_SyntaxError(_Peek(), "'varying'");
		return invariant ? kQLStorage_TransformedInvariantVarying : kQLStorage_TransformedVarying;
	}
	if (_Peek().Is(kKw_Invariant))
		_SyntaxError(_Peek(), "'transformed' before 'invariant'");
	return kQLStorage_None;
}

void Parser::_CheckStorageForStage(QLStorage storage, int line)
{
	bool vertex = _iType == 1;
	bool allowed = true;
	switch (storage)
	{
	case kQLStorage_Attribute:
	case kQLStorage_TransformedVarying:
	case kQLStorage_TransformedInvariantVarying:
		allowed = vertex;
		break;
	case kQLStorage_Varying:
		allowed = vertex || _iType == 0;
		break;
	case kQLStorage_RayAttribute:
		allowed = !vertex;
		break;
	default:
		break;
	}
	if (!allowed)
		_rDiagnostics.Error(line, Quote(QLStorageText(storage)) + " : not allowed in " + kStageNames[_iType] +
		                              " shaders");
}

Type Parser::_Type()
{
	if (_Peek().Is(kKw_HighP) || _Peek().Is(kKw_MediumP) || _Peek().Is(kKw_LowP))
		_Next();
	const Token& t = _Peek();
	if (t.IsType())
		return BasicTypeNamed(_Next().text);
	if (t.kind == kToken_Identifier)
	{
		if (const Aggregate* aggregate = _scopes.FindAggregate(t.text))
		{
			_Next();
			if (!aggregate->block)
				return Type::Struct(aggregate);
			_rDiagnostics.Error(t.line, Quote(t.text) + " : a uniform block is not a type");
			return Type();
		}
		if (_Peek(1).kind == kToken_Identifier)
		{
			_rDiagnostics.Error(t.line, Quote(t.text) + " : unknown type");
			_Next();
			return Type();
		}
	}
	_SyntaxError(t, "a type");
}

int Parser::_ArraySuffix()
{
	if (!_Accept('['))
		return 0;
	int size = _typing.ArraySize(_Expression());
	_Expect(']');
	return size;
}

void Parser::_External()
{
	const Token& t = _Peek();
	if (_Accept(';'))
		return;
	if (t.Is(kKw_Struct) || t.Is(kKw_UniformBlock))
		return _Aggregate();
	int line = t.line;
	bool isStatic = _Accept(kKw_Static);
	bool isConst = _Accept(kKw_Const);
	QLStorage storage = _Storage();
	Type type = _Type();
	const Token& name = _ExpectIdentifier("an identifier");
	if (_Peek().Is('('))
	{
		if (isStatic || isConst || storage != kQLStorage_None)
			_rDiagnostics.Error(line, Quote(name.text) + " : qualifiers are not allowed on functions");
		return _Function(type, name);
	}
	_CheckStorageForStage(storage, line);
	_GlobalDeclarators(type, name, storage, isConst);
}

void Parser::_GlobalDeclarators(const Type& type, const Token& first, QLStorage storage, bool isConst)
{
	const Token* name = &first;
	for (;;)
	{
		Type declared = type;
		declared.array = _ArraySuffix();
		const Expr* initializer = nullptr;
		if (_Accept('='))
		{
			initializer = _Assignment();
			_typing.Initializer(*name, declared, initializer);
			if (isConst && !initializer->constant && !initializer->type.IsError())
				_rDiagnostics.Error(name->line, Quote(name->text) +
				                                    " : 'const' initializer is not a constant expression");
		}
		else if (isConst)
			_rDiagnostics.Error(name->line, Quote(name->text) + " : 'const' variable needs an initializer");
		if (declared.base == kBase_Void)
			_rDiagnostics.Error(name->line, Quote(name->text) + " : variables cannot be void");
		_scopes.DeclareGlobal(*name, declared, storage, isConst, initializer);
		if (!_Accept(','))
			break;
		name = &_ExpectIdentifier("an identifier");
	}
	_Expect(';');
}

void Parser::_Aggregate()
{
	bool block = _Next().Is(kKw_UniformBlock);
	const Token* name = nullptr;
	if (_Peek().kind == kToken_Identifier)
		name = &_Next();
	else if (block)
		_SyntaxError(_Peek(), "a uniform block name");
	_Expect('{');
	std::vector<Member> members;
	while (!_Accept('}'))
	{
		Type type = _Type();
		for (;;)
		{
			const Token& member = _ExpectIdentifier("a member name");
			Type memberType = type;
			memberType.array = _ArraySuffix();
			for (const Member& other : members)
			{
				if (other.name == member.text)
					_rDiagnostics.Error(member.line, Quote(member.text) + " : member redefinition");
			}
			if (memberType.base == kBase_Void)
				_rDiagnostics.Error(member.line, Quote(member.text) + " : members cannot be void");
			members.push_back(Member{member.text, memberType, member.line});
			if (!_Accept(','))
				break;
		}
		_Expect(';');
	}
	_Expect(';');
	if (name)
		_scopes.DefineAggregate(_scopes.FindAggregate(name->text), *name, members);
}

void Parser::_Function(const Type& returnType, const Token& name)
{
	_Expect('(');
	_scopes.Push();
	std::vector<Symbol*> parameters;
	if (_Peek().Is(kKw_Void) && _Peek(1).Is(')'))
		_Next();
	else if (!_Peek().Is(')'))
	{
		do
			parameters.push_back(_Parameter());
		while (_Accept(','));
	}
	_Expect(')');
	bool body = _Peek().Is('{');
	if (name.text == "main" && (!returnType.IsVoid() || !parameters.empty()))
		_rDiagnostics.Error(name.line, "'main' : must be declared as void main()");
	Function* function = _scopes.DeclareFunction(name, returnType, parameters, body);
	if (body)
	{
		_tReturn = returnType;
		_scopes.SetCurrent(function);
		Stmt* statement = _Block(false);
		if (function)
			function->body = statement;
		_scopes.SetCurrent(nullptr);
	}
	else
	{
		_Expect(';');
	}
	_scopes.Pop();
}

Symbol* Parser::_Parameter()
{
	ParameterMode mode = kParameter_In;
	if (_Accept(kKw_Out))
		mode = kParameter_Out;
	else if (_Accept(kKw_InOut))
		mode = kParameter_InOut;
	else
		_Accept(kKw_In);
	bool isConst = _Accept(kKw_Const);
	Type type = _Type();
	if (type.base == kBase_Void)
		_rDiagnostics.Error(_Peek().line, "'void' : parameters cannot be void");
	Symbol* symbol = nullptr;
	if (_Peek().kind == kToken_Identifier)
	{
		const Token& name = _Next();
		type.array = _ArraySuffix();
		symbol = _scopes.DeclareLocal(name, type, kSymbol_Parameter);
	}
	else
	{
		type.array = _ArraySuffix();
		symbol = _rTree.arena.New<Symbol>();
		symbol->type = type;
		symbol->kind = kSymbol_Parameter;
	}
	symbol->mode = mode;
	symbol->isConst = isConst;
	symbol->readOnly = isConst;
	return symbol;
}

} // namespace Qlsl
} // namespace Tarsel
