#include "TestRootSupport.h"
#include "codegen/IAttributeVertex.h"
#include "manager/Profiler.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kVertexBuiltIns = R"(
attribute vec3 a_Normal;
attribute vec3 a_Position;
transformed varying vec3 Normal;
transformed varying vec4 Position_WorldSpace;


void main()
{
	Normal = a_Normal;
	ql_Position = vec4(a_Position, 1.000000000000000);
	Position_WorldSpace = vec4(a_Position, 1.000000000000000);
}

)";

struct Located
{
	bool On(const std::string&, IAttributeVertex* attribute) { return attribute->GetQLLocation() >= 0; }
};

class VertexTest : public GraphTest
{
protected:
	VertexTest() { EXPECT_TRUE(vertex.Init(&mgr, nullptr)); }
	~VertexTest() override { vertex.Shutdown(); }

	std::string Compiled()
	{
		EXPECT_TRUE(vertex.Compile());
		EXPECT_TRUE(vertex.IsCompiled());
		return vertex.GetQLShader()->GetString();
	}

	ShaderVertex vertex;
};

TEST_F(VertexTest, BuiltInsOnlyGiveTheFixedProgram)
{
	EXPECT_EQ(Compiled(), kVertexBuiltIns);
}

TEST_F(VertexTest, AcquisitionsAreCountedByNameAndChecked)
{
	EXPECT_TRUE(vertex.AcquireAttribute(kType_Vec2, "uv", kTransformation_Coord));
	EXPECT_TRUE(vertex.AcquireAttribute(kType_Vec2, "uv", kTransformation_Coord));
	EXPECT_EQ(vertex.GetCountAttributes(), 3);
	Compiled();

	const std::pair<bool, const char*> refused[] = {
	    {vertex.AcquireAttribute(kType_Vec3, "uv", kTransformation_Coord), "Type Conflict"},
	    {vertex.AcquireAttribute(kType_Vec2, "uv", kTransformation_Normal), "Transformation Conflict"},
	    {vertex.AcquireAttribute(kType_Vec3, "Normal", kTransformation_Coord), "Type Conflict"},
	    {vertex.AcquireAttribute(kType_Vec4, "Position", kTransformation_Coord), "Type Conflict"},
	    {vertex.AcquireAttribute(kType_Vec2, "", kTransformation_Coord), "Name Null"}};
	for (const auto& attempt : refused)
	{
		EXPECT_FALSE(attempt.first);
		EXPECT_TRUE(
		    console.HasMessage(std::string("ShaderVertex::AcquireAttribute ") + attempt.second + "\n"))
		    << attempt.second;
	}
	EXPECT_EQ(vertex.GetCountAttributes(), 3);
	EXPECT_TRUE(vertex.IsCompiled());

	// The last holder's release takes the attribute out of the compiled program.
	EXPECT_TRUE(vertex.ReleaseAttribute("uv"));
	EXPECT_TRUE(vertex.IsCompiled());
	EXPECT_TRUE(vertex.ReleaseAttribute("uv"));
	EXPECT_FALSE(vertex.IsCompiled());
	EXPECT_TRUE(vertex.ReleaseAttribute("uv"));
	EXPECT_EQ(Compiled(), kVertexBuiltIns);
}

TEST_F(VertexTest, LocationsComeFromTheLinkedProgram)
{
	IQLProgram* program = context.CreateProgram();
	EXPECT_FALSE(vertex.OnProgramChange(program));
	context.DestroyProgram(program);
}

TEST_F(VertexTest, EachTransformationMovesItsCoordinateAndTheWholeSurfaceLinks)
{
	Load("Entry.tsl", kEntryLibrary);
	IGraph* graph = Create("Bare")->GetGraphSurface();
	EXPECT_TRUE(graph->AcquireAttribute(kType_Vec2, "uv", kTransformation_Coord));
	EffectDouble effect(&mgr, graph);
	EXPECT_TRUE(graph->AcquireAttribute(kType_Vec3, "n", kTransformation_Normal));
	EXPECT_TRUE(graph->AcquireAttribute(kType_Vec3, "t", kTransformation_Tangent));
	Result result;
	ASSERT_TRUE(effect.CompileAndLink(&result)) << result.GetText() << effect.VertexText();
	EXPECT_EQ(effect.VertexText(), R"(
attribute vec3 a_Normal;
attribute vec3 a_Position;
attribute vec3 a_n;
attribute vec3 a_t;
attribute vec2 a_uv;
varying vec3 n;
varying vec3 t;
varying vec2 uv;
transformed varying vec3 Normal;
transformed varying vec4 Position_WorldSpace;


void main()
{
	Normal = a_Normal;
	ql_Position = vec4(a_Position, 1.000000000000000);
	Position_WorldSpace = vec4(a_Position, 1.000000000000000);
	n = (mat3(ql_PrimitiveTransformMatrixInverseTranspose)*a_n);
	t = (mat3(ql_PrimitiveTransformMatrix)*a_t);
	uv = a_uv;
}

)");
	EXPECT_NE(effect.RootText().find("varying vec3 n;\nvarying vec3 t;\nvarying vec2 uv;\n"),
	          std::string::npos);
	EXPECT_EQ(Impl()->GetProfiler()->GetSamples("Effect::_CompileShaderVertex").size(), 1u);

	// The link told the stage where its attributes are.
	ShaderVertex* vertexEffect = effect.policy.GetShaderVertex();
	Located check;
	ShaderVertex::VisitorAttribute located = MakeDelegate(&check, &Located::On);
	EXPECT_TRUE(vertexEffect->VisitAttributes(located));
}

TEST_F(VertexTest, ThePolicyFollowsTheAttributesOfItsGraph)
{
	Load("Entry.tsl", kEntryLibrary);
	IShader* shader = Create("Bare");
	IGraph* graph = shader->GetGraphSurface();
	EXPECT_TRUE(graph->AcquireAttribute(kType_Vec2, "uv", kTransformation_Coord));
	auto effect = std::make_unique<EffectDouble>(&mgr, graph);
	Counter<IEffect*> changes;
	effect->policy.AddListenerChangeAttribute(changes.Delegate());
	ShaderVertex* stage = effect->policy.GetShaderVertex();
	EXPECT_EQ(stage->GetCountAttributes(), 3);

	EXPECT_TRUE(graph->AcquireAttribute(kType_Vec3, "t", kTransformation_Tangent));
	EXPECT_TRUE(graph->AcquireAttribute(kType_Vec3, "t", kTransformation_Tangent));
	EXPECT_EQ(changes.n, 1);
	EXPECT_EQ(stage->GetCountAttributes(), 4);
	EXPECT_TRUE(graph->ReleaseAttribute("t"));
	EXPECT_TRUE(graph->ReleaseAttribute("t"));
	EXPECT_EQ(changes.n, 2);
	EXPECT_EQ(stage->GetCountAttributes(), 3);

	// A graph that goes first takes its attributes with it and is not touched again.
	shader->ShutdownGraphSurface();
	EXPECT_EQ(stage->GetCountAttributes(), 2);
	effect->ForgetGraph();
	effect.reset();
}

} // namespace
} // namespace Tarsel::Effects::Testing
