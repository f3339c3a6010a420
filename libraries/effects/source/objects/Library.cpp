#include "objects/Library.h"

#include <vector>

#include "core/Console.h"
#include "core/Result.h"
#include "effects/IMgrEffects.h"
#include "syntax/Syntax.h"
#include "syntax/TslParser.h"

namespace Tarsel::Effects
{

Library::Library() : _pMgrEffects(nullptr), _pModule(nullptr) {}

Library::~Library()
{
	Shutdown();
}

bool Library::Init(IMgrEffects* mgrEffects, const std::string& name, const std::string& source,
                   Result* result, const LineMap& lines)
{
	_pMgrEffects = mgrEffects;
	_pModule = new Module();
	_sName = name;
	std::vector<std::string> errors;
	if (TslParser::Parse(_pModule, errors, _sName, source, lines))
		return true;
	// Added last to first, so that the printed result (which runs from the last message back) reads in order.
	if (result)
		for (std::vector<std::string>::reverse_iterator it = errors.rbegin(); it != errors.rend(); ++it)
			result->Add("%s", it->c_str());
	IMgrConsole* console = mgrEffects ? mgrEffects->GetConsole() : nullptr;
	Shutdown();
	if (console)
		console->Error("Library::Init Parse\n");
	return false;
}

bool Library::Shutdown()
{
	delete _pModule;
	_pModule = nullptr;
	_pMgrEffects = nullptr;
	return true;
}

} // namespace Tarsel::Effects
