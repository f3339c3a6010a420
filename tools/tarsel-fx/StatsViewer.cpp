#include "StatsViewer.h"

#include "IPCWrapperTCPIP.h"
#include "core/Console.h"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <thread>

namespace Tarsel::Fx
{
namespace
{

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

// Refused connections are retried for this long: the server listens again only after each viewer.
constexpr Milliseconds kConnectTimeout(500);
// The server sends its descriptors at once and has no count, so a pause ends the list.
constexpr Milliseconds kQuiet(200);
constexpr Milliseconds kPollInterval(2);
// No statistic name comes near this; a larger length means the stream is not a descriptor.
constexpr uint32_t kNameLengthMax = 1 << 16;

struct Descriptor
{
	std::string sName;
	uint8_t iKind = 0;
	int32_t iId = 0;
};

bool ConnectWithin(IPCWrapperTCPIP& connection)
{
	const auto deadline = Clock::now() + kConnectTimeout;
	while (!connection.Connect())
	{
		if (Clock::now() > deadline)
			return false;
		std::this_thread::sleep_for(kPollInterval);
	}
	return true;
}

bool WaitForBytes(IPCWrapperTCPIP& connection)
{
	const auto deadline = Clock::now() + kQuiet;
	while (connection.GetBytesAvailable() == 0)
	{
		if (!connection.Poll() || Clock::now() > deadline)
			return false;
		std::this_thread::sleep_for(kPollInterval);
	}
	return true;
}

template <typename T>
bool ReceiveValue(IPCWrapperTCPIP& connection, T& value)
{
	char ac[sizeof(T)];
	if (connection.Receive(ac, sizeof(T)) != static_cast<int>(sizeof(T)))
		return false;
	std::memcpy(&value, ac, sizeof(T));
	return true;
}

bool ReceiveDescriptor(IPCWrapperTCPIP& connection, Descriptor& descriptor)
{
	uint8_t iType = 0;
	uint32_t nName = 0;
	if (!ReceiveValue(connection, iType) || iType != 1 || !ReceiveValue(connection, nName) ||
	    nName > kNameLengthMax)
		return false;
	descriptor.sName.resize(nName);
	if (nName > 0 &&
	    connection.Receive(&descriptor.sName[0], static_cast<int>(nName)) != static_cast<int>(nName))
		return false;
	return ReceiveValue(connection, descriptor.iKind) && ReceiveValue(connection, descriptor.iId);
}

std::string KindName(uint8_t iKind)
{
	return iKind == 1 ? "hits" : iKind == 2 ? "time" : "kind" + std::to_string(iKind);
}

} // namespace

int ViewStats(int iPort, IMgrConsole* console, std::ostream& out)
{
	IPCWrapperTCPIP connection(iPort, iPort);
	if (!ConnectWithin(connection))
	{
		console->Error("tarsel-fx: no statistics server on port %d\n", iPort);
		return 1;
	}
	while (WaitForBytes(connection))
	{
		Descriptor descriptor;
		if (!ReceiveDescriptor(connection, descriptor))
		{
			console->Error("tarsel-fx: the server on port %d sent something other than statistics\n", iPort);
			return 1;
		}
		out << descriptor.iId << ' ' << KindName(descriptor.iKind) << ' ' << descriptor.sName << '\n';
	}
	const char cAcknowledgement = 1;
	connection.Send(&cAcknowledgement, 1);
	return 0;
}

} // namespace Tarsel::Fx
