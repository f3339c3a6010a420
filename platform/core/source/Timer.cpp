#include "core/Timer.h"

#include <chrono>

namespace Tarsel
{
int64_t QueryPerformanceCounter()
{
	return std::chrono::duration_cast<std::chrono::nanoseconds>(
	           std::chrono::steady_clock::now().time_since_epoch())
	    .count();
}

int64_t QueryPerformanceFrequency()
{
	return 1000000000;
}

double ManualTimer::Elapsed() const
{
	return double(QueryPerformanceCounter() - _iStart) * 1000.0 / double(QueryPerformanceFrequency());
}
} // namespace Tarsel
