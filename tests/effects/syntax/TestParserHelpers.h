#pragma once

#include <memory>
#include <string>
#include <vector>

#include "syntax/Syntax.h"
#include "syntax/TslParser.h"

namespace Tarsel::Effects::Testing
{

// A module with the outcome of parsing one text into it, under the library name "lib".
struct Parsed
{
	std::unique_ptr<Module> pModule{Module::Create()};
	std::string sName = "lib";
	std::vector<std::string> vErrors;
	bool bParsed = false;

	std::string FirstError() const { return vErrors.empty() ? "" : vErrors[0]; }
};

inline std::unique_ptr<Parsed> ParseText(const std::string& text, int lineOffset = 0)
{
	auto pParsed = std::make_unique<Parsed>();
	pParsed->bParsed =
	    TslParser::Parse(pParsed->pModule.get(), pParsed->vErrors, pParsed->sName, text, lineOffset);
	return pParsed;
}

} // namespace Tarsel::Effects::Testing
