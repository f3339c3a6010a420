#include "TestShaderSupport.h"

#include "objects/IReferenceParameter.h"
#include "objects/LocalParameterValueSingle.h"
#include "objects/ParameterValueArraySeparate.h"
#include "objects/ParameterValueSingle.h"
#include "objects/Shader.h"
#include "values/IStorage.h"
#include "values/ValueBuffer.h"

#include <memory>

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kPanel = R"(
class Panel
{
	input float gain = 0.5;
	input bool lit;
	input vec3 tint;
	input float weights[] = 2.0;
	input int counts[2];
	float Shade(int i)
	{
		return gain * weights[i] + float(weights.length + counts[1] + counts.length);
	}
}
)";

class ParameterValueTest : public ShaderTest
{
protected:
	void SetUp() override
	{
		Load("panel.tsl", kPanel);
		shader = Create("Panel");
		ASSERT_TRUE(shader);
	}
	IParameter& Parameter(const std::string& name)
	{
		IParameter* parameter = shader->GetParameter(name);
		EXPECT_TRUE(parameter) << name;
		return *parameter;
	}
	// Sets through the interface as the host does and reads back; false if either side refuses.
	template <class T>
	bool RoundTrip(const std::string& declaration, const T& value)
	{
		const std::string name = "R" + std::to_string(_nClasses++);
		Load(name + ".tsl", "class " + name + " { input " + declaration + "; void F() {} }");
		IShader* created = Create(name);
		IParameter* parameter = created ? created->GetParameter("x") : nullptr;
		T read = T();
		return parameter && parameter->Set(value) && parameter->Get(read) && read == value &&
		       parameter->Set(&value, 1) && parameter->Get(read, 0) && read == value;
	}

	IShader* shader = nullptr;

private:
	int _nClasses = 0;
};

// A drifted accessor signature would leave the interface's refusing default in place.
TEST_F(ParameterValueTest, EveryElementTypeRoundTripsThroughTheInterface)
{
	EXPECT_TRUE(RoundTrip("bool x", true));
	EXPECT_TRUE(RoundTrip("int x", -7));
	EXPECT_TRUE(RoundTrip("float x", 0.25f));
	EXPECT_TRUE(RoundTrip("ivec2 x", Vector2i(1, -2)));
	EXPECT_TRUE(RoundTrip("ivec3 x", Vector3i(1, 2, 3)));
	EXPECT_TRUE(RoundTrip("ivec4 x", Vector4i(1, 2, 3, 4)));
	EXPECT_TRUE(RoundTrip("vec2 x", Vector2f(1, 2)));
	EXPECT_TRUE(RoundTrip("vec3 x", Vector3f(1, 2, 3)));
	EXPECT_TRUE(RoundTrip("vec4 x", Vector4f(1, 2, 3, 4)));
	Matrix33f m3;
	m3(0, 2) = 5.0f;
	EXPECT_TRUE(RoundTrip("mat3 x", m3));
	Matrix44f m4;
	m4(3, 0) = 6.0f;
	EXPECT_TRUE(RoundTrip("mat4 x", m4));
	EXPECT_TRUE(RoundTrip("sampler2D x", reinterpret_cast<QLtexture*>(this)));
	EXPECT_TRUE(RoundTrip("samplerCube x", reinterpret_cast<QLtexture*>(this)));
	EXPECT_TRUE(RoundTrip("primitive x", QLprimitive(42)));
	// Arrays have the same family over their buffer.
	EXPECT_TRUE(RoundTrip("mat3 x[1]", m3));
	EXPECT_TRUE(RoundTrip("ivec3 x[1]", Vector3i(4, 5, 6)));
}

TEST_F(ParameterValueTest, FailedSetsChangeNothingAndTellNoOne)
{
	Counter<IParameter*> changes;
	IParameter& gain = Parameter("gain");
	gain.AddListenerChangeValue(changes.Delegate());
	EXPECT_FALSE(gain.Set(0.75f, 1));
	EXPECT_FALSE(gain.Set(Vector3f(1, 1, 1)));
	EXPECT_FALSE(gain.Set(3));
	const float aTwo[2] = {1.0f, 2.0f};
	EXPECT_FALSE(gain.Set(aTwo, 2));
	EXPECT_EQ(GetFloat(shader, "gain"), 0.5f);
	EXPECT_EQ(changes.n, 0);

	IParameter& counts = Parameter("counts");
	const int aThree[3] = {1, 2, 3};
	const int aTwoInts[2] = {8, 9};
	ASSERT_TRUE(counts.Set(aTwoInts, 2));
	EXPECT_FALSE(counts.Set(aThree, 3));
	EXPECT_FALSE(counts.Set(5, 2));
	int read = 0;
	ASSERT_TRUE(counts.Get(read, 1));
	EXPECT_EQ(read, 9);

	EXPECT_TRUE(gain.Set(0.75f));
	EXPECT_EQ(changes.n, 1);
	std::string text;
	ASSERT_TRUE(gain.GetAsString(text));
	EXPECT_EQ(text, "0.75");
	EXPECT_FALSE(gain.GetAsString(text, 1));
}

TEST_F(ParameterValueTest, ResizableArraysGrowFromTheirInitializerAndTellOnce)
{
	IParameter& weights = Parameter("weights");
	Counter<IParameter*> lengths;
	auto* array = dynamic_cast<ParameterValueArray*>(&weights);
	ASSERT_TRUE(array);
	array->AddListenerChangeLength(lengths.Delegate());

	EXPECT_EQ(weights.GetLength(), 0);
	ASSERT_TRUE(weights.SetLength(3));
	EXPECT_EQ(lengths.n, 1);
	EXPECT_EQ(GetFloat(shader, "weights", 2), 2.0f);
	ASSERT_TRUE(weights.Set(9.0f, 0));
	ASSERT_TRUE(weights.SetLength(3));
	EXPECT_EQ(lengths.n, 1);
	ASSERT_TRUE(weights.SetLength(1));
	EXPECT_EQ(GetFloat(shader, "weights", 0), 9.0f);

	EXPECT_FALSE(weights.SetLength(-1));
	EXPECT_EQ(weights.GetLength(), 1);
	EXPECT_EQ(array->GetStorage()->GetLength(), 1);
	EXPECT_EQ(lengths.n, 2);

	// An initializer that cannot fill the new elements takes the storage back to the old length.
	Load("flags.tsl", "class Flags { input bool x[] = 1; void F() {} }");
	IShader* flags = Create("Flags");
	ASSERT_TRUE(flags);
	auto* refused = dynamic_cast<ParameterValueArray*>(flags->GetParameter("x"));
	ASSERT_TRUE(refused);
	refused->AddListenerChangeLength(lengths.Delegate());
	EXPECT_FALSE(refused->SetLength(2));
	EXPECT_EQ(refused->GetLength(), 0);
	EXPECT_EQ(refused->GetStorage()->GetLength(), 0);
	EXPECT_EQ(lengths.n, 2);

	EXPECT_FALSE(Parameter("counts").SetLength(4));
	EXPECT_TRUE(console.HasMessage("ParameterValueArraySeparate::SetLength Not Resizable\n"));
	EXPECT_FALSE(Parameter("gain").SetLength(2));
}

TEST_F(ParameterValueTest, DestroyingAShaderReturnsTheKeysOfItsParameters)
{
	const size_t keysBefore = Impl()->GetCountKeys();
	IShader* other = Create("Panel");
	EXPECT_EQ(Impl()->GetCountKeys(), keysBefore + 1 + 5);
	mgr.DestroyShader(other);
	EXPECT_EQ(Impl()->GetCountKeys(), keysBefore);
}

TEST_F(ParameterValueTest, GeneratedCodeReadsTheMangledUniforms)
{
	auto* gain = dynamic_cast<ParameterValueSingle*>(&Parameter("gain"));
	auto* weights = dynamic_cast<ParameterValueArraySeparate*>(&Parameter("weights"));
	ASSERT_TRUE(gain && weights);
	EXPECT_EQ(gain->GetNameMangled().rfind("gain_k", 0), 0u);
	EXPECT_NE(gain->GetNameMangled(), "gain" + shader->GetKeyString());
	EXPECT_EQ(weights->GetNameLengthMangled(), weights->GetNameMangled() + "Length");

	const Module* module = static_cast<Shader*>(shader)->GetModule();
	ASSERT_TRUE(module);
	const ModuleNames names(*module);
	EXPECT_EQ(names.variables.count(gain->GetNameMangled()), 1u);
	EXPECT_EQ(names.variables.count(weights->GetNameMangled()), 1u);
	EXPECT_EQ(names.variables.count(weights->GetNameLengthMangled()), 1u);
	for (const char* declared : {"gain", "weights", "counts"})
		EXPECT_EQ(names.variables.count(declared), 0u) << declared;

	// The uniform declarations: one per single value, a block and a length per array.
	std::unique_ptr<Module> collected(Module::Create());
	ASSERT_TRUE(gain->CollectShader(collected.get()));
	ASSERT_TRUE(weights->CollectShader(collected.get()));
	const ModuleNames declared(*collected);
	EXPECT_EQ(declared.globals,
	          (std::set<std::string>{gain->GetNameMangled(), weights->GetNameLengthMangled()}));
	ASSERT_EQ(collected->GetStructDefinitions().size(), 1u);
	EXPECT_EQ(collected->GetStructDefinitions()[0]->GetName()->GetString(), weights->GetNameMangled());
	for (const DeclarationStatement* statement : collected->GetVariableDeclarations())
		EXPECT_EQ(statement->GetDeclaration()->GetStorageQualifier(), kStorage_Uniform);
}

TEST_F(ParameterValueTest, AnyOtherFieldOfAnArrayFailsTheShader)
{
	Load("size.tsl", "class Sized { input float w[]; float F() { return float(w.size); } }");
	Result result;
	EXPECT_EQ(mgr.CreateShader("Sized", &result), nullptr);
}

TEST_F(ParameterValueTest, ApplyWritesValuesUnderMangledNames)
{
	ReferencePrimitive primitive;
	auto* lit = dynamic_cast<ParameterValueSingle*>(&Parameter("lit"));
	auto* tint = dynamic_cast<ParameterValueSingle*>(&Parameter("tint"));
	auto* weights = dynamic_cast<ParameterValueArraySeparate*>(&Parameter("weights"));
	ASSERT_TRUE(lit && tint && weights);
	ASSERT_TRUE(lit->Set(true));
	ASSERT_TRUE(lit->Apply(&primitive, nullptr, 1));
	EXPECT_EQ(primitive.ExpectInt(1, 1), "");
	EXPECT_EQ(primitive.Last(1)->name, lit->GetNameMangled());
	ASSERT_TRUE(tint->Apply(&primitive, nullptr, 2));
	EXPECT_EQ(primitive.ExpectArray<Vector3f>(2, {Vector3f()}), "");

	ASSERT_TRUE(weights->SetLength(2));
	ASSERT_TRUE(weights->ApplyStorage(&primitive, nullptr, 3));
	EXPECT_TRUE(weights->IsBuffer());
	auto* buffer = static_cast<IValueBuffer*>(weights->GetStorage()->GetValue())->GetBuffer();
	EXPECT_EQ(primitive.ExpectBlock(3, buffer), "");
	ASSERT_TRUE(weights->ApplyLength(&primitive, nullptr, 4));
	EXPECT_EQ(primitive.ExpectInt(4, 2), "");
	EXPECT_EQ(primitive.Last(4)->name, weights->GetNameLengthMangled());

	primitive.RefuseAll();
	EXPECT_FALSE(weights->ApplyLength(&primitive, nullptr, 4));
	EXPECT_TRUE(console.HasMessage("ParameterValueArraySeparate::_ApplyLength Set Uniform\n"));
}

// The part of a graph reference that a local parameter reads.
class ReferenceDouble : public IReferenceParameter
{
public:
	explicit ReferenceDouble(IParameter* parameter) : _pParameter(parameter) {}
	IGraph* GetGraph() const override { return nullptr; }
	IParameter* GetParameter() const override { return _pParameter; }

private:
	IParameter* _pParameter;
};

TEST_F(ParameterValueTest, LocalValuesStartAsCopiesAndStayApart)
{
	ReferencePrimitive primitive;
	IParameter& gain = Parameter("gain");
	ASSERT_TRUE(gain.Set(0.25f));
	ReferenceDouble reference(&gain);
	std::unique_ptr<LocalParameterValueSingle> local(
	    LocalParameterValueSingle::Create(&primitive, &reference));
	ASSERT_TRUE(local);
	float read = 0;
	ASSERT_TRUE(local->Get(read));
	EXPECT_EQ(read, 0.25f);
	ASSERT_TRUE(local->Set(0.75f));
	EXPECT_EQ(GetFloat(shader, "gain"), 0.25f);
	EXPECT_FALSE(local->Set(1.0f, 1));

	ASSERT_TRUE(local->Apply(&primitive, nullptr, 5));
	EXPECT_EQ(primitive.ExpectFloat(5, 0.75f), "");
	EXPECT_EQ(primitive.Last(5)->name, "gain");

	Counter<ILocalParameter*> deleted;
	local->AddListenerDelete(deleted.Delegate());
	local.reset();
	EXPECT_EQ(deleted.n, 1);

	ReferenceDouble arrayReference(&Parameter("weights"));
	EXPECT_EQ(LocalParameterValueSingle::Create(&primitive, &arrayReference), nullptr);
}

} // namespace
} // namespace Tarsel::Effects::Testing
