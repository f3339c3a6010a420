#include "manager/MacroList.h"

#include <algorithm>

namespace Tarsel::Effects
{

namespace
{
const uint64_t kBase = 0x100000001b3ull;
const size_t kFilterBits = size_t(1) << 20;

uint64_t HashOf(const char* text, size_t length)
{
	uint64_t hash = 0;
	for (size_t i = 0; i < length; ++i)
		hash = hash * kBase + static_cast<unsigned char>(text[i]);
	return hash;
}

size_t FilterBit(uint64_t hash, size_t length)
{
	const uint64_t mixed = (hash ^ (length * 0x9e3779b97f4a7c15ull)) * 0xff51afd7ed558ccdull;
	return static_cast<size_t>(mixed >> 44) & (kFilterBits - 1);
}

bool IsIdentifierChar(char c)
{
	return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}
} // namespace

void MacroList::Append(const std::string& name, const std::string& replacement)
{
	_vMacros.emplace_back(name, replacement);
	_Index(static_cast<int>(_vMacros.size()) - 1);
}

int MacroList::Find(const std::string& name) const
{
	for (size_t i = 0; i < _vMacros.size(); ++i)
		if (_vMacros[i].first == name)
			return static_cast<int>(i);
	return -1;
}

void MacroList::Erase(int position)
{
	_vMacros.erase(_vMacros.begin() + position);
	// Positions shift; erasing is rare (undefine, redefine), so rebuilding is cheaper than patching.
	_Reindex();
}

void MacroList::_Index(int position)
{
	const std::string& name = _vMacros[position].first;
	if (name.empty())
		return;
	if (_vFilter.empty())
		_vFilter.assign(kFilterBits / 64, 0);
	std::vector<Length>::iterator it = std::find_if(
	    _vLengths.begin(), _vLengths.end(), [&](const Length& l) { return l.nLength == name.size(); });
	if (it == _vLengths.end())
	{
		Length length;
		length.nLength = name.size();
		length.uPowTop = 1;
		for (size_t i = 1; i < name.size(); ++i)
			length.uPowTop *= kBase;
		_vLengths.push_back(length);
		it = _vLengths.end() - 1;
	}
	const uint64_t hash = HashOf(name.data(), name.size());
	it->mPositions.emplace(hash, position);
	const size_t bit = FilterBit(hash, name.size());
	_vFilter[bit / 64] |= uint64_t(1) << (bit % 64);
}

void MacroList::_Reindex()
{
	_vLengths.clear();
	_vFilter.clear();
	for (size_t i = 0; i < _vMacros.size(); ++i)
		_Index(static_cast<int>(i));
}

void MacroList::_Collect(const std::string& line, int limit, std::vector<int>& positions) const
{
	positions.clear();
	const char* text = line.data();
	for (const Length& length : _vLengths)
	{
		const size_t n = length.nLength;
		if (n > line.size())
			continue;
		uint64_t hash = HashOf(text, n);
		for (size_t start = 0;; ++start)
		{
			const size_t bit = FilterBit(hash, n);
			if (_vFilter[bit / 64] & (uint64_t(1) << (bit % 64)))
			{
				auto range = length.mPositions.equal_range(hash);
				for (auto it = range.first; it != range.second; ++it)
					if (it->second < limit && _vMacros[it->second].first.compare(0, n, text + start, n) == 0)
						positions.push_back(it->second);
			}
			if (start + n >= line.size())
				break;
			hash = (hash - length.uPowTop * static_cast<unsigned char>(text[start])) * kBase +
			       static_cast<unsigned char>(text[start + n]);
		}
	}
	std::sort(positions.begin(), positions.end(), std::greater<int>());
	positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
}

bool MacroList::_Replace(std::string& line, const Macro& macro)
{
	const std::string& name = macro.first;
	const std::string& replacement = macro.second;
	bool bReplaced = false;
	for (size_t at = line.find(name); at != std::string::npos; at = line.find(name, at))
	{
		const size_t end = at + name.size();
		if (end < line.size() && IsIdentifierChar(line[end]))
		{
			at = end;
			continue;
		}
		line.replace(at, name.size(), replacement);
		at += replacement.size();
		bReplaced = true;
	}
	return bReplaced;
}

void MacroList::Substitute(std::string& line) const
{
	if (_vMacros.empty() || line.empty())
		return;
	// A macro whose name does not occur in the line at its turn changes nothing, so only the ones that
	// occur are applied; after a replacement the line is new and the older candidates are found again.
	std::vector<int> candidates;
	_Collect(line, static_cast<int>(_vMacros.size()), candidates);
	size_t next = 0;
	while (next < candidates.size())
	{
		const int position = candidates[next++];
		if (_Replace(line, _vMacros[position]))
		{
			_Collect(line, position, candidates);
			next = 0;
		}
	}
}

} // namespace Tarsel::Effects
