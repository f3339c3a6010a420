#pragma once

#include "codegen/PackedNames.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace Tarsel::Effects
{

// Numbers the distinct function names of a module, 0, 1, 2, ... in the order they are added. Open-addressed
// over flat arrays with the names packed in one buffer. A caller that streams many names hashes each a few
// steps early and fetches its slot: on modules of many thousand functions a lookup is otherwise a cache miss,
// and a node-based map's pointer chasing, one miss after the other, dominated the passes that use it.
class FunctionNameTable
{
public:
	static constexpr uint32_t kAbsent = UINT32_MAX;

	static uint32_t Hash(std::string_view sName);

	// Empties the table and makes room for nNames names, so that adding them moves no slot.
	void Reset(size_t nNames);
	// Starts fetching the slot where the probe for a name of this hash begins.
	void Prefetch(uint32_t iHash) const { __builtin_prefetch(&_vSlots[iHash & (_vSlots.size() - 1)]); }
	// The name's number; a new name gets the next number.
	uint32_t Add(std::string_view sName, uint32_t iHash);
	uint32_t Add(std::string_view sName) { return Add(sName, Hash(sName)); }
	// The name's number, kAbsent for a name never added.
	uint32_t Find(std::string_view sName, uint32_t iHash) const;
	uint32_t Find(std::string_view sName) const { return Find(sName, Hash(sName)); }

	size_t Size() const { return _names.Size(); }
	std::string_view Name(uint32_t iNumber) const { return _names[iNumber]; }

private:
	struct Slot
	{
		uint32_t iHash = 0;
		uint32_t iNumber = kAbsent; // kAbsent marks a free slot
	};
	// The index of the slot holding the name, or of the free slot where it belongs.
	size_t _Probe(std::string_view sName, uint32_t iHash) const;
	void _Grow(size_t nNames);

	std::vector<Slot> _vSlots = std::vector<Slot>(16);
	PackedNames _names; // by number
};

} // namespace Tarsel::Effects
