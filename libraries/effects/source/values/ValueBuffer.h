#pragma once

#include "core/Assert.h"
#include "core/Console.h"
#include "quillon/IQLBuffer.h"
#include "quillon/IQuillonContext.h"
#include "values/IValue.h"
#include "values/Value.h"
#include "values/ValueTraits.h"

#include <algorithm>

namespace Tarsel::Effects
{

// Values kept in a device buffer, back to back at their buffer size, read by programs as a uniform block.
template <class T>
class ValueBuffer : public IValueBuffer
{
public:
	typedef ValueTraits<T> Traits;
	typedef typename Traits::Stored Stored;
	static constexpr size_t kElementBytes = sizeof(Stored);

	ValueBuffer(IQuillonContext* pContext, int nValues, bool bResizable, const T& tDefault)
	    : _pContext(pContext), _pBuffer(nullptr), _bResizable(bResizable), _nValues(0), _nCapacity(0),
	      _tDefault(tDefault)
	{
		TARSEL_ASSERT(nValues >= 0);
		nValues = std::max(nValues, 0);
		_nValues = nValues;
		if (_SetLength(nValues) && nValues > 0 &&
		    !_Write("ValueBuffer",
		            [&](Stored* pData) { std::fill(pData, pData + nValues, Traits::ToBuffer(tDefault)); }))
		{
			// Without its defaults the buffer holds no valid value: it is given up like a refused one.
			_pContext->DestroyBuffer(_pBuffer);
			_pBuffer = nullptr;
		}
	}
	~ValueBuffer() override
	{
		if (_pBuffer)
			_pContext->DestroyBuffer(_pBuffer);
	}
	ValueBuffer(const ValueBuffer&) = delete;
	ValueBuffer& operator=(const ValueBuffer&) = delete;

	TypeSpecifier GetTypeSpecifier() const override { return Traits::Specifier(); }
	const char* GetTypeName() const override { return Traits::Name(); }
	int GetLength() const override { return _nValues; }
	bool IsResizable() const override { return _bResizable; }
	IQLBuffer* GetBuffer() const override { return _pBuffer; }
	// The elements the device buffer has room for.
	int GetCapacity() const { return _nCapacity; }

	// Within the capacity the buffer and its contents stay. Beyond it the buffer is re-specified at least
	// twice as large, so that growing one element at a time costs linear time, and the contents are
	// undefined: the caller writes every value again.
	bool SetLength(int nValues) override
	{
		if (!_bResizable)
		{
			GetMgrConsole()->Message("ValueBuffer<%s>::SetLength Not Resizable\n", Traits::Name());
			return false;
		}
		if (nValues < 0)
		{
			GetMgrConsole()->Message("ValueBuffer<%s>::SetLength Negative Length\n", Traits::Name());
			return false;
		}
		return _SetLength(nValues);
	}

	bool Set(const T& value, int index)
	{
		if (index < 0 || index >= _nValues)
		{
			GetMgrConsole()->Message("ValueBuffer<%s>::Set Index (%d) Out of Bounds\n", Traits::Name(),
			                         index);
			return false;
		}
		return _Write("Set", [&](Stored* pData) { pData[index] = Traits::ToBuffer(value); });
	}

	bool SetArray(const T* pValues, int nCount, int offset)
	{
		if (nCount < 0 || nCount + offset > _nValues)
		{
			GetMgrConsole()->Message("ValueBuffer<T>::SetArray Length Overflow\n");
			return false;
		}
		return _Write("SetArray", [&](Stored* pData)
		              { std::transform(pValues, pValues + nCount, pData + offset, &Traits::ToBuffer); });
	}
	bool SetArray(const T* pValues, int nCount) { return SetArray(pValues, nCount, 0); }

	// Without a readable buffer the default value stands in.
	T Get(int index) const
	{
		if (!_pBuffer)
			return _tDefault;
		QLBufferMapping mapping(_pBuffer, QLBufferMapping::kAccess_Read);
		const Stored* pData = static_cast<const Stored*>(mapping.GetData());
		return pData ? Traits::FromBuffer(pData[index]) : _tDefault;
	}

	// Reads the first nCount elements through one mapping; false without a readable buffer.
	bool GetArray(T* pValues, int nCount) const
	{
		if (!_pBuffer)
			return false;
		QLBufferMapping mapping(_pBuffer, QLBufferMapping::kAccess_Read);
		const Stored* pData = static_cast<const Stored*>(mapping.GetData());
		if (!pData)
		{
			GetMgrConsole()->Message("ValueBuffer<%s>::GetArray Map Refused\n", Traits::Name());
			return false;
		}
		std::transform(pData, pData + nCount, pValues, &Traits::FromBuffer);
		return true;
	}

	bool GetValueAsString(std::string& sValue, int index) override
	{
		if (index < 0 || index >= _nValues)
		{
			GetMgrConsole()->Message("ValueBuffer<T>::GetValueAsString Index Out of Bounds\n");
			return false;
		}
		sValue = FormatValue(Get(index));
		return true;
	}
	bool GetValueAsString(std::string& sValue) override { return GetValueAsString(sValue, 0); }

protected:
	bool _SetLength(int nValues)
	{
		if (_pBuffer && nValues <= _nCapacity)
		{
			_nValues = nValues;
			return true;
		}
		const int nCapacity = _pBuffer ? std::max(nValues, 2 * _nCapacity) : std::max(nValues, 1);
		const size_t nBytes = size_t(nCapacity) * kElementBytes;
		if (!_pBuffer)
		{
			_pBuffer = _pContext ? _pContext->CreateBuffer() : nullptr;
			if (!_pBuffer)
			{
				GetMgrConsole()->Message("ValueBuffer<T>::_SetLength CreateBuffer\n");
				return false;
			}
			if (!_pBuffer->Storage(nullptr, nBytes))
				return _InitFailed();
		}
		else if (!_pBuffer->Respecify(nullptr, nBytes, true))
			return _InitFailed();
		_nCapacity = nCapacity;
		_nValues = nValues;
		return true;
	}

private:
	bool _InitFailed()
	{
		GetMgrConsole()->Message("ValueBuffer<T>::_SetLength Buffer Init\n");
		return false;
	}

	// Exactly one write mapping per call; nothing is written without a buffer. pOperation names the caller
	// in the console message of a failed write.
	template <class W>
	bool _Write(const char* pOperation, W&& write)
	{
		if (!_pBuffer)
		{
			GetMgrConsole()->Message("ValueBuffer<%s>::%s No Buffer\n", Traits::Name(), pOperation);
			return false;
		}
		QLBufferMapping mapping(_pBuffer, QLBufferMapping::kAccess_Write);
		Stored* pData = static_cast<Stored*>(mapping.GetData());
		if (!pData)
		{
			GetMgrConsole()->Message("ValueBuffer<%s>::%s Map Refused\n", Traits::Name(), pOperation);
			return false;
		}
		write(pData);
		return true;
	}

	IQuillonContext* _pContext;
	IQLBuffer* _pBuffer;
	bool _bResizable;
	int32_t _nValues;
	int32_t _nCapacity;
	T _tDefault;
};

} // namespace Tarsel::Effects
