#pragma once

namespace Tarsel::Effects
{

class IGraph;
class IPrototypeMember;
class IReferencePrototypeShader;

// The class-level side of one per-instance member declaration in one graph.
class IReferencePrototypeMember
{
public:
	typedef IPrototypeMember Descriptor;

	virtual ~IReferencePrototypeMember() {}
	virtual IGraph* GetGraph() const = 0;
	virtual IPrototypeMember* GetDescriptor() const = 0;
	virtual IReferencePrototypeShader* GetReferencePrototypeShader() const = 0;
};

} // namespace Tarsel::Effects
