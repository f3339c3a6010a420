#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Tarsel::Effects
{

// Copies of names packed in one buffer and read back by position: thousands of names in a few contiguous
// blocks, where the nodes they came from lie all over memory.
class PackedNames
{
public:
	void Clear();
	void Reserve(size_t nNames, size_t nBytes);
	void Add(std::string_view sName);
	size_t Size() const { return _vSpans.size(); }
	std::string_view operator[](size_t i) const;

private:
	struct Span
	{
		uint32_t iBegin = 0;
		uint32_t nLength = 0;
	};
	std::vector<Span> _vSpans;
	std::string _sBytes;
};

} // namespace Tarsel::Effects
