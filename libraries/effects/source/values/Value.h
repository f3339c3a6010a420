#pragma once

#include "core/Assert.h"
#include "core/Console.h"
#include "values/IValue.h"
#include "values/ValueTraits.h"

#include <algorithm>
#include <sstream>

namespace Tarsel::Effects
{

// Formats one element; shared by both containers so that their text forms cannot drift apart.
template <class T>
std::string FormatValue(const T& value)
{
	std::ostringstream stream;
	WriteValue(stream, value);
	return stream.str();
}

// Values in host memory, applied as plain uniforms.
template <class T>
class Value : public IValue
{
public:
	typedef ValueTraits<T> Traits;

	Value(int nValues, bool bResizable, const T& tDefault)
	    : _pData(nullptr), _bResizable(bResizable), _nValues(0), _tDefault(tDefault)
	{
		TARSEL_ASSERT(nValues >= 0);
		_Resize(std::max(nValues, 0));
	}
	~Value() override { delete[] _pData; }
	Value(const Value&) = delete;
	Value& operator=(const Value&) = delete;

	TypeSpecifier GetTypeSpecifier() const override { return Traits::Specifier(); }
	const char* GetTypeName() const override { return Traits::Name(); }
	int GetLength() const override { return _nValues; }
	bool IsResizable() const override { return _bResizable; }

	bool SetLength(int nValues) override
	{
		if (!_bResizable)
		{
			GetMgrConsole()->Message("Value::SetLength Not Resizable\n");
			return false;
		}
		if (nValues < 0)
		{
			GetMgrConsole()->Message("Value::SetLength Negative Length\n");
			return false;
		}
		_Resize(nValues);
		return true;
	}

	bool Set(const T& value, int index)
	{
		if (index < 0 || index >= _nValues)
		{
			GetMgrConsole()->Message("Value::Set Index Out of Bounds\n");
			return false;
		}
		_pData[index] = value;
		return true;
	}

	bool SetArray(const T* pValues, int nCount)
	{
		if (nCount > _nValues || nCount < 0)
		{
			GetMgrConsole()->Message("Value::SetArray Array Out of Bounds\n");
			return false;
		}
		std::copy(pValues, pValues + nCount, _pData);
		return true;
	}

	T Get(int index) const { return _pData[index]; }
	T* GetData() { return _pData; }
	const T* GetData() const { return _pData; }

	bool GetValueAsString(std::string& sValue, int index) override
	{
		if (index < 0 || index >= _nValues)
		{
			GetMgrConsole()->Message("Value<T>::GetValueAsString Index Out of Bounds\n");
			return false;
		}
		sValue = FormatValue(_pData[index]);
		return true;
	}
	bool GetValueAsString(std::string& sValue) override { return GetValueAsString(sValue, 0); }

protected:
	void _Resize(int nValues)
	{
		T* pData = new T[nValues];
		const int nKept = std::min(_nValues, nValues);
		std::copy(_pData, _pData + nKept, pData);
		std::fill(pData + nKept, pData + nValues, _tDefault);
		delete[] _pData;
		_pData = pData;
		_nValues = nValues;
	}

private:
	T* _pData;
	bool _bResizable;
	int32_t _nValues;
	T _tDefault;
};

} // namespace Tarsel::Effects
