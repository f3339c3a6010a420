// Compile (and link) speed of the reference device on a generated program text of about 1 MB.
#include "quillon/Quillon.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace
{

// Printer-shaped functions with their uniforms, repeated under unique names up to the size asked for.
std::string MakeProgram(size_t bytes)
{
	std::string globals;
	std::string functions;
	std::string calls;
	for (int n = 0; globals.size() + functions.size() + calls.size() < bytes; ++n)
	{
		std::string k = "_k" + std::to_string(n);
		globals += "uniform vec3 color" + k + ";\nuniform float gain" + k + "[4];\n";
		functions +=
		    "float Shade" + k +
		    "(float x, vec3 v)\n{\n\tfloat s = 0.0;\n\tfor(\tint i = 0;\n\t(i<4);++i)\n"
		    "\t{\n\t\ts+= ((x*gain" +
		    k + "[i])+dot(v, color" + k +
		    "));\n\t\tif ((s>10.0))\n\t\t{\n"
		    "\t\t\tbreak;\n\t\t}\n\t}\n\tvec3 n = normalize((v+vec3(1.000000000000000, 2.0, 3.0)));\n"
		    "\treturn ((s+n.x)*0.5000000000000000);\n}\n\n";
		calls += "\ttotal+= Shade" + k + "(total, ql_RayDirection);\n";
	}
	return "\n" + globals + "\n\n" + functions + "void main()\n{\n\tfloat total = 0.0;\n" + calls + "}\n";
}

const std::string& Program()
{
	static const std::string text = MakeProgram(1 << 20);
	return text;
}

void BM_CompileOneMegabyte(benchmark::State& state)
{
	const std::string& text = Program();
	Tarsel::ReferenceContext context;
	Tarsel::IQLShader* shader = context.CreateShader(Tarsel::IQLShader::kType_Ray);
	for (auto _ : state)
	{
		std::vector<std::string> errors;
		if (!shader->SetString(text, errors))
			state.SkipWithError(errors.empty() ? "compile failed" : errors.front().c_str());
	}
	state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_CompileOneMegabyte)->Unit(benchmark::kMillisecond);

void BM_CompileAndLinkOneMegabyte(benchmark::State& state)
{
	const std::string& text = Program();
	Tarsel::ReferenceContext context;
	Tarsel::IQLShader* shader = context.CreateShader(Tarsel::IQLShader::kType_Ray);
	Tarsel::IQLProgram* program = context.CreateProgram();
	program->AttachShader(shader);
	for (auto _ : state)
	{
		std::vector<std::string> errors;
		if (!shader->SetString(text, errors) || !program->Link(errors))
			state.SkipWithError(errors.empty() ? "failed" : errors.front().c_str());
	}
	state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_CompileAndLinkOneMegabyte)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
