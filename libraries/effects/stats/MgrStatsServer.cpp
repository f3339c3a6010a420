#include "effects/MgrStats.h"

#include "IPCWrapperTCPIP.h"

#include <chrono>
#include <memory>

bool MgrStats::StartServer(int iPort)
{
	if (_bServerRunning)
		return false;
	if (_hThreadServer.joinable())
		_hThreadServer.join();
	_bStopServer = false;
	_iPortServer = iPort;
	_bServerRunning = true;
	_hThreadServer = std::thread(
	    [this]
	    {
		    ServerLoop();
		    std::lock_guard<std::mutex> lock(_mutexServer);
		    _bServerRunning = false;
		    _cvServer.notify_all();
	    });
	return true;
}

void MgrStats::StopServer()
{
	_bStopServer = true;
	{
		std::unique_lock<std::mutex> lock(_mutexServer);
		if (_pConnection)
			_pConnection->Cancel();
		_cvServer.notify_all();
		// A thread released by Shutdown cannot be joined, so the end is signalled.
		_cvServer.wait(lock, [this] { return !_bServerRunning; });
	}
	if (_hThreadServer.joinable())
		_hThreadServer.join();
}

void MgrStats::ServerLoop()
{
	while (!_bStopServer)
	{
		auto pConnection = std::make_unique<IPCWrapperTCPIP>(_iPortServer, _iPortServer);
		if (!_PublishConnection(pConnection.get()))
			break;
		const bool bListened = pConnection->Listen();
		if (bListened)
			_ServeViewer(pConnection.get());
		{
			std::lock_guard<std::mutex> lock(_mutexServer);
			_pConnection = nullptr;
		}
		pConnection.reset();
		if (!bListened)
			_WaitBeforeRetry();
	}
}

bool MgrStats::_PublishConnection(IPCWrapper* pConnection)
{
	std::lock_guard<std::mutex> lock(_mutexServer);
	if (_bStopServer)
		return false;
	_pConnection = pConnection;
	return true;
}

void MgrStats::_ServeViewer(IPCWrapper* pConnection)
{
	_pStatCursor = GetFirstStat();
	SendNewStats(pConnection, nullptr);
	// The viewer's acknowledgement, or its close: either way this viewer is done.
	char cAcknowledgement = 0;
	pConnection->Receive(&cAcknowledgement, 1);
}

void MgrStats::_WaitBeforeRetry()
{
	std::unique_lock<std::mutex> lock(_mutexServer);
	_cvServer.wait_for(lock, std::chrono::milliseconds(1000), [this] { return _bStopServer.load(); });
}
