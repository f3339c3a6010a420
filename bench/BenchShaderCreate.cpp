#include "core/Console.h"
#include "core/Result.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "quillon/Reference.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <malloc.h>
#include <vector>

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{
// Bytes the heap has handed out and not yet taken back.
long long LiveBytes()
{
	return static_cast<long long>(mallinfo2().uordblks);
}
} // namespace

namespace
{

// 16 inputs of mixed types (two of them arrays), 4 members and 8 methods.
const char* const kSource = R"(
class Layered
{
	input float roughness = 0.5;
	input float metallic = 0.0;
	input float ior = 1.5;
	input int layers = 2;
	input int seed = 7;
	input bool glossy = true;
	input bool twoSided = false;
	input vec2 scale = vec2(1.0, 1.0);
	input vec2 offset = vec2(0.0);
	input vec3 albedo = vec3(0.8, 0.7, 0.6);
	input vec3 emission = vec3(0.0);
	input vec4 tint = vec4(1.0);
	input ivec2 tiles = ivec2(4, 4);
	input mat3 basis = mat3(1.0);
	input float weights[4] = 0.25;
	input vec3 palette[] = vec3[](vec3(1.0), vec3(0.5));
	float cached = 0.0;
	vec3 last = vec3(0.0);
	int hits = 0;
	float history[3] = float[](0.0, 0.0, 0.0);

	float Rough() { return roughness * weights[0]; }
	float Metal() { return metallic + Rough(); }
	vec3 Base() { return albedo * tint.rgb; }
	vec3 Glow() { return emission + palette[0]; }
	vec2 Uv(vec2 p) { return p * scale + offset; }
	int Layers() { return layers + seed + tiles.x; }
	float Fresnel(float c) { return ior * c + history[1]; }
	vec3 Shade(vec3 P)
	{
		cached = Rough();
		hits = Layers();
		last = Base() * Metal() + Glow() * Fresnel(P.x);
		return basis * last + vec3(Uv(P.xy), 0.0);
	}
}
)";

class Host
{
public:
	Host()
	{
		_mgr.Init(&_console, &_context, nullptr);
		Result result;
		if (!_mgr.AddLibrary("layered.tsl", kSource, &result))
			std::abort();
	}
	~Host() { _mgr.Shutdown(); }
	MgrEffects& Mgr() { return _mgr; }

private:
	ReferenceContext _context;
	RecordingConsole _console;
	MgrEffects _mgr;
};

void CreateDestroy(benchmark::State& state)
{
	Host host;
	const int count = static_cast<int>(state.range(0));
	std::vector<IShader*> shaders(static_cast<size_t>(count));
	// The largest growth of any round: later rounds may reuse memory that an earlier one left pooled.
	long long bytes = 0;
	for (auto _ : state)
	{
		const long long before = LiveBytes();
		for (IShader*& shader : shaders)
			shader = host.Mgr().CreateShader("Layered", nullptr);
		bytes = std::max(bytes, LiveBytes() - before);
		if (shaders.back() == nullptr)
			state.SkipWithError("shader creation failed");
		for (IShader* shader : shaders)
			host.Mgr().DestroyShader(shader);
	}
	state.counters["bytes_per_shader"] = double(bytes) / count;
	state.counters["time_per_shader"] = benchmark::Counter(
	    double(count), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void SetParameterByName(benchmark::State& state)
{
	Host host;
	IShader* shader = host.Mgr().CreateShader("Layered", nullptr);
	float value = 0.0f;
	for (auto _ : state)
	{
		value += 1.0f;
		benchmark::DoNotOptimize(shader->SetParameter(nullptr, "roughness", value));
	}
	host.Mgr().DestroyShader(shader);
}

} // namespace

// Enough rounds of each size that first-touch page faults of the first round do not dominate.
BENCHMARK(CreateDestroy)->Arg(1000)->Iterations(40)->Unit(benchmark::kMillisecond);
BENCHMARK(CreateDestroy)->Arg(10000)->Iterations(4)->Unit(benchmark::kMillisecond);
BENCHMARK(SetParameterByName);
BENCHMARK_MAIN();
