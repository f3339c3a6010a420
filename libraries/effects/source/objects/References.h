#pragma once

#include "objects/IReferencePrototypeShader.h"

namespace Tarsel::Effects
{

class IGraph;
class IShader;
class PrototypeInterface;
class PrototypeShader;

// The per-graph side of the object model, as far as the objects that count and own them need to know it.
// Destroying a reference ends it.

class ReferencePrototypeShader : public IReferencePrototypeShader
{
};

class ReferencePrototypeInterface
{
public:
	virtual ~ReferencePrototypeInterface() {}
	virtual IGraph* GetGraph() const = 0;
	// The implementing classes' references in the same graph.
	virtual bool AddReferencePrototypeShader(ReferencePrototypeShader* reference) = 0;
	virtual bool RemoveReferencePrototypeShader(ReferencePrototypeShader* reference) = 0;
};

class IReferenceShader
{
public:
	virtual ~IReferenceShader() {}
	virtual IGraph* GetGraph() const = 0;
};

// Makes initialised references; null when one cannot be made. The manager holds the factory in use.
class IFactoryReferences
{
public:
	virtual ~IFactoryReferences() {}
	virtual ReferencePrototypeShader* CreateReferencePrototypeShader(PrototypeShader* prototype,
	                                                                 IGraph* graph) = 0;
	virtual ReferencePrototypeInterface* CreateReferencePrototypeInterface(PrototypeInterface* prototype,
	                                                                       IGraph* graph) = 0;
	virtual IReferenceShader* CreateReferenceShader(IShader* shader, IGraph* graph) = 0;
};

} // namespace Tarsel::Effects
