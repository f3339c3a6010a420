#include "GraphTestSupport.h"

#include "codegen/VisitorPrintTsl.h"

#include <cstdlib>

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kHooks = R"(
interface Surface
{
	void Init();
	void Shade();
	int GetRayCount(int rayClass);
}
class Hooks : Surface
{
	input float gain = 1.0;
	static void Nothing()
	{
	}
	static void Pass(int v)
	{
	}
	static void Over(float v)
	{
	}
	static void Over(vec3 v)
	{
		v = v * 2.0;
	}
	static float Orphan()
	{
		return 2.0;
	}
	static float Spare()
	{
		return Orphan();
	}
	void Init()
	{
	}
	void Touch()
	{
		int y = 2;
	}
	void Shade()
	{
		Init();
		int x = 1;
		Nothing();
		Pass(x + 1);
		Over(gain);
		Over(vec3(gain));
	}
	int GetRayCount(int rayClass)
	{
		return 0;
	}
}
)";

const char* const kRemoved = "// optimizer removed ";

class UnusedFunctionTest : public GraphTest
{
protected:
	~UnusedFunctionTest() override
	{
		for (IQLProgram* program : programs)
			context.DestroyProgram(program);
	}

	// Links the graph's program beside a root that calls the given void functions, as an effect's root
	// shader would; a function removed but still called anywhere fails here.
	void Link(IGraph* graph, const std::vector<std::string>& calls)
	{
		std::string text;
		for (const std::string& call : calls)
			text += "void " + call + "();\n";
		text += "void main()\n{\n";
		for (const std::string& call : calls)
			text += "\t" + call + "();\n";
		text += "}\n";
		IQLShader* root = context.CreateShader(graph->GetType());
		std::vector<std::string> errors;
		ASSERT_TRUE(root->SetString(text, errors)) << Messages(errors);
		IQLProgram* program = context.CreateProgram();
		programs.push_back(program);
		program->AttachShader(root);
		program->AttachShader(graph->GetQLShader());
		EXPECT_TRUE(program->Link(errors)) << Messages(errors) << "\n" << Text(graph);
	}
	static std::vector<std::string> Entries(IShader* shader, IGraph* graph)
	{
		return {shader->GetMethodNameMangled("Init"), shader->GetMethodNameMangled("Shade"),
		        graph->GetConstructorStatic(), graph->GetConstructor()};
	}

	// Two shaders of Hooks, the second referenced in the first one's graph, which is compiled.
	struct Referenced
	{
		IShader* root;
		IShader* other;
		IGraph* graph;
		IReferenceShader* reference;
	};
	Referenced CompileReferenced()
	{
		Load("Hooks.tsl", kHooks);
		Referenced referenced{Create("Hooks"), Create("Hooks"), nullptr, nullptr};
		referenced.graph = referenced.root->GetGraphSurface();
		referenced.reference = referenced.other->AcquireReference(referenced.graph);
		EXPECT_NE(referenced.reference, nullptr);
		if (referenced.reference)
			Compile(referenced.graph);
		return referenced;
	}

	std::vector<IQLProgram*> programs;
};

TEST_F(UnusedFunctionTest, EmptyAndUncalledFunctionsPrintAsCommentsAndTheProgramStillLinks)
{
	Load("Hooks.tsl", kHooks);
	IShader* shader = Create("Hooks");
	IGraph* graph = shader->GetGraphSurface();
	Compile(graph);
	const std::string text = Text(graph);
	const std::string init = shader->GetMethodNameMangled("Init");

	// The root's empty Init is an entry point: defined, declared and called as written.
	EXPECT_TRUE(Contains(text, "void " + init + "()\n{\n}\n")) << text;
	EXPECT_TRUE(Contains(text, "\n\t" + init + "();\n")) << text;
	EXPECT_FALSE(Contains(text, "function " + init)) << text;

	for (const char* part : {"// optimizer removed prototype for empty function Hooks_Nothing;\n",
	                         "// optimizer removed definition of empty function Hooks_Nothing\n",
	                         "\t// optimizer removed call to empty function Hooks_Nothing\n;\n",
	                         "\t// optimizer removed call to empty function Hooks_Pass\n"
	                         "\t// emitting parameters of removed call as standalone expressions:\n"
	                         "\t{\n\t\t(x+1);\n\t};\n",
	                         "// optimizer removed definition of never-called function Hooks_Spare\n",
	                         "// optimizer removed prototype for never-called function Hooks_Spare;\n",
	                         // One sweep: Orphan is called, if only from a function that goes.
	                         "float Hooks_Orphan()\n{\n"})
		EXPECT_TRUE(Contains(text, part)) << part << "\n" << text;
	// Overloads stay, the empty one included, and so do their calls.
	EXPECT_FALSE(Contains(text, "function Hooks_Over")) << text;
	EXPECT_TRUE(Contains(text, "void Hooks_Over(float v)\n{\n}\n")) << text;
	EXPECT_TRUE(Contains(text, "\tHooks_Over(gain_")) << text;
	Link(graph, Entries(shader, graph));
}

TEST_F(UnusedFunctionTest, MethodsOfAShaderThatIsNotTheRootGoUnderTheirMangledNames)
{
	const auto [root, other, graph, reference] = CompileReferenced();
	ASSERT_NE(reference, nullptr);
	const std::string text = Text(graph);
	EXPECT_TRUE(Contains(text, "// optimizer removed definition of never-called function " +
	                               other->GetMethodNameMangled("Shade") + "\n"))
	    << text;
	EXPECT_TRUE(Contains(text, "// optimizer removed definition of empty function " +
	                               other->GetMethodNameMangled("Init") + "\n"))
	    << text;
	// Every method of the root stays, since other graphs may call it: here another program calls Touch.
	EXPECT_TRUE(Contains(text, "void " + root->GetMethodNameMangled("Touch") + "()\n{"));
	std::vector<std::string> calls = Entries(root, graph);
	calls.push_back(root->GetMethodNameMangled("Touch"));
	Link(graph, calls);
	EXPECT_TRUE(reference->Release());
}

// A graph's program is printed from its shaders' own code, not from copies: what the pass marks for one
// graph must not show in another graph's program, nor in the next program of the same graph.
TEST_F(UnusedFunctionTest, MarksOfOneCompileStayOutOfEveryOtherProgram)
{
	const auto [root, other, graph, reference] = CompileReferenced();
	ASSERT_NE(reference, nullptr);
	const std::string shade = other->GetMethodNameMangled("Shade");
	ASSERT_TRUE(Contains(Text(graph), "never-called function " + shade + "\n")) << Text(graph);

	// In its own graph the other shader is the root: its Shade is an entry point there.
	IGraph* own = other->GetGraphSurface();
	Compile(own);
	EXPECT_TRUE(Contains(Text(own), "void " + shade + "()\n{")) << Text(own);
	EXPECT_FALSE(Contains(Text(own), "function " + shade)) << Text(own);
	Link(own, Entries(other, own));
	{
		ScopedVariable variable("TZR_DISABLE_EFFECTS_OPTIMIZATIONS", "1");
		Compile(graph);
		EXPECT_FALSE(Contains(Text(graph), kRemoved)) << Text(graph);
	}
	Module collected;
	ASSERT_TRUE(other->CollectShader(&collected));
	VisitorPrintTsl printer(nullptr, nullptr, false);
	ASSERT_TRUE(printer.Visit(&collected));
	EXPECT_FALSE(Contains(printer.result(), kRemoved)) << printer.result();
	EXPECT_TRUE(reference->Release());
}

TEST_F(UnusedFunctionTest, TheVariableSwitchesThePassOffOnlyWhenItReadsAsANonZeroNumber)
{
	Load("Hooks.tsl", kHooks);
	IGraph* graph = Create("Hooks")->GetGraphSurface();
	for (const char* value : {"1", "0", "abc", "12abc"})
	{
		ScopedVariable variable("TZR_DISABLE_EFFECTS_OPTIMIZATIONS", value);
		Compile(graph);
		EXPECT_EQ(Contains(Text(graph), kRemoved), std::atoi(value) == 0) << value;
	}
	// Read at every compile: unset again, the next compile optimises.
	Compile(graph);
	EXPECT_TRUE(Contains(Text(graph), kRemoved));
}

// Every shipped class that builds a graph on its own still compiles and links when optimised.
TEST_F(UnusedFunctionTest, ShippedShadersCompileAndLinkOptimised)
{
	ScopedVariable path("TARSEL_SHADER_PATH", TARSEL_SHADERS_DIR);
	for (const char* file :
	     {"Interfaces", "Sampling", "Textures", "Lights", "Surfaces", "Prefix", "Renderers"})
	{
		Result result;
		ASSERT_TRUE(mgr.AddLibrary(std::string(file) + ".tsl", &result))
		    << file << ": " << result.GetText() << Messages(console.GetAll());
	}
	int compiled = 0;
	const std::pair<const char*, IGraph* (IShader::*)()> shipped[] = {
	    {"Matte", &IShader::GetGraphSurface},         {"Glass", &IShader::GetGraphSurface},
	    {"DebugSurface", &IShader::GetGraphSurface},  {"PointLight", &IShader::GetGraphSurface},
	    {"SpotLight", &IShader::GetGraphSurface},     {"DirectionalLight", &IShader::GetGraphSurface},
	    {"DiskLight", &IShader::GetGraphSurface},     {"CheckerTexture", &IShader::GetGraphSurface},
	    {"NoiseTexture", &IShader::GetGraphSurface},  {"Sky", &IShader::GetGraphPrefix},
	    {"HeightFog", &IShader::GetGraphPrefix},      {"PinholeRenderer", &IShader::GetGraphFrame},
	    {"ThinLensRenderer", &IShader::GetGraphFrame}};
	for (const auto& [name, kind] : shipped)
	{
		IShader* shader = mgr.CreateShader(name, nullptr);
		if (shader == nullptr || !shader->IsComplete())
			continue;
		IGraph* graph = (shader->*kind)();
		Compile(graph);
		EXPECT_TRUE(Contains(Text(graph), kRemoved)) << name;
		Link(graph, {graph->GetConstructorStatic(), graph->GetConstructor()});
		++compiled;
		// Not given back: the manager's Shutdown must take shaders whose graphs reference classes and
		// interfaces of libraries that go before theirs.
	}
	// Classes with interface inputs wait for those; every other one compiles.
	EXPECT_GE(compiled, 9);
}

} // namespace
} // namespace Tarsel::Effects::Testing
