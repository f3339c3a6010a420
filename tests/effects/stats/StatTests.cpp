#include "StatsTestSupport.h"

#include "effects/MgrStats.h"

#include <gtest/gtest.h>

#include <functional>

using StatsTesting::RecordingConnection;

namespace
{

void Repeat(int n, const std::function<void()>& action)
{
	for (int i = 0; i < n; ++i)
		action();
}

template <typename T>
T At(const std::string& s, size_t offset)
{
	T value{};
	std::memcpy(&value, s.data() + offset, sizeof(T));
	return value;
}

} // namespace

TEST(StatRegistry, CountsPerFrameInARingThatDropsTheOldestFrame)
{
	MgrStats stats;
	static const char kLabel[] = "renderer";
	Stat* pHits = stats.CreateNewStat(kLabel, "hits", MgrStats::kKindHits);
	Stat* pTime = stats.CreateNewStat(nullptr, "time", MgrStats::kKindTime);
	EXPECT_EQ(stats.GetFirstStat(), pTime);
	EXPECT_EQ(pTime->GetNext(), pHits);
	EXPECT_EQ(pHits->GetId(), 0);
	EXPECT_EQ(pTime->GetId(), 1);
	EXPECT_EQ(pHits->GetLabel(), kLabel) << "the label is kept, not copied";

	pTime->Trigger(1.5);
	pTime->Trigger(0.25);
	pTime->Trigger();
	Repeat(2, [&] { pHits->Trigger(); });
	stats.NextFrame();
	Repeat(5, [&] { pHits->Trigger(); });
	pTime->Trigger(4.0);
	pTime->Clear();
	EXPECT_EQ(pTime->GetHitCount(0), 3);
	EXPECT_DOUBLE_EQ(pTime->GetTime(0), 1.75);
	EXPECT_EQ(pTime->GetHitCount(1), 0) << "Clear empties only the current frame";
	EXPECT_DOUBLE_EQ(pTime->GetTime(1), 0.0);

	Repeat(62, [&] { stats.NextFrame(); });
	EXPECT_EQ(stats.GetFrameWrite(), 63);
	EXPECT_EQ(stats.GetFrameRead(), 0) << "63 pending frames fit";
	stats.NextFrame();
	EXPECT_EQ(stats.GetFrameWrite(), 0);
	EXPECT_EQ(stats.GetFrameRead(), 1);
	EXPECT_EQ(pHits->GetHitCount(0), 0) << "a reused slot starts empty";
	EXPECT_EQ(pHits->GetHitCount(1), 5);
}

TEST(StatDump, TextDumpListsPendingFramesNewestFirstAndClearsThem)
{
	RecordingConnection connection;
	MgrStats stats;
	stats.DumpStats(&connection);
	EXPECT_EQ(connection.Take(), std::string("{}\0", 3));

	Stat* pA = stats.CreateNewStat(nullptr, "a", MgrStats::kKindHits);
	Stat* pB = stats.CreateNewStat(nullptr, "b b", MgrStats::kKindTime);
	Repeat(3, [&] { pA->Trigger(); });
	stats.DumpStats(&connection);
	EXPECT_EQ(connection.Take(), std::string("{}\0", 3)) << "the current frame is not complete yet";
	stats.NextFrame();
	pA->Trigger();
	Repeat(2, [&] { pB->Trigger(2.0); });
	stats.NextFrame();
	stats.DumpStats(&connection);
	EXPECT_EQ(connection.Take(),
	          "{ \"name\" : \"b b\", \"value\":[0,2]},{ \"name\" : \"a\", \"value\":[3,1]}");
	EXPECT_EQ(pA->GetHitCount(0), 0) << "cleared on dump";
	EXPECT_EQ(stats.GetFrameRead(), stats.GetFrameWrite());

	// Across the end of the ring: frames 63, 0 and 1.
	Repeat(61, [&] { stats.NextFrame(); });
	stats.DumpStats(&connection);
	connection.Take();
	Repeat(7, [&] { pA->Trigger(); });
	Repeat(2, [&] { stats.NextFrame(); });
	pA->Trigger();
	stats.NextFrame();
	stats.DumpStats(&connection);
	EXPECT_EQ(connection.Take(),
	          "{ \"name\" : \"b b\", \"value\":[0,0,0]},{ \"name\" : \"a\", \"value\":[7,0,1]}");
}

TEST(StatDump, SlotTextAndSampleBlocks)
{
	RecordingConnection connection;
	MgrStats stats;
	Stat* pHits = stats.CreateNewStat(nullptr, "hits", MgrStats::kKindHits);
	Stat* pTime = stats.CreateNewStat(nullptr, "time", MgrStats::kKindTime);
	Stat* pOther = stats.CreateNewStat(nullptr, "other", 7);
	pTime->Trigger(1.5);
	pTime->Trigger(-0.25);
	pTime->DumpHitCount(&connection, 0);
	pTime->DumpTime(&connection, 0);
	pTime->DumpHitCount(&connection, 0);
	pTime->DumpTime(&connection, 64);
	EXPECT_EQ(connection.Take(), "21.2500000")
	    << "cleared after dumping; a slot outside the ring sends nothing";

	pTime->Trigger(0.5);
	Repeat(4, [&] { pHits->Trigger(); });
	Repeat(3, [&] { stats.NextFrame(); });
	stats.DumpStat(&connection, pHits, 3);
	const std::string hits = connection.Take();
	ASSERT_EQ(hits.size(), 9u + 3 * 4);
	EXPECT_EQ(hits[0], 2);
	EXPECT_EQ(At<uint32_t>(hits, 5), 12u);
	EXPECT_EQ(At<int32_t>(hits, 9), 4);
	stats.DumpStat(&connection, pTime, 3);
	const std::string time = connection.Take();
	ASSERT_EQ(time.size(), 9u + 3 * 8);
	EXPECT_EQ(At<int32_t>(time, 1), 1);
	EXPECT_DOUBLE_EQ(At<double>(time, 9), 0.5);
	stats.DumpStat(&connection, pOther, 3);
	EXPECT_EQ(connection.Take().size(), 9u) << "a kind without samples sends an empty block";
	EXPECT_EQ(pHits->GetHitCount(0), 4) << "a sample block leaves the samples for the text dump";

	// From slot 62 round to slot 1.
	Repeat(59, [&] { stats.NextFrame(); });
	stats.DumpStats(&connection);
	Repeat(3, [&] { stats.NextFrame(); });
	connection.Take();
	stats.DumpStat(&connection, pHits, 1);
	EXPECT_EQ(At<uint32_t>(connection.Take(), 5), 12u);
}

TEST(StatRegistry, ServerPortComesFromTheVariableOnlyWhenItIsAPort)
{
	EXPECT_EQ(MgrStats::ParseServerPort("9000"), 9000);
	EXPECT_EQ(MgrStats::ParseServerPort("65535"), 65535);
	for (const char* szValue : {"", "yes", "0", "65536", "123456", "12x", "-5", " 80", "+80"})
		EXPECT_EQ(MgrStats::ParseServerPort(szValue), MgrStats::kDefaultPort) << "'" << szValue << "'";
}
