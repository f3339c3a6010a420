#include "InterpreterTestSupport.h"
#include "QlslRunBuiltins.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <vector>

using namespace Tarsel;
using namespace Tarsel::QlslRun;
using InterpreterTest::Near;

namespace
{

struct Case
{
	const char* name;
	std::vector<Value> args;
	Value expected;
};

Value Call(Machine& machine, const char* name, const std::vector<Value>& args)
{
	BuiltinCode code = FindBuiltin(name);
	EXPECT_NE(nullptr, code) << name;
	return code ? code(machine, args.data(), int(args.size())) : Value();
}

void Check(const std::vector<Case>& cases)
{
	Machine machine;
	for (const Case& c : cases)
		EXPECT_EQ("", Near(Call(machine, c.name, c.args), c.expected)) << c.name;
}

const float kNan = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

TEST(InterpreterBuiltins, CommonFunctions)
{
	Check({
	    {"mod", {Value::Float(-1), Value::Float(3)}, Value::Float(2)},
	    {"mod", {Value::Float(5.5f), Value::Float(-2)}, Value::Float(-0.5f)},
	    {"mod", {Value::Floats({4, -4}), Value::Float(3)}, Value::Floats({1, 2})},
	    {"fract", {Value::Float(-0.25f)}, Value::Float(0.75f)},
	    {"floor", {Value::Float(-0.5f)}, Value::Float(-1)},
	    {"trunc", {Value::Float(-1.5f)}, Value::Float(-1)},
	    {"round", {Value::Float(-2.5f)}, Value::Float(-3)},
	    {"sign", {Value::Floats({-3, 0, 2})}, Value::Floats({-1, 0, 1})},
	    {"sign", {Value::Int(-9)}, Value::Int(-1)},
	    {"abs", {Value::Int(INT32_MIN)}, Value::Int(INT32_MIN)},
	    {"min", {Value::Floats({1, 5}), Value::Float(3)}, Value::Floats({1, 3})},
	    {"max", {Value::Ints({1, 5}), Value::Ints({4, 2})}, Value::Ints({4, 5})},
	    // clamp is min(max(x, lo), hi), also when lo > hi.
	    {"clamp", {Value::Float(5), Value::Float(3), Value::Float(1)}, Value::Float(1)},
	    {"clamp",
	     {Value::Floats({-1, 0.5f, 2}), Value::Float(0), Value::Float(1)},
	     Value::Floats({0, 0.5f, 1})},
	    {"clamp", {Value::Int(-4), Value::Int(0), Value::Int(10)}, Value::Int(0)},
	    {"mix", {Value::Float(2), Value::Float(4), Value::Float(0.25f)}, Value::Float(2.5f)},
	    {"mix",
	     {Value::Floats({0, 0}), Value::Floats({2, 4}), Value::Floats({0.5f, 1})},
	     Value::Floats({1, 4})},
	    {"mix",
	     {Value::Floats({1, 2}), Value::Floats({3, 4}), Value::Bools({true, false})},
	     Value::Floats({3, 2})},
	    {"step", {Value::Float(1), Value::Floats({0.5f, 1, 2})}, Value::Floats({0, 1, 1})},
	    {"smoothstep", {Value::Float(0), Value::Float(2), Value::Float(0.5f)}, Value::Float(0.15625f)},
	    {"smoothstep", {Value::Float(0), Value::Float(1), Value::Floats({-1, 2})}, Value::Floats({0, 1})},
	    {"isnan", {Value::Floats({kNan, 1})}, Value::Bools({true, false})},
	    {"isinf", {Value::Float(-kInf)}, Value::Bool(true)},
	});
}

TEST(InterpreterBuiltins, AnglesAndExponentials)
{
	Check({
	    {"radians", {Value::Float(180)}, Value::Float(3.14159265f)},
	    {"degrees", {Value::Float(3.14159265f)}, Value::Float(180)},
	    {"atan", {Value::Float(1), Value::Float(-1)}, Value::Float(2.35619449f)},
	    {"atan", {Value::Float(1)}, Value::Float(0.78539816f)},
	    {"cos", {Value::Floats({0, 3.14159265f})}, Value::Floats({1, -1})},
	    {"pow", {Value::Float(2), Value::Float(10)}, Value::Float(1024)},
	    {"pow", {Value::Float(-2), Value::Float(0.5f)}, Value::Float(kNan)},
	    {"exp2", {Value::Float(-1)}, Value::Float(0.5f)},
	    {"log2", {Value::Float(0)}, Value::Float(-kInf)},
	    {"inversesqrt", {Value::Float(4)}, Value::Float(0.5f)},
	    {"sqrt", {Value::Float(-1)}, Value::Float(kNan)},
	});
}

TEST(InterpreterBuiltins, Geometry)
{
	Value down = Value::Floats({0.6f, -0.8f, 0});
	Value up = Value::Floats({0, 1, 0});
	Check({
	    {"length", {Value::Floats({3, 4})}, Value::Float(5)},
	    {"length", {Value::Float(-2)}, Value::Float(2)},
	    {"distance", {Value::Floats({1, 1}), Value::Floats({4, 5})}, Value::Float(5)},
	    {"dot", {Value::Floats({1, 2, 3}), Value::Floats({4, 5, 6})}, Value::Float(32)},
	    {"cross", {Value::Floats({1, 0, 0}), Value::Floats({0, 1, 0})}, Value::Floats({0, 0, 1})},
	    {"normalize", {Value::Floats({0, 3, 4})}, Value::Floats({0, 0.6f, 0.8f})},
	    {"normalize", {Value::Floats({0, 0, 0})}, Value::Floats({kNan, kNan, kNan})},
	    {"reflect", {down, up}, Value::Floats({0.6f, 0.8f, 0})},
	    {"refract", {down, up, Value::Float(1)}, down},
	    // 1 - 4 * (1 - 0.64) < 0: total internal reflection.
	    {"refract", {down, up, Value::Float(2)}, Value::Floats({0, 0, 0})},
	    {"refract", {Value::Floats({0, -1, 0}), up, Value::Float(0.5f)}, Value::Floats({0, -1, 0})},
	    {"faceforward", {up, down, up}, up},
	    {"faceforward", {up, up, up}, Value::Floats({0, -1, 0})},
	});
}

TEST(InterpreterBuiltins, Matrices)
{
	Value m = Value::Matrix(3, {2, 0, 1, 1, 3, 0, 0, 1, 4});
	Machine machine;
	Value inverse = Call(machine, "inverse", {m});
	EXPECT_EQ("", Near(Binary(kMul, m, inverse), Value::Matrix(3, {1, 0, 0, 0, 1, 0, 0, 0, 1})));
	EXPECT_EQ("", Near(Binary(kMul, inverse, m), Value::Matrix(3, {1, 0, 0, 0, 1, 0, 0, 0, 1})));
	Value m4 = Value::Matrix(4, {1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 4, 0, 5, 6, 7, 1});
	EXPECT_EQ("", Near(Binary(kMul, Call(machine, "inverse", {m4}), Value::Floats({6, 8, 11, 1})),
	                   Value::Floats({1, 1, 1, 1})));
	Value singular = Call(machine, "inverse", {Value::Matrix(2, {1, 2, 2, 4})});
	EXPECT_FALSE(std::isfinite(singular.s[0].f));
	Check({
	    {"determinant", {m}, Value::Float(25)},
	    {"determinant", {Value::Matrix(2, {1, 2, 3, 4})}, Value::Float(-2)},
	    {"transpose", {Value::Matrix(2, {1, 2, 3, 4})}, Value::Matrix(2, {1, 3, 2, 4})},
	    {"matrixCompMult",
	     {Value::Matrix(2, {1, 2, 3, 4}), Value::Matrix(2, {2, 2, 0, 1})},
	     Value::Matrix(2, {2, 4, 0, 4})},
	});
}

TEST(InterpreterBuiltins, VectorRelations)
{
	Check({
	    {"lessThan", {Value::Floats({1, 2}), Value::Floats({2, 2})}, Value::Bools({true, false})},
	    {"greaterThanEqual", {Value::Ints({1, 3}), Value::Ints({2, 3})}, Value::Bools({false, true})},
	    {"equal", {Value::Bools({true, false}), Value::Bools({true, true})}, Value::Bools({true, false})},
	    {"notEqual", {Value::Floats({kNan, 1}), Value::Floats({kNan, 1})}, Value::Bools({true, false})},
	    {"any", {Value::Bools({false, true})}, Value::Bool(true)},
	    {"all", {Value::Bools({false, true})}, Value::Bool(false)},
	    {"not", {Value::Bools({false, true})}, Value::Bools({true, false})},
	});
}

TEST(InterpreterBuiltins, Textures)
{
	// 2 x 2 texels, x to the right: 0 1 / 2 3 in the red channel.
	QLImage image;
	image.width = image.height = 2;
	for (float red : {0.0f, 1.0f, 2.0f, 3.0f})
		image.texels.push_back(Vector4f(red, 0, 0, 1));
	QLImage linear = image;
	linear.bilinear = true;
	QLImage cube;
	cube.width = cube.height = 1;
	cube.depth = 6;
	cube.cube = true;
	for (float face : {0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f})
		cube.texels.push_back(Vector4f(face, 0, 0, 0));
	Machine machine;
	machine.images = {{nullptr, image}, {nullptr, linear}, {nullptr, cube}};
	Value nearest = Value::Int(0), bilinear = Value::Int(1), cubeMap = Value::Int(2), none = Value::Int(7);
	auto red = [](float r, float a = 1) { return Value::Floats({r, 0, 0, a}); };
	std::vector<Case> cases = {
	    {"texture", {nearest, Value::Floats({0.75f, 0.25f})}, red(1)},
	    {"texture2D", {nearest, Value::Floats({0.25f, 0.75f})}, red(2)},
	    {"texture", {nearest, Value::Floats({-0.25f, 1.75f})}, red(3)}, // repeats
	    {"texture", {bilinear, Value::Floats({0.5f, 0.5f})}, red(1.5f)},
	    {"texture", {bilinear, Value::Floats({0.25f, 0.5f})}, red(1)},
	    {"textureLod", {bilinear, Value::Floats({0.5f, 0.25f}), Value::Float(3)}, red(0.5f)},
	    {"texture", {none, Value::Floats({0.5f, 0.5f})}, Value::Floats({0, 0, 0, 0})},
	    {"textureCube", {cubeMap, Value::Floats({-2, 1, 0.5f})}, red(1, 0)},
	    {"texture", {cubeMap, Value::Floats({0, -1, 0})}, red(3, 0)},
	    {"texture", {cubeMap, Value::Floats({0.1f, 0.2f, -3})}, red(5, 0)},
	    {"textureSize", {nearest}, Value::Ints({2, 2, 1})},
	    {"textureSize", {none, Value::Int(0)}, Value::Ints({0, 0, 0})},
	};
	for (const Case& c : cases)
		EXPECT_EQ("", Near(Call(machine, c.name, c.args), c.expected)) << c.name;
}

TEST(InterpreterBuiltins, RayTracing)
{
	QLRunResults results;
	Machine machine;
	machine.results = &results;
	machine.shadow = [](const Vector3f&, const Vector3f& direction, float)
	{ return direction.y > 0 ? 0.0f : 1.0f; };
	Value origin = Value::Floats({1, 2, 3}), up = Value::Floats({0, 1, 0});
	Call(machine, "accumulate", {Value::Int(2), Value::Floats({1, 2, 3})});
	Call(machine, "accumulate", {Value::Int(2), Value::Floats({0.5f, 0, 0})});
	Call(machine, "accumulate", {Value::Int(0), Value::Float(4)});
	Call(machine, "emitRay", {Value::Int(1), origin, up});
	Call(machine, "emitRay", {Value::Int(3), origin, up, Value::Floats({0.5f, 0.5f, 0})});
	EXPECT_EQ("", Near(Call(machine, "traceShadow", {origin, up, Value::Float(10)}), Value::Float(0)));
	EXPECT_EQ("", Near(Call(machine, "dFdx", {Value::Floats({3, 4})}), Value::Floats({0, 0})));

	EXPECT_EQ(Vector4f(1.5f, 2, 3, 0), results.accumulated[2]);
	EXPECT_EQ(Vector4f(4, 0, 0, 0), results.accumulated[0]);
	ASSERT_EQ(2u, results.rays.size());
	EXPECT_EQ(Vector3f(1, 1, 1), results.rays[0].contribution);
	EXPECT_EQ(3, results.rays[1].rayClass);
	EXPECT_EQ(Vector3f(0.5f, 0.5f, 0), results.rays[1].contribution);
	ASSERT_EQ(1u, results.shadows.size());
	EXPECT_EQ(10.0f, results.shadows[0].maxDistance);

	// Without a shadow function everything is lit; random() repeats from its seed and stays in [0, 1).
	Interpreter interpreter;
	EXPECT_EQ(1.0f, Call(interpreter.GetMachine(), "traceShadow", {origin, up, Value::Float(1)}).s[0].f);
	auto draw = [&](uint64_t seed)
	{
		interpreter.SetSeed(seed);
		std::vector<float> numbers;
		for (int i = 0; i < 1000; ++i)
			numbers.push_back(Call(interpreter.GetMachine(), "random", {}).s[0].f);
		return numbers;
	};
	std::vector<float> first = draw(7);
	EXPECT_EQ(first, draw(7));
	EXPECT_NE(first, draw(8));
	float sum = 0;
	for (float x : first)
	{
		EXPECT_TRUE(x >= 0.0f && x < 1.0f) << x;
		sum += x;
	}
	EXPECT_NEAR(0.5, sum / 1000, 0.05);
}

} // namespace
