#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "syntax/Syntax.h"
#include "syntax/TslParser.h"

using namespace Tarsel::Effects;

namespace
{

std::vector<std::filesystem::path> CorpusFiles()
{
	std::vector<std::filesystem::path> files;
	for (const auto& entry : std::filesystem::directory_iterator(std::string(TARSEL_TEST_DATA_DIR) + "/tsl"))
		if (entry.path().extension() == ".tsl")
			files.push_back(entry.path());
	std::sort(files.begin(), files.end());
	return files;
}

std::string ReadFile(const std::filesystem::path& path)
{
	std::ifstream stream(path, std::ios::binary);
	std::ostringstream text;
	text << stream.rdbuf();
	return text.str();
}

std::unique_ptr<Module> ParseFile(const std::filesystem::path& path, const std::string& name)
{
	std::unique_ptr<Module> pModule(Module::Create());
	std::vector<std::string> errors;
	EXPECT_TRUE(TslParser::Parse(pModule.get(), errors, name, ReadFile(path), 0)) << path;
	for (const std::string& error : errors)
		ADD_FAILURE() << error;
	return pModule;
}

bool HasUserType(const VariableDeclaration* pVariable)
{
	return pVariable->GetType()->GetClass() == kClass_UserType;
}

// Declarations of user type never compare equal, so those are compared by their names.
void ExpectSameMember(const VariableDeclaration* pA, const VariableDeclaration* pB)
{
	if (HasUserType(pA))
	{
		ASSERT_TRUE(HasUserType(pB));
		EXPECT_EQ(pA->GetIdentifier()->GetString(), pB->GetIdentifier()->GetString());
		EXPECT_EQ(static_cast<const UserType*>(pA->GetType())->GetName()->GetString(),
		          static_cast<const UserType*>(pB->GetType())->GetName()->GetString());
		EXPECT_EQ(pA->GetType()->IsArray(), pB->GetType()->IsArray());
		EXPECT_EQ(pA->IsStatic(), pB->IsStatic());
		EXPECT_EQ(pA->GetStorageQualifier(), pB->GetStorageQualifier());
	}
	else
		EXPECT_TRUE(pA->Equals(pB)) << pA->GetIdentifier()->GetString();
}

void ExpectSameClass(const ClassDefinition* pA, const ClassDefinition* pB)
{
	EXPECT_EQ(pA->GetName()->GetString(), pB->GetName()->GetString());
	EXPECT_EQ(pA->GetInterface() != nullptr, pB->GetInterface() != nullptr);
	ASSERT_EQ(pA->GetMemberFunctions().size(), pB->GetMemberFunctions().size());
	for (size_t i = 0; i < pA->GetMemberFunctions().size(); ++i)
		EXPECT_TRUE(pA->GetMemberFunctions()[i]->Equals(pB->GetMemberFunctions()[i])) << i;
	ASSERT_EQ(pA->GetMemberVariables().size(), pB->GetMemberVariables().size());
	for (size_t i = 0; i < pA->GetMemberVariables().size(); ++i)
		ExpectSameMember(pA->GetMemberVariables()[i], pB->GetMemberVariables()[i]);
	ASSERT_EQ(pA->GetCountCoords(), pB->GetCountCoords());
	for (const auto& coord : pA->GetCoords())
		EXPECT_TRUE(coord.second->Equals(pB->GetCoords().at(coord.first))) << coord.first;
	EXPECT_EQ(pA->GetCountOutputs(), pB->GetCountOutputs());
}

void ExpectSameModule(const Module& a, const Module& b)
{
	ASSERT_EQ(a.GetFunctionDefinitions().size(), b.GetFunctionDefinitions().size());
	for (size_t i = 0; i < a.GetFunctionDefinitions().size(); ++i)
		EXPECT_TRUE(a.GetFunctionDefinitions()[i]->Equals(b.GetFunctionDefinitions()[i])) << i;
	ASSERT_EQ(a.GetInterfaceDefinitions().size(), b.GetInterfaceDefinitions().size());
	for (size_t i = 0; i < a.GetInterfaceDefinitions().size(); ++i)
		EXPECT_TRUE(a.GetInterfaceDefinitions()[i]->Equals(b.GetInterfaceDefinitions()[i])) << i;
	ASSERT_EQ(a.GetClassDefinitions().size(), b.GetClassDefinitions().size());
	for (size_t i = 0; i < a.GetClassDefinitions().size(); ++i)
		ExpectSameClass(a.GetClassDefinitions()[i], b.GetClassDefinitions()[i]);
}

} // namespace

TEST(TslCorpus, EveryLibraryParses)
{
	const std::vector<std::filesystem::path> files = CorpusFiles();
	ASSERT_GE(files.size(), 5u);
	for (const std::filesystem::path& path : files)
	{
		std::unique_ptr<Module> pModule = ParseFile(path, path.filename().string());
		EXPECT_FALSE(pModule->GetClassDefinitions().empty() && pModule->GetFunctionDefinitions().empty())
		    << path;
	}
}

// A clone equals its original and owns all it refers to: destroying either leaves the other whole.
TEST(TslCorpus, ClonesAreEqualAndIndependent)
{
	for (const std::filesystem::path& path : CorpusFiles())
	{
		SCOPED_TRACE(path.filename().string());
		const std::string name = path.filename().string();
		std::unique_ptr<Module> pOriginal = ParseFile(path, name);
		std::unique_ptr<Module> pClone(Module::Create());
		pOriginal->Clone(pClone.get());
		ExpectSameModule(*pOriginal, *pClone);
		std::unique_ptr<Module> pSecondClone(Module::Create());
		pClone->Clone(pSecondClone.get());

		pOriginal.reset();
		std::unique_ptr<Module> pFresh = ParseFile(path, name);
		ExpectSameModule(*pFresh, *pClone);

		pClone.reset();
		ExpectSameModule(*pFresh, *pSecondClone);
	}
}
