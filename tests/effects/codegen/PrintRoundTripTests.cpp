#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "PrintTestSupport.h"
#include "syntax/TslParser.h"

using namespace Tarsel;
using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

std::unique_ptr<Module> Parse(const std::string& sText, const std::string& sName)
{
	std::unique_ptr<Module> pModule(Module::Create());
	std::vector<std::string> vErrors;
	EXPECT_TRUE(TslParser::Parse(pModule.get(), vErrors, sName, sText, 0)) << sText;
	for (const std::string& sError : vErrors)
		ADD_FAILURE() << sError;
	return pModule;
}

} // namespace

// Parsing the printed text gives the same functions and prints the same text again: a lost parenthesis,
// operator or literal digit shows here. Each library is a complete program, so it must also compile.
TEST(PrintRoundTrip, LibrariesOfFreeFunctions)
{
	std::vector<std::filesystem::path> vFiles;
	for (const auto& entry :
	     std::filesystem::directory_iterator(std::string(TARSEL_TEST_DATA_DIR) + "/print"))
		if (entry.path().extension() == ".tsl")
			vFiles.push_back(entry.path());
	ASSERT_GE(vFiles.size(), 3u);
	for (const std::filesystem::path& path : vFiles)
	{
		SCOPED_TRACE(path.filename().string());
		std::unique_ptr<Module> pOriginal = Parse(ReadFile(path.string()), path.filename().string());
		VisitorPrintTsl first(nullptr, nullptr, false);
		ASSERT_TRUE(first.Visit(pOriginal.get()));
		std::unique_ptr<Module> pPrinted = Parse(first.result(), "printed");
		const std::vector<FunctionDefinition*>& vOriginal = pOriginal->GetFunctionDefinitions();
		ASSERT_EQ(pPrinted->GetCountFunctionDefinitions(), vOriginal.size());
		for (size_t i = 0; i < vOriginal.size(); ++i)
			EXPECT_TRUE(vOriginal[i]->Equals(pPrinted->GetFunctionDefinitions()[i]))
			    << vOriginal[i]->GetFunctionPrototype()->GetName()->GetString();
		VisitorPrintTsl second(nullptr, nullptr, false);
		ASSERT_TRUE(second.Visit(pPrinted.get()));
		EXPECT_EQ(second.result(), first.result());
		EXPECT_EQ(CompileOnDevice(first.result(), IQLShader::kType_Ray), std::vector<std::string>())
		    << first.result();
	}
}
