#pragma once

#include "core/Delegate.h"
#include "effects/IParameter.h"

namespace Tarsel::Effects
{

// What every kind of parameter does alike: its change-structure listeners and its references in graphs,
// which the graph makes to fit the parameter's class.
class ParameterCommon : public IParameter
{
public:
	bool AddListenerChangeStructure(const Listener& listener) override
	{
		return _setListenersChangeStructure.Add(listener);
	}
	bool RemoveListenerChangeStructure(const Listener& listener) override
	{
		return _setListenersChangeStructure.Remove(listener);
	}
	IReferenceParameter* CreateReference(IGraph* pGraph) override;
	bool CollectShaderGenerated(Module*) override { return true; }
	bool DestroyReference(IReferenceParameter* pReference) override;

protected:
	ListenerSet<Listener> _setListenersChangeStructure;
};

} // namespace Tarsel::Effects
