#include <gtest/gtest.h>

#include <cctype>
#include <random>

#include "manager/MacroList.h"

using namespace Tarsel::Effects;

namespace
{

// The substitution rule taken literally: every macro, newest first, searched through the whole line.
std::string SubstituteLiterally(std::string line, const std::vector<MacroList::Macro>& macros)
{
	for (auto it = macros.rbegin(); it != macros.rend(); ++it)
	{
		const std::string& name = it->first;
		for (size_t at = line.find(name); at != std::string::npos;)
		{
			const size_t end = at + name.size();
			const unsigned char next = end < line.size() ? static_cast<unsigned char>(line[end]) : ' ';
			if (std::isalnum(next) || next == '_')
			{
				at = line.find(name, end);
				continue;
			}
			line.replace(at, name.size(), it->second);
			at = line.find(name, at + it->second.size());
		}
	}
	return line;
}

std::string RandomText(std::mt19937& random, const char* alphabet, size_t minimum, size_t maximum)
{
	const size_t length = minimum + random() % (maximum - minimum + 1);
	const size_t count = std::char_traits<char>::length(alphabet);
	std::string text;
	for (size_t i = 0; i < length; ++i)
		text += alphabet[random() % count];
	return text;
}

// Small alphabets make overlaps, suffix matches, duplicates and chains of replacements frequent.
TEST(MacroList, SubstitutesExactlyAsTheLiteralRule)
{
	std::mt19937 random(1234);
	for (int round = 0; round < 300; ++round)
	{
		MacroList macros;
		for (int step = 0; step < 12; ++step)
		{
			if (!macros.empty() && random() % 4 == 0)
				macros.Erase(static_cast<int>(random() % macros.size()));
			else
				macros.Append(RandomText(random, "AB_1", 1, 3), RandomText(random, "AB_1 (", 0, 4));
		}
		for (int probe = 0; probe < 20; ++probe)
		{
			const std::string line = RandomText(random, "AB_1 (x", 0, 24);
			std::string substituted = line;
			macros.Substitute(substituted);
			ASSERT_EQ(substituted, SubstituteLiterally(line, macros.GetMacros())) << "line '" << line << "'";
		}
	}
}

TEST(MacroList, FindsTheOldestOfDuplicateNames)
{
	MacroList macros;
	macros.Append("D", "1");
	macros.Append("E", "2");
	macros.Append("D", "3");
	EXPECT_EQ(macros.Find("D"), 0);
	macros.Erase(0);
	EXPECT_EQ(macros.Find("D"), 1);
	std::string line = "D E";
	macros.Substitute(line);
	EXPECT_EQ(line, "3 2");
	EXPECT_EQ(macros.Find("F"), -1);
}

} // namespace
