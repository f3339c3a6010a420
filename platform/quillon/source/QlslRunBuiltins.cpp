#include "QlslRunBuiltins.h"

#include <cmath>
#include <limits>

namespace Tarsel
{
namespace QlslRun
{
namespace
{

const float kPi = 3.14159265358979323846f;

// The shape of the widest argument in a base: genType functions accept a scalar for any vector.
Shape Widest(const Value* a, int count, Base base)
{
	Shape shape = a[0].shape;
	for (int i = 1; i < count; ++i)
		if (a[i].Count() > shape.Count())
			shape = a[i].shape;
	shape.base = base;
	return shape;
}

// Component-wise float functions of N arguments, each a scalar or of the widest shape.
template <int N, float (*F)(const float*)>
Value FloatEach(Machine&, const Value* a, int)
{
	Value out = Value::Zero(Widest(a, N, kFloat));
	for (int k = 0; k < out.Count(); ++k)
	{
		float x[N];
		for (int i = 0; i < N; ++i)
			x[i] = a[i].F(k);
		out.s[k].f = F(x);
	}
	return out;
}

// Component-wise functions with a float and an int form, chosen by the first argument.
template <int N, class Op>
Value NumericEach(Machine&, const Value* a, int)
{
	bool isFloat = a[0].shape.base == kFloat;
	Value out = Value::Zero(Widest(a, N, a[0].shape.base));
	for (int k = 0; k < out.Count(); ++k)
	{
		float f[N];
		int32_t i[N];
		for (int j = 0; j < N; ++j)
		{
			f[j] = a[j].F(k);
			i[j] = a[j].I(k);
		}
		if (isFloat)
			out.s[k].f = Op::F(f);
		else
			out.s[k].i = Op::I(i);
	}
	return out;
}

float Radians(const float* x)
{
	return x[0] * (kPi / 180.0f);
}
float Degrees(const float* x)
{
	return x[0] * (180.0f / kPi);
}
float Sin(const float* x)
{
	return std::sin(x[0]);
}
float Cos(const float* x)
{
	return std::cos(x[0]);
}
float Tan(const float* x)
{
	return std::tan(x[0]);
}
float Asin(const float* x)
{
	return std::asin(x[0]);
}
float Acos(const float* x)
{
	return std::acos(x[0]);
}
float Atan(const float* x)
{
	return std::atan(x[0]);
}
float Atan2(const float* x)
{
	return std::atan2(x[0], x[1]);
}
float Pow(const float* x)
{
	return std::pow(x[0], x[1]);
}
float Exp(const float* x)
{
	return std::exp(x[0]);
}
float Log(const float* x)
{
	return std::log(x[0]);
}
float Exp2(const float* x)
{
	return std::exp2(x[0]);
}
float Log2(const float* x)
{
	return std::log2(x[0]);
}
float Sqrt(const float* x)
{
	return std::sqrt(x[0]);
}
float InverseSqrt(const float* x)
{
	return 1.0f / std::sqrt(x[0]);
}
float Floor(const float* x)
{
	return std::floor(x[0]);
}
float Ceil(const float* x)
{
	return std::ceil(x[0]);
}
// Halves round away from zero, a choice GLSL leaves to the implementation.
float Round(const float* x)
{
	return std::round(x[0]);
}
float Trunc(const float* x)
{
	return std::trunc(x[0]);
}
float Fract(const float* x)
{
	return x[0] - std::floor(x[0]);
}
float Mod(const float* x)
{
	return x[0] - x[1] * std::floor(x[0] / x[1]);
}
float Step(const float* x)
{
	return x[1] < x[0] ? 0.0f : 1.0f;
}
float Mix(const float* x)
{
	return x[0] * (1.0f - x[2]) + x[1] * x[2];
}
float SmoothStep(const float* x)
{
	float t = std::fmin(std::fmax((x[2] - x[0]) / (x[1] - x[0]), 0.0f), 1.0f);
	return t * t * (3.0f - 2.0f * t);
}
float Zero(const float*)
{
	return 0.0f;
}

struct Abs
{
	static float F(const float* x) { return std::fabs(x[0]); }
	static int32_t I(const int32_t* x) { return x[0] < 0 ? int32_t(0u - uint32_t(x[0])) : x[0]; }
};
struct Sign
{
	static float F(const float* x) { return float((x[0] > 0.0f) - (x[0] < 0.0f)); }
	static int32_t I(const int32_t* x) { return (x[0] > 0) - (x[0] < 0); }
};
struct Min
{
	static float F(const float* x) { return x[1] < x[0] ? x[1] : x[0]; }
	static int32_t I(const int32_t* x) { return x[1] < x[0] ? x[1] : x[0]; }
};
struct Max
{
	static float F(const float* x) { return x[0] < x[1] ? x[1] : x[0]; }
	static int32_t I(const int32_t* x) { return x[0] < x[1] ? x[1] : x[0]; }
};
// min(max(x, minVal), maxVal), which also fixes the answer when minVal > maxVal.
struct Clamp
{
	static float F(const float* x)
	{
		float low[2] = {x[0], x[1]};
		float high[2] = {Max::F(low), x[2]};
		return Min::F(high);
	}
	static int32_t I(const int32_t* x)
	{
		int32_t low[2] = {x[0], x[1]};
		int32_t high[2] = {Max::I(low), x[2]};
		return Min::I(high);
	}
};

// mix with a bool vector selects instead of blending.
Value MixAny(Machine& machine, const Value* a, int count)
{
	if (a[2].shape.base != kBool)
		return FloatEach<3, Mix>(machine, a, count);
	Value out = a[0];
	for (int k = 0; k < out.Count(); ++k)
		if (a[2].I(k))
			out.s[k] = a[1].s[k];
	return out;
}

template <bool (*F)(float)>
Value Classify(Machine&, const Value* a, int)
{
	Value out = Value::Zero(Widest(a, 1, kBool));
	for (int k = 0; k < out.Count(); ++k)
		out.s[k].i = F(a[0].s[k].f);
	return out;
}
bool IsNan(float x)
{
	return std::isnan(x);
}
bool IsInf(float x)
{
	return std::isinf(x);
}

float DotOf(const Value& a, const Value& b)
{
	float sum = 0.0f;
	for (int k = 0; k < a.Count(); ++k)
		sum += a.s[k].f * b.s[k].f;
	return sum;
}

Value Scaled(const Value& v, float factor)
{
	return Binary(kMul, v, Value::Float(factor));
}

Value Dot(Machine&, const Value* a, int)
{
	return Value::Float(DotOf(a[0], a[1]));
}
Value Length(Machine&, const Value* a, int)
{
	return Value::Float(std::sqrt(DotOf(a[0], a[0])));
}
Value Distance(Machine& machine, const Value* a, int)
{
	Value difference = Binary(kSub, a[0], a[1]);
	return Length(machine, &difference, 1);
}
// A zero vector gives NaN components, as x / length(x) does.
Value Normalize(Machine&, const Value* a, int)
{
	return Binary(kDiv, a[0], Value::Float(std::sqrt(DotOf(a[0], a[0]))));
}
Value Cross(Machine&, const Value* a, int)
{
	const Value& x = a[0];
	const Value& y = a[1];
	return Value::Floats({x.s[1].f * y.s[2].f - y.s[1].f * x.s[2].f,
	                      x.s[2].f * y.s[0].f - y.s[2].f * x.s[0].f,
	                      x.s[0].f * y.s[1].f - y.s[0].f * x.s[1].f});
}
// faceforward(N, I, Nref)
Value FaceForward(Machine&, const Value* a, int)
{
	return DotOf(a[2], a[1]) < 0.0f ? a[0] : Unary(kNegate, a[0]);
}
// reflect(I, N) = I - 2 dot(N, I) N
Value Reflect(Machine&, const Value* a, int)
{
	return Binary(kSub, a[0], Scaled(a[1], 2.0f * DotOf(a[1], a[0])));
}
// refract(I, N, eta): 0 on total internal reflection.
Value Refract(Machine&, const Value* a, int)
{
	float eta = a[2].s[0].f;
	float d = DotOf(a[1], a[0]);
	float k = 1.0f - eta * eta * (1.0f - d * d);
	if (k < 0.0f)
		return Value::Zero(a[0].shape);
	return Binary(kSub, Scaled(a[0], eta), Scaled(a[1], eta * d + std::sqrt(k)));
}

Value MatrixCompMult(Machine&, const Value* a, int)
{
	Value out = a[0];
	for (int k = 0; k < out.Count(); ++k)
		out.s[k].f *= a[1].s[k].f;
	return out;
}

Value Transpose(Machine&, const Value* a, int)
{
	int n = a[0].shape.rows;
	Value out = a[0];
	for (int c = 0; c < n; ++c)
		for (int r = 0; r < n; ++r)
			out.s[c * n + r] = a[0].s[r * n + c];
	return out;
}

// Determinant of the n x n matrix m (column-major) without the listed rows and columns.
double Minor(const Value& m, unsigned skipRows, unsigned skipColumns, int size)
{
	int n = m.shape.rows;
	int column = 0;
	while (skipColumns & (1u << column))
		++column;
	if (size == 1)
	{
		int row = 0;
		while (skipRows & (1u << row))
			++row;
		return m.s[column * n + row].f;
	}
	double sum = 0.0;
	int sign = 1;
	for (int row = 0; row < n; ++row)
	{
		if (skipRows & (1u << row))
			continue;
		double element = m.s[column * n + row].f;
		sum += sign * element * Minor(m, skipRows | (1u << row), skipColumns | (1u << column), size - 1);
		sign = -sign;
	}
	return sum;
}

Value Determinant(Machine&, const Value* a, int)
{
	return Value::Float(float(Minor(a[0], 0, 0, a[0].shape.rows)));
}

// Adjugate over determinant; a singular matrix gives infinities and NaNs as IEEE division does.
Value Inverse(Machine&, const Value* a, int)
{
	const Value& m = a[0];
	int n = m.shape.rows;
	double det = Minor(m, 0, 0, n);
	Value out = m;
	for (int c = 0; c < n; ++c)
		for (int r = 0; r < n; ++r)
		{
			// inverse(r, c) is the cofactor of (c, r) over the determinant.
			double cofactor = ((r + c) % 2 ? -1.0 : 1.0) * Minor(m, 1u << c, 1u << r, n - 1);
			out.s[c * n + r].f = float(cofactor / det);
		}
	return out;
}

template <Op op>
Value Relation(Machine&, const Value* a, int)
{
	Value out = Value::Zero(Widest(a, 2, kBool));
	for (int k = 0; k < out.Count(); ++k)
	{
		Value x = Value::Zero(Shape::Scalar(a[0].shape.base));
		Value y = Value::Zero(Shape::Scalar(a[1].shape.base));
		x.s[0] = a[0].s[k];
		y.s[0] = a[1].s[k];
		out.s[k] = Binary(op, x, y).s[0];
	}
	return out;
}

template <bool all>
Value AnyAll(Machine&, const Value* a, int)
{
	for (int k = 0; k < a[0].Count(); ++k)
		if ((a[0].s[k].i != 0) != all)
			return Value::Bool(!all);
	return Value::Bool(all);
}

Value Not(Machine&, const Value* a, int)
{
	return Unary(kNot, a[0]);
}

// Images have one level, so a bias or level changes nothing.
Value Texture(Machine& machine, const Value* a, int)
{
	return SampleImage(machine.Image(a[0].s[0].i), a[1]);
}

// Width, height and depth; the caller keeps as many as the sampler's type has.
Value TextureSize(Machine& machine, const Value* a, int)
{
	const QLImage* image = machine.Image(a[0].s[0].i);
	return image ? Value::Ints({image->width, image->height, image->depth}) : Value::Ints({0, 0, 0});
}

Vector3f ToVector3(const Value& v)
{
	return Vector3f(v.s[0].f, v.s[1].f, v.s[2].f);
}

Value Accumulate(Machine& machine, const Value* a, int)
{
	if (machine.results)
	{
		Vector4f& sum = machine.results->accumulated[a[0].s[0].i];
		float* component = &sum.x;
		for (int k = 0; k < a[1].Count() && k < 4; ++k)
			component[k] += a[1].s[k].f;
	}
	return Value::Zero(Shape::Scalar(kInt));
}

Value EmitRay(Machine& machine, const Value* a, int count)
{
	if (machine.results)
	{
		QLEmittedRay ray;
		ray.rayClass = a[0].s[0].i;
		ray.origin = ToVector3(a[1]);
		ray.direction = ToVector3(a[2]);
		if (count > 3)
			ray.contribution = ToVector3(a[3]);
		machine.results->rays.push_back(ray);
	}
	return Value::Zero(Shape::Scalar(kInt));
}

Value TraceShadow(Machine& machine, const Value* a, int)
{
	QLShadowQuery query;
	query.origin = ToVector3(a[0]);
	query.direction = ToVector3(a[1]);
	query.maxDistance = a[2].s[0].f;
	if (machine.shadow)
		query.answer = machine.shadow(query.origin, query.direction, query.maxDistance);
	if (machine.results)
		machine.results->shadows.push_back(query);
	return Value::Float(query.answer);
}

Value Random(Machine& machine, const Value*, int)
{
	return Value::Float(machine.NextRandom());
}

struct Entry
{
	const char* name;
	BuiltinCode code;
};

const Entry kBuiltins[] = {
    {"radians", FloatEach<1, Radians>},
    {"degrees", FloatEach<1, Degrees>},
    {"sin", FloatEach<1, Sin>},
    {"cos", FloatEach<1, Cos>},
    {"tan", FloatEach<1, Tan>},
    {"asin", FloatEach<1, Asin>},
    {"acos", FloatEach<1, Acos>},
    {"pow", FloatEach<2, Pow>},
    {"exp", FloatEach<1, Exp>},
    {"log", FloatEach<1, Log>},
    {"exp2", FloatEach<1, Exp2>},
    {"log2", FloatEach<1, Log2>},
    {"sqrt", FloatEach<1, Sqrt>},
    {"inversesqrt", FloatEach<1, InverseSqrt>},
    {"abs", NumericEach<1, Abs>},
    {"sign", NumericEach<1, Sign>},
    {"floor", FloatEach<1, Floor>},
    {"ceil", FloatEach<1, Ceil>},
    {"round", FloatEach<1, Round>},
    {"trunc", FloatEach<1, Trunc>},
    {"fract", FloatEach<1, Fract>},
    {"mod", FloatEach<2, Mod>},
    {"min", NumericEach<2, Min>},
    {"max", NumericEach<2, Max>},
    {"clamp", NumericEach<3, Clamp>},
    {"mix", MixAny},
    {"step", FloatEach<2, Step>},
    {"smoothstep", FloatEach<3, SmoothStep>},
    {"isnan", Classify<IsNan>},
    {"isinf", Classify<IsInf>},
    {"length", Length},
    {"distance", Distance},
    {"dot", Dot},
    {"cross", Cross},
    {"normalize", Normalize},
    {"faceforward", FaceForward},
    {"reflect", Reflect},
    {"refract", Refract},
    {"matrixCompMult", MatrixCompMult},
    {"transpose", Transpose},
    {"determinant", Determinant},
    {"inverse", Inverse},
    {"lessThan", Relation<kLess>},
    {"lessThanEqual", Relation<kLessEqual>},
    {"greaterThan", Relation<kGreater>},
    {"greaterThanEqual", Relation<kGreaterEqual>},
    {"equal", Relation<kEqual>},
    {"notEqual", Relation<kNotEqual>},
    {"any", AnyAll<false>},
    {"all", AnyAll<true>},
    {"not", Not},
    {"texture", Texture},
    {"texture2D", Texture},
    {"texture3D", Texture},
    {"textureCube", Texture},
    {"textureLod", Texture},
    {"textureSize", TextureSize},
    // No neighbouring rays to difference against: derivatives are 0.
    {"dFdx", FloatEach<1, Zero>},
    {"dFdy", FloatEach<1, Zero>},
    {"fwidth", FloatEach<1, Zero>},
    {"accumulate", Accumulate},
    {"emitRay", EmitRay},
    {"traceShadow", TraceShadow},
    {"random", Random},
};

Value AtanAny(Machine& machine, const Value* a, int count)
{
	return count == 2 ? FloatEach<2, Atan2>(machine, a, count) : FloatEach<1, Atan>(machine, a, count);
}

} // namespace

BuiltinCode FindBuiltin(std::string_view name)
{
	if (name == "atan")
		return AtanAny;
	for (const Entry& entry : kBuiltins)
		if (name == entry.name)
			return entry.code;
	return nullptr;
}

} // namespace QlslRun
} // namespace Tarsel
