#pragma once

#include <cstdarg>
#include <string>
#include <vector>

namespace Tarsel
{
class IConsole
{
public:
	enum VerbosityLevel
	{
		kVerbosity_Quiet = 0,
		kVerbosity_Normal = 1,
		kVerbosity_Verbose = 2,
		kVerbosity_Debug = 3
	};
};

// The host's console: internal diagnostics go to Message, user-facing errors to Error.
// A console implements the two writers (the formatting is done once, here); one that formats on its own
// may replace Message and Error as well.
class IMgrConsole
{
public:
	virtual ~IMgrConsole() = default;
	virtual void Message(const char* format, ...) __attribute__((format(printf, 2, 3)));
	virtual void Error(const char* format, ...) __attribute__((format(printf, 2, 3)));
	virtual void BlockBegin(IConsole::VerbosityLevel level, const char* text) = 0;
	virtual void BlockEnd(IConsole::VerbosityLevel level, const char* text) = 0;

protected:
	virtual void _WriteMessage(const std::string& text) = 0;
	virtual void _WriteError(const std::string& text) = 0;
};

// The process-wide console; a default one writing to stdout and stderr until a host installs its own.
IMgrConsole* GetMgrConsole();
// Installs a console and answers the previous one; null restores the default.
IMgrConsole* SetMgrConsole(IMgrConsole* pConsole);

// Opens a block at construction and closes it at destruction.
class AutoConsoleBlock
{
public:
	AutoConsoleBlock(IMgrConsole* pConsole, IConsole::VerbosityLevel level, const char* begin,
	                 const char* end);
	~AutoConsoleBlock();
	AutoConsoleBlock(const AutoConsoleBlock&) = delete;
	AutoConsoleBlock& operator=(const AutoConsoleBlock&) = delete;

private:
	IMgrConsole* _pConsole;
	IConsole::VerbosityLevel _level;
	std::string _sEnd;
};

// Messages to stdout, errors to stderr. Block texts are printed as message lines when their level is within
// the console's verbosity (normal unless set), so verbose and debug blocks stay quiet by default.
class DefaultConsole : public IMgrConsole
{
public:
	void BlockBegin(IConsole::VerbosityLevel level, const char* text) override;
	void BlockEnd(IConsole::VerbosityLevel level, const char* text) override;
	void SetVerbosity(IConsole::VerbosityLevel level) { _verbosity = level; }

protected:
	void _WriteMessage(const std::string& text) override;
	void _WriteError(const std::string& text) override;

private:
	void _WriteBlock(IConsole::VerbosityLevel level, const char* text);

	IConsole::VerbosityLevel _verbosity = IConsole::kVerbosity_Normal;
};

// Keeps every text exactly as written, for tests.
class RecordingConsole : public IMgrConsole
{
public:
	void BlockBegin(IConsole::VerbosityLevel level, const char* text) override;
	void BlockEnd(IConsole::VerbosityLevel level, const char* text) override;

	const std::vector<std::string>& GetMessages() const { return _vMessages; }
	const std::vector<std::string>& GetErrors() const { return _vErrors; }
	// Messages and errors in the order they came, errors marked with a leading "!".
	const std::vector<std::string>& GetAll() const { return _vAll; }
	const std::vector<std::string>& GetBlocks() const { return _vBlocks; }
	// All message texts (or all error texts) concatenated.
	std::string MessageText() const;
	std::string ErrorText() const;
	bool HasMessage(const std::string& text) const;
	bool HasError(const std::string& text) const;
	void Clear();

protected:
	void _WriteMessage(const std::string& text) override;
	void _WriteError(const std::string& text) override;

private:
	std::vector<std::string> _vMessages;
	std::vector<std::string> _vErrors;
	std::vector<std::string> _vAll;
	std::vector<std::string> _vBlocks;
};

// Installs a console for a scope and restores the previous one.
class ScopedMgrConsole
{
public:
	explicit ScopedMgrConsole(IMgrConsole* pConsole) : _pPrevious(SetMgrConsole(pConsole)) {}
	~ScopedMgrConsole() { SetMgrConsole(_pPrevious); }
	ScopedMgrConsole(const ScopedMgrConsole&) = delete;
	ScopedMgrConsole& operator=(const ScopedMgrConsole&) = delete;

private:
	IMgrConsole* _pPrevious;
};
} // namespace Tarsel
