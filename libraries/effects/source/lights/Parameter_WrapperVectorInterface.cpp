#include "lights/Parameter_WrapperVectorInterface.h"

#include "core/Assert.h"
#include "lights/Parameter_WrapperVectorInterfaceMultiToSingle.h"
#include "lights/Shader_LightShader.h"

namespace Tarsel::Effects
{

Parameter_WrapperVectorInterfaceBase::Parameter_WrapperVectorInterfaceBase(IParameter* pParameter,
                                                                           IParameter* pIndexer)
    : IParameterWrapper(pParameter), _pIndexer(pIndexer),
      _vConnections(size_t(pIndexer ? pIndexer->GetLength() : 0), nullptr)
{
}

void Parameter_WrapperVectorInterfaceBase::Detach()
{
	IParameterWrapper::Detach();
	_pIndexer = nullptr;
}

bool Parameter_WrapperVectorInterfaceBase::SetLength(int nLength)
{
	if (!_pIndexer || !_pIndexer->SetLength(nLength))
		return false;
	_vConnections.resize(size_t(nLength), nullptr);
	return true;
}

bool Parameter_WrapperVectorInterfaceBase::Get(IShader*& pShader, int index)
{
	if (!_InRange(index))
		return false;
	pShader = _vConnections[size_t(index)];
	return true;
}

bool Parameter_WrapperVectorInterfaceBase::_AnyOtherConnection(int index) const
{
	for (size_t i = 0; i < _vConnections.size(); ++i)
		if (int(i) != index && _vConnections[i])
			return true;
	return false;
}

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

bool Parameter_WrapperVectorInterfaceMulti::Set(IShader* pShader, int index)
{
	if (!_pParameter || !_pIndexer || !_InRange(index))
		return false;
	Vector2i value(-1, -1);
	// A cleared connection leaves the slot to the other lights of its class.
	if (pShader && !ConnectToInterfaceArray(_pParameter, pShader, value))
		return false;
	if (!_pIndexer->Set(value, index))
		return false;
	_vConnections[size_t(index)] = pShader;
	return true;
}

} // namespace Tarsel::Effects
