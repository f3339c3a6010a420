#include <benchmark/benchmark.h>

#include <string>

#include "core/Console.h"
#include "manager/MgrEffectsImpl.h"
#include "quillon/Reference.h"

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{

const int kMacros = 1000;

// About 10 MB of shader-like text after 1,000 definitions; some lines use macros, most do not.
std::string MakeSource(size_t bytes)
{
	std::string text;
	text.reserve(bytes + 4096);
	for (int i = 0; i < kMacros; ++i)
		text += "#define SETTING_" + std::to_string(i) + " (" + std::to_string(i) + ".0 * SCALE)\n";
	text += "#define SCALE 0.5\n";
	for (int line = 0; text.size() < bytes; ++line)
	{
		const std::string n = std::to_string(line % kMacros);
		switch (line % 4)
		{
		case 0:
			text += "\tvec3 colour" + n + " = texture(albedo, uv * SETTING_" + n + ").rgb * SCALE;\n";
			break;
		case 1:
			text += "\tfloat weight" + n + " = max(dot(normal, lightDirection), 0.0) + roughness * 0.25;\n";
			break;
		case 2:
			text += "\t// accumulate the contribution of sample " + n + " into the running total\n";
			break;
		default:
			text += "\tresult += colour" + n + " * weight" + n + ";\n";
			break;
		}
	}
	return text;
}

void BM_Preprocess10MB(benchmark::State& state)
{
	const std::string source = MakeSource(10u << 20);
	ReferenceContext context;
	RecordingConsole console;
	MgrEffectsImpl manager;
	manager.Init(&manager, &console, &context, nullptr);
	std::string output;
	for (auto _ : state)
	{
		output.clear();
		if (!manager.PreprocessText("bench.tsl", source, output, nullptr))
			state.SkipWithError("preprocessing failed");
		benchmark::DoNotOptimize(output.data());
	}
	state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(source.size()));
}
BENCHMARK(BM_Preprocess10MB)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
