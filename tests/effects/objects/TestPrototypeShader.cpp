#include "TestShaderSupport.h"

#include "graph/Graph.h"
#include "graph/ReferencePrototypeInterface.h"
#include "objects/IMember.h"
#include "objects/Library.h"
#include "objects/PrototypeShader.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kInterfaces = R"(
interface Surface
{
	vec3 Shade(vec3 P);
	float Weight();
}
)";

const char* const kUtil = R"(
class Util
{
	static float Half(float x)
	{
		return x * 0.5;
	}
	static float Quarter(float x)
	{
		return Util.Half(Half(x));
	}
}
)";

const char* const kWood = R"(
class Wood : Surface
{
	input float roughness = 0.5;
	static input float gain = 2.0;
	static float shared = 1.0;
	float cached = 0.0;
	vec3 Shade(vec3 P)
	{
		return P * Util.Half(roughness) * gain;
	}
	float Weight()
	{
		return shared + cached;
	}
}
)";

class PrototypeTest : public ShaderTest
{
protected:
	PrototypeShader* Prototype(const std::string& name)
	{
		return dynamic_cast<PrototypeShader*>(mgr.GetPrototypeShader(name, nullptr));
	}
	static int CountDependencies(PrototypeShader* prototype)
	{
		Counter<IPrototypeShader*> counter;
		PrototypeShader::VisitorPrototypeShader visitor = counter.Delegate();
		prototype->VisitPrototypeShadersStatic(visitor);
		return counter.n;
	}
};

TEST_F(PrototypeTest, EveryMissingInterfaceMethodIsReportedOnEveryRequest)
{
	Load("stone.tsl",
	     std::string(kInterfaces) + "class Stone : Surface\n{\n\tfloat Other() { return 1.0; }\n}\n");
	for (int attempt = 0; attempt < 2; ++attempt)
	{
		Result result;
		EXPECT_EQ(mgr.CreateShader("Stone", &result), nullptr);
		const std::string text = Text(result);
		EXPECT_NE(text.find("Class \"Stone\" is missing implementation of method \"Shade\" from interface "
		                    "\"Surface\"\n"),
		          std::string::npos)
		    << text;
		EXPECT_NE(text.find("method \"Weight\" from interface"), std::string::npos) << text;
	}
}

TEST_F(PrototypeTest, InterfacesAndStaticClassesOfOtherLibrariesAreFound)
{
	Load("a_interfaces.tsl", kInterfaces);
	Load("b_util.tsl", kUtil);
	Load("c_wood.tsl", kWood);
	IShader* shader = Create("Wood");
	ASSERT_NE(shader, nullptr);
	EXPECT_EQ(shader->GetInterfaceName(), "Surface");
	EXPECT_EQ(mgr.GetPrototypeInterface("Surface")->GetMethodNameMangled("Shade"), "__Surface_Shade");
	EXPECT_TRUE(mgr.GetPrototypeInterface("Surface")->HasMethod("Weight"));
	EXPECT_FALSE(mgr.GetPrototypeInterface("Surface")->HasMethod("Weigh"));
	EXPECT_EQ(CountDependencies(Prototype("Wood")), 1);
}

TEST_F(PrototypeTest, AMissingInterfaceFailsTheClassOnTheConsole)
{
	Load("lost.tsl", "class Lost : Nowhere\n{\n\tfloat F() { return 1.0; }\n}\n");
	EXPECT_EQ(mgr.GetPrototypeShader("Lost", nullptr), nullptr);
	EXPECT_TRUE(
	    console.HasError("Failed to find interface Nowhere while initializing PrototypeShader Lost.\n"));
}

TEST_F(PrototypeTest, MemberVariablesSplitByQualifierAndStaticFlag)
{
	Load("i.tsl", kInterfaces);
	Load("u.tsl", kUtil);
	Load("w.tsl", kWood);
	PrototypeShader* wood = Prototype("Wood");
	ASSERT_NE(wood, nullptr);
	EXPECT_NE(wood->GetParameter("gain"), nullptr);
	EXPECT_EQ(wood->GetParameter("roughness"), nullptr);
	EXPECT_NE(wood->GetPrototypeParameter("roughness"), nullptr);
	EXPECT_EQ(wood->GetPrototypeParameter("gain"), nullptr);
	EXPECT_NE(wood->GetMember("shared"), nullptr);
	EXPECT_EQ(wood->GetMember("cached"), nullptr);
	EXPECT_NE(wood->GetPrototypeMember("cached"), nullptr);
	EXPECT_EQ(wood->GetPrototypeMember("shared"), nullptr);
}

TEST_F(PrototypeTest, StaticMethodsAndValuesAreMangledWhereverTheyAreUsed)
{
	Load("i.tsl", kInterfaces);
	Load("u.tsl", kUtil);
	Load("w.tsl", kWood);
	PrototypeShader* util = Prototype("Util");
	ASSERT_NE(util, nullptr);
	EXPECT_EQ(util->GetStaticMethodNameMangled("Half"), "Util_Half");
	EXPECT_EQ(util->GetStaticMethodNameMangled("Shade"), "Undefined");
	EXPECT_EQ(CountDependencies(util), 0); // calls of its own static methods are no dependency

	Module module;
	util->CollectShader(&module);
	const ModuleNames names(module);
	EXPECT_EQ(names.functions, (std::set<std::string>{"__ctor_Util", "Util_Half", "Util_Quarter"}));
	EXPECT_EQ(names.calls, (std::set<std::string>{"Util_Half"}));

	IShader* wood = Create("Wood");
	ASSERT_NE(wood, nullptr);
	const ModuleNames instance = CollectedNames(wood);
	EXPECT_EQ(instance.calls.count("Util_Half"), 1u);
	EXPECT_EQ(instance.calls.count("Half"), 0u);
	// The class-wide input is read under its class-wide name, in instance code too.
	bool gainMangled = false;
	for (const std::string& variable : instance.variables)
		gainMangled = gainMangled || variable.rfind("Wood_gain_k", 0) == 0;
	EXPECT_TRUE(gainMangled);
	EXPECT_EQ(instance.variables.count("gain"), 0u);
}

TEST_F(PrototypeTest, AnUnknownStaticMethodFailsWithItsLocation)
{
	Load("u.tsl", kUtil);
	Load("calls.tsl", "class Caller\n{\n\tfloat F()\n\t{\n\t\treturn Util.Third(1.0);\n\t}\n}\n");
	Result result;
	EXPECT_EQ(mgr.CreateShader("Caller", &result), nullptr);
	EXPECT_NE(Text(result).find("calls.tsl:5: Class \"Util\" has no static method named \"Third\"."),
	          std::string::npos)
	    << Text(result);
}

TEST_F(PrototypeTest, ASelectionOnAnythingButAClassNameIsLeftAlone)
{
	Load("u.tsl", kUtil);
	Load("calls.tsl", "class Caller\n{\n\tfloat F()\n\t{\n\t\treturn other.Half(1.0);\n\t}\n}\n");
	IShader* shader = Create("Caller");
	ASSERT_NE(shader, nullptr);
	EXPECT_EQ(CollectedNames(shader).calls.count("Half"), 1u);
	EXPECT_EQ(CountDependencies(Prototype("Caller")), 0);
}

TEST_F(PrototypeTest, APrototypeForgetsADependencyThatIsDeleted)
{
	Load("u.tsl", kUtil);
	Library caller;
	ASSERT_TRUE(caller.Init(&mgr, "caller.tsl",
	                        "class Caller\n{\n\tfloat F() { return Util.Half(1.0); }\n}\n", nullptr, 0));
	PrototypeShader* prototype = caller.GetPrototypeShader("Caller", nullptr);
	ASSERT_NE(prototype, nullptr);
	EXPECT_EQ(CountDependencies(prototype), 1);
	mgr.Shutdown(); // deletes Util with its library
	EXPECT_EQ(CountDependencies(prototype), 0);
	caller.Shutdown(); // must not touch the deleted class
}

TEST_F(PrototypeTest, ShuttingDownWithLiveShadersReportsOnceAndReturnsEveryKey)
{
	Load("i.tsl", kInterfaces);
	Load("u.tsl", kUtil);
	const size_t keysBefore = Impl()->GetCountKeys();
	{
		Library library;
		ASSERT_TRUE(library.Init(&mgr, "w.tsl", kWood, nullptr, 0));
		ASSERT_NE(library.CreateShader("Wood", nullptr), nullptr);
		ASSERT_NE(library.CreateShader("Wood", nullptr), nullptr);
		EXPECT_GT(Impl()->GetCountKeys(), keysBefore);
		console.Clear();
	}
	EXPECT_EQ(console.GetMessages(), std::vector<std::string>{"Wood shut down with 2 remaining shader(s)\n"});
	EXPECT_EQ(Impl()->GetCountKeys(), keysBefore);
}

TEST_F(PrototypeTest, ReferencesAreCountedPerGraphAndRegisteredWithTheInterface)
{
	Load("i.tsl", kInterfaces);
	Load("u.tsl", kUtil);
	Load("w.tsl", kWood);
	// Graphs of another class, so that Wood is referenced only by the test.
	IShader* shader = Create("Util");
	ASSERT_NE(shader, nullptr);
	PrototypeShader* wood = Prototype("Wood");
	IGraph* surface = shader->GetGraphSurface();
	IGraph* frame = shader->GetGraphFrame();

	ReferencePrototypeShader* first = wood->AcquireReference(surface);
	ASSERT_NE(first, nullptr);
	EXPECT_EQ(wood->AcquireReference(surface), first);
	EXPECT_NE(wood->AcquireReference(frame), first);
	ReferencePrototypeInterface* interfaceReference = wood->GetInterface()->GetReference(surface);
	EXPECT_EQ(interfaceReference->GetReferencePrototypeShaders().size(), 1u);

	EXPECT_TRUE(wood->ReleaseReference(first));
	EXPECT_EQ(interfaceReference->GetReferencePrototypeShaders().size(), 1u);
	EXPECT_TRUE(wood->ReleaseReference(first));
	EXPECT_TRUE(interfaceReference->GetReferencePrototypeShaders().empty());
	console.Clear();
	EXPECT_FALSE(wood->ReleaseReference(first));
	EXPECT_TRUE(console.HasMessage("PrototypeShader::ReleaseReference Reference Not Found\n"));
}

TEST_F(PrototypeTest, StaticInputsAreSetByNameOnTheClass)
{
	Load("i.tsl", kInterfaces);
	Load("u.tsl", kUtil);
	Load("w.tsl", kWood);
	PrototypeShader* wood = Prototype("Wood");
	float gain = 0.0f;
	ASSERT_TRUE(wood->GetParameter("gain")->Get(gain));
	EXPECT_EQ(gain, 2.0f);
	EXPECT_TRUE(wood->SetParameter("gain", 3.0f));
	ASSERT_TRUE(wood->GetParameter("gain")->Get(gain));
	EXPECT_EQ(gain, 3.0f);
	EXPECT_FALSE(wood->SetParameter("roughness", 1.0f)); // per instance, not on the class
	EXPECT_TRUE(console.HasMessage("PrototypeShader::_SetParameter Parameter Not Found (roughness)\n"));
}

TEST_F(PrototypeTest, ResizingAClassWideArrayRebuildsTheClassAndItsShaders)
{
	Load("h.tsl", "class Keeper\n{\n\tstatic float history[];\n\tfloat F() { return history[0]; }\n}\n");
	IShader* shader = Create("Keeper");
	ASSERT_NE(shader, nullptr);
	PrototypeShader* keeper = Prototype("Keeper");
	Counter<PrototypeShader*> classChanges;
	PrototypeShader::ListenerChangeStructure classListener = classChanges.Delegate();
	keeper->AddListenerChangeStructure(classListener);
	Counter<IShader*> shaderChanges;
	IShader::ListenerShader shaderListener = shaderChanges.Delegate();
	shader->AddListenerChangeStructure(shaderListener);

	ASSERT_TRUE(keeper->GetMember("history")->SetLength(3));
	EXPECT_EQ(classChanges.n, 1);
	EXPECT_EQ(shaderChanges.n, 1);
	EXPECT_NE(keeper->GetStatic(), nullptr);
	EXPECT_NE(keeper->GetTemplate(), nullptr);
	EXPECT_EQ(CollectedNames(shader).functions.count(shader->GetMethodNameMangled("F")), 1u);
}

} // namespace
} // namespace Tarsel::Effects::Testing
