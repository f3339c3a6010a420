#include "core/Console.h"

#include "core/Result.h"

#include <algorithm>
#include <cstdio>

namespace Tarsel
{
namespace
{
DefaultConsole& DefaultInstance()
{
	static DefaultConsole console;
	return console;
}

IMgrConsole*& Installed()
{
	static IMgrConsole* pConsole = nullptr;
	return pConsole;
}

std::string Join(const std::vector<std::string>& vTexts)
{
	std::string sText;
	for (const std::string& s : vTexts)
		sText += s;
	return sText;
}
} // namespace

void IMgrConsole::Message(const char* format, ...)
{
	va_list args;
	va_start(args, format);
	_WriteMessage(FormatStringV(format, args));
	va_end(args);
}

void IMgrConsole::Error(const char* format, ...)
{
	va_list args;
	va_start(args, format);
	_WriteError(FormatStringV(format, args));
	va_end(args);
}

IMgrConsole* GetMgrConsole()
{
	IMgrConsole* pConsole = Installed();
	return pConsole ? pConsole : &DefaultInstance();
}

IMgrConsole* SetMgrConsole(IMgrConsole* pConsole)
{
	IMgrConsole* pPrevious = Installed();
	Installed() = pConsole;
	return pPrevious;
}

AutoConsoleBlock::AutoConsoleBlock(IMgrConsole* pConsole, IConsole::VerbosityLevel level, const char* begin,
                                   const char* end)
    : _pConsole(pConsole), _level(level), _sEnd(end ? end : "")
{
	if (_pConsole)
		_pConsole->BlockBegin(_level, begin ? begin : "");
}

AutoConsoleBlock::~AutoConsoleBlock()
{
	if (_pConsole)
		_pConsole->BlockEnd(_level, _sEnd.c_str());
}

void DefaultConsole::BlockBegin(IConsole::VerbosityLevel level, const char* text)
{
	_WriteBlock(level, text);
}

void DefaultConsole::BlockEnd(IConsole::VerbosityLevel level, const char* text)
{
	_WriteBlock(level, text);
}

void DefaultConsole::_WriteBlock(IConsole::VerbosityLevel level, const char* text)
{
	if (level <= _verbosity && text && *text)
		_WriteMessage(std::string(text) + "\n");
}

void DefaultConsole::_WriteMessage(const std::string& text)
{
	std::fwrite(text.data(), 1, text.size(), stdout);
	std::fflush(stdout);
}

void DefaultConsole::_WriteError(const std::string& text)
{
	std::fwrite(text.data(), 1, text.size(), stderr);
	std::fflush(stderr);
}

void RecordingConsole::BlockBegin(IConsole::VerbosityLevel, const char* text)
{
	_vBlocks.push_back(std::string("begin:") + text);
}

void RecordingConsole::BlockEnd(IConsole::VerbosityLevel, const char* text)
{
	_vBlocks.push_back(std::string("end:") + text);
}

std::string RecordingConsole::MessageText() const
{
	return Join(_vMessages);
}

std::string RecordingConsole::ErrorText() const
{
	return Join(_vErrors);
}

bool RecordingConsole::HasMessage(const std::string& text) const
{
	return std::find(_vMessages.begin(), _vMessages.end(), text) != _vMessages.end();
}

bool RecordingConsole::HasError(const std::string& text) const
{
	return std::find(_vErrors.begin(), _vErrors.end(), text) != _vErrors.end();
}

void RecordingConsole::Clear()
{
	_vMessages.clear();
	_vErrors.clear();
	_vAll.clear();
	_vBlocks.clear();
}

void RecordingConsole::_WriteMessage(const std::string& text)
{
	_vMessages.push_back(text);
	_vAll.push_back(text);
}

void RecordingConsole::_WriteError(const std::string& text)
{
	_vErrors.push_back(text);
	_vAll.push_back("!" + text);
}
} // namespace Tarsel
