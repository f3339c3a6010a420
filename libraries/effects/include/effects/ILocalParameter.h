#pragma once

#include "core/Delegate.h"
#include "effects/ITypedValues.h"

namespace Tarsel
{
class IQLPrimitive;
class IQLProgram;
} // namespace Tarsel

namespace Tarsel::Effects
{

// A value of one shader parameter that holds for one primitive only, overriding the shared value there.
class ILocalParameter : public ITypedValues
{
public:
	typedef FastDelegate1<ILocalParameter*, bool> ListenerDelete;
	typedef FastDelegate1<ILocalParameter*, bool> ListenerChangeValue;

	using ITypedValues::Get;
	using ITypedValues::Set;

	~ILocalParameter() override {}

	virtual bool AddListenerDelete(const ListenerDelete& listener) = 0;
	virtual bool RemoveListenerDelete(const ListenerDelete& listener) = 0;
	// Told after every successful Set.
	virtual bool AddListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool RemoveListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool Apply(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation) = 0;
};

} // namespace Tarsel::Effects
