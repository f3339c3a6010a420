#include "StatsTestSupport.h"

#include "effects/MgrStats.h"

#include <gtest/gtest.h>

#include <cstring>

using StatsTesting::RecordingConnection;

namespace
{

void Advance(MgrStats& stats, int nFrames)
{
	for (int i = 0; i < nFrames; ++i)
		stats.NextFrame();
}

void TriggerTimes(Stat* pStat, int n)
{
	for (int i = 0; i < n; ++i)
		pStat->Trigger();
}

template <typename T>
T ReadAt(const std::string& s, size_t offset)
{
	T value{};
	std::memcpy(&value, s.data() + offset, sizeof(T));
	return value;
}

} // namespace

TEST(StatRegistry, NumbersStatisticsInOrderAndListsThemNewestFirst)
{
	MgrStats stats;
	static const char kLabel[] = "renderer";
	Stat* pDraws = stats.CreateNewStat(kLabel, "draws", MgrStats::kKindHits);
	Stat* pTime = stats.CreateNewStat(nullptr, "frame time", MgrStats::kKindTime);
	Stat* pRays = stats.CreateNewStat(nullptr, "rays", MgrStats::kKindHits);

	EXPECT_EQ(stats.GetCountStats(), 3);
	EXPECT_EQ(stats.GetFirstStat(), pRays);
	EXPECT_EQ(pRays->GetNext(), pTime);
	EXPECT_EQ(pTime->GetNext(), pDraws);
	EXPECT_EQ(pDraws->GetNext(), nullptr);
	EXPECT_EQ(pDraws->GetId(), 0);
	EXPECT_EQ(pRays->GetId(), 2);
	EXPECT_EQ(pTime->GetKind(), MgrStats::kKindTime);
	EXPECT_EQ(pDraws->GetLabel(), kLabel) << "the label is kept, not copied";
	EXPECT_TRUE(pDraws->IsClearOnDump());
}

TEST(StatRegistry, TriggersAndClearsTouchOnlyTheCurrentFrame)
{
	MgrStats stats;
	Stat* pTime = stats.CreateNewStat(nullptr, "shade", MgrStats::kKindTime);
	pTime->Trigger(1.5);
	pTime->Trigger(0.25);
	pTime->Trigger();
	stats.NextFrame();
	pTime->Trigger(4.0);

	EXPECT_EQ(pTime->GetHitCount(0), 3);
	EXPECT_DOUBLE_EQ(pTime->GetTime(0), 1.75);
	EXPECT_EQ(pTime->GetHitCount(1), 1);
	EXPECT_DOUBLE_EQ(pTime->GetTime(1), 4.0);

	pTime->Clear();
	EXPECT_EQ(pTime->GetHitCount(1), 0);
	EXPECT_DOUBLE_EQ(pTime->GetTime(1), 0.0);
	EXPECT_EQ(pTime->GetHitCount(0), 3) << "an earlier frame survives a clear";
}

TEST(StatRegistry, NextFrameWrapsClearsTheNewSlotAndDropsTheOldestFrameWhenFull)
{
	MgrStats stats;
	Stat* pHits = stats.CreateNewStat(nullptr, "hits", MgrStats::kKindHits);
	TriggerTimes(pHits, 2);
	stats.NextFrame();
	TriggerTimes(pHits, 5);

	Advance(stats, 61);
	EXPECT_EQ(stats.GetFrameWrite(), 62);
	EXPECT_EQ(stats.GetFrameRead(), 0);
	stats.NextFrame();
	EXPECT_EQ(stats.GetFrameWrite(), 63);
	EXPECT_EQ(stats.GetFrameRead(), 0) << "63 pending frames still fit";

	stats.NextFrame();
	EXPECT_EQ(stats.GetFrameWrite(), 0);
	EXPECT_EQ(stats.GetFrameRead(), 1) << "the oldest frame is dropped";
	EXPECT_EQ(pHits->GetHitCount(0), 0) << "the reused slot starts empty";
	EXPECT_EQ(pHits->GetHitCount(1), 5);

	pHits->Trigger();
	EXPECT_EQ(pHits->GetHitCount(0), 1);
}

TEST(StatDump, EmptyDumpIsBracesAndAZeroByte)
{
	RecordingConnection connection;
	MgrStats empty;
	empty.DumpStats(&connection);
	EXPECT_EQ(connection.Take(), std::string("{}\0", 3));

	MgrStats stats;
	stats.CreateNewStat(nullptr, "hits", MgrStats::kKindHits)->Trigger();
	stats.DumpStats(&connection);
	EXPECT_EQ(connection.Take(), std::string("{}\0", 3)) << "the current frame is not complete yet";
}

TEST(StatDump, TextDumpListsPendingFramesNewestFirstAndClearsThem)
{
	RecordingConnection connection;
	MgrStats stats;
	Stat* pA = stats.CreateNewStat(nullptr, "a", MgrStats::kKindHits);
	Stat* pB = stats.CreateNewStat(nullptr, "b b", MgrStats::kKindTime);
	TriggerTimes(pA, 3);
	stats.NextFrame();
	pA->Trigger();
	pB->Trigger(2.0);
	pB->Trigger(2.0);
	stats.NextFrame();

	stats.DumpStats(&connection);
	EXPECT_EQ(connection.Take(),
	          "{ \"name\" : \"b b\", \"value\":[0,2]},{ \"name\" : \"a\", \"value\":[3,1]}");
	EXPECT_EQ(pA->GetHitCount(0), 0);
	EXPECT_EQ(pA->GetHitCount(1), 0);
	EXPECT_EQ(stats.GetFrameRead(), stats.GetFrameWrite());
	EXPECT_DOUBLE_EQ(pB->GetTime(1), 4.0) << "the text dump prints counts only";

	// Across the end of the ring.
	Advance(stats, 61);
	stats.DumpStats(&connection);
	connection.Take();
	TriggerTimes(pA, 7);
	Advance(stats, 2);
	pA->Trigger();
	stats.NextFrame();
	ASSERT_EQ(stats.GetFrameRead(), 63);
	stats.DumpStats(&connection);
	EXPECT_EQ(connection.Take(),
	          "{ \"name\" : \"b b\", \"value\":[0,0,0]},{ \"name\" : \"a\", \"value\":[7,0,1]}");
}

TEST(StatDump, SingleSlotTextClearsAfterDumping)
{
	RecordingConnection connection;
	MgrStats stats;
	Stat* pTime = stats.CreateNewStat(nullptr, "t", MgrStats::kKindTime);
	pTime->Trigger(1.5);
	pTime->Trigger(-0.25);

	pTime->DumpHitCount(&connection, 0);
	pTime->DumpTime(&connection, 0);
	EXPECT_EQ(connection.Take(), "21.250000");
	pTime->DumpHitCount(&connection, 0);
	pTime->DumpTime(&connection, 0);
	EXPECT_EQ(connection.Take(), "00.000000");

	pTime->DumpHitCount(&connection, 64);
	pTime->DumpTime(&connection, -1);
	EXPECT_EQ(connection.Take(), "") << "slots outside the ring send nothing";
}

TEST(StatDump, SampleBlockLengthFollowsTheKind)
{
	RecordingConnection connection;
	MgrStats stats;
	Stat* pHits = stats.CreateNewStat(nullptr, "hits", MgrStats::kKindHits);
	Stat* pTime = stats.CreateNewStat(nullptr, "time", MgrStats::kKindTime);
	Stat* pOther = stats.CreateNewStat(nullptr, "other", 7);
	TriggerTimes(pHits, 4);
	pTime->Trigger(0.5);
	Advance(stats, 3);

	stats.DumpStat(&connection, pHits, 3);
	const std::string hits = connection.Take();
	ASSERT_EQ(hits.size(), 9u + 3 * 4);
	EXPECT_EQ(hits[0], 2);
	EXPECT_EQ(ReadAt<int32_t>(hits, 1), 0);
	EXPECT_EQ(ReadAt<uint32_t>(hits, 5), 12u);
	EXPECT_EQ(ReadAt<int32_t>(hits, 9), 4);
	EXPECT_EQ(ReadAt<int32_t>(hits, 13), 0);

	stats.DumpStat(&connection, pTime, 3);
	const std::string time = connection.Take();
	ASSERT_EQ(time.size(), 9u + 3 * 8);
	EXPECT_EQ(ReadAt<int32_t>(time, 1), 1);
	EXPECT_EQ(ReadAt<uint32_t>(time, 5), 24u);
	EXPECT_DOUBLE_EQ(ReadAt<double>(time, 9), 0.5);

	stats.DumpStat(&connection, pOther, 3);
	const std::string other = connection.Take();
	ASSERT_EQ(other.size(), 9u);
	EXPECT_EQ(ReadAt<uint32_t>(other, 5), 0u);
	EXPECT_EQ(pHits->GetHitCount(0), 4) << "a sample block leaves the samples for the text dump";
	EXPECT_EQ(stats.GetFrameRead(), 0);

	// From slot 62 round to slot 1: three frames.
	Advance(stats, 59);
	RecordingConnection discard;
	stats.DumpStats(&discard);
	Advance(stats, 3);
	ASSERT_EQ(stats.GetFrameRead(), 62);
	stats.DumpStat(&connection, pHits, 1);
	EXPECT_EQ(ReadAt<uint32_t>(connection.Take(), 5), 12u);

	stats.DumpStat(&connection, pHits, 64);
	stats.DumpStat(&connection, nullptr, 1);
	EXPECT_EQ(connection.Take(), "") << "an end outside the ring or no statistic sends nothing";
}

TEST(StatRegistry, ServerPortComesFromTheVariableOnlyWhenItIsAPort)
{
	EXPECT_EQ(MgrStats::ParseServerPort("9000"), 9000);
	EXPECT_EQ(MgrStats::ParseServerPort("65535"), 65535);
	EXPECT_EQ(MgrStats::ParseServerPort("1"), 1);
	for (const char* szValue : {"", "yes", "0", "65536", "123456", "12x", "-5", " 80", "+80"})
		EXPECT_EQ(MgrStats::ParseServerPort(szValue), MgrStats::kDefaultPort) << "'" << szValue << "'";
	EXPECT_EQ(MgrStats::ParseServerPort(nullptr), MgrStats::kDefaultPort);
}
