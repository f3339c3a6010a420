#include "codegen/FunctionNameTable.h"

#include <gtest/gtest.h>

#include <string>

namespace Tarsel::Effects::Testing
{
namespace
{

FunctionNameTable::Batch BatchOf(const std::vector<std::string>& vNames)
{
	FunctionNameTable::Batch batch;
	for (const std::string& sName : vNames)
		batch.Add(sName);
	return batch;
}

// Fewer names than the lookahead, repeats, an empty name and names that differ only at the end.
TEST(FunctionNameTable, NumbersNamesInFirstSeenOrder)
{
	FunctionNameTable table;
	table.Reset(2);
	std::vector<uint32_t> vNumbers;
	table.AddAll(BatchOf({"Shade_1", "Shade_2", "Shade_1", "", "Shade_2"}), vNumbers);
	EXPECT_EQ(vNumbers, (std::vector<uint32_t>{0, 1, 0, 2, 1}));
	ASSERT_EQ(table.Size(), 3u);
	EXPECT_EQ(table.Name(1), "Shade_2");
	EXPECT_EQ(table.Name(2), "");

	table.FindAll(BatchOf({"Shade_2", "Shade_3", "Shade", ""}), vNumbers);
	EXPECT_EQ(vNumbers,
	          (std::vector<uint32_t>{1, FunctionNameTable::kAbsent, FunctionNameTable::kAbsent, 2}));
	EXPECT_EQ(table.Find("Shade_1"), 0u);

	// A reset forgets everything.
	table.Reset(0);
	EXPECT_EQ(table.Size(), 0u);
	EXPECT_EQ(table.Find("Shade_1"), FunctionNameTable::kAbsent);
}

// Far more names than the table was sized for, added in several batches: every name keeps its number
// through the growths.
TEST(FunctionNameTable, KeepsNumbersThroughGrowth)
{
	FunctionNameTable table;
	table.Reset(1);
	std::vector<uint32_t> vNumbers;
	for (int iBatch = 0; iBatch < 4; ++iBatch)
	{
		std::vector<std::string> vNames;
		for (int i = 0; i < 3000; ++i)
			vNames.push_back("f" + std::to_string(iBatch * 3000 + i));
		table.AddAll(BatchOf(vNames), vNumbers);
		EXPECT_EQ(vNumbers.back(), static_cast<uint32_t>(iBatch * 3000 + 2999));
	}
	std::vector<std::string> vAll;
	for (int i = 0; i < 12000; i += 7)
		vAll.push_back("f" + std::to_string(i));
	table.FindAll(BatchOf(vAll), vNumbers);
	for (size_t i = 0; i < vAll.size(); ++i)
	{
		ASSERT_EQ(vNumbers[i], static_cast<uint32_t>(7 * i));
		ASSERT_EQ(table.Name(vNumbers[i]), vAll[i]);
	}
}

} // namespace
} // namespace Tarsel::Effects::Testing
