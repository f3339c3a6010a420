#pragma once

#include <map>
#include <set>
#include <string>

#include "syntax/LineMap.h"

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class ClassDefinition;
class IMgrEffects;
class InterfaceDefinition;
class IShader;
class Module;
class PrototypeInterface;
class PrototypeShader;

// One shader library: one source text parsed into one module.
class Library
{
public:
	Library();
	~Library();
	Library(const Library&) = delete;
	Library& operator=(const Library&) = delete;

	// lines: the file and line each line of the source was written on, so that messages and node locations
	// name them (a plain line offset converts to a map of the library's own lines).
	bool Init(IMgrEffects* mgrEffects, const std::string& name, const std::string& source, Result* result,
	          const LineMap& lines);
	bool Shutdown();
	// The manager shuts every library down in these steps before deleting any: shaders (and the graphs
	// they own) may reference classes of other libraries, and classes may implement their interfaces.
	void ShutdownShaders();
	void ShutdownClasses();

	Module* GetModule() const { return _pModule; }
	IMgrEffects* GetMgrEffects() const { return _pMgrEffects; }
	const std::string& GetName() const { return _sName; }

	// Prototypes are made on first request and kept; a class that fails is not kept, so asking again
	// tries again. A class answers null while it is being made, so that classes naming each other
	// cannot recurse forever.
	PrototypeInterface* GetPrototypeInterface(const std::string& name);
	PrototypeShader* GetPrototypeShader(const std::string& name, Result* result);
	IShader* CreateShader(const std::string& className, Result* result);
	void DestroyShader(IShader* shader);

private:
	PrototypeInterface* _CreatePrototypeInterface(InterfaceDefinition* definition);
	PrototypeShader* _CreatePrototypeShader(ClassDefinition* definition, Result* result);
	void _ShutdownPrototypes();

	IMgrEffects* _pMgrEffects;
	Module* _pModule;
	std::string _sName;
	std::map<std::string, PrototypeInterface*> _mPrototypeInterfaces;
	std::map<std::string, PrototypeShader*> _mPrototypeShaders;
	std::set<std::string> _setClassesInProgress;
};

} // namespace Tarsel::Effects
