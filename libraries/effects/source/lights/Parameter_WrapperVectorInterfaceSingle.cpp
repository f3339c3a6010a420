#include "lights/Parameter_WrapperVectorInterfaceSingle.h"

#include "core/Assert.h"
#include "lights/Shader_LightShader.h"

namespace Tarsel::Effects
{

Parameter_WrapperVectorInterfaceSingle::Parameter_WrapperVectorInterfaceSingle(IParameter* pParameter,
                                                                               IParameter* pIndexer)
    : Parameter_WrapperVectorInterfaceBase(pParameter, pIndexer), _pShaderConnected(nullptr)
{
}

bool Parameter_WrapperVectorInterfaceSingle::Get(IShader*& pShader)
{
	pShader = _pShaderConnected;
	return _pParameter != nullptr;
}

bool Parameter_WrapperVectorInterfaceSingle::Set(IShader* pShader)
{
	auto* pLight = dynamic_cast<Shader_LightShader*>(pShader);
	auto* pWrapper = dynamic_cast<IShaderWrapper*>(pShader);
	if (!_pParameter || !_pIndexer || !_pParameter->Set(pWrapper ? pWrapper->GetShaderWrapped() : pShader))
		return false;
	_pShaderConnected = pShader;
	if (pLight)
		return _pIndexer->Set(pLight->GetIndex());
	return pShader || _pIndexer->Set(0);
}

bool Parameter_WrapperVectorInterfaceSingle::Set(IShader* pShader, int index)
{
	if (!_pParameter || !_pIndexer || !_InRange(index))
		return false;
	if (!pShader)
	{
		// The input stays connected while other lights of the class still use it.
		if (!_AnyOtherConnection(index) && !_pParameter->Set(static_cast<IShader*>(nullptr)))
			return false;
		_vConnections[size_t(index)] = nullptr;
		return _pIndexer->Set(0, index);
	}
	auto* pLight = dynamic_cast<Shader_LightShader*>(pShader);
	IShader* pTarget = pLight ? pLight->GetShaderWrapped() : pShader;
	IShader* pHeld = nullptr;
	if (!_pParameter->Get(pHeld))
		return false;
	if (pHeld && pHeld != pTarget)
	{
		TARSEL_FAIL("incoming shader is different from the existing one for the vectorized shader input. "
		            "Unconnect all inputs then connect the new shader.");
		return false;
	}
	if (!_pParameter->Set(pTarget) || !_pIndexer->Set(pLight ? pLight->GetIndex() : 0, index))
		return false;
	_vConnections[size_t(index)] = pShader;
	return true;
}

} // namespace Tarsel::Effects
