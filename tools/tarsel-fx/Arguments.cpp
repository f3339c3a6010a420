#include "Arguments.h"

#include <cstdlib>
#include <cstring>

namespace Tarsel::Fx
{
namespace
{

bool ParseCommand(const std::string& word, Command& command)
{
	static const struct
	{
		const char* name;
		Command command;
	} kCommands[] = {{"check", Command::kCheck},
	                 {"preprocess", Command::kPreprocess},
	                 {"print", Command::kPrint},
	                 {"stats", Command::kStats},
	                 {"compile", Command::kCompile}};
	for (const auto& entry : kCommands)
	{
		if (word == entry.name)
		{
			command = entry.command;
			return true;
		}
	}
	return false;
}

} // namespace

const char* GetUsage()
{
	return "usage: tarsel-fx check [-I DIR]... FILE...\n"
	       "       tarsel-fx preprocess [-I DIR]... FILE\n"
	       "       tarsel-fx print [-I DIR]... FILE\n"
	       "       tarsel-fx stats [--port N]\n"
	       "       tarsel-fx compile [-I DIR]... SCENE.json [--emit DIR] [--apply-all]\n";
}

bool ParseArguments(int argc, const char* const* argv, Arguments& args, std::string& error)
{
	if (argc < 2 || !ParseCommand(argv[1], args.command))
	{
		error = argc < 2 ? "missing command" : std::string("unknown command '") + argv[1] + "'";
		return false;
	}
	bool bOptionsEnded = false;
	for (int i = 2; i < argc; ++i)
	{
		const char* arg = argv[i];
		if (!bOptionsEnded && std::strcmp(arg, "--") == 0)
			bOptionsEnded = true;
		else if (!bOptionsEnded && std::strncmp(arg, "-I", 2) == 0)
		{
			// Both "-I DIR" and "-IDIR", as compilers accept.
			const char* dir = arg[2] ? arg + 2 : (i + 1 < argc ? argv[++i] : nullptr);
			if (!dir)
			{
				error = "-I needs a directory";
				return false;
			}
			args.includeDirs.push_back(dir);
		}
		else if (!bOptionsEnded && args.command == Command::kStats && std::strcmp(arg, "--port") == 0)
		{
			char* end = nullptr;
			const long port = i + 1 < argc ? std::strtol(argv[++i], &end, 10) : 0;
			if (!end || *end || port < 1 || port > 65535)
			{
				error = "--port needs a port number from 1 to 65535";
				return false;
			}
			args.port = static_cast<int>(port);
		}
		else if (!bOptionsEnded && args.command == Command::kCompile && std::strcmp(arg, "--emit") == 0)
		{
			if (i + 1 >= argc)
			{
				error = "--emit needs a directory";
				return false;
			}
			args.emitDir = argv[++i];
		}
		else if (!bOptionsEnded && args.command == Command::kCompile && std::strcmp(arg, "--apply-all") == 0)
			args.bApplyAll = true;
		else if (!bOptionsEnded && arg[0] == '-' && arg[1])
		{
			error = std::string("unknown option '") + arg + "'";
			return false;
		}
		else
			args.files.push_back(arg);
	}
	if (args.command == Command::kStats)
	{
		error = "stats takes no file";
		return args.files.empty();
	}
	if (args.files.empty())
	{
		error = "no input file";
		return false;
	}
	if (args.command != Command::kCheck && args.files.size() != 1)
	{
		error = std::string(argv[1]) + " takes exactly one file";
		return false;
	}
	return true;
}

} // namespace Tarsel::Fx
