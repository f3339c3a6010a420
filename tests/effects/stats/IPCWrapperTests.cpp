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

template <typename T>
bool Ready(std::future<T>& future)
{
	return future.wait_for(kPromptly) == std::future_status::ready;
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
		return Ready(listened) && listened.get() && bConnected;
	}
};

} // namespace

TEST(IPCWrapperTCPIP, MovesBytesBothWaysAndSeesThePeerClose)
{
	char ac[8] = {};
	IPCWrapperTCPIP unconnected(0, 0);
	EXPECT_EQ(unconnected.Receive(ac, 0), 0);
	EXPECT_EQ(unconnected.Send(ac, 0), 0);
	EXPECT_EQ(unconnected.Receive(ac, 1), -1);
	EXPECT_FALSE(unconnected.Poll());

	ConnectedPair pair;
	ASSERT_TRUE(pair.Open());
	IPCWrapperTCPIP& client = *pair.pClient;
	EXPECT_TRUE(client.Poll());
	EXPECT_EQ(client.Send(ac, 0), 0);
	EXPECT_EQ(pair.server.Receive(ac, 0), 0);
	EXPECT_EQ(pair.server.GetBytesAvailable(), 0u);
	EXPECT_EQ(client.Send("!", 1), 1);
	EXPECT_EQ(pair.server.Receive(ac, 1), 1);

	// A sender that pauses mid-message: the receiver waits for the rest.
	auto sent = std::async(std::launch::async,
	                       [&]
	                       {
		                       pair.server.Send("ab", 2);
		                       std::this_thread::sleep_for(Milliseconds(50));
		                       return pair.server.Send("cde", 3);
	                       });
	EXPECT_EQ(client.Receive(ac, 4), 4);
	EXPECT_EQ(std::string(ac, 4), "abcd");
	ASSERT_TRUE(Ready(sent));
	pair.server.Disconnect();
	EXPECT_EQ(client.Receive(ac, 8), 1) << "the bytes before the close arrive";
	EXPECT_EQ(client.Receive(ac, 1), -1) << "a close before any byte is a failure";
	EXPECT_FALSE(client.Poll());
	EXPECT_EQ(client.GetSocket(), -1);
	EXPECT_EQ(client.Send("a", 1), -1);
}

TEST(IPCWrapperTCPIP, ListenTakesTheFirstFreePortOfTheRange)
{
	const int iPort = PickFreePort();
	PortOccupant occupant(iPort);
	ASSERT_TRUE(occupant.bHeld);
	IPCWrapperTCPIP taken(iPort, iPort);
	EXPECT_FALSE(taken.Listen());
	EXPECT_EQ(taken.GetPortBound(), -1);
	IPCWrapperTCPIP reversed(iPort + 1, iPort);
	EXPECT_FALSE(reversed.Listen());

	// The next port may be taken by someone else; then the range must fail as well.
	IPCWrapperTCPIP range(iPort, iPort + 1);
	auto listened = std::async(std::launch::async, [&] { return range.Listen(); });
	const int iBound = WaitForBoundPort(range);
	EXPECT_TRUE(iBound == iPort + 1 || iBound == -1) << iBound;
	range.Cancel();
	ASSERT_TRUE(Ready(listened));
	EXPECT_FALSE(listened.get());
}

TEST(IPCWrapperTCPIP, CancelWakesABlockedListenOrReceive)
{
	IPCWrapperTCPIP listener(0, 0);
	auto listened = std::async(std::launch::async, [&] { return listener.Listen(); });
	ASSERT_GT(WaitForBoundPort(listener), 0);
	listener.Cancel();
	ASSERT_TRUE(Ready(listened));
	EXPECT_FALSE(listened.get());
	EXPECT_EQ(listener.GetPortBound(), -1);

	IPCWrapperTCPIP cancelledFirst(0, 0);
	cancelledFirst.Cancel();
	EXPECT_FALSE(cancelledFirst.Listen());

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
	ASSERT_TRUE(Ready(received));
	EXPECT_EQ(received.get(), -1);
	EXPECT_FALSE(pair.pClient->Poll()) << "the peer sees the connection close";
}
