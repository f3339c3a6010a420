#include "TestShaderSupport.h"

#include "graph/Graph.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kWood = R"(
class Wood
{
	input float roughness = 0.5;
	input float weights[2] = 1.0;
	float cached = 0.25;
	vec3 Shade(vec3 P)
	{
		return P * Helper() + other.Helper();
	}
	float Helper()
	{
		return roughness * cached * weights[1];
	}
}
)";

const char* const kTextured = R"(
class Textured
{
	coord vec2 uv;
	vec4 Sample(vec2 p)
	{
		return vec4(uv, p);
	}
}
)";

class ShaderInstanceTest : public ShaderTest
{
protected:
	void SetUp() override { Load("wood.tsl", kWood); }
	const std::vector<std::string>& DeviceLog() const { return context.GetMessages(); }
};

TEST_F(ShaderInstanceTest, TwoInstancesOfAClassShareNoGeneratedName)
{
	IShader* a = Create("Wood");
	IShader* b = Create("Wood");
	ASSERT_TRUE(a && b);
	EXPECT_EQ(a->GetMethodNameMangled("Shade"), "Wood_Shade" + a->GetKeyString());
	EXPECT_NE(a->GetMethodNameMangled("Shade"), b->GetMethodNameMangled("Shade"));
	EXPECT_NE(a->GetConstructor(), b->GetConstructor());
	EXPECT_EQ(a->GetMethodNameMangled("Paint"), "MethodNotFound");

	const ModuleNames namesA = CollectedNames(a);
	const ModuleNames namesB = CollectedNames(b);
	EXPECT_EQ(namesA.functions, (std::set<std::string>{a->GetConstructor(), a->GetMethodNameMangled("Shade"),
	                                                   a->GetMethodNameMangled("Helper")}));
	// An own call is renamed; a call selected on another object is that object's.
	EXPECT_EQ(namesA.calls.count(a->GetMethodNameMangled("Helper")), 1u);
	EXPECT_EQ(namesA.calls.count("Helper"), 1u);
	EXPECT_FALSE(namesA.globals.empty());
	for (const std::string& global : namesA.globals)
		EXPECT_EQ(namesB.globals.count(global), 0u) << global;
	for (const char* variable : {"roughness", "cached", "weights"})
		EXPECT_EQ(namesA.variables.count(variable), 0u) << variable;
}

TEST_F(ShaderInstanceTest, ValuesAreSetByNameAndIndexAndReadBack)
{
	IShader* shader = Create("Wood");
	ASSERT_NE(shader, nullptr);
	EXPECT_EQ(GetFloat(shader, "roughness"), 0.5f);
	EXPECT_TRUE(shader->SetParameter(nullptr, "roughness", 0.75f));
	EXPECT_EQ(GetFloat(shader, "roughness"), 0.75f);
	EXPECT_TRUE(shader->SetParameter(nullptr, "weights", 3.0f, 1));
	EXPECT_EQ(GetFloat(shader, "weights", 0), 1.0f);
	EXPECT_EQ(GetFloat(shader, "weights", 1), 3.0f);
	const float both[] = {4.0f, 5.0f};
	EXPECT_TRUE(shader->SetParameter(nullptr, "weights", both, 2));
	EXPECT_EQ(GetFloat(shader, "weights", 1), 5.0f);
	EXPECT_TRUE(DeviceLog().empty()) << Messages(DeviceLog());
}

TEST_F(ShaderInstanceTest, AFailedSetIsLoggedOnTheDeviceAndKeepsTheValue)
{
	IShader* shader = Create("Wood");
	ASSERT_NE(shader, nullptr);
	Result result;
	EXPECT_FALSE(shader->SetParameter(&result, "nope", 1.0f));
	EXPECT_FALSE(shader->SetParameter(&result, "nope", 1.0f, 0));
	EXPECT_FALSE(shader->SetParameter(&result, "roughness", Vector3f(1.0f, 2.0f, 3.0f)));
	const float three[] = {7.0f, 8.0f, 9.0f};
	EXPECT_FALSE(shader->SetParameter(&result, "weights", three, 3));
	EXPECT_FALSE(shader->SetParameter(&result, "weights", 2.0f, 5));
	const std::vector<std::string> expected = {
	    "Parameter error \"Can't find parameter\" parameter:\"nope\" class:\"Wood\"\n",
	    "Parameter error \"Can't find indexed parameter\" parameter:\"nope\" class:\"Wood\"\n",
	    "Parameter error \"Can't set parameter\" parameter:\"roughness\" class:\"Wood\"\n",
	    "Parameter error \"Can't set indexed parameter\" parameter:\"weights\" class:\"Wood\"\n",
	    "Parameter error \"Can't set indexed parameter\" parameter:\"weights\" class:\"Wood\"\n"};
	EXPECT_EQ(DeviceLog(), expected);
	EXPECT_EQ(GetFloat(shader, "roughness"), 0.5f);
	EXPECT_EQ(GetFloat(shader, "weights", 0), 1.0f);
	EXPECT_EQ(GetFloat(shader, "weights", 1), 1.0f);
}

TEST_F(ShaderInstanceTest, ConnectingToAnInputThatDoesNotExistNamesBothSides)
{
	IShader* a = Create("Wood");
	IShader* b = Create("Wood");
	Result result;
	EXPECT_FALSE(a->SetParameter(&result, "lights", b));
	EXPECT_EQ(result.GetMessages(),
	          std::vector<std::string>{"Can't get parameter lights of the shader Wood\n"});
	a->SetName("Left");
	EXPECT_FALSE(a->SetParameter(&result, "roughness", b, 0)); // a value input takes no shader
	EXPECT_EQ(a->GetName(), "Left");
	EXPECT_EQ(a->GetClassName(), "Wood");
}

TEST_F(ShaderInstanceTest, ACoordinateCompletesTheShaderAndNamesItsAttribute)
{
	Load("textured.tsl", kTextured);
	IShader* shader = Create("Textured");
	ASSERT_NE(shader, nullptr);
	EXPECT_FALSE(shader->IsComplete());
	Counter<IShader*> changes;
	IShader::ListenerShader listener = changes.Delegate();
	shader->AddListenerChangeStructure(listener);

	EXPECT_TRUE(shader->SetCoord(nullptr, "uv", "TexCoord0"));
	EXPECT_TRUE(shader->IsComplete());
	EXPECT_EQ(changes.n, 1);
	const ModuleNames names = CollectedNames(shader);
	EXPECT_EQ(names.variables.count("TexCoord0"), 1u);
	EXPECT_EQ(names.variables.count("uv"), 0u);

	EXPECT_TRUE(shader->SetCoord(nullptr, "uv", "TexCoord0"));
	EXPECT_EQ(changes.n, 1); // the same name changes nothing
	EXPECT_FALSE(shader->SetCoord(nullptr, "st", "TexCoord1"));
	std::string value;
	ASSERT_NE(shader->GetCoord("uv"), nullptr);
	EXPECT_TRUE(shader->GetCoord("uv")->Get(value));
	EXPECT_EQ(value, "TexCoord0");
	EXPECT_EQ(shader->GetCoord("uv")->GetClass(), IParameter::kParameterClass_Coord);
}

TEST_F(ShaderInstanceTest, ATransformedCoordinateMustBeAVector3)
{
	Load("bent.tsl", "class Bent\n{\n\tnormal vec2 n;\n\tfloat F() { return n.x; }\n}\n");
	Result result;
	EXPECT_EQ(mgr.CreateShader("Bent", &result), nullptr);
	EXPECT_TRUE(console.HasMessage("ParameterCoord::Init Transformed Coords must be declared vec3\n"));
}

TEST_F(ShaderInstanceTest, EachGraphIsMadeOnceAndAnnounced)
{
	IShader* shader = Create("Wood");
	ASSERT_NE(shader, nullptr);
	Counter<IGraph*> created;
	IShader::ListenerCreateGraph listener = created.Delegate();
	shader->AddListenerCreateGraphSurface(listener);
	EXPECT_EQ(shader->PeekGraphSurface(), nullptr);
	IGraph* surface = shader->GetGraphSurface();
	ASSERT_NE(surface, nullptr);
	EXPECT_EQ(shader->GetGraphSurface(), surface);
	EXPECT_EQ(created.n, 1);
	EXPECT_EQ(surface->GetShader(), shader);
	EXPECT_EQ(surface->GetName(), "Wood");
	EXPECT_EQ(surface->GetType(), IQLShader::kType_Ray);
	EXPECT_EQ(shader->GetGraphFrame()->GetType(), IQLShader::kType_Frame);
	EXPECT_EQ(shader->GetGraphPrefix()->GetType(), IQLShader::kType_PrefixRay);
	shader->ShutdownGraphSurface();
	EXPECT_EQ(shader->PeekGraphSurface(), nullptr);
	EXPECT_EQ(created.n, 1);
}

TEST_F(ShaderInstanceTest, ReferencesAreCountedPerGraph)
{
	IShader* shader = Create("Wood");
	// Another shader's graph, which holds only its own root.
	IGraph* graph = Create("Wood")->GetGraphSurface();
	EXPECT_EQ(shader->GetReference(graph), nullptr);
	IReferenceShader* reference = shader->AcquireReference(graph);
	ASSERT_NE(reference, nullptr);
	EXPECT_EQ(shader->AcquireReference(graph), reference);
	EXPECT_EQ(shader->GetReference(graph), reference);
	EXPECT_TRUE(shader->ReleaseReference(reference));
	EXPECT_EQ(shader->GetReference(graph), reference);
	EXPECT_TRUE(shader->ReleaseReference(reference));
	EXPECT_EQ(shader->GetReference(graph), nullptr);
	EXPECT_FALSE(shader->ReleaseReference(reference));
	EXPECT_TRUE(console.HasMessage("Shader::ReleaseReference Reference Not Found\n"));
}

TEST_F(ShaderInstanceTest, DestroyingAShaderTellsItsListenersAndReturnsEveryKey)
{
	ASSERT_NE(mgr.GetPrototypeShader("Wood", nullptr), nullptr); // the class's own keys stay
	const size_t keysBefore = Impl()->GetCountKeys();
	IShader* shader = Create("Wood");
	shader->GetGraphFrame();
	shader->AcquireReference(shader->GetGraphSurface());
	EXPECT_GT(Impl()->GetCountKeys(), keysBefore);
	Counter<IShader*> deleted;
	IShader::ListenerShader listener = deleted.Delegate();
	shader->AddListenerDelete(listener);
	mgr.DestroyShader(shader);
	EXPECT_EQ(deleted.n, 1);
	EXPECT_EQ(Impl()->GetCountKeys(), keysBefore);
}

} // namespace
} // namespace Tarsel::Effects::Testing
