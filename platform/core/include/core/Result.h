#pragma once

#include <cstdarg>
#include <string>
#include <vector>

namespace Tarsel
{
class IMgrConsole;

// A list of messages that an operation hands back to its caller.
class Result
{
public:
	void Add(const char* format, ...) __attribute__((format(printf, 2, 3)));
	void Add(const Result& other);
	const std::vector<std::string>& GetMessages() const { return _vMessages; }
	bool IsEmpty() const { return _vMessages.empty(); }
	void Clear() { _vMessages.clear(); }

	// The messages from the last added to the first, joined by ": ", then a newline; empty when there are
	// none.
	std::string GetText() const;
	// Writes GetText() to the console's error output (null: the process-wide console); an empty result
	// prints nothing.
	void Print(IMgrConsole* pConsole) const;

private:
	std::vector<std::string> _vMessages;
};

// printf-style formatting of any length.
std::string FormatString(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string FormatStringV(const char* format, va_list args);
} // namespace Tarsel
