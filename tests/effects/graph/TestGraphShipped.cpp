#include <cmath>
#include <vector>

#include "../codegen/TestRootSupport.h"
#include "graph/ReferencePrototypeShader.h"
#include "objects/ParameterInterfaceArray.h"
#include "quillon/Interpreter.h"

namespace Tarsel::Effects::Testing
{
namespace
{

const float kInvPi = 0.318309886183791f;
// What an effect would write for a Matte: its albedo apart from the colour.
const std::map<std::string, QLComponents> kAlbedoApart = {{"__outputAttachmentIndex_o_albedo", {1.0}}};

// A class of our own with a class-wide input and a coordinate, both of which must reach the result.
const char* const kScaled = R"(
class Scaled : Surface
{
	coord vec2 uv;
	output vec3 o_color;
	static input float scale = 1.0;
	void Shade()
	{
		accumulate(o_color, vec3(uv, 1.0) * scale);
	}
	int GetRayCount(int rayClass)
	{
		return 0;
	}
}
)";

// Collects the delegates that a compiled graph hands out for changed values.
struct Updates
{
	std::vector<IGraph::DelegateApply> vDelegates;
	bool On(IGraph*, IGraph::DelegateApply& apply)
	{
		vDelegates.push_back(apply);
		return true;
	}
};

size_t Count(const std::string& text, const std::string& part)
{
	size_t n = 0;
	for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
		++n;
	return n;
}

// The shipped libraries, with surfaces compiled and run as an effect would: graph, root and vertex stage
// linked on the reference device, values applied to a primitive, one ray run by the interpreter.
class GraphShippedTest : public GraphTest
{
protected:
	GraphShippedTest()
	{
		ScopedVariable path("TARSEL_SHADER_PATH", TARSEL_SHADERS_DIR);
		for (const char* file : {"Interfaces", "Sampling", "Textures", "Lights", "Surfaces"})
		{
			Result result;
			EXPECT_TRUE(mgr.AddLibrary(std::string(file) + ".tsl", &result))
			    << file << ": " << result.GetText();
		}
	}

	// A Matte with ambient zero lit by point lights of the given positions and intensities.
	IShader* LitMatte(const std::vector<std::pair<Vector3f, float>>& lights, bool ambient = false)
	{
		IShader* matte = Create("Matte");
		EXPECT_TRUE(matte->SetCoord(nullptr, "uv", "uv"));
		if (!ambient)
		{
			EXPECT_TRUE(matte->SetParameter(nullptr, "ambient", Vector3f(0.0f, 0.0f, 0.0f)));
		}
		std::vector<IShader*> shaders;
		for (const auto& [position, intensity] : lights)
		{
			shaders.push_back(Create("PointLight"));
			EXPECT_TRUE(shaders.back()->SetParameter(nullptr, "position", position));
			EXPECT_TRUE(shaders.back()->SetParameter(nullptr, "intensity", intensity));
		}
		const int n = static_cast<int>(shaders.size());
		EXPECT_TRUE(matte->GetParameter("lights")->SetLength(n));
		if (n > 0)
		{
			EXPECT_TRUE(matte->SetParameter(nullptr, "lights", shaders.data(), n));
		}
		return matte;
	}

	// Compiles and links the shader's surface graph, applies its values and runs one hit at the origin
	// with the normal up, seen from above; the accumulated o_color.
	Vector4f Run(IShader* shader, std::unique_ptr<EffectDouble>& effect,
	             const std::map<std::string, QLComponents>& variables = kAlbedoApart)
	{
		IGraph* graph = shader->GetGraphSurface();
		if (!effect)
			effect = std::make_unique<EffectDouble>(&mgr, graph);
		Result result;
		EXPECT_TRUE(effect->CompileAndLink(&result)) << result.GetText() << "\n" << Text(graph);
		EXPECT_TRUE(graph->Apply(&primitive, effect->program, nullptr));

		return RunApplied(effect->program, variables);
	}
	Vector4f RunApplied(IQLProgram* program,
	                    const std::map<std::string, QLComponents>& variables = kAlbedoApart)
	{
		QLRunInputs inputs;
		inputs.rayDirection = Vector3f(0.0f, -1.0f, 0.0f);
		inputs.variables = variables;
		inputs.variables.emplace("Position_WorldSpace", QLComponents{0.0, 0.0, 0.0, 1.0});
		inputs.variables.emplace("Normal", QLComponents{0.0, 1.0, 0.0});
		inputs.variables.emplace("__outputAttachmentIndex_o_color", QLComponents{0.0});
		QLRunResults results;
		EXPECT_TRUE(interpreter.Run(program, IQLShader::kType_Ray, &primitive, inputs, results))
		    << results.error;
		return results.accumulated[0];
	}
	static void ExpectRgb(const Vector4f& actual, const Vector3f& expected)
	{
		EXPECT_NEAR(actual.x, expected.x, 1e-5f);
		EXPECT_NEAR(actual.y, expected.y, 1e-5f);
		EXPECT_NEAR(actual.z, expected.z, 1e-5f);
	}

	ReferencePrimitive primitive;
	Interpreter interpreter;
};

TEST_F(GraphShippedTest, AMaterialWithATextureAndThreeLightsPrintsEachInstanceUnderItsKey)
{
	IShader* matte = Create("Matte");
	IShader* checker = Create("CheckerTexture");
	IShader* lights[] = {Create("PointLight"), Create("DirectionalLight"), Create("DirectionalLight")};
	ASSERT_TRUE(matte->SetCoord(nullptr, "uv", "uv"));
	ASSERT_TRUE(matte->SetParameter(nullptr, "albedo", checker));
	ASSERT_TRUE(matte->GetParameter("lights")->SetLength(3));
	ASSERT_TRUE(matte->SetParameter(nullptr, "lights", lights, 3));
	ScopedVariable unoptimised("TZR_DISABLE_EFFECTS_OPTIMIZATIONS", "1");
	IGraph* graph = matte->GetGraphSurface();
	std::unique_ptr<EffectDouble> effect = std::make_unique<EffectDouble>(&mgr, graph);
	Result result;
	ASSERT_TRUE(effect->CompileAndLink(&result)) << result.GetText() << "\n" << Text(graph);
	const std::string text = Text(graph);

	// Every instance's methods under its own key, the texture's through the single input.
	for (IShader* light : lights)
		EXPECT_EQ(Count(text, light->GetMethodNameMangled("Illuminate") + "(vec3 P, vec3 N, out vec3 L)\n{"),
		          1u)
		    << text;
	EXPECT_NE(lights[1]->GetMethodNameMangled("Illuminate"), lights[2]->GetMethodNameMangled("Illuminate"));
	EXPECT_EQ(Count(text, checker->GetMethodNameMangled("Sample") + "(vec2 uv)\n{"), 1u);
	// Class-level code once however many instances share it.
	EXPECT_EQ(Count(text, "uniform float DirectionalLight"), 1u) << text;
	// The array's dispatch function and count, and the per-instance uniforms of both lights of one class.
	const auto* lightsInput = dynamic_cast<ParameterInterfaceArray*>(matte->GetParameter("lights"));
	ASSERT_NE(lightsInput, nullptr);
	EXPECT_TRUE(Contains(text, "uniform int " + lightsInput->GetNameCount() + ";"));
	EXPECT_TRUE(Contains(text, lightsInput->GetNameCount().substr(0, lightsInput->GetNameCount().size() - 6) +
	                               "_Illuminate(int iThis, vec3 P, vec3 N, out vec3 L)\n{"))
	    << text;
	EXPECT_EQ(Count(text, "uniform vec3 direction_k"), 2u);
	EXPECT_EQ(Count(text, "uniform float intensity_k"), 3u);

	// One prototype reference per class, counting the instances of that class in the graph.
	IPrototypeShader* directional = lights[1]->GetPrototypeShader();
	ReferencePrototypeShader* reference = directional->AcquireReference(graph);
	ASSERT_NE(reference, nullptr);
	EXPECT_EQ(reference->GetCountReferenceShader(), 2);
	EXPECT_TRUE(directional->ReleaseReference(reference));
	ASSERT_TRUE(matte->SetParameter(nullptr, "lights", Create("PointLight"), 2));
	ASSERT_TRUE(effect->CompileAndLink(&result)) << result.GetText();
	reference = directional->AcquireReference(graph);
	EXPECT_EQ(reference->GetCountReferenceShader(), 1);
	EXPECT_TRUE(directional->ReleaseReference(reference));
	EXPECT_EQ(Count(Text(graph), "uniform vec3 direction_k"), 1u);
}

TEST_F(GraphShippedTest, ALightWithItsOwnGraphIsCalledThroughItAndBothProgramsLink)
{
	// The light's surface graph defines Illuminate; the material's only declares and calls it.
	std::unique_ptr<EffectDouble> lightEffect;
	IShader* matte = LitMatte({{Vector3f(0.0f, 2.0f, 0.0f), 8.0f}});
	IShader* light = nullptr;
	ASSERT_TRUE(matte->GetParameter("lights")->Get(light, 0));
	IGraph* lightGraph = light->GetGraphSurface();
	Compile(lightGraph);
	std::unique_ptr<EffectDouble> effect;
	IGraph* graph = matte->GetGraphSurface();
	effect = std::make_unique<EffectDouble>(&mgr, graph);
	Result result;
	ASSERT_TRUE(graph->Compile(&result)) << result.GetText();
	const std::string illuminate = light->GetMethodNameMangled("Illuminate");
	EXPECT_TRUE(Contains(Text(graph), "vec3 " + illuminate + "(vec3 P, vec3 N, out vec3 L);")) << Text(graph);
	EXPECT_FALSE(Contains(Text(graph), illuminate + "(vec3 P, vec3 N, out vec3 L)\n{"));
	EXPECT_TRUE(Contains(Text(lightGraph), illuminate + "(vec3 P, vec3 N, out vec3 L)\n{"));
	// Optimised, the light's program keeps the method that the material calls.
	ASSERT_TRUE(effect->CompileRoot(&result)) << result.GetText();
	ASSERT_TRUE(effect->policy.Compile());
	IQLProgram* program = effect->program;
	for (IQLShader* shader : {effect->root, graph->GetQLShader(), lightGraph->GetQLShader()})
		program->AttachShader(shader);
	std::vector<std::string> errors;
	ASSERT_TRUE(program->Link(errors)) << (errors.empty() ? "" : errors.front());
	ASSERT_TRUE(graph->Apply(&primitive, program, nullptr));
	ASSERT_TRUE(lightGraph->Apply(&primitive, program, nullptr));
	ExpectRgb(RunApplied(program),
	          Vector3f(0.8f * kInvPi * 2.0f, 0.8f * kInvPi * 2.0f, 0.8f * kInvPi * 2.0f));
	for (IQLShader* shader : {effect->root, graph->GetQLShader(), lightGraph->GetQLShader()})
		program->DetachShader(shader);
}

TEST_F(GraphShippedTest, APointLitMatteAccumulatesTheHandComputedColourAndFollowsItsIntensity)
{
	// Light 2 above the hit: radiance 8 / 2^2, N.L = 1, albedo 0.8, ambient (0.02, 0.02, 0.03).
	IShader* matte = LitMatte({{Vector3f(0.0f, 2.0f, 0.0f), 8.0f}}, true);
	std::unique_ptr<EffectDouble> effect;
	const float lit = 0.8f * kInvPi * 2.0f;
	ExpectRgb(Run(matte, effect), Vector3f(0.016f + lit, 0.016f + lit, 0.024f + lit));

	// With no ambient a doubled intensity doubles the colour, through the one changed value's update.
	ASSERT_TRUE(matte->SetParameter(nullptr, "ambient", Vector3f(0.0f, 0.0f, 0.0f)));
	IGraph* graph = matte->GetGraphSurface();
	ASSERT_TRUE(graph->Apply(&primitive, effect->program, nullptr));
	const Vector4f before = RunApplied(effect->program);
	Updates updates;
	graph->AddListenerChangeValue(MakeDelegate(&updates, &Updates::On));
	IShader* light = nullptr;
	ASSERT_TRUE(matte->GetParameter("lights")->Get(light, 0));
	const size_t written = primitive.GetWrites().size();
	ASSERT_TRUE(light->SetParameter(nullptr, "intensity", 16.0f));
	ASSERT_EQ(updates.vDelegates.size(), 1u);
	ASSERT_TRUE(updates.vDelegates[0](&primitive, effect->program));
	EXPECT_EQ(primitive.GetWrites().size(), written + 1);
	ExpectRgb(RunApplied(effect->program), Vector3f(before.x * 2.0f, before.y * 2.0f, before.z * 2.0f));
	EXPECT_NEAR(before.x, lit, 1e-5f);
	graph->RemoveListenerChangeValue(MakeDelegate(&updates, &Updates::On));
}

TEST_F(GraphShippedTest, ThreeLightsSummedInTheUnrolledLoopEqualTheSumOfEachAlone)
{
	const std::vector<std::pair<Vector3f, float>> lights = {{Vector3f(0.0f, 2.0f, 0.0f), 8.0f},
	                                                        {Vector3f(1.0f, 1.0f, 0.0f), 3.0f},
	                                                        {Vector3f(0.0f, 3.0f, -2.0f), 5.0f}};
	std::unique_ptr<EffectDouble> all;
	IShader* matte = LitMatte(lights);
	const Vector4f sum = Run(matte, all);
	EXPECT_FALSE(Contains(Text(matte->GetGraphSurface()), "for("));
	// Loops that stay loops run up to the count the input writes.
	std::vector<int> counts;
	for (const QLWrite& write : primitive.GetWrites())
		if (write.name.size() > 6 && write.name.compare(write.name.size() - 6, 6, "_Count") == 0)
			counts.push_back(write.Values<int>().at(0));
	EXPECT_EQ(counts, std::vector<int>{3});
	Vector3f alone(0.0f, 0.0f, 0.0f);
	for (const auto& light : lights)
	{
		std::unique_ptr<EffectDouble> one;
		const Vector4f c = Run(LitMatte({light}), one);
		alone = Vector3f(alone.x + c.x, alone.y + c.y, alone.z + c.z);
	}
	EXPECT_GT(alone.x, 0.0f);
	ExpectRgb(sum, alone);
}

TEST_F(GraphShippedTest, AStaticInputAndACoordinateReachTheComputation)
{
	Load("Scaled.tsl", kScaled);
	IShader* scaled = Create("Scaled");
	ASSERT_TRUE(scaled->SetCoord(nullptr, "uv", "texcoord"));
	const float scale = 3.0f;
	ASSERT_TRUE(scaled->GetPrototypeShader()->SetParameter("scale", &scale, 1));
	std::unique_ptr<EffectDouble> effect;
	ExpectRgb(Run(scaled, effect, {{"texcoord", QLComponents{0.25, 0.5}}}), Vector3f(0.75f, 1.5f, 3.0f));
}

} // namespace
} // namespace Tarsel::Effects::Testing

namespace Tarsel::Effects::Testing
{
namespace
{

// The pass shortens a real surface graph and what it leaves still links beside the root.
TEST_F(GraphShippedTest, TheOptimisedTexturedMatteIsShorterAndStillLinks)
{
	IShader* matte = LitMatte({{Vector3f(0.0f, 2.0f, 0.0f), 8.0f}, {Vector3f(1.0f, 1.0f, 0.0f), 3.0f}});
	ASSERT_TRUE(matte->SetParameter(nullptr, "albedo", Create("CheckerTexture")));
	IGraph* graph = matte->GetGraphSurface();
	size_t lines[2] = {0, 0};
	for (const char* disabled : {"1", "0"})
	{
		ScopedVariable variable("TZR_DISABLE_EFFECTS_OPTIMIZATIONS", disabled);
		EffectDouble effect(&mgr, graph);
		Result result;
		ASSERT_TRUE(effect.CompileAndLink(&result)) << disabled << ": " << result.GetText();
		lines[*disabled - '0'] = Count(Text(graph), "\n");
	}
	const size_t removed = Count(Text(graph), "// optimizer removed definition of");
	EXPECT_GT(removed, 0u);
	EXPECT_LT(lines[0], lines[1]);
}

// A loop over lights whose body skips some with continue stays a loop, through the dispatch function and
// the count uniform.
TEST_F(GraphShippedTest, ASurfaceWhoseLightLoopContinuesCompiles)
{
	IShader* plastic = Create("Plastic");
	for (const char* coord : {"uv", "shadingNormal", "shadingTangent"})
		ASSERT_TRUE(plastic->SetCoord(nullptr, coord, coord));
	IShader* lights[] = {Create("PointLight"), Create("SpotLight"), Create("DirectionalLight"),
	                     Create("DiskLight")};
	ASSERT_TRUE(plastic->SetParameter(nullptr, "lights", lights, 4));
	Result result;
	EXPECT_TRUE(plastic->GetGraphSurface()->Compile(&result)) << result.GetText();
	std::unique_ptr<EffectDouble> effect;
	EXPECT_GT(Run(plastic, effect,
	              {{"uv", QLComponents{0.5, 0.5}},
	               {"shadingNormal", QLComponents{0.0, 1.0, 0.0}},
	               {"shadingTangent", QLComponents{1.0, 0.0, 0.0}}})
	              .x,
	          0.0f);
}

} // namespace
} // namespace Tarsel::Effects::Testing
