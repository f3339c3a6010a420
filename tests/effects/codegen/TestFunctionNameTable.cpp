#include "codegen/FunctionNameTable.h"

#include <gtest/gtest.h>

#include <string>

namespace Tarsel::Effects::Testing
{
namespace
{

std::vector<uint32_t> AddAll(FunctionNameTable& table, const std::vector<std::string>& vNames)
{
	std::vector<uint32_t> vNumbers;
	for (const std::string& sName : vNames)
		vNumbers.push_back(table.Add(sName));
	return vNumbers;
}

std::vector<uint32_t> FindAll(const FunctionNameTable& table, const std::vector<std::string>& vNames)
{
	std::vector<uint32_t> vNumbers;
	for (const std::string& sName : vNames)
		vNumbers.push_back(table.Find(sName, FunctionNameTable::Hash(sName)));
	return vNumbers;
}

// Repeats, an empty name and names that differ only at the end.
TEST(FunctionNameTable, NumbersNamesInFirstSeenOrder)
{
	FunctionNameTable table;
	table.Reset(2);
	EXPECT_EQ(AddAll(table, {"Shade_1", "Shade_2", "Shade_1", "", "Shade_2"}),
	          (std::vector<uint32_t>{0, 1, 0, 2, 1}));
	ASSERT_EQ(table.Size(), 3u);
	EXPECT_EQ(table.Name(1), "Shade_2");
	EXPECT_EQ(table.Name(2), "");

	EXPECT_EQ(FindAll(table, {"Shade_2", "Shade_3", "Shade", ""}),
	          (std::vector<uint32_t>{1, FunctionNameTable::kAbsent, FunctionNameTable::kAbsent, 2}));
	EXPECT_EQ(table.Find("Shade_1"), 0u);

	// A reset forgets everything.
	table.Reset(0);
	EXPECT_EQ(table.Size(), 0u);
	EXPECT_EQ(table.Find("Shade_1"), FunctionNameTable::kAbsent);
}

// Far more names than the table was sized for: every name keeps its number through the growths.
TEST(FunctionNameTable, KeepsNumbersThroughGrowth)
{
	FunctionNameTable table;
	table.Reset(1);
	for (int i = 0; i < 12000; ++i)
		ASSERT_EQ(table.Add("f" + std::to_string(i)), static_cast<uint32_t>(i));
	std::vector<std::string> vAll;
	for (int i = 0; i < 12000; i += 7)
		vAll.push_back("f" + std::to_string(i));
	const std::vector<uint32_t> vNumbers = FindAll(table, vAll);
	for (size_t i = 0; i < vAll.size(); ++i)
	{
		ASSERT_EQ(vNumbers[i], static_cast<uint32_t>(7 * i));
		ASSERT_EQ(table.Name(vNumbers[i]), vAll[i]);
	}
}

} // namespace
} // namespace Tarsel::Effects::Testing
