#include "GraphTestSupport.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kNodes = R"(
interface Node
{
	vec3 Shade(vec3 P);
}
class Leaf : Node
{
	input float gain = 2.0;
	input vec3 tint = vec3(1.0, 0.5, 0.25);
	vec3 Shade(vec3 P)
	{
		return P * gain;
	}
}
class Mapped : Node
{
	coord vec2 uv;
	vec3 Shade(vec3 P)
	{
		return P * uv.x;
	}
}
class Link : Node
{
	input Node next;
	vec3 Shade(vec3 P)
	{
		return next.Shade(P);
	}
}
)";

// Collects the delegates that a compiled graph hands out for changed values.
struct Updates
{
	std::vector<IGraph::DelegateApply> vDelegates;
	bool On(IGraph*, IGraph::DelegateApply& apply)
	{
		vDelegates.push_back(apply);
		return true;
	}
};

class GraphReferenceTest : public GraphTest
{
protected:
	GraphReferenceTest() { Load("Nodes.tsl", kNodes); }
	~GraphReferenceTest() override
	{
		if (program)
			context.DestroyProgram(program);
	}

	// Links the graph's program beside an empty entry point, as an effect would with its root shader.
	void Link(IGraph* graph)
	{
		program = context.CreateProgram();
		root = context.CreateShader(IQLShader::kType_Ray);
		std::vector<std::string> errors;
		ASSERT_TRUE(root->SetString("void main()\n{\n}\n", errors));
		program->AttachShader(root);
		program->AttachShader(graph->GetQLShader());
		ASSERT_TRUE(program->Link(errors)) << (errors.empty() ? "" : errors.front());
	}
	// Classes with interface inputs need the input parameters; until they exist these cases cannot run.
	IShader* CreateConnectable(const std::string& className)
	{
		IShader* shader = mgr.CreateShader(className, nullptr);
		return shader;
	}

	ReferencePrimitive primitive;
	IQLProgram* program = nullptr;
	IQLShader* root = nullptr;
};

TEST_F(GraphReferenceTest, ApplyWritesEveryValueAndAChangeReappliesOnlyItsOwn)
{
	IShader* leaf = Create("Leaf");
	IGraph* graph = leaf->GetGraphSurface();
	Compile(graph);
	Link(graph);
	ASSERT_TRUE(graph->Apply(&primitive, program, nullptr));
	EXPECT_EQ(primitive.GetWrites().size(), 2u);
	for (const QLWrite& write : primitive.GetWrites())
		EXPECT_TRUE(write.bound) << write.Describe();

	Updates updates;
	graph->AddListenerChangeValue(MakeDelegate(&updates, &Updates::On));
	primitive.ClearWrites();
	ASSERT_TRUE(leaf->SetParameter(nullptr, "gain", 4.0f));
	ASSERT_EQ(updates.vDelegates.size(), 1u);
	EXPECT_TRUE(updates.vDelegates[0](&primitive, program));
	ASSERT_EQ(primitive.GetWrites().size(), 1u);
	EXPECT_EQ(primitive.GetWrites()[0].Values<float>(), std::vector<float>{4.0f});
	ASSERT_TRUE(leaf->SetParameter(nullptr, "tint", Vector3f(0.0f, 0.0f, 1.0f)));
	ASSERT_EQ(updates.vDelegates.size(), 2u);
	EXPECT_TRUE(updates.vDelegates[1](&primitive, program));
	ASSERT_EQ(primitive.GetWrites().size(), 2u);
	EXPECT_EQ(primitive.GetWrites()[0].name.rfind("gain_k", 0), 0u);
	EXPECT_EQ(primitive.GetWrites()[1].name.rfind("tint_k", 0), 0u);
}

TEST_F(GraphReferenceTest, ACoordinateBindsAnAttributeAndItsChangeRecompiles)
{
	IShader* mapped = Create("Mapped");
	IGraph* graph = mapped->GetGraphSurface();
	Result result;
	EXPECT_FALSE(graph->Compile(&result));
	EXPECT_TRUE(result.GetMessages().empty());
	EXPECT_EQ(graph->GetQLShader(), nullptr);

	ASSERT_TRUE(mapped->SetCoord(nullptr, "uv", "texcoord"));
	Compile(graph);
	EXPECT_TRUE(Contains(Text(graph), "varying vec2 texcoord;")) << Text(graph);
	Counter<IGraph*> changed;
	graph->AddListenerChangeStructure(changed.Delegate());
	ASSERT_TRUE(mapped->SetCoord(nullptr, "uv", "st"));
	EXPECT_FALSE(graph->IsCompiled());
	EXPECT_GE(changed.n, 1);
	EXPECT_EQ(graph->GetCountAttributes(), 1);
	Compile(graph);
	EXPECT_TRUE(Contains(Text(graph), "varying vec2 st;"));
	EXPECT_FALSE(Contains(Text(graph), "texcoord"));
	graph->RemoveListenerChangeStructure(changed.Delegate());
}

TEST_F(GraphReferenceTest, AGraphGrowsThroughConnectionsAndRecompilesAfterThem)
{
	IShader* link = CreateConnectable("Link");
	if (link == nullptr)
		GTEST_SKIP() << "interface inputs are not available";
	IShader* leaf = Create("Leaf");
	IGraph* graph = link->GetGraphSurface();
	Result result;
	EXPECT_FALSE(graph->Compile(&result));
	EXPECT_TRUE(result.GetMessages().empty());
	EXPECT_EQ(graph->GetQLShader(), nullptr);

	ASSERT_TRUE(link->SetParameter(nullptr, "next", leaf));
	Compile(graph);
	EXPECT_TRUE(Contains(Text(graph), leaf->GetMethodNameMangled("Shade") + "(vec3 P)\n{"));
	ASSERT_NE(leaf->GetReference(graph), nullptr);

	Counter<IGraph*> changed;
	graph->AddListenerChangeStructure(changed.Delegate());
	IShader* other = Create("Leaf");
	ASSERT_TRUE(link->SetParameter(nullptr, "next", other));
	EXPECT_FALSE(graph->IsCompiled());
	EXPECT_GE(changed.n, 1);
	EXPECT_EQ(leaf->GetReference(graph), nullptr);
	Compile(graph);
	EXPECT_FALSE(Contains(Text(graph), leaf->GetMethodNameMangled("Shade")));
	EXPECT_TRUE(Contains(Text(graph), other->GetMethodNameMangled("Shade")));
	graph->RemoveListenerChangeStructure(changed.Delegate());

	// Destroying the connected shader leaves the graph incomplete, with nothing dangling.
	mgr.DestroyShader(other);
	EXPECT_FALSE(graph->IsComplete());
	EXPECT_FALSE(graph->Compile(nullptr));
}

TEST_F(GraphReferenceTest, AShaderWithItsOwnGraphIsDeclaredNotCopied)
{
	IShader* link = CreateConnectable("Link");
	if (link == nullptr)
		GTEST_SKIP() << "interface inputs are not available";
	IShader* leaf = Create("Leaf");
	IGraph* own = leaf->GetGraphSurface();
	Compile(own);
	ASSERT_TRUE(link->SetParameter(nullptr, "next", leaf));
	IGraph* graph = link->GetGraphSurface();
	Compile(graph);
	const std::string shade = leaf->GetMethodNameMangled("Shade");
	EXPECT_TRUE(Contains(Text(graph), "vec3 " + shade + "(vec3 P);"));
	EXPECT_FALSE(Contains(Text(graph), shade + "(vec3 P)\n{"));
	EXPECT_FALSE(Contains(Text(graph), "uniform float gain"));
	// Its values are its own graph's to apply.
	EXPECT_EQ(leaf->GetReference(graph)->GetCountParameters(), 0);
}

} // namespace
} // namespace Tarsel::Effects::Testing
