#include "TestShaderSupport.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kLights = R"(
interface Light { vec3 Emit(vec3 P); }
interface Surface { vec3 Shade(vec3 P); }
class Spot : Light { vec3 Emit(vec3 P) { return P; } }
class Point : Light { vec3 Emit(vec3 P) { return -P; } }
class Wood : Surface { vec3 Shade(vec3 P) { return P; } }
class Relay : Light
{
	input Light next;
	vec3 Emit(vec3 P) { return next.Emit(P); }
}
class Sky : Surface
{
	static input Light sun;
	vec3 Shade(vec3 P) { return P; }
}
class Lit : Surface
{
	input Light key;
	input Spot spot;
	input Light fill = Spot();
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
	static std::vector<IShader*> Slots(IParameter* input)
	{
		std::vector<IShader*> shaders(static_cast<size_t>(input->GetLength()));
		for (int index = 0; index < input->GetLength(); ++index)
			EXPECT_TRUE(input->Get(shaders[index], index));
		return shaders;
	}
	// Counts the deletions of a shader.
	int& Deletions(IShader* shader)
	{
		watches.emplace_back(new Counter<IShader*>());
		IShader::ListenerShader listener = watches.back()->Delegate();
		shader->AddListenerDelete(listener);
		return watches.back()->n;
	}

	IShader *lit = nullptr, *spot = nullptr, *point = nullptr, *wood = nullptr;
	std::vector<std::unique_ptr<Counter<IShader*>>> watches;
	Counter<IParameter*> changed;
};

TEST_F(ParameterInterfaceTest, AMisfitOrBadIndexIsRefusedWithItsMessageAndChangesNothing)
{
	IParameter* key = Input("key");
	key->AddListenerChangeStructure(changed.Delegate());
	ASSERT_TRUE(lit->SetParameter(nullptr, "key", spot));
	ASSERT_TRUE(lit->SetParameter(nullptr, "key", spot));
	Result result;
	EXPECT_FALSE(lit->SetParameter(&result, "key", wood));
	EXPECT_FALSE(key->Set(point, 1));
	// A class-typed input takes that class only, though another class shares its interface.
	EXPECT_FALSE(lit->SetParameter(&result, "spot", point));
	EXPECT_EQ(Text(result), "Input type mismatch. Expected \"Light\" but got \"Surface::Wood\"\n|"
	                        "Input type mismatch. Expected \"Spot\" but got \"Light::Point\"\n|");
	EXPECT_EQ(Slots(key), std::vector<IShader*>{spot});
	EXPECT_EQ(changed.n, 1);

	IParameter* three = Input("three");
	three->AddListenerChangeStructure(changed.Delegate());
	ASSERT_TRUE(lit->SetParameter(nullptr, "three", point, 2));
	Result arrayResult;
	EXPECT_FALSE(lit->SetParameter(&arrayResult, "three", spot, 3));
	EXPECT_FALSE(lit->SetParameter(&arrayResult, "three", wood, 0));
	IShader* misfit[] = {spot, wood};
	EXPECT_FALSE(lit->SetParameter(&arrayResult, "three", misfit, 2));
	IShader* tooMany[] = {spot, point, spot, point};
	EXPECT_FALSE(three->Set(tooMany, 4));
	EXPECT_EQ(Text(arrayResult), "Index (3) out of bounds (length=3)|"
	                             "Interface mismatch. Expected \"Light\" but got \"Surface::Wood\"|"
	                             "Interface mismatch. Expected \"Light\" but got \"Surface::Wood\"|");
	EXPECT_EQ(Slots(three), (std::vector<IShader*>{nullptr, nullptr, point}));
	EXPECT_EQ(changed.n, 2);

	// Fewer shaders than slots empty the rest, at one notice; the old element is no longer listened to.
	IShader* two[] = {spot, nullptr};
	ASSERT_TRUE(lit->SetParameter(nullptr, "three", two, 2));
	EXPECT_EQ(Slots(three), (std::vector<IShader*>{spot, nullptr, nullptr}));
	EXPECT_EQ(changed.n, 3);
	mgr.DestroyShader(point);
	EXPECT_EQ(changed.n, 3);
}

TEST_F(ParameterInterfaceTest, DeletingAConnectedShaderEmptiesEverySlotThatHeldIt)
{
	IParameter* three = Input("three");
	IShader* shaders[] = {spot, point, spot};
	ASSERT_TRUE(three->Set(shaders, 3));
	ASSERT_TRUE(Input("key")->Set(spot));
	// Releasing one of two slots keeps listening for the other.
	ASSERT_TRUE(three->Set(point, 0));
	three->AddListenerChangeStructure(changed.Delegate());
	mgr.DestroyShader(spot);
	EXPECT_EQ(Slots(three), (std::vector<IShader*>{point, point, nullptr}));
	EXPECT_EQ(Slots(Input("key")), std::vector<IShader*>{nullptr});
	EXPECT_EQ(changed.n, 1);
}

TEST_F(ParameterInterfaceTest, DefaultsAreOwnedAndHostShadersNeverDestroyed)
{
	IParameter* fill = Input("fill");
	IShader* made = Slots(fill)[0];
	ASSERT_TRUE(made && fill->IsDefault());
	EXPECT_EQ(made->GetClassName(), "Spot");
	int& madeGone = Deletions(made);
	int& spotGone = Deletions(spot);
	ASSERT_TRUE(fill->Set(spot));
	EXPECT_EQ(madeGone, 1);
	EXPECT_FALSE(fill->IsDefault());
	ASSERT_TRUE(fill->Set(point));
	EXPECT_EQ(spotGone, 0);

	// Each element of a single-constructor array gets its own default.
	IParameter* pair = Input("pair");
	const std::vector<IShader*> defaults = Slots(pair);
	ASSERT_TRUE(defaults[0] && defaults[1] && defaults[0] != defaults[1]);
	EXPECT_TRUE(pair->IsDefault(1));
	int& firstGone = Deletions(defaults[0]);
	int& secondGone = Deletions(defaults[1]);
	// A default the host hands back in a new set of elements is no longer the input's to destroy.
	IShader* again[] = {defaults[0], spot};
	ASSERT_TRUE(pair->Set(again, 2));
	EXPECT_EQ(firstGone + secondGone, 1);
	EXPECT_FALSE(pair->IsDefault(0));

	// A default connected to a second slot too lives on there, still owned.
	IParameter* grown = Input("grown");
	IShader* own = Slots(grown)[0];
	ASSERT_TRUE(grown->SetLength(2));
	ASSERT_TRUE(grown->Set(own, 1));
	int& ownGone = Deletions(own);
	ASSERT_TRUE(grown->Set(point, 0));
	EXPECT_EQ(ownGone, 0);
	ASSERT_TRUE(grown->Set(point, 1));
	EXPECT_EQ(ownGone, 1);

	// The owner's end takes its remaining defaults with it, and only them.
	int& listedGone = Deletions(Slots(Input("listed"))[0]);
	mgr.DestroyShader(lit);
	EXPECT_EQ(listedGone, 1);
	EXPECT_EQ(firstGone + secondGone, 1);
	EXPECT_EQ(spotGone, 0);
}

TEST_F(ParameterInterfaceTest, LengthChangesReleaseAndMakeDefaults)
{
	EXPECT_FALSE(Input("three")->SetLength(4));
	IParameter* grown = Input("grown");
	EXPECT_FALSE(grown->SetLength(-1));
	EXPECT_EQ(grown->GetLength(), 1);
	grown->AddListenerChangeStructure(changed.Delegate());
	ASSERT_TRUE(grown->SetLength(3));
	const std::vector<IShader*> made = Slots(grown);
	EXPECT_TRUE(made[1] && made[2] && made[1] != made[2] && grown->IsDefault(2));
	int& lastGone = Deletions(made[2]);
	ASSERT_TRUE(grown->SetLength(2));
	ASSERT_TRUE(grown->SetLength(2));
	EXPECT_EQ(lastGone, 1);
	EXPECT_EQ(changed.n, 2);

	// An array constructor makes the first elements only; growing adds empty slots.
	IParameter* listed = Input("listed");
	EXPECT_EQ(Slots(listed)[1]->GetClassName(), "Point");
	ASSERT_TRUE(listed->SetLength(3));
	EXPECT_EQ(Slots(listed)[2], nullptr);
	EXPECT_FALSE(listed->IsComplete());
	ASSERT_TRUE(listed->SetLength(0));
	EXPECT_TRUE(listed->IsComplete());
}

TEST_F(ParameterInterfaceTest, AShaderIsCompleteOnceEveryInputHoldsACompleteShaderAndNeverInACycle)
{
	IShader* probe = Create("Relay");
	IShader* relay = Create("Relay");
	Counter<IShader*> rebuilt;
	IShader::ListenerShader listener = rebuilt.Delegate();
	probe->AddListenerChangeStructure(listener);
	ASSERT_TRUE(probe->SetParameter(nullptr, "next", relay));
	EXPECT_FALSE(probe->IsComplete());
	// Completing the connected shader completes its owner, which then builds its code.
	ASSERT_TRUE(relay->SetParameter(nullptr, "next", spot));
	EXPECT_TRUE(probe->IsComplete());
	EXPECT_EQ(rebuilt.n, 2);
	// Its call through the input is the connected shader's own method, with its constructor run first.
	const ModuleNames names = CollectedNames(probe);
	EXPECT_EQ(names.calls,
	          (std::set<std::string>{relay->GetMethodNameMangled("Emit"), relay->GetConstructor()}));

	// A cycle would call itself: it stays incomplete, and its notices end where they began.
	ASSERT_TRUE(relay->SetParameter(nullptr, "next", probe));
	EXPECT_FALSE(probe->IsComplete());
	ASSERT_TRUE(probe->SetParameter(nullptr, "next", probe));
	EXPECT_FALSE(probe->IsComplete());
	probe->RemoveListenerChangeStructure(listener);
}

TEST_F(ParameterInterfaceTest, ClassWideInputsConnectThroughThePrototype)
{
	IPrototypeShader* sky = mgr.GetPrototypeShader("Sky", nullptr);
	ASSERT_TRUE(sky);
	EXPECT_FALSE(sky->IsComplete());
	ASSERT_TRUE(sky->SetParameter("sun", spot));
	EXPECT_TRUE(sky->IsComplete());
	EXPECT_NE(Create("Sky"), nullptr);
}

} // namespace
} // namespace Tarsel::Effects::Testing
