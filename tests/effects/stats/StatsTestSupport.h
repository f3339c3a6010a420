#pragma once

#include <arpa/inet.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "effects/IPCWrapper.h"

namespace StatsTesting
{

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

inline sockaddr* Loopback(int iPort)
{
	static thread_local sockaddr_in address;
	address = sockaddr_in{};
	address.sin_family = AF_INET;
	address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
	address.sin_port = htons(static_cast<uint16_t>(iPort));
	return reinterpret_cast<sockaddr*>(&address);
}

// Holds a loopback port with a listening socket (address reuse as the server has it).
struct PortOccupant
{
	explicit PortOccupant(int iPort) : iSocket(socket(AF_INET, SOCK_STREAM, 0))
	{
		const int iOn = 1;
		setsockopt(iSocket, SOL_SOCKET, SO_REUSEADDR, &iOn, sizeof(iOn));
		bHeld = bind(iSocket, Loopback(iPort), sizeof(sockaddr_in)) == 0 && listen(iSocket, 1) == 0;
	}
	~PortOccupant() { close(iSocket); }
	int iSocket;
	bool bHeld;
};

// A free port below the ephemeral range: a viewer retrying against an ephemeral port while nothing
// listens could be given it as its own source port and connect to itself. Other developers test on
// this machine too, hence the random start.
inline int PickFreePort()
{
	int iEphemeralFirst = 32768;
	std::ifstream("/proc/sys/net/ipv4/ip_local_port_range") >> iEphemeralFirst;
	const int iFirst = std::max(1024, iEphemeralFirst - 16384),
	          nPorts = std::max(1, iEphemeralFirst - iFirst);
	const int iStart = static_cast<int>(std::random_device()() % nPorts);
	for (int i = 0; i < nPorts; ++i)
		if (PortOccupant(iFirst + (iStart + i) % nPorts).bHeld)
			return iFirst + (iStart + i) % nPorts;
	return -1;
}

// Keeps every byte sent through it.
struct RecordingConnection : IPCWrapper
{
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
	std::string Take() { return std::exchange(sText, std::string()); }
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
	~Viewer() { close(_iSocket); }

	// Retries while the server is between viewers (nothing listens then).
	bool Connect(int iPort)
	{
		for (const auto deadline = Clock::now() + Milliseconds(3000); Clock::now() < deadline;)
		{
			close(_iSocket);
			_iSocket = socket(AF_INET, SOCK_STREAM, 0);
			if (connect(_iSocket, Loopback(iPort), sizeof(sockaddr_in)) == 0)
				return true;
			std::this_thread::sleep_for(Milliseconds(2));
		}
		return false;
	}
	bool Send(const std::string& s)
	{
		return send(_iSocket, s.data(), s.size(), MSG_NOSIGNAL) == ssize_t(s.size());
	}

	// Up to n bytes; fewer when the server closes or pauses for longer than the timeout.
	std::string Read(size_t n, Milliseconds timeout = Milliseconds(3000))
	{
		std::string s;
		char ac[4096];
		pollfd entry{_iSocket, POLLIN, 0};
		for (ssize_t nRead = 1; s.size() < n && nRead > 0 && poll(&entry, 1, int(timeout.count())) > 0;)
			if ((nRead = recv(_iSocket, ac, std::min(sizeof(ac), n - s.size()), 0)) > 0)
				s.append(ac, nRead);
		return s;
	}
	// True when the server closes its side in time; whatever it sent first is skipped.
	bool WaitForClose()
	{
		char ac[256];
		pollfd entry{_iSocket, POLLIN, 0};
		while (poll(&entry, 1, 3000) > 0)
			if (recv(_iSocket, ac, sizeof(ac), 0) <= 0)
				return true;
		return false;
	}
	// Up to the oldest statistic (id 0), which a pass always sends last.
	bool ReadDescriptors(std::vector<Descriptor>& descriptors)
	{
		for (Descriptor d{"", 0, -1}; d.iId != 0; descriptors.push_back(d))
		{
			const std::string head = Read(5);
			if (head.size() != 5 || head[0] != 1)
				return false;
			uint32_t nName = 0;
			std::memcpy(&nName, &head[1], 4);
			const std::string rest = Read(nName + 5);
			if (rest.size() != nName + 5)
				return false;
			d = {rest.substr(0, nName), rest[nName], 0};
			std::memcpy(&d.iId, &rest[nName + 1], 4);
		}
		return true;
	}

private:
	int _iSocket = -1;
};

} // namespace StatsTesting
