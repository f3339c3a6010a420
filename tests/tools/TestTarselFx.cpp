#include "Commands.h"

#include "core/Console.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace Tarsel::Fx
{
namespace
{

const std::string kData = TARSEL_TEST_DATA_DIR "/tools";

struct CommandLine
{
	std::vector<const char*> argv;
	explicit CommandLine(std::initializer_list<const char*> words) : argv{"tarsel-fx"}
	{
		argv.insert(argv.end(), words);
	}
	bool Parse(Arguments& args, std::string& error) const
	{
		return ParseArguments(static_cast<int>(argv.size()), argv.data(), args, error);
	}
};

TEST(TarselFxArguments, AcceptsRootsAndFilesInAnyOrder)
{
	Arguments args;
	std::string error;
	ASSERT_TRUE(
	    CommandLine({"check", "a.tsl", "-I", "one", "-Itwo", "b.tsl", "--", "-c.tsl"}).Parse(args, error))
	    << error;
	EXPECT_EQ(args.command, Command::kCheck);
	EXPECT_EQ(args.includeDirs, (std::vector<std::string>{"one", "two"}));
	EXPECT_EQ(args.files, (std::vector<std::string>{"a.tsl", "b.tsl", "-c.tsl"}));

	Arguments print;
	ASSERT_TRUE(CommandLine({"print", "-I", "x", "f.tsl"}).Parse(print, error)) << error;
	EXPECT_EQ(print.command, Command::kPrint);

	Arguments compile;
	ASSERT_TRUE(
	    CommandLine({"compile", "--apply-all", "-I", "x", "s.json", "--emit", "out"}).Parse(compile, error))
	    << error;
	EXPECT_EQ(compile.command, Command::kCompile);
	EXPECT_EQ(compile.files, (std::vector<std::string>{"s.json"}));
	EXPECT_EQ(compile.emitDir, "out");
	EXPECT_TRUE(compile.bApplyAll);
}

TEST(TarselFxArguments, RejectsMalformedLinesWithAReason)
{
	const struct
	{
		CommandLine line;
		const char* reason;
	} cases[] = {
	    {CommandLine({}), "missing command"},
	    {CommandLine({"build", "a.tsl"}), "unknown command 'build'"},
	    {CommandLine({"check"}), "no input file"},
	    {CommandLine({"check", "a.tsl", "-I"}), "-I needs a directory"},
	    {CommandLine({"check", "-q", "a.tsl"}), "unknown option '-q'"},
	    {CommandLine({"preprocess", "a.tsl", "b.tsl"}), "exactly one file"},
	    {CommandLine({"print", "-I", "dir"}), "no input file"},
	    {CommandLine({"compile", "a.json", "b.json"}), "exactly one file"},
	    {CommandLine({"compile", "a.json", "--emit"}), "--emit needs a directory"},
	    {CommandLine({"check", "--apply-all", "a.tsl"}), "unknown option '--apply-all'"},
	};
	for (const auto& c : cases)
	{
		Arguments args;
		std::string error;
		EXPECT_FALSE(c.line.Parse(args, error)) << c.reason;
		EXPECT_NE(error.find(c.reason), std::string::npos) << error;
	}
}

TEST(TarselFxMain, UsageErrorsExitTwoWithoutRunning)
{
	std::ostringstream out, err;
	const char* argv[] = {"tarsel-fx", "check", "--bogus", "a.tsl"};
	EXPECT_EQ(Main(4, argv, out, err), kExitUsage);
	EXPECT_TRUE(out.str().empty());
	EXPECT_NE(err.str().find("unknown option '--bogus'"), std::string::npos);
	EXPECT_NE(err.str().find("usage: tarsel-fx check"), std::string::npos);
}

// Bare names resolve in the current folder before the search roots, so every run starts in an empty
// folder of its own: a stray file named like a fixture wherever the tests were started cannot stand in.
class TarselFxRun : public ::testing::Test
{
protected:
	void SetUp() override
	{
		_previous = std::filesystem::current_path();
		_empty =
		    std::filesystem::temp_directory_path() / ("tarsel-fx-run-" + std::to_string(::getpid()) + "-" +
		                                              std::to_string(reinterpret_cast<uintptr_t>(this)));
		std::filesystem::create_directories(_empty);
		std::filesystem::current_path(_empty);
	}
	void TearDown() override
	{
		std::filesystem::current_path(_previous);
		std::filesystem::remove_all(_empty);
	}
	int RunCommand(Command command, std::vector<std::string> files)
	{
		Arguments args;
		args.command = command;
		args.includeDirs = {kData};
		args.files = std::move(files);
		_out.str("");
		_console.Clear();
		return Fx::Run(args, &_console, _out);
	}
	std::string AllConsole() const
	{
		std::string all;
		for (const std::string& line : _console.GetAll())
			all += line;
		return all;
	}
	static std::string ReadFile(const std::string& path)
	{
		std::ifstream in(path, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
	}

	RecordingConsole _console;
	std::ostringstream _out;
	std::filesystem::path _previous;
	std::filesystem::path _empty;
};

TEST_F(TarselFxRun, CheckPrintsSourceErrorsInFileOrder)
{
	EXPECT_EQ(RunCommand(Command::kCheck, {"two_errors.tsl"}), 1);
	const std::string all = AllConsole();
	const size_t first = all.find("two_errors.tsl(4) : Syntax Error.");
	const size_t second = all.find("two_errors.tsl(8) : Syntax Error.");
	ASSERT_NE(first, std::string::npos) << all;
	ASSERT_NE(second, std::string::npos) << all;
	EXPECT_LT(first, second);
	EXPECT_NE(all.find("Library::Init Parse"), std::string::npos);
	EXPECT_TRUE(_out.str().empty());
}

TEST_F(TarselFxRun, CheckTriesEveryFileAndFailsIfAnyFails)
{
	EXPECT_EQ(RunCommand(Command::kCheck, {"syntax_error.tsl", "valid.tsl"}), 1);
	const std::string all = AllConsole();
	EXPECT_NE(all.find("syntax_error.tsl(5)"), std::string::npos) << all;
	EXPECT_NE(all.find("valid.tsl'"), std::string::npos) << all;
	EXPECT_EQ(RunCommand(Command::kCheck, {"valid.tsl", "ten_lines.tsl"}), 0) << AllConsole();
}

TEST_F(TarselFxRun, PreprocessWritesOnlyTheTextToOut)
{
	EXPECT_EQ(RunCommand(Command::kPreprocess, {"macros.tsl"}), 0) << AllConsole();
	EXPECT_EQ(_out.str(), ReadFile(kData + "/macros.expected"));
	EXPECT_NE(AllConsole().find("Acquired shader source asset successfully"), std::string::npos);

	// A failed load leaves no partial text behind.
	EXPECT_EQ(RunCommand(Command::kPreprocess, {"unbalanced.tsl"}), 1);
	EXPECT_EQ(_out.str(), "");
	EXPECT_NE(AllConsole().find("Condition Stack mismatch"), std::string::npos);
}

TEST_F(TarselFxRun, PrintThatFailsWritesNothingToOut)
{
	EXPECT_EQ(RunCommand(Command::kPrint, {TARSEL_TEST_DATA_DIR "/print/failing/unresolved_method.tsl"}), 1);
	EXPECT_EQ(_out.str(), "");
	EXPECT_NE(AllConsole().find("Class \"a\" cannot be found."), std::string::npos) << AllConsole();
}

} // namespace
} // namespace Tarsel::Fx
