#pragma once

#include <string>

#include "graph/ReferenceParameter.h"

namespace Tarsel::Effects
{

class ParameterCoord;

// A coordinate parameter in one graph: the vertex attribute that its value names, held on the graph.
class ReferenceParameterCoord : public ReferenceParameter
{
public:
	ReferenceParameterCoord() = default;
	~ReferenceParameterCoord() override;
	ReferenceParameterCoord(const ReferenceParameterCoord&) = delete;
	ReferenceParameterCoord& operator=(const ReferenceParameterCoord&) = delete;

	bool Init(IGraph* graph, ParameterCoord* coord);
	void Shutdown() override;

	bool IsComplete() override { return !_sValue.empty(); }
	const std::string& GetValue() const { return _sValue; }

private:
	bool _Bind(const std::string& value);
	bool _Unbind();
	bool _OnChangeStructure(IParameter*);

	ParameterCoord* _pCoord = nullptr;
	std::string _sValue;
};

} // namespace Tarsel::Effects
