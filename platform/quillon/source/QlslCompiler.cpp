#include "QlslBuiltins.h"
#include "QlslLexer.h"
#include "QlslUnit.h"

#include <cstdlib>
#include <map>
#include <unordered_map>

namespace Tarsel
{

const char* QLStorageText(QLStorage storage)
{
	switch (storage)
	{
	case kQLStorage_None:
		return "";
	case kQLStorage_Attribute:
		return "attribute";
	case kQLStorage_Varying:
		return "varying";
	case kQLStorage_TransformedVarying:
		return "transformed varying";
	case kQLStorage_TransformedInvariantVarying:
		return "transformed invariant varying";
	case kQLStorage_Uniform:
		return "uniform";
	case kQLStorage_MutableUniform:
		return "mutable uniform";
	case kQLStorage_RayAttribute:
		return "rayattribute";
	}
	return "";
}

void QLUnit::IndexDefinitions()
{
	_mDefinitions.clear();
	for (size_t i = 0; i < functions.size(); ++i)
	{
		if (functions[i].defined)
			_mDefinitions.emplace(_Key(functions[i].name, functions[i].arity), i);
	}
}

const QLUnitFunction* QLUnit::FindDefinition(const std::string& name, int arity) const
{
	auto it = _mDefinitions.find(_Key(name, arity));
	return it == _mDefinitions.end() ? nullptr : &functions[it->second];
}

namespace Qlsl
{
namespace
{

const char* const kStageNames[] = {"ray", "vertex", "frame", "prefix ray"};
const int kMaxErrors = 20;

// Thrown to abandon the text after a syntax error; resolution errors are collected instead.
struct Abort
{
};

// The type of a declaration or expression; an empty name means "not tracked".
struct Ty
{
	std::string_view name;
	int array = 0; // 0 not an array, >0 size, -1 size not literal
	bool Known() const { return !name.empty(); }
};

struct Variable
{
	std::string_view name;
	Ty type;
};

struct Overload
{
	std::string parameters;
	std::string_view returnType;
	int arity = 0;
	bool defined = false;
	size_t unitIndex = 0; // its entry in QLUnit::functions
};

struct Aggregate
{
	std::vector<Variable> members;
	bool block = false;
};

int VectorSize(std::string_view type)
{
	if (type.size() >= 4 && (type.substr(0, 3) == "vec" || type.substr(1, 3) == "vec"))
		return type.back() - '0';
	return 0;
}

std::string_view ScalarOf(std::string_view type)
{
	if (type[0] == 'i')
		return "int";
	if (type[0] == 'b')
		return "bool";
	return "float";
}

std::string_view VectorOf(std::string_view type, int size)
{
	static const char* const kFloat[] = {"float", "float", "vec2", "vec3", "vec4"};
	static const char* const kInt[] = {"int", "int", "ivec2", "ivec3", "ivec4"};
	static const char* const kBool[] = {"bool", "bool", "bvec2", "bvec3", "bvec4"};
	std::string_view scalar = ScalarOf(type);
	if (scalar == "int")
		return kInt[size];
	if (scalar == "bool")
		return kBool[size];
	return kFloat[size];
}

int SwizzleIndex(char c)
{
	static const char* const kSets[] = {"xyzw", "rgba", "stpq"};
	for (int set = 0; set < 3; ++set)
	{
		for (int i = 0; i < 4; ++i)
		{
			if (kSets[set][i] == c)
				return set * 4 + i;
		}
	}
	return -1;
}

class Compiler
{
public:
	Compiler(const std::vector<Token>& tokens, int type, QLUnit& unit, std::vector<std::string>& errors)
	    : _vTokens(tokens), _iType(type), _nStage(StageBit(type)), _rUnit(unit), _rErrors(errors)
	{
	}

	bool Run()
	{
		try
		{
			_CollectAggregateNames();
			while (_Peek().kind != kToken_End)
				_External();
		}
		catch (const Abort&)
		{
		}
		_Finish();
		return _nErrors == 0;
	}

private:
	// Errors.
	void _Error(int line, const std::string& message)
	{
		if (_nErrors == kMaxErrors)
		{
			_rErrors.push_back("ERROR: String 0 Line " + std::to_string(line) + ": too many errors");
			++_nErrors;
			throw Abort();
		}
		_rErrors.push_back("ERROR: String 0 Line " + std::to_string(line) + ": " + message);
		++_nErrors;
	}
	[[noreturn]] void _SyntaxError(const Token& token, const std::string& expected)
	{
		std::string found = token.kind == kToken_End ? "end of text" : "'" + std::string(token.text) + "'";
		_Error(token.line, "syntax error: unexpected " + found + ", expected " + expected);
		throw Abort();
	}
	static std::string Quote(std::string_view name) { return "'" + std::string(name) + "'"; }

	// Tokens.
	const Token& _Peek(size_t ahead = 0) const
	{
		size_t i = _iPos + ahead;
		return i < _vTokens.size() ? _vTokens[i] : _vTokens.back();
	}
	const Token& _Next()
	{
		const Token& token = _vTokens[_iPos];
		if (_iPos + 1 < _vTokens.size())
			++_iPos;
		return token;
	}
	bool _Accept(char c)
	{
		if (!_Peek().Is(c))
			return false;
		_Next();
		return true;
	}
	bool _Accept(Keyword k)
	{
		if (!_Peek().Is(k))
			return false;
		_Next();
		return true;
	}
	// A missing terminator is reported on the line it belongs to, not where the next token happens to be.
	const Token& _Expect(char c)
	{
		if (!_Peek().Is(c))
		{
			const Token& found = _Peek();
			int line = _iPos > 0 ? _vTokens[_iPos - 1].line : found.line;
			std::string text = found.kind == kToken_End ? "end of text" : "'" + std::string(found.text) + "'";
			_Error(line, "syntax error: unexpected " + text + ", expected '" + std::string(1, c) + "'");
			throw Abort();
		}
		return _Next();
	}
	const Token& _ExpectIdentifier(const char* what)
	{
		if (_Peek().kind != kToken_Identifier)
			_SyntaxError(_Peek(), what);
		return _Next();
	}

	// Nesting guard: refuses instead of recursing without bound.
	struct Nest
	{
		Compiler& c;
		explicit Nest(Compiler& compiler) : c(compiler)
		{
			if (++c._nDepth > kMaxNesting)
			{
				c._Error(c._Peek().line,
				         "nesting too deep (more than " + std::to_string(kMaxNesting) + " levels)");
				throw Abort();
			}
		}
		~Nest() { --c._nDepth; }
	};

	// Struct and block names may be used before their definition: the printer sorts them by name.
	void _CollectAggregateNames()
	{
		for (size_t i = 0; i + 1 < _vTokens.size(); ++i)
		{
			const Token& t = _vTokens[i];
			if ((t.Is(kKw_Struct) || t.Is(kKw_UniformBlock)) && _vTokens[i + 1].kind == kToken_Identifier)
				_setAggregateNames[_vTokens[i + 1].text] = t.Is(kKw_UniformBlock);
		}
	}

	// Declarations.
	bool _StartsDeclaration() const
	{
		const Token& t = _Peek();
		if (t.IsType() || t.Is(kKw_Const) || t.Is(kKw_Static) || t.Is(kKw_HighP) || t.Is(kKw_MediumP) ||
		    t.Is(kKw_LowP))
			return true;
		if (_IsStorageStart(t))
			return true;
		// Two identifiers in a row can only start a declaration; _Type reports an unknown type name.
		return t.kind == kToken_Identifier && _Peek(1).kind == kToken_Identifier;
	}
	static bool _IsStorageStart(const Token& t)
	{
		return t.Is(kKw_Uniform) || t.Is(kKw_Mutable) || t.Is(kKw_Varying) || t.Is(kKw_Transformed) ||
		       t.Is(kKw_Attribute) || t.Is(kKw_RayAttribute) || t.Is(kKw_Invariant);
	}

	QLStorage _Storage()
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

	void _CheckStorageForStage(QLStorage storage, int line)
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
			_Error(line,
			       Quote(QLStorageText(storage)) + " : not allowed in " + kStageNames[_iType] + " shaders");
	}

	Ty _Type()
	{
		if (_Peek().Is(kKw_HighP) || _Peek().Is(kKw_MediumP) || _Peek().Is(kKw_LowP))
			_Next();
		const Token& t = _Peek();
		if (t.IsType())
			return Ty{_Next().text, 0};
		if (t.kind == kToken_Identifier)
		{
			auto it = _setAggregateNames.find(t.text);
			if (it != _setAggregateNames.end() && !it->second)
				return Ty{_Next().text, 0};
			if (it != _setAggregateNames.end())
			{
				_Error(t.line, Quote(t.text) + " : a uniform block is not a type");
				return Ty{_Next().text, 0};
			}
			if (_Peek(1).kind == kToken_Identifier)
			{
				_Error(t.line, Quote(t.text) + " : unknown type");
				return Ty{_Next().text, 0};
			}
		}
		_SyntaxError(t, "a type");
	}

	// Parses "[size]" after a declarator; a literal size is tracked exactly.
	int _ArraySuffix()
	{
		if (!_Accept('['))
			return 0;
		int size = -1;
		if (_Peek().kind == kToken_Int && _Peek(1).Is(']'))
		{
			size = int(std::strtol(std::string(_Peek().text).c_str(), nullptr, 0));
			if (size <= 0)
				_Error(_Peek().line, "array size must be positive");
			_Next();
		}
		else
		{
			_Expression();
		}
		_Expect(']');
		return size;
	}

	void _External()
	{
		const Token& t = _Peek();
		if (_Accept(';'))
			return;
		if (t.Is(kKw_Struct) || t.Is(kKw_UniformBlock))
		{
			_Aggregate();
			return;
		}
		int line = t.line;
		bool isStatic = _Accept(kKw_Static);
		bool isConst = _Accept(kKw_Const);
		QLStorage storage = _Storage();
		Ty type = _Type();
		const Token& name = _ExpectIdentifier("an identifier");
		if (_Peek().Is('('))
		{
			if (isStatic || isConst || storage != kQLStorage_None)
				_Error(line, Quote(name.text) + " : qualifiers are not allowed on functions");
			_Function(type, name);
			return;
		}
		_CheckStorageForStage(storage, line);
		_GlobalDeclarators(type, name, storage, isConst);
	}

	void _GlobalDeclarators(Ty type, const Token& first, QLStorage storage, bool isConst)
	{
		const Token* name = &first;
		for (;;)
		{
			Ty declared = type;
			declared.array = _ArraySuffix();
			if (_Accept('='))
				_Assignment();
			_DeclareGlobal(*name, declared, storage, isConst);
			if (!_Accept(','))
				break;
			name = &_ExpectIdentifier("an identifier");
		}
		_Expect(';');
	}

	void _DeclareGlobal(const Token& name, Ty type, QLStorage storage, bool isConst)
	{
		if (type.name == "void")
			_Error(name.line, Quote(name.text) + " : variables cannot be void");
		if (_mGlobals.count(name.text) || _mFunctions.count(name.text))
		{
			_Error(name.line, Quote(name.text) + " : redefinition");
			return;
		}
		_mGlobals[name.text] = type;
		QLUnitVariable variable;
		variable.name = std::string(name.text);
		variable.type = std::string(type.name);
		variable.arraySize = type.array;
		variable.storage = storage;
		variable.isConst = isConst;
		variable.line = name.line;
		_rUnit.globals.push_back(std::move(variable));
	}

	void _Aggregate()
	{
		bool block = _Next().Is(kKw_UniformBlock);
		const Token* name = nullptr;
		if (_Peek().kind == kToken_Identifier)
			name = &_Next();
		else if (block)
			_SyntaxError(_Peek(), "a uniform block name");
		_Expect('{');
		Aggregate aggregate;
		aggregate.block = block;
		QLUnitBlock unitBlock;
		while (!_Accept('}'))
		{
			Ty type = _Type();
			for (;;)
			{
				const Token& member = _ExpectIdentifier("a member name");
				Ty memberType = type;
				memberType.array = _ArraySuffix();
				for (const Variable& other : aggregate.members)
				{
					if (other.name == member.text)
						_Error(member.line, Quote(member.text) + " : member redefinition");
				}
				aggregate.members.push_back(Variable{member.text, memberType});
				unitBlock.members.push_back(QLUnitVariable{std::string(member.text),
				                                           std::string(memberType.name), memberType.array,
				                                           kQLStorage_None, false, member.line});
				if (!_Accept(','))
					break;
			}
			_Expect(';');
		}
		_Expect(';');
		if (!name)
			return;
		if (_mAggregates.count(name->text) || _mGlobals.count(name->text))
		{
			_Error(name->line, Quote(name->text) + " : redefinition");
			return;
		}
		_mAggregates[name->text] = std::move(aggregate);
		if (block)
		{
			// A block is addressed through its name, like a variable of the block's type.
			_mGlobals[name->text] = Ty{name->text, 0};
			unitBlock.name = std::string(name->text);
			unitBlock.line = name->line;
			_rUnit.blocks.push_back(std::move(unitBlock));
		}
	}

	// Functions.
	void _Function(Ty returnType, const Token& name)
	{
		_Expect('(');
		size_t scopeBase = _vLocals.size();
		_vScopeMarks.push_back(scopeBase);
		std::string parameters;
		int arity = 0;
		if (_Peek().Is(kKw_Void) && _Peek(1).Is(')'))
			_Next();
		else if (!_Peek().Is(')'))
		{
			do
			{
				Ty type = _Parameter();
				parameters += (arity ? "," : "") + std::string(type.name) + (type.array ? "[]" : "");
				++arity;
			} while (_Accept(','));
		}
		_Expect(')');
		bool body = _Peek().Is('{');
		if (name.text == "main" && (returnType.name != "void" || arity != 0))
			_Error(name.line, "'main' : must be declared as void main()");
		_DeclareFunction(name, returnType, parameters, arity, body);
		if (body)
		{
			_tReturn = returnType;
			_Block(false);
		}
		else
		{
			_Expect(';');
		}
		_vScopeMarks.pop_back();
		_vLocals.resize(scopeBase);
	}

	Ty _Parameter()
	{
		if (_Peek().Is(kKw_In) || _Peek().Is(kKw_Out) || _Peek().Is(kKw_InOut))
			_Next();
		_Accept(kKw_Const);
		Ty type = _Type();
		if (type.name == "void")
			_Error(_Peek().line, "'void' : parameters cannot be void");
		if (_Peek().kind == kToken_Identifier)
		{
			const Token& name = _Next();
			type.array = _ArraySuffix();
			_DeclareLocal(name, type);
		}
		else
		{
			type.array = _ArraySuffix();
		}
		return type;
	}

	void _DeclareFunction(const Token& name, Ty returnType, const std::string& parameters, int arity,
	                      bool defined)
	{
		if (_mGlobals.count(name.text))
		{
			_Error(name.line, Quote(name.text) + " : redefinition");
			return;
		}
		std::vector<Overload>& overloads = _mFunctions[name.text];
		for (Overload& overload : overloads)
		{
			if (overload.parameters != parameters)
				continue;
			if (overload.returnType != returnType.name)
				_Error(name.line,
				       Quote(name.text) + " : overloaded functions must not differ only in return type");
			if (overload.defined && defined)
				_Error(name.line, Quote(name.text) + " : function already has a body");
			overload.defined = overload.defined || defined;
			_rUnit.functions[overload.unitIndex].defined = overload.defined;
			return;
		}
		overloads.push_back(Overload{parameters, returnType.name, arity, defined, _rUnit.functions.size()});
		_rUnit.functions.push_back(QLUnitFunction{std::string(name.text), std::string(returnType.name),
		                                          parameters, arity, defined, name.line});
	}

	// Statements.
	void _Block(bool newScope)
	{
		Nest nest(*this);
		_Expect('{');
		size_t scopeBase = _vLocals.size();
		if (newScope)
			_vScopeMarks.push_back(scopeBase);
		while (!_Accept('}'))
		{
			if (_Peek().kind == kToken_End)
				_SyntaxError(_Peek(), "'}'");
			_Statement();
		}
		if (newScope)
		{
			_vScopeMarks.pop_back();
			_vLocals.resize(scopeBase);
		}
	}

	void _Statement()
	{
		Nest nest(*this);
		const Token& t = _Peek();
		if (t.Is('{'))
			return _Block(true);
		if (_Accept(';'))
			return;
		if (t.kind == kToken_Keyword)
		{
			switch (t.keyword)
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
					_Error(t.line, Quote(t.text) + " : only allowed inside a loop");
				_Expect(';');
				return;
			default:
				break;
			}
		}
		if (_StartsDeclaration())
			return _LocalDeclaration();
		_Expression();
		_Expect(';');
	}

	void _LocalDeclaration()
	{
		int line = _Peek().line;
		_Accept(kKw_Static);
		_Accept(kKw_Const);
		if (_IsStorageStart(_Peek()))
		{
			QLStorage storage = _Storage();
			_Error(line, Quote(QLStorageText(storage)) + " : not allowed on local variables");
		}
		Ty type = _Type();
		for (;;)
		{
			const Token& name = _ExpectIdentifier("an identifier");
			Ty declared = type;
			declared.array = _ArraySuffix();
			if (declared.name == "void")
				_Error(name.line, Quote(name.text) + " : variables cannot be void");
			// The initializer cannot see the variable it initializes.
			if (_Accept('='))
				_Assignment();
			_DeclareLocal(name, declared);
			if (!_Accept(','))
				break;
		}
		_Expect(';');
	}

	void _DeclareLocal(const Token& name, Ty type)
	{
		for (size_t i = _vLocals.size(); i > _ScopeStart(); --i)
		{
			if (_vLocals[i - 1].name == name.text)
			{
				_Error(name.line, Quote(name.text) + " : redefinition");
				return;
			}
		}
		_vLocals.push_back(Variable{name.text, type});
	}

	// Locals of the innermost scope start after the last scope mark.
	size_t _ScopeStart() const { return _vScopeMarks.empty() ? 0 : _vScopeMarks.back(); }

	void _Condition()
	{
		_Expect('(');
		if (_StartsDeclaration())
		{
			Ty type = _Type();
			const Token& name = _ExpectIdentifier("an identifier");
			_Expect('=');
			_Assignment();
			_DeclareLocal(name, type);
		}
		else
		{
			_Expression();
		}
		_Expect(')');
	}

	// A statement in its own scope, as the bodies of if and loops are.
	void _ScopedStatement()
	{
		size_t base = _vLocals.size();
		_vScopeMarks.push_back(base);
		_Statement();
		_vScopeMarks.pop_back();
		_vLocals.resize(base);
	}

	void _If()
	{
		_Next();
		size_t base = _vLocals.size();
		_vScopeMarks.push_back(base);
		_Condition();
		_ScopedStatement();
		if (_Accept(kKw_Else))
			_ScopedStatement();
		_vScopeMarks.pop_back();
		_vLocals.resize(base);
	}

	void _While()
	{
		_Next();
		size_t base = _vLocals.size();
		_vScopeMarks.push_back(base);
		_Condition();
		++_nLoops;
		_ScopedStatement();
		--_nLoops;
		_vScopeMarks.pop_back();
		_vLocals.resize(base);
	}

	void _DoWhile()
	{
		_Next();
		++_nLoops;
		_ScopedStatement();
		--_nLoops;
		if (!_Accept(kKw_While))
			_SyntaxError(_Peek(), "'while'");
		_Expect('(');
		_Expression();
		_Expect(')');
		_Expect(';');
	}

	void _For()
	{
		_Next();
		size_t base = _vLocals.size();
		_vScopeMarks.push_back(base);
		_Expect('(');
		if (!_Accept(';'))
		{
			if (_StartsDeclaration())
				_LocalDeclaration();
			else
			{
				_Expression();
				_Expect(';');
			}
		}
		if (!_Peek().Is(';'))
			_Expression();
		_Expect(';');
		if (!_Peek().Is(')'))
			_Expression();
		_Expect(')');
		++_nLoops;
		_ScopedStatement();
		--_nLoops;
		_vScopeMarks.pop_back();
		_vLocals.resize(base);
	}

	void _Return()
	{
		const Token& t = _Next();
		bool value = !_Peek().Is(';');
		if (value)
			_Expression();
		_Expect(';');
		bool isVoid = _tReturn.name == "void";
		if (value && isVoid)
			_Error(t.line, "'return' : void function cannot return a value");
		else if (!value && !isVoid)
			_Error(t.line, "'return' : function must return a value");
	}

	// Expressions.
	Ty _Expression()
	{
		Ty type = _Assignment();
		while (_Accept(','))
			type = _Assignment();
		return type;
	}

	static bool _IsAssignOp(const Token& t)
	{
		if (t.kind != kToken_Punct)
			return false;
		std::string_view s = t.text;
		return s == "=" ||
		       (s.size() >= 2 && s.back() == '=' && s != "==" && s != "!=" && s != "<=" && s != ">=");
	}

	Ty _Assignment()
	{
		Nest nest(*this);
		Ty type = _Conditional();
		if (_IsAssignOp(_Peek()))
		{
			_Next();
			_Assignment();
		}
		return type;
	}

	Ty _Conditional()
	{
		Ty type = _Binary(1);
		if (_Accept('?'))
		{
			type = _Expression();
			_Expect(':');
			_Assignment();
		}
		return type;
	}

	static int _Precedence(const Token& t)
	{
		if (t.kind != kToken_Punct)
			return 0;
		static const std::pair<std::string_view, int> kTable[] = {
		    {"||", 1}, {"^^", 2}, {"&&", 3}, {"|", 4},  {"^", 5},  {"&", 6},  {"==", 7},
		    {"!=", 7}, {"<", 8},  {">", 8},  {"<=", 8}, {">=", 8}, {"<<", 9}, {">>", 9},
		    {"+", 10}, {"-", 10}, {"*", 11}, {"/", 11}, {"%", 11}};
		for (const auto& entry : kTable)
		{
			if (entry.first == t.text)
				return entry.second;
		}
		return 0;
	}

	Ty _Binary(int minPrecedence)
	{
		Ty type = _Unary();
		for (;;)
		{
			int precedence = _Precedence(_Peek());
			if (precedence == 0 || precedence < minPrecedence)
				return type;
			_Next();
			Ty right = _Binary(precedence + 1);
			type = precedence >= 7 && precedence <= 8 ? Ty{"bool", 0} : (type.Known() ? type : right);
			if (precedence <= 3)
				type = Ty{"bool", 0};
		}
	}

	Ty _Unary()
	{
		const Token& t = _Peek();
		if (t.Is('-') || t.Is('+') || t.Is('!') || t.Is('~') || t.Is("++") || t.Is("--"))
		{
			Nest nest(*this);
			_Next();
			return _Unary();
		}
		return _Postfix();
	}

	Ty _Postfix()
	{
		Ty type = _Primary();
		for (;;)
		{
			const Token& t = _Peek();
			if (t.Is('['))
			{
				_Next();
				_Expression();
				_Expect(']');
				type = _Element(type, t.line);
			}
			else if (t.Is('.'))
			{
				_Next();
				const Token& field = _ExpectIdentifier("a field name");
				type = _Field(type, field);
			}
			else if (t.Is("++") || t.Is("--"))
			{
				_Next();
			}
			else
			{
				return type;
			}
		}
	}

	Ty _Element(Ty type, int line)
	{
		if (!type.Known())
			return type;
		if (type.array != 0)
			return Ty{type.name, 0};
		if (VectorSize(type.name))
			return Ty{ScalarOf(type.name), 0};
		if (type.name == "mat2" || type.name == "mat3" || type.name == "mat4")
			return Ty{VectorOf("vec", type.name.back() - '0'), 0};
		_Error(line, Quote(type.name) + " : subscripted value is not an array, vector or matrix");
		return Ty{};
	}

	Ty _Field(Ty type, const Token& field)
	{
		if (!type.Known())
			return type;
		if (type.array != 0)
		{
			_Error(field.line, Quote(field.text) + " : field selection on an array");
			return Ty{};
		}
		auto aggregate = _mAggregates.find(type.name);
		if (aggregate != _mAggregates.end())
		{
			for (const Variable& member : aggregate->second.members)
			{
				if (member.name == field.text)
					return member.type;
			}
			_Error(field.line, Quote(field.text) + " : no such field in " + Quote(type.name));
			return Ty{};
		}
		if (int size = VectorSize(type.name))
		{
			std::string_view s = field.text;
			bool valid = s.size() <= 4;
			int set = s.empty() ? -1 : SwizzleIndex(s[0]) / 4;
			for (char c : s)
			{
				int index = SwizzleIndex(c);
				valid = valid && index >= 0 && index / 4 == set && index % 4 < size;
			}
			if (!valid)
			{
				_Error(field.line, Quote(field.text) + " : invalid swizzle of " + Quote(type.name));
				return Ty{};
			}
			return Ty{VectorOf(type.name, int(s.size())), 0};
		}
		_Error(field.line, Quote(field.text) + " : field selection requires a structure or vector, not " +
		                       Quote(type.name));
		return Ty{};
	}

	Ty _Primary()
	{
		const Token& t = _Peek();
		switch (t.kind)
		{
		case kToken_Int:
			_Next();
			return Ty{"int", 0};
		case kToken_Float:
			_Next();
			return Ty{"float", 0};
		case kToken_Identifier:
			_Next();
			if (_Peek().Is('('))
				return _Call(t);
			return _Use(t);
		case kToken_Keyword:
			if (t.Is(kKw_True) || t.Is(kKw_False))
			{
				_Next();
				return Ty{"bool", 0};
			}
			if (t.IsType())
			{
				_Next();
				return _Constructor(t);
			}
			break;
		case kToken_Punct:
			if (t.Is('('))
			{
				Nest nest(*this);
				_Next();
				Ty type = _Expression();
				_Expect(')');
				return type;
			}
			break;
		default:
			break;
		}
		_SyntaxError(t, "an expression");
	}

	Ty _Use(const Token& name)
	{
		for (size_t i = _vLocals.size(); i > 0; --i)
		{
			if (_vLocals[i - 1].name == name.text)
				return _vLocals[i - 1].type;
		}
		auto global = _mGlobals.find(name.text);
		if (global != _mGlobals.end())
			return global->second;
		if (const BuiltinVariable* builtin = FindBuiltinVariable(name.text, _nStage))
			return Ty{builtin->type, builtin->arraySize};
		if (IsBuiltinName(name.text))
			_Error(name.line, Quote(name.text) + " : not available in " + kStageNames[_iType] + " shaders");
		else
			_Error(name.line, Quote(name.text) + " : undeclared identifier");
		return Ty{};
	}

	int _Arguments(std::vector<Ty>& types)
	{
		_Expect('(');
		if (!_Accept(')'))
		{
			do
				types.push_back(_Assignment());
			while (_Accept(','));
			_Expect(')');
		}
		return int(types.size());
	}

	Ty _Constructor(const Token& type)
	{
		std::vector<Ty> arguments;
		int count = _Arguments(arguments);
		if (type.keyword == kKw_Void || type.keyword >= kKw_Sampler2D)
			_Error(type.line, Quote(type.text) + " : cannot be constructed");
		else if (count == 0)
			_Error(type.line, Quote(type.text) + " : constructor needs arguments");
		return Ty{type.text, 0};
	}

	Ty _Call(const Token& name)
	{
		std::vector<Ty> arguments;
		int count = _Arguments(arguments);
		auto aggregate = _mAggregates.find(name.text);
		if (aggregate != _mAggregates.end() && !aggregate->second.block)
		{
			if (size_t(count) != aggregate->second.members.size())
				_Error(name.line, Quote(name.text) + " : constructor needs " +
				                      std::to_string(aggregate->second.members.size()) + " arguments");
			return Ty{name.text, 0};
		}
		auto functions = _mFunctions.find(name.text);
		if (functions != _mFunctions.end())
		{
			const Overload* match = nullptr;
			for (const Overload& overload : functions->second)
			{
				if (overload.arity == count)
					match = match ? nullptr : &overload;
			}
			bool any = false;
			for (const Overload& overload : functions->second)
				any = any || overload.arity == count;
			if (!any)
			{
				_Error(name.line, Quote(name.text) + " : no matching overloaded function found for " +
				                      std::to_string(count) + " arguments");
				return Ty{};
			}
			_RecordCall(name, count);
			return match ? Ty{match->returnType, 0} : Ty{};
		}
		if (const BuiltinFunction* builtin = FindBuiltinFunction(name.text, _nStage))
		{
			if (count < builtin->minArgs || count > builtin->maxArgs)
			{
				_Error(name.line,
				       Quote(name.text) + " : wrong number of arguments (" + std::to_string(count) + ")");
				return Ty{};
			}
			std::string_view result = builtin->returnType;
			if (result == "$1")
				return count > 0 ? Ty{arguments[0].name, 0} : Ty{};
			return Ty{result, 0};
		}
		if (IsBuiltinName(name.text))
			_Error(name.line, Quote(name.text) + " : not available in " + kStageNames[_iType] + " shaders");
		else
			_Error(name.line, Quote(name.text) + " : no matching function declared");
		return Ty{};
	}

	void _RecordCall(const Token& name, int arity)
	{
		auto key = std::make_pair(name.text, arity);
		if (_mCalls.emplace(key, name.line).second)
			_rUnit.calls.push_back(QLUnitCall{std::string(name.text), arity, name.line});
	}

	void _Finish()
	{
		_rUnit.type = _iType;
		_rUnit.IndexDefinitions();
	}

	const std::vector<Token>& _vTokens;
	size_t _iPos = 0;
	int _iType;
	unsigned _nStage;
	QLUnit& _rUnit;
	std::vector<std::string>& _rErrors;
	int _nErrors = 0;
	int _nDepth = 0;
	int _nLoops = 0;
	Ty _tReturn;
	std::unordered_map<std::string_view, bool> _setAggregateNames; // name -> is a uniform block
	std::unordered_map<std::string_view, Aggregate> _mAggregates;
	std::unordered_map<std::string_view, Ty> _mGlobals;
	std::unordered_map<std::string_view, std::vector<Overload>> _mFunctions;
	std::map<std::pair<std::string_view, int>, int> _mCalls;
	std::vector<Variable> _vLocals;
	std::vector<size_t> _vScopeMarks;
};

} // namespace

std::shared_ptr<QLUnit> Compile(const std::string& text, int type, std::vector<std::string>& errors)
{
	if (!StageBit(type))
	{
		errors.push_back("ERROR: String 0 Line 1: unknown shader type " + std::to_string(type));
		return nullptr;
	}
	std::vector<Token> tokens;
	std::string error;
	int errorLine = 1;
	if (!Tokenize(text, tokens, error, errorLine))
	{
		errors.push_back("ERROR: String 0 Line " + std::to_string(errorLine) + ": " + error);
		return nullptr;
	}
	auto unit = std::make_shared<QLUnit>();
	Compiler compiler(tokens, type, *unit, errors);
	if (!compiler.Run())
		return nullptr;
	return unit;
}

} // namespace Qlsl
} // namespace Tarsel
