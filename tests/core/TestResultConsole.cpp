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
	ASSERT_EQ(console.GetErrors().size(), 1u);
	EXPECT_EQ(console.GetErrors()[0], "outer call: middle: inner 1\n");
	EXPECT_TRUE(console.GetMessages().empty());
}

TEST(Result, EmptyPrintsNothingAndLongMessagesSurvive)
{
	RecordingConsole console;
	Result().Print(&console);
	EXPECT_TRUE(console.GetAll().empty());

	const std::string sLong(5000, 'x');
	Result result;
	result.Add("%s%%", sLong.c_str());
	EXPECT_EQ(result.GetMessages()[0], sLong + "%");
}

TEST(Result, PrintWithoutConsoleUsesTheProcessConsole)
{
	RecordingConsole console;
	ScopedMgrConsole scope(&console);
	Result result;
	result.Add("only");
	result.Print(nullptr);
	EXPECT_EQ(console.GetErrors(), std::vector<std::string>{"only\n"});
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

namespace
{
int CheckTwice(int value)
{
	int nReached = 0;
	for (int i = 0; i < 2; ++i)
	{
		TARSEL_ASSERT(value != 0);
		++nReached;
	}
	return nReached;
}
} // namespace

TEST(Assert, ReportsExpressionTextAndNeverStopsTheCode)
{
	RecordingAssertHandler handler;
	ScopedAssertHandler scope(&handler);
	EXPECT_EQ(CheckTwice(0), 2);
	ASSERT_EQ(handler.GetReports().size(), 2u);
	EXPECT_EQ(handler.GetReports()[0].sExpression, "value != 0");
	EXPECT_EQ(handler.GetReports()[0].sMessage, "");
	EXPECT_NE(handler.GetReports()[0].sFile.find("TestResultConsole.cpp"), std::string::npos);

	handler.Clear();
	TARSEL_FAIL("missing record");
	ASSERT_EQ(handler.GetReports().size(), 1u);
	EXPECT_EQ(handler.GetReports()[0].sExpression, "false");
	EXPECT_EQ(handler.GetReports()[0].sMessage, "missing record");
}

TEST(Assert, AnswerOneSilencesOnlyThatSite)
{
	RecordingAssertHandler handler;
	ScopedAssertHandler scope(&handler);
	handler.SetAnswer(IAssertHandler::kAnswer_Silence);
	for (int i = 0; i < 3; ++i)
		TARSEL_ASSERT_MSG(i < 0, "first site");
	TARSEL_ASSERT_MSG(false, "second site");
	ASSERT_EQ(handler.GetReports().size(), 2u);
	EXPECT_EQ(handler.GetReports()[0].sMessage, "first site");
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

TEST(Assert, AnswerTwoBreaksIntoTheDebuggerAndCodeRunsOn)
{
	RecordingAssertHandler handler;
	ScopedAssertHandler scope(&handler);
	handler.SetAnswer(IAssertHandler::kAnswer_Break);
	void (*previous)(int) = std::signal(SIGTRAP, CountTrap);
	bool bReached = false;
	TARSEL_ASSERT(bReached);
	bReached = true;
	std::signal(SIGTRAP, previous);
	EXPECT_TRUE(bReached);
	EXPECT_EQ(g_nTraps, 1);
}

TEST(Assert, DefaultHandlerWritesOneLineAndContinues)
{
	ScopedAssertHandler scope(nullptr);
	testing::internal::CaptureStderr();
	TARSEL_ASSERT_MSG(1 + 1 == 3, "arithmetic");
	const std::string sText = testing::internal::GetCapturedStderr();
	EXPECT_NE(sText.find("1 + 1 == 3"), std::string::npos);
	EXPECT_NE(sText.find("arithmetic"), std::string::npos);
	EXPECT_EQ(sText.find('\n'), sText.size() - 1);
}
