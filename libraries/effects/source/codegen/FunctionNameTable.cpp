#include "codegen/FunctionNameTable.h"

#include <functional>

namespace Tarsel::Effects
{

void FunctionNameTable::Batch::Clear()
{
	_names.Clear();
	_vHashes.clear();
}

void FunctionNameTable::Batch::Reserve(size_t nNames, size_t nBytes)
{
	_names.Reserve(nNames, nBytes);
	_vHashes.reserve(nNames);
}

void FunctionNameTable::Batch::Add(std::string_view sName)
{
	_names.Add(sName);
	_vHashes.push_back(_Hash(sName));
}

void FunctionNameTable::Reset(size_t nExpected)
{
	_names.Clear();
	_vSlots.assign(16, Slot());
	_Grow(nExpected);
}

void FunctionNameTable::AddAll(const Batch& names, std::vector<uint32_t>& vNumbers)
{
	// Grown before the first fetch, so that no fetched slot moves.
	_Grow(Size() + names.Size());
	vNumbers.resize(names.Size());
	_Pipelined(names, [&](size_t i) { vNumbers[i] = _Add(names.Name(i), names.Hash(i)); });
}

void FunctionNameTable::FindAll(const Batch& names, std::vector<uint32_t>& vNumbers) const
{
	vNumbers.resize(names.Size());
	_Pipelined(names, [&](size_t i) { vNumbers[i] = _vSlots[_Probe(names.Name(i), names.Hash(i))].iNumber; });
}

uint32_t FunctionNameTable::Find(std::string_view sName) const
{
	return _vSlots[_Probe(sName, _Hash(sName))].iNumber;
}

uint32_t FunctionNameTable::_Hash(std::string_view sName)
{
	return static_cast<uint32_t>(std::hash<std::string_view>()(sName));
}

size_t FunctionNameTable::_Probe(std::string_view sName, uint32_t iHash) const
{
	const size_t nMask = _vSlots.size() - 1;
	for (size_t i = iHash & nMask;; i = (i + 1) & nMask)
	{
		const Slot& slot = _vSlots[i];
		if (slot.iNumber == kAbsent || (slot.iHash == iHash && Name(slot.iNumber) == sName))
			return i;
	}
}

uint32_t FunctionNameTable::_Add(std::string_view sName, uint32_t iHash)
{
	Slot& slot = _vSlots[_Probe(sName, iHash)];
	if (slot.iNumber == kAbsent)
	{
		slot = Slot{iHash, static_cast<uint32_t>(_names.Size())};
		_names.Add(sName);
	}
	return slot.iNumber;
}

void FunctionNameTable::_Grow(size_t nNames)
{
	// At most half full, so that probes stay short.
	size_t nSlots = _vSlots.size();
	while (nSlots < 2 * nNames)
		nSlots *= 2;
	if (nSlots == _vSlots.size())
		return;
	std::vector<Slot> vOld(nSlots, Slot());
	vOld.swap(_vSlots);
	const size_t nMask = nSlots - 1;
	for (const Slot& old : vOld)
	{
		if (old.iNumber == kAbsent)
			continue;
		size_t i = old.iHash & nMask;
		while (_vSlots[i].iNumber != kAbsent)
			i = (i + 1) & nMask;
		_vSlots[i] = old;
	}
}

template <class Step>
void FunctionNameTable::_Pipelined(const Batch& names, Step step) const
{
	constexpr size_t kAhead = 8;
	const size_t nMask = _vSlots.size() - 1;
	for (size_t i = 0; i < names.Size() + kAhead; ++i)
	{
		if (i < names.Size())
			__builtin_prefetch(&_vSlots[names.Hash(i) & nMask]);
		if (i >= kAhead)
			step(i - kAhead);
	}
}

} // namespace Tarsel::Effects
