#include "Commands.h"

#include "codegen/VisitorPrintTsl.h"
#include "core/Assets.h"
#include "core/Console.h"
#include "core/Path.h"
#include "core/Result.h"
#include "effects/MgrEffects.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/Library.h"
#include "quillon/Reference.h"

#include <ostream>
#include <string>

namespace Tarsel::Fx
{
using Effects::Library;
using Effects::MgrEffects;
using Effects::VisitorPrintTsl;

namespace
{

// The search roots live in the process-wide asset manager; they are taken out again so that an
// in-process caller starts the next command clean.
class ScopedSearchRoots
{
public:
	explicit ScopedSearchRoots(const std::vector<std::string>& dirs)
	{
		for (const std::string& dir : dirs)
			GetMgrAssets()->AddSearchRoot(Path(dir));
	}
	~ScopedSearchRoots() { GetMgrAssets()->ClearSearchRoots(); }
};

// A manager on the reference device for the span of one command.
class Host
{
public:
	explicit Host(IMgrConsole* console) : _pConsole(console)
	{
		_context.SetEcho(true);
		Result result;
		_bReady = _mgr.Init(console, &_context, &result);
		PrintResult(result);
	}
	~Host() { _mgr.Shutdown(); }

	bool IsReady() const { return _bReady; }
	MgrEffects& GetMgr() { return _mgr; }

	// One line per message. The loader adds source errors newest first, so walking back from the
	// last restores file order.
	void PrintResult(const Result& result) const
	{
		const std::vector<std::string>& messages = result.GetMessages();
		for (auto it = messages.rbegin(); it != messages.rend(); ++it)
		{
			const char* newline = !it->empty() && it->back() == '\n' ? "" : "\n";
			_pConsole->Error("%s%s", it->c_str(), newline);
		}
	}

private:
	IMgrConsole* _pConsole;
	ReferenceContext _context;
	MgrEffects _mgr;
	bool _bReady = false;
};

int RunCheck(const Arguments& args, Host& host)
{
	bool bAllLoaded = true;
	for (const std::string& file : args.files)
	{
		Result result;
		bAllLoaded = host.GetMgr().AddLibrary(file, &result) && bAllLoaded;
		host.PrintResult(result);
	}
	return bAllLoaded ? 0 : 1;
}

// The text a load would parse: the same preprocessing the manager runs, stopped before parsing.
bool Preprocess(const Arguments& args, Host& host, std::string& path, std::string& text)
{
	Result result;
	const bool bDone =
	    host.GetMgr().GetImplementation()->PreprocessFile(args.files.front(), path, text, &result);
	host.PrintResult(result);
	return bDone;
}

int RunPreprocess(const Arguments& args, Host& host, std::ostream& out)
{
	std::string path, text;
	if (!Preprocess(args, host, path, text))
		return 1;
	out << text;
	return 0;
}

// Parses the preprocessed text into a library of its own and prints its module without output indices.
int RunPrint(const Arguments& args, Host& host, std::ostream& out)
{
	std::string path, text;
	if (!Preprocess(args, host, path, text))
		return 1;
	Result result;
	Library library;
	const bool bParsed = library.Init(&host.GetMgr(), path, text, &result, 0);
	host.PrintResult(result);
	if (!bParsed)
		return 1;
	Result printResult;
	VisitorPrintTsl printer(&printResult, &host.GetMgr(), false);
	const bool bPrinted = printer.Visit(library.GetModule());
	host.PrintResult(printResult);
	// Half a program on stdout would pass for a whole one.
	if (bPrinted)
		out << printer.result();
	library.Shutdown();
	return bPrinted ? 0 : 1;
}

// For commands whose product is a text on stdout, every console line goes to stderr.
class StderrConsole : public DefaultConsole
{
protected:
	void _WriteMessage(const std::string& text) override { _WriteError(text); }
};

} // namespace

int Run(const Arguments& args, IMgrConsole* console, std::ostream& out)
{
	ScopedSearchRoots roots(args.includeDirs);
	Host host(console);
	if (!host.IsReady())
		return 1;
	switch (args.command)
	{
	case Command::kCheck:
		return RunCheck(args, host);
	case Command::kPreprocess:
		return RunPreprocess(args, host, out);
	case Command::kPrint:
		return RunPrint(args, host, out);
	}
	return 1;
}

int Main(int argc, const char* const* argv, std::ostream& out, std::ostream& err)
{
	Arguments args;
	std::string error;
	if (!ParseArguments(argc, argv, args, error))
	{
		err << "tarsel-fx: " << error << "\n" << GetUsage();
		return kExitUsage;
	}
	DefaultConsole console;
	StderrConsole stderrConsole;
	const bool bProductOnStdout = args.command != Command::kCheck;
	return Run(args, bProductOnStdout ? static_cast<IMgrConsole*>(&stderrConsole) : &console, out);
}

} // namespace Tarsel::Fx
