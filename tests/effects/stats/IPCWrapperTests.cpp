#include "StatsTestSupport.h"

#include "IPCWrapperTCPIP.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>

using namespace StatsTesting;

namespace
{

constexpr Milliseconds kPromptly(2000);

// Waits (bounded) for a Listen on another thread to bind.
int WaitForBoundPort(const IPCWrapperTCPIP& listener)
{
	const auto deadline = Clock::now() + kPromptly;
	while (listener.GetPortBound() == 0 && Clock::now() < deadline)
		std::this_thread::sleep_for(Milliseconds(1));
	return listener.GetPortBound();
}

// A server and a client wrapper connected over loopback, on a port the system picks.
struct ConnectedPair
{
	IPCWrapperTCPIP server{0, 0};
	std::unique_ptr<IPCWrapperTCPIP> pClient;

	bool Open()
	{
		auto listened = std::async(std::launch::async, [this] { return server.Listen(); });
		pClient = std::make_unique<IPCWrapperTCPIP>(WaitForBoundPort(server), WaitForBoundPort(server));
		bool bConnected = false;
		for (const auto deadline = Clock::now() + kPromptly; !bConnected && Clock::now() < deadline;)
			bConnected = pClient->Connect();
		if (!bConnected)
			server.Cancel();
		return listened.wait_for(kPromptly) == std::future_status::ready && listened.get() && bConnected;
	}
};

} // namespace

TEST(IPCWrapperTCPIP, MovesBytesAndSeesThePeerClose)
{
	char ac[8] = {};
	IPCWrapperTCPIP unconnected(0, 0);
	EXPECT_EQ(unconnected.Receive(ac, 0), 0);
	EXPECT_EQ(unconnected.Send(ac, 0), 0);
	EXPECT_EQ(unconnected.Receive(ac, 1), -1);

	ConnectedPair pair;
	ASSERT_TRUE(pair.Open());
	IPCWrapperTCPIP& client = *pair.pClient;
	EXPECT_EQ(client.Send(ac, 0), 0);
	EXPECT_EQ(pair.server.Receive(ac, 0), 0);
	EXPECT_EQ(pair.server.GetBytesAvailable(), 0u);
	EXPECT_EQ(pair.server.Send("abc", 3), 3);
	pair.server.Disconnect();
	EXPECT_EQ(client.Receive(ac, 8), 3) << "the bytes before the close arrive";
	EXPECT_EQ(client.Receive(ac, 1), -1) << "a close before any byte is a failure";
	EXPECT_FALSE(client.Poll());
	EXPECT_EQ(client.GetSocket(), -1);
}

TEST(IPCWrapperTCPIP, ListenFailsWhenTheRangeIsTaken)
{
	const int iPort = PickFreePort();
	PortOccupant occupant(iPort);
	ASSERT_TRUE(occupant.bHeld);
	IPCWrapperTCPIP taken(iPort, iPort);
	EXPECT_FALSE(taken.Listen());
	EXPECT_EQ(taken.GetPortBound(), -1);
	IPCWrapperTCPIP reversed(iPort + 1, iPort);
	EXPECT_FALSE(reversed.Listen());
}

TEST(IPCWrapperTCPIP, CancelWakesABlockedListen)
{
	IPCWrapperTCPIP listener(0, 0);
	auto listened = std::async(std::launch::async, [&] { return listener.Listen(); });
	ASSERT_GT(WaitForBoundPort(listener), 0);
	listener.Cancel();
	ASSERT_EQ(listened.wait_for(kPromptly), std::future_status::ready);
	EXPECT_FALSE(listened.get());
	EXPECT_EQ(listener.GetPortBound(), -1);

	IPCWrapperTCPIP cancelledFirst(0, 0);
	cancelledFirst.Cancel();
	EXPECT_FALSE(cancelledFirst.Listen());
}
