#pragma once

namespace Tarsel::Effects
{

class IGraph;
class IPrototypeShader;

// A shader class's presence in one graph, as the class's descriptors see it: they key their own
// per-graph references by its graph.
class IReferencePrototypeShader
{
public:
	virtual ~IReferencePrototypeShader() {}
	virtual IGraph* GetGraph() const = 0;
	virtual IPrototypeShader* GetPrototypeShader() const = 0;
};

} // namespace Tarsel::Effects
