#include "EffectTestSupport.h"

#include <algorithm>
#include <functional>

namespace Tarsel::Effects::Testing
{
namespace
{

// Records the order in which effects compile.
struct CompileOrder
{
	std::vector<IEffect*> effects;
	bool On(IEffect* effect)
	{
		effects.push_back(effect);
		return true;
	}
};

class EffectManagerTest : public EffectTest
{
protected:
	IShader* Flat()
	{
		IShader* shader = Create("Flat");
		EXPECT_TRUE(shader->SetCoord(nullptr, "uv", "uv0"));
		return shader;
	}
	std::string ProcessMessages() const { return Messages(process.GetMessages()); }

	RecordingConsole process;
	ScopedMgrConsole scoped{&process};
};

TEST_F(EffectManagerTest, UpdateGoesSurfacesPrefixesRenderersAndNeverStopsEarly)
{
	CompileOrder order;
	IEffect* renderer = Effect(mgr.CreateEffectRenderer(), Create("Camera"), {Primitive()});
	IEffect* prefix = Effect(mgr.CreateEffectPrefix(), Create("Fog"), {Primitive()});
	IEffect* rootless = mgr.CreateEffectSurface();
	IEffect* surface = Effect(mgr.CreateEffectSurface(), Flat(), {Primitive()});
	for (IEffect* effect : {renderer, prefix, surface})
		effect->AddListenerCompile(MakeDelegate(&order, &CompileOrder::On));
	EXPECT_EQ(rootless->GetMgrEffects(), &mgr);
	EXPECT_EQ(rootless->GetQLProgram()->GetName(), "Init");

	Result result;
	EXPECT_FALSE(mgr.Update(&result));
	EXPECT_EQ(order.effects, (std::vector<IEffect*>{surface, prefix, renderer}));
	EXPECT_NE(
	    ProcessMessages().find("Effect::Apply Not Compiled for Init\nThere is no graph in Effect Init\n"),
	    std::string::npos)
	    << ProcessMessages();
	for (auto& primitive : vPrimitives)
		EXPECT_FALSE(primitive->GetWrites().empty()) << Violations(primitive.get());

	Counter<IEffect*> visited;
	IMgrEffects::VisitorEffect visitor = visited.Delegate();
	EXPECT_TRUE(mgr.VisitEffectsSurface(visitor));
	EXPECT_TRUE(mgr.VisitEffectsPrefix(visitor));
	EXPECT_TRUE(mgr.VisitEffectsRenderer(visitor));
	EXPECT_EQ(visited.n, 4);
}

TEST_F(EffectManagerTest, AnEffectOfAnotherKindIsNotFoundAndStaysAlive)
{
	IEffect* surface = Effect(mgr.CreateEffectSurface(), Flat(), {Primitive()});
	mgr.DestroyEffectRenderer(surface);
	EXPECT_EQ(ProcessMessages(), "FactoryTEffect::DestroyEffect Effect Not Found\n");
	Update();
	EXPECT_TRUE(surface->IsCompiled());
	mgr.DestroyEffectSurface(surface);
	mgr.DestroyEffectSurface(nullptr);
	Counter<IEffect*> visited;
	IMgrEffects::VisitorEffect visitor = visited.Delegate();
	mgr.VisitEffectsSurface(visitor);
	EXPECT_EQ(visited.n, 0);
}

// Replays and index writes bind their primitive and make their own program current, so that two effects
// updated one after the other write each to its own program.
TEST_F(EffectManagerTest, ReplaysOfTwoEffectsEachReachTheirOwnProgram)
{
	IShader* flat = Flat();
	IShader* camera = Create("Camera");
	ReferencePrimitive* object = Primitive();
	ReferencePrimitive* screen = Primitive();
	IEffect* surface = Effect(mgr.CreateEffectSurface(), flat, {object});
	IEffect* renderer = Effect(mgr.CreateEffectRenderer(), camera, {screen});
	Update();
	ClearWrites();
	ASSERT_TRUE(flat->SetParameter(nullptr, "gain", 7.0f));
	ASSERT_TRUE(camera->SetParameter(nullptr, "samples", 4));
	Update();
	ASSERT_EQ(object->GetWrites().size(), 1u) << Violations(object);
	ASSERT_EQ(screen->GetWrites().size(), 1u) << Violations(screen);
	EXPECT_EQ(object->GetWrites()[0].program, surface->GetQLProgram()->GetHandle());
	EXPECT_EQ(screen->GetWrites()[0].program, renderer->GetQLProgram()->GetHandle());
	EXPECT_EQ(screen->GetWrites()[0].Values<int>(), std::vector<int>{4});

	ClearWrites();
	ASSERT_TRUE(mgr.SetOutputAttachmentIndex("o_color", 1));
	ASSERT_EQ(object->GetWrites().size(), 1u) << Violations(object);
	EXPECT_EQ(object->GetWrites()[0].program, surface->GetQLProgram()->GetHandle());
	// The renderer's program has no output of its own.
	EXPECT_TRUE(screen->GetWrites().empty());
}

TEST_F(EffectManagerTest, InitAfterShutdownRegistersTheRayAttributesOnce)
{
	mgr.Shutdown();
	mgr.Init(&console, &context, nullptr);
	std::vector<std::string> names;
	struct Names
	{
		std::vector<std::string>* pNames;
		bool On(TypeSpecifier, const std::string& name)
		{
			pNames->push_back(name);
			return true;
		}
	} collect{&names};
	IMgrEffects::VisitorTyped visitor = MakeDelegate(&collect, &Names::On);
	mgr.VisitRayAttributes(visitor);
	EXPECT_EQ(std::count(names.begin(), names.end(), "samplingState"), 1);
	Load("Effects.tsl", kEffectLibrary);
	Effect(mgr.CreateEffectSurface(), Flat(), {Primitive()});
	Update();
}

TEST_F(EffectManagerTest, DeviceRefusalsShutTheEffectDownWithoutLeavingDeviceObjects)
{
	const size_t programs = context.GetCountPrograms();
	const size_t shaders = context.GetCountShaders();

	context.FailNextCreateProgram();
	EXPECT_EQ(mgr.CreateEffectSurface(), nullptr);
	EXPECT_EQ(ProcessMessages(), "Effect::Init CreateProgram\n");

	struct Refusal
	{
		std::function<void()> arm;
		const char* message;
	};
	// The graph's shader, then the root's.
	const std::vector<Refusal> refusals = {
	    {[&] { context.FailNextAttach(1); }, "Effect::Init AddShader\n"},
	    {[&] { context.FailNextAttach(2); }, "Effect::InitGraph AddShader\n"},
	};
	for (const Refusal& refusal : refusals)
	{
		process.Clear();
		IShader* flat = Flat();
		IEffect* surface = Effect(mgr.CreateEffectSurface(), flat, {Primitive()});
		refusal.arm();
		Result result;
		EXPECT_FALSE(mgr.Update(&result));
		context.FailNextAttach(0);
		EXPECT_NE(ProcessMessages().find(refusal.message), std::string::npos) << ProcessMessages();
		EXPECT_EQ(surface->GetQLProgram(), nullptr);
		EXPECT_EQ(surface->GetMgrEffects(), nullptr);
		mgr.DestroyEffectSurface(surface);
		mgr.DestroyShader(flat);
		EXPECT_EQ(context.GetCountPrograms(), programs);
		EXPECT_EQ(context.GetCountShaders(), shaders);
	}
}

TEST_F(EffectManagerTest, ARefusedLinkLeavesTheEffectToCompileOnTheNextUpdate)
{
	IEffect* surface = Effect(mgr.CreateEffectSurface(), Flat(), {Primitive()});
	context.FailNextLink();
	Result result;
	EXPECT_FALSE(mgr.Update(&result));
	EXPECT_NE(ProcessMessages().find("Effect::_Compile Link\n"), std::string::npos);
	EXPECT_FALSE(surface->IsCompiled());
	EXPECT_TRUE(vPrimitives[0]->GetWrites().empty());
	Update();
	EXPECT_TRUE(surface->IsCompiled());
	EXPECT_FALSE(vPrimitives[0]->GetWrites().empty());
}

TEST_F(EffectManagerTest, ADestroyedReferenceAndAGoneEffectLeaveNothingBehind)
{
	IEffect* surface = Effect(mgr.CreateEffectSurface(), Flat(), {Primitive(), Primitive()});
	IReferenceEffect* reference = surface->CreateReference(Primitive());
	Counter<IReferenceEffect*> deleted;
	reference->AddListenerDelete(deleted.Delegate());
	Update();
	ILocalParameter* local = reference->AcquireParameterLocal(Create("Flat"), "gain");
	EXPECT_EQ(local, nullptr);
	surface->DestroyReference(reference);
	EXPECT_EQ(deleted.n, 1);
	mgr.DestroyEffectSurface(surface);
	EXPECT_EQ(context.GetCountPrograms(), 0u);
}

} // namespace
} // namespace Tarsel::Effects::Testing
