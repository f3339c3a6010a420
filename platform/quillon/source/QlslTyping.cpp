#include "QlslTyping.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace Tarsel
{
namespace Qlsl
{
namespace
{

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

bool IsIntegral(const Type& type)
{
	return type.array == 0 && type.columns == 0 && type.base == kBase_Int;
}

// Scalar with vector, or vectors of one size: the operand shapes of the component-wise int operators.
bool ComponentWise(const Type& left, const Type& right)
{
	return left.rows == 1 || right.rows == 1 || left.rows == right.rows;
}

Type Wider(const Type& left, const Type& right)
{
	return left.rows >= right.rows ? left : right;
}

} // namespace

Operator OperatorOf(std::string_view text)
{
	// Compound assignments answer their arithmetic part.
	if (text.size() >= 2 && text.back() == '=' && text != "==" && text != "!=" && text != "<=" &&
	    text != ">=")
		text.remove_suffix(1);
	char c = text.empty() ? 0 : text[0];
	bool doubled = text.size() == 2 && text[1] == c;
	bool equals = text.size() == 2 && text[1] == '=';
	switch (c)
	{
	case '+':
		return doubled ? kOp_Increment : kOp_Add;
	case '-':
		return doubled ? kOp_Decrement : kOp_Sub;
	case '*':
		return kOp_Mul;
	case '/':
		return kOp_Div;
	case '%':
		return kOp_Mod;
	case '<':
		return doubled ? kOp_Shl : (equals ? kOp_LessEqual : kOp_Less);
	case '>':
		return doubled ? kOp_Shr : (equals ? kOp_GreaterEqual : kOp_Greater);
	case '&':
		return doubled ? kOp_And : kOp_BitAnd;
	case '|':
		return doubled ? kOp_Or : kOp_BitOr;
	case '^':
		return doubled ? kOp_Xor : kOp_BitXor;
	case '=':
		return equals ? kOp_Equal : kOp_None;
	case '!':
		return equals ? kOp_NotEqual : kOp_Not;
	case '~':
		return kOp_Complement;
	default:
		return kOp_None;
	}
}

Typing::Typing(Arena& arena, Diagnostics& diagnostics, Scopes& scopes, int type)
    : _rArena(arena), _rDiagnostics(diagnostics), _rScopes(scopes), _iType(type), _nStage(StageBit(type))
{
}

Expr* Typing::_Node(ExprKind kind, int line, const Type& type)
{
	Expr* node = _rArena.New<Expr>();
	node->kind = kind;
	node->line = line;
	node->type = type;
	return node;
}

Expr* Typing::_Error(Expr* node)
{
	node->type = Type();
	node->constant = false;
	node->hasValue = false;
	return node;
}

void Typing::_SetOperands(Expr* node, Expr* const* operands, uint32_t count)
{
	node->operands = _rArena.Array<Expr>(operands, count);
	node->count = count;
	bool constant = true;
	for (uint32_t i = 0; i < count; ++i)
		constant = constant && operands[i]->constant;
	node->constant = constant;
}

bool Typing::Usable(const Expr* expr)
{
	if (expr->type.IsError())
		return false;
	if (expr->type.IsVoid())
	{
		_rDiagnostics.Error(expr->line, Quote(expr->text) + " : void value used as a value");
		return false;
	}
	return true;
}

Expr* Typing::Literal(const Token& token)
{
	Expr* node = _Node(kExpr_Literal, token.line, Type());
	node->text = token.text;
	node->constant = true;
	node->hasValue = true;
	// Literals are short; longer ones are cut, which only costs precision of the folded value.
	char digits[64];
	size_t length = std::min(token.text.size(), sizeof(digits) - 1);
	std::memcpy(digits, token.text.data(), length);
	digits[length] = 0;
	if (token.kind == kToken_Int)
	{
		node->type = Type::Scalar(kBase_Int);
		// A 32-bit pattern is an int, so 0xFFFFFFFF is -1; anything longer keeps its size for the checks
		// that refuse it.
		const unsigned long long iLiteral = std::strtoull(digits, nullptr, 0);
		node->value = iLiteral > 0xFFFFFFFFull
		                  ? double(iLiteral)
		                  : double(static_cast<int32_t>(static_cast<uint32_t>(iLiteral)));
	}
	else if (token.kind == kToken_Float)
	{
		node->type = Type::Scalar(kBase_Float);
		node->value = std::strtod(digits, nullptr);
	}
	else
	{
		node->type = Type::Scalar(kBase_Bool);
		node->value = token.Is(kKw_True) ? 1.0 : 0.0;
	}
	return node;
}

Expr* Typing::Variable(const Token& name)
{
	Expr* node = _Node(kExpr_Variable, name.line, Type());
	node->text = name.text;
	const Symbol* symbol = _rScopes.Lookup(name);
	if (!symbol)
		return node;
	node->symbol = symbol;
	node->type = symbol->type;
	if (symbol->isConst && symbol->initializer && symbol->initializer->constant)
	{
		node->constant = true;
		node->hasValue = symbol->initializer->hasValue && symbol->type.IsScalar();
		node->value = symbol->initializer->value;
	}
	return node;
}

Type Typing::_Arithmetic(Operator op, const Type& left, const Type& right) const
{
	if (!left.IsNumeric() || !right.IsNumeric())
		return Type();
	BaseType base = (left.base == kBase_Float || right.base == kBase_Float) ? kBase_Float : kBase_Int;
	Type l = left.WithBase(base);
	Type r = right.WithBase(base);
	bool lScalar = l.rows == 1 && !l.columns;
	bool rScalar = r.rows == 1 && !r.columns;
	if (lScalar)
		return r;
	if (rScalar || l == r)
		return l;
	if (op != kOp_Mul)
		return Type();
	if (l.IsMatrix() && r.IsVector() && l.columns == r.rows)
		return Type::Vector(kBase_Float, l.rows);
	if (l.IsVector() && r.IsMatrix() && l.rows == r.rows)
		return Type::Vector(kBase_Float, r.columns);
	if (l.IsMatrix() && r.IsMatrix() && l.columns == r.rows)
		return Type::Matrix(r.columns);
	return Type();
}

Type Typing::_BinaryType(Operator op, const Type& left, const Type& right) const
{
	switch (op)
	{
	case kOp_Add:
	case kOp_Sub:
	case kOp_Mul:
	case kOp_Div:
		return _Arithmetic(op, left, right);
	case kOp_Mod:
	case kOp_BitAnd:
	case kOp_BitOr:
	case kOp_BitXor:
		return IsIntegral(left) && IsIntegral(right) && ComponentWise(left, right) ? Wider(left, right)
		                                                                           : Type();
	case kOp_Shl:
	case kOp_Shr:
		return IsIntegral(left) && IsIntegral(right) && (right.rows == 1 || right.rows == left.rows) ? left
		                                                                                             : Type();
	case kOp_And:
	case kOp_Or:
	case kOp_Xor:
		return left.IsBool() && right.IsBool() ? left : Type();
	case kOp_Less:
	case kOp_Greater:
	case kOp_LessEqual:
	case kOp_GreaterEqual:
		return left.IsScalar() && right.IsScalar() && left.IsNumeric() && right.IsNumeric()
		           ? Type::Scalar(kBase_Bool)
		           : Type();
	case kOp_Equal:
	case kOp_NotEqual:
		return (ConvertsTo(left, right) || ConvertsTo(right, left)) && !left.HasOpaque()
		           ? Type::Scalar(kBase_Bool)
		           : Type();
	default:
		return Type();
	}
}

void Typing::_Fold(Expr* node)
{
	if (!node->type.IsScalar())
		return;
	for (uint32_t i = 0; i < node->count; ++i)
	{
		if (!node->Operand(i)->hasValue)
			return;
	}
	double a = node->Operand(0)->value;
	double b = node->count > 1 ? node->Operand(1)->value : 0.0;
	bool integral = node->Operand(0)->type.base == kBase_Int &&
	                (node->count < 2 || node->Operand(1)->type.base == kBase_Int);
	double value = 0.0;
	switch (node->op)
	{
	case kOp_Negate:
		value = -a;
		break;
	case kOp_Plus:
		value = a;
		break;
	case kOp_Not:
		value = a == 0.0;
		break;
	case kOp_Add:
		value = a + b;
		break;
	case kOp_Sub:
		value = a - b;
		break;
	case kOp_Mul:
		value = a * b;
		break;
	case kOp_Div:
		if (b == 0.0)
			return;
		value = integral ? std::trunc(a / b) : a / b;
		break;
	case kOp_Mod:
		if (b == 0.0)
			return;
		value = std::fmod(a, b);
		break;
	case kOp_Less:
		value = a < b;
		break;
	case kOp_Greater:
		value = a > b;
		break;
	case kOp_LessEqual:
		value = a <= b;
		break;
	case kOp_GreaterEqual:
		value = a >= b;
		break;
	case kOp_Equal:
		value = a == b;
		break;
	case kOp_NotEqual:
		value = a != b;
		break;
	case kOp_And:
		value = a != 0.0 && b != 0.0;
		break;
	case kOp_Or:
		value = a != 0.0 || b != 0.0;
		break;
	case kOp_Xor:
		value = (a != 0.0) != (b != 0.0);
		break;
	default:
		return;
	}
	node->hasValue = true;
	node->value = value;
}

Expr* Typing::Unary(const Token& op, Expr* operand)
{
	Expr* node = _Node(kExpr_Unary, op.line, Type());
	node->text = op.text;
	node->op = op.Is('-') ? kOp_Negate : (op.Is('+') ? kOp_Plus : OperatorOf(op.text));
	_SetOperands(node, &operand, 1);
	if (!Usable(operand))
		return _Error(node);
	const Type& type = operand->type;
	bool step = node->op == kOp_Increment || node->op == kOp_Decrement;
	bool valid = node->op == kOp_Not ? type.IsBool()
	                                 : (node->op == kOp_Complement ? IsIntegral(type) : type.IsNumeric());
	if (!valid)
		_rDiagnostics.Error(op.line, Quote(op.text) + " : no operation for " + Quote(type));
	if (!valid || (step && !_CheckWritable(operand, Quote(op.text))))
		return _Error(node);
	node->constant = node->constant && !step;
	node->type = type;
	_Fold(node);
	return node;
}

Expr* Typing::Postfix(const Token& op, Expr* operand)
{
	Expr* node = _Node(kExpr_Postfix, op.line, Type());
	node->text = op.text;
	node->op = OperatorOf(op.text);
	_SetOperands(node, &operand, 1);
	node->constant = false;
	if (!Usable(operand))
		return _Error(node);
	if (!operand->type.IsNumeric())
	{
		_rDiagnostics.Error(op.line, Quote(op.text) + " : no operation for " + Quote(operand->type));
		return _Error(node);
	}
	if (!_CheckWritable(operand, Quote(op.text)))
		return _Error(node);
	node->type = operand->type;
	return node;
}

Expr* Typing::Binary(const Token& op, Expr* left, Expr* right)
{
	Expr* node = _Node(kExpr_Binary, op.line, Type());
	node->text = op.text;
	node->op = OperatorOf(op.text);
	Expr* operands[] = {left, right};
	_SetOperands(node, operands, 2);
	bool usable = Usable(left);
	if (!Usable(right) || !usable)
		return _Error(node);
	node->type = _BinaryType(node->op, left->type, right->type);
	if (node->type.IsError())
	{
		_rDiagnostics.Error(op.line, Quote(op.text) + " : no operation for " + Quote(left->type) + " and " +
		                                 Quote(right->type));
		return _Error(node);
	}
	_Fold(node);
	return node;
}

Expr* Typing::Assign(const Token& op, Expr* target, Expr* value)
{
	Expr* node = _Node(kExpr_Assign, op.line, Type());
	node->text = op.text;
	node->op = OperatorOf(op.text);
	Expr* operands[] = {target, value};
	_SetOperands(node, operands, 2);
	node->constant = false;
	bool usable = Usable(target);
	if (!Usable(value) || !usable)
		return _Error(node);
	bool writable = _CheckWritable(target, Quote(op.text));
	if (node->op == kOp_None)
	{
		if (!ConvertsTo(value->type, target->type))
		{
			_rDiagnostics.Error(op.line, Quote(op.text) + " : cannot convert from " + Quote(value->type) +
			                                 " to " + Quote(target->type));
			return _Error(node);
		}
	}
	else if (_BinaryType(node->op, target->type, value->type) != target->type)
	{
		_rDiagnostics.Error(op.line, Quote(op.text) + " : no operation for " + Quote(target->type) + " and " +
		                                 Quote(value->type));
		return _Error(node);
	}
	if (!writable)
		return _Error(node);
	node->type = target->type;
	return node;
}

Expr* Typing::Select(const Token& op, Expr* condition, Expr* yes, Expr* no)
{
	Expr* node = _Node(kExpr_Select, op.line, Type());
	node->text = "?:";
	Expr* operands[] = {condition, yes, no};
	_SetOperands(node, operands, 3);
	bool usable = Usable(condition);
	usable = Usable(yes) && usable;
	if (!Usable(no) || !usable)
		return _Error(node);
	Condition(condition, "?:");
	if (ConvertsTo(no->type, yes->type))
		node->type = yes->type;
	else if (ConvertsTo(yes->type, no->type))
		node->type = no->type;
	else
	{
		_rDiagnostics.Error(op.line,
		                    "'?:' : branches differ: " + Quote(yes->type) + " and " + Quote(no->type));
		return _Error(node);
	}
	if (condition->hasValue && yes->hasValue && no->hasValue && node->type.IsScalar())
	{
		node->hasValue = true;
		node->value = condition->value != 0.0 ? yes->value : no->value;
	}
	return node;
}

Expr* Typing::Sequence(const Token& op, Expr* left, Expr* right)
{
	Expr* node = _Node(kExpr_Sequence, op.line, right->type);
	node->text = op.text;
	Expr* operands[] = {left, right};
	_SetOperands(node, operands, 2);
	node->constant = false;
	return node;
}

Expr* Typing::Index(const Token& bracket, Expr* base, Expr* index)
{
	Expr* node = _Node(kExpr_Index, bracket.line, Type());
	node->text = "[]";
	Expr* operands[] = {base, index};
	_SetOperands(node, operands, 2);
	bool usable = Usable(base);
	if (!Usable(index) || !usable)
		return _Error(node);
	const Type& type = base->type;
	if (type.IsArray())
		node->type = type.Element();
	else if (type.IsMatrix())
		node->type = Type::Vector(kBase_Float, type.rows);
	else if (type.IsVector())
		node->type = Type::Scalar(type.base);
	else
	{
		_rDiagnostics.Error(bracket.line,
		                    Quote(type) + " : subscripted value is not an array, vector or matrix");
		return _Error(node);
	}
	if (!index->type.IsInt())
	{
		_rDiagnostics.Error(bracket.line, "'[]' : index must be 'int', not " + Quote(index->type));
		return _Error(node);
	}
	_CheckIndexRange(base, index, bracket.line);
	return node;
}

void Typing::_CheckIndexRange(const Expr* base, const Expr* index, int line)
{
	if (!index->hasValue)
		return;
	const Type& type = base->type;
	int size = type.IsArray() ? type.array : (type.IsMatrix() ? type.columns : type.rows);
	// The generator declares block arrays with size 1 and indexes them freely.
	bool blockMember = base->kind == kExpr_Field && base->Operand(0)->type.aggregate &&
	                   base->Operand(0)->type.aggregate->block;
	if (size <= 0 || (type.IsArray() && blockMember))
		return;
	if (index->value < 0 || index->value >= size)
	{
		// Printed from the double: a literal index may lie past every integer type.
		char text[64];
		std::snprintf(text, sizeof(text), "%.0f", index->value);
		_rDiagnostics.Error(line, "'[]' : index " + std::string(text) + " out of range for " + Quote(type));
	}
}

Expr* Typing::Field(Expr* base, const Token& field)
{
	Expr* node = _Node(kExpr_Field, field.line, Type());
	node->text = field.text;
	_SetOperands(node, &base, 1);
	if (!Usable(base))
		return _Error(node);
	const Type& type = base->type;
	if (type.IsArray())
	{
		_rDiagnostics.Error(field.line, Quote(field.text) + " : field selection on an array");
		return _Error(node);
	}
	if (type.base == kBase_Struct)
	{
		node->member = type.aggregate->Find(field.text);
		if (!node->member)
		{
			_rDiagnostics.Error(field.line, Quote(field.text) + " : no such field in " + Quote(type));
			return _Error(node);
		}
		node->type = node->member->type;
		return node;
	}
	if (type.IsVector())
	{
		std::string_view s = field.text;
		bool valid = s.size() <= 4;
		int set = SwizzleIndex(s[0]) / 4;
		for (size_t i = 0; valid && i < s.size(); ++i)
		{
			int index = SwizzleIndex(s[i]);
			valid = index >= 0 && index / 4 == set && index % 4 < type.rows;
			node->swizzle[i] = uint8_t(index % 4);
		}
		if (!valid)
		{
			_rDiagnostics.Error(field.line, Quote(field.text) + " : invalid swizzle of " + Quote(type));
			return _Error(node);
		}
		node->kind = kExpr_Swizzle;
		node->swizzleCount = uint8_t(s.size());
		node->type = Type::Vector(type.base, int(s.size()));
		return node;
	}
	_rDiagnostics.Error(field.line, Quote(field.text) +
	                                    " : field selection requires a structure or vector, not " +
	                                    Quote(type));
	return _Error(node);
}

const char* Typing::_NotWritable(const Expr* target, std::string& name) const
{
	const Expr* e = target;
	for (;;)
	{
		if (e->kind == kExpr_Swizzle)
		{
			for (int i = 0; i < e->swizzleCount; ++i)
			{
				for (int j = 0; j < i; ++j)
				{
					if (e->swizzle[i] == e->swizzle[j])
						return "";
				}
			}
		}
		if (e->kind != kExpr_Swizzle && e->kind != kExpr_Field && e->kind != kExpr_Index)
			break;
		e = e->Operand(0);
	}
	if (e->kind != kExpr_Variable || !e->symbol)
		return "";
	const Symbol& symbol = *e->symbol;
	name = std::string(symbol.name);
	if (!symbol.readOnly)
		return nullptr;
	if (symbol.kind == kSymbol_Builtin)
		return "built-in input";
	if (symbol.kind == kSymbol_Block)
		return "uniform block";
	if (symbol.isConst)
		return "const";
	return QLStorageText(symbol.storage);
}

bool Typing::_CheckWritable(const Expr* target, const std::string& context)
{
	std::string name;
	const char* reason = _NotWritable(target, name);
	if (!reason)
		return true;
	if (!*reason)
		_rDiagnostics.Error(target->line, context + " : l-value required");
	else
		_rDiagnostics.Error(target->line, context + " : " + Quote(name) + " is read-only (" + reason + ")");
	return false;
}

void Typing::Condition(const Expr* condition, const char* what)
{
	if (condition->type.IsError() || !Usable(condition))
		return;
	if (!condition->type.IsBool())
		_rDiagnostics.Error(condition->line,
		                    Quote(what) + " : condition must be 'bool', not " + Quote(condition->type));
}

void Typing::Initializer(const Token& name, const Type& type, const Expr* value)
{
	if (!Usable(value) || type.IsError())
		return;
	if (!ConvertsTo(value->type, type))
		_rDiagnostics.Error(name.line, Quote(name.text) + " : cannot initialize a " + Quote(type) +
		                                   " with a " + Quote(value->type));
}

void Typing::Return(int line, const Type& returnType, const Expr* value)
{
	bool isVoid = returnType.IsVoid();
	if (value && isVoid)
		_rDiagnostics.Error(line, "'return' : void function cannot return a value");
	else if (!value && !isVoid)
		_rDiagnostics.Error(line, "'return' : function must return a value");
	else if (value && Usable(value) && !returnType.IsError() && !ConvertsTo(value->type, returnType))
		_rDiagnostics.Error(line, "'return' : cannot convert from " + Quote(value->type) + " to " +
		                              Quote(returnType));
}

int Typing::ArraySize(const Expr* size)
{
	if (size->type.IsError())
		return 1;
	if (!size->type.IsInt() || !size->hasValue)
	{
		_rDiagnostics.Error(size->line, "array size must be a constant integer expression");
		return 1;
	}
	if (size->value <= 0)
	{
		_rDiagnostics.Error(size->line, "array size must be positive");
		return 1;
	}
	// A literal too long for an int must not reach the conversion, which would be undefined.
	if (size->value > double(std::numeric_limits<int>::max()))
	{
		_rDiagnostics.Error(size->line, "array size is too large");
		return 1;
	}
	return int(size->value);
}

} // namespace Qlsl
} // namespace Tarsel
