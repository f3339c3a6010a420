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
	ASSERT_TRUE(Parse({"stats"}, args, error)) << error;
	EXPECT_EQ(args.command, Command::kStats);
	EXPECT_EQ(args.port, -1);
	ASSERT_TRUE(Parse({"stats", "--port", "9123"}, args, error)) << error;
	EXPECT_EQ(args.port, 9123);

	const struct
	{
		std::vector<const char*> words;
		const char* reason;
	} cases[] = {
	    {{"stats", "a.tsl"}, "stats takes no file"},
	    {{"stats", "--port"}, "--port needs a port number"},
	    {{"stats", "--port", "0"}, "--port needs a port number"},
	    {{"stats", "--port", "80x"}, "--port needs a port number"},
	    {{"stats", "--port", "65536"}, "--port needs a port number"},
	    {{"check", "--port", "1", "a.tsl"}, "unknown option '--port'"},
	};
	for (const auto& c : cases)
	{
		Arguments bad;
		EXPECT_FALSE(Parse(c.words, bad, error)) << c.reason;
		EXPECT_NE(error.find(c.reason), std::string::npos) << error;
	}
}

TEST(TarselFxStats, ListsTheStatisticsOfARunningServerAndAcknowledges)
{
	const int port = StatsTesting::PickFreePort();
	ASSERT_GT(port, 0);
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
	ASSERT_GT(port, 0);
	RecordingConsole console;
	std::ostringstream out;
	EXPECT_EQ(RunStats(port, console, out), 1);
	EXPECT_TRUE(console.HasError("tarsel-fx: no statistics server on port " + std::to_string(port) + "\n"))
	    << console.ErrorText();
	EXPECT_TRUE(out.str().empty());
}

} // namespace Tarsel::Fx
