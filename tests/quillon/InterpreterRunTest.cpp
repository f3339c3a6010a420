#include "QlslTestSupport.h"
#include "quillon/Interpreter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

using namespace Tarsel;

namespace
{

class InterpreterRun : public ::testing::Test
{
protected:
	// Links one ray shader per text and runs it; the test fails when anything does not compile or link.
	QLRunResults Run(const std::vector<std::string>& texts, int stage = IQLShader::kType_Ray)
	{
		for (const std::string& text : texts)
		{
			IQLShader* shader = nullptr;
			std::vector<std::string> errors = QlslTest::Compile(context, stage, text, &shader);
			EXPECT_TRUE(errors.empty()) << errors.front();
			program->AttachShader(shader);
		}
		std::vector<std::string> errors;
		EXPECT_TRUE(program->Link(errors)) << (errors.empty() ? "" : errors.front());
		QLRunResults results;
		interpreter.Run(program, stage, &primitive, inputs, results);
		return results;
	}
	// The rgb accumulated at index 0 by a main that computes it.
	Vector4f Accumulated(const std::string& body, const std::string& globals = "")
	{
		QLRunResults results = Run({globals + "\nvoid main() {\n" + body + "\n}\n"});
		EXPECT_TRUE(results.ok) << results.error;
		return results.accumulated[0];
	}

	ReferenceContext context;
	IQLProgram* program = context.CreateProgram();
	ReferencePrimitive primitive{7};
	Interpreter interpreter;
	QLRunInputs inputs;
};

struct ProgramCase
{
	const char* what;
	const char* globals;
	const char* body; // accumulates its answer at index 0
	Vector4f expected;
};

TEST_F(InterpreterRun, Semantics)
{
	const std::vector<ProgramCase> cases = {
	    {"mat3(m4) keeps the upper-left, columns stay columns", "",
	     "mat4 m4 = mat4(0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, 11.0, 12.0, 13.0, 14.0, "
	     "15.0);"
	     "mat3 m3 = mat3(m4); accumulate(0, vec4(m3[1], m3[2][0]));",
	     Vector4f(4, 5, 6, 8)},
	    {"M * v against v * M", "",
	     "mat2 m = mat2(1.0, 2.0, 3.0, 4.0); accumulate(0, vec4(m * vec2(1.0, 1.0), vec2(1.0, 1.0) * m));",
	     Vector4f(4, 6, 3, 7)},
	    {"integer / and % with negatives and zero", "",
	     "int zero = 0; accumulate(0, vec4(float(-7 / 2), float(-7 % 3), float(5 / zero), float(5 % zero)));",
	     Vector4f(-3, -1, 0, 0)},
	    {"swizzles as l-values", "",
	     "vec4 v = vec4(0.0); v.wx = vec2(1.0, 2.0); v.y += 3.0; v.zyx.x = 9.0; accumulate(0, v);",
	     Vector4f(2, 3, 9, 1)},
	    {"matrix columns and elements as l-values", "",
	     "mat2 m = mat2(0.0); m[1] = vec2(5.0, 6.0); m[0][1] = 7.0; m[1].y *= 2.0;"
	     "accumulate(0, vec4(m[0], m[1]));",
	     Vector4f(0, 7, 5, 12)},
	    {"short-circuit && and ||, ?: evaluates one side", "",
	     "int n = 0; bool b = false && (n++ > 0); b = true || (n++ > 0); b = (n++ == 0) && (n++ == 1);"
	     "float f = b ? float(n++) : float(n += 10); accumulate(0, vec4(float(n), f, b ? 1.0 : 0.0, 0.0));",
	     Vector4f(3, 2, 1, 0)},
	    {"++ and -- before and after", "",
	     "int i = 0; int j = i++ + ++i; float f = 1.5; f--; accumulate(0, vec4(float(i), float(j), f, 0.0));",
	     Vector4f(2, 2, 0.5f, 0)},
	    {"out and inout copy in and out",
	     "void f(in float a, out float b, inout vec2 c) { b = a * 2.0; c.x += a; a = 0.0; }",
	     "float a = 3.0; float b = 7.0; vec2 c = vec2(1.0, 1.0); f(a, b, c); accumulate(0, vec4(a, b, c));",
	     Vector4f(3, 6, 4, 1)},
	    {"operands run left to right: an out argument set on the left is read on the right",
	     "float set(out float x) { x = 2.0; return 3.0; }",
	     "float x = 0.0; float r = set(x) * x; float y = 0.0; float l = y * set(y); accumulate(0, vec4(r, l, "
	     "0.0, 0.0));",
	     Vector4f(6, 0, 0, 0)},
	    {"out argument through a swizzle and an array element", "void g(out vec2 r) { r = vec2(1.0, 2.0); }",
	     "vec4 v = vec4(0.0); g(v.wy); vec2 arr[2]; g(arr[1]); accumulate(0, vec4(v.yw, arr[1]));",
	     Vector4f(2, 1, 1, 2)},
	    {"nested calls of one function keep their parameters apart",
	     "float h(float x, float y) { return x - y; }",
	     "accumulate(0, vec4(h(10.0, h(3.0, 1.0)), h(h(3.0, 1.0), 10.0), 0.0, 0.0));", Vector4f(8, -8, 0, 0)},
	    {"loops with break and continue", "",
	     "float s = 0.0; for (int i = 0; i < 100; i++) { if (i % 2 == 0) continue; if (i > 9) break; s += "
	     "float(i); }"
	     "int k = 0; while (true) { if (++k == 4) break; } int d = 10; do { d--; } while (d > 20);"
	     "accumulate(0, vec4(s, float(k), float(d), 0.0));",
	     Vector4f(25, 4, 9, 0)},
	    {"return leaves nested loops",
	     "int first(int n) { for (int i = 0; i < n; i++) { while (true) { return i + 5; } } return -1; }",
	     "accumulate(0, vec4(float(first(3)), float(first(0)), 0.0, 0.0));", Vector4f(5, -1, 0, 0)},
	    {"structs and arrays copy by value and compare", "struct S { float x; vec2 y; };",
	     "S a = S(1.0, vec2(2.0, 3.0)); S b = a; b.y.x = 5.0; float p[3]; p[1] = 4.0; float q[3]; q = p; "
	     "q[1] = 1.0;"
	     "accumulate(0, vec4(a.y.x, b.y.x, p[1], (a == b ? 1.0 : 0.0) + (a == a ? 2.0 : 0.0) + (p == p ? 4.0 "
	     ": 0.0)));",
	     Vector4f(2, 5, 4, 6)},
	    {"int arguments meet float parameters", "float twice(float x) { return 2.0 * x; }",
	     "accumulate(0, vec4(twice(3), clamp(5, 0.0, 1.0), max(vec2(1.0, 4.0), 2.0)));",
	     Vector4f(6, 1, 2, 4)},
	    {"globals initialised in order, constants folded",
	     "const float k = 2.0; float g = k * 3.0; int bits = 0xff;",
	     "g += 1.0; accumulate(0, vec4(g, float(bits >> 4), float(-bits), k));", Vector4f(7, 15, -255, 2)},
	    {"conversions by constructor", "",
	     "accumulate(0, vec4(float(int(-2.7)), float(bool(0.5)), float(ivec2(bvec2(true, false)).x), "
	     "float(int(true))));",
	     Vector4f(-2, 1, 1, 1)},
	    {"normalize of a zero vector gives NaN, not a crash", "",
	     "vec3 n = normalize(vec3(0.0)); accumulate(0, vec4(isnan(n.x) ? 1.0 : 0.0, mod(-1.0, 3.0), 0.0, "
	     "0.0));",
	     Vector4f(1, 2, 0, 0)},
	    {"accumulate sums", "",
	     "accumulate(0, 1.0); accumulate(0, vec2(1.0, 2.0)); accumulate(0, vec4(1.0));",
	     Vector4f(3, 3, 1, 1)},
	};
	for (const ProgramCase& c : cases)
	{
		ReferenceContext local;
		IQLShader* shader = nullptr;
		std::string text = std::string(c.globals) + "\nvoid main() {\n" + c.body + "\n}\n";
		std::vector<std::string> errors = QlslTest::Compile(local, IQLShader::kType_Ray, text, &shader);
		ASSERT_TRUE(errors.empty()) << c.what << ": " << errors.front();
		IQLProgram* linked = local.CreateProgram();
		linked->AttachShader(shader);
		ASSERT_TRUE(linked->Link(errors)) << c.what;
		QLRunResults results;
		EXPECT_TRUE(interpreter.Run(linked, IQLShader::kType_Ray, nullptr, inputs, results))
		    << c.what << ": " << results.error;
		EXPECT_EQ(c.expected, results.accumulated[0]) << c.what;
	}
}

TEST_F(InterpreterRun, Failures)
{
	struct Case
	{
		const char* body;
		const char* error;
	};
	const Case cases[] = {
	    {"while (true) {}", "line 2: step budget of 10000 exceeded"},
	    {"for (;;) ;", "step budget"},
	    {"float a[3]; int i = 3; a[i] = 1.0;", "line 2: index 3 out of range for 'float[3]' of 3"},
	    {"vec3 v; int i = -1; float f = v[i];", "index -1 out of range"},
	};
	interpreter.SetStepBudget(10000);
	for (const Case& c : cases)
	{
		ReferenceContext local;
		IQLShader* shader = nullptr;
		QlslTest::Compile(local, IQLShader::kType_Ray, std::string("void main() {\n") + c.body + "\n}\n",
		                  &shader);
		IQLProgram* linked = local.CreateProgram();
		linked->AttachShader(shader);
		std::vector<std::string> errors;
		ASSERT_TRUE(linked->Link(errors)) << c.body;
		QLRunResults results;
		EXPECT_FALSE(interpreter.Run(linked, IQLShader::kType_Ray, nullptr, inputs, results));
		EXPECT_NE(std::string::npos, results.error.find(c.error)) << results.error;
		EXPECT_FALSE(results.ok);
	}

	QLRunResults results;
	EXPECT_FALSE(interpreter.Run(program, IQLShader::kType_Ray, nullptr, inputs, results));
	EXPECT_EQ("the program is not a linked reference program", results.error);
	inputs.variables["nothing"] = {1.0};
	Run({"void main() {}"});
	EXPECT_FALSE(interpreter.Run(program, IQLShader::kType_Ray, nullptr, inputs, results));
	EXPECT_EQ("no global named 'nothing' in the ray stage", results.error);
	EXPECT_FALSE(interpreter.Run(program, IQLShader::kType_Vertex, nullptr, inputs, results));
	EXPECT_EQ("the program has no vertex stage", results.error);
}

TEST_F(InterpreterRun, UniformsBlocksAndTexturesFromThePrimitive)
{
	// The host writes matrices row by row: m(0, 1) = 2 is row 0, column 1.
	Matrix33f m;
	for (int i = 0; i < 9; ++i)
		m.m[i] = float(i + 1);
	float weights[] = {0.5f, 1.5f, 2.5f};
	QLImage image;
	image.width = image.height = 1;
	image.texels = {Vector4f(0.25f, 0.5f, 0.75f, 1)};
	int textureObject = 0;
	QLtexture* texture = reinterpret_cast<QLtexture*>(&textureObject);
	interpreter.RegisterImage(texture, image);

	const std::string text =
	    "uniform vec3 color; uniform mat3 m; uniform bool flag; uniform sampler2D tex;"
	    "uniform sampler2D unset;\n"
	    "uniformblock W { float a[1]; };\n"
	    "void main() {\n"
	    "  accumulate(0, vec4(color, flag ? 1.0 : 0.0));\n"
	    "  accumulate(1, vec4(m[0], m[1][2]));\n"
	    "  accumulate(2, vec4(W.a[0], W.a[2], texture(tex, vec2(0.5)).z, texture(unset, vec2(0.5)).w));\n"
	    "  accumulate(3, vec2(textureSize(tex, 0)));\n"
	    "}\n";
	IQLShader* shader = nullptr;
	ASSERT_TRUE(QlslTest::Compile(context, IQLShader::kType_Ray, text, &shader).empty());
	program->AttachShader(shader);
	std::vector<std::string> errors;
	ASSERT_TRUE(program->Link(errors));
	IQLBuffer* buffer = context.CreateBuffer();
	buffer->Storage(weights, sizeof(weights));
	qlUseProgram(program);
	Vector3f color(1, 2, 3);
	primitive.SetUniformArray("color", program->GetUniformLocation("color"), 1, &color);
	primitive.SetUniformArray("m", program->GetUniformLocation("m"), 1, &m);
	primitive.SetUniform("flag", program->GetUniformLocation("flag"), 5);
	primitive.SetUniformArray("tex", program->GetUniformLocation("tex"), 1, &texture);
	primitive.SetUniformBlock("W", program->GetUniformBlockLocation("W"), buffer);
	qlUseProgram(static_cast<IQLProgram*>(nullptr));

	QLRunResults results;
	ASSERT_TRUE(interpreter.Run(program, IQLShader::kType_Ray, &primitive, inputs, results)) << results.error;
	EXPECT_EQ(Vector4f(1, 2, 3, 1), results.accumulated[0]);
	EXPECT_EQ(Vector4f(1, 4, 7, 8), results.accumulated[1]);
	EXPECT_EQ(Vector4f(0.5f, 2.5f, 0.75f, 0), results.accumulated[2]);
	EXPECT_EQ(Vector4f(1, 1, 0, 0), results.accumulated[3]);

	// Overrides by name win over the primitive; reading past the bound buffer is an error.
	inputs.variables["color"] = {4, 5, 6};
	ASSERT_TRUE(interpreter.Run(program, IQLShader::kType_Ray, &primitive, inputs, results));
	EXPECT_EQ(Vector4f(4, 5, 6, 1), results.accumulated[0]);
	float one = 1.0f;
	buffer->Respecify(&one, sizeof(one), false);
	EXPECT_FALSE(interpreter.Run(program, IQLShader::kType_Ray, &primitive, inputs, results));
	EXPECT_NE(std::string::npos, results.error.find("index 2 out of range")) << results.error;
}

TEST_F(InterpreterRun, RayInputsAndOutputs)
{
	inputs.rayOrigin = Vector3f(1, 2, 3);
	inputs.rayClass = 2;
	inputs.transform(0, 3) = 5.0f; // a translation by x = 5 as the host writes it
	interpreter.SetShadowFunction([](const Vector3f& origin, const Vector3f&, float)
	                              { return origin.x > 0 ? 0.0f : 1.0f; });
	QLRunResults results = Run({"float scale;\n"
	                            "void setup() { scale = 2.0; }\n"
	                            "void main() {\n"
	                            "  vec4 moved = ql_PrimitiveTransformMatrix * vec4(ql_RayOrigin, 1.0);\n"
	                            "  accumulate(0, moved * scale);\n"
	                            "  ql_OutputRayCount[ql_RayClass] = 3;\n"
	                            "  float lit = traceShadow(ql_RayOrigin, ql_RayDirection, 10.0);\n"
	                            "  emitRay(1, ql_RayOrigin, vec3(0.0, 1.0, 0.0), vec3(lit));\n"
	                            "  accumulate(1, random());\n"
	                            "}\n"});
	ASSERT_TRUE(results.ok) << results.error;
	EXPECT_EQ(Vector4f(12, 4, 6, 2), results.accumulated[0]);
	EXPECT_EQ((std::vector<int>{0, 0, 3, 0, 0, 0, 0, 0}), results.outputRayCount);
	ASSERT_EQ(1u, results.rays.size());
	EXPECT_EQ(Vector3f(0, 0, 0), results.rays[0].contribution);
	ASSERT_EQ(1u, results.shadows.size());
	EXPECT_EQ(0.0f, results.shadows[0].answer);
	EXPECT_GT(results.steps, 5u);

	// The same seed draws the same numbers; the next run continues the sequence.
	interpreter.SetSeed(3);
	QLRunResults first, second, again;
	interpreter.Run(program, IQLShader::kType_Ray, &primitive, inputs, first);
	interpreter.Run(program, IQLShader::kType_Ray, &primitive, inputs, second);
	interpreter.SetSeed(3);
	interpreter.Run(program, IQLShader::kType_Ray, &primitive, inputs, again);
	EXPECT_EQ(first.accumulated[1], again.accumulated[1]);
	EXPECT_NE(first.accumulated[1], second.accumulated[1]);
}

TEST_F(InterpreterRun, TextsOfOneStageShareFunctionsAndGlobals)
{
	QLRunResults results =
	    Run({"rayattribute float weight; float Graph_Shade(vec3 c);\n"
	         "void main() { weight = 0.5; accumulate(0, vec4(Graph_Shade(vec3(2.0)), weight, 0.0, 0.0)); }\n",
	         "rayattribute float weight;\n"
	         "float Graph_Shade(vec3 c) { weight = weight * 4.0; return c.x * weight; }\n"});
	ASSERT_TRUE(results.ok) << results.error;
	EXPECT_EQ(Vector4f(4, 2, 0, 0), results.accumulated[0]);
}

TEST_F(InterpreterRun, VertexProgram)
{
	inputs.transform(1, 3) = 1.0f;
	inputs.variables["a_position"] = {1, 2, 3};
	QLRunResults results =
	    Run({"attribute vec3 a_position; varying vec3 position; transformed varying vec2 uv;\n"
	         "void main() { position = a_position * 2.0; uv = a_position.xy;\n"
	         "  ql_Position = ql_PrimitiveTransformMatrix * vec4(a_position, 1.0); }\n"},
	        IQLShader::kType_Vertex);
	ASSERT_TRUE(results.ok) << results.error;
	EXPECT_EQ(Vector4f(1, 3, 3, 1), results.position);
	EXPECT_EQ((QLComponents{2, 4, 6}), results.outputs["position"]);
	EXPECT_EQ((QLComponents{1, 2}), results.outputs["uv"]);
}

} // namespace

namespace
{

// Every valid program of the device's corpus runs: nothing the compiler accepts trips the evaluator.
TEST(InterpreterCorpus, ValidProgramsRun)
{
	int ran = 0;
	for (const auto& entry :
	     std::filesystem::directory_iterator(std::string(TARSEL_TEST_DATA_DIR) + "/qlsl/corpus"))
	{
		std::string name = entry.path().filename().string();
		std::string text = QlslTest::ReadFixture("corpus/" + name);
		if (name.rfind("valid_", 0) != 0 || text.find("//== ") != std::string::npos)
			continue;
		ReferenceContext context;
		IQLShader* shader = nullptr;
		ASSERT_TRUE(QlslTest::Compile(context, IQLShader::kType_Ray, text, &shader).empty()) << name;
		IQLProgram* program = context.CreateProgram();
		program->AttachShader(shader);
		std::vector<std::string> errors;
		ASSERT_TRUE(program->Link(errors)) << name;
		Interpreter interpreter;
		QLRunResults results;
		// Block arrays read past a buffer nobody bound are the one expected stop.
		bool ok = interpreter.Run(program, IQLShader::kType_Ray, nullptr, QLRunInputs(), results);
		EXPECT_TRUE(ok || results.error.find("out of range") != std::string::npos)
		    << name << ": " << results.error;
		++ran;
	}
	EXPECT_GT(ran, 20);
}

} // namespace
