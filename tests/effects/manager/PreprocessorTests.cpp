#include <gtest/gtest.h>

#include "ManagerTestSupport.h"

using namespace Tarsel;
using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

class Preprocessor : public ::testing::Test
{
protected:
	explicit Preprocessor(bool differential = false) : harness(differential) {}

	// Loads main.tsl; the text that would be parsed, or nothing when the load failed.
	bool Load(const std::string& text, std::string* output = nullptr)
	{
		mainPath = dir.Write("main.tsl", text);
		harness.console.Clear();
		const size_t before = harness.manager.vLoads.size();
		const bool loaded = harness.manager.AddLibrary(mainPath, &result);
		EXPECT_EQ(loaded, harness.manager.vLoads.size() > before);
		if (loaded && output)
			*output = harness.manager.vLoads.back().sSource;
		return loaded;
	}
	std::string Output(const std::string& text)
	{
		std::string output;
		EXPECT_TRUE(Load(text, &output));
		return output;
	}
	const std::vector<std::string>& Errors() { return harness.console.GetErrors(); }
	const std::vector<std::string>& Messages() { return harness.console.GetMessages(); }
	std::string Mismatch(const std::string& path)
	{
		return "Effects Manager: Pre-Processor Condition Stack mismatch while reading file '" + path + "'\n";
	}

	TempDir dir;
	ManagerHarness<LoadRecorder> harness;
	Result result;
	std::string mainPath;
};

class PreprocessorWithDifferentials : public Preprocessor
{
protected:
	PreprocessorWithDifferentials() : Preprocessor(true) {}
};

TEST_F(Preprocessor, SubstitutesMacrosAtTheEndOfNamesButNotInsideLongerOnes)
{
	EXPECT_EQ(Output("#define FOO 3\na = FOO;\nFOOD = 1;\nMYFOO + 1\nFOO_X FOO\n"),
	          "\na = 3;\nFOOD = 1;\nMY3 + 1\nFOO_X 3\n");
	EXPECT_EQ(Output("#define X 1\nMAX(X,X)\n"), "\nMA1(1,1)\n");
	// The replacement is not searched again for the same name.
	EXPECT_EQ(Output("#define A A+A\nA\n"), "\nA+A\n");
}

TEST_F(Preprocessor, SubstitutesNewestFirstSoOnlyOlderNamesInReplacementsExpand)
{
	EXPECT_EQ(Output("#define B 7\n#define A B\nA\nB\n"), "\n\n7\n7\n");
	EXPECT_EQ(Output("#define A B\n#define B 7\nA\nB\n"), "\n\nB\n7\n");
}

TEST_F(Preprocessor, RedefinitionReportsAndMovesTheMacroToTheNewestPosition)
{
	const std::string out = Output("#define X 1\n#define Y X\n#define X 2\nY\nX\n");
	// Y, now older than X, turns into X after X had its turn.
	EXPECT_EQ(out, "\n\n\nX\n2\n");
	EXPECT_EQ(Messages().back(),
	          "Effects Manager: Pre-Processor found redefinition of 'X' as '2' (was '1')\n");
}

TEST_F(Preprocessor, DirectiveLinesAreNeverSubstituted)
{
	EXPECT_EQ(Output("#define FOO BAR\n#ifdef FOO\nyes\n#endif\n#ifdef BAR\nno\n#endif\n"),
	          "\n\nyes\n\n\n\n\n");
	EXPECT_EQ(Output("#define FOO BAR\n#undef FOO\nFOO\n"), "\n\nFOO\n");
	// Had the #define line been substituted, the second definition would be named 1.
	EXPECT_EQ(Output("#define N 1\n#define N 2\nN\n"), "\n\n2\n");
}

TEST_F(Preprocessor, RecognisesDirectivesOnlyAsWholeFirstWords)
{
	EXPECT_EQ(Output("   #define X 1\nX\n# define Y 2\n#defineZ 3\nY Z\n"),
	          "\n1\n# define Y 2\n#defineZ 3\nY Z\n");
	// Remainders are trimmed, ordinary lines keep their carriage return.
	EXPECT_EQ(Output("#define X  a b \t\r\nX\r\n#define E\r\n[E]\r\n"), "\na b\r\n\n[]\r\n");
	EXPECT_EQ(Output("last line"), "last line\n");
}

TEST_F(Preprocessor, KeepsOneOutputLinePerInputLineThroughConditionals)
{
	const std::string in = "#ifdef UNDEFINED\na\n#else\nb\n#endif\n#ifndef UNDEFINED\nc\n#endif\n";
	EXPECT_EQ(Output(in), "\n\n\nb\n\n\nc\n\n");
}

TEST_F(Preprocessor, KeepsNestedBlocksOfAnInactiveRegionInactiveThroughTheirElse)
{
	const std::string in =
	    "#define A\n#ifdef NOPE\n#ifdef A\none\n#else\ntwo\n#endif\n#define B\n#else\nthree\n#endif\n"
	    "#ifdef B\nfour\n#endif\n";
	EXPECT_EQ(Output(in), "\n\n\n\n\n\n\n\n\nthree\n\n\n\n\n");
}

TEST_F(Preprocessor, FailsUnbalancedConditionalsWithTheMismatchMessage)
{
	for (const char* text :
	     {"#endif\nx\n", "a\n#endif\n#ifdef X\n", "#else\n", "#ifdef X\ny\n", "#ifdef X\n#endif\n#endif\n"})
	{
		SCOPED_TRACE(text);
		EXPECT_FALSE(Load(text));
		ASSERT_EQ(Errors().size(), 1u);
		EXPECT_EQ(Errors()[0], Mismatch(mainPath));
	}
}

TEST_F(Preprocessor, RejectsADefineWithoutAName)
{
	EXPECT_FALSE(Load("#define\nx\n"));
	ASSERT_EQ(Errors().size(), 1u);
	EXPECT_EQ(Errors()[0],
	          "Effects Manager: Pre-Processor found #define without a name in file '" + mainPath + "'\n");
	// Inside an inactive region it is not a definition at all.
	EXPECT_TRUE(Load("#ifdef NOPE\n#define\n#endif\n"));
}

TEST_F(Preprocessor, ReportsFilesThatCannotBeRead)
{
	const std::string missing = dir.Path() + "/missing.tsl";
	EXPECT_FALSE(harness.manager.AddLibrary(missing, &result));
	ASSERT_EQ(Errors().size(), 1u);
	EXPECT_EQ(Errors()[0].rfind("Failed to read shader source file '" + missing + "' (", 0), 0u);

	harness.console.Clear();
	const std::string empty = dir.Write("empty.tsl", "");
	EXPECT_FALSE(harness.manager.AddLibrary(empty, &result));
	EXPECT_TRUE(Errors().empty());
	ASSERT_EQ(Messages().size(), 1u);
	EXPECT_EQ(Messages()[0].rfind("Acquired shader source asset successfully: '", 0), 0u);
	EXPECT_TRUE(result.IsEmpty());
}

TEST_F(Preprocessor, IncludesSpliceTextEveryTimeAndShiftTheLineOffset)
{
	const std::string ten = dir.Write("ten.tsl", "#define T 10\n1\n2\n3\n4\n5\n6\n7\n8\n9\n");
	const std::string out = Output("#include \"" + ten + "\"\nT\n#include \"" + ten + "\"\n");
	EXPECT_EQ(out, "\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n\n1\n2\n3\n4\n5\n6\n7\n8\n9\n");
	// Two ten-line files in place of two lines.
	EXPECT_EQ(harness.manager.vLoads.back().iLineOffset, -18);
	EXPECT_EQ(harness.manager.vLoads.back().sName, mainPath);
	EXPECT_EQ(harness.manager.GetLineOffset(), 0);
}

// Each line of the text maps to the file and line it was written on: included lines to the included file,
// and lines after an inactive #include (which yields no line) to their own numbers.
TEST_F(Preprocessor, LineMapPlacesEveryLineInItsFile)
{
	const std::string inc = dir.Write("inc.tsl", "x\ny\n");
	const std::string out =
	    Output("a\n#include \"" + inc + "\"\n#ifdef NO\n#include \"" + inc + "\"\n#endif\nb\n");
	EXPECT_EQ(out, "a\nx\ny\n\n\nb\n");
	const LineMap& lines = harness.manager.vLoads.back().lines;
	ASSERT_EQ(lines.GetCountLines(), 6);
	const std::vector<std::pair<std::string, int>> expected = {{mainPath, 1}, {inc, 1},      {inc, 2},
	                                                           {mainPath, 3}, {mainPath, 5}, {mainPath, 6}};
	for (int i = 0; i < 6; ++i)
	{
		const LineMap::Position position = lines.Resolve(i + 1);
		ASSERT_NE(position.pFile, nullptr);
		EXPECT_EQ(std::make_pair(*position.pFile, int(position.iLine)), expected[size_t(i)]) << i;
	}
	// An imported library has a map of its own and leaves the importer's as it was.
	const std::string lib = dir.Write("lib.tsl", "l1\nl2\n");
	Output("m1\n#import \"" + lib + "\"\nm3\n");
	ASSERT_EQ(harness.manager.vLoads.size(), 3u);
	EXPECT_EQ(*harness.manager.vLoads[1].lines.Resolve(2).pFile, lib);
	EXPECT_EQ(harness.manager.vLoads[2].lines.GetCountLines(), 3);
	EXPECT_EQ(*harness.manager.vLoads[2].lines.Resolve(3).pFile, mainPath);
	EXPECT_EQ(harness.manager.GetLineMap().GetCountLines(), 0);
}

TEST_F(Preprocessor, IncludeFailuresEndTheLoad)
{
	EXPECT_FALSE(Load("#include plain.tsl\nx\n"));
	EXPECT_EQ(Errors(), std::vector<std::string>{
	                        "Effects Manager: Failed to interpret '#include filename plain.tsl' in "
	                        "file '" +
	                        mainPath + "'\n"});
	// A block opened in the included file cannot be closed by the includer.
	const std::string opens = dir.Write("opens.tsl", "#ifdef X\n");
	EXPECT_FALSE(Load("#include \"" + opens + "\"\n#endif\n"));
	EXPECT_EQ(Errors(), std::vector<std::string>{Mismatch(opens)});
	// A failed include inside an open block also reports the includer's open block.
	EXPECT_FALSE(Load("#ifndef X\n#include \"" + dir.Path() + "/gone.tsl\"\n#endif\n"));
	ASSERT_EQ(Errors().size(), 2u);
	EXPECT_EQ(Errors()[1], Mismatch(mainPath));
}

TEST_F(Preprocessor, StopsIncludeAndImportCycles)
{
	const std::string b = dir.Path() + "/b.tsl";
	const std::string a = dir.Write("a.tsl", "#include \"" + b + "\"\n");
	dir.Write("b.tsl", "#include \"" + a + "\"\n");
	EXPECT_FALSE(harness.manager.AddLibrary(a, &result));
	EXPECT_EQ(Errors().back(),
	          "Effects Manager: Pre-Processor include cycle detected at '" + a + "' in file '" + b + "'\n");

	harness.console.Clear();
	const std::string self = dir.Write("self.tsl", "x\n");
	dir.Write("self.tsl", "#import \"" + self + "\"\n");
	EXPECT_FALSE(harness.manager.AddLibrary(self, &result));
	EXPECT_EQ(Errors().back(), "Effects Manager: Pre-Processor include cycle detected at '" + self +
	                               "' in file '" + self + "'\n");
	EXPECT_TRUE(harness.manager.vLoads.empty());

	// A file that flips a name each pass returns to a state it was in two passes before.
	harness.console.Clear();
	const std::string flip = dir.Write("flip.tsl", "");
	dir.Write("flip.tsl", "#ifdef X\n#undef X\n#else\n#define X\n#endif\n#include \"" + flip + "\"\n");
	EXPECT_FALSE(harness.manager.AddLibrary(flip, &result));
	EXPECT_EQ(Errors()[0], "Effects Manager: Pre-Processor include cycle detected at '" + flip +
	                           "' in file '" + flip + "'\n");
	EXPECT_TRUE(harness.manager.vLoads.empty());
}

// A guard makes the second entry of a file inactive, so the recursion ends after one pass.
TEST_F(Preprocessor, GuardedReinclusionIsNotACycle)
{
	const std::string b = dir.Path() + "/b.tsl";
	const std::string a =
	    dir.Write("a.tsl", "#ifndef A_H\n#define A_H\n#include \"" + b + "\"\nfrom_a\n#endif\n");
	dir.Write("b.tsl", "#ifndef B_H\n#define B_H\n#include \"" + a + "\"\nfrom_b\n#endif\n");
	ASSERT_TRUE(harness.manager.AddLibrary(a, &result)) << (Errors().empty() ? "" : Errors().back());
	EXPECT_EQ(harness.manager.vLoads.back().sSource, "\n\n\n\n\n\n\n\nfrom_b\n\nfrom_a\n\n");

	const std::string self = dir.Write("self.tsl", "#ifndef S\n#define S\n#include \"" + dir.Path() +
	                                                   "/self.tsl\"\nonce\n#endif\n");
	ASSERT_TRUE(harness.manager.AddLibrary(self, &result));
	EXPECT_EQ(harness.manager.vLoads.back().sSource, "\n\n\n\n\n\nonce\n\n");
	// The same file twice in a row, unguarded, is no cycle either.
	EXPECT_EQ(
	    Output("#include \"" + dir.Write("inc.tsl", "i\n") + "\"\n#include \"" + dir.Path() + "/inc.tsl\"\n"),
	    "i\ni\n");
}

TEST_F(Preprocessor, IncludeDepthIsCapped)
{
	// file k includes file k + 1; the last one includes nothing.
	const auto chain = [&](size_t count)
	{
		for (size_t k = 0; k < count; ++k)
		{
			const std::string next = dir.Path() + "/d" + std::to_string(k + 1) + ".tsl";
			dir.Write("d" + std::to_string(k) + ".tsl",
			          k + 1 < count ? "#include \"" + next + "\"\n" : "deepest\n");
		}
		return dir.Path() + "/d0.tsl";
	};
	ASSERT_TRUE(harness.manager.AddLibrary(chain(MgrEffectsImpl::kMaxIncludeDepth), &result));
	EXPECT_EQ(harness.manager.vLoads.back().sSource, "deepest\n");

	harness.console.Clear();
	const std::string top = chain(MgrEffectsImpl::kMaxIncludeDepth + 1);
	EXPECT_FALSE(harness.manager.AddLibrary(top, &result));
	ASSERT_FALSE(Errors().empty());
	const std::string message = Errors().back();
	EXPECT_EQ(
	    message.rfind("Effects Manager: Pre-Processor includes nested deeper than 64: " + top + " -> ", 0),
	    0u)
	    << message;
	EXPECT_NE(message.find("d63.tsl -> " + dir.Path() + "/d64.tsl\n"), std::string::npos) << message;
}

TEST_F(PreprocessorWithDifferentials, GuardsAndCyclesAreJudgedTheSame)
{
	const std::string self = dir.Write("self.tsl", "");
	dir.Write("self.tsl", "#include \"" + self + "\"\n");
	EXPECT_FALSE(harness.manager.AddLibrary(self, &result));
	EXPECT_EQ(Errors().back(), "Effects Manager: Pre-Processor include cycle detected at '" + self +
	                               "' in file '" + self + "'\n");
	dir.Write("self.tsl", "#ifndef S\n#define S\n#include \"" + self + "\"\n#endif\n");
	EXPECT_TRUE(harness.manager.AddLibrary(self, &result));
}

TEST_F(Preprocessor, ImportsLoadSeparateLibrariesThatShareTheDefinitions)
{
	const std::string lib =
	    dir.Write("lib.tsl", "#define FROM_LIB 5\nL\n#include \"" + dir.Write("inc.tsl", "i\n") + "\"\n");
	EXPECT_EQ(Output("#import \"" + lib + "\"\nFROM_LIB\n#ifdef NOPE\n#import nonsense\n#endif\n"),
	          "\n5\n\n\n\n");
	ASSERT_EQ(harness.manager.vLoads.size(), 2u);
	EXPECT_EQ(harness.manager.vLoads[0].sName, lib);
	EXPECT_EQ(harness.manager.vLoads[0].sSource, "\nL\ni\n");
	EXPECT_EQ(harness.manager.vLoads[0].iLineOffset, 0);
	// The importer's own offset is untouched by the imported file's include.
	EXPECT_EQ(harness.manager.vLoads[1].iLineOffset, 0);
	EXPECT_EQ(Messages()[1], "Effects Manager: Deprecated preprocessor directive #import \"" + lib +
	                             "\"' in file '" + mainPath + "'\n");
	EXPECT_EQ(Messages().back(),
	          "Effects Manager: Deprecated preprocessor directive #import nonsense' in file '" + mainPath +
	              "'\n");

	EXPECT_FALSE(Load("#import nonsense\n"));
	EXPECT_EQ(Errors().back(), "Effects Manager: Failed to interpret '#import filename nonsense' in file '" +
	                               mainPath + "'\n");
}

TEST_F(Preprocessor, DefinitionsDoNotCarryOverBetweenLoads)
{
	EXPECT_EQ(Output("#define K 1\nK\n"), "\n1\n");
	EXPECT_EQ(Output("#ifdef K\nset\n#endif\nK\n"), "\n\n\nK\n");
}

TEST_F(PreprocessorWithDifferentials, DefinesDifferentialSupportInEveryFile)
{
	const std::string inc =
	    dir.Write("inc.tsl", "#ifdef _HAS_DIFFERENTIAL_SUPPORT\nd = _HAS_DIFFERENTIAL_SUPPORT;\n#endif\n");
	EXPECT_EQ(
	    Output("#undef _HAS_DIFFERENTIAL_SUPPORT\n#include \"" + inc + "\"\n_HAS_DIFFERENTIAL_SUPPORT\n"),
	    "\n\nd = 1;\n\n1\n");
}

} // namespace
