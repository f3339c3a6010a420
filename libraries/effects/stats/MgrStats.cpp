#include "effects/MgrStats.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace
{

enum MessageType : uint8_t
{
	kMessageDescriptor = 1,
	kMessageSamples = 2,
};

// Integers travel in the machine's byte order, fields without gaps.
class WireMessage
{
public:
	template <typename T>
	WireMessage& Add(T value)
	{
		char ac[sizeof(T)];
		std::memcpy(ac, &value, sizeof(T));
		_s.append(ac, sizeof(T));
		return *this;
	}
	WireMessage& AddBytes(char const* pBytes, size_t nBytes)
	{
		_s.append(pBytes, nBytes);
		return *this;
	}
	bool SendTo(IPCWrapper* pConnection) const
	{
		return pConnection->Send(_s.data(), static_cast<int>(_s.size())) == static_cast<int>(_s.size());
	}

private:
	std::string _s;
};

// The kind a viewer sees: 1 for a hit counter, 2 for a time, 0 for anything else.
uint8_t WireKind(int iKind)
{
	return iKind == MgrStats::kKindHits ? 1 : iKind == MgrStats::kKindTime ? 2 : 0;
}

int NextSlot(int iSlot)
{
	return (iSlot + 1) & Stat::kFrameMask;
}

} // namespace

MgrStats* MgrStats::GetMgrStats()
{
	static MgrStats* s_pMgrStats = []
	{
		MgrStats* pMgrStats = new MgrStats();
		pMgrStats->_StartFromEnvironment();
		return pMgrStats;
	}();
	return s_pMgrStats;
}

int MgrStats::ParseServerPort(char const* szValue)
{
	if (!szValue || !*szValue || std::strlen(szValue) > 5)
		return kDefaultPort;
	char* pEnd = nullptr;
	const long iPort = std::strtol(szValue, &pEnd, 10);
	const bool bDigitsOnly = *pEnd == '\0' && szValue[0] >= '0' && szValue[0] <= '9';
	return bDigitsOnly && iPort >= 1 && iPort <= 65535 ? static_cast<int>(iPort) : kDefaultPort;
}

MgrStats::MgrStats()
    : _pStatFirst(nullptr), _pStatCursor(nullptr), _iCountStats(0), _pConnection(nullptr),
      _bStopServer(false), _iFrameRead(0), _iFrameWrite(0), _iPortServer(0), _bServerRunning(false),
      _pFileDump(nullptr)
{
}

MgrStats::~MgrStats()
{
	StopServer();
	Shutdown();
	Stat* pStat = _pStatFirst.load(std::memory_order_acquire);
	while (pStat)
	{
		Stat* pNext = pStat->GetNext();
		delete pStat;
		pStat = pNext;
	}
}

void MgrStats::_StartFromEnvironment()
{
	if (char const* szPort = std::getenv("MGR_STATS_DUMP_TCPIP"))
		StartServer(ParseServerPort(szPort));
	else if (char const* szFile = std::getenv("MGR_STATS_DUMP_FILE"))
		_pFileDump = std::fopen(szFile, "wb");
}

void MgrStats::Shutdown()
{
	if (_hThreadServer.joinable())
		_hThreadServer.detach();
	if (_pFileDump)
	{
		std::fclose(_pFileDump);
		_pFileDump = nullptr;
	}
}

Stat* MgrStats::CreateNewStat(char const* szLabel, std::string const& sName, int iKind)
{
	// Creators serialise among themselves; the server thread reads the list without this lock.
	std::lock_guard<std::mutex> lock(_mutexCreate);
	Stat* pStat = new Stat(szLabel, sName, true, _iCountStats, _pStatFirst.load(std::memory_order_relaxed),
	                       &_iFrameWrite, iKind);
	_pStatFirst.store(pStat, std::memory_order_release);
	++_iCountStats;
	return pStat;
}

void MgrStats::SendNewStats(IPCWrapper* pConnection, Stat* pStop)
{
	Stat* pFirst = _pStatFirst.load(std::memory_order_acquire);
	for (Stat* pStat = pFirst; pConnection && pStat && pStat != pStop; pStat = pStat->GetNext())
	{
		const std::string& sName = pStat->GetName();
		WireMessage message;
		message.Add<uint8_t>(kMessageDescriptor)
		    .Add<uint32_t>(static_cast<uint32_t>(sName.size()))
		    .AddBytes(sName.data(), sName.size())
		    .Add<uint8_t>(WireKind(pStat->GetKind()))
		    .Add<int32_t>(pStat->GetId());
		if (!message.SendTo(pConnection))
			break;
	}
	_pStatCursor = pFirst;
}

void MgrStats::DumpStats(IPCWrapper* pConnection)
{
	if (!pConnection)
		return;
	if (_iFrameRead == _iFrameWrite)
	{
		pConnection->Send("{}", sizeof("{}"));
		return;
	}
	static const char kHead[] = "{ \"name\" : \"";
	static const char kValues[] = "\", \"value\":[";
	static const char kTail[] = "]}";
	Stat* pFirst = GetFirstStat();
	for (Stat* pStat = pFirst; pStat; pStat = pStat->GetNext())
	{
		if (pStat != pFirst)
			pConnection->Send(",", 1);
		pConnection->Send(kHead, sizeof(kHead) - 1);
		pConnection->Send(pStat->GetName().data(), static_cast<int>(pStat->GetName().size()));
		pConnection->Send(kValues, sizeof(kValues) - 1);
		for (int iSlot = _iFrameRead; iSlot != _iFrameWrite; iSlot = NextSlot(iSlot))
		{
			if (iSlot != _iFrameRead)
				pConnection->Send(",", 1);
			pStat->DumpHitCount(pConnection, iSlot);
		}
		pConnection->Send(kTail, sizeof(kTail) - 1);
	}
	_iFrameRead = _iFrameWrite;
}

void MgrStats::DumpStat(IPCWrapper* pConnection, Stat* pStat, int iFrameEnd)
{
	if (!pConnection || !pStat || !Stat::IsSlot(iFrameEnd))
		return;
	WireMessage samples;
	int nFrames = 0;
	for (int iSlot = _iFrameRead; iSlot != iFrameEnd; iSlot = NextSlot(iSlot), ++nFrames)
	{
		if (pStat->GetKind() == kKindHits)
			samples.Add<int32_t>(pStat->GetHitCount(iSlot));
		else if (pStat->GetKind() == kKindTime)
			samples.Add<double>(pStat->GetTime(iSlot));
	}
	const uint32_t nElementSize = pStat->GetKind() == kKindHits   ? sizeof(int32_t)
	                              : pStat->GetKind() == kKindTime ? sizeof(double)
	                                                              : 0;
	WireMessage header;
	header.Add<uint8_t>(kMessageSamples).Add<int32_t>(pStat->GetId()).Add<uint32_t>(nFrames * nElementSize);
	if (header.SendTo(pConnection) && nFrames * nElementSize > 0)
		samples.SendTo(pConnection);
}

void MgrStats::NextFrame()
{
	const int iNext = NextSlot(_iFrameWrite);
	if (iNext == _iFrameRead)
		_iFrameRead = NextSlot(_iFrameRead);
	for (Stat* pStat = GetFirstStat(); pStat; pStat = pStat->GetNext())
		pStat->ClearSlot(iNext);
	_iFrameWrite = iNext;
}
