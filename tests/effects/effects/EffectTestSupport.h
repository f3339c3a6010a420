#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "../objects/TestShaderSupport.h"
#include "effects/Effect.h"
#include "effects/IEffect.h"
#include "effects/ILocalParameter.h"
#include "effects/IReferenceEffect.h"

namespace Tarsel::Effects::Testing
{

// One class of each kind, every input read by the code so that it reaches the program.
const char* const kEffectLibrary = R"(
interface Surface { void Shade(); int GetRayCount(int rayClass); }
interface PrefixRay { void Init(); void Shade(); int GetRayCount(int rayClass); }
interface Renderer { void Render(); int GetRayCount(); }
class Flat : Surface
{
	output vec3 o_color;
	input float gain = 2.0;
	input vec3 tint = vec3(1.0, 0.5, 0.25);
	input float weights[];
	coord vec2 uv;
	void Shade() { accumulate(o_color, tint * gain + vec3(weights[0]) + vec3(uv, 0.0) * 0.0); }
	int GetRayCount(int rayClass) { return 0; }
}
class Fog : PrefixRay
{
	output vec3 o_color;
	input float density = 0.5;
	void Init() {}
	void Shade() { accumulate(o_color, vec3(density)); }
	int GetRayCount(int rayClass) { return 0; }
}
class Camera : Renderer
{
	input int samples = 1;
	void Render() { emitRay(0, vec3(0.0), vec3(0.0, 0.0, -1.0), vec3(1.0 / float(samples))); }
	int GetRayCount() { return samples; }
}
)";

// A manager with the effect library, and primitives that record what reaches them.
class EffectTest : public ShaderTest
{
protected:
	EffectTest() { Load("Effects.tsl", kEffectLibrary); }

	ReferencePrimitive* Primitive()
	{
		vPrimitives.push_back(std::make_unique<ReferencePrimitive>(QLprimitive(vPrimitives.size() + 1)));
		return vPrimitives.back().get();
	}
	// A rooted effect of the kind with one reference per primitive.
	IEffect* Effect(IEffect* effect, IShader* root, const std::vector<ReferencePrimitive*>& primitives,
	                std::vector<IReferenceEffect*>* references = nullptr)
	{
		EXPECT_NE(effect, nullptr);
		EXPECT_TRUE(effect->SetRoot(root));
		for (ReferencePrimitive* primitive : primitives)
		{
			IReferenceEffect* reference = effect->CreateReference(primitive);
			if (references)
				references->push_back(reference);
		}
		return effect;
	}
	void Update()
	{
		Result result;
		ASSERT_TRUE(mgr.Update(&result)) << result.GetText();
	}
	void ClearWrites()
	{
		for (auto& primitive : vPrimitives)
			primitive->ClearWrites();
	}
	static std::string Violations(const ReferencePrimitive* primitive)
	{
		std::string text;
		for (const std::string& violation : primitive->GetViolations())
			text += violation + "\n";
		return text;
	}
	int Links(IEffect* effect) const
	{
		ReferenceProgram* program = ReferenceProgram::From(effect->GetQLProgram());
		return program ? program->GetCountLinks() : -1;
	}

	std::vector<std::unique_ptr<ReferencePrimitive>> vPrimitives;
};

} // namespace Tarsel::Effects::Testing
