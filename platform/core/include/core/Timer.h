#pragma once

#include <cstdint>

namespace Tarsel
{
// The high-resolution performance counter: ticks and ticks per second.
int64_t QueryPerformanceCounter();
int64_t QueryPerformanceFrequency();

// Milliseconds since construction or the last Reset.
class ManualTimer
{
public:
	ManualTimer() { Reset(); }
	void Reset() { _iStart = QueryPerformanceCounter(); }
	double Elapsed() const;

private:
	int64_t _iStart = 0;
};
} // namespace Tarsel
