#include "codegen/FunctionNameTable.h"

#include <functional>

namespace Tarsel::Effects
{

uint32_t FunctionNameTable::Hash(std::string_view sName)
{
	return static_cast<uint32_t>(std::hash<std::string_view>()(sName));
}

void FunctionNameTable::Reset(size_t nNames)
{
	_names.Clear();
	constexpr size_t kBytesPerName = 24;
	_names.Reserve(nNames, nNames * kBytesPerName);
	_vSlots.assign(16, Slot());
	_Grow(nNames);
}

uint32_t FunctionNameTable::Add(std::string_view sName, uint32_t iHash)
{
	_Grow(Size() + 1);
	Slot& slot = _vSlots[_Probe(sName, iHash)];
	if (slot.iNumber == kAbsent)
	{
		slot = Slot{iHash, static_cast<uint32_t>(_names.Size())};
		_names.Add(sName);
	}
	return slot.iNumber;
}

uint32_t FunctionNameTable::Find(std::string_view sName, uint32_t iHash) const
{
	return _vSlots[_Probe(sName, iHash)].iNumber;
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

} // namespace Tarsel::Effects
