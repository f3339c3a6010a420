#include "core/Result.h"

#include "core/Console.h"

#include <cstdio>

namespace Tarsel
{
std::string FormatStringV(const char* format, va_list args)
{
	va_list argsCopy;
	va_copy(argsCopy, args);
	const int nLength = std::vsnprintf(nullptr, 0, format, argsCopy);
	va_end(argsCopy);
	if (nLength <= 0)
		return std::string();
	std::string sText(size_t(nLength) + 1, '\0');
	std::vsnprintf(&sText[0], sText.size(), format, args);
	sText.resize(size_t(nLength));
	return sText;
}

std::string FormatString(const char* format, ...)
{
	va_list args;
	va_start(args, format);
	std::string sText = FormatStringV(format, args);
	va_end(args);
	return sText;
}

void Result::Add(const char* format, ...)
{
	va_list args;
	va_start(args, format);
	_vMessages.push_back(FormatStringV(format, args));
	va_end(args);
}

void Result::Add(const Result& other)
{
	// A copy first, so that adding a result to itself doubles it instead of iterating forever.
	const std::vector<std::string> vOther = other._vMessages;
	_vMessages.insert(_vMessages.end(), vOther.begin(), vOther.end());
}

std::string Result::GetText() const
{
	if (_vMessages.empty())
		return std::string();
	std::string sText;
	for (auto it = _vMessages.rbegin(); it != _vMessages.rend(); ++it)
	{
		if (it != _vMessages.rbegin())
			sText += ": ";
		sText += *it;
	}
	sText += "\n";
	return sText;
}

void Result::Print(IMgrConsole* pConsole) const
{
	if (_vMessages.empty())
		return;
	(pConsole ? pConsole : GetMgrConsole())->Error("%s", GetText().c_str());
}
} // namespace Tarsel
