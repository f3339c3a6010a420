#include "graph/ReferenceGraph.h"

namespace Tarsel::Effects
{

ReferenceGraph::~ReferenceGraph()
{
	Shutdown();
}

bool ReferenceGraph::Init(IGraph* graph, IEffect* effect)
{
	if (graph == nullptr || _pGraph)
		return false;
	_pGraph = graph;
	_pEffect = effect;
	_pGraph->AddListenerCompile(MakeDelegate(this, &ReferenceGraph::_OnCompile));
	_pGraph->AddListenerChangeValue(MakeDelegate(this, &ReferenceGraph::_OnChangeValue));
	_pGraph->AddListenerChangeStructure(MakeDelegate(this, &ReferenceGraph::_OnChangeStructure));
	return true;
}

void ReferenceGraph::Shutdown()
{
	if (_pGraph == nullptr)
		return;
	_pGraph->RemoveListenerCompile(MakeDelegate(this, &ReferenceGraph::_OnCompile));
	_pGraph->RemoveListenerChangeValue(MakeDelegate(this, &ReferenceGraph::_OnChangeValue));
	_pGraph->RemoveListenerChangeStructure(MakeDelegate(this, &ReferenceGraph::_OnChangeStructure));
	_pGraph = nullptr;
	_pEffect = nullptr;
}

bool ReferenceGraph::_OnCompile(IGraph*)
{
	return _setListenersCompile.Notify(this);
}

bool ReferenceGraph::_OnChangeValue(IGraph*, IGraph::DelegateApply& delegate)
{
	return _setListenersChangeValue.Notify(this, delegate);
}

bool ReferenceGraph::_OnChangeStructure(IGraph*)
{
	return _setListenersChangeStructure.Notify(this);
}

} // namespace Tarsel::Effects
