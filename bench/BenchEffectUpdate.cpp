// Effects on the reference device: replaying one changed value in effects of 1 and of 1,000 shaders on 100
// primitives, an Update with nothing changed over 100 effects, and the full apply after a compile for 10 to
// 1,000 primitives.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "core/Console.h"
#include "core/Result.h"
#include "effects/IEffect.h"
#include "effects/IParameter.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "quillon/Reference.h"

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{

const char* const kSource = R"(
interface Surface { void Shade(); }
interface Node { vec3 Eval(); }
class Leaf : Node
{
	input float gain = 1.0;
	vec3 Eval() { return vec3(gain); }
}
class Root : Surface
{
	output vec3 o_color;
	input float gain = 1.0;
	input Node parts[];
	void Shade()
	{
		vec3 sum = vec3(gain);
		for (int i = 0; i < parts.length; ++i)
			sum += parts[i].Eval();
		accumulate(o_color, sum);
	}
}
)";

// A manager with effects whose roots hold n - 1 leaves, each effect on its own primitives.
class Host
{
public:
	Host()
	{
		_context.SetEcho(false);
		_mgr.Init(&_console, &_context, nullptr);
		bOk = _mgr.AddLibrary("effects.tsl", kSource, nullptr);
	}
	~Host() { _mgr.Shutdown(); }

	IEffect* AddEffect(int shaders, int primitives)
	{
		IShader* root = _mgr.CreateShader("Root", nullptr);
		std::vector<IShader*> leaves;
		for (int i = 1; root && i < shaders; ++i)
			leaves.push_back(_mgr.CreateShader("Leaf", nullptr));
		IParameter* parts = root ? root->GetParameter("parts") : nullptr;
		bOk = bOk && parts && parts->SetLength(shaders - 1) &&
		      (leaves.empty() || root->SetParameter(nullptr, "parts", leaves.data(), int(leaves.size())));
		IEffect* effect = _mgr.CreateEffectSurface();
		bOk = bOk && effect && effect->SetRoot(root);
		for (int i = 0; bOk && i < primitives; ++i)
		{
			_vPrimitives.push_back(
			    std::make_unique<ReferencePrimitive>(QLprimitive(_vPrimitives.size() + 1)));
			effect->CreateReference(_vPrimitives.back().get());
		}
		vRoots.push_back(root);
		return effect;
	}
	bool Update()
	{
		Result result;
		return _mgr.Update(&result);
	}
	// Recording is the device's cost, not the library's: keep the lists short.
	void ClearWrites()
	{
		for (auto& primitive : _vPrimitives)
			primitive->ClearWrites();
	}

	bool bOk = false;
	std::vector<IShader*> vRoots;

private:
	RecordingConsole _console;
	ReferenceContext _context;
	MgrEffects _mgr;
	std::vector<std::unique_ptr<ReferencePrimitive>> _vPrimitives;
};

void ReplayOneValue(benchmark::State& state)
{
	Host host;
	host.AddEffect(static_cast<int>(state.range(0)), 100);
	if (!host.bOk || !host.Update())
	{
		state.SkipWithError("effect did not compile");
		return;
	}
	float value = 1.0f;
	for (auto _ : state)
	{
		host.vRoots[0]->SetParameter(nullptr, "gain", value += 1.0f);
		host.Update();
		state.PauseTiming();
		host.ClearWrites();
		state.ResumeTiming();
	}
}
BENCHMARK(ReplayOneValue)->ArgName("shaders")->Arg(1)->Arg(1000)->Unit(benchmark::kMicrosecond);

void UpdateNothingChanged(benchmark::State& state)
{
	Host host;
	const int effects = static_cast<int>(state.range(0));
	for (int i = 0; i < effects; ++i)
		host.AddEffect(1, 1);
	if (!host.bOk || !host.Update())
	{
		state.SkipWithError("effects did not compile");
		return;
	}
	for (auto _ : state)
		host.Update();
	state.counters["per_effect"] = benchmark::Counter(
	    double(effects), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(UpdateNothingChanged)->ArgName("effects")->Arg(100)->Unit(benchmark::kMicrosecond);

void FullApply(benchmark::State& state)
{
	Host host;
	IEffect* effect = host.AddEffect(1, static_cast<int>(state.range(0)));
	if (!host.bOk || !host.Update())
	{
		state.SkipWithError("effect did not compile");
		return;
	}
	for (auto _ : state)
	{
		effect->Apply(nullptr);
		state.PauseTiming();
		host.ClearWrites();
		state.ResumeTiming();
	}
}
BENCHMARK(FullApply)->ArgName("primitives")->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
