#pragma once

#include "core/Delegate.h"
#include "core/Vector.h"
#include "quillon/QLTypes.h"

#include <string>

namespace Tarsel::Effects
{

class IShader;
class IValue;
class IStorage;

// The typed element operations for one element type; a storage answers false for types it does not hold.
template <class T>
class IStorageOf
{
public:
	virtual ~IStorageOf() {}
	virtual bool Set(const T&, int /*index*/) { return false; }
	virtual bool Set(const T*, int /*count*/) { return false; }
	virtual bool Get(T&, int /*index*/) const { return false; }
};

// Where a parameter's values live and how they reach a program for one primitive.
class IStorage : public IStorageOf<bool>,
                 public IStorageOf<int>,
                 public IStorageOf<float>,
                 public IStorageOf<Vector2i>,
                 public IStorageOf<Vector3i>,
                 public IStorageOf<Vector4i>,
                 public IStorageOf<Vector2f>,
                 public IStorageOf<Vector3f>,
                 public IStorageOf<Vector4f>,
                 public IStorageOf<Matrix33f>,
                 public IStorageOf<Matrix44f>,
                 public IStorageOf<QLprimitive>,
                 public IStorageOf<QLtexture*>,
                 public IStorageOf<IShader*>
{
public:
	typedef FastDelegate1<IStorage*, bool> ListenerChangeValue;
	typedef FastDelegate2<IStorage*, int, bool> ListenerChangeLength;

#define TARSEL_STORAGE_USING(T)                                                                              \
	using IStorageOf<T>::Set;                                                                                \
	using IStorageOf<T>::Get;
	TARSEL_STORAGE_USING(bool)
	TARSEL_STORAGE_USING(int)
	TARSEL_STORAGE_USING(float)
	TARSEL_STORAGE_USING(Vector2i)
	TARSEL_STORAGE_USING(Vector3i)
	TARSEL_STORAGE_USING(Vector4i)
	TARSEL_STORAGE_USING(Vector2f)
	TARSEL_STORAGE_USING(Vector3f)
	TARSEL_STORAGE_USING(Vector4f)
	TARSEL_STORAGE_USING(Matrix33f)
	TARSEL_STORAGE_USING(Matrix44f)
	TARSEL_STORAGE_USING(QLprimitive)
	TARSEL_STORAGE_USING(QLtexture*)
	TARSEL_STORAGE_USING(IShader*)
#undef TARSEL_STORAGE_USING

	~IStorage() override {}
	virtual bool SetLength(int nValues) = 0;
	virtual int GetLength() const = 0;
	virtual bool Apply(IQLPrimitive* pPrimitive, IQLProgram* pProgram, const std::string& sName,
	                   int iLocation) = 0;
	virtual bool AddListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool RemoveListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool AddListenerChangeLength(const ListenerChangeLength& listener) = 0;
	virtual bool RemoveListenerChangeLength(const ListenerChangeLength& listener) = 0;
	virtual IValue* GetValue() = 0;
};

} // namespace Tarsel::Effects
