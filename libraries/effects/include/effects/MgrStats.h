#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

#include "effects/Export.h"
#include "effects/IPCWrapper.h"
#include "effects/Stat.h"

// The process-wide registry of statistics. A viewer on the same machine learns which statistics
// exist from the server thread; the owner dumps frame samples through any IPCWrapper.
class TARSEL_EFFECTS_EXPORT MgrStats
{
public:
	enum Kind
	{
		kKindHits = 0,
		kKindTime = 1,
	};
	static constexpr int kDefaultPort = 8881;

	// Created on first call, when MGR_STATS_DUMP_TCPIP starts the server thread or else
	// MGR_STATS_DUMP_FILE opens the dump file. Never deleted.
	static MgrStats* GetMgrStats();
	// The port MGR_STATS_DUMP_TCPIP names: a number from 1 to 65535, otherwise the default.
	static int ParseServerPort(char const* szValue);

	MgrStats();
	// Stops the server thread first: it works on this object.
	~MgrStats();
	MgrStats(MgrStats const&) = delete;
	MgrStats& operator=(MgrStats const&) = delete;

	// Safe to call from several threads; the server thread sees a statistic only once it is complete.
	Stat* CreateNewStat(char const* szLabel, std::string const& sName, int iKind);
	// Descriptors of the statistics newer than pStop, newest first; stops at the first failed send.
	void SendNewStats(IPCWrapper* pConnection, Stat* pStop);
	// The text of every frame not yet dumped; the read position then catches up with the write position.
	void DumpStats(IPCWrapper* pConnection);
	// One sample block of the frames from the read position up to iFrameEnd (wrapping round the ring).
	void DumpStat(IPCWrapper* pConnection, Stat* pStat, int iFrameEnd);
	// Moves to the next frame slot and clears it; the oldest frame is dropped when the ring is full.
	// Call it on the thread that triggers statistics.
	void NextFrame();

	// Serves viewers one after another on the loopback port until StopServer.
	void ServerLoop();
	// False when a server thread is already running.
	bool StartServer(int iPort);
	// Ends the server thread (within 2 seconds) and waits for it.
	void StopServer();
	bool IsServerRunning() const { return _bServerRunning; }
	int GetServerPort() const { return _iPortServer; }

	// Releases the server thread (without stopping it) and closes the dump file; safe to repeat.
	void Shutdown();
	void Dump() {}

	Stat* GetFirstStat() const { return _pStatFirst.load(std::memory_order_acquire); }
	Stat* GetStatCursor() const { return _pStatCursor; }
	int GetCountStats() const { return _iCountStats; }
	int GetFrameRead() const { return _iFrameRead; }
	int GetFrameWrite() const { return _iFrameWrite; }
	std::FILE* GetDumpFile() const { return _pFileDump; }

private:
	void _StartFromEnvironment();
	// Publishes a new connection unless a stop was asked; the check and the publication share the
	// lock with StopServer, so a stop never misses a connection that is about to block.
	bool _PublishConnection(IPCWrapper* pConnection);
	void _ServeViewer(IPCWrapper* pConnection);
	void _WaitBeforeRetry();

	std::atomic<Stat*> _pStatFirst;
	std::atomic<Stat*> _pStatCursor;
	std::atomic<int> _iCountStats;
	std::thread _hThreadServer;
	IPCWrapper* _pConnection;
	std::atomic<bool> _bStopServer;
	int _iFrameRead;
	int _iFrameWrite;

	std::atomic<int> _iPortServer;
	std::atomic<bool> _bServerRunning;
	std::FILE* _pFileDump;
	std::mutex _mutexCreate;
	// Guards _pConnection and the Cancel of it, and signals the end of the server thread.
	std::mutex _mutexServer;
	std::condition_variable _cvServer;
};
