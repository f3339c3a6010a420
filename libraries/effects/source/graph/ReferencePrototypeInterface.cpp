#include "graph/ReferencePrototypeInterface.h"

#include <algorithm>

#include "effects/IPrototypeInterface.h"
#include "graph/IGraph.h"
#include "objects/ParameterValueConsole.h"

namespace Tarsel::Effects
{

ReferencePrototypeInterface::~ReferencePrototypeInterface()
{
	Shutdown();
}

bool ReferencePrototypeInterface::Init(IPrototypeInterface* prototype, IGraph* graph)
{
	if (prototype == nullptr || graph == nullptr)
		return false;
	_pPrototype = prototype;
	_pGraph = graph;
	return graph->AddReferencePrototypeInterface(prototype, this);
}

void ReferencePrototypeInterface::Shutdown()
{
	// The prototype keeps this reference past its graph, so the graph is not called back here.
	_vReferencePrototypeShaders.clear();
	_pGraph = nullptr;
	_pPrototype = nullptr;
}

bool ReferencePrototypeInterface::AddReferencePrototypeShader(ReferencePrototypeShader* reference)
{
	_vReferencePrototypeShaders.push_back(reference);
	return true;
}

bool ReferencePrototypeInterface::RemoveReferencePrototypeShader(ReferencePrototypeShader* reference)
{
	auto found = std::find(_vReferencePrototypeShaders.begin(), _vReferencePrototypeShaders.end(), reference);
	if (found == _vReferencePrototypeShaders.end())
	{
		ConsoleOf(_pPrototype ? _pPrototype->GetMgrEffects() : nullptr)
		    ->Message("ReferencePrototypeInterface::RemoveReferencePrototypeShader Reference Not Found\n");
		return false;
	}
	_vReferencePrototypeShaders.erase(found);
	return true;
}

std::string ReferencePrototypeInterface::GetMethodNameMangled(const std::string& method) const
{
	return _pPrototype ? _pPrototype->GetMethodNameMangled(method) : std::string();
}

} // namespace Tarsel::Effects
