#pragma once

#include <string>

#include "effects/Export.h"

class IPCWrapper;

// One named hit counter or timer, kept per frame slot. Only the thread that drives frames
// should trigger it: a trigger is a plain add on the current slot.
class TARSEL_EFFECTS_EXPORT Stat
{
public:
	static constexpr int kFrameCount = 64;
	static constexpr int kFrameMask = kFrameCount - 1;

	// piFrame points at the registry's write position; the label is kept as a pointer, not copied.
	Stat(char const* szLabel, std::string const& sName, bool bClearOnDump, int iId, Stat* pNext, int* piFrame,
	     int iKind);

	void Trigger();
	void Trigger(double t);
	void Clear();
	// Text of one slot; a slot outside the ring sends nothing.
	void DumpHitCount(IPCWrapper* pConnection, int iSlot);
	void DumpTime(IPCWrapper* pConnection, int iSlot);

	void ClearSlot(int iSlot);

	Stat* GetNext() const { return _pNext; }
	bool IsClearOnDump() const { return _bClearOnDump; }
	int GetId() const { return _iId; }
	int GetKind() const { return _iKind; }
	char const* GetLabel() const { return _szLabel; }
	std::string const& GetName() const { return _sName; }
	int GetHitCount(int iSlot) const { return IsSlot(iSlot) ? _aiHits[iSlot] : 0; }
	double GetTime(int iSlot) const { return IsSlot(iSlot) ? _adTimes[iSlot] : 0.0; }

	static bool IsSlot(int iSlot) { return iSlot >= 0 && iSlot < kFrameCount; }

private:
	Stat* _pNext;
	bool _bClearOnDump;
	int _iId;
	int* _piFrame;
	int _iKind;
	int _aiHits[kFrameCount];
	double _adTimes[kFrameCount];
	char const* _szLabel;
	std::string _sName;
};
