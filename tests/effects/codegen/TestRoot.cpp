#include "../manager/ManagerTestSupport.h"
#include "TestRootSupport.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const std::string kGlobals = "\nivec4 g_rayDepthMax;\nint g_rayDepthMaxDummy;\nint g_rayDepthMaxTotal;\n"
                             "float g_rayMinContrib;\n";
const std::string kVaryings = "varying vec3 Normal;\nvarying vec4 Position_WorldSpace;\n";
const std::string kRayAttributes =
    "rayattribute int auxInfo;\nrayattribute vec3 color;\nrayattribute int depthInfo;\n"
    "rayattribute vec3 prefixPrimitiveAuxColor;\n"
    "rayattribute float prefixPrimitiveAuxFloat;\nrayattribute int samplingState;\n";
const std::string kDeclarationsRay = kGlobals + kVaryings + kRayAttributes;

const char* const kPrototypesAndEntriesWood = R"(
int Wood_GetRayCount$s(int rayClass);
void Wood_Init$s();
void Wood_Shade$s();
void _ctor_instance$k();
void _ctor_static$k();

void main()
{
	_ctor_static$k();
	_ctor_instance$k();
	Wood_Shade$s();
}

void setup()
{
	Wood_Init$s();
	ql_OutputRayCount[0] = Wood_GetRayCount$s(0);
	ql_OutputRayCount[1] = Wood_GetRayCount$s(1);
	ql_OutputRayCount[2] = Wood_GetRayCount$s(2);
	ql_OutputRayCount[3] = Wood_GetRayCount$s(3);
	ql_OutputRayCount[4] = Wood_GetRayCount$s(4);
	ql_OutputRayCount[5] = Wood_GetRayCount$s(5);
	ql_OutputRayCount[6] = Wood_GetRayCount$s(6);
	ql_OutputRayCount[7] = Wood_GetRayCount$s(7);
}

)";

class RootTest : public GraphTest
{
protected:
	void SetUp() override { Load("Entry.tsl", kEntryLibrary); }
	// "$s" becomes the root shader's key text, "$k" the graph's.
	static std::string Expand(std::string text, IGraph* graph)
	{
		const std::string shader = graph->GetShader()->GetKeyString();
		const std::string own = graph->GetNameMangled().substr(graph->GetName().size());
		for (size_t at = text.find('$'); at != std::string::npos; at = text.find('$', at))
		{
			const std::string& by = text[at + 1] == 's' ? shader : own;
			text.replace(at, 2, by);
			at += by.size();
		}
		return text;
	}
	static void Link(EffectDouble& effect)
	{
		Result result;
		EXPECT_TRUE(effect.CompileAndLink(&result)) << result.GetText() << "\n" << effect.RootText();
	}
	static std::string LinkedRoot(EffectDouble& effect)
	{
		Link(effect);
		return effect.RootText();
	}
};

TEST_F(RootTest, SurfaceRootsCallInitAndEveryRayCountOnlyWhenTheClassHasThem)
{
	IGraph* wood = Create("Wood")->GetGraphSurface();
	EffectDouble withBoth(&mgr, wood);
	EXPECT_EQ(LinkedRoot(withBoth), Expand(kDeclarationsRay + (kPrototypesAndEntriesWood), wood));
	EXPECT_EQ(withBoth.root->GetName(), wood->GetNameMangled() + "_root");

	IGraph* bare = Create("Bare")->GetGraphSurface();
	EffectDouble withNeither(&mgr, bare);
	EXPECT_EQ(LinkedRoot(withNeither), Expand(kDeclarationsRay + (R"(
void Bare_Shade$s();
void _ctor_instance$k();
void _ctor_static$k();

void main()
{
	_ctor_static$k();
	_ctor_instance$k();
	Bare_Shade$s();
}

void setup()
{
}

)"),
	                                          bare));
}

TEST_F(RootTest, APrefixRootIsASurfaceRootWithoutVaryings)
{
	IGraph* graph = Create("Wood")->GetGraphPrefix();
	EffectDouble effect(&mgr, graph);
	EXPECT_EQ(LinkedRoot(effect), Expand(kGlobals + kRayAttributes + kPrototypesAndEntriesWood, graph));
	EXPECT_EQ(CompilerShaderRootPrefixRay::GetType(), IQLShader::kType_PrefixRay);
}

TEST_F(RootTest, AFrameRootCountsOneKindOfRayAndHasNoGlobalsOrConstructors)
{
	IGraph* camera = Create("Camera")->GetGraphFrame();
	EffectDouble effect(&mgr, camera);
	EXPECT_EQ(LinkedRoot(effect), Expand("\n" + kRayAttributes + R"(
int Camera_GetRayCount$s();
void Camera_Init$s();
void Camera_Render$s();

void main()
{
	Camera_Render$s();
}

void setup()
{
	Camera_Init$s();
	ql_OutputRayCount = Camera_GetRayCount$s();
}

)",
	                                     camera));
	EffectDouble still(&mgr, Create("Still")->GetGraphFrame());
	EXPECT_NE(LinkedRoot(still).find("void setup()\n{\n}\n"), std::string::npos);
	EXPECT_EQ(CompilerShaderRootFrame::GetType(), IQLShader::kType_Frame);
}

TEST_F(RootTest, PadAttributesFollowTheBuiltInOnes)
{
	ScopedEnv pads("TZR_RAY_ATTRIBUTE_PAD_INTS", "2");
	MgrEffects padded;
	ASSERT_TRUE(padded.Init(&console, &context, nullptr));
	Result result;
	ASSERT_TRUE(padded.AddLibrary("Entry.tsl", kEntryLibrary, &result));
	IShader* shader = padded.CreateShader("Bare", &result);
	ASSERT_NE(shader, nullptr);
	{
		EffectDouble effect(&padded, shader->GetGraphSurface());
		EXPECT_NE(
		    LinkedRoot(effect).find("rayattribute float prefixPrimitiveAuxFloat;\nrayattribute int rayPad0;\n"
		                            "rayattribute int rayPad1;\nrayattribute int samplingState;\n"),
		    std::string::npos)
		    << effect.RootText();
	}
	padded.Shutdown();
}

TEST_F(RootTest, ARootClassWithoutTheEntryMethodFailsSilently)
{
	Compile(Create("Camera")->GetGraphSurface());
	EffectDouble surface(&mgr, Create("Camera")->GetGraphSurface());
	EffectDouble frame(&mgr, Create("Wood")->GetGraphFrame());
	const size_t messages = console.GetMessages().size();
	for (EffectDouble* effect : {&surface, &frame})
	{
		Result result;
		EXPECT_FALSE(effect->CompileRoot(&result));
		EXPECT_TRUE(result.IsEmpty()) << result.GetText();
		EXPECT_EQ(effect->RootText(), "");
	}
	EXPECT_EQ(console.GetMessages().size(), messages);
}

TEST_F(RootTest, DeviceErrorsReachTheCallerUntranslated)
{
	// Each root handed to an API shader of the other stage, where ql_OutputRayCount has the other shape.
	EffectDouble surface(&mgr, Create("Wood")->GetGraphSurface());
	surface.root = context.CreateShader(IQLShader::kType_Frame);
	EffectDouble frame(&mgr, Create("Camera")->GetGraphFrame());
	frame.root = context.CreateShader(IQLShader::kType_Ray);
	for (EffectDouble* effect : {&surface, &frame})
	{
		console.Clear();
		Result result;
		EXPECT_FALSE(effect->CompileRoot(&result));
		ASSERT_FALSE(result.IsEmpty());
		for (const std::string& message : result.GetMessages())
			EXPECT_EQ(message.rfind("ERROR: String 0 Line ", 0), 0u) << message;
		const bool reported = console.HasMessage("CompilerShaderRootRay::Compile SetString\n");
		EXPECT_EQ(reported, effect == &surface);
	}
}

} // namespace
} // namespace Tarsel::Effects::Testing
