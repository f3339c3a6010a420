#include "objects/ParameterValueArray.h"

namespace Tarsel::Effects
{

bool ParameterValueArray::AddListenerChangeLength(const Listener& listener)
{
	return _setListenersChangeLength.Add(listener);
}

bool ParameterValueArray::RemoveListenerChangeLength(const Listener& listener)
{
	return _setListenersChangeLength.Remove(listener);
}

bool ParameterValueArray::_NotifyChangeLength()
{
	return _setListenersChangeLength.Notify(static_cast<IParameter*>(this));
}

} // namespace Tarsel::Effects
