#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TestParserHelpers.h"

using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

using Lines = std::vector<std::string>;

std::string Repeat(const std::string& text, size_t count)
{
	std::string result;
	result.reserve(text.size() * count);
	for (size_t i = 0; i < count; ++i)
		result += text;
	return result;
}

} // namespace

TEST(TslParserErrors, SyntaxErrorNamesLineAndToken)
{
	std::unique_ptr<Parsed> pParsed = ParseText("class C\n{\n\tfloat x;\n\n\tfoo\n}");
	EXPECT_FALSE(pParsed->bParsed);
	EXPECT_EQ(pParsed->vErrors, Lines{"lib(5) : Syntax Error. Near \"identifier\" foo\n"});
	// The token was dropped and the class went on.
	EXPECT_EQ(pParsed->pModule->GetClassDefinitions().size(), 1u);
	// Messages count lines from the line offset.
	EXPECT_EQ(ParseText("\n\n)", 20)->vErrors, Lines{"lib(23) : Syntax Error. Near \")\"\n"});

	// What the language does not allow, and the token at which it shows.
	const std::pair<const char*, const char*> cases[] = {
	    {"interface I { float f(); };", "\";\""},                         // no semicolon after a definition
	    {"class C { float x, y; }", "\",\""},                             // one name per declaration
	    {"class C { S s; }", "\"identifier\" S"},                         // user types only through inputs
	    {"class C { output float f; }", "\"float\""},                     // outputs are vec3 or vec4
	    {"class C { input void v; }", "\"void\""},                        // void only as a return type
	    {"class C { float f(S s) { } }", "\"identifier\" S"},             // parameters have built-in types
	    {"class C { input bvec2 b = bvec2(true, false); }", "\"bvec2\""}, // inputs hold no boolean vectors
	    {"[ sampler2D(x); ]", "\"(\""},                                   // samplers cannot be constructed
	    {"[ { const float x; } ]", "\"const\""}, // no const or static inside functions
	    {"struct S { float x; }", "\"struct\""}, // structs come only from code generation
	};
	for (const auto& entry : cases)
	{
		pParsed = ParseText(entry.first);
		EXPECT_FALSE(pParsed->bParsed) << entry.first;
		EXPECT_EQ(pParsed->FirstError(), "lib(1) : Syntax Error. Near " + std::string(entry.second) + "\n");
	}
	// RESERVED is a token of the grammar only: in a text it is a name.
	EXPECT_TRUE(ParseText("class RESERVED { input uniform varying; }")->bParsed);
}

// After a report the machine stays quiet until three tokens have been shifted.
TEST(TslParserErrors, ReportsWaitForThreeShiftedTokens)
{
	EXPECT_EQ(ParseText("[ x ) ) ; ]")->vErrors, Lines{"lib(1) : Syntax Error. Near \")\"\n"});
	// Two shifts (";" and "]") before the next bad token: still quiet.
	EXPECT_EQ(ParseText("[ x ) ; ] ]")->vErrors, Lines{"lib(1) : Syntax Error. Near \")\"\n"});
	// Three shifts: reported, and the end arrives in the error state.
	EXPECT_EQ(ParseText("[ x ) ; ] [ ]")->vErrors,
	          (Lines{"lib(1) : Syntax Error. Near \")\"\n", "lib(1) : Syntax Error. Near \"]\"\n",
	                 "lib(1) : Parse Failure. Near \"]\"\n"}));
}

TEST(TslParserErrors, EndOfInputInsideAConstruct)
{
	std::unique_ptr<Parsed> pParsed = ParseText("class C {\n  float x;\n");
	EXPECT_FALSE(pParsed->bParsed);
	EXPECT_EQ(pParsed->vErrors,
	          (Lines{"lib(3) : Syntax Error. Near \";\"\n", "lib(3) : Parse Failure. Near \";\"\n"}));
	EXPECT_TRUE(pParsed->pModule->GetClassDefinitions().empty());
	// What the unfinished class held went with it.
	EXPECT_TRUE(pParsed->pModule->GetStrings().empty());

	pParsed = ParseText("class C { float x; } float f( { }");
	EXPECT_FALSE(pParsed->bParsed);
	EXPECT_EQ(pParsed->vErrors.back(), "lib(1) : Parse Failure. Near \"}\"\n");
	ASSERT_EQ(pParsed->pModule->GetClassDefinitions().size(), 1u);
	EXPECT_TRUE(pParsed->pModule->GetFunctionDefinitions().empty());
	EXPECT_EQ(pParsed->pModule->GetStrings().size(), 2u); // C and x
}

TEST(TslParserErrors, DroppedTokensLeaveNoStrings)
{
	std::unique_ptr<Parsed> pParsed = ParseText("class C { float x; foo bar 1.5 }");
	EXPECT_FALSE(pParsed->bParsed);
	ASSERT_EQ(pParsed->pModule->GetClassDefinitions().size(), 1u);
	EXPECT_EQ(pParsed->pModule->GetStrings().size(), 2u);
}

TEST(TslParserErrors, ConflictingCoordsAndOutputs)
{
	std::unique_ptr<Parsed> pParsed =
	    ParseText("class C {\n coord vec3 N;\n normal vec3 N;\n output vec4 c;\n out vec3 c;\n float x; }");
	EXPECT_FALSE(pParsed->bParsed);
	EXPECT_EQ(pParsed->vErrors, (Lines{"lib(4) : Conflicting coord declaration Near \"output\"\n",
	                                   "lib(6) : Conflicting output declaration Near \"float\"\n"}));
	ASSERT_EQ(pParsed->pModule->GetClassDefinitions().size(), 1u);
	const ClassDefinition* pClass = pParsed->pModule->GetClassDefinitions()[0];
	EXPECT_EQ(pClass->GetCountCoords(), 1u);
	EXPECT_EQ(pClass->GetCoords().at("N")->GetTransformation(), kTransformation_Coord);
	ASSERT_EQ(pClass->GetCountOutputs(), 1u);
	EXPECT_EQ(pClass->GetOutputs().begin()->second->GetTypeSpecifier(), kType_Vec4);
	EXPECT_EQ(pClass->GetMemberVariables().size(), 1u);
	// The rejected declarations' names are gone: C, N, c and x remain.
	EXPECT_EQ(pParsed->pModule->GetStrings().size(), 4u);
}

TEST(TslParserErrors, DuplicateDefinitionsAreNotRegistered)
{
	std::unique_ptr<Parsed> pParsed = ParseText("class C { float a; }\nclass C { float b; }\n");
	EXPECT_FALSE(pParsed->bParsed);
	EXPECT_EQ(pParsed->vErrors, Lines{"lib(3) : Duplicate class definition: \"C\"\n"});
	ASSERT_EQ(pParsed->pModule->GetClassDefinitions().size(), 1u);
	EXPECT_EQ(
	    pParsed->pModule->GetClassDefinitions()[0]->GetMemberVariables()[0]->GetIdentifier()->GetString(),
	    "a");

	pParsed = ParseText("interface I { }\ninterface I { void f(); } class I { }");
	EXPECT_EQ(pParsed->vErrors, Lines{"lib(2) : Duplicate interface definition: \"I\"\n"});
	EXPECT_EQ(pParsed->pModule->GetInterfaceDefinitions().size(), 1u);
	EXPECT_EQ(pParsed->pModule->GetInterfaceDefinition("I")->GetMemberFunctions().size(), 0u);
	EXPECT_EQ(pParsed->pModule->GetClassDefinitions().size(), 1u);
}

TEST(TslParserErrors, ScanStopFailsWithoutMessage)
{
	std::unique_ptr<Parsed> pParsed = ParseText("class C { } $ class D { }");
	EXPECT_FALSE(pParsed->bParsed);
	EXPECT_TRUE(pParsed->vErrors.empty());
	EXPECT_EQ(pParsed->pModule->GetClassDefinitions().size(), 1u);
}

// Nesting beyond the limit is refused with one message instead of building a tree whose destruction or
// walk would exhaust the stack; what the refused definition had built is freed.
TEST(TslParserErrors, DeepNestingIsRefused)
{
	const size_t kDeep = 100000;
	const std::string texts[] = {
	    "{ " + Repeat("(", kDeep) + "a" + Repeat(")", kDeep) + " }",
	    "[ " + Repeat("{", kDeep) + Repeat("}", kDeep) + " ]",
	    "{ a" + Repeat(" + a", 1 << 18) + " }", // a megabyte of additions
	    "{ " + Repeat("a = ", kDeep) + "a }",
	    "{ " + Repeat("-", kDeep) + "a }",
	    "[ " + Repeat("if (a) ", kDeep) + "; ]",
	    "{ " + Repeat("f(", kDeep) + Repeat(")", kDeep) + " }",
	    "{ a" + Repeat(".b", kDeep) + " }",
	};
	for (const std::string& text : texts)
	{
		std::unique_ptr<Parsed> pParsed = ParseText("class A { }\n" + text + "\nclass B { }");
		EXPECT_FALSE(pParsed->bParsed) << text.substr(0, 20);
		ASSERT_EQ(pParsed->vErrors.size(), 1u) << text.substr(0, 20);
		EXPECT_EQ(pParsed->vErrors[0].rfind("lib(2) : Nesting too deep.", 0), 0u) << pParsed->FirstError();
		EXPECT_TRUE(pParsed->pModule->GetStatements().empty());
		EXPECT_TRUE(pParsed->pModule->GetExpressions().empty());
		ASSERT_EQ(pParsed->pModule->GetClassDefinitions().size(), 1u);
		EXPECT_EQ(pParsed->pModule->GetStrings().size(), 1u); // A
	}
}

TEST(TslParserErrors, NestingWithinTheLimitParses)
{
	const size_t kDepth = TslParser::kMaxTreeHeight - 10;
	std::string sum = "a";
	for (size_t i = 0; i < kDepth; ++i)
		sum = "(" + sum + " + 1)";
	std::unique_ptr<Parsed> pParsed =
	    ParseText("{ " + sum + " }\n[ " + Repeat("{", kDepth) + Repeat("}", kDepth) + " ]");
	EXPECT_TRUE(pParsed->bParsed) << pParsed->FirstError();
	EXPECT_EQ(pParsed->pModule->GetExpressions().size(), 1u);
	EXPECT_EQ(pParsed->pModule->GetStatements().size(), 1u);
}
