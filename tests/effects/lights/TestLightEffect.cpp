#include "LightsTestSupport.h"
#include "effects/IEffect.h"
#include "effects/IReferenceEffect.h"
#include "quillon/Interpreter.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const float kPi = 3.14159265358979f;

// A surface effect whose material is lit through the manager class, on one primitive.
class LightEffectTest : public LightsTest
{
protected:
	LightEffectTest()
	{
		EXPECT_TRUE(InitLights());
		EXPECT_TRUE(mgr.SetOutputAttachmentIndex("o_color", 0));
		matte = Create("MatteLightSet");
		receiver = lights.CreateShader("LightManagerArray", nullptr);
		effect = mgr.CreateEffectSurface();
		EXPECT_TRUE(effect && effect->SetRoot(matte));
		if (effect)
			effect->CreateReference(&primitive);
	}
	~LightEffectTest() override
	{
		mgr.DestroyEffectSurface(effect);
		lights.Shutdown();
	}

	void Update()
	{
		Result result;
		ASSERT_TRUE(mgr.Update(&result)) << result.GetText();
	}
	// What the program accumulates at the origin, lit from above.
	float Shade()
	{
		QLRunInputs inputs;
		inputs.rayDirection = Vector3f(0.0f, -1.0f, 0.0f);
		inputs.variables["Normal"] = QLComponents{0.0, 1.0, 0.0};
		inputs.variables["Position_WorldSpace"] = QLComponents{0.0, 0.0, 0.0, 1.0};
		QLRunResults results;
		EXPECT_TRUE(
		    interpreter.Run(effect->GetQLProgram(), IQLShader::kType_Ray, &primitive, inputs, results))
		    << results.error;
		return results.accumulated.count(0) ? results.accumulated[0].x : -1.0f;
	}
	IShader* matte = nullptr;
	IShader* receiver = nullptr;
	IEffect* effect = nullptr;
	ReferencePrimitive primitive;
	Interpreter interpreter;
};

TEST_F(LightEffectTest, LightsOfTwoClassesShadeThroughTheManagerAndAChangeReachesOnlyItsElement)
{
	IShader* shaders[] = {Light("LightPointArray"), Light("LightPointArray"), Light("LightDirectArray")};
	for (IShader* point : {shaders[0], shaders[1]})
		ASSERT_TRUE(point->SetParameter(nullptr, "position", Vector3f(0.0f, 2.0f, 0.0f)));
	ASSERT_TRUE(shaders[1]->SetParameter(nullptr, "intensity", 5.0f));
	ASSERT_TRUE(shaders[2]->SetParameter(nullptr, "direction", Vector3f(0.0f, -1.0f, 0.0f)));
	ASSERT_TRUE(shaders[2]->SetParameter(nullptr, "color", Vector3f(1.0f, 1.0f, 1.0f)));
	ASSERT_TRUE(shaders[2]->SetParameter(nullptr, "intensity", 2.0f));
	ASSERT_TRUE(receiver->SetParameter(nullptr, "lights", shaders, 3));
	ASSERT_TRUE(matte->SetParameter(nullptr, "lightSet", receiver));
	Update();
	ASSERT_TRUE(effect->IsCompiled());
	EXPECT_TRUE(primitive.GetViolations().empty());
	EXPECT_NEAR(Shade(), 0.8f / kPi * (10.0f + 5.0f + 2.0f), 1e-5);

	// The change is replayed as the one block of the class, in which only the light's element moved.
	const size_t nBefore = primitive.GetWrites().size();
	ASSERT_TRUE(shaders[1]->SetParameter(nullptr, "intensity", 7.0f));
	Update();
	ASSERT_EQ(primitive.GetWrites().size(), nBefore + 2u);
	EXPECT_EQ(primitive.GetWrites()[nBefore].uniform, BlockName("LightPointArray", "intensity"));
	EXPECT_EQ(primitive.GetWrites()[nBefore + 1].uniform,
	          BlockName("LightPointArray", "intensity") + "Length");
	EXPECT_EQ(Block("LightPointArray", "intensity"), (std::vector<float>{10.0f, 7.0f}));
	EXPECT_NEAR(Shade(), 0.8f / kPi * (10.0f + 7.0f + 2.0f), 1e-5);
}

} // namespace
} // namespace Tarsel::Effects::Testing
