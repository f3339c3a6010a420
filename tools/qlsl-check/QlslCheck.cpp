// qlsl-check FILE...: compiles each file as a shader of the kind its extension names, links them all
// into one program and prints the messages, then the program's interface. Exit status 0 exactly when
// everything compiled and linked.
#include "quillon/Quillon.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

struct Extension
{
	const char* suffix;
	int type;
};

const Extension kExtensions[] = {
    {".qlray", Tarsel::IQLShader::kType_Ray},
    {".qlvert", Tarsel::IQLShader::kType_Vertex},
    {".qlframe", Tarsel::IQLShader::kType_Frame},
    {".qlprefix", Tarsel::IQLShader::kType_PrefixRay},
};

int TypeOf(const std::string& path)
{
	for (const Extension& extension : kExtensions)
	{
		std::string suffix = extension.suffix;
		if (path.size() > suffix.size() &&
		    path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0)
			return extension.type;
	}
	return -1;
}

bool ReadFile(const std::string& path, std::string& text)
{
	std::ifstream file(path, std::ios::binary);
	if (!file)
		return false;
	std::ostringstream stream;
	stream << file.rdbuf();
	text = stream.str();
	return true;
}

void PrintTable(const char* title, const std::vector<Tarsel::QLVariable>& variables)
{
	std::printf("%s:\n", title);
	if (variables.empty())
		std::printf("  (none)\n");
	for (const Tarsel::QLVariable& variable : variables)
	{
		std::string type = variable.type;
		if (variable.arraySize > 0)
			type += "[" + std::to_string(variable.arraySize) + "]";
		else if (variable.arraySize < 0)
			type += "[]";
		std::printf("  %4d  %-12s %s\n", variable.location, type.c_str(), variable.name.c_str());
	}
}

void PrintMessages(const std::string& prefix, const std::vector<std::string>& messages)
{
	for (const std::string& message : messages)
		std::printf("%s%s\n", prefix.c_str(), message.c_str());
}

} // namespace

int main(int argc, char** argv)
{
	if (argc < 2)
	{
		std::fprintf(stderr, "usage: qlsl-check FILE...\n"
		                     "  kinds by extension: .qlray (ray), .qlvert (vertex), .qlframe (frame), "
		                     ".qlprefix (prefix ray)\n");
		return 2;
	}
	Tarsel::ReferenceContext context;
	Tarsel::IQLProgram* program = context.CreateProgram();
	bool ok = true;
	for (int i = 1; i < argc; ++i)
	{
		std::string path = argv[i];
		int type = TypeOf(path);
		std::string text;
		if (type < 0)
		{
			std::printf("%s: unknown extension (use .qlray, .qlvert, .qlframe or .qlprefix)\n", path.c_str());
			ok = false;
			continue;
		}
		if (!ReadFile(path, text))
		{
			std::printf("%s: cannot read\n", path.c_str());
			ok = false;
			continue;
		}
		Tarsel::IQLShader* shader = context.CreateShader(type);
		shader->SetName(path);
		std::vector<std::string> errors;
		bool compiled = shader->SetString(text, errors);
		PrintMessages(path + ": ", errors);
		ok = ok && compiled;
		program->AttachShader(shader);
	}
	if (!ok)
	{
		std::printf("not linked: compilation failed\n");
		return 1;
	}
	std::vector<std::string> errors;
	if (!program->Link(errors))
	{
		PrintMessages("", errors);
		return 1;
	}
	Tarsel::ReferenceProgram* linked = Tarsel::ReferenceProgram::From(program);
	std::printf("linked %d shader(s)\n", int(linked->GetLinkedShaders().size()));
	PrintTable("uniforms", linked->GetUniforms());
	PrintTable("uniform blocks", linked->GetUniformBlocks());
	PrintTable("attributes", linked->GetAttributes());
	return 0;
}
