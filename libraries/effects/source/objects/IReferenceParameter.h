#pragma once

namespace Tarsel::Effects
{

class IGraph;
class IParameter;

// A parameter's presence in one graph. The graph's concrete references implement it.
class IReferenceParameter
{
public:
	virtual ~IReferenceParameter() {}
	virtual IGraph* GetGraph() const = 0;
	virtual IParameter* GetParameter() const = 0;
};

} // namespace Tarsel::Effects
