#pragma once

#include "effects/IPCWrapper.h"

#include <atomic>
#include <cstdint>
#include <memory>

// A TCP connection on the loopback address. The server side listens on the first free port of a
// range; the client side connects to the first port of the range.
class IPCWrapperTCPIP : public IPCWrapper
{
public:
	IPCWrapperTCPIP(uint32_t iPortFirst, uint32_t iPortLast);
	~IPCWrapperTCPIP() override;
	IPCWrapperTCPIP(IPCWrapperTCPIP const&) = delete;
	IPCWrapperTCPIP& operator=(IPCWrapperTCPIP const&) = delete;

	// Shuts an open connection down, or wakes a Listen blocked in accept by connecting to it.
	// The handle itself stays with the owning thread, which closes it.
	void Cancel() override;
	bool Listen() override;
	bool Connect() override;
	uint32_t GetBytesAvailable() override;
	bool Poll() override;
	void Disconnect() override;
	int Receive(char* buffer, int size) override;
	int Send(char const* buffer, int size) override;

	int GetSocket() const;
	// 0 before Listen, -1 after a failure, otherwise the port bound (also when the range starts at 0).
	int GetPortBound() const { return _iPortBound; }

private:
	struct State;

	bool _Listen();
	int _BindInRange();
	bool _FailListen(int iSocket);
	void _WakeListener();

	std::unique_ptr<State> _pState;
	std::atomic<int> _iPortBound;
	uint32_t _iPortFirst;
	uint32_t _iPortLast;
	std::atomic<bool> _bCancelled;
	// Set for the span of Listen, so that Cancel knows whether an accept may need waking.
	std::atomic<bool> _bListening;
};
