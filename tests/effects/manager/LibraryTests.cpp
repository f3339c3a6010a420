#include <gtest/gtest.h>

#include "ManagerTestSupport.h"
#include "manager/Profiler.h"
#include "objects/Library.h"
#include "syntax/Module.h"
#include "syntax/TslParser.h"

using namespace Tarsel;
using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

const char* const kValid = "interface Texture\n{\n\tvec4 Sample(vec2 uv);\n}\n";
const char* const kBroken = "interface Texture\n{\n\tvec4 Sample(vec2 uv)\n}\n}}\n";

TEST(Library, ParsesIntoItsModuleAndReportsParserErrorsLastFirst)
{
	ManagerHarness<MgrEffectsImpl> harness;
	Library library;
	EXPECT_TRUE(library.Init(&harness.manager, "good", kValid, nullptr, 0));
	ASSERT_NE(library.GetModule(), nullptr);
	EXPECT_NE(library.GetModule()->GetInterfaceDefinition("Texture"), nullptr);

	std::vector<std::string> errors;
	Module module;
	ASSERT_FALSE(TslParser::Parse(&module, errors, "bad", kBroken, 0));
	Result result;
	Library broken;
	EXPECT_FALSE(broken.Init(&harness.manager, "bad", kBroken, &result, 0));
	EXPECT_EQ(broken.GetModule(), nullptr);
	EXPECT_EQ(result.GetMessages(), std::vector<std::string>(errors.rbegin(), errors.rend()));
	EXPECT_EQ(harness.console.GetErrors().back(), "Library::Init Parse\n");
}

TEST(Library, ManagerKeepsTheFirstLibraryOfAName)
{
	ManagerHarness<MgrEffectsImpl> harness;
	Result result;
	EXPECT_TRUE(harness.manager.AddLibrary("lib", kValid, &result));
	EXPECT_TRUE(harness.manager.AddLibrary("lib", kBroken, &result));
	EXPECT_TRUE(result.IsEmpty());
	EXPECT_FALSE(harness.manager.AddLibrary("other", kBroken, &result));
	EXPECT_EQ(result.GetMessages().back(), "Effects Manager: Failed to initialize Shader Library 'other'\n");
	EXPECT_EQ(harness.manager.GetProfiler()->GetSamples("Add Library").size(), 3u);
}

TEST(Library, ErrorsAfterAnIncludeNameTheLineOfTheFile)
{
	TempDir dir;
	ManagerHarness<MgrEffectsImpl> harness;
	const std::string ten = dir.Write("ten.tsl", std::string(10, '\n'));
	const std::string main = dir.Write("main.tsl", "#include \"" + ten + "\"\n" + kValid + "oops\n");
	Result result;
	EXPECT_FALSE(harness.manager.AddLibrary(main, &result));
	ASSERT_GE(result.GetMessages().size(), 2u);
	EXPECT_EQ(result.GetMessages().front().rfind(main + "(6) : ", 0), 0u) << result.GetMessages().front();
	EXPECT_EQ(result.GetMessages().back(),
	          "Effects Manager: Failed to initialize Shader Library '" + main + "'\n");
}

} // namespace
