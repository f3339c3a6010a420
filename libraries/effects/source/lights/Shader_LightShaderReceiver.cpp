#include "lights/Shader_LightShaderReceiver.h"

#include "core/Assert.h"
#include "lights/Parameter_WrapperVectorInterfaceMulti.h"
#include "lights/Parameter_WrapperVectorInterfaceSingle.h"

namespace Tarsel::Effects
{

bool Shader_LightShaderReceiver::Init(IMgrEffects* pMgrEffects, IShader* pShader)
{
	if (!Shader_PassThrough::Init(pMgrEffects, pShader, true) || !_parameters.Collect(pShader))
		return false;
	const std::map<std::string, IParameter*> mAll = _parameters.GetPlain();
	for (const auto& entry : mAll)
		if (entry.second->GetClass() == IParameter::kParameterClass_Interface &&
		    !_WrapInput(entry.first, entry.second))
			break;
	return true;
}

bool Shader_LightShaderReceiver::_WrapInput(const std::string& sName, IParameter* pInput)
{
	IParameter* pIndexer = FindIndexer(_parameters, sName);
	if (!pIndexer)
		return true;
	const std::string sIndexer = pIndexer->GetName();
	if (!pInput->IsArray())
	{
		if (pIndexer->GetType() != "int")
		{
			TARSEL_FAIL("interface input requires int indexer parameter.");
			return false;
		}
		_parameters.Substitute(sName, new Parameter_WrapperVectorInterfaceSingle(pInput, pIndexer),
		                       &sIndexer);
		return true;
	}
	if (pIndexer->GetType() != "ivec2")
	{
		TARSEL_FAIL("array interface input requires ivec2 indexer parameter.");
		return false;
	}
	_parameters.Substitute(sName, new Parameter_WrapperVectorInterfaceMulti(pInput, pIndexer), &sIndexer);
	return true;
}

} // namespace Tarsel::Effects
