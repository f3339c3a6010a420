#include "QlslTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Tarsel;
using namespace QlslTest;

namespace
{

const int kRay = IQLShader::kType_Ray;
const int kVertex = IQLShader::kType_Vertex;
const int kFrame = IQLShader::kType_Frame;
const int kPrefix = IQLShader::kType_PrefixRay;

struct Fixture
{
	const char* file;
	int type;
};

const Fixture kFixtures[] = {
    {"surface_root.qlray", kRay},      {"surface_graph.qlray", kRay},      {"surface.qlvert", kVertex},
    {"coord.qlvert", kVertex},         {"frame_root.qlframe", kFrame},     {"frame_graph.qlframe", kFrame},
    {"prefix_root.qlprefix", kPrefix}, {"prefix_graph.qlprefix", kPrefix},
};

// Wraps statements into a ray text with a main, so that each case is one line of interest.
std::string Body(const std::string& statements, const std::string& globals = "")
{
	return globals + "void main()\n{\n" + statements + "\n}\n";
}

// The line of a statement given to Body, counting the globals' lines.
int BodyLine(const std::string& globals, int statementLine)
{
	return LineOf(globals + "x", "x") + 1 + statementLine;
}

} // namespace

TEST(QlslCompile, PrinterShapedFixturesCompile)
{
	for (const Fixture& fixture : kFixtures)
	{
		std::string text = ReadFixture(fixture.file);
		ASSERT_FALSE(text.empty()) << fixture.file;
		EXPECT_EQ("", FirstError(fixture.type, text)) << fixture.file;
	}
}

// One wrong token anywhere must fail on the line that holds it.
TEST(QlslCompile, SingleMistakesFailOnTheirLine)
{
	struct Mistake
	{
		const char* file;
		int type;
		const char* original;
		const char* changed;
		const char* message;
	};
	const Mistake kMistakes[] = {
	    {"surface.qlvert", kVertex, "Normal = a_Normal;", "Normal = a_Normol;",
	     "'a_Normol' : undeclared identifier"},
	    {"surface.qlvert", kVertex, "Normal = a_Normal;", "Normal = a_Normal", "expected ';'"},
	    {"surface.qlvert", kVertex, "Normal = a_Normal;", "Normal = a_Normal; helper();",
	     "'helper' : no matching"},
	    {"surface_root.qlray", kRay, "\t_ctor_instance_k1f();", "\t_ctor_instanse_k1f();",
	     "'_ctor_instanse_k1f'"},
	    {"surface_root.qlray", kRay,
	     "ql_OutputRayCount[3] =", "ql_OutputRayCounts[3] =", "undeclared identifier"},
	    {"surface_root.qlray", kRay, "\tWood_Init_k2a();", "\tWood_Init_k2a()", "expected ';'"},
	    {"surface_graph.qlray", kRay, "weights_k1f_k2c.a[i]", "weights_k1f_k2c.b[i]", "'b' : no such field"},
	    {"surface_graph.qlray", kRay, "total+= w;", "totl+= w;", "'totl' : undeclared identifier"},
	    {"surface_graph.qlray", kRay, "\t\tn++;", "\t\tn++", "expected ';'"},
	    {"surface_graph.qlray", kRay, "Position_WorldSpace.xy", "Position_WorldSpace.xq", "invalid swizzle"},
	    {"surface_graph.qlray", kRay, "(sum*float(lit))", "(sum*floatify(lit))", "'floatify' : no matching"},
	    {"surface_graph.qlray", kRay, "vec3 sum = vec3", "vec3 sum = vec3 vec3", "syntax error"},
	    {"frame_graph.qlframe", kFrame, "emitRay(0,", "emitRays(0,", "'emitRays'"},
	    {"frame_root.qlframe", kFrame, "void Camera_Init_k31();", "void Camera_Init_k31()", "expected ';'"},
	    {"prefix_graph.qlprefix", kPrefix, "ql_RayDirection", "ql_RayDirections", "undeclared identifier"},
	};
	for (const Mistake& mistake : kMistakes)
	{
		std::string text = ReadFixture(mistake.file);
		std::string broken = Replace(text, mistake.original, mistake.changed);
		std::string error = FirstError(mistake.type, broken);
		SCOPED_TRACE(std::string(mistake.file) + ": " + mistake.changed);
		EXPECT_EQ(0u, error.find(LinePrefix(LineOf(text, mistake.original)))) << error;
		EXPECT_NE(std::string::npos, error.find(mistake.message)) << error;
	}
}

TEST(QlslCompile, ScopesFollowBlocksLoopsAndFunctions)
{
	EXPECT_EQ(
	    "",
	    FirstError(kRay, Body("int a = 1;\n{ int a = 2; a++; }\nfor (int i = 0; i < a; ++i) { a += i; }")));
	EXPECT_EQ(LinePrefix(BodyLine("", 2)) + "'b' : undeclared identifier",
	          FirstError(kRay, Body("{ int b = 1; }\nb = 2;")));
	EXPECT_EQ(LinePrefix(BodyLine("", 2)) + "'i' : undeclared identifier",
	          FirstError(kRay, Body("for (int i = 0; i < 2; ++i) ;\ni = 3;")));
	EXPECT_EQ(LinePrefix(BodyLine("", 1)) + "'c' : undeclared identifier",
	          FirstError(kRay, Body("int c = c;")));
	EXPECT_EQ(LinePrefix(BodyLine("", 2)) + "'d' : redefinition", FirstError(kRay, Body("int d;\nfloat d;")));
	// Parameters live in the body's own scope.
	EXPECT_NE("", FirstError(kRay, "void f(int p)\n{\n\tint p;\n}\n"));
	EXPECT_EQ("", FirstError(kRay, "float g;\nvoid f(float g)\n{\n\tg = 1.0;\n}\n"));
	// Functions and globals must be declared before use.
	EXPECT_EQ(LinePrefix(1) + "'later' : no matching function declared",
	          FirstError(kRay, "void main() { later(); }\nvoid later() {}\n"));
	EXPECT_EQ(LinePrefix(1) + "'late' : undeclared identifier",
	          FirstError(kRay, "void main() { late = 1; }\nint late;\n"));
}

TEST(QlslCompile, AggregatesBlocksAndSwizzles)
{
	const std::string globals =
	    "struct S\n{\n\tvec3 v;\n\tvec2 f;\n};\nuniformblock B\n{\n\tvec4 a[1];\n};\n";
	EXPECT_EQ("",
	          FirstError(kRay, Body("S s = S(vec3(1.0), vec2(2.0));\nfloat x = s.f[1] + s.v.z + B.a[0].w;\n"
	                                "vec2 p = B.a[0].xy;\nvec4 q = vec4(p.yx, s.v.rg);",
	                                globals)));
	EXPECT_NE(std::string::npos, FirstError(kRay, Body("S s = S(vec3(1.0));", globals)).find("needs 2"));
	EXPECT_NE(std::string::npos,
	          FirstError(kRay, Body("float x = B.b[0].x;", globals)).find("'b' : no such field"));
	EXPECT_NE(std::string::npos, FirstError(kRay, Body("B b;", globals)).find("not a type"));
	EXPECT_NE(std::string::npos, FirstError(kRay, Body("vec3 v; float w = v.w;")).find("invalid swizzle"));
	EXPECT_NE(std::string::npos, FirstError(kRay, Body("vec3 v; vec2 w = v.xg;")).find("invalid swizzle"));
	EXPECT_NE(std::string::npos,
	          FirstError(kRay, Body("float f; float g = f.x;")).find("requires a structure"));
	EXPECT_NE(std::string::npos, FirstError(kRay, Body("float f; float g = f[0];")).find("subscripted"));
	EXPECT_NE(std::string::npos, FirstError(kRay, Body("Unknown u;")).find("'Unknown' : unknown type"));
}

TEST(QlslCompile, BuiltinsAndQualifiersDependOnTheStage)
{
	EXPECT_EQ("", FirstError(kVertex, Body("ql_Position = vec4(0.0);")));
	EXPECT_NE(std::string::npos,
	          FirstError(kRay, Body("vec4 p = ql_Position;")).find("not available in ray"));
	EXPECT_NE(std::string::npos, FirstError(kVertex, Body("accumulate(0, vec3(1.0));"))
	                                 .find("'accumulate' : not available in vertex"));
	EXPECT_EQ("", FirstError(kFrame, Body("ql_OutputRayCount = 4;")));
	EXPECT_NE("", FirstError(kFrame, Body("ql_OutputRayCount[0] = 4;")));
	EXPECT_EQ("", FirstError(kPrefix, Body("ql_OutputRayCount[7] = 4;")));
	EXPECT_NE(std::string::npos,
	          FirstError(kRay, Body("float x = pow(2.0);")).find("wrong number of arguments"));

	EXPECT_NE(std::string::npos,
	          FirstError(kRay, "attribute vec3 a_P;\n").find("'attribute' : not allowed in ray"));
	EXPECT_NE(std::string::npos, FirstError(kFrame, "varying vec3 N;\n").find("not allowed in frame"));
	EXPECT_NE(std::string::npos, FirstError(kVertex, "rayattribute int d;\n").find("not allowed in vertex"));
	EXPECT_EQ("", FirstError(kVertex, "transformed invariant varying vec4 P;\nmutable uniform float m;\n"
	                                  "static const float k = 1.0;\n"));
	EXPECT_NE(std::string::npos, FirstError(kRay, Body("uniform float u;")).find("not allowed on local"));
	EXPECT_NE("", FirstError(kRay, "invariant varying vec3 N;\n"));
	EXPECT_NE("", FirstError(kRay, "mutable float m;\n"));
}

TEST(QlslCompile, FunctionsAndControlFlowAreChecked)
{
	EXPECT_EQ("",
	          FirstError(kRay, "float f(float x);\nfloat f(float x)\n{\n\treturn (x*2.0);\n}\n"
	                           "float f(vec2 v) { return v.x; }\nvoid main() { f(1.0); f(vec2(1.0)); }\n"));
	EXPECT_NE(std::string::npos, FirstError(kRay, "void f() {}\nvoid f() {}\n")
	                                 .find(LinePrefix(2) + "'f' : function already has a body"));
	EXPECT_NE(std::string::npos,
	          FirstError(kRay, "void f();\nint f();\n").find("differ only in return type"));
	EXPECT_NE(std::string::npos,
	          FirstError(kRay, "void f(int a);\nvoid main() { f(); }\n").find("for 0 arguments"));
	EXPECT_NE(std::string::npos, FirstError(kRay, "int main() { return 0; }\n").find("void main()"));
	EXPECT_NE(std::string::npos, FirstError(kRay, Body("break;")).find("only allowed inside a loop"));
	EXPECT_EQ("", FirstError(kRay, Body("do { if (true) continue; } while(false);")));
	EXPECT_NE(std::string::npos, FirstError(kRay, Body("return 1;")).find("void function cannot return"));
	EXPECT_NE(std::string::npos, FirstError(kRay, "int f() { return; }\n").find("must return a value"));
	EXPECT_NE(std::string::npos, FirstError(kRay, "int x;\nvoid x() {}\n").find("redefinition"));
	EXPECT_NE(std::string::npos,
	          FirstError(kRay, Body("vec3 v = sampler2D(1);")).find("cannot be constructed"));
	// Conditions may declare; every assignment operator and the comma operator parse.
	EXPECT_EQ(
	    "", FirstError(kRay, Body("int a = 1;\nwhile (bool b = (a<3)) { a <<= 1; a |= 2; a ^= 1; a %= 7; }\n"
	                              "a = (a > 1) ? (a, 2) : -~a;\nbool c = (true ^^ false) || !(a != 2);")));
}

TEST(QlslCompile, LexicalErrorsNameTheirLine)
{
	EXPECT_EQ(LinePrefix(2) + "'@' : invalid character", FirstError(kRay, "int a;\nint @b;\n"));
	EXPECT_EQ(LinePrefix(1) + "'#' : invalid character", FirstError(kRay, "#version 100\n"));
	EXPECT_EQ(LinePrefix(2) + "unterminated comment", FirstError(kRay, "int a;\n/* open\n\n"));
	EXPECT_EQ(LinePrefix(1) + "'1.0e' : invalid number", FirstError(kRay, "float a = 1.0e;\n"));
	EXPECT_EQ(LinePrefix(1) + "'12ab' : invalid number", FirstError(kRay, "int a = 12ab;\n"));
	EXPECT_EQ("", FirstError(kRay, "/* a\n b */ float a = .5 + 1e-3 + 2.0f + 0x1F; // tail\n"));
	EXPECT_EQ("", FirstError(kRay, ""));
}

TEST(QlslCompile, ReportsEveryResolutionErrorButStopsAtSyntax)
{
	Tarsel::ReferenceContext context;
	std::vector<std::string> errors = Compile(context, kRay, Body("a = 1;\nb = 2;"));
	ASSERT_EQ(2u, errors.size());
	EXPECT_EQ(0u, errors[0].find(LinePrefix(BodyLine("", 1))));
	EXPECT_EQ(0u, errors[1].find(LinePrefix(BodyLine("", 2))));

	errors = Compile(context, kRay, Body("a = 1 1;\nb = 2;"));
	EXPECT_EQ(2u, errors.size()); // the undeclared 'a', then the syntax error ends the text

	std::string many;
	for (int i = 0; i < 50; ++i)
		many += "x" + std::to_string(i) + " = 1;\n";
	errors = Compile(context, kRay, Body(many));
	EXPECT_EQ(21u, errors.size());
	EXPECT_NE(std::string::npos, errors.back().find("too many errors"));
}

TEST(QlslCompile, DeepNestingIsRefusedNotOverflowed)
{
	const int depth = 100000;
	std::string parens = Body("float x = " + std::string(depth, '(') + "1.0" + std::string(depth, ')') + ";");
	EXPECT_NE(std::string::npos, FirstError(kRay, parens).find("nesting too deep"));
	std::string blocks = Body(std::string(depth, '{') + std::string(depth, '}'));
	EXPECT_NE(std::string::npos, FirstError(kRay, blocks).find("nesting too deep"));
	std::string minus;
	for (int i = 0; i < depth; ++i)
		minus += "- ";
	std::string unary = Body("float x = " + minus + "1.0;");
	EXPECT_NE(std::string::npos, FirstError(kRay, unary).find("nesting too deep"));
	std::string ifs;
	for (int i = 0; i < depth; ++i)
		ifs += "if (true) ";
	EXPECT_NE(std::string::npos, FirstError(kRay, Body(ifs + ";")).find("nesting too deep"));
	// What the printer emits for the deepest libraries: fully parenthesised sums and deep blocks.
	std::string sum = std::string(20000, '(') + "1.0";
	for (int i = 0; i < 20000; ++i)
		sum += "+1.0)";
	EXPECT_EQ("", FirstError(kRay, Body("float x = " + std::string(20000, '(') + "1.0" +
	                                    std::string(20000, ')') + ";\nfloat y = " + sum + ";")));
	EXPECT_EQ("", FirstError(kRay, Body(std::string(2000, '{') + "float z = 1.0;" + std::string(2000, '}'))));
	std::string elses = "int n = 0;\n";
	for (int i = 0; i < 2000; ++i)
		elses += "if ((n==" + std::to_string(i) + ")) { n++; } else ";
	EXPECT_EQ("", FirstError(kRay, Body(elses + "n = 0;")));
}

TEST(QlslCompile, FailedCompileKeepsTextAndDropsTheOldProgram)
{
	Tarsel::ReferenceContext context;
	IQLShader* shader = nullptr;
	ASSERT_TRUE(Compile(context, kRay, Body(""), &shader).empty());
	EXPECT_TRUE(shader->IsCompiled());
	std::vector<std::string> errors;
	EXPECT_FALSE(shader->SetString("void main() {", errors));
	EXPECT_FALSE(shader->IsCompiled());
	EXPECT_EQ("void main() {", shader->GetString());
	EXPECT_EQ(std::vector<std::string>{LinePrefix(1) + "syntax error: unexpected end of text, expected '}'"},
	          errors);
	EXPECT_EQ(nullptr, context.CreateShader(7));
}

// Forms that only the printer produces: the empty line before else, removed calls as comments followed
// by a block of their arguments, a bare ';' for an omitted accumulate, and its literal formats.
TEST(QlslCompile, PrinterEdgeFormsParse)
{
	const std::string text =
	    "float f(float x)\n{\n\treturn (x*2.0);\n}\n\n"
	    "void main()\n{\n\tint a = 0;\n\tint b;\n\tif ((a==0))\n\t\tb = 1;\n\n\telse\n\t\tb = 2;\n"
	    "\tif ((a>0))\n\t\t// optimizer removed call to empty function g\n"
	    "\t\t// emitting parameters of removed call as standalone expressions:\n"
	    "\t\t{\n\t\t\t(a+1);\n\t\t};\n"
	    "\t;\n\taccumulate(3, vec3(0.1000000000000000, 1.000000000000000, 1e+10));\n"
	    "\tfloat z = f(-0.0);\n}\n";
	EXPECT_EQ("", FirstError(kRay, text));
	EXPECT_EQ("", FirstError(kFrame, text));
	// An omitted call inside an expression leaves broken text behind, which must not pass.
	EXPECT_EQ(LinePrefix(BodyLine("", 2)) + "syntax error: unexpected ';', expected an expression",
	          FirstError(kRay, Body("float x = // optimizer removed call to empty function g\n;")));
}

TEST(QlslCompile, VertexCoordinateTransformsResolve)
{
	std::string text = ReadFixture("coord.qlvert");
	for (const char* matrix : {"ql_PrimitiveTransformMatrix", "ql_PrimitiveTransformMatrixInverseTranspose"})
	{
		std::string variant = Replace(text, "ql_PrimitiveTransformMatrix)", std::string(matrix) + ")");
		EXPECT_EQ("", FirstError(kVertex, variant)) << matrix;
	}
	EXPECT_NE("", FirstError(kVertex, Replace(text, "varying vec3 uv;", "varying vec3 uw;")));
	EXPECT_NE("", FirstError(kRay, text)); // attributes belong to vertex shaders
}

// Every statement and declaration terminator of the fixtures matters, and its loss is reported on its own
// line.
TEST(QlslCompile, EveryMissingTerminatorIsFoundOnItsLine)
{
	int checked = 0;
	for (const Fixture& fixture : kFixtures)
	{
		const std::string text = ReadFixture(fixture.file);
		for (size_t at = text.find(';'); at != std::string::npos; at = text.find(';', at + 1))
		{
			size_t lineStart = text.rfind('\n', at) + 1;
			std::string before = text.substr(lineStart, at - lineStart);
			bool comment = before.find("//") != std::string::npos;
			bool lone = before.find_first_not_of('\t') == std::string::npos;
			bool removedCallBlock = before.size() > 1 && before.back() == '}' && before[0] == '\t';
			size_t next = text.find_first_not_of(" \t\n", at + 1);
			bool followedByEmpty = next != std::string::npos && text[next] == ';';
			if (comment || lone || removedCallBlock || followedByEmpty)
				continue; // dropping these leaves valid text
			std::string broken = text.substr(0, at) + text.substr(at + 1);
			int line = 1 + int(std::count(text.begin(), text.begin() + long(at), '\n'));
			std::string error = FirstError(fixture.type, broken);
			EXPECT_EQ(0u, error.find(LinePrefix(line))) << fixture.file << " line " << line << ": " << error;
			++checked;
		}
	}
	EXPECT_GT(checked, 100);
}
