#pragma once

#include <string>
#include <vector>

namespace Tarsel::Fx
{

enum class Command
{
	kCheck,
	kPreprocess,
	kPrint,
	kStats,
	kCompile,
};

struct Arguments
{
	Command command = Command::kCheck;
	std::vector<std::string> includeDirs;
	std::vector<std::string> files;
	// stats: the server's port; -1 for the registry's default.
	int port = -1;
	// compile: where the texts of the last compile of each effect go; empty for nowhere.
	std::string emitDir;
	bool bApplyAll = false;
};

// Exit code of a command line that could not be understood.
constexpr int kExitUsage = 2;

// Fills args from argv (argv[0] is the program). On failure error says why and args is unspecified.
bool ParseArguments(int argc, const char* const* argv, Arguments& args, std::string& error);

const char* GetUsage();

} // namespace Tarsel::Fx
