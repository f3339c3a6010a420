#include "GraphTestSupport.h"

#include <cstdlib>

#include "codegen/VisitorPrintTsl.h"
#include "effects/IPrototypeInterface.h"
#include "graph/ReferencePrototypeInterface.h"
#include "syntax/Module.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kSurface = R"(
interface Surface
{
	vec3 Shade(vec3 P);
}
class Plain : Surface
{
	static float Half(float x)
	{
		return x * 0.5;
	}
	vec3 Shade(vec3 P)
	{
		return P * Half(2.0);
	}
}
)";

TEST_F(GraphTest, ARootShaderCompilesUnderItsKeyWithNumberedApiShaders)
{
	// The whole text as collected, empty constructor calls included.
	ScopedVariable unoptimised("TZR_DISABLE_EFFECTS_OPTIMIZATIONS", "1");
	Load("Plain.tsl", kSurface);
	IShader* shader = Create("Plain");
	IGraph* graph = shader->GetGraphSurface();
	ASSERT_NE(graph, nullptr);
	Counter<IGraph*> compiled;
	graph->AddListenerCompile(compiled.Delegate());
	const std::string key = graph->GetNameMangled().substr(std::string("Plain").size());

	Compile(graph);
	EXPECT_TRUE(graph->IsCompiled());
	EXPECT_EQ(compiled.n, 1);
	EXPECT_EQ(Name(graph), "Plain" + key + "_1");
	const std::string text = Text(graph);
	for (const std::string& part :
	     {"void _ctor_static" + key + "()", "void _ctor_instance" + key + "()",
	      std::string("\t__ctor_Plain();"), "\t" + shader->GetConstructor() + "();",
	      "vec3 " + shader->GetMethodNameMangled("Shade") + "(vec3 P)",
	      std::string("float Plain_Half(float x)"), std::string("varying vec3 Normal;"),
	      std::string("varying vec4 Position_WorldSpace;"), std::string("rayattribute "),
	      std::string("float g_rayMinContrib;")})
		EXPECT_TRUE(Contains(text, part)) << part << "\n" << text;

	// The first API shader goes before the second is made.
	const size_t shaders = context.GetCountShaders();
	Compile(graph);
	EXPECT_EQ(Name(graph), "Plain" + key + "_2");
	EXPECT_EQ(context.GetCountShaders(), shaders);
	EXPECT_EQ(Text(graph), text);
}

TEST_F(GraphTest, TwoInstancesOfAClassShareItsClassCodeButNotTheirMethods)
{
	// Left to itself the optimiser would drop the uncalled methods of the second instance.
	ScopedVariable unoptimised("TZR_DISABLE_EFFECTS_OPTIMIZATIONS", "1");
	Load("Plain.tsl", kSurface);
	IShader* first = Create("Plain");
	IShader* second = Create("Plain");
	IGraph* graph = first->GetGraphSurface();
	// Without interface inputs the second instance enters the graph by reference only.
	IReferenceShader* reference = second->AcquireReference(graph);
	ASSERT_NE(reference, nullptr);
	Compile(graph);
	const std::string text = Text(graph);
	EXPECT_TRUE(Contains(text, first->GetMethodNameMangled("Shade") + "(vec3 P)\n{"));
	EXPECT_TRUE(Contains(text, second->GetMethodNameMangled("Shade") + "(vec3 P)\n{"));
	EXPECT_EQ(text.find("float Plain_Half(float x)\n{"), text.rfind("float Plain_Half(float x)\n{"));
	EXPECT_TRUE(reference->Release());
}

TEST_F(GraphTest, DeviceErrorsNameTheLibraryFileAndLine)
{
	Load("Broken.tsl", R"(interface Surface
{
	vec3 Shade(vec3 P);
}
class Broken : Surface
{
	vec3 Shade(vec3 P)
	{
		return P * missing;
	}
}
)");
	IGraph* graph = Create("Broken")->GetGraphSurface();
	Result result;
	EXPECT_FALSE(graph->Compile(&result));
	EXPECT_FALSE(graph->IsCompiled());
	ASSERT_EQ(result.GetMessages().size(), 1u);
	const std::string& message = result.GetMessages()[0];
	EXPECT_EQ(message.rfind("Broken.tsl:9: ", 0), 0u) << message;
	EXPECT_TRUE(Contains(message, "missing")) << message;
	EXPECT_TRUE(console.HasMessage("Graph::_Compile SetString\n"));
	// The rejected API shader stays until the next compile.
	EXPECT_NE(graph->GetQLShader(), nullptr);
}

TEST_F(GraphTest, ErrorTranslationLeavesPiecesWithoutAUsableLineAlone)
{
	Module module;
	VisitorPrintTsl printer(nullptr, nullptr, false);
	ASSERT_TRUE(printer.Visit(&module));
	for (const std::string& piece :
	     {std::string("no position here\n"), std::string("ERROR: String 0 Line 0: x\n"),
	      std::string("ERROR: String 0 Line 12"), std::string("ERROR: String 0 Line ")})
		EXPECT_EQ(Graph::TranslateErrorMessage(piece, printer), piece);
	EXPECT_EQ(Graph::TranslateErrorMessage("a\nERROR: String 0 Line 999: late\nb", printer),
	          "a\n<generated>:0: late\nb");
}

TEST_F(GraphTest, AttributesAreCountedByNameAndTypeChecked)
{
	Load("Plain.tsl", kSurface);
	IShader* shader = Create("Plain");
	IGraph* graph = shader->GetGraphSurface();
	Compile(graph);
	Counter<IGraph::Attribute> removed;
	graph->AddListenerRemoveAttribute(removed.Delegate());
	EXPECT_TRUE(graph->AcquireAttribute(kType_Vec2, "uv", kTransformation_Coord));
	EXPECT_FALSE(graph->IsCompiled());
	EXPECT_TRUE(graph->AcquireAttribute(kType_Vec2, "uv", kTransformation_Coord));
	EXPECT_FALSE(graph->AcquireAttribute(kType_Vec3, "uv", kTransformation_Coord));
	EXPECT_TRUE(console.HasMessage("Graph::AcquireAttribute Type Collision\n"));
	Compile(graph);
	EXPECT_TRUE(Contains(Text(graph), "varying vec2 uv;"));
	EXPECT_TRUE(graph->ReleaseAttribute("uv"));
	EXPECT_EQ(removed.n, 0);
	EXPECT_TRUE(graph->ReleaseAttribute("uv"));
	EXPECT_EQ(removed.n, 1);
	EXPECT_EQ(graph->GetCountAttributes(), 0);
	EXPECT_TRUE(graph->ReleaseAttribute("uv"));
	graph->RemoveListenerRemoveAttribute(removed.Delegate());
}

TEST_F(GraphTest, ShuttingAGraphDownGivesBackKeysReferencesAndTheApiShader)
{
	Load("Plain.tsl", kSurface);
	const size_t keys = Impl()->GetCountKeys();
	IShader* shader = Create("Plain");
	const size_t keysShader = Impl()->GetCountKeys();
	IGraph* graph = shader->GetGraphSurface();
	Compile(graph);
	EXPECT_EQ(context.GetCountShaders(), 1u);
	// The class's reference in the graph is counted by the interface's reference until the last holder goes.
	ReferencePrototypeInterface* surface = mgr.GetPrototypeInterface("Surface")->GetReference(graph);
	EXPECT_EQ(surface->GetReferencePrototypeShaders().size(), 1u);
	shader->ShutdownGraphSurface();
	EXPECT_TRUE(surface->GetReferencePrototypeShaders().empty());
	EXPECT_FALSE(console.HasMessage("PrototypeShader::ReleaseReference Reference Not Found\n"));
	EXPECT_EQ(context.GetCountShaders(), 0u);
	EXPECT_EQ(Impl()->GetCountKeys(), keysShader);
	mgr.DestroyShader(shader);
	EXPECT_EQ(Impl()->GetCountKeys(), keys);
}

TEST_F(GraphTest, UpdatesOfAnUncompiledGraphWaitForTheCompile)
{
	Load("Plain.tsl", kSurface);
	IGraph* graph = Create("Plain")->GetGraphSurface();
	ChangeValueCounter changes;
	graph->AddListenerChangeValue(MakeDelegate(&changes, &ChangeValueCounter::On));
	IGraph::DelegateApply apply = MakeDelegate(&changes, &ChangeValueCounter::Apply);
	EXPECT_TRUE(graph->AddDelegateUpdate(apply));
	EXPECT_EQ(changes.n, 0);
	Compile(graph);
	EXPECT_TRUE(graph->AddDelegateUpdate(apply));
	EXPECT_EQ(changes.n, 1);
}

} // namespace
} // namespace Tarsel::Effects::Testing
