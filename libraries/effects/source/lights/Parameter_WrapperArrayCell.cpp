#include "lights/Parameter_WrapperArrayCell.h"

#include "core/Assert.h"

namespace Tarsel::Effects
{

Parameter_WrapperArrayCell::Parameter_WrapperArrayCell(IParameter* pParameter, Shader_LightShader* pOwner)
    : IParameterWrapper_ArrayCell(pParameter), _pOwner(pOwner), _iIndex(-1)
{
}

template <class T>
bool Parameter_WrapperArrayCell::_Move(int iFrom, int iTo)
{
	T value;
	return _pParameter && _pParameter->Get(value, iFrom) && _pParameter->Set(value, iTo);
}

bool Parameter_WrapperArrayCell::SetSubIndex(int index, bool bMove)
{
	if (index == _iIndex)
		return true;
	const int iOld = _iIndex;
	_iIndex = index;
	if (!bMove)
		return true;
	switch (GetTypeSpecifier())
	{
	case kType_Float:
		return _Move<float>(iOld, index);
	case kType_Int:
		return _Move<int>(iOld, index);
	case kType_Bool:
		return _Move<bool>(iOld, index);
	case kType_Vec2:
		return _Move<Vector2f>(iOld, index);
	case kType_Vec3:
		return _Move<Vector3f>(iOld, index);
	case kType_Vec4:
		return _Move<Vector4f>(iOld, index);
	case kType_IVec2:
		return _Move<Vector2i>(iOld, index);
	case kType_IVec3:
		return _Move<Vector3i>(iOld, index);
	case kType_IVec4:
		return _Move<Vector4i>(iOld, index);
	case kType_Mat3:
		return _Move<Matrix33f>(iOld, index);
	case kType_Mat4:
		return _Move<Matrix44f>(iOld, index);
	default:
		TARSEL_FAIL("don't know what to do");
		return false;
	}
}

} // namespace Tarsel::Effects
