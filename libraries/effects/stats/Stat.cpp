#include "effects/Stat.h"

#include "effects/IPCWrapper.h"

#include <cstdio>

namespace
{

// Sends one printf-formatted value without a terminator.
template <typename T>
void SendText(IPCWrapper* pConnection, char const* szFormat, T value)
{
	// Wide enough for any int and for any float printed with "%f".
	char acText[64];
	const int iLength = std::snprintf(acText, sizeof(acText), szFormat, value);
	if (pConnection && iLength > 0 && iLength < static_cast<int>(sizeof(acText)))
		pConnection->Send(acText, iLength);
}

} // namespace

Stat::Stat(char const* szLabel, std::string const& sName, bool bClearOnDump, int iId, Stat* pNext,
           int* piFrame, int iKind)
    : _pNext(pNext), _bClearOnDump(bClearOnDump), _iId(iId), _piFrame(piFrame),
      _iKind(iKind), _aiHits{}, _adTimes{}, _szLabel(szLabel), _sName(sName)
{
}

void Stat::Trigger()
{
	++_aiHits[*_piFrame];
}

void Stat::Trigger(double t)
{
	_adTimes[*_piFrame] += t;
	++_aiHits[*_piFrame];
}

void Stat::Clear()
{
	ClearSlot(*_piFrame);
}

void Stat::ClearSlot(int iSlot)
{
	if (!IsSlot(iSlot))
		return;
	_aiHits[iSlot] = 0;
	_adTimes[iSlot] = 0.0;
}

void Stat::DumpHitCount(IPCWrapper* pConnection, int iSlot)
{
	if (!IsSlot(iSlot))
		return;
	SendText(pConnection, "%d", _aiHits[iSlot]);
	if (_bClearOnDump)
		_aiHits[iSlot] = 0;
}

void Stat::DumpTime(IPCWrapper* pConnection, int iSlot)
{
	if (!IsSlot(iSlot))
		return;
	SendText(pConnection, "%f", static_cast<double>(static_cast<float>(_adTimes[iSlot])));
	if (_bClearOnDump)
		_adTimes[iSlot] = 0.0;
}
