#include "Commands.h"

#include "EventPrinter.h"
#include "SceneLoader.h"
#include "SceneRunner.h"
#include "StatsViewer.h"

#include "codegen/VisitorPrintTsl.h"
#include "core/Assets.h"
#include "core/Console.h"
#include "core/Path.h"
#include "core/Result.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "effects/MgrStats.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/Library.h"
#include "objects/PrototypeShader.h"
#include "quillon/Reference.h"
#include "syntax/Syntax.h"

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
	IMgrConsole* GetConsole() const { return _pConsole; }

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

// Makes and destroys one shader of a class. A class that waits for a value only the host can give (an
// input without default) is incomplete by design: a note, not a failure.
bool CheckClass(Host& host, Library& library, const Effects::ClassDefinition& definition)
{
	const std::string name = definition.GetName()->GetString();
	const std::string where = definition.GetRange().GetLocationText();
	Result result;
	Effects::PrototypeShader* prototype = library.GetPrototypeShader(name, &result);
	if (prototype && !prototype->IsComplete())
	{
		host.GetConsole()->Message("%s: note: class \"%s\" is incomplete until its inputs are connected\n",
		                           where.c_str(), name.c_str());
		return true;
	}
	Effects::IShader* shader = prototype ? prototype->CreateShader(&result) : nullptr;
	// Coordinates named after themselves complete the shader, so that its own code is built as well.
	bool bBuilt = shader != nullptr;
	for (const auto& coord : definition.GetCoords())
		bBuilt = bBuilt && shader->SetCoord(&result, coord.first, coord.first);
	if (shader)
		prototype->DestroyShader(shader);
	if (bBuilt)
		return true;
	host.GetConsole()->Error("%s: class \"%s\" cannot be created\n", where.c_str(), name.c_str());
	host.PrintResult(result);
	return false;
}

int RunCheck(const Arguments& args, Host& host)
{
	bool bAllLoaded = true;
	for (const std::string& file : args.files)
	{
		Result result;
		bAllLoaded = host.GetMgr().AddLibrary(file, &result) && bAllLoaded;
		host.PrintResult(result);
	}
	bool bAllCreated = true;
	for (const auto& entry : host.GetMgr().GetImplementation()->GetLibraries())
		for (const Effects::ClassDefinition* definition : entry.second->GetModule()->GetClassDefinitions())
			bAllCreated = CheckClass(host, *entry.second, *definition) && bAllCreated;
	return bAllLoaded && bAllCreated ? 0 : 1;
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

// Lists the statistics a running server offers.
int RunStats(const Arguments& args, IMgrConsole* console, std::ostream& out)
{
	return ViewStats(args.port < 0 ? MgrStats::kDefaultPort : args.port, console, out);
}

// The scene's own folder is searched after the -I folders.
std::string GetSceneFolder(const std::string& file)
{
	const std::string folder = Path(file).ParentPath().AsString();
	return folder.empty() ? "." : folder;
}

int RunCompile(const Arguments& args, Host& host, std::ostream& out)
{
	const std::string& file = args.files.front();
	// Effects and the device report on the process console; none of it may mix with the events.
	ScopedMgrConsole processConsole(host.GetConsole());
	SceneErrors errors(file, host.GetConsole());
	EventPrinter printer(out);
	int effects = 0;
	Scene scene;
	if (LoadSceneFile(file, scene, errors))
	{
		GetMgrAssets()->AddSearchRoot(Path(GetSceneFolder(file)));
		SceneRunner runner(host.GetMgr(), errors, printer);
		SceneOptions options;
		options.bApplyAll = args.bApplyAll;
		runner.Run(scene, options);
		if (!args.emitDir.empty())
			runner.Emit(args.emitDir);
		effects = runner.GetCountEffects();
	}
	printer.Summary(effects, errors.GetCount());
	return errors.GetCount() == 0 ? 0 : 1;
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
	case Command::kStats:
		return RunStats(args, console, out);
	case Command::kCompile:
		return RunCompile(args, host, out);
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
