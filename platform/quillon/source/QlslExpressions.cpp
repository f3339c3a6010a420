#include "QlslParser.h"

// Expressions are parsed by operator precedence over two explicit stacks (values and pending operators
// or open groups), so that nesting costs heap, never machine stack.
namespace Tarsel
{
namespace Qlsl
{
namespace
{

const int kPrecedenceComma = 1;
const int kPrecedenceAssign = 2;
const int kPrecedenceSelect = 3;
const int kPrecedencePrefix = 15;

int BinaryPrecedence(const Token& t)
{
	if (t.kind != kToken_Punct || t.text.size() > 2)
		return 0;
	char c = t.text[0];
	bool single = t.text.size() == 1;
	char second = single ? 0 : t.text[1];
	switch (c)
	{
	case '|':
		return single ? 7 : (second == '|' ? 4 : 0);
	case '^':
		return single ? 8 : (second == '^' ? 5 : 0);
	case '&':
		return single ? 9 : (second == '&' ? 6 : 0);
	case '=':
	case '!':
		return second == '=' ? 10 : 0;
	case '<':
	case '>':
		return single || second == '=' ? 11 : (second == c ? 12 : 0);
	case '+':
	case '-':
		return single ? 13 : 0;
	case '*':
	case '/':
	case '%':
		return single ? 14 : 0;
	default:
		return 0;
	}
}

bool IsAssignment(const Token& t)
{
	if (t.kind != kToken_Punct)
		return false;
	std::string_view s = t.text;
	return s == "=" || (s.size() >= 2 && s.back() == '=' && s != "==" && s != "!=" && s != "<=" && s != ">=");
}

bool IsPrefix(const Token& t)
{
	return t.Is('-') || t.Is('+') || t.Is('!') || t.Is('~') || t.Is("++") || t.Is("--");
}

} // namespace

void Parser::_Push(Pending::Kind kind, int precedence, const Token& token)
{
	if (_vPending.size() >= size_t(kMaxNesting))
		_rDiagnostics.Fatal(token.line,
		                    "nesting too deep (more than " + std::to_string(kMaxNesting) + " levels)");
	_vPending.push_back(Pending{kind, precedence, &token, _vValues.size()});
}

Expr* Parser::_PopValue()
{
	Expr* value = _vValues.back();
	_vValues.pop_back();
	return value;
}

void Parser::_Reduce()
{
	Pending pending = _vPending.back();
	_vPending.pop_back();
	const Token& op = *pending.token;
	switch (pending.kind)
	{
	case Pending::kPrefix:
		_vValues.push_back(_typing.Unary(op, _PopValue()));
		return;
	case Pending::kColon:
	{
		Expr* no = _PopValue();
		Expr* yes = _PopValue();
		_vValues.push_back(_typing.Select(op, _PopValue(), yes, no));
		return;
	}
	default:
	{
		Expr* right = _PopValue();
		Expr* left = _PopValue();
		if (pending.kind == Pending::kBinary)
			_vValues.push_back(_typing.Binary(op, left, right));
		else if (pending.kind == Pending::kAssign)
			_vValues.push_back(_typing.Assign(op, left, right));
		else
			_vValues.push_back(_typing.Sequence(op, left, right));
		return;
	}
	}
}

void Parser::_ReduceAbove(int precedence, bool rightAssociative)
{
	while (!_vPending.empty() && !_vPending.back().IsGroup())
	{
		int top = _vPending.back().precedence;
		if (top < precedence || (rightAssociative && top == precedence))
			return;
		_Reduce();
	}
}

Parser::Pending* Parser::_ReduceToGroup(size_t base)
{
	while (_vPending.size() > base && !_vPending.back().IsGroup())
		_Reduce();
	return _vPending.size() > base ? &_vPending.back() : nullptr;
}

void Parser::_CloseCall(const Pending& group)
{
	Expr* const* arguments = _vValues.data() + group.values;
	uint32_t count = uint32_t(_vValues.size() - group.values);
	Expr* call = group.kind == Pending::kCall ? _typing.Call(*group.token, arguments, count)
	                                          : _typing.Construct(*group.token, arguments, count);
	_vValues.resize(group.values);
	_vValues.push_back(call);
}

Expr* Parser::_Expression(bool allowComma)
{
	const size_t base = _vPending.size();
	bool operand = true;
	for (;;)
	{
		const Token& t = _Peek();
		if (operand)
		{
			if (IsPrefix(t))
				_Push(Pending::kPrefix, kPrecedencePrefix, _Next());
			else if (t.Is('('))
				_Push(Pending::kParen, 0, _Next());
			else if (t.kind == kToken_Int || t.kind == kToken_Float || t.Is(kKw_True) || t.Is(kKw_False))
			{
				_vValues.push_back(_typing.Literal(_Next()));
				operand = false;
			}
			else if ((t.kind == kToken_Identifier || t.IsType()) && _Peek(1).Is('('))
			{
				_Push(t.IsType() ? Pending::kConstruct : Pending::kCall, 0, _Next());
				_Next();
				if (_Accept(')'))
				{
					Pending group = _vPending.back();
					_vPending.pop_back();
					_CloseCall(group);
					operand = false;
				}
			}
			else if (t.kind == kToken_Identifier)
			{
				_vValues.push_back(_typing.Variable(_Next()));
				operand = false;
			}
			else
				_SyntaxError(t, "an expression");
			continue;
		}
		if (t.Is('['))
		{
			_Push(Pending::kSubscript, 0, _Next());
			operand = true;
		}
		else if (t.Is('.'))
		{
			_Next();
			const Token& field = _ExpectIdentifier("a field name");
			_vValues.back() = _typing.Field(_vValues.back(), field);
		}
		else if (t.Is("++") || t.Is("--"))
			_vValues.back() = _typing.Postfix(_Next(), _vValues.back());
		else if (int precedence = BinaryPrecedence(t))
		{
			_ReduceAbove(precedence, false);
			_Push(Pending::kBinary, precedence, _Next());
			operand = true;
		}
		else if (IsAssignment(t))
		{
			_ReduceAbove(kPrecedenceAssign, true);
			_Push(Pending::kAssign, kPrecedenceAssign, _Next());
			operand = true;
		}
		else if (t.Is('?'))
		{
			_ReduceAbove(kPrecedenceSelect, true);
			_Push(Pending::kQuestion, kPrecedenceSelect, _Next());
			operand = true;
		}
		else if (t.Is(':'))
		{
			Pending* group = _ReduceToGroup(base);
			if (!group || group->kind != Pending::kQuestion)
				break;
			group->kind = Pending::kColon;
			_Next();
			operand = true;
		}
		else if (t.Is(','))
		{
			Pending* group = _ReduceToGroup(base);
			if (group && (group->kind == Pending::kCall || group->kind == Pending::kConstruct))
				_Next();
			else if (!group && !allowComma)
				break;
			else
				_Push(Pending::kComma, kPrecedenceComma, _Next());
			operand = true;
		}
		else if (t.Is(')') || t.Is(']'))
		{
			Pending* group = _ReduceToGroup(base);
			if (!group)
				break;
			Pending closed = *group;
			bool paren = closed.kind == Pending::kParen || closed.kind == Pending::kCall ||
			             closed.kind == Pending::kConstruct;
			if (t.Is(')') != paren || closed.kind == Pending::kQuestion)
				_Missing(closed.kind == Pending::kQuestion ? "':'" : (paren ? "')'" : "']'"));
			_vPending.pop_back();
			_Next();
			if (closed.kind == Pending::kSubscript)
			{
				Expr* index = _PopValue();
				_vValues.push_back(_typing.Index(*closed.token, _PopValue(), index));
			}
			else if (closed.kind != Pending::kParen)
				_CloseCall(closed);
		}
		else
			break;
	}
	if (Pending* open = _ReduceToGroup(base))
	{
		bool paren = open->kind == Pending::kParen || open->kind == Pending::kCall ||
		             open->kind == Pending::kConstruct;
		_Missing(open->kind == Pending::kQuestion ? "':'" : (paren ? "')'" : "']'"));
	}
	return _PopValue();
}

} // namespace Qlsl
} // namespace Tarsel
