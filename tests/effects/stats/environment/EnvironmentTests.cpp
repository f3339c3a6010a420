#include "../StatsTestSupport.h"

#include "effects/MgrStats.h"

#include <gtest/gtest.h>

#include <dirent.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

// The registry reads its environment once per process, so each case runs in a process of its own
// that CTest starts with the case's name in TARSEL_STATS_ENV_CASE.

using namespace StatsTesting;

namespace
{

const char kRunAlone[] = "runs only as its own CTest entry";

bool IsSelected(const char* szCase)
{
	const char* szSelected = std::getenv("TARSEL_STATS_ENV_CASE");
	return szSelected && std::string(szSelected) == szCase;
}

int CountEntries(const char* szDirectory)
{
	int n = 0;
	if (DIR* pDirectory = opendir(szDirectory))
	{
		while (readdir(pDirectory))
			++n;
		closedir(pDirectory);
	}
	return n;
}

// A sanitizer runtime starts a helper thread of its own with the first thread; one short-lived
// thread first keeps that out of the counts.
int CountThreads()
{
	static const bool s_bWarmedUp = []
	{
		std::thread([] {}).join();
		return true;
	}();
	(void)s_bWarmedUp;
	return CountEntries("/proc/self/task");
}

int CountOpenFiles()
{
	return CountEntries("/proc/self/fd");
}

} // namespace

TEST(StatsEnvironment, NothingStartsWithoutEitherVariable)
{
	if (!IsSelected("NothingStartsWithoutEitherVariable"))
		GTEST_SKIP() << kRunAlone;
	const int nThreads = CountThreads();
	const int nFiles = CountOpenFiles();
	MgrStats* pStats = MgrStats::GetMgrStats();
	EXPECT_EQ(MgrStats::GetMgrStats(), pStats);
	EXPECT_EQ(CountThreads(), nThreads);
	EXPECT_EQ(CountOpenFiles(), nFiles);
	EXPECT_FALSE(pStats->IsServerRunning());
	EXPECT_EQ(pStats->GetDumpFile(), nullptr);
}

TEST(StatsEnvironment, FileVariableOpensTheDumpFile)
{
	if (!IsSelected("FileVariableOpensTheDumpFile"))
		GTEST_SKIP() << kRunAlone;
	const std::string path = std::getenv("MGR_STATS_DUMP_FILE");
	std::filesystem::remove(path);
	const int nThreads = CountThreads();
	const int nFiles = CountOpenFiles();

	MgrStats* pStats = MgrStats::GetMgrStats();
	EXPECT_NE(pStats->GetDumpFile(), nullptr);
	EXPECT_TRUE(std::filesystem::exists(path));
	EXPECT_EQ(CountOpenFiles(), nFiles + 1);
	EXPECT_EQ(CountThreads(), nThreads);

	pStats->Shutdown();
	pStats->Shutdown();
	EXPECT_EQ(pStats->GetDumpFile(), nullptr);
	EXPECT_EQ(CountOpenFiles(), nFiles);
	std::filesystem::remove(path);
}

TEST(StatsEnvironment, ServerVariableStartsTheServerOnThePortItNames)
{
	if (!IsSelected("ServerVariableStartsTheServerOnThePortItNames"))
		GTEST_SKIP() << kRunAlone;
	const int iPort = PickFreePort();
	ASSERT_GT(iPort, 0);
	ASSERT_EQ(setenv("MGR_STATS_DUMP_TCPIP", std::to_string(iPort).c_str(), 1), 0);
	const char* szFile = std::getenv("MGR_STATS_DUMP_FILE");
	ASSERT_NE(szFile, nullptr) << "the file variable is set too, and the server wins";
	std::filesystem::remove(szFile);
	const int nThreads = CountThreads();

	MgrStats* pStats = MgrStats::GetMgrStats();
	EXPECT_EQ(CountThreads(), nThreads + 1);
	EXPECT_EQ(pStats->GetServerPort(), iPort);
	EXPECT_EQ(pStats->GetDumpFile(), nullptr);
	EXPECT_FALSE(std::filesystem::exists(szFile));
	pStats->CreateNewStat(nullptr, "seen", MgrStats::kKindHits);

	Viewer viewer;
	ASSERT_TRUE(viewer.Connect(iPort));
	std::vector<Descriptor> descriptors;
	ASSERT_TRUE(viewer.ReadDescriptors(descriptors));
	EXPECT_EQ(descriptors.front().sName, "seen");
	viewer.Send("\x01");
	EXPECT_TRUE(viewer.WaitForClose());

	const auto start = Clock::now();
	pStats->StopServer();
	EXPECT_LT(Clock::now() - start, Milliseconds(2000));
	EXPECT_EQ(CountThreads(), nThreads);
}
