#include "QlslRunValue.h"

#include <climits>
#include <cmath>

namespace Tarsel
{
namespace QlslRun
{
namespace
{

template <class T, class F>
Value FromList(Shape shape, std::initializer_list<T> values, F store)
{
	Value value = Value::Zero(shape);
	int k = 0;
	for (T item : values)
		store(value.s[k++], item);
	return value;
}

Slot MakeInt(int32_t i)
{
	Slot slot;
	slot.i = i;
	return slot;
}

Slot MakeFloat(float f)
{
	Slot slot;
	slot.f = f;
	return slot;
}

// Wrapping 32-bit arithmetic without signed overflow.
int32_t Wrap(uint32_t u)
{
	return int32_t(u);
}

int32_t IntDivide(int32_t a, int32_t b)
{
	if (b == 0)
		return 0;
	if (a == INT32_MIN && b == -1)
		return INT32_MIN;
	return a / b;
}

int32_t IntModulo(int32_t a, int32_t b)
{
	if (b == 0 || (a == INT32_MIN && b == -1))
		return 0;
	return a % b;
}

Slot IntOp(Op op, int32_t a, int32_t b)
{
	uint32_t ua = uint32_t(a), ub = uint32_t(b);
	switch (op)
	{
	case kAdd:
		return MakeInt(Wrap(ua + ub));
	case kSub:
		return MakeInt(Wrap(ua - ub));
	case kMul:
		return MakeInt(Wrap(ua * ub));
	case kDiv:
		return MakeInt(IntDivide(a, b));
	case kMod:
		return MakeInt(IntModulo(a, b));
	// Shift counts outside 0..31 are undefined; they are taken modulo 32.
	case kShl:
		return MakeInt(Wrap(ua << (ub & 31u)));
	case kShr:
		return MakeInt(a >> (ub & 31u));
	case kBitAnd:
		return MakeInt(a & b);
	case kBitOr:
		return MakeInt(a | b);
	case kBitXor:
		return MakeInt(a ^ b);
	case kLogicalXor:
		return MakeInt((a != 0) != (b != 0));
	case kLess:
		return MakeInt(a < b);
	case kGreater:
		return MakeInt(a > b);
	case kLessEqual:
		return MakeInt(a <= b);
	case kGreaterEqual:
		return MakeInt(a >= b);
	case kEqual:
		return MakeInt(a == b);
	case kNotEqual:
		return MakeInt(a != b);
	}
	return MakeInt(0);
}

Slot FloatOp(Op op, float a, float b)
{
	switch (op)
	{
	case kAdd:
		return MakeFloat(a + b);
	case kSub:
		return MakeFloat(a - b);
	case kMul:
		return MakeFloat(a * b);
	case kDiv:
		return MakeFloat(a / b);
	case kLess:
		return MakeInt(a < b);
	case kGreater:
		return MakeInt(a > b);
	case kLessEqual:
		return MakeInt(a <= b);
	case kGreaterEqual:
		return MakeInt(a >= b);
	case kEqual:
		return MakeInt(a == b);
	case kNotEqual:
		return MakeInt(a != b);
	default:
		return MakeFloat(0.0f);
	}
}

bool IsRelation(Op op)
{
	return op >= kLess;
}

// M * v, v * M and M * N; everything else is component-wise.
Value Multiply(const Value& a, const Value& b)
{
	int n = a.shape.IsMatrix() ? a.shape.rows : b.shape.rows;
	Value out = Value::Zero(b.shape.IsMatrix() ? b.shape : a.shape);
	if (a.shape.IsMatrix() && b.shape.IsMatrix())
	{
		for (int c = 0; c < n; ++c)
			for (int r = 0; r < n; ++r)
			{
				float sum = 0.0f;
				for (int k = 0; k < n; ++k)
					sum += a.s[k * n + r].f * b.s[c * n + k].f;
				out.s[c * n + r].f = sum;
			}
		return out;
	}
	out.shape = Shape::Vector(kFloat, n);
	bool matrixFirst = a.shape.IsMatrix();
	const Value& m = matrixFirst ? a : b;
	const Value& v = matrixFirst ? b : a;
	for (int i = 0; i < n; ++i)
	{
		float sum = 0.0f;
		for (int k = 0; k < n; ++k)
			sum += matrixFirst ? m.s[k * n + i].f * v.s[k].f : v.s[k].f * m.s[i * n + k].f;
		out.s[i].f = sum;
	}
	return out;
}

} // namespace

Value Value::Float(float f)
{
	return Floats({f});
}

Value Value::Int(int32_t i)
{
	return Ints({i});
}

Value Value::Bool(bool b)
{
	return Bools({b});
}

Value Value::Floats(std::initializer_list<float> values)
{
	Shape shape = values.size() == 1 ? Shape::Scalar(kFloat) : Shape::Vector(kFloat, int(values.size()));
	return FromList(shape, values, [](Slot& slot, float f) { slot.f = f; });
}

Value Value::Ints(std::initializer_list<int32_t> values)
{
	Shape shape = values.size() == 1 ? Shape::Scalar(kInt) : Shape::Vector(kInt, int(values.size()));
	return FromList(shape, values, [](Slot& slot, int32_t i) { slot.i = i; });
}

Value Value::Bools(std::initializer_list<bool> values)
{
	Shape shape = values.size() == 1 ? Shape::Scalar(kBool) : Shape::Vector(kBool, int(values.size()));
	return FromList(shape, values, [](Slot& slot, bool b) { slot.i = b ? 1 : 0; });
}

Value Value::Matrix(int size, std::initializer_list<float> columnMajor)
{
	return FromList(Shape::Matrix(size), columnMajor, [](Slot& slot, float f) { slot.f = f; });
}

Value Value::Zero(Shape shape)
{
	Value value;
	value.shape = shape;
	for (Slot& slot : value.s)
		slot.i = 0;
	return value;
}

Slot ConvertSlot(Slot slot, Base from, Base to)
{
	if (from == to)
		return slot;
	if (to == kBool)
		return MakeInt(from == kFloat ? slot.f != 0.0f : slot.i != 0);
	if (to == kFloat)
		return MakeFloat(float(slot.i));
	if (from == kBool)
		return slot;
	float f = slot.f;
	if (std::isnan(f))
		return MakeInt(0);
	if (f >= 2147483648.0f)
		return MakeInt(INT32_MAX);
	if (f <= -2147483648.0f)
		return MakeInt(INT32_MIN);
	return MakeInt(int32_t(f));
}

Value Convert(const Value& value, Base to)
{
	Value out = value;
	out.shape.base = to;
	for (int k = 0; k < value.Count(); ++k)
		out.s[k] = ConvertSlot(value.s[k], value.shape.base, to);
	return out;
}

Value Binary(Op op, const Value& a, const Value& b)
{
	if (a.shape.base != b.shape.base && (a.shape.base == kFloat || b.shape.base == kFloat))
		return Binary(op, Convert(a, kFloat), Convert(b, kFloat));
	bool isFloat = a.shape.base == kFloat;
	if (op == kMul && isFloat && (a.shape.IsMatrix() || b.shape.IsMatrix()) && !a.shape.IsScalar() &&
	    !b.shape.IsScalar())
		return Multiply(a, b);
	if (op == kEqual || op == kNotEqual)
		return Value::Bool(Equal(a, b) == (op == kEqual));
	Shape shape = a.shape.IsScalar() ? b.shape : a.shape;
	if (IsRelation(op) || op == kLogicalXor)
		shape.base = kBool;
	Value out = Value::Zero(shape);
	for (int k = 0; k < shape.Count(); ++k)
		out.s[k] = isFloat ? FloatOp(op, a.F(k), b.F(k)) : IntOp(op, a.I(k), b.I(k));
	return out;
}

Value Unary(UnaryOp op, const Value& a)
{
	Value out = a;
	for (int k = 0; k < a.Count(); ++k)
	{
		Slot& slot = out.s[k];
		switch (op)
		{
		case kNegate:
			if (a.shape.base == kFloat)
				slot.f = -slot.f;
			else
				slot.i = Wrap(0u - uint32_t(slot.i));
			break;
		case kNot:
			slot.i = slot.i == 0;
			break;
		case kComplement:
			slot.i = ~slot.i;
			break;
		case kPlus:
			break;
		}
	}
	return out;
}

Value Construct(Shape target, const Value* args, int count)
{
	Value out = Value::Zero(target);
	int n = target.Count();
	if (count == 1 && args[0].shape.IsScalar())
	{
		Slot slot = ConvertSlot(args[0].s[0], args[0].shape.base, target.base);
		for (int k = 0; k < n; ++k)
			if (!target.IsMatrix() || k % (target.rows + 1) == 0)
				out.s[k] = slot;
		return out;
	}
	if (count == 1 && args[0].shape.IsMatrix() && target.IsMatrix())
	{
		int from = args[0].shape.rows, to = target.rows;
		for (int c = 0; c < to; ++c)
			for (int r = 0; r < to; ++r)
				out.s[c * to + r].f = (c < from && r < from) ? args[0].s[c * from + r].f : float(c == r);
		return out;
	}
	int k = 0;
	for (int a = 0; a < count && k < n; ++a)
		for (int j = 0; j < args[a].Count() && k < n; ++j)
			out.s[k++] = ConvertSlot(args[a].s[j], args[a].shape.base, target.base);
	return out;
}

bool Equal(const Value& a, const Value& b)
{
	if (a.shape.base != b.shape.base)
		return Equal(Convert(a, kFloat), Convert(b, kFloat));
	for (int k = 0; k < a.Count(); ++k)
	{
		bool same = a.shape.base == kFloat ? a.s[k].f == b.s[k].f : a.s[k].i == b.s[k].i;
		if (!same)
			return false;
	}
	return true;
}

} // namespace QlslRun
} // namespace Tarsel
