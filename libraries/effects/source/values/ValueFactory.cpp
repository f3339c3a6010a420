#include "values/ValueFactory.h"

#include "core/Assert.h"
#include "effects/IMgrEffects.h"
#include "values/Value.h"
#include "values/ValueBuffer.h"

#include <type_traits>

namespace Tarsel::Effects
{

// Reported under the exact text the rest of the system uses for this check.
bool CheckValueCount(int nValues)
{
	static bool s_bSilenced = false;
	if (nValues < 0 && !s_bSilenced)
		Detail::ReportAssert(s_bSilenced, "nValues >=0", __LINE__, __FILE__, nullptr);
	return nValues >= 0;
}

IValue* CreateValue(TypeSpecifier eType, int nValues, bool bResizable)
{
	IValue* pValue = nullptr;
	if (!CheckValueCount(nValues))
		return nullptr;
	DispatchValueType(eType,
	                  [&](auto* pTag)
	                  {
		                  typedef std::remove_pointer_t<decltype(pTag)> T;
		                  pValue = new Value<T>(nValues, bResizable, ValueTraits<T>::Default());
	                  });
	return pValue;
}

IValueBuffer* CreateValueBuffer(IMgrEffects* pMgrEffects, TypeSpecifier eType, int nValues, bool bResizable)
{
	if (!CheckValueCount(nValues))
		return nullptr;
	IQuillonContext* pContext = pMgrEffects ? pMgrEffects->GetQuillonContext() : nullptr;
	TARSEL_ASSERT(pContext != NULL);
	IValueBuffer* pValue = nullptr;
	if (!pContext)
		return nullptr;
	DispatchValueType(
	    eType,
	    [&](auto* pTag)
	    {
		    typedef std::remove_pointer_t<decltype(pTag)> T;
		    pValue = new ValueBuffer<T>(pContext, nValues, bResizable, ValueTraits<T>::Default());
	    },
	    true);
	return pValue;
}

IStorage* CreateStorageSeparate(IMgrEffects* pMgrEffects, TypeSpecifier eType, int nValues, bool bResizable)
{
	IStorage* pResult = nullptr;
	if (!CheckValueCount(nValues))
		return nullptr;
	DispatchValueType(eType,
	                  [&](auto* pTag)
	                  {
		                  typedef std::remove_pointer_t<decltype(pTag)> T;
		                  auto* pStorage = new ParameterStorage<T>();
		                  if (pStorage->Init(pMgrEffects, nValues, bResizable))
			                  pResult = pStorage;
		                  else
			                  delete pStorage;
	                  });
	return pResult;
}

} // namespace Tarsel::Effects
