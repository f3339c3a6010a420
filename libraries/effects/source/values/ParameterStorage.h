#pragma once

#include "core/Assert.h"
#include "core/Console.h"
#include "effects/IMgrEffects.h"
#include "quillon/IQLPrimitive.h"
#include "values/IStorage.h"
#include "values/Value.h"
#include "values/ValueBuffer.h"

#include <algorithm>
#include <memory>

namespace Tarsel::Effects
{

// What every storage of element type T shares, whatever container V holds the values.
template <class T, class V>
class StorageTyped : public IStorage
{
public:
	using IStorage::Get;
	using IStorage::Set;

	~StorageTyped() override { delete _pValue; }

	bool Set(const T& value, int index) override
	{
		return _pValue && _pValue->Set(value, index) && _Changed();
	}
	bool Set(const T* pValues, int nCount) override
	{
		return _pValue && _pValue->SetArray(pValues, nCount) && _Changed();
	}
	bool Get(T& value, int index) const override
	{
		if (!_pValue || index < 0 || index >= _pValue->GetLength())
			return false;
		value = _pValue->Get(index);
		return true;
	}

	bool SetLength(int nValues) override
	{
		if (!_pValue || !_Resize(nValues))
			return false;
		_setChangeLength.Notify(static_cast<IStorage*>(this), nValues);
		return true;
	}
	int GetLength() const override { return _pValue ? _pValue->GetLength() : 0; }
	IValue* GetValue() override { return _pValue; }
	V* GetValueTyped() { return _pValue; }

	bool AddListenerChangeValue(const ListenerChangeValue& listener) override
	{
		_setChangeValue.Add(listener);
		return true;
	}
	bool RemoveListenerChangeValue(const ListenerChangeValue& listener) override
	{
		_setChangeValue.Remove(listener);
		return true;
	}
	bool AddListenerChangeLength(const ListenerChangeLength& listener) override
	{
		_setChangeLength.Add(listener);
		return true;
	}
	bool RemoveListenerChangeLength(const ListenerChangeLength& listener) override
	{
		_setChangeLength.Remove(listener);
		return true;
	}

protected:
	virtual bool _Resize(int nValues) { return _pValue->SetLength(nValues); }

	// A write that reached the value stands even when a listener objects.
	bool _Changed()
	{
		_setChangeValue.Notify(static_cast<IStorage*>(this));
		return true;
	}
	bool _CheckLength(int nValues) const
	{
		TARSEL_ASSERT(nValues >= 0);
		return nValues >= 0 && !_pValue;
	}

	IMgrEffects* _pMgrEffects = nullptr;
	V* _pValue = nullptr;
	ListenerSet<ListenerChangeValue> _setChangeValue;
	ListenerSet<ListenerChangeLength> _setChangeLength;
};

// Values in host memory, applied as plain uniforms: single value parameters and local parameters.
template <class T, template <class> class V = Value>
class ParameterStorage : public StorageTyped<T, V<T>>
{
public:
	typedef ValueTraits<T> Traits;

	bool Init(IMgrEffects* pMgrEffects, int nValues, bool bResizable)
	{
		if (!this->_CheckLength(nValues))
			return false;
		this->_pMgrEffects = pMgrEffects;
		this->_pValue = new V<T>(nValues, bResizable, Traits::Default());
		return true;
	}

	// The program is not needed: the caller has looked the location up already.
	bool Apply(IQLPrimitive* pPrimitive, IQLProgram*, const std::string& sName, int iLocation) override
	{
		if (!this->_pValue || !pPrimitive)
			return false;
		return Traits::Apply(pPrimitive, sName, iLocation, this->_pValue->GetData(),
		                     this->_pValue->GetLength());
	}
};

// Values in a device buffer owned by an array parameter P, which names the block.
template <class P, class T>
class ParameterStorageBuffer : public StorageTyped<T, ValueBuffer<T>>
{
public:
	typedef ValueTraits<T> Traits;

	bool Init(IMgrEffects* pMgrEffects, P* pOwner, int nValues, bool bResizable)
	{
		if (!this->_CheckLength(nValues) || !pMgrEffects)
			return false;
		IQuillonContext* pContext = pMgrEffects->GetQuillonContext();
		TARSEL_ASSERT(pContext != NULL);
		if (!pContext)
			return false;
		this->_pMgrEffects = pMgrEffects;
		_pOwner = pOwner;
		this->_pValue = new ValueBuffer<T>(pContext, nValues, bResizable, Traits::Default());
		return true;
	}

	// The block binding is added by ParameterStorageApplyBuffer.
	bool Apply(IQLPrimitive*, IQLProgram*, const std::string&, int) override { return false; }

protected:
	// Within the buffer's capacity only new elements need their defaults. A re-specified buffer holds
	// garbage: the kept values and the defaults of new ones are written again.
	bool _Resize(int nValues) override
	{
		ValueBuffer<T>* pValue = this->_pValue;
		if (nValues < 0 || !pValue->IsResizable())
			return pValue->SetLength(nValues);
		const int nKept = std::min(nValues, pValue->GetLength());
		if (pValue->GetBuffer() && nValues <= pValue->GetCapacity())
			return pValue->SetLength(nValues) && (nValues == nKept || _WriteDefaults(nKept, nValues));
		std::unique_ptr<T[]> aValues(new T[size_t(nValues)]);
		if (!pValue->GetArray(aValues.get(), nKept))
		{
			// Values that exist but cannot be read back are not silently replaced by defaults.
			if (pValue->GetBuffer())
				return false;
			std::fill(aValues.get(), aValues.get() + nKept, Traits::Default());
		}
		std::fill(aValues.get() + nKept, aValues.get() + nValues, Traits::Default());
		if (!pValue->SetLength(nValues))
			return false;
		return nValues == 0 || pValue->SetArray(aValues.get(), nValues);
	}

	bool _WriteDefaults(int iBegin, int iEnd)
	{
		const int nCount = iEnd - iBegin;
		std::unique_ptr<T[]> aDefaults(new T[size_t(nCount)]);
		std::fill(aDefaults.get(), aDefaults.get() + nCount, Traits::Default());
		return this->_pValue->SetArray(aDefaults.get(), nCount, iBegin);
	}

	P* _pOwner = nullptr;
};

// Adds the uniform-block form of Apply to a buffer storage.
template <class B>
class ParameterStorageApplyBuffer : public B
{
public:
	// The block is always bound under the owner's mangled name, whatever name the caller passes.
	bool Apply(IQLPrimitive* pPrimitive, IQLProgram*, const std::string&, int iLocation) override
	{
		if (!this->_pValue || !this->_pOwner || !pPrimitive)
			return false;
		const std::string sName = this->_pOwner->GetNameMangled();
		IQLBuffer* pBuffer = this->_pValue->GetBuffer();
		if (!pBuffer)
		{
			GetMgrConsole()->Message(
			    "ParameterStorageApplyBuffer::Apply: Set Uniform Block impossible (%s) (NULL buffer)\n",
			    sName.c_str());
			return true;
		}
		if (!pPrimitive->SetUniformBlock(sName, iLocation, pBuffer))
		{
			GetMgrConsole()->Message("ParameterStorageApplyBuffer::Apply: Set Uniform Block failed (%s)\n",
			                         sName.c_str());
			return false;
		}
		return true;
	}
};

} // namespace Tarsel::Effects
