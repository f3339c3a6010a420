#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Tarsel::Effects
{

// The preprocessor's macros in order of definition, newest last. Substitution walks them newest to oldest
// and replaces plain substring matches not followed by an identifier character. An index of the names
// (rolling hashes, one per name length) tells which macros occur in a line, so that a line is searched only
// for those instead of for every macro.
class MacroList
{
public:
	typedef std::pair<std::string, std::string> Macro;

	const std::vector<Macro>& GetMacros() const { return _vMacros; }
	size_t size() const { return _vMacros.size(); }
	bool empty() const { return _vMacros.empty(); }

	void Append(const std::string& name, const std::string& replacement);
	// Position of the oldest macro of that name; -1 when there is none.
	int Find(const std::string& name) const;
	void Erase(int position);
	void Substitute(std::string& line) const;

private:
	struct Length
	{
		size_t nLength;
		uint64_t uPowTop; // base^(length-1), to drop the leading byte of the window
		std::unordered_multimap<uint64_t, int> mPositions;
	};

	void _Index(int position);
	void _Reindex();
	// Positions of the macros below limit whose name occurs in the line, newest first.
	void _Collect(const std::string& line, int limit, std::vector<int>& positions) const;
	static bool _Replace(std::string& line, const Macro& macro);

	std::vector<Macro> _vMacros;
	std::vector<Length> _vLengths;
	// One bit per (length, hash) pair: most windows are rejected without touching the maps.
	std::vector<uint64_t> _vFilter;
};

} // namespace Tarsel::Effects
