#include "EffectTestSupport.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kLightsLibrary = R"(
interface Light { vec3 Illuminate(); }
class Lamp : Light
{
	input float power = 1.0;
	vec3 Illuminate() { return vec3(power); }
}
class Lit : Surface
{
	output vec3 o_color;
	input Light lights[2];
	void Shade()
	{
		vec3 c = vec3(0.0);
		for (int i = 0; i < lights.length; ++i)
			c += lights[i].Illuminate();
		accumulate(o_color, c);
	}
	int GetRayCount(int rayClass) { return 0; }
}
)";

class EffectInputsTest : public EffectTest
{
protected:
	void SetUp() override
	{
		Load("Lights.tsl", kLightsLibrary);
		lit = Create("Lit");
		lamp = Create("Lamp");
		surface = mgr.CreateEffectSurface();
		surface->SetName("scene");
		Effect(surface, lit, {Primitive(), Primitive()});
	}

	IShader* lit = nullptr;
	IShader* lamp = nullptr;
	IEffect* surface = nullptr;
	RecordingConsole process;
	ScopedMgrConsole scoped{&process};
};

TEST_F(EffectInputsTest, AnEmptySlotOfAnInputArrayIsNamedByItsPath)
{
	ASSERT_TRUE(lit->SetParameter(nullptr, "lights", lamp, 0));
	Result result;
	EXPECT_FALSE(mgr.Update(&result));
	EXPECT_EQ(Messages(process.GetMessages()),
	          "Effect::Apply Not Compiled for scene\n"
	          "Interface input doesn't have a shader attached for scene.lights[1]\n");
	EXPECT_TRUE(vPrimitives[0]->GetWrites().empty());
}

TEST_F(EffectInputsTest, ConnectedShadersReplayTheirValuesAndRecompileOnReconnection)
{
	IShader* second = Create("Lamp");
	ASSERT_TRUE(lit->SetParameter(nullptr, "lights", lamp, 0));
	ASSERT_TRUE(lit->SetParameter(nullptr, "lights", second, 1));
	Update();
	ASSERT_TRUE(surface->IsCompiled());
	const size_t full = vPrimitives[0]->GetWrites().size();
	EXPECT_GE(full, 3u) << Violations(vPrimitives[0].get());

	ClearWrites();
	ASSERT_TRUE(second->SetParameter(nullptr, "power", 0.25f));
	Update();
	for (auto& primitive : vPrimitives)
	{
		ASSERT_EQ(primitive->GetWrites().size(), 1u) << Violations(primitive.get());
		EXPECT_EQ(primitive->GetWrites()[0].Values<float>(), std::vector<float>{0.25f});
	}

	ClearWrites();
	ASSERT_TRUE(lit->SetParameter(nullptr, "lights", lamp, 1));
	EXPECT_FALSE(surface->IsCompiled());
	Update();
	EXPECT_TRUE(surface->IsCompiled());
	EXPECT_FALSE(vPrimitives[1]->GetWrites().empty());
	EXPECT_TRUE(vPrimitives[1]->GetViolations().empty()) << Violations(vPrimitives[1].get());
}

} // namespace
} // namespace Tarsel::Effects::Testing
