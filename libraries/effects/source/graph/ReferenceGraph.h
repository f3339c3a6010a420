#pragma once

#include "graph/IReferenceGraph.h"

namespace Tarsel::Effects
{

class IEffect;

// Relays a graph's compile, change-value and change-structure notices to the effect that watches it.
class ReferenceGraph : public IReferenceGraph
{
public:
	ReferenceGraph() = default;
	~ReferenceGraph() override;
	ReferenceGraph(const ReferenceGraph&) = delete;
	ReferenceGraph& operator=(const ReferenceGraph&) = delete;

	bool Init(IGraph* graph, IEffect* effect);
	void Shutdown();

	IGraph* GetGraph() const override { return _pGraph; }
	IEffect* GetEffect() const { return _pEffect; }
	bool AddListenerCompile(const Listener& listener) override { return _setListenersCompile.Add(listener); }
	bool RemoveListenerCompile(const Listener& listener) override
	{
		return _setListenersCompile.Remove(listener);
	}
	bool AddListenerChangeValue(const ListenerChangeValue& listener) override
	{
		return _setListenersChangeValue.Add(listener);
	}
	bool RemoveListenerChangeValue(const ListenerChangeValue& listener) override
	{
		return _setListenersChangeValue.Remove(listener);
	}
	bool AddListenerChangeStructure(const Listener& listener) override
	{
		return _setListenersChangeStructure.Add(listener);
	}
	bool RemoveListenerChangeStructure(const Listener& listener) override
	{
		return _setListenersChangeStructure.Remove(listener);
	}

private:
	bool _OnCompile(IGraph* graph);
	bool _OnChangeValue(IGraph* graph, IGraph::DelegateApply& delegate);
	bool _OnChangeStructure(IGraph* graph);

	IGraph* _pGraph = nullptr;
	IEffect* _pEffect = nullptr;
	ListenerSet<Listener> _setListenersCompile;
	ListenerSet<ListenerChangeValue> _setListenersChangeValue;
	ListenerSet<Listener> _setListenersChangeStructure;
};

} // namespace Tarsel::Effects
