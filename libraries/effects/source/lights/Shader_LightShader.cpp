#include "lights/Shader_LightShader.h"

#include "core/Assert.h"
#include "lights/Parameter_WrapperArrayCell.h"
#include "lights/Parameter_WrapperVectorInterfaceMultiToSingle.h"

namespace Tarsel::Effects
{

Shader_LightShader::Shader_LightShader() : _iIndex(-1) {}

Shader_LightShader::~Shader_LightShader()
{
	_parameters.Clear();
	_iIndex = -2;
}

bool Shader_LightShader::Init(IMgrEffects* pMgrEffects, IShader* pShaderArray, int index)
{
	if (!Shader_PassThrough::Init(pMgrEffects, pShaderArray, false))
		return false;
	_iIndex = index;
	if (!_parameters.Collect(pShaderArray))
		return false;
	_WrapParameters();
	return true;
}

void Shader_LightShader::_WrapParameters()
{
	const std::map<std::string, IParameter*> mAll = _parameters.GetPlain();
	for (const auto& entry : mAll)
	{
		// An indexer taken over by an earlier input is not wrapped itself.
		if (!_parameters.FindPlain(entry.first) || !entry.second->IsArray())
			continue;
		if (!_WrapParameter(entry.first, entry.second))
			return;
	}
}

bool Shader_LightShader::_WrapParameter(const std::string& sName, IParameter* pParameter)
{
	switch (pParameter->GetClass())
	{
	case IParameter::kParameterClass_Value:
	{
		auto* pCell = new Parameter_WrapperArrayCell(pParameter, this);
		pCell->SetSubIndex(_iIndex, false);
		_parameters.Substitute(sName, pCell, nullptr);
		return true;
	}
	case IParameter::kParameterClass_Coord:
		TARSEL_FAIL("wrapping vectorized kClass_Coord param is not possible yet.");
		return true;
	case IParameter::kParameterClass_Interface:
	{
		IParameter* pIndexer = FindIndexer(_parameters, sName);
		if (!pIndexer)
			return true;
		if (pIndexer->GetType() != "ivec2")
		{
			TARSEL_FAIL("array interface input requires ivec2 indexer parameter.");
			return false;
		}
		auto* pInput = new Parameter_WrapperVectorInterfaceMultiToSingle(pParameter, pIndexer, this);
		const std::string sIndexer = pIndexer->GetName();
		pInput->SetSubIndex(_iIndex, false);
		_parameters.Substitute(sName, pInput, &sIndexer);
		return true;
	}
	default:
		TARSEL_FAIL("don't know how to wrap kClass_Undefined");
		return true;
	}
}

bool Shader_LightShader::AddListenerChangeIndex(ListenerChangeIndex& listener)
{
	return _setListenersIndex.Add(listener);
}

bool Shader_LightShader::RemoveListenerChangeIndex(ListenerChangeIndex& listener)
{
	return _setListenersIndex.Remove(listener);
}

bool Shader_LightShader::SetIndex(int index, bool bMove)
{
	if (index == _iIndex)
		return true;
	const bool bMoved = _parameters.VisitWrapped(
	    [&](IParameterWrapper* pWrapper)
	    { return static_cast<IParameterWrapper_ArrayCell*>(pWrapper)->SetSubIndex(index, bMove); });
	if (!bMoved)
		return false;
	const int iOld = _iIndex;
	_iIndex = index;
	_setListenersIndex.Notify(this, iOld);
	return true;
}

} // namespace Tarsel::Effects
