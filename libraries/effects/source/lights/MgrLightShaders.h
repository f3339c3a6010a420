#pragma once

#include <map>
#include <set>
#include <string>

#include "effects/IMgrLightShaders.h"

namespace Tarsel::Effects
{

class IParameter;
class Shader_LightShader;
class Shader_LightShaderReceiver;

class MgrLightShaders : public IMgrLightShaders
{
public:
	// The shared shader of one array class and the lights that use it.
	struct Record
	{
		IShader* pShaderArray = nullptr;
		// The index the next light gets; renumbering leaves it alone.
		uint32_t nCounter = 0;
		std::set<Shader_LightShader*> setWrappers;
	};

	MgrLightShaders() = default;
	~MgrLightShaders() override;
	MgrLightShaders(const MgrLightShaders&) = delete;
	MgrLightShaders& operator=(const MgrLightShaders&) = delete;

	void Destroy() override { delete this; }
	void Shutdown() override;
	bool Init(IMgrEffects* pMgrEffects, IMgrConsole* pConsole) override;
	bool AddShaderArray(const std::string& sClass) override;
	bool AddShaderManager(const std::string& sClass) override;
	IShader* CreateShader(const std::string& sClass, Result* pResult) override;
	bool DestroyShader(IShader* pShader) override;
	bool UpdateArrays(bool bFlag) override;

	const Record* GetRecord(const std::string& sClass) const;
	IShader* GetShaderNull(const std::string& sInterface) const;

private:
	bool _CreateShaderNull(const std::string& sClass);
	bool _ConnectShadersNull(IShader* pShader);
	bool _ConnectShaderNull(IParameter* pParameter);
	Shader_LightShader* _CreateLightShader(const std::string& sClass, Result* pResult);
	Shader_LightShaderReceiver* _CreateReceiver(const std::string& sClass, Result* pResult);
	bool _DestroyLightShader(Shader_LightShader* pWrapper);
	// Every array value parameter first, then (only when they all took it) every array member.
	bool _Resize(IShader* pShaderArray, int nLength);
	bool _Renumber(Record& record);
	bool _ShutdownRecords();
	// An array shader deleted under its record (its library went first) is forgotten, not destroyed again.
	bool _OnDeleteShaderArray(IShader* pShader);

	IMgrEffects* _pMgrEffects = nullptr;
	IMgrConsole* _pConsole = nullptr;
	std::map<std::string, IShader*> _mShadersNull;
	std::map<std::string, Record> _mRecords;
	std::set<Shader_LightShaderReceiver*> _setReceivers;
	std::set<std::string> _setClassesArray;
	std::set<std::string> _setClassesManager;
};

} // namespace Tarsel::Effects
