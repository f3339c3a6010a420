#include "TestShaderSupport.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kLights = R"(
interface Light
{
	vec3 Emit(vec3 P);
}
interface Surface
{
	vec3 Shade(vec3 P);
}
class Spot : Light
{
	vec3 Emit(vec3 P) { return P; }
}
class Point : Light
{
	vec3 Emit(vec3 P) { return -P; }
}
class Wood : Surface
{
	vec3 Shade(vec3 P) { return P; }
}
class Relay : Light
{
	input Light next;
	vec3 Emit(vec3 P) { return next.Emit(P); }
}
class Lit : Surface
{
	input Light key;
	input Spot spot;
	input Light fill = Spot();
	input Light lights[];
	input Light three[3];
	input Light pair[2] = Spot();
	input Light grown[] = Spot();
	input Light listed[] = Light[2](Spot(), Point());
	vec3 Shade(vec3 P) { return key.Emit(P); }
}
)";

class ParameterInterfaceTest : public ShaderTest
{
protected:
	void SetUp() override
	{
		Load("lights.tsl", kLights);
		lit = Create("Lit");
		spot = Create("Spot");
		point = Create("Point");
		wood = Create("Wood");
	}
	// The watches hear the deletions of the shaders that remain.
	void TearDown() override { mgr.Shutdown(); }
	IParameter* Input(const std::string& name) { return lit->GetParameter(name); }
	static IShader* At(IParameter* input, int index)
	{
		IShader* shader = reinterpret_cast<IShader*>(1);
		EXPECT_TRUE(input->Get(shader, index));
		return shader;
	}
	static std::vector<IShader*> Slots(IParameter* input)
	{
		std::vector<IShader*> shaders;
		for (int index = 0; index < input->GetLength(); ++index)
			shaders.push_back(At(input, index));
		return shaders;
	}
	// Counts deletions of a shader.
	Counter<IShader*>& WatchDelete(IShader* shader)
	{
		watches.emplace_back(new Counter<IShader*>());
		IShader::ListenerShader listener = watches.back()->Delegate();
		shader->AddListenerDelete(listener);
		return *watches.back();
	}

	IShader* lit = nullptr;
	IShader* spot = nullptr;
	IShader* point = nullptr;
	IShader* wood = nullptr;
	std::vector<std::unique_ptr<Counter<IShader*>>> watches;
};

TEST_F(ParameterInterfaceTest, ASingleInputTakesTheClassOrItsInterfaceAndARefusalChangesNothing)
{
	IParameter* key = Input("key");
	Counter<IParameter*> changed;
	key->AddListenerChangeStructure(changed.Delegate());
	EXPECT_EQ(key->GetClass(), IParameter::kParameterClass_Interface);
	EXPECT_EQ(key->GetType(), "Light");

	ASSERT_TRUE(lit->SetParameter(nullptr, "key", spot));
	EXPECT_EQ(At(key, 0), spot);
	EXPECT_EQ(changed.n, 1);
	ASSERT_TRUE(lit->SetParameter(nullptr, "key", spot));
	EXPECT_EQ(changed.n, 1);

	Result result;
	EXPECT_FALSE(lit->SetParameter(&result, "key", wood));
	EXPECT_EQ(Text(result), "Input type mismatch. Expected \"Light\" but got \"Surface::Wood\"\n|");
	EXPECT_EQ(At(key, 0), spot);
	EXPECT_EQ(changed.n, 1);

	// A class-typed input takes that class only, whatever interface the offered shader shares.
	IParameter* spotInput = Input("spot");
	EXPECT_TRUE(spotInput->Set(spot));
	Result classResult;
	EXPECT_FALSE(lit->SetParameter(&classResult, "spot", point));
	EXPECT_EQ(Text(classResult), "Input type mismatch. Expected \"Spot\" but got \"Light::Point\"\n|");
	EXPECT_EQ(At(spotInput, 0), spot);

	// Index 0 is the one slot; there is no other.
	EXPECT_TRUE(key->Set(point, 0));
	EXPECT_EQ(At(key, 0), point);
	EXPECT_FALSE(key->Set(spot, 1));
	IShader* none = nullptr;
	EXPECT_FALSE(key->Get(none, 1));
	EXPECT_TRUE(key->Set(static_cast<IShader*>(nullptr)));
	EXPECT_EQ(At(key, 0), nullptr);
	EXPECT_EQ(changed.n, 3);
	key->RemoveListenerChangeStructure(changed.Delegate());
}

TEST_F(ParameterInterfaceTest, AnArraySlotIsCheckedAndABadIndexOrShaderLeavesTheArray)
{
	IParameter* three = Input("three");
	Counter<IParameter*> changed;
	three->AddListenerChangeStructure(changed.Delegate());
	ASSERT_TRUE(lit->SetParameter(nullptr, "three", spot, 1));
	EXPECT_EQ(Slots(three), (std::vector<IShader*>{nullptr, spot, nullptr}));
	EXPECT_EQ(changed.n, 1);

	Result result;
	EXPECT_FALSE(lit->SetParameter(&result, "three", spot, 3));
	EXPECT_FALSE(lit->SetParameter(&result, "three", spot, -1));
	EXPECT_FALSE(lit->SetParameter(&result, "three", wood, 2));
	EXPECT_EQ(Text(result), "Index (3) out of bounds (length=3)|Index (-1) out of bounds (length=3)|"
	                        "Interface mismatch. Expected \"Light\" but got \"Surface::Wood\"|");
	EXPECT_TRUE(console.HasMessage("ParameterInterfaceArray::Set Index Out of Bounds\n"));
	EXPECT_EQ(Slots(three), (std::vector<IShader*>{nullptr, spot, nullptr}));
	EXPECT_EQ(changed.n, 1);
	three->RemoveListenerChangeStructure(changed.Delegate());
}

TEST_F(ParameterInterfaceTest, SettingAllElementsIsAllOrNothingAndFiresOnce)
{
	IParameter* three = Input("three");
	ASSERT_TRUE(three->Set(point, 2));
	Counter<IParameter*> changed;
	three->AddListenerChangeStructure(changed.Delegate());

	IShader* misfit[] = {spot, wood};
	Result result;
	EXPECT_FALSE(lit->SetParameter(&result, "three", misfit, 2));
	EXPECT_EQ(Text(result), "Interface mismatch. Expected \"Light\" but got \"Surface::Wood\"|");
	IShader* tooMany[] = {spot, point, spot, point};
	EXPECT_FALSE(three->Set(tooMany, 4));
	EXPECT_TRUE(console.HasMessage("Value::SetArray Array Out of Bounds\n"));
	EXPECT_EQ(Slots(three), (std::vector<IShader*>{nullptr, nullptr, point}));
	EXPECT_EQ(changed.n, 0);

	// Fewer shaders than slots: the rest is emptied, and the old element no longer listened to.
	IShader* two[] = {spot, nullptr};
	ASSERT_TRUE(lit->SetParameter(nullptr, "three", two, 2));
	EXPECT_EQ(Slots(three), (std::vector<IShader*>{spot, nullptr, nullptr}));
	EXPECT_EQ(changed.n, 1);
	mgr.DestroyShader(point);
	EXPECT_EQ(changed.n, 1);
	three->RemoveListenerChangeStructure(changed.Delegate());
}

TEST_F(ParameterInterfaceTest, DeletingAConnectedShaderEmptiesEverySlotThatHeldIt)
{
	IParameter* three = Input("three");
	IParameter* key = Input("key");
	IShader* shaders[] = {spot, point, spot};
	ASSERT_TRUE(three->Set(shaders, 3));
	ASSERT_TRUE(key->Set(spot));
	// Releasing one of the two slots keeps listening for the other.
	ASSERT_TRUE(three->Set(point, 0));
	Counter<IParameter*> changed;
	three->AddListenerChangeStructure(changed.Delegate());

	mgr.DestroyShader(spot);
	EXPECT_EQ(Slots(three), (std::vector<IShader*>{point, point, nullptr}));
	EXPECT_EQ(At(key, 0), nullptr);
	EXPECT_EQ(changed.n, 1);
	mgr.DestroyShader(point);
	EXPECT_EQ(Slots(three), (std::vector<IShader*>{nullptr, nullptr, nullptr}));
	EXPECT_EQ(changed.n, 2);
	three->RemoveListenerChangeStructure(changed.Delegate());
}

TEST_F(ParameterInterfaceTest, DefaultsAreOwnedAndHostShadersNeverDestroyed)
{
	IParameter* fill = Input("fill");
	IShader* made = At(fill, 0);
	ASSERT_NE(made, nullptr);
	EXPECT_EQ(made->GetClassName(), "Spot");
	EXPECT_TRUE(fill->IsDefault());
	Counter<IShader*>& madeDeleted = WatchDelete(made);
	Counter<IShader*>& spotDeleted = WatchDelete(spot);

	ASSERT_TRUE(fill->Set(spot));
	EXPECT_EQ(madeDeleted.n, 1);
	EXPECT_FALSE(fill->IsDefault());
	ASSERT_TRUE(fill->Set(point));
	EXPECT_EQ(spotDeleted.n, 0);

	// Every element of a single-constructor array gets its own default.
	IParameter* pair = Input("pair");
	const std::vector<IShader*> defaults = Slots(pair);
	ASSERT_TRUE(defaults[0] && defaults[1]);
	EXPECT_NE(defaults[0], defaults[1]);
	EXPECT_TRUE(pair->IsDefault(0) && pair->IsDefault(1));
	EXPECT_FALSE(pair->IsDefault(2));
	Counter<IShader*>& firstDeleted = WatchDelete(defaults[0]);
	Counter<IShader*>& secondDeleted = WatchDelete(defaults[1]);
	ASSERT_TRUE(pair->Set(spot, 1));
	EXPECT_EQ(secondDeleted.n, 1);
	EXPECT_FALSE(pair->IsDefault(1));

	// The owner's end takes the remaining defaults with it, and only them.
	mgr.DestroyShader(lit);
	EXPECT_EQ(firstDeleted.n, 1);
	EXPECT_EQ(spotDeleted.n, 0);
	EXPECT_EQ(spot->GetClassName(), "Spot");
}

TEST_F(ParameterInterfaceTest, ADefaultHandedBackByTheHostIsNotDestroyedUnderIt)
{
	IParameter* pair = Input("pair");
	IShader* first = At(pair, 0);
	Counter<IShader*>& deleted = WatchDelete(first);
	IShader* again[] = {first, spot};
	ASSERT_TRUE(pair->Set(again, 2));
	EXPECT_EQ(deleted.n, 0);
	EXPECT_EQ(Slots(pair), (std::vector<IShader*>{first, spot}));
	EXPECT_FALSE(pair->IsDefault(0));
	// A default also connected to a second slot lives on there, still owned.
	IParameter* grown = Input("grown");
	IShader* own = At(grown, 0);
	ASSERT_TRUE(grown->SetLength(2));
	ASSERT_TRUE(grown->Set(own, 1));
	Counter<IShader*>& ownDeleted = WatchDelete(own);
	ASSERT_TRUE(grown->Set(point, 0));
	EXPECT_EQ(ownDeleted.n, 0);
	EXPECT_TRUE(grown->IsDefault(1));
	ASSERT_TRUE(grown->Set(point, 1));
	EXPECT_EQ(ownDeleted.n, 1);
}

TEST_F(ParameterInterfaceTest, LengthChangesReleaseAndMakeDefaults)
{
	IParameter* lights = Input("lights");
	EXPECT_TRUE(lights->IsResizable());
	EXPECT_EQ(Slots(lights), (std::vector<IShader*>{nullptr}));
	IParameter* three = Input("three");
	EXPECT_FALSE(three->SetLength(4));
	EXPECT_EQ(three->GetLength(), 3);
	EXPECT_FALSE(lights->SetLength(-1));
	EXPECT_EQ(lights->GetLength(), 1);

	// A single constructor makes a default for every new element; shrinking destroys the ones cut off.
	IParameter* grown = Input("grown");
	Counter<IParameter*> changed;
	grown->AddListenerChangeStructure(changed.Delegate());
	ASSERT_TRUE(grown->SetLength(3));
	EXPECT_EQ(changed.n, 1);
	const std::vector<IShader*> made = Slots(grown);
	EXPECT_TRUE(made[1] && made[2] && made[1] != made[2]);
	EXPECT_TRUE(grown->IsDefault(2));
	Counter<IShader*>& lastDeleted = WatchDelete(made[2]);
	ASSERT_TRUE(grown->SetLength(2));
	EXPECT_EQ(lastDeleted.n, 1);
	EXPECT_FALSE(grown->IsDefault(2));
	EXPECT_TRUE(grown->SetLength(2));
	EXPECT_EQ(changed.n, 2);
	grown->RemoveListenerChangeStructure(changed.Delegate());

	// An array constructor fixes the first elements only; growing adds empty slots.
	IParameter* listed = Input("listed");
	ASSERT_EQ(listed->GetLength(), 2);
	EXPECT_EQ(At(listed, 0)->GetClassName(), "Spot");
	EXPECT_EQ(At(listed, 1)->GetClassName(), "Point");
	ASSERT_TRUE(listed->SetLength(3));
	EXPECT_EQ(At(listed, 2), nullptr);
	EXPECT_FALSE(listed->IsDefault(2));
	ASSERT_TRUE(listed->SetLength(0));
	EXPECT_TRUE(listed->IsComplete());
}

TEST_F(ParameterInterfaceTest, AShaderIsCompleteOnceEveryInputHoldsACompleteShader)
{
	IShader* relay = Create("Relay");
	Load("probe.tsl", R"(
class Probe : Surface
{
	input Light light;
	vec3 Shade(vec3 P) { return light.Emit(P); }
})");
	IShader* probe = Create("Probe");
	EXPECT_FALSE(probe->IsComplete());
	Counter<IShader*> rebuilt;
	IShader::ListenerShader listener = rebuilt.Delegate();
	probe->AddListenerChangeStructure(listener);

	ASSERT_TRUE(probe->SetParameter(nullptr, "light", relay));
	EXPECT_FALSE(probe->IsComplete());
	// Completing the connected shader completes its owner, which then builds its code.
	ASSERT_TRUE(relay->SetParameter(nullptr, "next", spot));
	EXPECT_TRUE(probe->IsComplete());
	EXPECT_EQ(rebuilt.n, 2);
	const ModuleNames names = CollectedNames(probe);
	EXPECT_EQ(names.calls.count(relay->GetMethodNameMangled("Emit")), 1u);
	EXPECT_EQ(names.calls.count(relay->GetConstructor()), 1u);

	mgr.DestroyShader(spot);
	EXPECT_FALSE(probe->IsComplete());
	EXPECT_EQ(rebuilt.n, 3);
	probe->RemoveListenerChangeStructure(listener);
}

TEST_F(ParameterInterfaceTest, AConnectionCycleNeverCompletesAndEndsItsNotifications)
{
	IShader* first = Create("Relay");
	IShader* second = Create("Relay");
	ASSERT_TRUE(first->SetParameter(nullptr, "next", second));
	ASSERT_TRUE(second->SetParameter(nullptr, "next", first));
	EXPECT_FALSE(first->IsComplete());
	EXPECT_FALSE(second->IsComplete());
	// Breaking the cycle with a plain shader completes both.
	ASSERT_TRUE(second->SetParameter(nullptr, "next", spot));
	EXPECT_TRUE(first->IsComplete());
	IShader* self = Create("Relay");
	ASSERT_TRUE(self->SetParameter(nullptr, "next", self));
	EXPECT_FALSE(self->IsComplete());
	mgr.DestroyShader(self);
}

TEST_F(ParameterInterfaceTest, ClassWideInputsConnectThroughThePrototype)
{
	Load("static.tsl", R"(
class Sky : Surface
{
	static input Light sun;
	vec3 Shade(vec3 P) { return P; }
})");
	IPrototypeShader* sky = mgr.GetPrototypeShader("Sky", nullptr);
	ASSERT_TRUE(sky);
	EXPECT_FALSE(sky->IsComplete());
	ASSERT_TRUE(sky->SetParameter("sun", spot));
	EXPECT_TRUE(sky->IsComplete());
	EXPECT_NE(Create("Sky"), nullptr);
}

} // namespace
} // namespace Tarsel::Effects::Testing
