#include "codegen/VisitorPrintTsl.h"
#include "core/Console.h"
#include "core/Result.h"
#include "effects/IParameter.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "quillon/Reference.h"
#include "syntax/Module.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <malloc.h>
#include <string>
#include <vector>

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{

const int kClasses = 8;

// Bytes the heap has handed out and not yet taken back.
long long LiveBytes()
{
	return static_cast<long long>(mallinfo2().uordblks);
}

// Eight classes behind one interface, and a scene that sums them in an unrolled loop and calls one of them
// through the dispatch function.
std::string Source()
{
	std::string source = "interface Light\n{\n\tvec3 Emit(vec3 P);\n\tfloat Power();\n}\n";
	for (int index = 0; index < kClasses; ++index)
	{
		const std::string scale = std::to_string(index + 1) + ".0";
		source += "class Light" + std::to_string(index) + " : Light\n{\n\tinput float gain = " + scale +
		          ";\n\tvec3 Emit(vec3 P) { return P * gain; }\n\tfloat Power() { return gain * " + scale +
		          "; }\n}\n";
	}
	source += R"(
class Scene
{
	input Light lights[];
	input int pick = 0;
	vec3 Shade(vec3 P)
	{
		vec3 c = vec3(0.0);
		for (int i = 0; i < lights.length; ++i)
		{
			c += lights[i].Emit(P) * lights[i].Power();
		}
		return c + lights[pick].Emit(P);
	}
}
)";
	return source;
}

class Host
{
public:
	Host()
	{
		_mgr.Init(&_console, &_context, nullptr);
		Result result;
		if (!_mgr.AddLibrary("scene.tsl", Source(), &result))
			std::abort();
	}
	~Host() { _mgr.Shutdown(); }
	MgrEffects& Mgr() { return _mgr; }
	IShader* Create(const std::string& name)
	{
		IShader* shader = _mgr.CreateShader(name, nullptr);
		if (shader == nullptr)
			std::abort();
		return shader;
	}

private:
	ReferenceContext _context;
	RecordingConsole _console;
	MgrEffects _mgr;
};

// Connects the shaders one by one, as a host would; the last connection completes the scene, which then
// builds its code once.
bool Connect(IShader* scene, const std::vector<IShader*>& lights)
{
	if (!scene->GetParameter("lights")->SetLength(static_cast<int>(lights.size())))
		return false;
	bool connected = true;
	for (size_t index = 0; index < lights.size(); ++index)
		connected =
		    scene->SetParameter(nullptr, "lights", lights[index], static_cast<int>(index)) && connected;
	return connected && scene->IsComplete();
}

size_t Print(MgrEffects& mgr, IShader* scene)
{
	Module module;
	Result result;
	VisitorPrintTsl printer(&result, &mgr, false);
	if (!scene->CollectShader(&module) || !printer.Visit(&module))
		return 0;
	return printer.result().size();
}

// Per round: connect N shaders of 8 classes to a fresh scene, build its code (N-way dispatch functions,
// an N-fold unrolled loop) and print it. Making the shaders and destroying them afterwards is not timed.
// The byte counters are heap growth; syntax nodes that the node pool hands out again are not seen, so a
// build with TARSEL_SYNTAX_NO_POOL gives the full account.
void ConnectBuildPrint(benchmark::State& state)
{
	Host host;
	const int count = static_cast<int>(state.range(0));
	long long bytesShaders = 0;
	long long bytesConnected = 0;
	size_t text = 0;
	double connectSeconds = 0.0;
	for (auto _ : state)
	{
		state.PauseTiming();
		const long long before = LiveBytes();
		IShader* scene = host.Create("Scene");
		std::vector<IShader*> lights;
		for (int index = 0; index < count; ++index)
			lights.push_back(host.Create("Light" + std::to_string(index % kClasses)));
		const long long created = LiveBytes();
		state.ResumeTiming();

		const auto start = std::chrono::steady_clock::now();
		if (!Connect(scene, lights))
			state.SkipWithError("connecting failed");
		connectSeconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
		state.PauseTiming();
		const long long connected = LiveBytes();
		state.ResumeTiming();
		text = Print(host.Mgr(), scene);
		if (text == 0)
			state.SkipWithError("printing failed");

		state.PauseTiming();
		bytesShaders = std::max(bytesShaders, created - before);
		bytesConnected = std::max(bytesConnected, connected - created);
		host.Mgr().DestroyShader(scene);
		for (IShader* light : lights)
			host.Mgr().DestroyShader(light);
		state.ResumeTiming();
	}
	state.counters["bytes_per_shader"] = double(bytesShaders) / count;
	state.counters["bytes_per_connection"] = double(bytesConnected) / count;
	state.counters["text_bytes"] = double(text);
	// Connecting includes building the scene's code; the rest of a round is printing.
	state.counters["connect_ms"] = 1000.0 * connectSeconds / double(state.iterations());
}

// Printing alone, for a scene whose code is built once.
void PrintConnected(benchmark::State& state)
{
	Host host;
	IShader* scene = host.Create("Scene");
	std::vector<IShader*> lights;
	for (int index = 0; index < static_cast<int>(state.range(0)); ++index)
		lights.push_back(host.Create("Light" + std::to_string(index % kClasses)));
	if (!Connect(scene, lights))
		state.SkipWithError("connecting failed");
	for (auto _ : state)
		benchmark::DoNotOptimize(Print(host.Mgr(), scene));
}

} // namespace

BENCHMARK(PrintConnected)->Arg(100)->Arg(1600)->Unit(benchmark::kMillisecond);
BENCHMARK(ConnectBuildPrint)
    ->Arg(100)
    ->Arg(200)
    ->Arg(400)
    ->Arg(800)
    ->Arg(1600)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1.0);
BENCHMARK_MAIN();
