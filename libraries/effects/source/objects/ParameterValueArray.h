#pragma once

#include "objects/ParameterValue.h"

namespace Tarsel
{
class IQLPrimitive;
class IQLProgram;
} // namespace Tarsel

namespace Tarsel::Effects
{

// A value parameter holding an array, with a length uniform beside the values.
class ParameterValueArray : public ParameterValue
{
public:
	bool AddListenerChangeLength(const Listener& listener);
	bool RemoveListenerChangeLength(const Listener& listener);

	virtual const std::string& GetNameLengthMangled() const = 0;
	// The values for one primitive, at the location the caller looked up for the mangled name.
	virtual bool ApplyStorage(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation) = 0;
	// The current length as the integer uniform of the length name.
	virtual bool ApplyLength(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation) = 0;

protected:
	bool _NotifyChangeLength();

private:
	ListenerSet<Listener> _setListenersChangeLength;
};

} // namespace Tarsel::Effects
