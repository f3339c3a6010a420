#pragma once

#include <string>

#include "syntax/LineMap.h"

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class IMgrEffects;
class Module;
class IShader;
class IPrototypeInterface;
class IPrototypeShader;

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

	Module* GetModule() const { return _pModule; }
	IMgrEffects* GetMgrEffects() const { return _pMgrEffects; }
	const std::string& GetName() const { return _sName; }

	// Prototypes are made from the module's definitions by the object model; until it exists a library
	// answers no class and no interface.
	IPrototypeInterface* GetPrototypeInterface(const std::string&) { return nullptr; }
	IPrototypeShader* GetPrototypeShader(const std::string&, Result*) { return nullptr; }
	IShader* CreateShader(const std::string&, Result*) { return nullptr; }

private:
	IMgrEffects* _pMgrEffects;
	Module* _pModule;
	std::string _sName;
};

} // namespace Tarsel::Effects
