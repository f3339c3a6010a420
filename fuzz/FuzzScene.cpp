// Reads arbitrary text as a scene of tarsel-fx compile: the loader must report what it refuses, and what it
// accepts must hold together. Every value is then read as each kind of parameter would read it.
#include "FuzzSupport.h"

#include "SceneLoader.h"
#include "SceneValue.h"

using namespace Tarsel;
using namespace Tarsel::Fx;

namespace
{

void CheckAccepted(const Scene& scene)
{
	for (const auto& effect : scene.effects)
		TARSEL_FUZZ_CHECK(scene.shaders.count(effect.second.root), effect.first);
	for (const SceneFrame& frame : scene.frames)
		for (const auto* changes : {&frame.values, &frame.connect, &frame.coords})
			for (const SceneChange& change : *changes)
				TARSEL_FUZZ_CHECK(scene.shaders.count(change.target.shader) &&
				                      !change.target.parameter.empty(),
				                  change.path);
}

// The converted components must be exactly what the shape asks for.
void ConvertAs(const nlohmann::json& value, const SceneValueShape& shape, int components, SceneErrors& errors)
{
	SceneValue converted;
	const int before = errors.GetCount();
	const bool bConverted = ConvertSceneValue(value, shape, "v", errors, converted);
	TARSEL_FUZZ_CHECK(bConverted == (errors.GetCount() == before), "conversion result and reports disagree");
	if (!bConverted)
		return;
	TARSEL_FUZZ_CHECK(shape.bArray || converted.count == 1, "a single value has one element");
	TARSEL_FUZZ_CHECK(shape.bResizable || converted.count <= shape.length, "a fixed array keeps its length");
	const size_t size = converted.floats.size() + converted.ints.size();
	TARSEL_FUZZ_CHECK(size == size_t(converted.count) * size_t(components), "components per element");
}

void ConvertValue(const nlohmann::json& value, SceneErrors& errors)
{
	using namespace Effects;
	ConvertAs(value, {kType_Float, false, false, 1}, 1, errors);
	ConvertAs(value, {kType_Bool, true, false, 3}, 1, errors);
	ConvertAs(value, {kType_Vec3, false, false, 1}, 3, errors);
	ConvertAs(value, {kType_IVec2, true, false, 4}, 2, errors);
	ConvertAs(value, {kType_Mat3, true, true, 0}, 9, errors);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
	static Fuzz::Environment environment;
	Scene scene;
	SceneErrors errors("fuzz.json", &environment.console);
	const long before = environment.console.GetCountErrors();
	const bool bLoaded = LoadScene(std::string(reinterpret_cast<const char*>(data), size), scene, errors);
	TARSEL_FUZZ_CHECK(bLoaded == (environment.console.GetCountErrors() == before),
	                  "load result and reports disagree");
	if (!bLoaded)
		return 0;
	CheckAccepted(scene);
	for (const auto& shader : scene.shaders)
		for (const auto& value : shader.second.values)
			ConvertValue(value.second, errors);
	for (const SceneFrame& frame : scene.frames)
	{
		for (const SceneChange& change : frame.values)
			ConvertValue(change.value, errors);
		for (const SceneLocal& local : frame.local)
			ConvertValue(local.value, errors);
	}
	return 0;
}
