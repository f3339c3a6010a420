#include "../StatsTestSupport.h"

#include "effects/MgrStats.h"

#include <gtest/gtest.h>

#include <dirent.h>

#include <cstdlib>
#include <filesystem>

using namespace StatsTesting;

namespace
{

int CountEntries(const char* szDirectory)
{
	int n = 0;
	DIR* pDirectory = opendir(szDirectory);
	while (pDirectory && readdir(pDirectory))
		++n;
	if (pDirectory)
		closedir(pDirectory);
	return n;
}

// The registry reads its environment once per process, so each case runs as a CTest entry of its
// own that names the case in TARSEL_STATS_ENV_CASE.
class StatsEnvironment : public ::testing::Test
{
protected:
	void SetUp() override
	{
		const char* szCase = std::getenv("TARSEL_STATS_ENV_CASE");
		if (!szCase || std::string(szCase) != ::testing::UnitTest::GetInstance()->current_test_info()->name())
			GTEST_SKIP() << "runs only as its own CTest entry";
		// A sanitizer runtime starts a helper thread with the first thread; keep it out of the counts.
		std::thread([] {}).join();
		_nThreads = CountEntries("/proc/self/task");
		_nFiles = CountEntries("/proc/self/fd");
	}
	int NewThreads() const { return CountEntries("/proc/self/task") - _nThreads; }
	int NewFiles() const { return CountEntries("/proc/self/fd") - _nFiles; }

	int _nThreads = 0;
	int _nFiles = 0;
};

} // namespace

TEST_F(StatsEnvironment, NothingStartsWithoutEitherVariable)
{
	MgrStats* pStats = MgrStats::GetMgrStats();
	EXPECT_EQ(MgrStats::GetMgrStats(), pStats);
	EXPECT_EQ(NewThreads(), 0);
	EXPECT_EQ(NewFiles(), 0);
}

TEST_F(StatsEnvironment, FileVariableOpensTheDumpFile)
{
	const std::string path = std::getenv("MGR_STATS_DUMP_FILE");
	std::filesystem::remove(path);
	MgrStats* pStats = MgrStats::GetMgrStats();
	EXPECT_NE(pStats->GetDumpFile(), nullptr);
	EXPECT_TRUE(std::filesystem::exists(path));
	EXPECT_EQ(NewFiles(), 1);
	EXPECT_EQ(NewThreads(), 0);
	pStats->Shutdown();
	pStats->Shutdown();
	EXPECT_EQ(NewFiles(), 0);
	std::filesystem::remove(path);
}

// The file variable is set as well: the server wins.
TEST_F(StatsEnvironment, ServerVariableStartsTheServerOnThePortItNames)
{
	const int iPort = PickFreePort();
	ASSERT_EQ(setenv("MGR_STATS_DUMP_TCPIP", std::to_string(iPort).c_str(), 1), 0);
	const std::string path = std::getenv("MGR_STATS_DUMP_FILE");
	std::filesystem::remove(path);
	MgrStats* pStats = MgrStats::GetMgrStats();
	EXPECT_EQ(NewThreads(), 1);
	EXPECT_FALSE(std::filesystem::exists(path));
	pStats->CreateNewStat(nullptr, "seen", MgrStats::kKindHits);

	Viewer viewer;
	std::vector<Descriptor> descriptors;
	ASSERT_TRUE(viewer.Connect(iPort) && viewer.ReadDescriptors(descriptors));
	EXPECT_EQ(descriptors.front().sName, "seen");
	const auto start = Clock::now();
	pStats->StopServer();
	EXPECT_LT(Clock::now() - start, Milliseconds(2000));
	EXPECT_EQ(NewThreads(), 0);
}
