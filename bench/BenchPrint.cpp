// Printing speed on parsed libraries of 10,000 and 100,000 statements: time per byte of output must stay
// the same as the module grows.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "codegen/VisitorPrintTsl.h"
#include "syntax/Syntax.h"
#include "syntax/TslParser.h"

namespace
{

using namespace Tarsel::Effects;

const int kStatementsPerFunction = 100;

// Four kinds of statement in turn, so that declarations, expressions, selections and loops all print.
std::string Library(int nFunctions)
{
	std::string sText;
	for (int f = 0; f < nFunctions; ++f)
	{
		sText += "float Function" + std::to_string(f) + "(float a, float b, inout float c)\n{\n";
		for (int s = 0; s < kStatementsPerFunction; ++s)
		{
			const std::string sIndex = std::to_string(s);
			switch (s % 4)
			{
			case 0:
				sText += "\tfloat v" + sIndex + " = a * 2.0f + b / (c - 1.5);\n";
				break;
			case 1:
				sText += "\ta += sin(b) * v" + std::to_string(s - 1) + ";\n";
				break;
			case 2:
				sText += "\tif (a > b)\n\t\tc = a;\n\telse\n\t\tc = b;\n";
				break;
			default:
				sText += "\tfor (int i = 0; i < 4; i++)\n\t\tb -= float(i) * 0.25;\n";
				break;
			}
		}
		sText += "\treturn a + b + c;\n}\n\n";
	}
	return sText;
}

void BM_PrintModule(benchmark::State& state)
{
	const int nFunctions = static_cast<int>(state.range(0));
	std::unique_ptr<Module> pModule(Module::Create());
	std::vector<std::string> vErrors;
	if (!TslParser::Parse(pModule.get(), vErrors, "bench", Library(nFunctions), 0))
	{
		state.SkipWithError("the generated library does not parse");
		return;
	}
	size_t nBytes = 0;
	for (auto _ : state)
	{
		VisitorPrintTsl printer(nullptr, nullptr, false);
		benchmark::DoNotOptimize(printer.Visit(pModule.get()));
		nBytes = printer.result().size();
		benchmark::DoNotOptimize(printer.result().data());
	}
	state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * nBytes));
	state.counters["statements"] = nFunctions * kStatementsPerFunction;
	state.counters["output_MB"] = static_cast<double>(nBytes) / 1e6;
}

// One statement holding a left-nested chain a0 - a1 + a2 ... of the given length, printed in a loop: time
// per term must not grow with the chain.
void BM_PrintLeftChain(benchmark::State& state)
{
	const int nTerms = static_cast<int>(state.range(0));
	std::unique_ptr<Module> pModule(Module::Create());
	Expression* pChain = pModule->CreateVariable(pModule->CreateString("a0"));
	for (int i = 1; i < nTerms; ++i)
		pChain = pModule->CreateBinaryOperator(
		    i % 2 ? kOperator_Subtract : kOperator_Add, pChain,
		    pModule->CreateUnaryOperator(
		        kOperator_Subtract, pModule->CreateVariable(pModule->CreateString("a" + std::to_string(i)))));
	Statement* pStatement = pModule->CreateExpressionStatement(pChain);
	pModule->AddStatement(pStatement);
	for (auto _ : state)
	{
		VisitorPrintTsl printer(nullptr, nullptr, false);
		benchmark::DoNotOptimize(pStatement->AcceptVisitor(&printer, nullptr));
		benchmark::DoNotOptimize(printer.result().data());
	}
	state.SetItemsProcessed(state.iterations() * nTerms);
}

} // namespace

BENCHMARK(BM_PrintModule)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PrintLeftChain)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
