#pragma once

namespace Tarsel::Effects
{

class IGraph;
class IPrototypeParameter;
class IReferencePrototypeShader;

// The class-level side of one per-instance parameter declaration in one graph.
class IReferencePrototypeParameter
{
public:
	typedef IPrototypeParameter Descriptor;

	virtual ~IReferencePrototypeParameter() {}
	virtual IGraph* GetGraph() const = 0;
	virtual IPrototypeParameter* GetDescriptor() const = 0;
	virtual IReferencePrototypeShader* GetReferencePrototypeShader() const = 0;
};

} // namespace Tarsel::Effects
