#include <gtest/gtest.h>

#include "ManagerTestSupport.h"
#include "effects/MgrEffects.h"
#include "manager/Profiler.h"

using namespace Tarsel;
using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

// Records every notification it receives and answers as told.
struct Listener
{
	explicit Listener(bool answer = true) : bAnswer(answer) {}

	bool OnAdd(TypeSpecifier type, const std::string& name)
	{
		vCalls.push_back("add " + std::to_string(type) + " " + name);
		return bAnswer;
	}
	bool OnRemove(const std::string& name)
	{
		vCalls.push_back("remove " + name);
		return bAnswer;
	}
	bool OnChange()
	{
		vCalls.push_back("change");
		return bAnswer;
	}

	// Registers on all three of the manager's sets.
	void Attach(IMgrEffects& manager)
	{
		IMgrEffects::ListenerAddOutput add = MakeDelegate(this, &Listener::OnAdd);
		IMgrEffects::ListenerRemoveOutput remove = MakeDelegate(this, &Listener::OnRemove);
		IMgrEffects::ListenerChangeOutputIndices change = MakeDelegate(this, &Listener::OnChange);
		manager.AddListenerAddOutput(add);
		manager.AddListenerRemoveOutput(remove);
		manager.AddListenerChangeOutputIndices(change);
	}

	bool bAnswer;
	std::vector<std::string> vCalls;
};

std::vector<std::string> Names(IMgrEffects& manager, bool (IMgrEffects::*visit)(IMgrEffects::VisitorTyped&))
{
	struct Collector
	{
		bool Visit(TypeSpecifier type, const std::string& name)
		{
			v.push_back(name + ":" + std::to_string(type));
			return true;
		}
		std::vector<std::string> v;
	} collector;
	IMgrEffects::VisitorTyped visitor = MakeDelegate(&collector, &Collector::Visit);
	EXPECT_TRUE((manager.*visit)(visitor));
	return collector.v;
}

class Manager : public ::testing::Test
{
protected:
	ManagerHarness<MgrEffectsImpl> harness;
	MgrEffectsImpl& manager = harness.manager;
};

TEST_F(Manager, CountsOutputUsesAndNeverGoesBelowZero)
{
	Listener host;
	host.Attach(manager);
	EXPECT_TRUE(manager.AcquireOutput(kType_Float, "depth"));
	EXPECT_TRUE(manager.AcquireOutput(kType_Float, "depth"));
	EXPECT_TRUE(manager.ReleaseOutput("depth"));
	EXPECT_TRUE(manager.HasOutput("depth"));
	EXPECT_TRUE(manager.ReleaseOutput("depth"));
	EXPECT_FALSE(manager.HasOutput("depth"));
	EXPECT_TRUE(manager.ReleaseOutput("depth"));
	// A release past zero must not leave a debt that swallows the next first acquisition.
	EXPECT_TRUE(manager.AcquireOutput(kType_Float, "depth"));
	const std::string add = "add " + std::to_string(kType_Float) + " depth";
	EXPECT_EQ(host.vCalls, (std::vector<std::string>{add, "remove depth", add}));
	EXPECT_EQ(manager.GetCountOutputs(), 2);
}

TEST_F(Manager, RefusesAnOutputOfAnotherTypeAndKeepsTheFirst)
{
	ProcessConsoleCapture process;
	EXPECT_TRUE(manager.AcquireOutput(kType_Float, "mask"));
	EXPECT_FALSE(manager.AcquireOutput(kType_Vec3, "mask"));
	EXPECT_EQ(process.console.GetMessages(),
	          std::vector<std::string>{"Graph::AcquireOutput Type Collision\n"});
	EXPECT_EQ(Names(manager, &IMgrEffects::VisitOutputs),
	          (std::vector<std::string>{"mask:" + std::to_string(kType_Float),
	                                    "o_color:" + std::to_string(kType_Vec3)}));
	manager.ReleaseOutput("mask");
	EXPECT_FALSE(manager.HasOutput("mask"));
}

TEST_F(Manager, AttachmentIndicesAreIndependentOfOutputsAndNotifyOnChange)
{
	Listener host;
	host.Attach(manager);
	int index = 0;
	EXPECT_TRUE(manager.GetOutputAttachmentIndex(index, "normal"));
	EXPECT_EQ(index, 15);
	EXPECT_TRUE(manager.SetOutputAttachmentIndex("normal", 3));
	EXPECT_TRUE(manager.GetOutputAttachmentIndex(index, "normal"));
	EXPECT_EQ(index, 3);
	EXPECT_TRUE(manager.ClearOutputAttachmentIndex("normal"));
	EXPECT_FALSE(manager.ClearOutputAttachmentIndex("normal"));
	EXPECT_EQ(host.vCalls, (std::vector<std::string>{"change", "change"}));
}

TEST_F(Manager, AListenerAnsweringFalseStopsTheOthersButNotTheOperation)
{
	Listener first(false), second(false);
	first.Attach(manager);
	second.Attach(manager);
	EXPECT_TRUE(manager.AcquireOutput(kType_Int, "id"));
	EXPECT_TRUE(manager.SetOutputAttachmentIndex("id", 1));
	EXPECT_FALSE(manager.ReleaseOutput("id"));
	// Both answer false, so whichever runs first must be the only one told.
	EXPECT_EQ(first.vCalls.size() + second.vCalls.size(), 3u);
	EXPECT_TRUE(first.vCalls.empty() || second.vCalls.empty());
}

TEST(ManagerLifecycle, NeverTellsTheHostAboutItsOwnColorOutput)
{
	ReferenceContext context;
	RecordingConsole console;
	MgrEffects manager;
	Listener host;
	host.Attach(manager);
	EXPECT_TRUE(manager.Init(&console, &context, nullptr));
	EXPECT_TRUE(manager.HasOutput("o_color"));
	EXPECT_EQ(manager.GetConsole(), &console);
	EXPECT_EQ(manager.GetImplementation()->GetConsole(), &console);
	EXPECT_TRUE(manager.Shutdown());
	EXPECT_TRUE(manager.Shutdown());
	EXPECT_FALSE(manager.HasOutput("o_color"));
	EXPECT_EQ(manager.GetProfiler(), nullptr);
	EXPECT_TRUE(host.vCalls.empty());
}

// Every Shutdown gives "o_color" back, so a second one also takes an acquisition made by someone else.
TEST(ManagerLifecycle, EveryShutdownReleasesTheColorOutput)
{
	ManagerHarness<MgrEffectsImpl> harness;
	harness.manager.AcquireOutput(kType_Vec3, "o_color");
	harness.manager.Shutdown();
	EXPECT_TRUE(harness.manager.HasOutput("o_color"));
	harness.manager.Shutdown();
	EXPECT_FALSE(harness.manager.HasOutput("o_color"));
}

TEST(ManagerRayAttributes, FollowDifferentialSupportAndPadding)
{
	const std::string i = ":" + std::to_string(kType_Int), f = ":" + std::to_string(kType_Float),
	                  v = ":" + std::to_string(kType_Vec3);
	const std::vector<std::string> builtIn = {"depthInfo" + i,
	                                          "samplingState" + i,
	                                          "auxInfo" + i,
	                                          "prefixPrimitiveAuxColor" + v,
	                                          "prefixPrimitiveAuxFloat" + f,
	                                          "color" + v};
	std::vector<std::string> withoutDifferentials = builtIn;
	withoutDifferentials.push_back("dP" + f);
	withoutDifferentials.push_back("dPdT" + f);
	for (const char* pad : {static_cast<const char*>(nullptr), "0", "-2", "abc"})
	{
		ScopedEnv env("TZR_RAY_ATTRIBUTE_PAD_INTS", pad);
		ManagerHarness<MgrEffectsImpl> supporting(true), lacking(false);
		EXPECT_EQ(Names(supporting.manager, &IMgrEffects::VisitRayAttributes), builtIn);
		EXPECT_EQ(Names(lacking.manager, &IMgrEffects::VisitRayAttributes), withoutDifferentials);
	}
	ScopedEnv env("TZR_RAY_ATTRIBUTE_PAD_INTS", "3rd");
	std::vector<std::string> padded = builtIn;
	for (const char* name : {"rayPad0", "rayPad1", "rayPad2"})
		padded.push_back(name + i);
	ManagerHarness<MgrEffectsImpl> harness(true);
	EXPECT_EQ(Names(harness.manager, &IMgrEffects::VisitRayAttributes), padded);
	EXPECT_EQ(Names(harness.manager, &IMgrEffects::VisitVariablesGlobal),
	          (std::vector<std::string>{"g_rayMinContrib" + f, "g_rayDepthMax:" + std::to_string(kType_IVec4),
	                                    "g_rayDepthMaxTotal" + i, "g_rayDepthMaxDummy" + i}));
}

TEST_F(Manager, VisitsEveryRayAttributeEvenAfterAFalseAnswer)
{
	struct Refuser
	{
		bool Visit(TypeSpecifier, const std::string&) { return ++n != 1; }
		int n = 0;
	} refuser;
	IMgrEffects::VisitorTyped visitor = MakeDelegate(&refuser, &Refuser::Visit);
	EXPECT_FALSE(manager.VisitRayAttributes(visitor));
	EXPECT_EQ(refuser.n, 8);
}

TEST_F(Manager, ReportsAnUnknownClassOnceAndTimesBothCreateShaderForms)
{
	Result result;
	EXPECT_EQ(manager.CreateShader("Wood", &result), nullptr);
	EXPECT_EQ(result.GetMessages(), std::vector<std::string>{"Could not create shader named \"Wood\""});
	EXPECT_TRUE(harness.console.GetErrors().empty());
	EXPECT_EQ(manager.CreateShader("Wood"), nullptr);
	EXPECT_EQ(harness.console.GetErrors(),
	          std::vector<std::string>{"Could not create shader named \"Wood\"\n"});
	EXPECT_EQ(manager.GetProfiler()->GetSamples("CreateShader").size(), 3u);
	EXPECT_EQ(manager.GetPrototypeShader("Wood", &result), nullptr);
	EXPECT_EQ(manager.GetProfiler()->GetSamples("GetPrototypeShader").size(), 1u);
	EXPECT_EQ(result.GetMessages().size(), 1u);
}

TEST_F(Manager, WritesResultMessagesOnlyWhileAResultIsInstalled)
{
	manager.AddResultMessage("lost %d", 1);
	Result result;
	manager.SetResult(&result);
	manager.AddResultMessage("value %s is %d", "x", 42);
	Result nested;
	nested.Add("inner");
	manager.AddResult(nested);
	manager.SetResult(nullptr);
	manager.AddResultMessage("lost %d", 2);
	EXPECT_EQ(result.GetMessages(), (std::vector<std::string>{"value x is 42", "inner"}));
	EXPECT_EQ(harness.console.GetMessages(), std::vector<std::string>{"value x is 42"});
}

TEST_F(Manager, CompileStopsRecordNothing)
{
	AutoStopCompile stop(&manager, "graph");
	EXPECT_EQ(manager.CreateStopCompile("graph"), Key::Null());
	EXPECT_EQ(manager.GetCountStopsCompile(), 0);
}

// Observes destruction notices of a key registry.
struct KeyWatcher
{
	bool OnDestroy(const Key& key, const int& value)
	{
		vSeen.emplace_back(key.GetValue(), value);
		return true;
	}
	std::vector<std::pair<unsigned, int>> vSeen;
};

TEST(Keys, RecycleTheMostRecentlyDestroyedFirst)
{
	MgrKeys<int> keys;
	KeyWatcher watcher;
	keys.AddListenerDestroy(MakeDelegate(&watcher, &KeyWatcher::OnDestroy));
	Key k1 = keys.Create(10), k2 = keys.Create(20), k3 = keys.Create(30);
	EXPECT_EQ(k1, Key(1));
	EXPECT_EQ(k3, Key(3));
	EXPECT_TRUE(keys.Destroy(k2));
	EXPECT_TRUE(keys.Destroy(k3));
	EXPECT_EQ(keys.Create(0), Key(3));
	EXPECT_EQ(keys.Create(0), Key(2));
	EXPECT_EQ(keys.Create(0), Key(4));
	EXPECT_EQ(watcher.vSeen, (std::vector<std::pair<unsigned, int>>{{2, 20}, {3, 30}}));
	keys.Shutdown();
	EXPECT_EQ(keys.Create(0), Key(1));
}

TEST(Keys, RefuseUnknownKeysWithoutRecyclingThemTwice)
{
	ProcessConsoleCapture process;
	MgrKeys<int> keys;
	Key key = keys.Create(0);
	Key null = Key::Null();
	EXPECT_TRUE(keys.Destroy(key));
	EXPECT_FALSE(keys.Destroy(key));
	EXPECT_FALSE(keys.Destroy(null));
	EXPECT_EQ(process.console.GetMessages(), (std::vector<std::string>{"MgrKeys::Destroy Key Not Found\n",
	                                                                   "MgrKeys::Destroy Key Not Found\n"}));
	EXPECT_EQ(keys.Create(0), Key(1));
	EXPECT_EQ(keys.Create(0), Key(2));
}

TEST(Keys, PrintAsLowerCaseHex)
{
	EXPECT_EQ(Key(26).ToString(), "_k1a");
	EXPECT_EQ(Key::Null().ToString(), "_k0");
	EXPECT_EQ(Key(0xABCDEFu).ToString(), "_kabcdef");
}

TEST_F(Manager, ForgetsItsKeysAtShutdown)
{
	Key first = manager.CreateKey();
	EXPECT_EQ(first, Key(1));
	EXPECT_EQ(manager.CreateKey(), Key(2));
	EXPECT_TRUE(manager.DestroyKey(first));
	manager.Shutdown();
	EXPECT_EQ(manager.CreateKey(), Key(1));
}

} // namespace
