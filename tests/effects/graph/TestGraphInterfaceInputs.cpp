#include "GraphTestSupport.h"

#include "objects/ParameterInterfaceArray.h"
#include "quillon/Interpreter.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kLights = R"(
interface Light
{
	vec3 Emit(vec3 P);
}
class Spot : Light
{
	vec3 Emit(vec3 P) { return P; }
}
class Point : Light
{
	vec3 Emit(vec3 P) { return P * 2.0; }
}
class Area : Light
{
	vec3 Emit(vec3 P) { return P * 4.0; }
}
class Glow : Light
{
	input Light next;
	vec3 Emit(vec3 P) { return next.Shine(P); }
}
class Loops : Light
{
	input Light lights[];
	vec3 Emit(vec3 P)
	{
		vec3 c = vec3(0.0);
		for (int i = 0; i < lights.length; ++i)
		{
			c += lights[i].Emit(P);
		}
		return c;
	}
	vec3 Dispatched(vec3 P)
	{
		vec3 c = vec3(0.0);
		for (int i = 0; i <= lights.length - 1; ++i)
			c += lights[i].Emit(P);
		return c;
	}
}
)";

class GraphInterfaceInputTest : public GraphTest
{
protected:
	GraphInterfaceInputTest() { Load("Lights.tsl", kLights); }
	~GraphInterfaceInputTest() override
	{
		if (program)
			context.DestroyProgram(program);
	}

	// Links the graph beside an entry point that accumulates one method of the root shader at P = (1, 1, 1).
	void Link(IGraph* graph, const std::string& method)
	{
		program = context.CreateProgram();
		IQLShader* root = context.CreateShader(IQLShader::kType_Ray);
		std::vector<std::string> errors;
		ASSERT_TRUE(root->SetString("vec3 " + method + "(vec3 P);\nvoid main()\n{\n\taccumulate(0, " +
		                                method + "(vec3(1.0)));\n}\n",
		                            errors))
		    << (errors.empty() ? "" : errors.front());
		program->AttachShader(root);
		program->AttachShader(graph->GetQLShader());
		ASSERT_TRUE(program->Link(errors)) << (errors.empty() ? "" : errors.front());
	}
	float Run(const std::string& count, int value)
	{
		QLRunInputs inputs;
		inputs.variables[count] = QLComponents{double(value)};
		QLRunResults results;
		EXPECT_TRUE(interpreter.Run(program, IQLShader::kType_Ray, nullptr, inputs, results))
		    << results.error;
		return results.accumulated[0].x;
	}

	Interpreter interpreter;
	IQLProgram* program = nullptr;
};

TEST_F(GraphInterfaceInputTest, UnrolledAndDispatchedCallsComputeEveryElementOnTheDevice)
{
	IShader* loops = Create("Loops");
	IShader* elements[] = {Create("Spot"), Create("Point"), Create("Area")};
	ASSERT_TRUE(loops->GetParameter("lights")->SetLength(3));
	ASSERT_TRUE(loops->SetParameter(nullptr, "lights", elements, 3));
	ScopedVariable keep("TZR_DISABLE_EFFECTS_OPTIMIZATIONS", "1");
	IGraph* graph = loops->GetGraphSurface();
	Compile(graph);
	const std::string count =
	    dynamic_cast<ParameterInterfaceArray*>(loops->GetParameter("lights"))->GetNameCount();

	// The unrolled loop calls each element once, whatever the count uniform says.
	Link(graph, loops->GetMethodNameMangled("Emit"));
	EXPECT_FLOAT_EQ(Run(count, 0), 7.0f);
	context.DestroyProgram(program);
	// The kept loop reaches the elements through the dispatch function as far as the count goes.
	Link(graph, loops->GetMethodNameMangled("Dispatched"));
	EXPECT_FLOAT_EQ(Run(count, 3), 7.0f);
	EXPECT_FLOAT_EQ(Run(count, 2), 3.0f);
}

TEST_F(GraphInterfaceInputTest, ACallTheInterfaceLacksIsReportedIntoTheCompilesResult)
{
	IShader* glow = Create("Glow");
	Result connecting;
	EXPECT_FALSE(glow->SetParameter(&connecting, "next", Create("Spot")));
	const std::string message = "Lights.tsl:21: Interface \"Light\" has no method named \"Shine\".\n";
	EXPECT_EQ(ShaderTest::Text(connecting), message + "|");

	IGraph* graph = glow->GetGraphSurface();
	Result compiling;
	EXPECT_FALSE(graph->Compile(&compiling));
	EXPECT_EQ(ShaderTest::Text(compiling), message + "|");
	EXPECT_FALSE(graph->IsCompiled());
}

// The shipped surface that sums its lights, with one of each shipped light, on the device.
TEST_F(GraphTest, AShippedSurfaceCallsEachShippedLightDirectly)
{
	ScopedVariable path("TARSEL_SHADER_PATH", TARSEL_SHADERS_DIR);
	for (const char* file : {"Interfaces", "Sampling", "Textures", "Lights", "Surfaces"})
	{
		Result result;
		ASSERT_TRUE(mgr.AddLibrary(std::string(file) + ".tsl", &result)) << file << ": " << result.GetText();
	}
	IShader* matte = Create("Matte");
	std::vector<IShader*> lights;
	for (const char* name : {"PointLight", "SpotLight", "DirectionalLight", "DiskLight"})
		lights.push_back(Create(name));
	ASSERT_TRUE(matte->SetCoord(nullptr, "uv", "uv"));
	ASSERT_TRUE(matte->GetParameter("lights")->SetLength(4));
	Result result;
	ASSERT_TRUE(matte->SetParameter(&result, "lights", lights.data(), 4)) << result.GetText();
	ASSERT_TRUE(matte->IsComplete());
	IGraph* graph = matte->GetGraphSurface();
	Compile(graph);

	const std::string text = Text(graph);
	const size_t begin =
	    text.find(matte->GetMethodNameMangled("ShadeLights") + "(vec3 P, vec3 N, vec3 base)\n{");
	ASSERT_NE(begin, std::string::npos) << text;
	const std::string shade = text.substr(begin, text.find("\n}\n", begin) - begin);
	EXPECT_FALSE(Contains(shade, "for(")) << shade;
	for (IShader* light : lights)
		EXPECT_TRUE(Contains(shade, light->GetMethodNameMangled("Illuminate") + "(P, N, L)")) << shade;
}

} // namespace
} // namespace Tarsel::Effects::Testing
