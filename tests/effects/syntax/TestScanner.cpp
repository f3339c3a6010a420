#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "syntax/TslScanner.h"

using namespace Tarsel::Effects;

namespace
{

// Writes each token as "code" for keywords, "id:x", "int:n", "float:text" or "bool:0/1".
class Recorder : public IParser
{
public:
	std::vector<std::string> vTokens;
	std::vector<LocationRange> vRanges;
	int iNewLines = 0;

	void ParseConstantBool(const LocationRange& range, bool value) override
	{
		Add(range, std::string("bool:") + (value ? "1" : "0"));
	}
	bool ParseConstantInt(const LocationRange& range, long value) override
	{
		return Add(range, "int:" + std::to_string(value));
	}
	bool ParseConstantFloat(const LocationRange& range, const char* text, int length) override
	{
		return Add(range, "float:" + std::string(text, size_t(length)));
	}
	bool ParseKeyword(const LocationRange& range, int token) override
	{
		return Add(range, std::to_string(token));
	}
	bool ParseIdentifier(const LocationRange& range, const char* text, int length) override
	{
		return Add(range, "id:" + std::string(text, size_t(length)));
	}
	bool NewLine() override
	{
		++iNewLines;
		return true;
	}

private:
	bool Add(const LocationRange& range, const std::string& token)
	{
		vTokens.push_back(token);
		vRanges.push_back(range);
		return true;
	}
};

struct Scanned
{
	bool bComplete;
	Recorder recorder;
};

Scanned ScanText(const std::string& text, int lineOffset = 0)
{
	Scanned result;
	TslScanner scanner;
	scanner.Init(&result.recorder, text, lineOffset);
	result.bComplete = scanner.Scan();
	return result;
}

std::vector<std::string> Tokens(const std::string& text)
{
	return ScanText(text).recorder.vTokens;
}

using Strings = std::vector<std::string>;

} // namespace

// The codes are the parser's terminal numbers: one off and every rule would see the wrong token.
TEST(TslScanner, EveryFixedTokenHasItsCode)
{
	const std::pair<const char*, int> table[] = {
	    {"[", 1},          {"]", 2},          {"{", 3},          {"}", 4},
	    {"interface", 5},  {"class", 7},      {":", 8},          {";", 9},
	    {"coord", 10},     {"normal", 11},    {"tangent", 12},   {"output", 13},
	    {"out", 14},       {"float", 15},     {"vec2", 16},      {"vec3", 17},
	    {"vec4", 18},      {"static", 20},    {"const", 21},     {"=", 22},
	    {"-", 23},         {")", 26},         {",", 27},         {"(", 28},
	    {"bool", 29},      {"int", 30},       {"ivec2", 31},     {"ivec3", 32},
	    {"ivec4", 33},     {"mat2", 34},      {"mat3", 35},      {"mat4", 36},
	    {"input", 37},     {"void", 38},      {"in", 39},        {"inout", 40},
	    {"if", 41},        {"while", 42},     {"do", 43},        {"for", 44},
	    {"continue", 45},  {"break", 46},     {"return", 47},    {"else", 48},
	    {".", 49},         {"++", 50},        {"--", 51},        {"bvec2", 52},
	    {"bvec3", 53},     {"bvec4", 54},     {"+", 55},         {"!", 56},
	    {"~", 57},         {"*", 58},         {"/", 59},         {"%", 60},
	    {"<<", 61},        {">>", 62},        {"<", 63},         {">", 64},
	    {"<=", 65},        {">=", 66},        {"==", 67},        {"!=", 68},
	    {"&", 69},         {"^", 70},         {"|", 71},         {"&&", 72},
	    {"^^", 73},        {"||", 74},        {"?", 75},         {"*=", 76},
	    {"/=", 77},        {"%=", 78},        {"+=", 79},        {"-=", 80},
	    {"<<=", 81},       {">>=", 82},       {"&=", 83},        {"^=", 84},
	    {"|=", 85},        {"sampler2D", 86}, {"sampler3D", 87}, {"samplerCube", 88},
	    {"primitive", 89}, {"struct", 91}};
	for (const auto& entry : table)
		EXPECT_EQ(Tokens(entry.first), Strings{std::to_string(entry.second)}) << entry.first;
	EXPECT_EQ(kToken_Identifier, 6);
	EXPECT_EQ(kToken_IntConstant, 19);
	EXPECT_EQ(kToken_FloatConstant, 24);
	EXPECT_EQ(kToken_BoolConstant, 25);
	EXPECT_EQ(kToken_Reserved, 90);
}

TEST(TslScanner, DisplayTextsOfTokens)
{
	EXPECT_STREQ(TslTokenToString(6), "identifier");
	EXPECT_STREQ(TslTokenToString(19), "int constant");
	EXPECT_STREQ(TslTokenToString(24), "float constant");
	EXPECT_STREQ(TslTokenToString(25), "bool constant");
	EXPECT_STREQ(TslTokenToString(71), "|");
	EXPECT_STREQ(TslTokenToString(74), "||");
	EXPECT_STREQ(TslTokenToString(85), "|=");
	EXPECT_STREQ(TslTokenToString(90), "RESERVED");
	EXPECT_STREQ(TslTokenToString(91), "struct");
	for (int code : {0, 37, 92, -1})
		EXPECT_STREQ(TslTokenToString(code), "Unknown") << code;
}

TEST(TslScanner, WordsAreKeywordsOnlyWhenWhole)
{
	EXPECT_EQ(Tokens("int x;"), (Strings{"30", "id:x", "9"}));
	EXPECT_EQ(Tokens("true false"), (Strings{"bool:1", "bool:0"}));
	EXPECT_EQ(Tokens("true_ truex True"), (Strings{"id:true_", "id:truex", "id:True"}));
	EXPECT_EQ(Tokens("RESERVED uniform varying discard switch highp"),
	          (Strings{"id:RESERVED", "id:uniform", "id:varying", "id:discard", "id:switch", "id:highp"}));
	EXPECT_EQ(Tokens("in inout input int interface intx samplerCubes _if if2"),
	          (Strings{"39", "40", "37", "30", "5", "id:intx", "id:samplerCubes", "id:_if", "id:if2"}));
}

TEST(TslScanner, OperatorsTakeTheLongestMatch)
{
	EXPECT_EQ(Tokens("a+++b"), (Strings{"id:a", "50", "55", "id:b"}));
	EXPECT_EQ(Tokens("a&&&b"), (Strings{"id:a", "72", "69", "id:b"}));
	EXPECT_EQ(Tokens("a<<=b>>c"), (Strings{"id:a", "81", "id:b", "62", "id:c"}));
	EXPECT_EQ(Tokens("^^=||="), (Strings{"73", "22", "74", "22"}));
	EXPECT_EQ(Tokens("x.y"), (Strings{"id:x", "49", "id:y"}));
}

TEST(TslScanner, NumbersTakeTheLongestMatch)
{
	EXPECT_EQ(Tokens("08"), (Strings{"int:0", "int:8"}));
	EXPECT_EQ(Tokens("0x"), (Strings{"int:0", "id:x"}));
	EXPECT_EQ(Tokens("1e"), (Strings{"int:1", "id:e"}));
	EXPECT_EQ(Tokens("1.5.2"), (Strings{"float:1.5", "float:.2"}));
	EXPECT_EQ(Tokens("0.5F"), (Strings{"float:0.5", "id:F"}));
	EXPECT_EQ(Tokens("1e5f"), (Strings{"float:1e5", "id:f"}));
	EXPECT_EQ(Tokens("1. 1.0 1.f 1.0f .5 .5f"),
	          (Strings{"float:1.", "float:1.0", "float:1.f", "float:1.0f", "float:.5", "float:.5f"}));
	EXPECT_EQ(Tokens("1e5 1.5e-3 1E+2 .5e1 1.e2 2f 0f 09f 09.5"),
	          (Strings{"float:1e5", "float:1.5e-3", "float:1E+2", "float:.5e1", "float:1.e2", "float:2f",
	                   "float:0f", "float:09f", "float:09.5"}));
	EXPECT_EQ(Tokens("1e+ 5"), (Strings{"int:1", "id:e", "55", "int:5"}));
}

TEST(TslScanner, IntegersConvertToThirtyTwoBits)
{
	EXPECT_EQ(Tokens("0 7 017 0x1f 0XfF 42"),
	          (Strings{"int:0", "int:7", "int:15", "int:31", "int:255", "int:42"}));
	EXPECT_EQ(Tokens("4294967295 4294967296 99999999999999999999"), (Strings{"int:-1", "int:-1", "int:-1"}));
	EXPECT_EQ(Tokens("2147483647 2147483648"), (Strings{"int:2147483647", "int:-2147483648"}));
}

TEST(TslScanner, CommentsAndLines)
{
	// Without a newline the slashes of a line comment are ordinary tokens.
	EXPECT_EQ(Tokens("a // c"), (Strings{"id:a", "59", "59", "id:c"}));
	Scanned lineComment = ScanText("a // c\nb");
	EXPECT_EQ(lineComment.recorder.vTokens, (Strings{"id:a", "id:b"}));
	EXPECT_EQ(lineComment.recorder.iNewLines, 1);

	Scanned unclosed = ScanText("a /* x\n\n $ b");
	EXPECT_TRUE(unclosed.bComplete);
	EXPECT_EQ(unclosed.recorder.vTokens, Strings{"id:a"});

	Scanned block = ScanText("a /* x\n * y /* */ b\nc");
	EXPECT_EQ(block.recorder.vTokens, (Strings{"id:a", "id:b", "id:c"}));
	EXPECT_EQ(block.recorder.iNewLines, 2);
	EXPECT_EQ(block.recorder.vRanges[1]._iBeginLine, 2);
	EXPECT_EQ(block.recorder.vRanges[1]._iBeginColumn, 11);
	EXPECT_EQ(block.recorder.vRanges[2]._iBeginLine, 3);

	EXPECT_EQ(ScanText("a\r\nb\r\nc").recorder.iNewLines, 2);
	Scanned carriageReturns = ScanText("a\rb\rc");
	EXPECT_EQ(carriageReturns.recorder.iNewLines, 0);
	EXPECT_EQ(carriageReturns.recorder.vRanges[2]._iBeginLine, 1);
	EXPECT_EQ(carriageReturns.recorder.vRanges[2]._iBeginColumn, 4);
}

TEST(TslScanner, RangesAreLinesAndByteColumns)
{
	Scanned scanned = ScanText("int x;\n\t  foo <<= 1.5f\n\nbar", 10);
	const std::vector<LocationRange>& ranges = scanned.recorder.vRanges;
	ASSERT_EQ(scanned.recorder.vTokens, (Strings{"30", "id:x", "9", "id:foo", "81", "float:1.5f", "id:bar"}));
	struct Expected
	{
		int line, begin, end;
	};
	const Expected expected[] = {{11, 0, 3},  {11, 4, 5},   {11, 5, 6}, {12, 3, 6},
	                             {12, 7, 10}, {12, 11, 15}, {14, 0, 3}};
	for (size_t i = 0; i < ranges.size(); ++i)
	{
		EXPECT_EQ(ranges[i]._iBeginLine, expected[i].line) << i;
		EXPECT_EQ(ranges[i]._iEndLine, expected[i].line) << i;
		EXPECT_EQ(ranges[i]._iBeginColumn, expected[i].begin) << i;
		EXPECT_EQ(ranges[i]._iEndColumn, expected[i].end) << i;
		EXPECT_EQ(ranges[i].GetSource(), nullptr) << i;
	}
	EXPECT_EQ(scanned.recorder.iNewLines, 3);
}

TEST(TslScanner, StopsAtACharacterThatStartsNoToken)
{
	for (const char* text : {"x $ y", "x # y", "x @ y", "x \" y", "x ' y", "x \xc3\xa9 y", "x \\ y", "x ` y"})
	{
		Scanned scanned = ScanText(text);
		EXPECT_FALSE(scanned.bComplete) << text;
		EXPECT_EQ(scanned.recorder.vTokens, Strings{"id:x"}) << text;
	}
	Scanned empty = ScanText("");
	EXPECT_TRUE(empty.bComplete);
	EXPECT_TRUE(empty.recorder.vTokens.empty());
}

// Look-aheads stop at the end of the text, which is its size and not a terminating zero.
TEST(TslScanner, TokensAtTheEndOfTheText)
{
	EXPECT_EQ(Tokens("a<"), (Strings{"id:a", "63"}));
	EXPECT_EQ(Tokens("a<<"), (Strings{"id:a", "61"}));
	EXPECT_EQ(Tokens("1."), Strings{"float:1."});
	EXPECT_EQ(Tokens("1e+"), (Strings{"int:1", "id:e", "55"}));
	EXPECT_EQ(Tokens("//"), (Strings{"59", "59"}));
	EXPECT_EQ(Tokens("/*"), Strings{});
	Scanned embeddedZero = ScanText(std::string("a\0b", 3));
	EXPECT_FALSE(embeddedZero.bComplete);
	EXPECT_EQ(embeddedZero.recorder.vTokens, Strings{"id:a"});
}
