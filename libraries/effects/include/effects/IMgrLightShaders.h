#pragma once

#include <string>

namespace Tarsel
{
class IMgrConsole;
class Result;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IMgrEffects;
class IShader;

// Lights of one class share one shader whose values are arrays with an element per light; the host gets
// one wrapper per light that behaves like a shader of its own.
class IMgrLightShaders
{
public:
	virtual ~IMgrLightShaders() {}

	virtual void Destroy() = 0;
	virtual void Shutdown() = 0;
	virtual bool Init(IMgrEffects* pMgrEffects, IMgrConsole* pConsole) = 0;
	virtual bool AddShaderArray(const std::string& sClass) = 0;
	virtual bool AddShaderManager(const std::string& sClass) = 0;
	// Array classes give light wrappers, manager classes receivers, any other class a plain shader.
	virtual IShader* CreateShader(const std::string& sClass, Result* pResult) = 0;
	virtual bool DestroyShader(IShader* pShader) = 0;
	// Renumbers the lights of every class from 0 and shrinks the arrays to the lights still alive.
	virtual bool UpdateArrays(bool bFlag) = 0;
};

// The process-wide manager, made empty on the first call.
IMgrLightShaders* CreateMgrLightShaders();
void DestroyMgrLightShaders();

} // namespace Tarsel::Effects
