// A renderer's use of TarselEffects in miniature: load the shipped shader libraries, make a material
// and a light, connect them, render two frames of a surface effect, and shut down. The reference Quillon
// device stands in for the GPU, so the program runs anywhere.
#include "core/Assets.h"
#include "core/Console.h"
#include "core/Path.h"
#include "core/Result.h"
#include "effects/IEffect.h"
#include "effects/IParameter.h"
#include "effects/IReferenceEffect.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "effects/Version.h"
#include "quillon/Reference.h"

#include <cstdio>
#include <string>

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{

// Results collect messages newest last; print them in the order they happened.
void PrintResult(const Result& result)
{
	for (const std::string& message : result.GetMessages())
		std::fprintf(stderr, "%s%s", message.c_str(), !message.empty() && message.back() == '\n' ? "" : "\n");
}

void PrintParameter(IShader* shader, const char* name)
{
	std::string value;
	IParameter* parameter = shader->GetParameter(name);
	if (parameter && parameter->GetAsString(value))
		std::printf("%s.%s = %s\n", shader->GetClassName().c_str(), name, value.c_str());
}

bool LoadLibraries(MgrEffects& effects)
{
	// Interfaces first: the classes of the other libraries implement them.
	for (const char* file : {"Interfaces.tsl", "Sampling.tsl", "Textures.tsl", "Lights.tsl", "Surfaces.tsl"})
	{
		Result result;
		if (!effects.AddLibrary(std::string(file), &result))
		{
			PrintResult(result);
			return false;
		}
		std::printf("loaded %s\n", file);
	}
	return true;
}

// The light reaches the material through the material's interface input "lights".
bool Connect(IShader* material, IShader* light, Result& result)
{
	IParameter* lights = material->GetParameter("lights");
	if (!lights || !lights->SetLength(1) || !material->SetParameter(&result, "lights", light, 0))
		return false;
	IShader* connected = nullptr;
	if (lights->Get(connected, 0) && connected)
		std::printf("%s.lights[0] = %s\n", material->GetClassName().c_str(),
		            connected->GetClassName().c_str());
	return true;
}

// One frame: compile what changed, then write the primitive's values; the reference device records them.
bool RunFrame(MgrEffects& effects, IEffect* surface, ReferencePrimitive& primitive, int frame)
{
	Result result;
	primitive.ClearWrites();
	const bool bApplied = effects.Update(&result) && surface->Apply(&primitive, &result);
	PrintResult(result);
	std::printf("frame %d: %zu values applied\n", frame, primitive.GetWrites().size());
	for (const QLWrite& write : primitive.GetWrites())
		std::printf("  %s\n", write.Describe().c_str());
	return bApplied;
}

// A surface effect rooted in the material, on one primitive. Between the two frames only a value changes,
// so the second frame recompiles nothing and its update writes just that value before the apply.
bool RunFrames(MgrEffects& effects, IShader* material, IShader* light)
{
	ReferencePrimitive primitive;
	IEffect* surface = effects.CreateEffectSurface();
	IReferenceEffect* reference =
	    surface && surface->SetRoot(material) ? surface->CreateReference(&primitive) : nullptr;
	Result result;
	const bool bDone = reference && RunFrame(effects, surface, primitive, 0) &&
	                   light->SetParameter(&result, "intensity", 40.0f) &&
	                   RunFrame(effects, surface, primitive, 1);
	PrintResult(result);
	if (reference)
		surface->DestroyReference(reference);
	effects.DestroyEffectSurface(surface);
	return bDone;
}

bool Run(MgrEffects& effects)
{
	if (!LoadLibraries(effects))
		return false;
	Result result;
	IShader* light = effects.CreateShader("PointLight", &result);
	IShader* material = effects.CreateShader("Matte", &result);
	const bool bMade = light && material;
	const bool bSet = bMade && light->SetParameter(&result, "intensity", 25.0f) &&
	                  light->SetParameter(&result, "position", Vector3f(1.0f, 3.0f, 2.0f)) &&
	                  material->SetParameter(&result, "ambient", Vector3f(0.05f, 0.05f, 0.05f)) &&
	                  material->SetCoord(&result, "uv", "a_TexCoord0") && Connect(material, light, result);
	PrintResult(result);
	if (!bSet)
		return false;
	PrintParameter(light, "intensity");
	PrintParameter(light, "position");
	PrintParameter(material, "ambient");
	const bool bRan = RunFrames(effects, material, light);
	effects.DestroyShader(material);
	effects.DestroyShader(light);
	return bRan;
}

} // namespace

int main(int argc, char** argv)
{
	const std::string shaders = argc > 1 ? argv[1] : TARSEL_SHADERS_DIR;
	std::printf("TarselEffects %s\n", GetVersion());
	GetMgrAssets()->AddSearchRoot(Path(shaders));

	DefaultConsole console;
	ReferenceContext context;
	MgrEffects effects;
	Result result;
	if (!effects.Init(&console, &context, &result))
	{
		PrintResult(result);
		return 1;
	}
	const bool bDone = Run(effects);
	effects.Shutdown();
	std::printf(bDone ? "done\n" : "failed\n");
	return bDone ? 0 : 1;
}
