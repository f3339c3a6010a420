#include "objects/Library.h"

#include <vector>

#include "core/Console.h"
#include "core/Result.h"
#include "effects/IMgrEffects.h"
#include "effects/IShader.h"
#include "objects/PrototypeInterface.h"
#include "objects/PrototypeShader.h"
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
	// Nodes keep a pointer to the name for their locations: it must live as long as the module.
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
	_ShutdownPrototypes();
	delete _pModule;
	_pModule = nullptr;
	_pMgrEffects = nullptr;
	return true;
}

// Classes go before interfaces: a class's reference may still be registered with its interface's.
void Library::_ShutdownPrototypes()
{
	ShutdownShaders();
	ShutdownClasses();
	for (auto& entry : _mPrototypeInterfaces)
		delete entry.second;
	_mPrototypeInterfaces.clear();
}

void Library::ShutdownShaders()
{
	for (auto& entry : _mPrototypeShaders)
		if (entry.second)
			entry.second->ShutdownShaders();
}

void Library::ShutdownClasses()
{
	for (auto& entry : _mPrototypeShaders)
		delete entry.second;
	_mPrototypeShaders.clear();
}

PrototypeInterface* Library::GetPrototypeInterface(const std::string& name)
{
	auto found = _mPrototypeInterfaces.find(name);
	if (found != _mPrototypeInterfaces.end() && found->second)
		return found->second;
	InterfaceDefinition* definition = _pModule ? _pModule->GetInterfaceDefinition(name) : nullptr;
	return definition ? _CreatePrototypeInterface(definition) : nullptr;
}

PrototypeShader* Library::GetPrototypeShader(const std::string& name, Result* result)
{
	auto found = _mPrototypeShaders.find(name);
	if (found != _mPrototypeShaders.end() && found->second)
		return found->second;
	if (_setClassesInProgress.count(name) != 0)
		return nullptr;
	ClassDefinition* definition = _pModule ? _pModule->GetClassDefinition(name) : nullptr;
	return definition ? _CreatePrototypeShader(definition, result) : nullptr;
}

PrototypeInterface* Library::_CreatePrototypeInterface(InterfaceDefinition* definition)
{
	PrototypeInterface* prototype = new PrototypeInterface();
	if (!prototype->Init(this, definition))
	{
		delete prototype;
		return nullptr;
	}
	_mPrototypeInterfaces[definition->GetName()->GetString()] = prototype;
	return prototype;
}

PrototypeShader* Library::_CreatePrototypeShader(ClassDefinition* definition, Result* result)
{
	const std::string name = definition->GetName()->GetString();
	_setClassesInProgress.insert(name);
	PrototypeShader* prototype = new PrototypeShader();
	const bool initialised = prototype->Init(this, definition, result);
	_setClassesInProgress.erase(name);
	if (!initialised)
	{
		delete prototype;
		return nullptr;
	}
	_mPrototypeShaders[name] = prototype;
	return prototype;
}

IShader* Library::CreateShader(const std::string& className, Result* result)
{
	PrototypeShader* prototype = GetPrototypeShader(className, result);
	return prototype ? prototype->CreateShader(result) : nullptr;
}

void Library::DestroyShader(IShader* shader)
{
	if (shader == nullptr)
		return;
	if (PrototypeShader* prototype = dynamic_cast<PrototypeShader*>(shader->GetPrototypeShader()))
		prototype->DestroyShader(shader);
}

} // namespace Tarsel::Effects
