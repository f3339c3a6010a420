// qlsl-run FILE... [--uniform NAME=VALUE]... [--input NAME=VALUE]... [--seed N] [--stage KIND]: links the
// files as one program (kinds by extension, as qlsl-check), runs one stage once and prints what it did:
// accumulated outputs, emitted rays, ray counts, shadow queries, vertex outputs. Exit status 0 when
// everything compiled, linked and ran; 1 otherwise; 2 for a usage error.
#include "quillon/Interpreter.h"
#include "quillon/Quillon.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace Tarsel;

const char* const kStages[] = {"ray", "vertex", "frame", "prefix"};

const char* const kUsage =
    "usage: qlsl-run FILE... [--uniform NAME=VALUE]... [--input NAME=VALUE]... [--seed N]\n"
    "                [--stage ray|vertex|frame|prefix]\n"
    "  kinds by extension: .qlray (ray), .qlvert (vertex), .qlframe (frame), .qlprefix "
    "(prefix ray)\n"
    "  VALUE: numbers separated by commas, e.g. color=1,0.5,0; true and false for bools\n";

struct Options
{
	std::vector<std::string> files;
	std::vector<std::string> uniforms; // names given with --uniform, checked against the program
	QLRunInputs inputs;
	uint64_t seed = 0;
	int stage = -1; // the first of ray, prefix, frame and vertex that the program has
};

int StageNamed(const std::string& name)
{
	for (int type = 0; type < 4; ++type)
		if (name == kStages[type])
			return type;
	return -1;
}

int TypeOf(const std::string& path)
{
	const char* const kSuffixes[] = {".qlray", ".qlvert", ".qlframe", ".qlprefix"};
	for (int type = 0; type < 4; ++type)
	{
		std::string suffix = kSuffixes[type];
		if (path.size() > suffix.size() &&
		    path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0)
			return type;
	}
	return -1;
}

bool ParseNumber(const std::string& text, double& value)
{
	if (text == "true" || text == "false")
	{
		value = text == "true" ? 1.0 : 0.0;
		return true;
	}
	char* end = nullptr;
	value = std::strtod(text.c_str(), &end);
	return !text.empty() && end && *end == '\0';
}

// "NAME=1,2,3" into the inputs; false for a malformed assignment.
bool ParseAssignment(const std::string& text, QLRunInputs& inputs, std::string& name)
{
	size_t equals = text.find('=');
	if (equals == 0 || equals == std::string::npos)
		return false;
	name = text.substr(0, equals);
	QLComponents components;
	std::istringstream values(text.substr(equals + 1));
	for (std::string item; std::getline(values, item, ',');)
	{
		double value = 0.0;
		if (!ParseNumber(item, value))
			return false;
		components.push_back(value);
	}
	if (components.empty())
		return false;
	inputs.variables[name] = components;
	return true;
}

bool ParseOptions(int argc, char** argv, Options& options)
{
	for (int i = 1; i < argc; ++i)
	{
		std::string argument = argv[i];
		bool takesValue =
		    argument == "--uniform" || argument == "--input" || argument == "--seed" || argument == "--stage";
		if (!takesValue)
		{
			if (argument.rfind("--", 0) == 0)
			{
				std::fprintf(stderr, "qlsl-run: unknown option '%s'\n", argument.c_str());
				return false;
			}
			options.files.push_back(argument);
			continue;
		}
		if (++i >= argc)
		{
			std::fprintf(stderr, "qlsl-run: %s needs a value\n", argument.c_str());
			return false;
		}
		std::string value = argv[i], name;
		double seed = 0.0;
		bool valid = true;
		if (argument == "--seed")
			valid = ParseNumber(value, seed) && seed >= 0;
		else if (argument == "--stage")
			valid = (options.stage = StageNamed(value)) >= 0;
		else
			valid = ParseAssignment(value, options.inputs, name);
		if (!valid)
		{
			std::fprintf(stderr, "qlsl-run: malformed %s '%s'\n", argument.c_str(), value.c_str());
			return false;
		}
		if (argument == "--seed")
			options.seed = uint64_t(seed);
		if (argument == "--uniform")
			options.uniforms.push_back(name);
	}
	if (options.files.empty())
		std::fprintf(stderr, "qlsl-run: no files\n");
	return !options.files.empty();
}

bool Compile(ReferenceContext& context, IQLProgram* program, const std::string& path)
{
	int type = TypeOf(path);
	std::ifstream file(path, std::ios::binary);
	if (type < 0 || !file)
	{
		std::printf("%s: %s\n", path.c_str(), type < 0 ? "unknown extension" : "cannot read");
		return false;
	}
	std::ostringstream text;
	text << file.rdbuf();
	IQLShader* shader = context.CreateShader(type);
	shader->SetName(path);
	std::vector<std::string> errors;
	bool compiled = shader->SetString(text.str(), errors);
	for (const std::string& error : errors)
		std::printf("%s: %s\n", path.c_str(), error.c_str());
	program->AttachShader(shader);
	return compiled;
}

std::string Vector(const float* components, int count)
{
	std::ostringstream text;
	text << "(";
	for (int k = 0; k < count; ++k)
		text << (k ? ", " : "") << components[k];
	return text.str() + ")";
}

void Print(const char* stage, const QLRunResults& results)
{
	std::printf("%s stage: %llu steps\n", stage, static_cast<unsigned long long>(results.steps));
	for (const auto& output : results.accumulated)
		std::printf("  accumulate %d %s\n", output.first, Vector(&output.second.x, 4).c_str());
	for (const QLEmittedRay& ray : results.rays)
		std::printf("  emitRay class %d origin %s direction %s contribution %s\n", ray.rayClass,
		            Vector(&ray.origin.x, 3).c_str(), Vector(&ray.direction.x, 3).c_str(),
		            Vector(&ray.contribution.x, 3).c_str());
	if (!results.outputRayCount.empty())
	{
		std::printf("  ql_OutputRayCount");
		for (int count : results.outputRayCount)
			std::printf(" %d", count);
		std::printf("\n");
	}
	for (const QLShadowQuery& query : results.shadows)
		std::printf("  traceShadow origin %s direction %s max %g -> %g\n", Vector(&query.origin.x, 3).c_str(),
		            Vector(&query.direction.x, 3).c_str(), query.maxDistance, query.answer);
	if (!results.outputs.empty())
		std::printf("  ql_Position %s\n", Vector(&results.position.x, 4).c_str());
	for (const auto& output : results.outputs)
	{
		std::vector<float> components(output.second.begin(), output.second.end());
		std::printf("  %s %s\n", output.first.c_str(),
		            Vector(components.data(), int(components.size())).c_str());
	}
}

} // namespace

int main(int argc, char** argv)
{
	Options options;
	if (!ParseOptions(argc, argv, options))
	{
		std::fprintf(stderr, "%s", kUsage);
		return 2;
	}
	ReferenceContext context;
	IQLProgram* program = context.CreateProgram();
	bool compiled = true;
	for (const std::string& path : options.files)
		compiled = Compile(context, program, path) && compiled;
	std::vector<std::string> errors;
	if (!compiled || !program->Link(errors))
	{
		for (const std::string& error : errors)
			std::printf("%s\n", error.c_str());
		std::printf("not run: the program did not %s\n", compiled ? "link" : "compile");
		return 1;
	}
	for (const std::string& name : options.uniforms)
	{
		if (program->GetUniformLocation(name.c_str()) < 0)
		{
			std::printf("'%s' is not a uniform of the program\n", name.c_str());
			return 1;
		}
	}
	int stage = options.stage;
	for (int candidate :
	     {IQLShader::kType_Ray, IQLShader::kType_PrefixRay, IQLShader::kType_Frame, IQLShader::kType_Vertex})
		for (IQLShader* shader : ReferenceProgram::From(program)->GetLinkedShaders())
			if (stage < 0 && shader->GetType() == candidate)
				stage = candidate;
	Interpreter interpreter;
	interpreter.SetSeed(options.seed);
	QLRunResults results;
	bool ok = interpreter.Run(program, stage < 0 ? 0 : stage, nullptr, options.inputs, results);
	if (ok)
		Print(kStages[stage], results);
	else
		std::printf("not run to the end: %s\n", results.error.c_str());
	return ok ? 0 : 1;
}
