#include "InterpreterTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <vector>

using namespace Tarsel::QlslRun;
using InterpreterTest::Near;

namespace
{

// A non-symmetric matrix, so that every transposition mistake shows: columns (1,2) and (3,4).
const Value kM2 = Value::Matrix(2, {1, 2, 3, 4});

TEST(InterpreterValue, BinaryOperators)
{
	struct Case
	{
		const char* what;
		Op op;
		Value a, b, expected;
	};
	const float nan = std::numeric_limits<float>::quiet_NaN();
	const std::vector<Case> cases = {
	    {"int / truncates toward zero", kDiv, Value::Int(-7), Value::Int(2), Value::Int(-3)},
	    {"int % takes the dividend's sign", kMod, Value::Int(-7), Value::Int(3), Value::Int(-1)},
	    {"int / 0", kDiv, Value::Int(5), Value::Int(0), Value::Int(0)},
	    {"int % 0", kMod, Value::Int(5), Value::Int(0), Value::Int(0)},
	    {"INT_MIN / -1 wraps", kDiv, Value::Int(INT32_MIN), Value::Int(-1), Value::Int(INT32_MIN)},
	    {"int + wraps", kAdd, Value::Int(INT32_MAX), Value::Int(1), Value::Int(INT32_MIN)},
	    {"shift count modulo 32", kShl, Value::Int(1), Value::Int(33), Value::Int(2)},
	    {"arithmetic right shift", kShr, Value::Int(-8), Value::Int(1), Value::Int(-4)},
	    {"ivec % int", kMod, Value::Ints({7, -7}), Value::Int(4), Value::Ints({3, -3})},
	    {"float / 0 is IEEE", kDiv, Value::Float(1), Value::Float(0),
	     Value::Float(std::numeric_limits<float>::infinity())},
	    {"0.0 / 0.0 is NaN", kDiv, Value::Float(0), Value::Float(0), Value::Float(nan)},
	    {"int meets float", kAdd, Value::Int(1), Value::Float(0.5f), Value::Float(1.5f)},
	    {"scalar - vector", kSub, Value::Float(1), Value::Floats({1, 2, 3}), Value::Floats({0, -1, -2})},
	    {"vector * vector is component-wise", kMul, Value::Floats({1, 2}), Value::Floats({3, 4}),
	     Value::Floats({3, 8})},
	    {"M * v", kMul, kM2, Value::Floats({1, 1}), Value::Floats({4, 6})},
	    {"v * M", kMul, Value::Floats({1, 1}), kM2, Value::Floats({3, 7})},
	    {"M * M", kMul, kM2, kM2, Value::Matrix(2, {7, 10, 15, 22})},
	    {"M * scalar", kMul, kM2, Value::Float(2), Value::Matrix(2, {2, 4, 6, 8})},
	    {"M / M is component-wise", kDiv, kM2, kM2, Value::Matrix(2, {1, 1, 1, 1})},
	    {"int <", kLess, Value::Int(-1), Value::Int(0), Value::Bool(true)},
	    {"float >=", kGreaterEqual, Value::Float(1), Value::Float(2), Value::Bool(false)},
	    {"NaN == NaN is false", kEqual, Value::Float(nan), Value::Float(nan), Value::Bool(false)},
	    {"-0 == 0", kEqual, Value::Float(-0.0f), Value::Float(0), Value::Bool(true)},
	    {"vector == compares all", kNotEqual, Value::Floats({1, 2}), Value::Floats({1, 3}),
	     Value::Bool(true)},
	    {"^^", kLogicalXor, Value::Bool(true), Value::Bool(true), Value::Bool(false)},
	};
	for (const Case& c : cases)
		EXPECT_EQ("", Near(Binary(c.op, c.a, c.b), c.expected)) << c.what;
}

TEST(InterpreterValue, UnaryOperators)
{
	EXPECT_EQ("", Near(Unary(kNegate, Value::Int(INT32_MIN)), Value::Int(INT32_MIN)));
	EXPECT_EQ("", Near(Unary(kNegate, Value::Floats({1, -2})), Value::Floats({-1, 2})));
	EXPECT_EQ("", Near(Unary(kNot, Value::Bool(false)), Value::Bool(true)));
	EXPECT_EQ("", Near(Unary(kComplement, Value::Int(0)), Value::Int(-1)));
}

TEST(InterpreterValue, Constructors)
{
	const float nan = std::numeric_limits<float>::quiet_NaN();
	Value m4 = Value::Matrix(4, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
	Value v2 = Value::Floats({1, 2});
	Value mixed[] = {v2, Value::Int(3), Value::Bool(true)};
	struct Case
	{
		const char* what;
		Shape target;
		std::vector<Value> args;
		Value expected;
	};
	const std::vector<Case> cases = {
	    {"mat3(mat4) keeps the upper-left columns",
	     Shape::Matrix(3),
	     {m4},
	     Value::Matrix(3, {0, 1, 2, 4, 5, 6, 8, 9, 10})},
	    {"mat3(mat2) fills with identity",
	     Shape::Matrix(3),
	     {kM2},
	     Value::Matrix(3, {1, 2, 0, 3, 4, 0, 0, 0, 1})},
	    {"mat2(float) is diagonal", Shape::Matrix(2), {Value::Float(5)}, Value::Matrix(2, {5, 0, 0, 5})},
	    {"mat2 from components is column-major", Shape::Matrix(2), {v2, v2}, Value::Matrix(2, {1, 2, 1, 2})},
	    {"vec3(float) broadcasts", Shape::Vector(kFloat, 3), {Value::Float(2)}, Value::Floats({2, 2, 2})},
	    {"vec4 from vec2, int, bool",
	     Shape::Vector(kFloat, 4),
	     {mixed[0], mixed[1], mixed[2]},
	     Value::Floats({1, 2, 3, 1})},
	    {"vec2(vec4) takes the first two",
	     Shape::Vector(kFloat, 2),
	     {Value::Floats({7, 8, 9, 10})},
	     Value::Floats({7, 8})},
	    {"int(float) truncates", Shape::Scalar(kInt), {Value::Float(-2.7f)}, Value::Int(-2)},
	    {"int(NaN) is 0", Shape::Scalar(kInt), {Value::Float(nan)}, Value::Int(0)},
	    {"int(1e20) saturates", Shape::Scalar(kInt), {Value::Float(1e20f)}, Value::Int(INT32_MAX)},
	    {"bool(float)", Shape::Scalar(kBool), {Value::Float(0.5f)}, Value::Bool(true)},
	    {"ivec2(bvec2)", Shape::Vector(kInt, 2), {Value::Bools({true, false})}, Value::Ints({1, 0})},
	};
	for (const Case& c : cases)
		EXPECT_EQ("", Near(Construct(c.target, c.args.data(), int(c.args.size())), c.expected)) << c.what;
}

} // namespace
