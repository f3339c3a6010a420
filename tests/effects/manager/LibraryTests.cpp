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

// A parse error names the file the text was written in and that file's own line, wherever an #include
// put it in the spliced text.
TEST(Library, ErrorsNameTheFileAndLineTheyWereWrittenOn)
{
	TempDir dir;
	ManagerHarness<MgrEffectsImpl> harness;
	const std::string ten = dir.Write("ten.tsl", std::string(10, '\n'));
	const std::string broken = dir.Write("broken.tsl", "\n\noops\n");
	const auto firstError = [&](const std::string& text)
	{
		Result result;
		EXPECT_FALSE(harness.manager.AddLibrary(dir.Write("main.tsl", text), &result));
		return result.GetMessages().empty() ? std::string() : result.GetMessages().front();
	};
	const std::string main = dir.Path() + "/main.tsl";
	const std::string include = "#include \"" + ten + "\"\n";

	EXPECT_EQ(firstError("\n\noops\n" + include).rfind(main + "(3) : ", 0), 0u);
	EXPECT_EQ(firstError("#include \"" + broken + "\"\n" + kValid).rfind(broken + "(3) : ", 0), 0u);
	EXPECT_EQ(firstError("#ifdef NO\n" + include + "#endif\noops\n").rfind(main + "(4) : ", 0), 0u);
}

// Parses what a load hands over into a library of its own, which the test can inspect.
class KeepLibrary : public MgrEffectsImpl
{
public:
	bool AddLibrary(const std::string& name, const std::string& source, Result* result) override
	{
		return library.Init(this, name, source, result, GetLineMap());
	}
	using MgrEffectsImpl::AddLibrary;

	Library library;
};

// Every node knows where it was written: included definitions name the included file.
TEST(Library, NodeLocationsNameTheIncludedFile)
{
	TempDir dir;
	ManagerHarness<KeepLibrary> harness;
	const std::string inc = dir.Write("inc.tsl", std::string("\n\n") + kValid);
	const std::string main = dir.Write("main.tsl", "\n#include \"" + inc + "\"\nfloat f() { return 1.0; }\n");
	Result result;
	ASSERT_TRUE(harness.manager.AddLibrary(main, &result));
	const Module* pModule = harness.manager.library.GetModule();
	EXPECT_EQ(pModule->GetInterfaceDefinition("Texture")->GetRange().GetLocationText(), "inc.tsl:3");
	EXPECT_EQ(pModule->GetFunctionDefinitions().at(0)->GetRange().GetLocationText(), "main.tsl:3");
}

} // namespace
