#include "StatsTestSupport.h"

#include "effects/MgrStats.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

using namespace StatsTesting;

namespace
{

constexpr Milliseconds kStopLimit(2000);

// A registry whose server runs on a port of its own for the span of a test.
class StatsServer : public ::testing::Test
{
protected:
	void SetUp() override { ASSERT_GT(_iPort, 0); }
	void TearDown() override { ExpectStopsPromptly(); }

	void Start() { ASSERT_TRUE(_stats.StartServer(_iPort)); }

	void ExpectStopsPromptly()
	{
		const auto start = Clock::now();
		_stats.StopServer();
		EXPECT_LT(Clock::now() - start, kStopLimit);
		EXPECT_FALSE(_stats.IsServerRunning());
	}

	// Connects, reads one descriptor pass, acknowledges and waits for the server to close.
	std::vector<Descriptor> Serve()
	{
		Viewer viewer;
		std::vector<Descriptor> descriptors;
		EXPECT_TRUE(viewer.Connect(_iPort) && viewer.ReadDescriptors(descriptors) && viewer.Send("\x01") &&
		            viewer.WaitForClose());
		return descriptors;
	}

	MgrStats _stats;
	int _iPort = PickFreePort();
};

} // namespace

TEST_F(StatsServer, SendsEveryDescriptorNewestFirstWithTheExactBytes)
{
	_stats.CreateNewStat("l", "draws", MgrStats::kKindHits);
	_stats.CreateNewStat("l", "frame time", MgrStats::kKindTime);
	Start();

	Viewer viewer;
	ASSERT_TRUE(viewer.Connect(_iPort));
	const std::string expected("\x01\x0a\x00\x00\x00"
	                           "frame time"
	                           "\x02\x01\x00\x00\x00"
	                           "\x01\x05\x00\x00\x00"
	                           "draws"
	                           "\x01\x00\x00\x00\x00",
	                           35);
	EXPECT_EQ(viewer.Read(expected.size() + 1, Milliseconds(300)), expected) << "and nothing after the pass";
	EXPECT_EQ(_stats.GetStatCursor(), _stats.GetFirstStat());
	ASSERT_TRUE(viewer.Send("\x01"));
	EXPECT_TRUE(viewer.WaitForClose());
}

TEST_F(StatsServer, MovesOnFromViewersThatMisbehave)
{
	_stats.CreateNewStat(nullptr, "only", MgrStats::kKindHits);
	Start();
	{
		Viewer silentAndGone;
		ASSERT_TRUE(silentAndGone.Connect(_iPort));
	}
	{
		Viewer garbage;
		ASSERT_TRUE(garbage.Connect(_iPort));
		ASSERT_TRUE(garbage.Send("not an acknowledgement"));
		EXPECT_TRUE(garbage.WaitForClose()) << "any first byte ends the viewer's turn";
	}
	{
		Viewer neverAnswers;
		ASSERT_TRUE(neverAnswers.Connect(_iPort));
		std::vector<Descriptor> descriptors;
		EXPECT_TRUE(neverAnswers.ReadDescriptors(descriptors));
	}
	const std::vector<Descriptor> descriptors = Serve();
	ASSERT_EQ(descriptors.size(), 1u);
	EXPECT_EQ(descriptors[0].sName, "only");
}

TEST_F(StatsServer, ServesAHundredViewersOneAfterAnother)
{
	for (const char* szName : {"a", "bb", "ccc"})
		_stats.CreateNewStat(nullptr, szName, MgrStats::kKindTime);
	Start();
	int nServed = 0;
	for (int i = 0; i < 100; ++i)
	{
		const std::vector<Descriptor> descriptors = Serve();
		nServed += descriptors.size() == 3 && descriptors[0].sName == "ccc" && descriptors[2].iKind == 2;
	}
	EXPECT_EQ(nServed, 100);
}

TEST_F(StatsServer, StopsPromptlyWhileWaitingOrServing)
{
	_stats.CreateNewStat(nullptr, "x", MgrStats::kKindHits);
	Start();
	EXPECT_FALSE(_stats.StartServer(_iPort)) << "one server thread per registry";
	ExpectStopsPromptly();

	// A viewer that holds the connection without answering.
	Start();
	Viewer silent;
	std::vector<Descriptor> descriptors;
	ASSERT_TRUE(silent.Connect(_iPort) && silent.ReadDescriptors(descriptors));
	ExpectStopsPromptly();
	EXPECT_TRUE(silent.WaitForClose());

	auto pStats = std::make_unique<MgrStats>();
	ASSERT_TRUE(pStats->StartServer(PickFreePort()));
	const auto start = Clock::now();
	pStats.reset();
	EXPECT_LT(Clock::now() - start, kStopLimit) << "destroying a registry stops its server";
}

// Run under ThreadSanitizer: statistics appear and count while viewers read the list.
TEST_F(StatsServer, ViewersReadTheListWhileAnotherThreadCreatesAndTriggers)
{
	constexpr int kCreated = 300;
	_stats.CreateNewStat(nullptr, "first", MgrStats::kKindHits);
	Start();
	std::atomic<bool> bProducing{true};
	std::thread producer(
	    [&]
	    {
		    RecordingConnection dump;
		    for (int i = 0; i < kCreated; ++i)
		    {
			    Stat* pStat = _stats.CreateNewStat(nullptr, "stat " + std::to_string(i), i % 2);
			    pStat->Trigger();
			    pStat->Trigger(0.5);
			    _stats.NextFrame();
			    if (i % 16 == 0)
				    _stats.DumpStats(&dump);
			    std::this_thread::sleep_for(std::chrono::microseconds(100));
		    }
		    bProducing = false;
	    });
	// Every pass is a consistent snapshot: ids run down to 0 without a gap.
	size_t nLastCount = 0;
	bool bConsistent = true;
	for (int nPasses = 0; bProducing && nPasses < 1000; ++nPasses)
	{
		const std::vector<Descriptor> descriptors = Serve();
		bConsistent = bConsistent && descriptors.size() >= nLastCount;
		nLastCount = descriptors.size();
		for (size_t j = 0; j < descriptors.size(); ++j)
			bConsistent =
			    bConsistent && descriptors[j].iId == static_cast<int32_t>(descriptors.size() - 1 - j);
	}
	producer.join();
	EXPECT_TRUE(bConsistent);
	EXPECT_EQ(Serve().size(), kCreated + 1u);
}
