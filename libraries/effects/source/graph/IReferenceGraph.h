#pragma once

#include "core/Delegate.h"
#include "graph/IGraph.h"

namespace Tarsel::Effects
{

// How an effect watches its graph.
class IReferenceGraph
{
public:
	typedef FastDelegate1<IReferenceGraph*, bool> Listener;
	typedef FastDelegate2<IReferenceGraph*, IGraph::DelegateApply&, bool> ListenerChangeValue;

	virtual ~IReferenceGraph() {}

	virtual IGraph* GetGraph() const = 0;
	virtual bool AddListenerCompile(const Listener& listener) = 0;
	virtual bool RemoveListenerCompile(const Listener& listener) = 0;
	virtual bool AddListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool RemoveListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool AddListenerChangeStructure(const Listener& listener) = 0;
	virtual bool RemoveListenerChangeStructure(const Listener& listener) = 0;
};

} // namespace Tarsel::Effects
