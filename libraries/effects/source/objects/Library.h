#pragma once

#include <map>
#include <string>

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class IMgrEffects;
class Module;
class IShader;
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

	// lineOffset: what the first line of the source is numbered after, so messages name the file's own lines.
	bool Init(IMgrEffects* mgrEffects, const std::string& name, const std::string& source, Result* result,
	          int lineOffset);
	bool Shutdown();

	Module* GetModule() const { return _pModule; }
	IMgrEffects* GetMgrEffects() const { return _pMgrEffects; }
	const std::string& GetName() const { return _sName; }

private:
	IMgrEffects* _pMgrEffects;
	Module* _pModule;
	std::string _sName;
	std::map<std::string, PrototypeInterface*> _mPrototypeInterfaces;
	std::map<std::string, PrototypeShader*> _mPrototypeShaders;
};

} // namespace Tarsel::Effects
