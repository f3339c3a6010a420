#pragma once

#include <cstdint>

#include "effects/Export.h"

// A byte-stream connection between the statistics registry and a viewer. Failures never throw:
// operations answer false, 0 or -1.
class TARSEL_EFFECTS_EXPORT IPCWrapper
{
public:
	virtual ~IPCWrapper() {}

	// Makes a blocked Listen or Receive on another thread return; safe to call from any thread.
	virtual void Cancel() = 0;
	// Server side: waits for one viewer (blocking).
	virtual bool Listen() = 0;
	// Client side, non-blocking: false while the connection is pending or after it failed.
	virtual bool Connect() = 0;
	virtual uint32_t GetBytesAvailable() = 0;
	// Without waiting: false once the peer has closed or the connection failed.
	virtual bool Poll() = 0;
	virtual void Disconnect() = 0;
	// Both move exactly size bytes unless the peer closes or an error occurs; -1 when nothing moved.
	virtual int Receive(char* buffer, int size) = 0;
	virtual int Send(char const* buffer, int size) = 0;
};
