#pragma once

#include "codegen/PackedNames.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Tarsel::Effects
{

// Numbers the distinct function names of a module, 0, 1, 2, ... in the order they are added. Open-addressed
// over flat arrays with the names packed in one buffer, and looked up in batches that fetch each slot a few
// names ahead: on modules of many thousand functions a lookup per call is a cache miss, and a node-based
// map's pointer chasing, one miss after the other, dominated the passes that use it.
class FunctionNameTable
{
public:
	static constexpr uint32_t kAbsent = UINT32_MAX;

	// Names to look up together. Each is copied and hashed as it is added, while its node is still in the
	// cache, so the lookups later read only this batch and the table.
	class Batch
	{
	public:
		void Clear();
		// Room for nNames names of about nBytes bytes in all, so that adding never moves what was added.
		void Reserve(size_t nNames, size_t nBytes);
		void Add(std::string_view sName);
		size_t Size() const { return _vHashes.size(); }
		std::string_view Name(size_t i) const { return _names[i]; }
		uint32_t Hash(size_t i) const { return _vHashes[i]; }

	private:
		PackedNames _names;
		std::vector<uint32_t> _vHashes;
	};

	// Empties the table, sized for about nExpected names.
	void Reset(size_t nExpected);
	// The number of each name, in order; a new name gets the next number.
	void AddAll(const Batch& names, std::vector<uint32_t>& vNumbers);
	// The number of each name, kAbsent for names never added.
	void FindAll(const Batch& names, std::vector<uint32_t>& vNumbers) const;
	uint32_t Find(std::string_view sName) const;

	size_t Size() const { return _names.Size(); }
	std::string_view Name(uint32_t iNumber) const { return _names[iNumber]; }

private:
	struct Slot
	{
		uint32_t iHash = 0;
		uint32_t iNumber = kAbsent; // kAbsent marks a free slot
	};
	static uint32_t _Hash(std::string_view sName);
	// The index of the slot holding the name, or of the free slot where it belongs.
	size_t _Probe(std::string_view sName, uint32_t iHash) const;
	uint32_t _Add(std::string_view sName, uint32_t iHash);
	void _Grow(size_t nNames);
	// Calls step(i) for every name in order, having fetched the name's slot a few steps before.
	template <class Step>
	void _Pipelined(const Batch& names, Step step) const;

	std::vector<Slot> _vSlots = std::vector<Slot>(16);
	PackedNames _names; // by number
};

} // namespace Tarsel::Effects
