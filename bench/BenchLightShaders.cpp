#include "core/Console.h"
#include "core/Result.h"
#include "effects/IParameter.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "graph/IGraph.h"
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

	// Compiles the surface's graph, links it beside an empty entry point and applies every value once, as
	// an effect's Update and Apply would.
	bool CompileAndApply(IShader* surface)
	{
		IGraph* graph = surface->GetGraphSurface();
		if (!graph || !graph->Compile(nullptr))
			return false;
		IQLProgram* program = _context.CreateProgram();
		IQLShader* root = _context.CreateShader(IQLShader::kType_Ray);
		std::vector<std::string> errors;
		const bool bLinked = root->SetString("void main()\n{\n}\n", errors) && program->AttachShader(root) &&
		                     program->AttachShader(graph->GetQLShader()) && program->Link(errors);
		ReferencePrimitive primitive;
		const bool bApplied = bLinked && graph->Apply(&primitive, program, nullptr);
		_context.DestroyProgram(program);
		_context.DestroyShader(root);
		return bApplied;
	}

private:
	ReferenceContext _context;
	RecordingConsole _console;
	MgrEffects _mgr;
	MgrLightShaders _lights;
};

// Creates the lights one by one and sets one value on each; with a receiver, every light is also
// connected to the manager class, which lights a surface that is then compiled and applied once.
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
		    (!surface->SetParameter(nullptr, "lightSet", receiver) || !host.CompileAndApply(surface)))
			state.SkipWithError("the lit surface did not compile or apply");
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
