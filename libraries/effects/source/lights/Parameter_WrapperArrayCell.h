#pragma once

#include "lights/IParameterWrapper.h"

namespace Tarsel::Effects
{

class Shader_LightShader;

// One light's element of an array value parameter of its class's shared shader, seen as a single value.
class Parameter_WrapperArrayCell : public IParameterWrapper_ArrayCell
{
public:
	Parameter_WrapperArrayCell(IParameter* pParameter, Shader_LightShader* pOwner);

	using IParameterWrapper::Get;
	using IParameterWrapper::Set;

// Like any single value, the cell is also its own element 0.
#define TARSEL_ARRAY_CELL_BY_VALUE(T)                                                                        \
	bool Set(T value) override                                                                               \
	{                                                                                                        \
		return _pParameter && _pParameter->Set(value, _iIndex);                                              \
	}                                                                                                        \
	bool Get(T& value) override                                                                              \
	{                                                                                                        \
		return _pParameter && _pParameter->Get(value, _iIndex);                                              \
	}                                                                                                        \
	bool Set(T value, int index) override                                                                    \
	{                                                                                                        \
		return index == 0 && Set(value);                                                                     \
	}                                                                                                        \
	bool Get(T& value, int index) override                                                                   \
	{                                                                                                        \
		return index == 0 && Get(value);                                                                     \
	}
#define TARSEL_ARRAY_CELL_BY_REFERENCE(T)                                                                    \
	bool Set(const T& value) override                                                                        \
	{                                                                                                        \
		return _pParameter && _pParameter->Set(value, _iIndex);                                              \
	}                                                                                                        \
	bool Get(T& value) override                                                                              \
	{                                                                                                        \
		return _pParameter && _pParameter->Get(value, _iIndex);                                              \
	}                                                                                                        \
	bool Set(const T& value, int index) override                                                             \
	{                                                                                                        \
		return index == 0 && Set(value);                                                                     \
	}                                                                                                        \
	bool Get(T& value, int index) override                                                                   \
	{                                                                                                        \
		return index == 0 && Get(value);                                                                     \
	}
	TARSEL_ARRAY_CELL_BY_VALUE(bool)
	TARSEL_ARRAY_CELL_BY_VALUE(int)
	TARSEL_ARRAY_CELL_BY_VALUE(float)
	TARSEL_ARRAY_CELL_BY_VALUE(QLprimitive)
	TARSEL_ARRAY_CELL_BY_VALUE(QLtexture*)
	TARSEL_ARRAY_CELL_BY_REFERENCE(Vector2i)
	TARSEL_ARRAY_CELL_BY_REFERENCE(Vector3i)
	TARSEL_ARRAY_CELL_BY_REFERENCE(Vector4i)
	TARSEL_ARRAY_CELL_BY_REFERENCE(Vector2f)
	TARSEL_ARRAY_CELL_BY_REFERENCE(Vector3f)
	TARSEL_ARRAY_CELL_BY_REFERENCE(Vector4f)
	TARSEL_ARRAY_CELL_BY_REFERENCE(Matrix33f)
	TARSEL_ARRAY_CELL_BY_REFERENCE(Matrix44f)
#undef TARSEL_ARRAY_CELL_BY_VALUE
#undef TARSEL_ARRAY_CELL_BY_REFERENCE

	bool IsDefault() const override
	{
		return _pParameter && _pParameter->IsDefault(_iIndex);
	}
	bool GetAsString(std::string& sValue) const override
	{
		return _pParameter && _pParameter->GetAsString(sValue, _iIndex);
	}
	bool IsArray() const override
	{
		return false;
	}
	int GetLength() const override
	{
		return 1;
	}
	bool SetLength(int) override
	{
		return false;
	}
	bool IsResizable() const override
	{
		return false;
	}

	bool SetSubIndex(int index, bool bMove) override;
	int GetSubIndex() const override
	{
		return _iIndex;
	}
	Shader_LightShader* GetOwner() const
	{
		return _pOwner;
	}

private:
	template <class T>
	bool _Move(int iFrom, int iTo);

	Shader_LightShader* _pOwner;
	int32_t _iIndex;
};

} // namespace Tarsel::Effects
