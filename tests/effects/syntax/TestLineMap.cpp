#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "TestParserHelpers.h"
#include "syntax/LineMap.h"

using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

std::string Where(const LineMap& lines, int32_t line)
{
	const LineMap::Position position = lines.Resolve(line);
	return (position.pFile ? *position.pFile : "-") + ":" + std::to_string(position.iLine);
}

// main.tsl lines 1-2, then inc.tsl lines 1-3 (spliced for main's line 3), then main from line 4 on, with
// main's line 5 missing (an inactive #include gives no line).
LineMap Spliced()
{
	LineMap lines;
	for (int32_t line : {1, 2})
		lines.AddLine("dir/main.tsl", line);
	for (int32_t line : {1, 2, 3})
		lines.AddLine("dir/inc.tsl", line);
	for (int32_t line : {4, 6, 7})
		lines.AddLine("dir/main.tsl", line);
	return lines;
}

TEST(LineMap, ResolvesEveryLineToItsFileAndLine)
{
	const LineMap lines = Spliced();
	EXPECT_EQ(lines.GetCountLines(), 8);
	const char* const expected[] = {"dir/main.tsl:1", "dir/main.tsl:2", "dir/inc.tsl:1",  "dir/inc.tsl:2",
	                                "dir/inc.tsl:3",  "dir/main.tsl:4", "dir/main.tsl:6", "dir/main.tsl:7"};
	for (int32_t i = 0; i < 8; ++i)
		EXPECT_EQ(Where(lines, i + 1), expected[i]) << i;
	// Past the end (a parse failure at the end of input) the last file goes on.
	EXPECT_EQ(Where(lines, 9), "dir/main.tsl:8");
	// The same file returning keeps one name object.
	EXPECT_EQ(lines.Resolve(1).pFile, lines.Resolve(8).pFile);

	// A map without lines is a plain offset in the library's own text.
	EXPECT_EQ(Where(LineMap(10), 3), "-:13");
	EXPECT_EQ(Where(LineMap(), 1), "-:1");
	LineMap copy = lines;
	copy.Clear();
	EXPECT_EQ(Where(copy, 4), "-:4");
	EXPECT_EQ(Where(lines, 4), "dir/inc.tsl:2");
}

TEST(LineMap, ParserNamesTheFileOfEachLine)
{
	const std::string text = "float f() { return 1.0; }\n"
	                         "\n"
	                         "float g() { return 2.0; }\n"
	                         "float h() { = }\n"
	                         "\n"
	                         "\n"
	                         "float k() { return 3.0; }\n";
	Parsed parsed;
	std::unique_ptr<LineMap> pLines = std::make_unique<LineMap>(Spliced());
	parsed.bParsed = TslParser::Parse(parsed.pModule.get(), parsed.vErrors, parsed.sName, text, *pLines);
	pLines.reset(); // the module keeps its own copy
	EXPECT_FALSE(parsed.bParsed);
	ASSERT_EQ(parsed.vErrors.size(), 1u);
	EXPECT_EQ(parsed.vErrors[0], "dir/inc.tsl(2) : Syntax Error. Near \"=\"\n");

	const std::vector<FunctionDefinition*>& functions = parsed.pModule->GetFunctionDefinitions();
	// The parser recovers from the error, so h is there too.
	ASSERT_EQ(functions.size(), 4u);
	EXPECT_EQ(functions[0]->GetRange().GetLocationText(), "main.tsl:1");
	EXPECT_EQ(functions[1]->GetRange().GetLocationText(), "inc.tsl:1");
	EXPECT_EQ(functions[3]->GetRange().GetLocationText(), "main.tsl:6");
	// The library name stays the source; the file is an addition.
	EXPECT_EQ(functions[1]->GetRange().GetSource(), &parsed.sName);
	EXPECT_EQ(*functions[1]->GetRange().GetFile(), "dir/inc.tsl");
	// Copies into other modules keep pointing at names that live with the parsed module.
	std::unique_ptr<Module> pCopy(Module::Create());
	parsed.pModule->Clone(pCopy.get());
	EXPECT_EQ(pCopy->GetFunctionDefinitions()[1]->GetRange().GetLocationText(), "inc.tsl:1");
}

} // namespace
