#include "TestShaderSupport.h"

#include "codegen/VisitorPrintTsl.h"
#include "objects/ParameterInterfaceArray.h"
#include "objects/ParameterValue.h"
#include "objects/PrototypeShader.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kLights = R"(
interface Light { vec3 Emit(vec3 P); }
class Spot : Light { vec3 Emit(vec3 P) { return P; } }
class Point : Light { vec3 Emit(vec3 P) { return -P; } }
class Pick : Light { input Spot spot; vec3 Emit(vec3 P) { return spot.Flash(P); } }
class Loops
{
	input Light lights[];
	float Weight(int k) { return 1.0; }
	vec3 Unrolled(vec3 P) { vec3 c; for (int i = 0; i < lights.length; ++i) { c += lights[i].Emit(P) * Weight(i); } return c; }
	vec3 LessEqual(vec3 P) { vec3 c; for (int i = 0; i <= lights.length; ++i) c += lights[i].Emit(P); return c; }
	vec3 Postfix(vec3 P) { vec3 c; for (int i = 0; i < lights.length; i++) c += lights[i].Emit(P); return c; }
	vec3 Arithmetic(vec3 P) { vec3 c; for (int i = 0; i < lights.length; ++i) c += lights[i].Emit(P * float(i + 1)); return c; }
	vec3 Constant(vec3 P) { vec3 c; for (int i = 0; i < lights.length; ++i) c += lights[0].Emit(P); return c; }
	vec3 Skips(vec3 P) { vec3 c; for (int i = 0; i < lights.length; ++i) { if (c.x > 1.0) continue; c += lights[i].Emit(P); } return c; }
	int Count() { return lights.length; }
	vec3 Last(vec3 P) { return lights[lights.length - 1].Emit(P * float(lights.length)); }
}
class Whole { input Light lights[]; vec3 Emit(vec3 P) { return lights.Emit(P); } }
class Sized { input Light lights[]; int Size() { return lights.size; } }
interface Probe { float F(); int I(); bool B(); vec3 V(); mat4 M(); bvec2 BV(); ivec3 IV(); void N(); sampler2D T(); }
class Probed : Probe
{
	input sampler2D map;
	float F() { return 1.0; } int I() { return 1; } bool B() { return true; } vec3 V() { return vec3(1.0); }
	mat4 M() { return mat4(1.0); } bvec2 BV() { return bvec2(true); } ivec3 IV() { return ivec3(1); }
	void N() { } sampler2D T() { return map; }
}
class Probing { input Probe probes[]; }
class Lamp : Light { vec3 Emit(vec3 P) { return P; } float Power() { return 1.0; } static float Scale() { return 2.0; } }
class Lamps { input Lamp lamps[]; }
class Weighted
{
	input Light lights[];
	input int pick = 0;
	input float gain = 2.0;
	vec3 Sum(vec3 P) { vec3 c; for (int i = 0; i < lights.length; ++i) { c += lights[i].Emit(P) * gain; } return c + lights[pick].Emit(P); }
}
class Shadowed { input vec3 P = vec3(1.0); input Light lights[]; vec3 First() { return lights[0].Emit(P); } }
class Shared { static input Light lamps[]; static vec3 Sum(vec3 Q) { return lamps[0].Emit(Q); } }
)";

class InterfaceCodeTest : public ShaderTest
{
protected:
	void SetUp() override { Load("lights.tsl", kLights); }
	// The text the printer makes of a shader's code.
	std::string Print(IShader* shader)
	{
		Module module;
		EXPECT_TRUE(shader->CollectShader(&module));
		Result result;
		VisitorPrintTsl printer(&result, &mgr, false);
		EXPECT_TRUE(printer.Visit(&module)) << result.GetText();
		return printer.result();
	}
	// One function's text, from its return type to its closing brace; empty when there is none.
	static std::string Function(const std::string& text, const std::string& head)
	{
		const size_t begin = text.find(head + "(");
		const size_t body = begin == std::string::npos ? begin : text.find("\n{", begin);
		if (body == std::string::npos)
			return std::string();
		return text.substr(begin, text.find("\n}\n", body) + 2 - begin);
	}
	// Where a piece of the library's text sits, as messages name it.
	static std::string Line(const std::string& part)
	{
		const std::string text(kLights);
		return "lights.tsl:" +
		       std::to_string(1 + std::count(text.begin(), text.begin() + text.find(part), '\n'));
	}
	static int Count(const std::string& text, const std::string& part)
	{
		int n = 0;
		for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
			++n;
		return n;
	}
	static std::string Dispatch(IShader* owner, const std::string& input, const std::string& method)
	{
		auto* parameter = dynamic_cast<ParameterInterfaceArray*>(owner->GetParameter(input));
		return parameter ? parameter->GetNameDispatch(method) : std::string("?");
	}
	// An owner whose array input holds one new shader of each class given.
	IShader* Connected(const std::string& className, const std::string& input,
	                   const std::vector<std::string>& elements)
	{
		IShader* owner = Create(className);
		std::vector<IShader*> shaders;
		for (const std::string& element : elements)
			shaders.push_back(Create(element));
		IParameter* parameter = owner->GetParameter(input);
		EXPECT_TRUE(parameter->SetLength(static_cast<int>(shaders.size())));
		Result result;
		EXPECT_TRUE(owner->SetParameter(&result, input, shaders.data(), static_cast<int>(shaders.size())))
		    << result.GetText();
		return owner;
	}
};

TEST_F(InterfaceCodeTest, CallsAndFieldsTheInputCannotServeFailTheBuildAtTheirPlace)
{
	Result result;
	EXPECT_FALSE(Create("Pick")->SetParameter(&result, "spot", Create("Spot")));
	// The array's name without an index is no element; the rebuild that completes the shader fails, and the
	// host hears of it from the call that triggered it.
	IShader* whole = Create("Whole");
	whole->GetParameter("lights")->SetLength(0);
	IShader* none[] = {nullptr};
	EXPECT_FALSE(whole->SetParameter(&result, "lights", none, 0));
	EXPECT_EQ(Text(result), Line("spot.Flash") + ": Class \"Spot\" has no method named \"Flash\".\n|" +
	                            Line("lights.Emit") + ": Calling array input \"lights\" as single value.\n|");
	EXPECT_FALSE(whole->CollectShader(std::make_unique<Module>().get()));
	// length is the count uniform; no other field exists.
	IShader* sized = Create("Sized");
	sized->GetParameter("lights")->SetLength(0);
	EXPECT_FALSE(sized->CollectShader(std::make_unique<Module>().get()));
	IShader* loops = Connected("Loops", "lights", {"Spot"});
	const std::string count =
	    dynamic_cast<ParameterInterfaceArray*>(loops->GetParameter("lights"))->GetNameCount();
	const std::string text = Print(loops);
	EXPECT_NE(text.find("uniform int " + count + ";"), std::string::npos) << text;
	EXPECT_NE(Function(text, "int " + loops->GetMethodNameMangled("Count")).find("return " + count + ";"),
	          std::string::npos);
}

TEST_F(InterfaceCodeTest, ThreeConnectedShadersPrintWithTheirDispatchAndUnrolledCalls)
{
	IShader* loops = Connected("Loops", "lights", {"Spot", "Point", "Spot"});
	IShader* elements[3];
	std::string emit[3];
	for (int index = 0; index < 3; ++index)
	{
		ASSERT_TRUE(loops->GetParameter("lights")->Get(elements[index], index));
		emit[index] = elements[index]->GetMethodNameMangled("Emit");
	}
	const std::string text = Print(loops);
	const std::string dispatch = Dispatch(loops, "lights", "Emit");
	for (int index = 0; index < 3; ++index)
		EXPECT_EQ(Count(text, "vec3 " + emit[index] + "(vec3 P);"), 1) << text;
	EXPECT_EQ(Function(text, "vec3 " + dispatch),
	          "vec3 " + dispatch + "(int iThis, vec3 P)\n{\n\tif ((iThis==0))\n\t\treturn " + emit[0] +
	              "(P);\n\tif ((iThis==1))\n\t\treturn " + emit[1] + "(P);\n\tif ((iThis==2))\n\t\treturn " +
	              emit[2] + "(P);\n\treturn vec3(0.0);\n}")
	    << text;

	// Three copies of the body in element order, each calling its own element, increments between them.
	const std::string unrolled = Function(text, "vec3 " + loops->GetMethodNameMangled("Unrolled"));
	EXPECT_EQ(unrolled.find("for"), std::string::npos) << unrolled;
	EXPECT_EQ(Count(unrolled, "int i = 0;"), 1);
	EXPECT_EQ(Count(unrolled, "++i;"), 2);
	EXPECT_EQ(Count(unrolled, loops->GetMethodNameMangled("Weight") + "(i)"), 3);
	for (int index = 0; index < 3; ++index)
		EXPECT_EQ(Count(unrolled, emit[index] + "(P)"), 1) << unrolled;
	EXPECT_LT(unrolled.find(emit[0]), unrolled.find(emit[1]));
	EXPECT_EQ(unrolled.find(dispatch), std::string::npos);

	// Any looser loop stays a loop and calls through the dispatch function; so does one whose body jumps,
	// since its copies would have no loop to continue.
	for (const char* method : {"LessEqual", "Postfix", "Arithmetic", "Constant", "Skips"})
	{
		const std::string kept = Function(text, "vec3 " + loops->GetMethodNameMangled(method));
		EXPECT_NE(kept.find("for"), std::string::npos) << method << "\n" << kept;
		EXPECT_NE(kept.find(dispatch + "("), std::string::npos) << method << "\n" << kept;
		EXPECT_EQ(kept.find(emit[1]), std::string::npos) << method << "\n" << kept;
	}
	// A length in the index and in the arguments of a dispatched call: both become the count uniform.
	const std::string count =
	    dynamic_cast<ParameterInterfaceArray*>(loops->GetParameter("lights"))->GetNameCount();
	EXPECT_NE(Function(text, "vec3 " + loops->GetMethodNameMangled("Last"))
	              .find(dispatch + "((" + count + "-1), (P*float(" + count + ")))"),
	          std::string::npos)
	    << text;
	const std::string constructor = Function(text, "void " + loops->GetConstructor());
	EXPECT_LT(constructor.find(elements[0]->GetConstructor()),
	          constructor.find(elements[1]->GetConstructor()));
}

TEST_F(InterfaceCodeTest, DispatchFallsThroughToTheZeroOfItsReturnType)
{
	IShader* empty = Create("Probing");
	ASSERT_TRUE(empty->GetParameter("probes")->SetLength(0));
	IShader* one = Connected("Probing", "probes", {"Probed"});
	IShader* probed = nullptr;
	ASSERT_TRUE(one->GetParameter("probes")->Get(probed, 0));
	const std::string textEmpty = Print(empty);
	const std::string textOne = Print(one);
	// The body of one dispatch function, and the same after the first element's branch.
	const auto body = [&](IShader* owner, const std::string& text, const char* type, const char* method)
	{
		const std::string function =
		    Function(text, std::string(type) + " " + Dispatch(owner, "probes", method));
		const std::string branch = "\tif ((iThis==0))\n\t\t";
		const size_t at = function.find(branch);
		return owner == empty ? function.substr(function.find("\n{") + 1)
		                      : function.substr(function.find(";\n", at) + 2);
	};
	const std::pair<const char*, const char*> cases[] = {{"float", "F"},  {"int", "I"},  {"bool", "B"},
	                                                     {"vec3", "V"},   {"mat4", "M"}, {"bvec2", "BV"},
	                                                     {"ivec3", "IV"}, {"void", "N"}, {"sampler2D", "T"}};
	const char* const zeros[] = {"\treturn 0.0;\n}",
	                             "\treturn 0;\n}",
	                             "\treturn false;\n}",
	                             "\treturn vec3(0.0);\n}",
	                             "\treturn mat4(0.0);\n}",
	                             "\treturn bvec2(false);\n}",
	                             "\treturn ivec3(0);\n}",
	                             "",
	                             ""};
	for (size_t k = 0; k < std::size(cases); ++k)
	{
		const auto [type, method] = cases[k];
		// An empty array's body is the zero return alone; void returns bare, a texture has no zero.
		const std::string emptyBody = k == 7 ? "\treturn ;\n}" : zeros[k][0] ? zeros[k] : "}";
		EXPECT_EQ(body(empty, textEmpty, type, method), "{\n" + std::string(emptyBody)) << method;
		EXPECT_EQ(body(one, textOne, type, method), zeros[k][0] ? zeros[k] : "}") << method;
	}
	EXPECT_NE(Function(textOne, "void " + Dispatch(one, "probes", "N"))
	              .find(probed->GetMethodNameMangled("N") + "();"),
	          std::string::npos);
}

TEST_F(InterfaceCodeTest, AnArrayOfAClassDispatchesEveryInstanceMethod)
{
	IShader* lamps = Connected("Lamps", "lamps", {"Lamp"});
	const std::string text = Print(lamps);
	EXPECT_NE(Function(text, "vec3 " + Dispatch(lamps, "lamps", "Emit")), "") << text;
	EXPECT_NE(Function(text, "float " + Dispatch(lamps, "lamps", "Power")), "");
	EXPECT_EQ(text.find(Dispatch(lamps, "lamps", "Scale")), std::string::npos);
}

TEST_F(InterfaceCodeTest, AShaderInTwoSlotsIsDeclaredOnceAndDispatchedFromBoth)
{
	IShader* loops = Create("Loops");
	IShader* spot = Create("Spot");
	IShader* twice[] = {spot, spot};
	ASSERT_TRUE(loops->GetParameter("lights")->SetLength(2));
	ASSERT_TRUE(loops->SetParameter(nullptr, "lights", twice, 2));
	const std::string text = Print(loops);
	const std::string emit = spot->GetMethodNameMangled("Emit");
	EXPECT_EQ(Count(text, "vec3 " + emit + "(vec3 P);"), 1) << text;
	EXPECT_EQ(Count(Function(text, "vec3 " + Dispatch(loops, "lights", "Emit")), "return " + emit + "(P);"),
	          2)
	    << text;
}

// Values are renamed before the loops are unrolled: every copy and the dispatched index use the uniforms.
TEST_F(InterfaceCodeTest, InputsUsedBesideTheArrayAreRenamedInEveryCopy)
{
	IShader* weighted = Connected("Weighted", "lights", {"Spot", "Point", "Spot"});
	const std::string text = Print(weighted);
	const std::string sum = Function(text, "vec3 " + weighted->GetMethodNameMangled("Sum"));
	const auto uniform = [&](const char* name)
	{ return dynamic_cast<ParameterValue*>(weighted->GetParameter(name))->GetNameMangled(); };
	EXPECT_EQ(Count(sum, "(P)*" + uniform("gain") + ")"), 3) << sum;
	EXPECT_EQ(Count(sum, Dispatch(weighted, "lights", "Emit") + "(" + uniform("pick") + ", P)"), 1) << sum;
	EXPECT_EQ(sum.find("gain;"), std::string::npos) << sum;
}

// Dispatch functions are made after the owner's code is rewritten: an input named like a parameter of the
// interface's method leaves them alone, and class-wide arrays get theirs in the class-wide code.
TEST_F(InterfaceCodeTest, DispatchFunctionsAreNotRewrittenWithTheOwnersCode)
{
	IShader* shadowed = Connected("Shadowed", "lights", {"Spot"});
	IShader* element = nullptr;
	ASSERT_TRUE(shadowed->GetParameter("lights")->Get(element, 0));
	const std::string text = Print(shadowed);
	const std::string dispatch = Function(text, "vec3 " + Dispatch(shadowed, "lights", "Emit"));
	EXPECT_NE(dispatch.find(element->GetMethodNameMangled("Emit") + "(P);"), std::string::npos) << text;
	EXPECT_NE(Function(text, "vec3 " + shadowed->GetMethodNameMangled("First")).find("(0, P_"),
	          std::string::npos)
	    << text;

	auto* shared = dynamic_cast<PrototypeShader*>(mgr.GetPrototypeShader("Shared", nullptr));
	ASSERT_NE(shared, nullptr);
	IShader* lamps[] = {Create("Spot"), Create("Point")};
	ASSERT_TRUE(shared->GetParameter("lamps")->SetLength(2));
	ASSERT_TRUE(shared->SetParameter("lamps", lamps, 2));
	Module module;
	ASSERT_TRUE(shared->CollectShader(&module));
	VisitorPrintTsl printer(nullptr, &mgr, false);
	ASSERT_TRUE(printer.Visit(&module));
	const std::string sharedText = printer.result();
	auto* array = dynamic_cast<ParameterInterfaceArray*>(shared->GetParameter("lamps"));
	ASSERT_NE(array, nullptr);
	const std::string sharedDispatch = Function(sharedText, "vec3 " + array->GetNameDispatch("Emit"));
	EXPECT_NE(sharedDispatch.find(lamps[1]->GetMethodNameMangled("Emit") + "(P);"), std::string::npos)
	    << sharedText;
}

} // namespace
} // namespace Tarsel::Effects::Testing
