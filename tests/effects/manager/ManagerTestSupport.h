#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/Console.h"
#include "core/Result.h"
#include "manager/MgrEffectsImpl.h"
#include "quillon/Reference.h"

namespace Tarsel::Effects::Testing
{

// A directory of its own per test, removed afterwards.
class TempDir
{
public:
	TempDir()
	{
		std::string pattern = (std::filesystem::temp_directory_path() / "tarsel-mgr-XXXXXX").string();
		_sPath = mkdtemp(&pattern[0]) ? pattern : std::string();
	}
	~TempDir()
	{
		std::error_code ignored;
		std::filesystem::remove_all(_sPath, ignored);
	}
	const std::string& Path() const { return _sPath; }
	std::string Write(const std::string& name, const std::string& text) const
	{
		const std::string path = _sPath + "/" + name;
		std::ofstream(path, std::ios::binary) << text;
		return path;
	}

private:
	std::string _sPath;
};

// Records what a load would hand to library creation instead of parsing it.
class LoadRecorder : public MgrEffectsImpl
{
public:
	struct Load
	{
		std::string sName;
		std::string sSource;
		int iLineOffset;
		LineMap lines;
	};

	bool AddLibrary(const std::string& name, const std::string& source, Result*) override
	{
		vLoads.push_back({name, source, GetLineOffset(), GetLineMap()});
		return true;
	}
	using MgrEffectsImpl::AddLibrary;

	std::vector<Load> vLoads;
};

// A manager fed with a recording console and the reference device.
template <class Manager>
class ManagerHarness
{
public:
	explicit ManagerHarness(bool differential = false)
	{
		context.SetDifferentialSupported(differential);
		manager.Init(&manager, &console, &context, nullptr);
	}

	ReferenceContext context;
	RecordingConsole console;
	Manager manager;
};

// Routes the process-wide console into a recorder for one scope.
class ProcessConsoleCapture
{
public:
	ProcessConsoleCapture() : _pPrevious(SetMgrConsole(&console)) {}
	~ProcessConsoleCapture() { SetMgrConsole(_pPrevious); }

	RecordingConsole console;

private:
	IMgrConsole* _pPrevious;
};

// Sets an environment variable for one scope.
class ScopedEnv
{
public:
	ScopedEnv(const char* name, const char* value) : _szName(name)
	{
		const char* old = std::getenv(name);
		_bHad = old != nullptr;
		_sOld = old ? old : "";
		if (value)
			setenv(name, value, 1);
		else
			unsetenv(name);
	}
	~ScopedEnv()
	{
		if (_bHad)
			setenv(_szName, _sOld.c_str(), 1);
		else
			unsetenv(_szName);
	}

private:
	const char* _szName;
	bool _bHad;
	std::string _sOld;
};

} // namespace Tarsel::Effects::Testing
