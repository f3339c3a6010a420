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
	IShader* link = Create("Link");
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
	// Nothing calls the declaration here, so the optimiser would remove it.
	ScopedVariable unoptimised("TZR_DISABLE_EFFECTS_OPTIMIZATIONS", "1");
	IShader* root = Create("Leaf");
	IShader* leaf = Create("Leaf");
	Compile(leaf->GetGraphSurface());
	IGraph* graph = root->GetGraphSurface();
	IReferenceShader* reference = leaf->AcquireReference(graph);
	ASSERT_NE(reference, nullptr);
	Compile(graph);
	const std::string shade = leaf->GetMethodNameMangled("Shade");
	EXPECT_TRUE(Contains(Text(graph), "vec3 " + shade + "(vec3 P);"));
	EXPECT_FALSE(Contains(Text(graph), shade + "(vec3 P)\n{"));
	EXPECT_TRUE(Contains(Text(graph), root->GetMethodNameMangled("Shade") + "(vec3 P)\n{"));
	// Its values are its own graph's to apply.
	EXPECT_EQ(reference->GetCountParameters(), 0);
	EXPECT_FALSE(reference->HasConstructor());
	EXPECT_TRUE(reference->Release());
}

TEST_F(GraphReferenceTest, EffectsWatchTheGraphThroughTheirReference)
{
	IShader* leaf = Create("Leaf");
	IGraph* graph = leaf->GetGraphSurface();
	IReferenceGraph* reference = graph->CreateReference(nullptr);
	ASSERT_NE(reference, nullptr);
	Counter<IReferenceGraph*> compiled;
	Counter<IReferenceGraph*> changed;
	reference->AddListenerCompile(compiled.Delegate());
	reference->AddListenerChangeStructure(changed.Delegate());
	Compile(graph);
	EXPECT_EQ(compiled.n, 1);
	ASSERT_TRUE(graph->AcquireAttribute(kType_Vec2, "uv", kTransformation_Coord));
	EXPECT_EQ(changed.n, 1);
	EXPECT_TRUE(graph->DestroyReference(reference));
	EXPECT_FALSE(graph->DestroyReference(reference));
	Compile(graph);
	EXPECT_EQ(compiled.n, 1);
}

TEST_F(GraphReferenceTest, OutputsAreAcquiredByTheClassAndCollideByType)
{
	// Named to sort before the library of its interface, which the manager shuts down later.
	Load("Lit.tsl", R"(
class Lit : Node
{
	output vec3 o_color;
	vec3 Shade(vec3 P)
	{
		accumulate(o_color, P);
		return P;
	}
}
class Wide : Node
{
	output vec4 o_color;
	vec3 Shade(vec3 P)
	{
		return P;
	}
}
)");
	IGraph* graph = Create("Lit")->GetGraphSurface();
	ASSERT_NE(graph, nullptr);
	EXPECT_EQ(graph->GetCountOutputs(), 1);
	Compile(graph);
	EXPECT_EQ(graph->GetOutputsUsed(), std::set<std::string>{"o_color"});
	EXPECT_EQ(Text(graph).rfind("uniform int __outputAttachmentIndex_o_color;\n", 0), 0u);
	// The manager's o_color is a vec3: a class that declares it otherwise cannot enter a graph.
	EXPECT_EQ(Create("Wide")->GetGraphSurface(), nullptr);
}

} // namespace
} // namespace Tarsel::Effects::Testing
