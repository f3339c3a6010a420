#pragma once

#include <iosfwd>

namespace Tarsel
{
class IMgrConsole;
}

namespace Tarsel::Fx
{

// Connects to a statistics server on the loopback port, prints one line per statistic
// ("id kind name", newest first), acknowledges and returns the exit code: 1 when no server answers.
int ViewStats(int iPort, IMgrConsole* console, std::ostream& out);

} // namespace Tarsel::Fx
