// The unused-function pass over modules of 1,000 to 100,000 functions that call one another: its time must
// grow linearly with the module and stay below the time to print the same module.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "codegen/VisitorFindEmptyAndNeverCalledFunctions.h"
#include "codegen/VisitorPrintTsl.h"
#include "syntax/Syntax.h"
#include "syntax/TslParser.h"

namespace
{

using namespace Tarsel::Effects;

std::string Name(int i)
{
	return "Function" + std::to_string(i);
}

// Every tenth function is empty, the others call two functions
// spread over the module, so that some functions are called many times and some never.
std::string Library(int nFunctions)
{
	std::string sText;
	for (int i = 0; i < nFunctions; ++i)
	{
		sText += "void " + Name(i) + "(float a)\n{\n";
		if (i % 10 != 0)
			sText += "\tfloat b = a * 2.0;\n\t" + Name((i * 7 + 1) % nFunctions) + "(b + 1.0);\n\t" +
			         Name((i * 13 + 3) % nFunctions) + "(b);\n";
		sText += "}\n";
	}
	return sText;
}

std::unique_ptr<Module> Parsed(benchmark::State& state)
{
	std::unique_ptr<Module> pModule(Module::Create());
	std::vector<std::string> vErrors;
	if (!TslParser::Parse(pModule.get(), vErrors, "bench", Library(static_cast<int>(state.range(0))), 0))
	{
		state.SkipWithError(vErrors.empty() ? "the generated library does not parse" : vErrors[0].c_str());
		return nullptr;
	}
	// Forward declarations, as a graph adds them.
	const std::vector<FunctionDefinition*> vFunctions = pModule->GetFunctionDefinitions();
	for (FunctionDefinition* pFunction : vFunctions)
		pModule->AddFunctionDeclaration(pFunction->GetFunctionPrototype()->Clone(pModule.get()));
	return pModule;
}

void BM_FindUnusedFunctions(benchmark::State& state)
{
	std::unique_ptr<Module> pModule = Parsed(state);
	if (!pModule)
		return;
	for (auto _ : state)
	{
		VisitorFindEmptyAndNeverCalledFunctions pass(nullptr);
		benchmark::DoNotOptimize(pass.Visit(pModule.get()));
	}
	state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The same, with every cache emptied before each run, as in a compile, where the pass reads shader code
// last touched when the shaders were built. Measured warm, a module of 10,000 such functions is still in
// the last-level cache of the machines we measure on and one of 100,000 is not, so the warm ratio between
// them counts that cache as much as the pass.
void BM_FindUnusedFunctionsCold(benchmark::State& state)
{
	std::unique_ptr<Module> pModule = Parsed(state);
	if (!pModule)
		return;
	// Larger than any last-level cache we run on; written so that nothing of the module stays cached.
	std::vector<char> vEvict(size_t(256) << 20);
	for (auto _ : state)
	{
		state.PauseTiming();
		for (size_t i = 0; i < vEvict.size(); i += 64)
			vEvict[i] = static_cast<char>(vEvict[i] + 1);
		benchmark::ClobberMemory();
		state.ResumeTiming();
		VisitorFindEmptyAndNeverCalledFunctions pass(nullptr);
		benchmark::DoNotOptimize(pass.Visit(pModule.get()));
	}
	state.SetItemsProcessed(state.iterations() * state.range(0));
}

// A bare walk over the same module, which the pass avoids by reading the module's list of calls. A module of
// 10,000 such functions still fits the last-level cache of the machines we measure on, one of 100,000 does
// not, so even this grows faster than the module between those sizes.
void BM_WalkModule(benchmark::State& state)
{
	std::unique_ptr<Module> pModule = Parsed(state);
	if (!pModule)
		return;
	for (auto _ : state)
	{
		Visitor walk;
		benchmark::DoNotOptimize(walk.Visit(pModule.get()));
	}
	state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The same module after the pass, as a graph prints it.
void BM_PrintMarkedModule(benchmark::State& state)
{
	std::unique_ptr<Module> pModule = Parsed(state);
	if (!pModule)
		return;
	VisitorFindEmptyAndNeverCalledFunctions pass(nullptr);
	pass.Visit(pModule.get());
	for (auto _ : state)
	{
		VisitorPrintTsl printer(nullptr, nullptr, false);
		benchmark::DoNotOptimize(printer.Visit(pModule.get()));
		benchmark::DoNotOptimize(printer.result().data());
	}
	state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(BM_FindUnusedFunctions)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FindUnusedFunctionsCold)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WalkModule)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PrintMarkedModule)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
