#include "core/Assert.h"
#include "core/Console.h"
#include "core/Result.h"

#include <gtest/gtest.h>

#include <csignal>

using namespace Tarsel;

TEST(Result, PrintsFromLastAddedToFirst)
{
	RecordingConsole console;
	Result result;
	result.Add("inner %d", 1);
	result.Add("middle");
	result.Add("outer %s", "call");
	result.Print(&console);
	EXPECT_EQ(console.GetAll(), std::vector<std::string>{"!outer call: middle: inner 1\n"});

	// Without a console the process-wide one prints; an empty result prints nothing anywhere.
	console.Clear();
	ScopedMgrConsole scope(&console);
	Result().Print(nullptr);
	EXPECT_TRUE(console.GetAll().empty());
	result.Print(nullptr);
	EXPECT_EQ(console.GetErrors().size(), 1u);
}

TEST(Result, LongAndPercentMessagesSurviveFormatting)
{
	const std::string sLong(5000, 'x');
	Result result;
	result.Add("%s%%", sLong.c_str());
	EXPECT_EQ(result.GetMessages()[0], sLong + "%");
}

TEST(Result, AddResultAppendsInOrderAndToItself)
{
	Result inner;
	inner.Add("a");
	inner.Add("b");
	Result outer;
	outer.Add("first");
	outer.Add(inner);
	EXPECT_EQ(outer.GetMessages(), (std::vector<std::string>{"first", "a", "b"}));
	inner.Add(inner);
	EXPECT_EQ(inner.GetMessages().size(), 4u);
}

TEST(Console, ProcessWideConsoleCanBeReplacedAndRestored)
{
	IMgrConsole* pDefault = GetMgrConsole();
	RecordingConsole console;
	{
		ScopedMgrConsole scope(&console);
		GetMgrConsole()->Message("m%d\n", 1);
		GetMgrConsole()->Error("%s", "e\n");
		AutoConsoleBlock block(GetMgrConsole(), IConsole::kVerbosity_Normal, "Begin", "End");
	}
	EXPECT_EQ(GetMgrConsole(), pDefault);
	EXPECT_EQ(console.GetAll(), (std::vector<std::string>{"m1\n", "!e\n"}));
	EXPECT_EQ(console.GetBlocks(), (std::vector<std::string>{"begin:Begin", "end:End"}));
}

TEST(Console, DefaultConsolePrintsBlocksWithinItsVerbosity)
{
	DefaultConsole console;
	testing::internal::CaptureStdout();
	{
		AutoConsoleBlock normal(&console, IConsole::kVerbosity_Normal, "Loading", "Loaded");
		AutoConsoleBlock debug(&console, IConsole::kVerbosity_Debug, "Tracing", "Traced");
		console.Message("%d%%\n", 50);
	}
	EXPECT_EQ(testing::internal::GetCapturedStdout(), "Loading\n50%\nLoaded\n");
}

TEST(Assert, ReportsExpressionTextAsWrittenAndSilencesOnlyThatSite)
{
	RecordingAssertHandler handler;
	ScopedAssertHandler scope(&handler);
	const int* pValue = nullptr;
	TARSEL_ASSERT(pValue != NULL);
	ASSERT_EQ(handler.GetReports().size(), 1u);
	EXPECT_EQ(handler.GetReports()[0].sExpression, "pValue != NULL");
	EXPECT_EQ(handler.GetReports()[0].sMessage, "");
	EXPECT_NE(handler.GetReports()[0].sFile.find("TestResultConsole.cpp"), std::string::npos);

	handler.Clear();
	handler.SetAnswer(IAssertHandler::kAnswer_Silence);
	for (int i = 0; i < 3; ++i)
		TARSEL_FAIL("missing record");
	TARSEL_ASSERT_MSG(false, "second site");
	ASSERT_EQ(handler.GetReports().size(), 2u);
	EXPECT_EQ(handler.GetReports()[0].sExpression, "false");
	EXPECT_EQ(handler.GetReports()[0].sMessage, "missing record");
	EXPECT_EQ(handler.GetReports()[1].sMessage, "second site");
}

namespace
{
volatile std::sig_atomic_t g_nTraps = 0;
void CountTrap(int)
{
	g_nTraps = g_nTraps + 1;
}
} // namespace

// Answer 2 traps (a debugger stops there) and otherwise the code runs on.
TEST(Assert, AnswerTwoTrapsOnce)
{
	RecordingAssertHandler handler;
	ScopedAssertHandler scope(&handler);
	handler.SetAnswer(IAssertHandler::kAnswer_Break);
	void (*previous)(int) = std::signal(SIGTRAP, CountTrap);
	TARSEL_ASSERT(handler.GetReports().size() > 5);
	std::signal(SIGTRAP, previous);
	EXPECT_EQ(g_nTraps, 1);
}

TEST(Assert, DefaultHandlerWritesOneLine)
{
	ScopedAssertHandler scope(nullptr);
	testing::internal::CaptureStderr();
	TARSEL_ASSERT_MSG(1 + 1 == 3, "arithmetic");
	const std::string sText = testing::internal::GetCapturedStderr();
	EXPECT_NE(sText.find("1 + 1 == 3"), std::string::npos);
	EXPECT_NE(sText.find("arithmetic"), std::string::npos);
	EXPECT_EQ(sText.find('\n'), sText.size() - 1);
}
