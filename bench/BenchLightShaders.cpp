#include "core/Console.h"
#include "core/Result.h"
#include "effects/IEffect.h"
#include "effects/IParameter.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "lights/MgrLightShaders.h"
#include "quillon/Reference.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{

// The shipped light library behind a light manager on the reference device.
class Host
{
public:
	Host()
	{
		setenv("TARSEL_SHADER_PATH", TARSEL_SHADERS_DIR, 1);
		_mgr.Init(&_console, &_context, nullptr);
		_mgr.SetOutputAttachmentIndex("o_color", 0);
		for (const char* file : {"Interfaces.tsl", "LightArrays.tsl"})
		{
			Result result;
			if (!_mgr.AddLibrary(file, &result))
				std::abort();
		}
	}
	~Host()
	{
		_lights.Shutdown();
		_mgr.Shutdown();
	}
	// Every round starts from an empty manager: indices are never handed out twice.
	void Restart()
	{
		if (!_lights.Init(&_mgr, &_console))
			std::abort();
	}
	MgrLightShaders& Lights() { return _lights; }
	MgrEffects& Mgr() { return _mgr; }

	// One Update and one Apply of a surface effect rooted in the surface, on one primitive.
	bool UpdateAndApply(IShader* surface)
	{
		IEffect* effect = _mgr.CreateEffectSurface();
		ReferencePrimitive primitive;
		const bool bDone = effect && effect->SetRoot(surface) && effect->CreateReference(&primitive) &&
		                   _mgr.Update(nullptr) && effect->Apply(&primitive, nullptr);
		_mgr.DestroyEffectSurface(effect);
		return bDone;
	}

private:
	ReferenceContext _context;
	RecordingConsole _console;
	MgrEffects _mgr;
	MgrLightShaders _lights;
};

// Creates the lights one by one and sets one value on each; with a receiver, every light is also
// connected to the manager class, which lights a surface whose effect is updated and applied once.
void CreateAndSet(benchmark::State& state, bool bConnect)
{
	Host host;
	const int count = static_cast<int>(state.range(0));
	for (auto _ : state)
	{
		state.PauseTiming();
		host.Restart();
		state.ResumeTiming();
		IShader* receiver = bConnect ? host.Lights().CreateShader("LightManagerArray", nullptr) : nullptr;
		IParameter* input = receiver ? receiver->GetParameter("lights") : nullptr;
		if (input && !input->SetLength(count))
			state.SkipWithError("the receiver refused the length");
		for (int i = 0; i < count; ++i)
		{
			IShader* light = host.Lights().CreateShader("LightPointArray", nullptr);
			if (!light || !light->SetParameter(nullptr, "intensity", float(i)) ||
			    (input && !input->Set(light, i)))
			{
				state.SkipWithError("a light failed");
				break;
			}
		}
		IShader* surface = receiver ? host.Mgr().CreateShader("MatteLightSet", nullptr) : nullptr;
		if (surface &&
		    (!surface->SetParameter(nullptr, "lightSet", receiver) || !host.UpdateAndApply(surface)))
			state.SkipWithError("the lit surface did not update or apply");
		state.PauseTiming();
		host.Mgr().DestroyShader(surface);
		host.Lights().Shutdown();
		state.ResumeTiming();
	}
	state.counters["time_per_light"] = benchmark::Counter(
	    double(count), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void CreateSet(benchmark::State& state)
{
	CreateAndSet(state, false);
}

void CreateSetConnect(benchmark::State& state)
{
	CreateAndSet(state, true);
}

} // namespace

BENCHMARK(CreateSet)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(CreateSetConnect)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
