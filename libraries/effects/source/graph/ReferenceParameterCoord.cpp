#include "graph/ReferenceParameterCoord.h"

#include "core/Assert.h"
#include "graph/IGraph.h"
#include "objects/ParameterCoord.h"

namespace Tarsel::Effects
{

ReferenceParameterCoord::~ReferenceParameterCoord()
{
	Shutdown();
}

bool ReferenceParameterCoord::Init(IGraph* graph, ParameterCoord* coord)
{
	_pGraph = graph;
	_pObject = coord;
	_pCoord = coord;
	coord->AddListenerChangeStructure(MakeDelegate(this, &ReferenceParameterCoord::_OnChangeStructure));
	std::string value;
	coord->Get(value);
	// An unnamed coordinate leaves the reference incomplete, not failed.
	return value.empty() || _Bind(value);
}

void ReferenceParameterCoord::Shutdown()
{
	if (_pCoord == nullptr)
		return;
	_pCoord->RemoveListenerChangeStructure(MakeDelegate(this, &ReferenceParameterCoord::_OnChangeStructure));
	if (!_sValue.empty())
		_Unbind();
	_pCoord = nullptr;
	_pObject = nullptr;
}

bool ReferenceParameterCoord::_Bind(const std::string& value)
{
	TARSEL_ASSERT(_sValue == std::string());
	_sValue = value;
	if (!_pGraph->AcquireAttribute(_pCoord->GetTypeSpecifier(), value, _pCoord->GetTransformation()))
	{
		_sValue.clear();
		return false;
	}
	return true;
}

bool ReferenceParameterCoord::_Unbind()
{
	TARSEL_ASSERT(_sValue != std::string());
	const bool released = _pGraph->ReleaseAttribute(_sValue);
	_sValue.clear();
	return released;
}

bool ReferenceParameterCoord::_OnChangeStructure(IParameter*)
{
	std::string value;
	_pCoord->Get(value);
	if (value != _sValue)
	{
		if (!_sValue.empty())
			_Unbind();
		if (!value.empty())
			_Bind(value);
	}
	return _NotifyChangeStructure();
}

} // namespace Tarsel::Effects
