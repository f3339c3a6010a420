// Compiling graphs of N shaders, as a chain through single inputs, as a star through one input array and as
// a flat set of instances entered by reference, with the time split into collection, printing and the device
// compile; and re-applying one changed value in compiled graphs of different sizes.

#include <benchmark/benchmark.h>

#include <numeric>
#include <string>
#include <vector>

#include "core/Console.h"
#include "core/Result.h"
#include "effects/IParameter.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "graph/IGraph.h"
#include "manager/MgrEffectsImpl.h"
#include "manager/Profiler.h"
#include "quillon/Reference.h"

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{

const char* const kSource = R"(
interface Node
{
	vec3 Shade(vec3 P);
}
class Leaf : Node
{
	input float gain = 1.0;
	vec3 Shade(vec3 P)
	{
		return P * gain;
	}
}
class Link : Node
{
	input Node next;
	input float gain = 1.0;
	vec3 Shade(vec3 P)
	{
		return next.Shade(P) * gain;
	}
}
class Star : Node
{
	input Node parts[];
	vec3 Shade(vec3 P)
	{
		vec3 sum = vec3(0.0);
		for (int i = 0; i < parts.length; ++i)
			sum += parts[i].Shade(P);
		return sum;
	}
}
)";

// A manager on the reference device with one graph of n shaders; the last shader holds the value to change.
class Host
{
public:
	enum Shape
	{
		kChain,
		kStar,
		kFlat
	};

	Host(Shape shape, int n)
	{
		_context.SetEcho(false);
		_mgr.Init(&_console, &_context, nullptr);
		Result result;
		bOk = _mgr.AddLibrary("graph.tsl", kSource, &result) && (shape == kChain  ? _MakeChain(n)
		                                                         : shape == kStar ? _MakeStar(n)
		                                                                          : _MakeFlat(n));
		pGraph = bOk ? pRoot->GetGraphSurface() : nullptr;
		bOk = pGraph != nullptr;
		for (size_t i = 0; bOk && i < _vFlat.size(); ++i)
			bOk = _vFlat[i]->AcquireReference(pGraph) != nullptr;
	}
	~Host() { _mgr.Shutdown(); }

	double Mean(const char* name)
	{
		const std::vector<float>& samples = _mgr.GetImplementation()->GetProfiler()->GetSamples(name);
		return samples.empty() ? 0.0 : std::accumulate(samples.begin(), samples.end(), 0.0) / samples.size();
	}

	bool bOk = false;
	IShader* pRoot = nullptr;
	IShader* pLast = nullptr;
	IGraph* pGraph = nullptr;

private:
	bool _MakeChain(int n)
	{
		IShader* next = pLast = _mgr.CreateShader("Leaf", nullptr);
		for (int i = 1; next && i < n; ++i)
		{
			IShader* link = _mgr.CreateShader("Link", nullptr);
			if (link == nullptr || !link->SetParameter(nullptr, "next", next))
				return false;
			next = link;
		}
		pRoot = next;
		return pRoot != nullptr;
	}
	bool _MakeStar(int n)
	{
		pRoot = _mgr.CreateShader("Star", nullptr);
		std::vector<IShader*> parts;
		for (int i = 1; pRoot && i < n; ++i)
			parts.push_back(pLast = _mgr.CreateShader("Leaf", nullptr));
		return pRoot && pRoot->GetParameter("parts") && pRoot->GetParameter("parts")->SetLength(n - 1) &&
		       pRoot->SetParameter(nullptr, "parts", parts.data(), static_cast<int>(parts.size()));
	}

	bool _MakeFlat(int n)
	{
		pRoot = _mgr.CreateShader("Leaf", nullptr);
		for (int i = 1; pRoot && i < n; ++i)
			_vFlat.push_back(pLast = _mgr.CreateShader("Leaf", nullptr));
		return pRoot && (n == 1 || pLast);
	}

	std::vector<IShader*> _vFlat;
	RecordingConsole _console;
	ReferenceContext _context;
	MgrEffects _mgr;
};

void Compile(benchmark::State& state, Host::Shape shape)
{
	Host host(shape, static_cast<int>(state.range(0)));
	if (!host.bOk)
	{
		state.SkipWithError("graph could not be built");
		return;
	}
	for (auto _ : state)
		if (!host.pGraph->Compile(nullptr))
		{
			state.SkipWithError("graph did not compile");
			return;
		}
	state.counters["collect_ms"] = host.Mean("Graph::_Compile Collect");
	state.counters["print_ms"] = host.Mean("Graph::_Compile Print");
	state.counters["device_ms"] = host.Mean("Graph::_Compile SetString");
}

void BM_CompileChain(benchmark::State& state)
{
	Compile(state, Host::kChain);
}
void BM_CompileStar(benchmark::State& state)
{
	Compile(state, Host::kStar);
}
void BM_CompileFlat(benchmark::State& state)
{
	Compile(state, Host::kFlat);
}
BENCHMARK(BM_CompileChain)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CompileStar)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CompileFlat)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

// The graph hands each change to its listeners, which re-apply just that value, as an effect would.
struct Relay
{
	ReferencePrimitive primitive;
	IQLProgram* pProgram = nullptr;
	int nApplied = 0;
	bool On(IGraph*, IGraph::DelegateApply& apply)
	{
		apply(&primitive, pProgram);
		++nApplied;
		return true;
	}
};

void Reapply(benchmark::State& state, Host::Shape shape)
{
	Host host(shape, static_cast<int>(state.range(0)));
	if (!host.bOk || !host.pGraph->Compile(nullptr))
	{
		state.SkipWithError("graph could not be compiled");
		return;
	}
	Relay reapply;
	host.pGraph->AddListenerChangeValue(MakeDelegate(&reapply, &Relay::On));
	float value = 0.0f;
	for (auto _ : state)
	{
		value += 1.0f;
		host.pLast->SetParameter(nullptr, "gain", value);
	}
	if (reapply.nApplied != static_cast<int>(state.iterations()))
		state.SkipWithError("one apply per change expected");
}
void BM_ReapplyOneValueChain(benchmark::State& state)
{
	Reapply(state, Host::kChain);
}
void BM_ReapplyOneValueFlat(benchmark::State& state)
{
	Reapply(state, Host::kFlat);
}
BENCHMARK(BM_ReapplyOneValueChain)->Arg(10)->Arg(1000);
BENCHMARK(BM_ReapplyOneValueFlat)->Arg(10)->Arg(1000);

} // namespace

BENCHMARK_MAIN();
