#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "effects/IPCWrapper.h"

namespace StatsTesting
{

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

// A loopback port that nothing held a moment ago. It lies below the ephemeral range: a viewer that
// retries against a port from that range while the server is between viewers could be given the
// same port as its own source and connect to itself. Other test processes share the machine, so
// the search starts at a random place and no test relies on a fixed port.
inline int PickFreePort()
{
	int iEphemeralFirst = 32768;
	std::ifstream("/proc/sys/net/ipv4/ip_local_port_range") >> iEphemeralFirst;
	const int iFirst = std::max(1024, iEphemeralFirst - 16384);
	const int nPorts = std::max(1, iEphemeralFirst - iFirst);
	const int iStart = static_cast<int>(std::random_device()() % nPorts);
	for (int i = 0; i < nPorts; ++i)
	{
		const int iPort = iFirst + (iStart + i) % nPorts;
		const int iSocket = socket(AF_INET, SOCK_STREAM, 0);
		sockaddr_in address{};
		address.sin_family = AF_INET;
		address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
		address.sin_port = htons(static_cast<uint16_t>(iPort));
		const bool bFree = bind(iSocket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
		close(iSocket);
		if (bFree)
			return iPort;
	}
	return -1;
}

// Holds a loopback port with a plain listening socket.
class PortOccupant
{
public:
	explicit PortOccupant(int iPort) : _iSocket(socket(AF_INET, SOCK_STREAM, 0))
	{
		sockaddr_in address{};
		address.sin_family = AF_INET;
		address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
		address.sin_port = htons(static_cast<uint16_t>(iPort));
		// Like the server, so that a connection the server left in TIME_WAIT does not get in the way.
		const int iOn = 1;
		setsockopt(_iSocket, SOL_SOCKET, SO_REUSEADDR, &iOn, sizeof(iOn));
		_bHeld = bind(_iSocket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
		         listen(_iSocket, 1) == 0;
	}
	~PortOccupant() { close(_iSocket); }
	PortOccupant(const PortOccupant&) = delete;
	PortOccupant& operator=(const PortOccupant&) = delete;
	bool IsHeld() const { return _bHeld; }

private:
	int _iSocket;
	bool _bHeld = false;
};

// Keeps every byte sent through it, for the dump operations that need no socket.
class RecordingConnection : public IPCWrapper
{
public:
	void Cancel() override {}
	bool Listen() override { return false; }
	bool Connect() override { return false; }
	uint32_t GetBytesAvailable() override { return 0; }
	bool Poll() override { return true; }
	void Disconnect() override {}
	int Receive(char*, int) override { return -1; }
	int Send(char const* buffer, int size) override
	{
		sText.append(buffer, size);
		return size;
	}
	std::string Take()
	{
		std::string s;
		s.swap(sText);
		return s;
	}

	std::string sText;
};

struct Descriptor
{
	std::string sName;
	int iKind;
	int32_t iId;
};

// A viewer on a plain socket, so that the server is checked against code it does not share.
// Every wait is bounded.
class Viewer
{
public:
	~Viewer() { Close(); }

	// Retries while the server is between viewers (nothing listens then).
	bool Connect(int iPort, Milliseconds timeout = Milliseconds(3000))
	{
		const auto deadline = Clock::now() + timeout;
		while (Clock::now() < deadline)
		{
			_iSocket = socket(AF_INET, SOCK_STREAM, 0);
			sockaddr_in address{};
			address.sin_family = AF_INET;
			address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
			address.sin_port = htons(static_cast<uint16_t>(iPort));
			if (connect(_iSocket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0)
				return true;
			Close();
			std::this_thread::sleep_for(Milliseconds(2));
		}
		return false;
	}

	void Close()
	{
		if (_iSocket >= 0)
			close(_iSocket);
		_iSocket = -1;
	}

	bool Send(const std::string& s)
	{
		return send(_iSocket, s.data(), s.size(), MSG_NOSIGNAL) == ssize_t(s.size());
	}

	// Up to n bytes; fewer when the peer closes or nothing arrives before the timeout.
	std::string Read(size_t n, Milliseconds timeout = Milliseconds(3000))
	{
		std::string s;
		const auto deadline = Clock::now() + timeout;
		while (s.size() < n && _WaitReadable(deadline))
		{
			char ac[4096];
			const ssize_t nRead = recv(_iSocket, ac, std::min(sizeof(ac), n - s.size()), 0);
			if (nRead <= 0)
				break;
			s.append(ac, nRead);
		}
		return s;
	}

	// True when the server closes its side before the timeout.
	bool WaitForClose(Milliseconds timeout = Milliseconds(3000))
	{
		const auto deadline = Clock::now() + timeout;
		char c;
		while (_WaitReadable(deadline))
		{
			const ssize_t nRead = recv(_iSocket, &c, 1, 0);
			if (nRead <= 0)
				return true;
		}
		return false;
	}

	// Descriptors up to and including the oldest statistic (id 0), which a pass always sends last.
	bool ReadDescriptors(std::vector<Descriptor>& descriptors)
	{
		for (;;)
		{
			const std::string head = Read(5);
			if (head.size() != 5 || head[0] != 1)
				return false;
			uint32_t nName = 0;
			std::memcpy(&nName, head.data() + 1, 4);
			const std::string rest = Read(nName + 5);
			if (rest.size() != nName + 5)
				return false;
			Descriptor descriptor{rest.substr(0, nName), rest[nName], 0};
			std::memcpy(&descriptor.iId, rest.data() + nName + 1, 4);
			descriptors.push_back(descriptor);
			if (descriptor.iId == 0)
				return true;
		}
	}

private:
	bool _WaitReadable(Clock::time_point deadline)
	{
		const auto left = std::chrono::duration_cast<Milliseconds>(deadline - Clock::now()).count();
		pollfd entry{_iSocket, POLLIN, 0};
		return left > 0 && poll(&entry, 1, static_cast<int>(left)) > 0;
	}

	int _iSocket = -1;
};

} // namespace StatsTesting
