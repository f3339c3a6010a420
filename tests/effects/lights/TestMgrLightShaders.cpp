#include "LightsTestSupport.h"

namespace Tarsel::Effects::Testing
{
namespace
{

// Eleven null classes, each implementing the interface given for it, and nothing else.
std::string NullLibrary(const std::vector<std::string>& interfaces)
{
	static const char* const kClasses[] = {
	    "LightDecayNullArray", "LightFocusNullArray", "EmissionNullArray",     "ProjectorMapNullArray",
	    "ShadowNullArray",     "LightNullArray",      "Integrator2Null",       "Integrator3Null",
	    "Integrator6Null",     "TextureBlack",        "LightInstanceNullArray"};
	std::string text;
	for (const std::string& name : std::set<std::string>(interfaces.begin(), interfaces.end()))
		text += "interface " + name + "\n{\n\tfloat Get();\n}\n";
	for (size_t i = 0; i < interfaces.size(); ++i)
		text += std::string("class ") + kClasses[i] + " : " + interfaces[i] +
		        "\n{\n\tfloat Get()\n\t{\n\t\treturn 1.0;\n\t}\n}\n";
	return text;
}

std::vector<std::string> Distinct(int n)
{
	std::vector<std::string> names;
	for (int i = 0; i < n; ++i)
		names.push_back("I" + std::to_string(i));
	return names;
}

TEST_F(LightsTest, InitMakesOneNullShaderPerInterfaceAndOpensTheRecordsOfArrayNulls)
{
	ASSERT_TRUE(InitLights());
	auto* decay = dynamic_cast<Shader_LightShader*>(lights.GetShaderNull("LightDecay"));
	ASSERT_NE(decay, nullptr);
	EXPECT_EQ(decay->GetIndex(), 0);
	EXPECT_EQ(lights.GetRecord("LightDecayNullArray")->nCounter, 1u);
	// Classes that are not array classes give plain shaders.
	IShader* black = lights.GetShaderNull("Texture");
	ASSERT_NE(black, nullptr);
	EXPECT_EQ(black->GetShaderType(), IShader::kShaderType_Shader);
	EXPECT_EQ(black->GetClassName(), "TextureBlack");
	for (const char* name : {"LightFocus", "Emission", "ProjectorMap", "Shadow", "LightArray", "Integrator2",
	                         "Integrator3", "Integrator6", "LightInstance"})
		EXPECT_NE(lights.GetShaderNull(name), nullptr) << name;
	EXPECT_TRUE(asserts.GetReports().empty());

	// A second Init starts over instead of finding its own null shaders in the way.
	ASSERT_TRUE(InitLights());
	EXPECT_EQ(lights.GetRecord("LightDecayNullArray")->nCounter, 1u);
}

TEST_F(ShaderTest, InitFailsWithoutManagerOrConsoleOrWithNullClassesThatCollide)
{
	MgrLightShaders lights;
	EXPECT_FALSE(lights.Init(nullptr, &console));
	EXPECT_FALSE(lights.Init(&mgr, nullptr));

	std::vector<std::string> interfaces = Distinct(11);
	interfaces[7] = interfaces[6];
	Load("Nulls.tsl", NullLibrary(interfaces));
	EXPECT_FALSE(lights.Init(&mgr, &console));
	EXPECT_EQ(lights.GetShaderNull("I6")->GetClassName(), "Integrator2Null");
	// Init stops at the first failure: the later null shaders are not made.
	EXPECT_EQ(lights.GetShaderNull("I9"), nullptr);
	lights.Shutdown();
}

TEST_F(ShaderTest, InitFailsAtAMissingNullClass)
{
	std::vector<std::string> interfaces = Distinct(9);
	Load("Nulls.tsl", NullLibrary(interfaces));
	MgrLightShaders lights;
	EXPECT_FALSE(lights.Init(&mgr, &console));
	EXPECT_NE(lights.GetShaderNull("I8"), nullptr);
	EXPECT_EQ(lights.GetRecord("LightInstanceNullArray"), nullptr);
}

TEST_F(LightsTest, LightsOfAClassShareOneShaderWhoseArraysGrowWithEachLight)
{
	ASSERT_TRUE(InitLights());
	Shader_LightShader* first = Light("LightPointArray");
	Shader_LightShader* second = Light("LightPointArray");
	ASSERT_TRUE(first && second);
	EXPECT_EQ(first->GetIndex(), 0);
	EXPECT_EQ(second->GetIndex(), 1);
	EXPECT_EQ(first->GetShaderWrapped(), second->GetShaderWrapped());
	EXPECT_EQ(first->GetShaderWrapped(), ArrayShader("LightPointArray"));
	for (const char* name : {"intensity", "position", "decayRef", "shadowRef"})
		EXPECT_EQ(Length("LightPointArray", name), 2) << name;

	// Each light reads and writes its own element; new elements start from the declared initializer.
	EXPECT_FLOAT_EQ(Element<float>("LightPointArray", "intensity", 1), 10.0f);
	ASSERT_TRUE(second->SetParameter(nullptr, "intensity", 4.0f));
	ASSERT_TRUE(second->SetParameter(nullptr, "position", Vector3f(1, 2, 3)));
	EXPECT_FLOAT_EQ(Element<float>("LightPointArray", "intensity", 0), 10.0f);
	EXPECT_FLOAT_EQ(Element<float>("LightPointArray", "intensity", 1), 4.0f);
	EXPECT_FLOAT_EQ(GetFloat(second, "intensity"), 4.0f);
	EXPECT_EQ(Element<Vector3f>("LightPointArray", "position", 1), Vector3f(1, 2, 3));
	std::string text;
	ASSERT_TRUE(second->GetParameter("intensity")->GetAsString(text));
	EXPECT_EQ(text, "4");

	// A set by a name nobody shows is reported like any shader's.
	EXPECT_FALSE(second->SetParameter(nullptr, "intensity", Vector3f()));
	EXPECT_EQ(Messages(context.GetMessages()),
	          "Parameter error \"Can't set parameter\" parameter:\"intensity\" class:\"LightPointArray\"\n");
}

TEST_F(LightsTest, UpdateArraysCompactsTheLightsAndMovesTheirValues)
{
	ASSERT_TRUE(InitLights());
	std::vector<Shader_LightShader*> points;
	for (int i = 0; i < 4; ++i)
	{
		points.push_back(Light("LightPointArray"));
		ASSERT_TRUE(points.back()->SetParameter(nullptr, "intensity", float(i + 1)));
		ASSERT_TRUE(points.back()->SetParameter(nullptr, "color", Vector3f(float(i), 0, 1)));
	}
	ASSERT_TRUE(lights.DestroyShader(points[0]));
	ASSERT_TRUE(lights.DestroyShader(points[2]));
	// Destroying keeps the lengths until the next renumbering.
	EXPECT_EQ(Length("LightPointArray", "intensity"), 4);

	ASSERT_TRUE(lights.UpdateArrays(false));
	EXPECT_EQ(points[1]->GetIndex(), 0);
	EXPECT_EQ(points[3]->GetIndex(), 1);
	EXPECT_EQ(Length("LightPointArray", "intensity"), 2);
	EXPECT_EQ(Length("LightPointArray", "shadowRef"), 2);
	EXPECT_FLOAT_EQ(Element<float>("LightPointArray", "intensity", 0), 2.0f);
	EXPECT_FLOAT_EQ(Element<float>("LightPointArray", "intensity", 1), 4.0f);
	EXPECT_EQ(Element<Vector3f>("LightPointArray", "color", 1), Vector3f(3, 0, 1));
	EXPECT_FLOAT_EQ(GetFloat(points[3], "intensity"), 4.0f);
	// The indexers moved too: both still reach the null shadow.
	EXPECT_EQ(Element<Vector2i>("LightPointArray", "shadowRef", 1), Vector2i(0, 0));

	// The counter is not renumbered: the next light takes the next index and the arrays grow to it.
	Shader_LightShader* next = Light("LightPointArray");
	EXPECT_EQ(next->GetIndex(), 4);
	EXPECT_EQ(Length("LightPointArray", "intensity"), 5);

	EXPECT_FALSE(lights.UpdateArrays(true));
	EXPECT_TRUE(Asserted("false", "implement"));
}

TEST_F(LightsTest, IndexChangesAreToldToListeners)
{
	ASSERT_TRUE(InitLights());
	Shader_LightShader* first = Light("LightDirectArray");
	Shader_LightShader* second = Light("LightDirectArray");
	struct Recorder
	{
		std::vector<int> olds;
		bool On(Shader_LightShader*, int old)
		{
			olds.push_back(old);
			return true;
		}
	} recorder;
	Shader_LightShader::ListenerChangeIndex listener = MakeDelegate(&recorder, &Recorder::On);
	ASSERT_TRUE(second->AddListenerChangeIndex(listener));
	ASSERT_TRUE(lights.DestroyShader(first));
	ASSERT_TRUE(lights.UpdateArrays(false));
	ASSERT_TRUE(lights.UpdateArrays(false));
	EXPECT_EQ(recorder.olds, std::vector<int>{1});
	ASSERT_TRUE(second->RemoveListenerChangeIndex(listener));
}

TEST_F(LightsTest, OtherClassesAreMadeAndDestroyedByTheEffectsManager)
{
	ASSERT_TRUE(InitLights());
	Result result;
	IShader* matte = lights.CreateShader("MatteLightSet", &result);
	ASSERT_NE(matte, nullptr) << result.GetText();
	EXPECT_EQ(matte->GetShaderType(), IShader::kShaderType_Shader);
	EXPECT_EQ(dynamic_cast<IShaderWrapper*>(matte), nullptr);
	EXPECT_EQ(matte->GetPrototypeShader(), mgr.GetPrototypeShader("MatteLightSet", nullptr));

	Result mine, theirs;
	EXPECT_EQ(lights.CreateShader("NoSuchClass", &mine), nullptr);
	EXPECT_EQ(mgr.CreateShader("NoSuchClass", &theirs), nullptr);
	EXPECT_EQ(mine.GetMessages(), theirs.GetMessages());
	EXPECT_EQ(lights.CreateShader("LightSpotArrayMissing", nullptr), nullptr);

	Counter<IShader*> deleted;
	IShader::ListenerShader listener = deleted.Delegate();
	matte->AddListenerDelete(listener);
	EXPECT_TRUE(lights.DestroyShader(matte));
	EXPECT_EQ(deleted.n, 1);
	EXPECT_TRUE(lights.DestroyShader(nullptr));
}

TEST_F(LightsTest, DestroyRefusesWrappersTheRecordsDoNotKnow)
{
	ASSERT_TRUE(InitLights());
	Shader_LightShader* point = Light("LightPointArray");

	Shader_LightShader stranger;
	ASSERT_TRUE(stranger.Init(&mgr, point->GetShaderWrapped(), 7));
	EXPECT_FALSE(lights.DestroyShader(&stranger));
	EXPECT_TRUE(Asserted("false", "LightShaderWrapper is not in the records"));

	IShader* other = Create("LightPointArray");
	Shader_LightShader mismatched;
	ASSERT_TRUE(mismatched.Init(&mgr, other, 0));
	EXPECT_FALSE(lights.DestroyShader(&mismatched));
	EXPECT_TRUE(Asserted("false", "The records don't match"));

	IShader* unrecorded = Create("LightDirectArray");
	Shader_LightShader corrupted;
	ASSERT_TRUE(corrupted.Init(&mgr, unrecorded, 0));
	EXPECT_FALSE(lights.DestroyShader(&corrupted));
	EXPECT_TRUE(Asserted("false", "Corrupted light shader record"));

	// The null shaders stay: every light's open inputs hold them.
	EXPECT_FALSE(lights.DestroyShader(lights.GetShaderNull("Shadow")));
	EXPECT_NE(dynamic_cast<IShaderWrapper*>(lights.GetShaderNull("Shadow"))->GetShaderWrapped(), nullptr);
	EXPECT_TRUE(lights.DestroyShader(point));
}

const char* const kUnlit = R"(
interface Glow
{
	float Get(int i);
}
class Lamp : Glow
{
	input Glow glow[];
	input ivec2 glowRef[];
	float Get(int i)
	{
		ivec2 r = glowRef[i];
		return glow[r.x].Get(r.y);
	}
}
)";

const char* const kProjector = R"(
interface Slide
{
	float Get(int i);
}
class Projector : Slide
{
	input float gain[] = 1.0;
	input sampler2D maps[];
	float Get(int i)
	{
		return gain[i];
	}
}
)";

TEST_F(LightsTest, RenumberingRefusesValuesItCannotMove)
{
	ASSERT_TRUE(InitLights());
	Load("Projector.tsl", kProjector);
	lights.AddShaderArray("Projector");
	Shader_LightShader* first = Light("Projector");
	Shader_LightShader* second = Light("Projector");
	ASSERT_TRUE(second->SetParameter(nullptr, "gain", 3.0f));
	ASSERT_TRUE(lights.DestroyShader(first));
	EXPECT_FALSE(lights.UpdateArrays(false));
	EXPECT_TRUE(Asserted("false", "don't know what to do"));
	EXPECT_FLOAT_EQ(Element<float>("Projector", "gain", 0), 3.0f);
}

TEST_F(LightsTest, ALightWhoseInputHasNoNullShaderIsRefused)
{
	ASSERT_TRUE(InitLights());
	Load("Lamp.tsl", kUnlit);
	lights.AddShaderArray("Lamp");
	EXPECT_EQ(lights.CreateShader("Lamp", nullptr), nullptr);
	EXPECT_TRUE(console.HasError("No NULL shader for Glow?"));
	EXPECT_TRUE(lights.GetRecord("Lamp")->setWrappers.empty());
}

TEST_F(LightsTest, ShutdownGivesBackEveryArrayShaderAndReceiverAndIsSafeToRepeat)
{
	ASSERT_TRUE(InitLights());
	Light("LightPointArray");
	IShader* receiver = lights.CreateShader("LightManagerArray", nullptr);
	ASSERT_NE(receiver, nullptr);
	Counter<IShader*> deleted;
	IShader::ListenerShader listener = deleted.Delegate();
	ArrayShader("LightPointArray")->AddListenerDelete(listener);
	dynamic_cast<IShaderWrapper*>(receiver)->GetShaderWrapped()->AddListenerDelete(listener);
	lights.Shutdown();
	EXPECT_EQ(deleted.n, 2);
	EXPECT_EQ(lights.GetRecord("LightPointArray"), nullptr);
	lights.Shutdown();
	EXPECT_TRUE(asserts.GetReports().empty());
}

// The wrong order of shutting down is reported, not crashed on.
TEST_F(LightsTest, AnEffectsManagerShutDownFirstTakesTheArrayShadersAlong)
{
	ASSERT_TRUE(InitLights());
	Shader_LightShader* point = Light("LightPointArray");
	mgr.Shutdown();
	EXPECT_TRUE(Asserted("false", "possible object leak"));
	EXPECT_EQ(point->GetShaderWrapped(), nullptr);
	EXPECT_EQ(point->GetParameter("intensity")->GetLength(), 1);
	EXPECT_FALSE(point->SetParameter(nullptr, "intensity", 1.0f));
	EXPECT_FALSE(lights.UpdateArrays(false));
	EXPECT_EQ(lights.CreateShader("LightPointArray", nullptr), nullptr);
	lights.Shutdown();
	EXPECT_TRUE(Asserted("false", "null shader in the records"));
}

TEST(MgrLightShadersSingleton, IsMadeOnceAndForgottenWhenDestroyed)
{
	IMgrLightShaders* first = CreateMgrLightShaders();
	EXPECT_EQ(CreateMgrLightShaders(), first);
	DestroyMgrLightShaders();
	DestroyMgrLightShaders();
	IMgrLightShaders* second = CreateMgrLightShaders();
	ASSERT_NE(second, nullptr);
	second->Destroy();
	EXPECT_NE(CreateMgrLightShaders(), nullptr);
	DestroyMgrLightShaders();
}

} // namespace
} // namespace Tarsel::Effects::Testing
