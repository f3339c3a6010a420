#include "Commands.h"

#include "core/Console.h"
#include "effects/MgrStats.h"
#include "effects/stats/StatsTestSupport.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace Tarsel::Fx
{
namespace
{

bool Parse(std::vector<const char*> words, Arguments& args, std::string& error)
{
	words.insert(words.begin(), "tarsel-fx");
	return ParseArguments(static_cast<int>(words.size()), words.data(), args, error);
}

int RunStats(int port, RecordingConsole& console, std::ostringstream& out)
{
	Arguments args;
	args.command = Command::kStats;
	args.port = port;
	return Run(args, &console, out);
}

} // namespace

TEST(TarselFxStatsArguments, TakesAnOptionalPortAndNoFile)
{
	Arguments args;
	std::string error;
	ASSERT_TRUE(Parse({"stats", "--port", "9123"}, args, error)) << error;
	EXPECT_EQ(args.port, 9123);
	for (std::vector<const char*> bad : {std::vector<const char*>{"stats", "a.tsl"},
	                                     {"stats", "--port", "65536"},
	                                     {"stats", "--port"},
	                                     {"check", "--port", "1", "a.tsl"}})
		EXPECT_FALSE(Parse(bad, args, error)) << bad.back();
}

TEST(TarselFxStats, ListsTheStatisticsOfARunningServerAndAcknowledges)
{
	const int port = StatsTesting::PickFreePort();
	MgrStats stats;
	stats.CreateNewStat(nullptr, "draws", MgrStats::kKindHits);
	stats.CreateNewStat(nullptr, "frame time", MgrStats::kKindTime);
	ASSERT_TRUE(stats.StartServer(port));

	// Twice: the acknowledgement frees the server for the next viewer.
	for (int i = 0; i < 2; ++i)
	{
		RecordingConsole console;
		std::ostringstream out;
		EXPECT_EQ(RunStats(port, console, out), 0) << console.ErrorText();
		EXPECT_EQ(out.str(), "1 time frame time\n0 hits draws\n");
	}
	stats.StopServer();
}

TEST(TarselFxStats, SaysSoWhenNoServerAnswers)
{
	const int port = StatsTesting::PickFreePort();
	RecordingConsole console;
	std::ostringstream out;
	EXPECT_EQ(RunStats(port, console, out), 1);
	EXPECT_TRUE(console.HasError("tarsel-fx: no statistics server on port " + std::to_string(port) + "\n"))
	    << console.ErrorText();
	EXPECT_TRUE(out.str().empty());
}

} // namespace Tarsel::Fx
