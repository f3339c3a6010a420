#include "GraphTestSupport.h"

#include "objects/ParameterInterfaceArray.h"
#include "quillon/Interpreter.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kLights = R"(
interface Light { vec3 Emit(vec3 P); }
class Spot : Light { vec3 Emit(vec3 P) { return P; } }
class Point : Light { vec3 Emit(vec3 P) { return P * 2.0; } }
class Area : Light { vec3 Emit(vec3 P) { return P * 4.0; } }
class Glow : Light { input Light next; vec3 Emit(vec3 P) { return next.Shine(P); } }
class Loops : Light
{
	input Light lights[];
	vec3 Emit(vec3 P)
	{
		vec3 c = vec3(0.0);
		for (int i = 0; i < lights.length; ++i) { c += lights[i].Emit(P); }
		return c;
	}
	vec3 Dispatched(vec3 P)
	{
		vec3 c = vec3(0.0);
		for (int i = 0; i <= lights.length - 1; ++i) c += lights[i].Emit(P);
		return c;
	}
}
)";

class GraphInterfaceInputTest : public GraphTest
{
protected:
	GraphInterfaceInputTest() { Load("Lights.tsl", kLights); }
	~GraphInterfaceInputTest() override { context.DestroyProgram(program); }
	// Links the graph beside an entry point that accumulates the unrolled method into attachment 0 and the
	// dispatching one into 1, both at P = (1, 1, 1).
	void Link(IGraph* graph, const std::string& unrolled, const std::string& dispatched)
	{
		const std::string text = "vec3 " + unrolled + "(vec3 P);\nvec3 " + dispatched +
		                         "(vec3 P);\nvoid main()\n{\n\taccumulate(0, " + unrolled +
		                         "(vec3(1.0)));\n\taccumulate(1, " + dispatched + "(vec3(1.0)));\n}\n";
		program = context.CreateProgram();
		IQLShader* root = context.CreateShader(IQLShader::kType_Ray);
		std::vector<std::string> errors;
		ASSERT_TRUE(root->SetString(text, errors)) << (errors.empty() ? "" : errors.front());
		program->AttachShader(root);
		program->AttachShader(graph->GetQLShader());
		ASSERT_TRUE(program->Link(errors)) << (errors.empty() ? "" : errors.front());
	}

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
	Link(graph, loops->GetMethodNameMangled("Emit"), loops->GetMethodNameMangled("Dispatched"));
	// The unrolled loop calls each element once whatever the count says; the kept loop reaches the
	// elements through the dispatch function as far as the count goes.
	Interpreter interpreter;
	QLRunInputs inputs;
	const std::string count =
	    dynamic_cast<ParameterInterfaceArray*>(loops->GetParameter("lights"))->GetNameCount();
	for (const int n : {3, 2})
	{
		inputs.variables[count] = QLComponents{double(n)};
		QLRunResults results;
		ASSERT_TRUE(interpreter.Run(program, IQLShader::kType_Ray, nullptr, inputs, results))
		    << results.error;
		EXPECT_FLOAT_EQ(results.accumulated[0].x, 7.0f);
		EXPECT_FLOAT_EQ(results.accumulated[1].x, n == 3 ? 7.0f : 3.0f);
	}
}

TEST_F(GraphInterfaceInputTest, ACallTheInterfaceLacksIsReportedIntoTheCompilesResult)
{
	IShader* glow = Create("Glow");
	Result connecting;
	EXPECT_FALSE(glow->SetParameter(&connecting, "next", Create("Spot")));
	const std::string message = "Lights.tsl:6: Interface \"Light\" has no method named \"Shine\".\n";
	EXPECT_EQ(ShaderTest::Text(connecting), message + "|");

	IGraph* graph = glow->GetGraphSurface();
	Result compiling;
	EXPECT_FALSE(graph->Compile(&compiling));
	EXPECT_EQ(ShaderTest::Text(compiling), message + "|");
	EXPECT_FALSE(graph->IsCompiled());
}

} // namespace
} // namespace Tarsel::Effects::Testing
