#include "lights/MgrLightShaders.h"

#include <algorithm>
#include <vector>

#include "core/Assert.h"
#include "core/Console.h"
#include "effects/IMgrEffects.h"
#include "lights/Shader_LightShader.h"
#include "lights/Shader_LightShaderReceiver.h"
#include "objects/Diagnostics.h"
#include "objects/IMember.h"

namespace Tarsel::Effects
{

namespace
{
MgrLightShaders* s_pMgrLightShaders = nullptr;

const char* const kClassesArray[] = {"LightInstanceNullArray",
                                     "LightInstanceStandardArray",
                                     "LightNullArray",
                                     "LightPointArray",
                                     "LightDirectArray",
                                     "LightAmbientArray",
                                     "LightLinearArray",
                                     "LightPlanarAreaArray",
                                     "LightPlanarAreaFacingArray",
                                     "LightSphereAreaBruteArray",
                                     "LightSphereAreaImportanceArray",
                                     "LightDome_ConstantArray",
                                     "LightDomeArray",
                                     "LightPortalRectArray",
                                     "LightCylindricalArray",
                                     "LightCylindricalCappedArray",
                                     "LightFocusNullArray",
                                     "LightFocusConeArray",
                                     "LightFocusPyramidArray",
                                     "LightFocusCylinderArray",
                                     "LightFocusBoxArray",
                                     "LightFocusDiscAreaArray",
                                     "LightFocusRectAreaArray",
                                     "LightDecayNullArray",
                                     "LightDecayDoubleArray",
                                     "LightDecayInverseArray",
                                     "LightDecayInvSquareArray",
                                     "LightDecayNearFarArray",
                                     "EmissionNullArray",
                                     "EmissionSurfaceDiffuseArray",
                                     "EmissionLinearDiffuseArray",
                                     "EmissionGoniophotometricArray",
                                     "ProjectorMapNullArray",
                                     "ProjectorMapConeArray",
                                     "ProjectorMapOmniArray",
                                     "ProjectorMapDirectBoxArray",
                                     "ProjectorMapDirectCylinderArray",
                                     "ShadowNullArray",
                                     "ShadowSharpArray",
                                     "ShadowBlurredArray",
                                     "ShadowAreaPlanarArray",
                                     "ShadowAreaPlanarAngularArray",
                                     "ShadowAreaSphereBruteArray",
                                     "ShadowAreaBoxArray"};

// In this order: a null class's inputs may only use interfaces whose null shader exists already.
const char* const kClassesNull[] = {"LightDecayNullArray",   "LightFocusNullArray",   "EmissionNullArray",
                                    "ProjectorMapNullArray", "ShadowNullArray",       "LightNullArray",
                                    "Integrator2Null",       "Integrator3Null",       "Integrator6Null",
                                    "TextureBlack",          "LightInstanceNullArray"};

// Gathers what a shader's visit offers.
template <class T>
struct Collected
{
	std::vector<T*> v;
	bool On(const std::string&, T* p)
	{
		v.push_back(p);
		return true;
	}
};

template <class T, class Visit>
std::vector<T*> CollectFrom(Visit visit)
{
	Collected<T> collected;
	auto delegate = MakeDelegate(&collected, &Collected<T>::On);
	visit(delegate);
	return collected.v;
}
} // namespace

IMgrLightShaders* CreateMgrLightShaders()
{
	if (!s_pMgrLightShaders)
		s_pMgrLightShaders = new MgrLightShaders();
	return s_pMgrLightShaders;
}

void DestroyMgrLightShaders()
{
	delete s_pMgrLightShaders;
	s_pMgrLightShaders = nullptr;
}

MgrLightShaders::~MgrLightShaders()
{
	Shutdown();
	if (s_pMgrLightShaders == this)
		s_pMgrLightShaders = nullptr;
}

bool MgrLightShaders::Init(IMgrEffects* pMgrEffects, IMgrConsole* pConsole)
{
	if (!pMgrEffects || !pConsole)
		return false;
	Shutdown();
	_pMgrEffects = pMgrEffects;
	_pConsole = pConsole;
	for (const char* pClass : kClassesArray)
		AddShaderArray(pClass);
	AddShaderManager("LightManagerArray");
	for (const char* pClass : kClassesNull)
		if (!_CreateShaderNull(pClass))
			return false;
	return true;
}

bool MgrLightShaders::AddShaderArray(const std::string& sClass)
{
	_setClassesArray.insert(sClass);
	return true;
}

bool MgrLightShaders::AddShaderManager(const std::string& sClass)
{
	_setClassesManager.insert(sClass);
	return true;
}

const MgrLightShaders::Record* MgrLightShaders::GetRecord(const std::string& sClass) const
{
	auto found = _mRecords.find(sClass);
	return found == _mRecords.end() ? nullptr : &found->second;
}

IShader* MgrLightShaders::GetShaderNull(const std::string& sInterface) const
{
	auto found = _mShadersNull.find(sInterface);
	return found == _mShadersNull.end() ? nullptr : found->second;
}

bool MgrLightShaders::_CreateShaderNull(const std::string& sClass)
{
	IShader* pShader = CreateShader(sClass, nullptr);
	if (!pShader)
		return false;
	return _mShadersNull.emplace(pShader->GetInterfaceName(), pShader).second;
}

IShader* MgrLightShaders::CreateShader(const std::string& sClass, Result* pResult)
{
	TARSEL_ASSERT(_pMgrEffects != NULL);
	TARSEL_ASSERT(_pConsole != NULL);
	if (!_pMgrEffects)
		return nullptr;
	if (_setClassesArray.count(sClass))
		return _CreateLightShader(sClass, pResult);
	if (_setClassesManager.count(sClass))
		return _CreateReceiver(sClass, pResult);
	return _pMgrEffects->CreateShader(sClass, pResult);
}

Shader_LightShader* MgrLightShaders::_CreateLightShader(const std::string& sClass, Result* pResult)
{
	auto found = _mRecords.find(sClass);
	if (found == _mRecords.end())
	{
		IShader* pShaderArray = _pMgrEffects->CreateShader(sClass, pResult);
		if (!pShaderArray)
			return nullptr;
		found = _mRecords.emplace(sClass, Record()).first;
		found->second.pShaderArray = pShaderArray;
		IShader::ListenerShader listener = MakeDelegate(this, &MgrLightShaders::_OnDeleteShaderArray);
		pShaderArray->AddListenerDelete(listener);
	}
	Record& record = found->second;
	if (!record.pShaderArray)
		return nullptr;
	auto* pWrapper = new Shader_LightShader();
	record.setWrappers.insert(pWrapper);
	const int index = int(record.nCounter++);
	ScopedResult scope(_pMgrEffects, pResult);
	if (pWrapper->Init(_pMgrEffects, record.pShaderArray, index) &&
	    _Resize(record.pShaderArray, int(record.nCounter)) && _ConnectShadersNull(pWrapper))
		return pWrapper;
	// The host never sees a light that failed; its element stays unused until the next renumbering.
	record.setWrappers.erase(pWrapper);
	delete pWrapper;
	return nullptr;
}

Shader_LightShaderReceiver* MgrLightShaders::_CreateReceiver(const std::string& sClass, Result* pResult)
{
	IShader* pShader = _pMgrEffects->CreateShader(sClass, pResult);
	auto* pReceiver = new Shader_LightShaderReceiver();
	_setReceivers.insert(pReceiver);
	if (pReceiver->Init(_pMgrEffects, pShader))
		return pReceiver;
	_setReceivers.erase(pReceiver);
	delete pReceiver;
	return nullptr;
}

bool MgrLightShaders::_Resize(IShader* pShaderArray, int nLength)
{
	bool bAll = true;
	for (IParameter* pParameter : CollectFrom<IParameter>([&](IShader::VisitorParameter& v)
	                                                      { return pShaderArray->VisitParameters(v); }))
		if (pParameter->GetClass() != IParameter::kParameterClass_Interface && pParameter->IsArray() &&
		    pParameter->GetLength() != nLength)
			bAll = pParameter->SetLength(nLength) && bAll;
	if (!bAll)
		return false;
	for (IMember* pMember :
	     CollectFrom<IMember>([&](IShader::VisitorMember& v) { return pShaderArray->VisitMembers(v); }))
		if (pMember->IsArray() && pMember->GetLength() != nLength)
			bAll = pMember->SetLength(nLength) && bAll;
	return bAll;
}

bool MgrLightShaders::_ConnectShadersNull(IShader* pShader)
{
	for (IParameter* pParameter :
	     CollectFrom<IParameter>([&](IShader::VisitorParameter& v) { return pShader->VisitParameters(v); }))
		if (pParameter->GetClass() == IParameter::kParameterClass_Interface &&
		    !_ConnectShaderNull(pParameter))
			return false;
	return true;
}

bool MgrLightShaders::_ConnectShaderNull(IParameter* pParameter)
{
	IShader* pConnected = nullptr;
	if (!pParameter->Get(pConnected))
		return false;
	if (pConnected)
		return true;
	IShader* pShaderNull = GetShaderNull(pParameter->GetType());
	if (!pShaderNull)
	{
		_pConsole->Error("No NULL shader for %s?", pParameter->GetType().c_str());
		return false;
	}
	// Only substitutes understand light wrappers; a shader's own input takes the shader behind one.
	auto* pWrapper = dynamic_cast<IShaderWrapper*>(pShaderNull);
	if (pWrapper && !dynamic_cast<IParameterWrapper*>(pParameter))
		pShaderNull = pWrapper->GetShaderWrapped();
	return pParameter->Set(pShaderNull);
}

bool MgrLightShaders::DestroyShader(IShader* pShader)
{
	if (!pShader)
		return true;
	if (auto* pReceiver = dynamic_cast<Shader_LightShaderReceiver*>(pShader))
	{
		if (!_setReceivers.erase(pReceiver))
		{
			TARSEL_FAIL("missing record");
			return false;
		}
		delete pReceiver;
		return true;
	}
	auto* pWrapper = dynamic_cast<Shader_LightShader*>(pShader);
	if (!pWrapper)
	{
		if (_pMgrEffects)
			_pMgrEffects->DestroyShader(pShader);
		return true;
	}
	return _DestroyLightShader(pWrapper);
}

bool MgrLightShaders::_DestroyLightShader(Shader_LightShader* pWrapper)
{
	IShader* pShaderArray = pWrapper->GetShaderWrapped();
	if (!pShaderArray)
		return false;
	auto found = _mRecords.find(pShaderArray->GetClassName());
	if (found == _mRecords.end())
	{
		TARSEL_FAIL("Corrupted light shader record");
		return false;
	}
	if (found->second.pShaderArray != pShaderArray)
	{
		TARSEL_FAIL("The records don't match");
		return false;
	}
	if (!found->second.setWrappers.count(pWrapper))
	{
		TARSEL_FAIL("LightShaderWrapper is not in the records");
		return false;
	}
	// The null shaders stay as long as the manager: other lights' inputs hold them.
	for (const auto& entry : _mShadersNull)
		if (entry.second == pWrapper)
			return false;
	found->second.setWrappers.erase(pWrapper);
	delete pWrapper;
	return true;
}

bool MgrLightShaders::_OnDeleteShaderArray(IShader* pShader)
{
	for (auto& entry : _mRecords)
		if (entry.second.pShaderArray == pShader)
			entry.second.pShaderArray = nullptr;
	return true;
}

bool MgrLightShaders::UpdateArrays(bool bFlag)
{
	bool bAll = true;
	for (auto& entry : _mRecords)
		bAll = bAll && _Renumber(entry.second);
	if (bFlag)
	{
		TARSEL_FAIL("implement");
		return false;
	}
	return bAll;
}

// In the order of the current indices, so that every element moves down onto one that is free already.
bool MgrLightShaders::_Renumber(Record& record)
{
	if (!record.pShaderArray)
		return false;
	std::vector<Shader_LightShader*> vWrappers(record.setWrappers.begin(), record.setWrappers.end());
	std::stable_sort(vWrappers.begin(), vWrappers.end(),
	                 [](const Shader_LightShader* a, const Shader_LightShader* b)
	                 { return a->GetIndex() < b->GetIndex(); });
	int index = 0;
	for (Shader_LightShader* pWrapper : vWrappers)
		if (!pWrapper->SetIndex(index++, true))
			return false;
	return _Resize(record.pShaderArray, index);
}

void MgrLightShaders::Shutdown()
{
	if (_pMgrEffects && !_ShutdownRecords())
		return;
	_mRecords.clear();
	_setReceivers.clear();
	_mShadersNull.clear();
	_pMgrEffects = nullptr;
	_pConsole = nullptr;
}

bool MgrLightShaders::_ShutdownRecords()
{
	for (auto& entry : _mRecords)
	{
		for (Shader_LightShader* pWrapper : entry.second.setWrappers)
		{
			if (!pWrapper)
			{
				TARSEL_FAIL("null shader in the records");
				return false;
			}
			delete pWrapper;
		}
		entry.second.setWrappers.clear();
	}
	for (auto it = _setReceivers.begin(); it != _setReceivers.end(); it = _setReceivers.erase(it))
	{
		if (!(*it)->GetShaderWrapped())
		{
			TARSEL_FAIL("null shader in the wrapper");
			return false;
		}
		delete *it;
	}
	for (auto& entry : _mRecords)
	{
		if (!entry.second.pShaderArray)
		{
			TARSEL_FAIL("null shader in the records");
			return false;
		}
		IShader::ListenerShader listener = MakeDelegate(this, &MgrLightShaders::_OnDeleteShaderArray);
		entry.second.pShaderArray->RemoveListenerDelete(listener);
		_pMgrEffects->DestroyShader(entry.second.pShaderArray);
		entry.second.pShaderArray = nullptr;
	}
	return true;
}

} // namespace Tarsel::Effects
