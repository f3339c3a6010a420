#include "lights/Parameter_WrapperVectorInterfaceBase.h"

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

bool Parameter_WrapperVectorInterfaceBase::Set(IShader** ppShaders, int nCount)
{
	if (!ppShaders || nCount < 0 || (nCount != GetLength() && !SetLength(nCount)))
		return false;
	for (int i = 0; i < nCount; ++i)
		if (!Set(ppShaders[i], i))
			return false;
	return true;
}

bool Parameter_WrapperVectorInterfaceBase::_AnyOtherConnection(int index) const
{
	for (size_t i = 0; i < _vConnections.size(); ++i)
		if (int(i) != index && _vConnections[i])
			return true;
	return false;
}

} // namespace Tarsel::Effects
