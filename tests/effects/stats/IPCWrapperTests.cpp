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

bool ConnectWithin(IPCWrapperTCPIP& client, Milliseconds timeout = kPromptly)
{
	const auto deadline = Clock::now() + timeout;
	while (Clock::now() < deadline)
	{
		if (client.Connect())
			return true;
		std::this_thread::sleep_for(Milliseconds(1));
	}
	return false;
}

// A server and a client wrapper connected over loopback.
struct ConnectedPair
{
	IPCWrapperTCPIP server{0, 0};
	std::unique_ptr<IPCWrapperTCPIP> pClient;

	bool Open()
	{
		auto listened = std::async(std::launch::async, [this] { return server.Listen(); });
		const int iPort = WaitForBoundPort(server);
		if (iPort <= 0)
			return false;
		pClient = std::make_unique<IPCWrapperTCPIP>(iPort, iPort);
		const bool bConnected = ConnectWithin(*pClient);
		if (!bConnected)
			server.Cancel();
		return listened.wait_for(kPromptly) == std::future_status::ready && listened.get() && bConnected;
	}
};

} // namespace

TEST(IPCWrapperTCPIP, ConnectedPairExchangesBytesBothWays)
{
	ConnectedPair pair;
	ASSERT_TRUE(pair.Open());
	IPCWrapperTCPIP& client = *pair.pClient;
	EXPECT_TRUE(client.Poll());
	EXPECT_TRUE(pair.server.Poll());

	EXPECT_EQ(pair.server.Send("hello", 5), 5);
	char ac[8] = {};
	EXPECT_EQ(client.Receive(ac, 5), 5);
	EXPECT_EQ(std::string(ac, 5), "hello");

	EXPECT_EQ(client.Send("!", 1), 1);
	EXPECT_EQ(pair.server.Receive(ac, 1), 1);
	EXPECT_EQ(ac[0], '!');

	// A sender that pauses mid-message: the receiver waits for the rest.
	auto late = std::async(std::launch::async,
	                       [&]
	                       {
		                       pair.server.Send("ab", 2);
		                       std::this_thread::sleep_for(Milliseconds(50));
		                       return pair.server.Send("cd", 2);
	                       });
	EXPECT_EQ(client.Receive(ac, 4), 4);
	EXPECT_EQ(std::string(ac, 4), "abcd");
	EXPECT_EQ(late.get(), 2);
}

TEST(IPCWrapperTCPIP, ZeroByteTransfersTouchNothing)
{
	IPCWrapperTCPIP unconnected(0, 0);
	char c = 0;
	EXPECT_EQ(unconnected.Receive(&c, 0), 0);
	EXPECT_EQ(unconnected.Send(&c, 0), 0);
	EXPECT_EQ(unconnected.Receive(&c, 1), -1);
	EXPECT_EQ(unconnected.Send(&c, 1), -1);
	EXPECT_EQ(unconnected.GetBytesAvailable(), 0u);
	EXPECT_FALSE(unconnected.Poll());

	ConnectedPair pair;
	ASSERT_TRUE(pair.Open());
	EXPECT_EQ(pair.pClient->Send(&c, 0), 0);
	EXPECT_EQ(pair.server.Receive(&c, 0), 0);
	EXPECT_EQ(pair.server.GetBytesAvailable(), 0u) << "nothing was sent";
	EXPECT_EQ(pair.pClient->Receive(&c, -1), -1);
}

TEST(IPCWrapperTCPIP, PeerCloseEndsReceiveAndPoll)
{
	ConnectedPair pair;
	ASSERT_TRUE(pair.Open());
	IPCWrapperTCPIP& client = *pair.pClient;
	ASSERT_EQ(pair.server.Send("xyz", 3), 3);
	pair.server.Disconnect();
	EXPECT_EQ(pair.server.GetSocket(), -1);

	char ac[10];
	EXPECT_EQ(client.Receive(ac, 10), 3) << "the bytes before the close arrive";
	EXPECT_EQ(client.Receive(ac, 1), -1) << "a close before any byte is a failure";
	EXPECT_FALSE(client.Poll());
	EXPECT_EQ(client.GetSocket(), -1) << "Poll disconnects from a closed peer";
	EXPECT_EQ(client.Send("a", 1), -1);
}

TEST(IPCWrapperTCPIP, ConnectWithoutAServerFails)
{
	const int iPort = PickFreePort();
	ASSERT_GT(iPort, 0);
	IPCWrapperTCPIP client(iPort, iPort);
	const auto deadline = Clock::now() + kPromptly;
	bool bConnected = client.Connect();
	while (!bConnected && client.GetSocket() >= 0 && Clock::now() < deadline)
		bConnected = client.Connect();
	EXPECT_FALSE(bConnected);
	EXPECT_EQ(client.GetSocket(), -1) << "a refused connection leaves no socket";
}

TEST(IPCWrapperTCPIP, ListenFailsWhenNoPortOfTheRangeIsFree)
{
	const int iPort = PickFreePort();
	PortOccupant occupant(iPort);
	ASSERT_TRUE(occupant.IsHeld());
	IPCWrapperTCPIP listener(iPort, iPort);
	EXPECT_FALSE(listener.Listen());
	EXPECT_EQ(listener.GetPortBound(), -1);

	IPCWrapperTCPIP reversed(iPort + 1, iPort);
	EXPECT_FALSE(reversed.Listen());
	EXPECT_EQ(reversed.GetPortBound(), -1);
	IPCWrapperTCPIP beyond(65535, 65536);
	EXPECT_FALSE(beyond.Listen());
}

TEST(IPCWrapperTCPIP, ListenMovesPastAPortInUse)
{
	// Two neighbouring free ports, of which the first is then taken.
	std::unique_ptr<PortOccupant> pOccupant;
	int iPort = -1;
	for (int iAttempt = 0; iAttempt < 50 && iPort < 0; ++iAttempt)
	{
		const int iCandidate = PickFreePort();
		if (iCandidate <= 0 || iCandidate >= 65535 || !PortOccupant(iCandidate + 1).IsHeld())
			continue;
		pOccupant = std::make_unique<PortOccupant>(iCandidate);
		if (pOccupant->IsHeld())
			iPort = iCandidate;
	}
	ASSERT_GT(iPort, 0) << "no two neighbouring free ports";

	IPCWrapperTCPIP listener(iPort, iPort + 1);
	auto listened = std::async(std::launch::async, [&] { return listener.Listen(); });
	EXPECT_EQ(WaitForBoundPort(listener), iPort + 1);
	listener.Cancel();
	ASSERT_EQ(listened.wait_for(kPromptly), std::future_status::ready);
	EXPECT_FALSE(listened.get());
}

TEST(IPCWrapperTCPIP, CancelWakesABlockedListenOrReceive)
{
	IPCWrapperTCPIP listener(0, 0);
	auto listened = std::async(std::launch::async, [&] { return listener.Listen(); });
	ASSERT_GT(WaitForBoundPort(listener), 0);
	const auto start = Clock::now();
	listener.Cancel();
	ASSERT_EQ(listened.wait_for(kPromptly), std::future_status::ready);
	EXPECT_FALSE(listened.get());
	EXPECT_EQ(listener.GetPortBound(), -1);
	EXPECT_LT(Clock::now() - start, kPromptly);

	IPCWrapperTCPIP cancelledFirst(0, 0);
	cancelledFirst.Cancel();
	EXPECT_FALSE(cancelledFirst.Listen()) << "a cancelled wrapper never blocks";

	ConnectedPair pair;
	ASSERT_TRUE(pair.Open());
	auto received = std::async(std::launch::async,
	                           [&]
	                           {
		                           char c;
		                           return pair.server.Receive(&c, 1);
	                           });
	std::this_thread::sleep_for(Milliseconds(20));
	pair.server.Cancel();
	ASSERT_EQ(received.wait_for(kPromptly), std::future_status::ready);
	EXPECT_EQ(received.get(), -1);
	EXPECT_FALSE(pair.pClient->Poll()) << "the peer sees the cancelled connection close";
}
