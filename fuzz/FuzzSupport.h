#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/Assert.h"
#include "core/Assets.h"
#include "core/Console.h"

namespace Tarsel::Fuzz
{

// One input holds several texts: each line "//@ NAME" starts the next one, named NAME; the text before the
// first such line is named by the caller and left out when empty.
typedef std::vector<std::pair<std::string, std::string>> Texts;

inline Texts SplitTexts(const std::string& input, const std::string& firstName)
{
	static const std::string kMarker = "//@ ";
	Texts texts{{firstName, std::string()}};
	size_t begin = 0;
	while (begin <= input.size())
	{
		size_t end = input.find('\n', begin);
		const bool last = end == std::string::npos;
		const std::string line = input.substr(begin, last ? std::string::npos : end - begin);
		if (line.compare(0, kMarker.size(), kMarker) == 0)
			texts.emplace_back(line.substr(kMarker.size()), std::string());
		else
			texts.back().second += last ? line : line + "\n";
		if (last)
			break;
		begin = end + 1;
	}
	if (texts.size() > 1 && texts.front().second.empty())
		texts.erase(texts.begin());
	return texts;
}

// Swallows the texts, counting errors: printing would dominate the run, and the targets judge outcomes.
class CountingConsole : public IMgrConsole
{
public:
	void BlockBegin(IConsole::VerbosityLevel, const char*) override {}
	void BlockEnd(IConsole::VerbosityLevel, const char*) override {}
	long GetCountErrors() const { return _nErrors; }

protected:
	void _WriteMessage(const std::string&) override {}
	void _WriteError(const std::string&) override { ++_nErrors; }

private:
	long _nErrors = 0;
};

// A failed internal-consistency check is a finding, whatever the input was.
class AbortingAssertHandler : public IAssertHandler
{
public:
	int Report(const char* expression, int line, const char* file, const char* message) override
	{
		std::fprintf(stderr, "internal check failed: %s at %s:%d %s\n", expression, file, line,
		             message ? message : "");
		std::abort();
	}
};

class MemoryAsset : public IAsset
{
public:
	MemoryAsset(const std::string& name, const std::string& data) : _sName(name), _sData(data) {}
	const char* GetDescription() const override { return _sName.c_str(); }
	const char* GetData() const override { return _sData.c_str(); }
	size_t GetSize() const override { return _sData.size(); }

private:
	std::string _sName;
	std::string _sData;
};

// Serves the texts of one input as files, so that includes and imports never touch the disk.
class MemoryAssets : public IMgrAssets
{
public:
	void Serve(const Texts& texts)
	{
		_mFiles.clear();
		for (const auto& text : texts)
			_mFiles.emplace(text.first, text.second); // the first text of a name wins
	}
	IAsset* Acquire(const Path& path, int, IAsset::Status& status) override
	{
		auto it = _mFiles.find(path.AsString());
		status = it == _mFiles.end() ? IAsset::kStatus_NotFound : IAsset::kStatus_Ok;
		return it == _mFiles.end() ? nullptr : new MemoryAsset(it->first, it->second);
	}
	void Release(IAsset* pAsset) override { delete pAsset; }
	void AddSearchRoot(const Path&) override {}
	void ClearSearchRoots() override {}
	std::vector<std::string> GetSearchRoots() const override { return {}; }

private:
	std::map<std::string, std::string> _mFiles;
};

// Installed once per process: quiet consoles, aborting checks, files from memory.
struct Environment
{
	CountingConsole console;
	AbortingAssertHandler asserts;
	MemoryAssets assets;

	Environment()
	{
		SetMgrConsole(&console);
		SetActiveAssertHandler(&asserts);
		SetMgrAssets(&assets);
	}
};

// Stops the run with the input's reproducer when an expectation of the target does not hold.
#define TARSEL_FUZZ_CHECK(condition, what)                                                                   \
	do                                                                                                       \
	{                                                                                                        \
		if (!(condition))                                                                                    \
		{                                                                                                    \
			std::fprintf(stderr, "fuzz check failed: %s (%s)\n", #condition, std::string(what).c_str());     \
			std::abort();                                                                                    \
		}                                                                                                    \
	} while (0)

} // namespace Tarsel::Fuzz
