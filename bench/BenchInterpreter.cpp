// Statements per second of the reference device's interpreter: a loop of simple statements, and a
// surface-shaped program run once per ray, set-up included.
#include "quillon/Interpreter.h"
#include "quillon/Quillon.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace
{

using namespace Tarsel;

const char* const kSimpleLoop = "uniform int count;\n"
                                "void main()\n"
                                "{\n"
                                "\tfloat x = 0.0;\n"
                                "\tvec3 v = vec3(0.0);\n"
                                "\tint n = 0;\n"
                                "\tfor (int i = 0; i < count; ++i)\n"
                                "\t{\n"
                                "\t\tx = x * 0.5 + 1.0;\n"
                                "\t\tv += vec3(x, 1.0, 2.0);\n"
                                "\t\tn = n + i % 3;\n"
                                "\t\tif (x > 100.0)\n"
                                "\t\t\tx = 0.0;\n"
                                "\t}\n"
                                "\taccumulate(0, v * float(n));\n"
                                "}\n";

// What a generated surface program does per ray: a light loop through a dispatch function, a struct
// passed by value, an out parameter, built-ins.
const char* const kSurface = "struct Light_Sample { vec3 direction; float intensity; };\n"
                             "uniform int __outputAttachmentIndex_o_color;\n"
                             "uniform vec3 color_k1f;\n"
                             "uniform vec3 lightPositions_k2a[3];\n"
                             "uniform float intensity_k2b[3];\n"
                             "varying vec3 Normal;\n"
                             "varying vec4 Position_WorldSpace;\n"
                             "Light_Sample PointLight_Sample_k2(int i, vec3 p)\n"
                             "{\n"
                             "\tvec3 d = lightPositions_k2a[i] - p;\n"
                             "\tfloat r2 = dot(d, d);\n"
                             "\treturn Light_Sample(normalize(d), intensity_k2b[i] / max(r2, 0.0001));\n"
                             "}\n"
                             "vec3 Matte_Shade_k1(vec3 n, vec3 p, out float total)\n"
                             "{\n"
                             "\tvec3 sum = vec3(0.0);\n"
                             "\ttotal = 0.0;\n"
                             "\tfor (int i = 0; i < 3; ++i)\n"
                             "\t{\n"
                             "\t\tLight_Sample s = PointLight_Sample_k2(i, p);\n"
                             "\t\tfloat lambert = max(dot(n, s.direction), 0.0);\n"
                             "\t\tif (lambert <= 0.0)\n"
                             "\t\t\tcontinue;\n"
                             "\t\tfloat lit = traceShadow(p, s.direction, 100.0);\n"
                             "\t\tsum += color_k1f * (lambert * s.intensity * lit);\n"
                             "\t\ttotal += s.intensity;\n"
                             "\t}\n"
                             "\treturn sum;\n"
                             "}\n"
                             "void main()\n"
                             "{\n"
                             "\tfloat total;\n"
                             "\tvec3 c = Matte_Shade_k1(normalize(Normal), Position_WorldSpace.xyz, total);\n"
                             "\taccumulate(__outputAttachmentIndex_o_color, vec4(c, total));\n"
                             "}\n";

struct Fixture
{
	ReferenceContext context;
	IQLProgram* program = context.CreateProgram();
	Interpreter interpreter;
	QLRunInputs inputs;

	bool Link(const char* text, benchmark::State& state)
	{
		IQLShader* shader = context.CreateShader(IQLShader::kType_Ray);
		std::vector<std::string> errors;
		if (!shader->SetString(text, errors) || !program->AttachShader(shader) || !program->Link(errors))
		{
			state.SkipWithError(errors.empty() ? "link failed" : errors.front().c_str());
			return false;
		}
		return true;
	}
	void Run(benchmark::State& state)
	{
		uint64_t steps = 0;
		for (auto _ : state)
		{
			QLRunResults results;
			if (!interpreter.Run(program, IQLShader::kType_Ray, nullptr, inputs, results))
			{
				state.SkipWithError(results.error.c_str());
				return;
			}
			steps += results.steps;
			benchmark::DoNotOptimize(results.accumulated);
		}
		state.counters["statements/s"] = benchmark::Counter(double(steps), benchmark::Counter::kIsRate);
		state.counters["statements/run"] = double(steps) / double(state.iterations());
	}
};

void BM_SimpleStatements(benchmark::State& state)
{
	Fixture fixture;
	if (!fixture.Link(kSimpleLoop, state))
		return;
	fixture.inputs.variables["count"] = {double(state.range(0))};
	fixture.Run(state);
}
BENCHMARK(BM_SimpleStatements)->Arg(10000);

void BM_SurfacePerRay(benchmark::State& state)
{
	Fixture fixture;
	if (!fixture.Link(kSurface, state))
		return;
	fixture.inputs.variables = {{"color_k1f", {0.8, 0.6, 0.4}},
	                            {"lightPositions_k2a", {0, 5, 0, 3, 3, 3, -2, 1, 4}},
	                            {"intensity_k2b", {10, 5, 2}},
	                            {"Normal", {0, 1, 0}},
	                            {"Position_WorldSpace", {0, 0, 0, 1}}};
	fixture.Run(state);
}
BENCHMARK(BM_SurfacePerRay);

} // namespace

BENCHMARK_MAIN();
