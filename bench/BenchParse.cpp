// Scanning and parsing speed on a generated library of more than 10 MB, and heap allocations per node.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <new>
#include <string>

#include "syntax/Syntax.h"
#include "syntax/TslParser.h"
#include "syntax/TslScanner.h"

namespace
{

size_t s_nAllocations = 0;

} // namespace

// Every allocation of the process is counted, so that the parse can be charged per node. The compiler
// cannot see that these replacements pair malloc with free on purpose.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t size)
{
	++s_nAllocations;
	if (void* p = std::malloc(size ? size : 1))
		return p;
	throw std::bad_alloc();
}

void operator delete(void* p) noexcept
{
	std::free(p);
}

void operator delete(void* p, size_t) noexcept
{
	std::free(p);
}
#pragma GCC diagnostic pop

namespace
{

using namespace Tarsel::Effects;

const char* const kClassTemplate = R"(
interface Light@
{
	vec3 Illuminate(vec3 position, vec3 surfaceNormal);
}

class Surface@ : Light@
{
	coord vec3 P;
	normal vec3 N;
	output vec4 color;
	input vec3 diffuse = vec3(0.8, 0.7, 0.6);
	input float weights[3] = float[3](0.2, -0.5, 0.3);
	input int count = -4;
	input Light@ lights[];
	static const float kScale = 1.5e-2;
	float cache[4];

	static float Noise(vec3 p)
	{
		return fract(sin(dot(p, vec3(12.9898, 78.233, 37.719))) * 43758.5453);
	}

	vec3 Illuminate(vec3 position, vec3 surfaceNormal)
	{
		vec3 sum = vec3(0.0);
		for (int i = 0; i < count; i++)
		{
			float w = weights[i % 3] * kScale + Noise(position * float(i));
			if (w > 0.5 && !(w >= 0.9) || i == 2)
				sum += diffuse * w;
			else
				sum -= vec3(w, w * 0.5, 1.0 - w) / (1.0 + float(i << 1 | 1));
		}
		while (dot(sum, sum) > 4.0)
			sum *= 0.5;
		color = vec4(sum, 1.0);
		return sum;
	}
}
)";

const std::string& Library()
{
	static const std::string s_library = []
	{
		// Each copy names its classes after its number.
		std::string text;
		for (int i = 0; text.size() < (10u << 20) + 1000; ++i)
		{
			const std::string number = std::to_string(i);
			for (const char* p = kClassTemplate; *p; ++p)
			{
				if (*p == '@')
					text += number;
				else
					text += *p;
			}
		}
		return text;
	}();
	return s_library;
}

// Takes the tokens and does nothing with them, so that the scanner is timed alone.
class NullParser : public IParser
{
public:
	size_t nTokens = 0;

	void ParseConstantBool(const LocationRange&, bool) override { ++nTokens; }
	bool ParseConstantInt(const LocationRange&, long) override { return ++nTokens != 0; }
	bool ParseConstantFloat(const LocationRange&, const char*, int) override { return ++nTokens != 0; }
	bool ParseKeyword(const LocationRange&, int) override { return ++nTokens != 0; }
	bool ParseIdentifier(const LocationRange&, const char*, int) override { return ++nTokens != 0; }
	bool NewLine() override { return true; }
};

void BM_Scan(benchmark::State& state)
{
	const std::string& text = Library();
	size_t nTokens = 0;
	for (auto _ : state)
	{
		NullParser parser;
		TslScanner scanner;
		scanner.Init(&parser, text, 0);
		benchmark::DoNotOptimize(scanner.Scan());
		nTokens = parser.nTokens;
	}
	state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
	state.counters["MB"] = double(text.size()) / (1 << 20);
	state.counters["tokens"] = double(nTokens);
}

void BM_ParseAndBuildTree(benchmark::State& state)
{
	const std::string& text = Library();
	const std::string name = "bench";
	size_t nAllocations = 0;
	size_t nNodes = 0;
	for (auto _ : state)
	{
		Module* pModule = Module::Create();
		TslParser parser;
		const size_t before = s_nAllocations;
		const bool parsed = parser.Parse(pModule, name, text, 0);
		nAllocations = s_nAllocations - before;
		nNodes = size_t(parser.GetCountNodes());
		state.PauseTiming();
		delete pModule;
		state.ResumeTiming();
		if (!parsed)
		{
			state.SkipWithError("the generated library does not parse");
			break;
		}
	}
	state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
	state.counters["nodes"] = double(nNodes);
	state.counters["allocations"] = double(nAllocations);
	state.counters["allocations_per_node"] = nNodes ? double(nAllocations) / double(nNodes) : 0.0;
}

BENCHMARK(BM_Scan)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseAndBuildTree)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
