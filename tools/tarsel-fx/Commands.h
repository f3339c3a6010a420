#pragma once

#include "Arguments.h"

#include <iosfwd>

namespace Tarsel
{
class IMgrConsole;
}

namespace Tarsel::Fx
{

// Runs one command. Console lines go to console; texts that are the command's product (preprocessed
// or printed source) go to out. Returns the process exit code.
int Run(const Arguments& args, IMgrConsole* console, std::ostream& out);

// The whole program: parses argv, prints usage to err on a bad command line, runs the command with
// the default console.
int Main(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

} // namespace Tarsel::Fx
