#include "TestShaderSupport.h"

#include "objects/IReferencePrototypeParameter.h"
#include "objects/ParameterValue.h"
#include "objects/PrototypeMemberValueArray.h"
#include "objects/PrototypeParameterInterfaceArray.h"
#include "objects/PrototypeParameterInterfaceSingle.h"
#include "objects/PrototypeParameterValueArray.h"
#include "objects/PrototypeShader.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kClasses = R"(
interface Light
{
	vec3 Emit();
}
class Lamp : Light
{
	input float albedo;
	float cached;
	float table[2];
	vec3 Emit() { return vec3(albedo * cached * table[0]); }
}
class Stone
{
	input float albedo;
	input Light lights[];
	input Light three[3];
	input Lamp lamp;
	float F() { return albedo; }
}
)";

// A class's presence in one graph, as far as the descriptors look at it.
class ReferenceShaderDouble : public IReferencePrototypeShader
{
public:
	explicit ReferenceShaderDouble(IGraph* graph) : _pGraph(graph) {}
	IGraph* GetGraph() const override { return _pGraph; }
	IPrototypeShader* GetPrototypeShader() const override { return nullptr; }

private:
	IGraph* _pGraph;
};

class DescriptorTest : public ShaderTest
{
protected:
	void SetUp() override { Load("classes.tsl", kClasses); }
	PrototypeShader* Prototype(const std::string& name)
	{
		Result result;
		auto* prototype = static_cast<PrototypeShader*>(mgr.GetPrototypeShader(name, &result));
		EXPECT_TRUE(prototype) << result.GetText();
		return prototype;
	}
	// Two distinct graphs to key references by.
	std::pair<IGraph*, IGraph*> Graphs()
	{
		IShader* shader = Create("Lamp");
		return {shader->GetGraphSurface(), shader->GetGraphFrame()};
	}
};

TEST_F(DescriptorTest, NamesAreUniquePerClassAndDeclaration)
{
	IPrototypeParameter* lamp = Prototype("Lamp")->GetPrototypeParameter("albedo");
	IPrototypeParameter* stone = Prototype("Stone")->GetPrototypeParameter("albedo");
	ASSERT_TRUE(lamp && stone);
	EXPECT_EQ(lamp->GetName(), "albedo");
	EXPECT_EQ(lamp->GetType(), kType_Float);
	EXPECT_EQ(lamp->GetNameMangled().rfind("albedo_k", 0), 0u);
	EXPECT_NE(lamp->GetNameMangled(), stone->GetNameMangled());

	IPrototypeMember* cached = Prototype("Lamp")->GetPrototypeMember("cached");
	IPrototypeMember* table = Prototype("Lamp")->GetPrototypeMember("table");
	ASSERT_TRUE(cached && table);
	EXPECT_EQ(cached->GetNameMangled().rfind("PrototypeMemberValueSingle_k", 0), 0u);
	EXPECT_EQ(table->GetNameMangled().rfind("PrototypeMemberValueArray_k", 0), 0u);
	EXPECT_EQ(table->GetName(), "table");

	// The instance's parameter carries the descriptor's suffix and then its own.
	IShader* shader = Create("Lamp");
	auto* parameter = dynamic_cast<ParameterValue*>(shader->GetParameter("albedo"));
	ASSERT_TRUE(parameter);
	EXPECT_EQ(parameter->GetNameMangled().rfind(lamp->GetNameMangled() + "_k", 0), 0u);
}

TEST_F(DescriptorTest, InterfaceInputsDescribeTheirTargetAndLength)
{
	PrototypeShader* stone = Prototype("Stone");
	auto* lights = dynamic_cast<PrototypeParameterInterfaceArray*>(stone->GetPrototypeParameter("lights"));
	auto* three = dynamic_cast<PrototypeParameterInterfaceArray*>(stone->GetPrototypeParameter("three"));
	auto* lamp = dynamic_cast<PrototypeParameterInterfaceSingle*>(stone->GetPrototypeParameter("lamp"));
	ASSERT_TRUE(lights && three && lamp);
	EXPECT_EQ(lights->GetType(), kType_Void);
	EXPECT_FALSE(lights->IsFixedLength());
	EXPECT_EQ(lights->GetLength(), 0);
	EXPECT_TRUE(three->IsFixedLength());
	EXPECT_EQ(three->GetLength(), 3);
	EXPECT_TRUE(lights->IsInterface());
	EXPECT_FALSE(lamp->IsInterface());
	EXPECT_EQ(lamp->GetPrototypeShader(), Prototype("Lamp"));
	EXPECT_EQ(lamp->GetNameIndices(), "InterfaceIndices" + lamp->GetKey().ToString());
	EXPECT_EQ(lamp->GetNameMangled(), "lamp" + lamp->GetKey().ToString());

	// Each instance gets inputs of the descriptors' shapes, waiting for connections.
	IShader* shader = Create("Stone");
	ASSERT_TRUE(shader);
	EXPECT_FALSE(shader->IsComplete());
	EXPECT_TRUE(shader->GetParameter("lights")->IsResizable());
	EXPECT_EQ(shader->GetParameter("three")->GetLength(), 3);
	EXPECT_FALSE(shader->GetParameter("lamp")->IsArray());
}

TEST_F(DescriptorTest, ValueDescriptorsKeepOneReferencePerGraph)
{
	const auto graphs = Graphs();
	ReferenceShaderDouble first(graphs.first), second(graphs.second), elsewhere(nullptr);
	IPrototypeParameter* albedo = Prototype("Lamp")->GetPrototypeParameter("albedo");
	IReferencePrototypeParameter* reference = albedo->CreateReference(&first);
	ASSERT_TRUE(reference);
	EXPECT_EQ(reference->GetGraph(), graphs.first);
	EXPECT_EQ(reference->GetDescriptor(), albedo);
	EXPECT_EQ(albedo->CreateReference(&first), reference);
	IReferencePrototypeParameter* other = albedo->CreateReference(&second);
	EXPECT_NE(other, reference);
	EXPECT_EQ(albedo->CreateReference(&elsewhere), nullptr);

	EXPECT_TRUE(albedo->DestroyReference(reference));
	EXPECT_FALSE(albedo->DestroyReference(reference));
	EXPECT_TRUE(console.HasMessage("PrototypeParameterValueSingle::DestroyReference Reference Not Found\n"));
	// A new request for the graph makes a new reference; the other graph's is untouched.
	IReferencePrototypeParameter* again = albedo->CreateReference(&first);
	ASSERT_TRUE(again);
	EXPECT_EQ(albedo->CreateReference(&second), other);

	IPrototypeMember* table = Prototype("Lamp")->GetPrototypeMember("table");
	IReferencePrototypeMember* member = table->CreateReference(&first);
	ASSERT_TRUE(member);
	EXPECT_EQ(table->CreateReference(&first), member);
	EXPECT_TRUE(table->DestroyReference(member));
	EXPECT_FALSE(table->DestroyReference(member));
	EXPECT_TRUE(console.HasMessage("PrototypeMemberValueArray::DestroyReference Reference Not Found\n"));
}

TEST_F(DescriptorTest, InterfaceDescriptorsHandOutANewReferenceEachTime)
{
	const auto graphs = Graphs();
	ReferenceShaderDouble first(graphs.first);
	IPrototypeParameter* lights = Prototype("Stone")->GetPrototypeParameter("lights");
	IReferencePrototypeParameter* a = lights->CreateReference(&first);
	IReferencePrototypeParameter* b = lights->CreateReference(&first);
	ASSERT_TRUE(a && b);
	EXPECT_NE(a, b);
	EXPECT_TRUE(lights->DestroyReference(a));
	EXPECT_TRUE(lights->DestroyReference(b));
	EXPECT_TRUE(lights->DestroyReference(nullptr));
}

TEST_F(DescriptorTest, DescriptorsReturnTheirKeys)
{
	const VariableDeclaration* declaration = nullptr;
	for (const VariableDeclaration* variable : Prototype("Lamp")->GetDefinition()->GetMemberVariables())
		if (variable->GetIdentifier()->GetString() == "table")
			declaration = variable;
	ASSERT_TRUE(declaration);
	const size_t keysBefore = Impl()->GetCountKeys();
	{
		PrototypeMemberValueArray descriptor;
		ASSERT_TRUE(descriptor.Init(&mgr, declaration));
		EXPECT_EQ(Impl()->GetCountKeys(), keysBefore + 1);
		descriptor.Shutdown();
		descriptor.Shutdown();
		EXPECT_EQ(Impl()->GetCountKeys(), keysBefore);
	}
	{
		PrototypeParameterValueArray descriptor;
		ASSERT_TRUE(descriptor.Init(&mgr, declaration));
	}
	EXPECT_EQ(Impl()->GetCountKeys(), keysBefore);
	EXPECT_FALSE(console.HasMessage("MgrKeys::Destroy Key Not Found\n"));
}

} // namespace
} // namespace Tarsel::Effects::Testing
