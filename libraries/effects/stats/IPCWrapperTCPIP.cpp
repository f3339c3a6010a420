#include "IPCWrapperTCPIP.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

struct IPCWrapperTCPIP::State
{
	// Atomic because Cancel reads it from another thread.
	std::atomic<int> iSocket{-1};
	bool bConnected = false;
	sockaddr_in address{};
};

namespace
{

constexpr uint32_t kPortMax = 65535;

bool WouldBlock(int iError)
{
	return iError == EAGAIN || iError == EWOULDBLOCK;
}

bool SetOption(int iSocket, int iLevel, int iOption)
{
	const int iOn = 1;
	return setsockopt(iSocket, iLevel, iOption, &iOn, sizeof(iOn)) == 0;
}

sockaddr_in LoopbackAddress(uint32_t iPort)
{
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
	address.sin_port = htons(static_cast<uint16_t>(iPort));
	return address;
}

// The loopback host name as the resolver sees it, so that a wake-up goes where a viewer would.
in_addr ResolveLoopback()
{
	in_addr address{};
	address.s_addr = htonl(INADDR_LOOPBACK);
	addrinfo hints{};
	hints.ai_family = AF_INET;
	hints.ai_socktype = SOCK_STREAM;
	addrinfo* pResult = nullptr;
	if (getaddrinfo("localhost", nullptr, &hints, &pResult) == 0 && pResult)
		address = reinterpret_cast<sockaddr_in*>(pResult->ai_addr)->sin_addr;
	if (pResult)
		freeaddrinfo(pResult);
	return address;
}

// A would-block answer on a non-blocking socket waits for readiness instead of spinning.
void WaitUntilReady(int iSocket, short nEvents)
{
	pollfd entry{iSocket, nEvents, 0};
	poll(&entry, 1, -1);
}

short PollNow(int iSocket, short nEvents)
{
	pollfd entry{iSocket, nEvents, 0};
	return poll(&entry, 1, 0) > 0 ? entry.revents : 0;
}

void CloseSocket(int iSocket)
{
	if (iSocket >= 0)
		close(iSocket);
}

} // namespace

IPCWrapperTCPIP::IPCWrapperTCPIP(uint32_t iPortFirst, uint32_t iPortLast)
    : _pState(std::make_unique<State>()), _iPortBound(0), _iPortFirst(iPortFirst), _iPortLast(iPortLast),
      _bCancelled(false), _bListening(false)
{
	_pState->address = LoopbackAddress(iPortFirst);
}

IPCWrapperTCPIP::~IPCWrapperTCPIP()
{
	Disconnect();
}

int IPCWrapperTCPIP::GetSocket() const
{
	return _pState->iSocket;
}

void IPCWrapperTCPIP::Disconnect()
{
	CloseSocket(_pState->iSocket.exchange(-1));
	_pState->bConnected = false;
}

void IPCWrapperTCPIP::Cancel()
{
	_bCancelled = true;
	for (;;)
	{
		// The flag is read before the socket: Listen stores its accepted socket before it clears
		// the flag, so a connection that Listen has just completed is seen here.
		const bool bListening = _bListening;
		const int iSocket = _pState->iSocket;
		if (iSocket >= 0)
		{
			shutdown(iSocket, SHUT_RDWR);
			return;
		}
		// Not listening, or failing anyway: Listen checks the cancelled flag before it blocks.
		if (!bListening || _iPortBound < 0)
			return;
		if (_iPortBound > 0)
			_WakeListener();
		std::this_thread::sleep_for(std::chrono::milliseconds(1));
	}
}

void IPCWrapperTCPIP::_WakeListener()
{
	const int iSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
	if (iSocket < 0)
		return;
	sockaddr_in address = LoopbackAddress(static_cast<uint32_t>(_iPortBound.load()));
	address.sin_addr = ResolveLoopback();
	connect(iSocket, reinterpret_cast<sockaddr*>(&address), sizeof(address));
	close(iSocket);
}

bool IPCWrapperTCPIP::Listen()
{
	Disconnect();
	_iPortBound = 0;
	_bListening = true;
	const bool bListened = _Listen();
	_bListening = false;
	return bListened;
}

bool IPCWrapperTCPIP::_FailListen(int iSocket)
{
	CloseSocket(iSocket);
	_iPortBound = -1;
	return false;
}

int IPCWrapperTCPIP::_BindInRange()
{
	if (_iPortFirst > _iPortLast || _iPortLast > kPortMax)
		return -1;
	for (uint32_t iPort = _iPortFirst;; ++iPort)
	{
		const int iSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
		if (iSocket < 0)
			return -1;
		// Lets the next Listen bind at once although the last viewer's connection lingers.
		SetOption(iSocket, SOL_SOCKET, SO_REUSEADDR);
		const sockaddr_in address = LoopbackAddress(iPort);
		if (bind(iSocket, reinterpret_cast<sockaddr const*>(&address), sizeof(address)) == 0)
			return iSocket;
		const int iError = errno;
		close(iSocket);
		if (iError != EADDRINUSE || iPort >= _iPortLast)
			return -1;
	}
}

bool IPCWrapperTCPIP::_Listen()
{
	const int iListener = _BindInRange();
	if (iListener < 0 || _bCancelled)
		return _FailListen(iListener);
	sockaddr_in bound{};
	socklen_t nBound = sizeof(bound);
	if (listen(iListener, 1) != 0 ||
	    getsockname(iListener, reinterpret_cast<sockaddr*>(&bound), &nBound) != 0)
		return _FailListen(iListener);
	_iPortBound = ntohs(bound.sin_port);

	int iAccepted = -1;
	do
		iAccepted = accept4(iListener, nullptr, nullptr, SOCK_CLOEXEC);
	while (iAccepted < 0 && errno == EINTR && !_bCancelled);
	close(iListener);
	if (_bCancelled || iAccepted < 0)
		return _FailListen(iAccepted);
	if (!SetOption(iAccepted, IPPROTO_TCP, TCP_NODELAY))
		return _FailListen(iAccepted);
	_pState->bConnected = true;
	_pState->iSocket = iAccepted;
	return true;
}

bool IPCWrapperTCPIP::Connect()
{
	State& state = *_pState;
	if (state.iSocket < 0)
	{
		const int iSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
		if (iSocket < 0)
			return false;
		state.iSocket = iSocket;
		SetOption(iSocket, IPPROTO_TCP, TCP_NODELAY);
		SetOption(iSocket, SOL_SOCKET, SO_REUSEADDR);
		fcntl(iSocket, F_SETFL, fcntl(iSocket, F_GETFL, 0) | O_NONBLOCK);
		if (connect(iSocket, reinterpret_cast<sockaddr const*>(&state.address), sizeof(state.address)) == 0)
		{
			state.bConnected = true;
			return true;
		}
		if (errno != EINPROGRESS)
			Disconnect();
		return false;
	}
	const short nReady = PollNow(state.iSocket, POLLOUT);
	int iError = 0;
	socklen_t nError = sizeof(iError);
	if ((nReady & (POLLERR | POLLHUP | POLLNVAL)) ||
	    ((nReady & POLLOUT) &&
	     (getsockopt(state.iSocket, SOL_SOCKET, SO_ERROR, &iError, &nError) != 0 || iError)))
	{
		Disconnect();
		return false;
	}
	if (!(nReady & POLLOUT))
		return false;
	state.bConnected = true;
	return true;
}

uint32_t IPCWrapperTCPIP::GetBytesAvailable()
{
	int nBytes = 0;
	if (_pState->iSocket < 0)
		return 0;
	if (ioctl(_pState->iSocket, FIONREAD, &nBytes) != 0 || nBytes < 0)
	{
		Disconnect();
		return 0;
	}
	return static_cast<uint32_t>(nBytes);
}

bool IPCWrapperTCPIP::Poll()
{
	State& state = *_pState;
	if (state.iSocket < 0)
		return false;
	const short nReady = PollNow(state.iSocket, POLLIN | POLLOUT);
	// A readable socket with nothing to read is one whose peer has closed.
	if ((nReady & POLLIN) && GetBytesAvailable() > 0)
		return state.bConnected;
	if (nReady & (POLLIN | POLLERR | POLLHUP | POLLNVAL))
	{
		Disconnect();
		return false;
	}
	if (!state.bConnected && (nReady & POLLOUT))
		return false;
	return state.bConnected || nReady != 0;
}

int IPCWrapperTCPIP::Receive(char* buffer, int size)
{
	if (size == 0)
		return 0;
	const int iSocket = _pState->iSocket;
	if (size < 0 || !buffer || iSocket < 0)
		return -1;
	int nReceived = 0;
	while (nReceived < size)
	{
		const ssize_t n = recv(iSocket, buffer + nReceived, size - nReceived, 0);
		if (n > 0)
			nReceived += static_cast<int>(n);
		else if (n == 0)
			break;
		else if (WouldBlock(errno))
			WaitUntilReady(iSocket, POLLIN);
		else if (errno != EINTR)
			return -1;
	}
	return nReceived > 0 ? nReceived : -1;
}

int IPCWrapperTCPIP::Send(char const* buffer, int size)
{
	if (size == 0)
		return 0;
	const int iSocket = _pState->iSocket;
	if (size < 0 || !buffer || iSocket < 0)
		return -1;
	int nSent = 0;
	while (nSent < size)
	{
		// A viewer that went away must not end the process with SIGPIPE.
		const ssize_t n = send(iSocket, buffer + nSent, size - nSent, MSG_NOSIGNAL);
		if (n > 0)
			nSent += static_cast<int>(n);
		else if (n == 0)
			return nSent > 0 ? nSent : -1;
		else if (WouldBlock(errno))
			WaitUntilReady(iSocket, POLLOUT);
		else if (errno != EINTR)
			return -1;
	}
	return nSent;
}
