#pragma once

#include "values/IStorage.h"
#include "values/ParameterStorage.h"
#include "values/ValueTraits.h"

namespace Tarsel::Effects
{

class IMgrEffects;
class IValue;
class IValueBuffer;

// False, after reporting "nValues >=0" to the assert handler, for a negative count of values.
bool CheckValueCount(int nValues);

// Containers by element type, filled with the type's default; null for types without a value form.
IValue* CreateValue(TypeSpecifier eType, int nValues, bool bResizable);
IValueBuffer* CreateValueBuffer(IMgrEffects* pMgrEffects, TypeSpecifier eType, int nValues, bool bResizable);

// A separate storage of the element type; null for types without a value form or a bad length.
IStorage* CreateStorageSeparate(IMgrEffects* pMgrEffects, TypeSpecifier eType, int nValues, bool bResizable);

// A buffer storage owned by the array parameter pOwner; null when the type has no buffer form or the
// length is bad.
template <class P>
IStorage* CreateStorageBuffer(IMgrEffects* pMgrEffects, P* pOwner, TypeSpecifier eType, int nValues,
                              bool bResizable)
{
	IStorage* pResult = nullptr;
	if (!CheckValueCount(nValues))
		return nullptr;
	DispatchValueType(
	    eType,
	    [&](auto* pTag)
	    {
		    typedef std::remove_pointer_t<decltype(pTag)> T;
		    auto* pStorage = new ParameterStorageApplyBuffer<ParameterStorageBuffer<P, T>>();
		    if (pStorage->Init(pMgrEffects, pOwner, nValues, bResizable))
			    pResult = pStorage;
		    else
			    delete pStorage;
	    },
	    true);
	return pResult;
}

} // namespace Tarsel::Effects
