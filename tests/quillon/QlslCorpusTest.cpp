// Every program of tests/data/qlsl/corpus: "wrong_*" ones fail with the message marked in them, "valid_*"
// ones compile and link.
//
// A file holds one ray shader named "a", or several shaders each after a line "//== <kind> <name>"
// (kinds ray, vertex, frame, prefix). A line ending in "// ERROR: <message>" must draw the first compile
// error of its shader, on that line of the shader's text; a line "// LINK: <message>" says that everything
// compiles and the first link error is "ERROR: Link: <message>".
#include "QlslTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

using namespace Tarsel;

namespace
{

struct Section
{
	int type = IQLShader::kType_Ray;
	std::string name = "a";
	std::string text;
	int errorLine = 0;
	std::string error;
};

struct Program
{
	std::vector<Section> sections;
	std::string link;
};

int TypeNamed(const std::string& kind)
{
	const char* const kKinds[] = {"ray", "vertex", "frame", "prefix"};
	for (int type = 0; type < 4; ++type)
	{
		if (kind == kKinds[type])
			return type;
	}
	return -1;
}

Program Read(const std::string& text)
{
	Program program;
	bool headers = text.find("//== ") != std::string::npos;
	if (!headers)
		program.sections.emplace_back();
	std::istringstream lines(text);
	int line = 0;
	for (std::string row; std::getline(lines, row);)
	{
		if (row.rfind("// LINK: ", 0) == 0)
			program.link = "ERROR: Link: " + row.substr(9);
		if (row.rfind("//== ", 0) == 0)
		{
			std::istringstream header(row.substr(5));
			Section section;
			std::string kind;
			header >> kind >> section.name;
			section.type = TypeNamed(kind);
			program.sections.push_back(section);
			line = 0;
			continue;
		}
		if (program.sections.empty())
			continue;
		Section& section = program.sections.back();
		section.text += row + "\n";
		++line;
		size_t marker = row.find("// ERROR: ");
		if (marker != std::string::npos)
		{
			section.errorLine = line;
			section.error = row.substr(marker + 10);
		}
	}
	return program;
}

// "" when the program behaves as its markers say, otherwise what happened instead.
std::string Check(const Program& program)
{
	ReferenceContext context;
	IQLProgram* linked = context.CreateProgram();
	bool expectCompileError = false;
	for (const Section& section : program.sections)
	{
		if (section.type < 0)
			return "unknown shader kind";
		IQLShader* shader = nullptr;
		std::vector<std::string> errors = QlslTest::Compile(context, section.type, section.text, &shader);
		shader->SetName(section.name);
		linked->AttachShader(shader);
		expectCompileError = expectCompileError || !section.error.empty();
		std::string expected =
		    section.error.empty() ? std::string() : QlslTest::LinePrefix(section.errorLine) + section.error;
		std::string first = errors.empty() ? std::string() : errors.front();
		if (first != expected)
			return "shader '" + section.name + "': expected \"" + expected + "\", got \"" + first + "\"";
	}
	if (expectCompileError)
		return std::string();
	std::vector<std::string> errors;
	bool ok = linked->Link(errors);
	std::string first = errors.empty() ? std::string() : errors.front();
	if (ok == !errors.empty() || first != program.link)
		return "link: expected \"" + program.link + "\", got \"" + first + "\"";
	return std::string();
}

} // namespace

TEST(QlslCorpus, EveryProgramBehavesAsMarked)
{
	int wrong = 0;
	int valid = 0;
	for (const auto& entry :
	     std::filesystem::directory_iterator(std::string(TARSEL_TEST_DATA_DIR) + "/qlsl/corpus"))
	{
		std::string file = entry.path().filename().string();
		Program program = Read(QlslTest::ReadFixture("corpus/" + file));
		bool marked = !program.link.empty();
		for (const Section& section : program.sections)
			marked = marked || !section.error.empty();
		bool isWrong = file.rfind("wrong_", 0) == 0;
		EXPECT_EQ(isWrong, marked) << file << ": wrong programs carry exactly one marker, valid ones none";
		(isWrong ? wrong : valid)++;
		EXPECT_EQ("", Check(program)) << file;
	}
	EXPECT_GE(wrong, 60);
	EXPECT_GE(valid, 25);
}
