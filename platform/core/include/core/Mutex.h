#pragma once

#include <mutex>

namespace Tarsel
{
// A recursive lock: listeners run under it and may call back into the object that holds it.
class Mutex
{
public:
	void Lock() { _mutex.lock(); }
	void Unlock() { _mutex.unlock(); }

private:
	std::recursive_mutex _mutex;
};

class ScopedLock
{
public:
	explicit ScopedLock(Mutex& mutex) : _mutex(mutex) { _mutex.Lock(); }
	~ScopedLock() { _mutex.Unlock(); }
	ScopedLock(const ScopedLock&) = delete;
	ScopedLock& operator=(const ScopedLock&) = delete;

private:
	Mutex& _mutex;
};
} // namespace Tarsel
