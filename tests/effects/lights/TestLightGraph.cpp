#include "LightsTestSupport.h"
#include "objects/ParameterValue.h"
#include "quillon/Interpreter.h"
#include "values/IStorage.h"
#include "values/IValue.h"

namespace Tarsel::Effects::Testing
{
namespace
{

size_t Count(const std::string& text, const std::string& part)
{
	size_t n = 0;
	for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
		++n;
	return n;
}

struct Updates
{
	std::vector<IGraph::DelegateApply> vDelegates;
	bool On(IGraph*, IGraph::DelegateApply& apply)
	{
		vDelegates.push_back(apply);
		return true;
	}
};

// A surface lit through the manager class by lights of two classes, compiled on the reference device.
class LightGraphTest : public LightsTest
{
protected:
	LightGraphTest()
	{
		EXPECT_TRUE(InitLights());
		matte = Create("MatteLightSet");
		receiver = lights.CreateShader("LightManagerArray", nullptr);
	}
	~LightGraphTest() override
	{
		// The lights still write their indexers when the manager shuts down.
		if (IGraph* graph = matte ? matte->PeekGraphSurface() : nullptr)
			graph->RemoveListenerChangeValue(MakeDelegate(&updates, &Updates::On));
		if (program)
			context.DestroyProgram(program);
	}

	void Connect(int nPoints, int nDirects)
	{
		IParameter* input = receiver->GetParameter("lights");
		const int nBefore = int(connected.size());
		ASSERT_TRUE(input->SetLength(nBefore + nPoints + nDirects));
		for (int i = 0; i < nPoints + nDirects; ++i)
		{
			connected.push_back(Light(i < nPoints ? "LightPointArray" : "LightDirectArray"));
			ASSERT_TRUE(input->Set(connected.back(), nBefore + i));
		}
	}
	std::string Illuminate(const std::string& sClass)
	{
		return ArrayShader(sClass)->GetMethodNameMangled("Illuminate") +
		       "(int i, vec3 P, vec3 N, out vec3 L)\n{";
	}

	// Links the graph beside an entry point that accumulates what light k of the manager sends to the
	// origin, seen with the normal (0, 1, 0).
	void Link(IGraph* graph, int k)
	{
		if (program)
			context.DestroyProgram(program);
		program = context.CreateProgram();
		IQLShader* root = context.CreateShader(IQLShader::kType_Ray);
		const std::string method = receiver->GetMethodNameMangled("IlluminateLight");
		std::vector<std::string> errors;
		ASSERT_TRUE(root->SetString("vec3 " + method + "(int light, vec3 P, vec3 N, out vec3 L);\n" +
		                                "void main()\n{\n\tvec3 L;\n\taccumulate(0, " + method + "(" +
		                                std::to_string(k) + ", vec3(0.0), vec3(0.0, 1.0, 0.0), L));\n}\n",
		                            errors))
		    << (errors.empty() ? "" : errors.front());
		program->AttachShader(root);
		program->AttachShader(graph->GetQLShader());
		ASSERT_TRUE(program->Link(errors)) << (errors.empty() ? "" : errors.front());
	}
	float Run()
	{
		QLRunResults results;
		EXPECT_TRUE(interpreter.Run(program, IQLShader::kType_Ray, &primitive, QLRunInputs(), results))
		    << results.error;
		return results.accumulated.count(0) ? results.accumulated[0].x : -1.0f;
	}
	IShader* matte = nullptr;
	IShader* receiver = nullptr;
	std::vector<IShader*> connected;
	ReferencePrimitive primitive;
	Interpreter interpreter;
	IQLProgram* program = nullptr;
	Updates updates;
};

TEST_F(LightGraphTest, ThreeLightsOfTwoClassesCompileIntoOneShaderPerClass)
{
	Connect(2, 1);
	Result result;
	ASSERT_TRUE(matte->SetParameter(&result, "lightSet", receiver)) << result.GetText();
	ASSERT_TRUE(matte->IsComplete());
	IGraph* graph = matte->GetGraphSurface();
	Compile(graph);
	const std::string text = Text(graph);
	EXPECT_EQ(Count(text, Illuminate("LightPointArray")), 1u) << text;
	EXPECT_EQ(Count(text, Illuminate("LightDirectArray")), 1u) << text;
	// The manager dispatches to one slot per class, whatever the number of lights.
	const size_t dispatch = text.find("_Illuminate(int iThis, int i, vec3 P, vec3 N, out vec3 L)\n{");
	ASSERT_NE(dispatch, std::string::npos) << text;
	EXPECT_EQ(Count(text.substr(dispatch, text.find("\n}\n", dispatch) - dispatch), "(iThis=="), 2u) << text;

	// More lights of the same classes leave the program as it was.
	Connect(20, 5);
	Compile(graph);
	EXPECT_EQ(Text(graph), text);
}

TEST_F(LightGraphTest, ALightsValueReachesItsOwnElementAndTheProgramComputesWithIt)
{
	Connect(2, 1);
	ASSERT_TRUE(matte->SetParameter(nullptr, "lightSet", receiver));
	for (IShader* point : {connected[0], connected[1]})
		ASSERT_TRUE(point->SetParameter(nullptr, "position", Vector3f(0.0f, 2.0f, 0.0f)));
	ASSERT_TRUE(connected[1]->SetParameter(nullptr, "intensity", 5.0f));
	IGraph* graph = matte->GetGraphSurface();
	Compile(graph);
	Link(graph, 1);
	ASSERT_TRUE(graph->Apply(&primitive, program, nullptr));
	EXPECT_FLOAT_EQ(Run(), 5.0f);
	Link(graph, 2);
	EXPECT_FLOAT_EQ(Run(), 3.0f);

	graph->AddListenerChangeValue(MakeDelegate(&updates, &Updates::On));
	ASSERT_TRUE(connected[1]->SetParameter(nullptr, "intensity", 7.0f));
	EXPECT_EQ(Block("LightPointArray", "intensity"), (std::vector<float>{10.0f, 7.0f}));
	ASSERT_EQ(updates.vDelegates.size(), 1u);
	Link(graph, 1);
	const size_t nBefore = primitive.GetWrites().size();
	EXPECT_TRUE(updates.vDelegates[0](&primitive, program));
	// Only the block of the changed parameter is bound again, with its length.
	const std::string block =
	    dynamic_cast<ParameterValue*>(ArrayShader("LightPointArray")->GetParameter("intensity"))
	        ->GetNameMangled();
	ASSERT_EQ(primitive.GetWrites().size(), nBefore + 2u);
	EXPECT_EQ(primitive.GetWrites()[nBefore].name, block);
	EXPECT_EQ(primitive.GetWrites()[nBefore + 1].name, block + "Length");
	EXPECT_FLOAT_EQ(Run(), 7.0f);
}

} // namespace
} // namespace Tarsel::Effects::Testing
