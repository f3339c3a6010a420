#include <set>

#include "LightsTestSupport.h"

namespace Tarsel::Effects::Testing
{
namespace
{

std::vector<std::string> Names(IShader* shader)
{
	struct Names_
	{
		std::vector<std::string> v;
		bool On(const std::string& name, IParameter*)
		{
			v.push_back(name);
			return true;
		}
	} names;
	IShader::VisitorParameter visitor = MakeDelegate(&names, &Names_::On);
	shader->VisitParameters(visitor);
	return names.v;
}

class LightWrapperTest : public LightsTest
{
protected:
	LightWrapperTest() { EXPECT_TRUE(InitLights()); }

	IShader* Receiver()
	{
		Result result;
		IShader* receiver = lights.CreateShader("LightManagerArray", &result);
		EXPECT_NE(dynamic_cast<Shader_LightShaderReceiver*>(receiver), nullptr) << result.GetText();
		return receiver;
	}
	static IShader* Wrapped(IShader* shader)
	{
		return dynamic_cast<IShaderWrapper*>(shader)->GetShaderWrapped();
	}
	IShader* Slot(IShader* shader, const std::string& input, int slot)
	{
		IShader* held = nullptr;
		EXPECT_TRUE(Wrapped(shader)->GetParameter(input)->Get(held, slot));
		return held;
	}
};

TEST_F(LightWrapperTest, ALightShowsItsElementsAndItsInputsButNotTheIndexers)
{
	Shader_LightShader* point = Light("LightPointArray");
	const std::vector<std::string> names = Names(point);
	const std::set<std::string> shown(names.begin(), names.end());
	for (const char* name : {"intensity", "position", "color", "decay", "focus", "emission", "shadow"})
		EXPECT_EQ(shown.count(name), 1u) << name;
	for (const char* name : {"decayRef", "focusRef", "emissionRef", "shadowRef"})
	{
		EXPECT_EQ(shown.count(name), 0u) << name;
		EXPECT_EQ(point->GetParameter(name), nullptr) << name;
	}
	IParameter* intensity = point->GetParameter("intensity");
	EXPECT_FALSE(intensity->IsArray());
	EXPECT_EQ(intensity->GetLength(), 1);
	EXPECT_FALSE(intensity->SetLength(3));
	EXPECT_EQ(intensity->GetType(), "float");
	EXPECT_FALSE(point->GetParameter("shadow")->IsArray());

	// Every open input got the null shader of its interface.
	IShader* shadow = nullptr;
	ASSERT_TRUE(point->GetParameter("shadow")->Get(shadow));
	EXPECT_EQ(shadow, lights.GetShaderNull("Shadow"));
	EXPECT_EQ(Slot(point, "shadow", 0), Wrapped(lights.GetShaderNull("Shadow")));
	EXPECT_TRUE(point->IsComplete());
}

TEST_F(LightWrapperTest, LightsOfOneClassShareASlotOfAnInputAndAnotherClassAddsOne)
{
	Shader_LightShader* a = Light("LightPointArray");
	Shader_LightShader* b = Light("LightPointArray");
	Shader_LightShader* sharp0 = Light("ShadowSharpArray");
	Shader_LightShader* sharp1 = Light("ShadowSharpArray");
	Result result;
	ASSERT_TRUE(a->SetParameter(&result, "shadow", sharp0)) << result.GetText();
	ASSERT_TRUE(b->SetParameter(&result, "shadow", sharp1)) << result.GetText();
	// Slot 0 keeps the null shadow; the sharp shadows of both lights share slot 1.
	EXPECT_EQ(Wrapped(a)->GetParameter("shadow")->GetLength(), 2);
	EXPECT_EQ(Slot(a, "shadow", 1), Wrapped(sharp0));
	EXPECT_EQ(Element<Vector2i>("LightPointArray", "shadowRef", 0), Vector2i(1, 0));
	EXPECT_EQ(Element<Vector2i>("LightPointArray", "shadowRef", 1), Vector2i(1, 1));
	IShader* connected = nullptr;
	ASSERT_TRUE(b->GetParameter("shadow")->Get(connected));
	EXPECT_EQ(connected, sharp1);

	// Connecting the same light again changes nothing; another class takes a new slot.
	ASSERT_TRUE(a->SetParameter(&result, "shadow", sharp0));
	ASSERT_TRUE(a->SetParameter(&result, "focus", Light("LightFocusConeArray")));
	EXPECT_EQ(Wrapped(a)->GetParameter("focus")->GetLength(), 2);
	EXPECT_EQ(Element<Vector2i>("LightPointArray", "focusRef", 0), Vector2i(1, 0));
	EXPECT_EQ(Element<Vector2i>("LightPointArray", "focusRef", 1), Vector2i(0, 0));

	// A light made after another was destroyed (often at the same address) is connected with its own element.
	ASSERT_TRUE(lights.DestroyShader(sharp1));
	Shader_LightShader* sharp2 = Light("ShadowSharpArray");
	ASSERT_TRUE(b->SetParameter(&result, "shadow", sharp2));
	EXPECT_EQ(Element<Vector2i>("LightPointArray", "shadowRef", 1), Vector2i(1, 2));

	// A shader of the wrong interface is refused by the input and nothing is written.
	EXPECT_FALSE(a->SetParameter(&result, "decay", Light("EmissionSurfaceDiffuseArray")));
	EXPECT_EQ(Element<Vector2i>("LightPointArray", "decayRef", 0), Vector2i(0, 0));
}

TEST_F(LightWrapperTest, DisconnectingAndDeletingALightMarkItsIndexerElement)
{
	Shader_LightShader* a = Light("LightPointArray");
	Shader_LightShader* b = Light("LightPointArray");
	ASSERT_TRUE(a->SetParameter(nullptr, "shadow", Light("ShadowSharpArray")));
	ASSERT_TRUE(a->GetParameter("shadow")->Set(static_cast<IShader*>(nullptr)));
	EXPECT_EQ(Element<Vector2i>("LightPointArray", "shadowRef", 0), Vector2i(-1, -1));
	IShader* connected = a;
	ASSERT_TRUE(a->GetParameter("shadow")->Get(connected));
	EXPECT_EQ(connected, nullptr);

	ASSERT_TRUE(lights.DestroyShader(a));
	for (const char* input : {"shadowRef", "decayRef", "focusRef", "emissionRef"})
	{
		EXPECT_EQ(Element<Vector2i>("LightPointArray", input, 0), Vector2i(-2, -2)) << input;
		EXPECT_EQ(Element<Vector2i>("LightPointArray", input, 1), Vector2i(0, 0)) << input;
	}
	EXPECT_EQ(b->GetIndex(), 1);
	EXPECT_TRUE(asserts.GetReports().empty());
}

TEST_F(LightWrapperTest, AReceiverCollectsLightsOfAnyClassOneSlotPerClass)
{
	IShader* receiver = Receiver();
	EXPECT_EQ(receiver->GetParameter("lightsRef"), nullptr);
	IParameter* input = receiver->GetParameter("lights");
	ASSERT_TRUE(input->SetLength(4));
	EXPECT_EQ(input->GetLength(), 4);
	Shader_LightShader* p0 = Light("LightPointArray");
	Shader_LightShader* p1 = Light("LightPointArray");
	Shader_LightShader* d0 = Light("LightDirectArray");
	ASSERT_TRUE(input->Set(p1, 0));
	ASSERT_TRUE(input->Set(d0, 1));
	ASSERT_TRUE(input->Set(p0, 2));
	ASSERT_TRUE(receiver->SetParameter(nullptr, "lights", p1, 3));

	IParameter* indexer = Wrapped(receiver)->GetParameter("lightsRef");
	const Vector2i expected[] = {Vector2i(0, 1), Vector2i(1, 0), Vector2i(0, 0), Vector2i(0, 1)};
	for (int i = 0; i < 4; ++i)
	{
		Vector2i value;
		ASSERT_TRUE(indexer->Get(value, i));
		EXPECT_EQ(value, expected[i]) << i;
	}
	EXPECT_EQ(Wrapped(receiver)->GetParameter("lights")->GetLength(), 2);
	EXPECT_EQ(Slot(receiver, "lights", 0), Wrapped(p0));
	EXPECT_EQ(Slot(receiver, "lights", 1), Wrapped(d0));
	IShader* connected = nullptr;
	ASSERT_TRUE(input->Get(connected, 1));
	EXPECT_EQ(connected, d0);
	EXPECT_FALSE(input->Get(connected, 4));
	EXPECT_TRUE(receiver->IsComplete());

	// The array form takes the count as the new length.
	IShader* both[] = {d0, p0};
	ASSERT_TRUE(receiver->SetParameter(nullptr, "lights", both, 2));
	EXPECT_EQ(input->GetLength(), 2);
	Vector2i second;
	ASSERT_TRUE(indexer->Get(second, 1));
	EXPECT_EQ(second, Vector2i(0, 0));

	// A cleared connection leaves the class's slot to its other lights.
	ASSERT_TRUE(input->Set(static_cast<IShader*>(nullptr), 0));
	Vector2i cleared;
	ASSERT_TRUE(indexer->Get(cleared, 0));
	EXPECT_EQ(cleared, Vector2i(-1, -1));
	EXPECT_EQ(Slot(receiver, "lights", 0), Wrapped(p0));
	EXPECT_FALSE(input->Set(p0, 4));
}

const char* const kCollectors = R"(
interface Count
{
	int Get();
}
class OneClass : Count
{
	input LightArray one;
	input int oneRef[];
	int Get() { return oneRef.length; }
}
class WrongSingle : Count
{
	input LightArray a;
	input ivec2 aRef[];
	input LightArray b[];
	input ivec2 bRef[];
	int Get() { return 0; }
}
class WrongArray : Count
{
	input LightArray a[];
	input int aRef[];
	input float z[];
	int Get() { return 0; }
}
)";

TEST_F(LightWrapperTest, ASingleInputCollectsLightsOfOneClassOnly)
{
	Load("Collectors.tsl", kCollectors);
	lights.AddShaderManager("OneClass");
	IShader* receiver = lights.CreateShader("OneClass", nullptr);
	ASSERT_NE(receiver, nullptr);
	IParameter* input = receiver->GetParameter("one");
	ASSERT_TRUE(input->SetLength(2));
	Light("LightPointArray");
	Shader_LightShader* p1 = Light("LightPointArray");
	ASSERT_TRUE(input->Set(p1, 1));
	int value = -1;
	ASSERT_TRUE(Wrapped(receiver)->GetParameter("oneRef")->Get(value, 1));
	EXPECT_EQ(value, 1);
	IShader* held = nullptr;
	ASSERT_TRUE(Wrapped(receiver)->GetParameter("one")->Get(held));
	EXPECT_EQ(held, Wrapped(p1));

	EXPECT_FALSE(input->Set(Light("LightDirectArray"), 0));
	EXPECT_TRUE(Asserted("false",
	                     "incoming shader is different from the existing one for the vectorized shader "
	                     "input. Unconnect all inputs then connect the new shader."));
	ASSERT_TRUE(input->Set(static_cast<IShader*>(nullptr), 1));
	ASSERT_TRUE(Wrapped(receiver)->GetParameter("one")->Get(held));
	EXPECT_EQ(held, nullptr);
}

TEST_F(LightWrapperTest, AnIndexerOfTheWrongTypeStopsTheWrapping)
{
	Load("Collectors.tsl", kCollectors);
	Shader_LightShaderReceiver receiver;
	ASSERT_TRUE(receiver.Init(&mgr, Create("WrongSingle")));
	EXPECT_TRUE(Asserted("false", "interface input requires int indexer parameter."));
	// "a" comes first, so "b" is never wrapped and its indexer stays visible.
	EXPECT_NE(receiver.GetParameter("bRef"), nullptr);
	EXPECT_NE(receiver.GetParameter("aRef"), nullptr);

	Shader_LightShader light;
	ASSERT_TRUE(light.Init(&mgr, Create("WrongArray"), 0));
	EXPECT_TRUE(Asserted("false", "array interface input requires ivec2 indexer parameter."));
	EXPECT_TRUE(light.GetParameter("z")->IsArray());
	EXPECT_NE(light.GetParameter("aRef"), nullptr);
}

TEST_F(LightWrapperTest, AShaderConnectsTheShaderBehindAWrapper)
{
	IShader* matte = Create("MatteLightSet");
	IShader* receiver = Receiver();
	Result result;
	ASSERT_TRUE(matte->SetParameter(&result, "lightSet", receiver)) << result.GetText();
	IShader* held = nullptr;
	ASSERT_TRUE(matte->GetParameter("lightSet")->Get(held));
	EXPECT_EQ(held, Wrapped(receiver));

	// Indexed and array forms take only shaders themselves.
	IShader* point = Light("LightPointArray");
	EXPECT_FALSE(Wrapped(receiver)->SetParameter(&result, "lights", point, 0));
	EXPECT_NE(ShaderTest::Text(result).find("can not be attached"), std::string::npos);
}

TEST_F(LightWrapperTest, AWrapperWhoseShaderIsDeletedUnderItReportsTheLeak)
{
	Load("Collectors.tsl", kCollectors);
	IShader* shader = Create("OneClass");
	{
		Shader_LightShaderReceiver receiver;
		ASSERT_TRUE(receiver.Init(&mgr, shader));
		receiver.GetParameter("one")->SetLength(1);
		mgr.DestroyShader(shader);
		EXPECT_TRUE(Asserted("false", "possible object leak"));
		EXPECT_EQ(receiver.GetShaderWrapped(), nullptr);
		EXPECT_EQ(receiver.GetClassName(), "");
		EXPECT_FALSE(receiver.GetParameter("one")->Set(static_cast<IShader*>(nullptr), 0));
	}
}

} // namespace
} // namespace Tarsel::Effects::Testing
