#include "lights/Parameter_WrapperVectorInterfaceMultiToSingle.h"

#include <sstream>

#include "core/Assert.h"
#include "lights/Shader_LightShader.h"

namespace Tarsel::Effects
{

namespace
{
const Vector2i kDisconnected(-1, -1);
const Vector2i kDeleted(-2, -2);

// The slot that already holds the target, the empty single slot of a fresh array, or a new last slot.
bool FindSlot(IParameter* pArray, IShader* pTarget, int& slot)
{
	const int nLength = pArray->GetLength();
	for (int i = 0; i < nLength; ++i)
	{
		IShader* pHeld = nullptr;
		if (!pArray->Get(pHeld, i))
			return false;
		if (pHeld == pTarget)
		{
			slot = i;
			return true;
		}
	}
	IShader* pFirst = nullptr;
	if (nLength == 1 && pArray->Get(pFirst, 0) && pFirst == nullptr)
	{
		slot = 0;
		return true;
	}
	slot = nLength;
	return pArray->SetLength(nLength + 1);
}
} // namespace

bool ConnectToInterfaceArray(IParameter* pArray, IShader* pShader, Vector2i& value)
{
	IShader* pTarget = pShader;
	int index = 0;
	if (auto* pLight = dynamic_cast<Shader_LightShader*>(pShader))
	{
		pTarget = pLight->GetShaderWrapped();
		index = pLight->GetIndex();
	}
	else if (auto* pWrapper = dynamic_cast<IShaderWrapper*>(pShader))
		pTarget = pWrapper->GetShaderWrapped();
	int slot = 0;
	if (!pTarget || !FindSlot(pArray, pTarget, slot) || !pArray->Set(pTarget, slot))
		return false;
	value = Vector2i(slot, index);
	return true;
}

Parameter_WrapperVectorInterfaceMultiToSingle::Parameter_WrapperVectorInterfaceMultiToSingle(
    IParameter* pParameter, IParameter* pIndexer, Shader_LightShader* pOwner)
    : IParameterWrapper_ArrayCell(pParameter), _pIndexer(pIndexer), _pOwner(pOwner), _iIndex(-1),
      _pShaderConnected(nullptr), _pLightConnected(nullptr)
{
}

Parameter_WrapperVectorInterfaceMultiToSingle::~Parameter_WrapperVectorInterfaceMultiToSingle()
{
	if (_pIndexer && _iIndex >= 0)
	{
		const bool res = _WriteIndexer(kDeleted);
		TARSEL_ASSERT_MSG(res, "error while deleting the parameter wrapper");
	}
}

void Parameter_WrapperVectorInterfaceMultiToSingle::Detach()
{
	IParameterWrapper::Detach();
	_pIndexer = nullptr;
}

bool Parameter_WrapperVectorInterfaceMultiToSingle::_WriteIndexer(const Vector2i& value)
{
	return _pIndexer->Set(value, _iIndex);
}

bool Parameter_WrapperVectorInterfaceMultiToSingle::Get(IShader*& pShader)
{
	pShader = nullptr;
	if (!_pOwner || _iIndex < 0)
		return false;
	pShader = _pShaderConnected;
	return true;
}

bool Parameter_WrapperVectorInterfaceMultiToSingle::Set(IShader* pShader)
{
	if (!_pOwner || !_pParameter || !_pIndexer || _iIndex < 0)
		return false;
	// A light wrapper is connected again even when it looks the same: a destroyed light's address may
	// come back as another light's, with another element.
	if (pShader == _pShaderConnected && !_pLightConnected)
		return true;
	if (!pShader)
	{
		if (!_WriteIndexer(kDisconnected))
			return false;
		_pShaderConnected = nullptr;
		_pLightConnected = nullptr;
		return true;
	}
	Vector2i value;
	if (!ConnectToInterfaceArray(_pParameter, pShader, value) || !_WriteIndexer(value))
		return false;
	_pShaderConnected = pShader;
	_pLightConnected = dynamic_cast<Shader_LightShader*>(pShader);
	return true;
}

bool Parameter_WrapperVectorInterfaceMultiToSingle::GetAsString(std::string& sValue) const
{
	std::ostringstream stream;
	stream << static_cast<const void*>(_pShaderConnected);
	sValue = stream.str();
	return true;
}

bool Parameter_WrapperVectorInterfaceMultiToSingle::SetSubIndex(int index, bool bMove)
{
	bool bResult = true;
	if (bMove && _pIndexer && index != _iIndex)
	{
		Vector2i value;
		bResult = _pIndexer->Get(value, _iIndex) && _pIndexer->Set(value, index);
	}
	_iIndex = index;
	return bResult;
}

} // namespace Tarsel::Effects
