#pragma once

#include <string>

#include "graph/IGraph.h"
#include "syntax/Enumerations.h"

namespace Tarsel::Effects
{

class IAttributeVertex;
class Module;

// Declares one global per visited (type, name) in a module, under a fixed storage qualifier. Bound into
// the visiting delegates of the manager and the graph.
class CollectorDeclaration
{
public:
	CollectorDeclaration(Module* module, StorageQualifier qualifier)
	    : _pModule(module), _eQualifier(qualifier)
	{
	}

	// Always true.
	bool Collect(TypeSpecifier type, const std::string& name);

protected:
	Module* _pModule;
	StorageQualifier _eQualifier;
};

// `rayattribute type name;` for each ray attribute of the manager.
class CollectorDeclarationRayAttribute : public CollectorDeclaration
{
public:
	explicit CollectorDeclarationRayAttribute(Module* module)
	    : CollectorDeclaration(module, kStorage_RayAttribute)
	{
	}
};

// A plain global for each global variable of the manager.
class CollectorDeclarationVariableGlobal : public CollectorDeclaration
{
public:
	explicit CollectorDeclarationVariableGlobal(Module* module) : CollectorDeclaration(module, kStorage_None)
	{
	}
};

// The ray side of vertex attributes: a `varying` global per attribute.
class CollectorDeclarationAttributeRay : public CollectorDeclaration
{
public:
	explicit CollectorDeclarationAttributeRay(Module* module) : CollectorDeclaration(module, kStorage_Varying)
	{
	}

	// A graph's own attribute records.
	bool CollectAttribute(IGraph::Attribute attribute) { return Collect(attribute.type, attribute.name); }
	// A vertex stage's attributes, which know their ray-side declaration.
	bool CollectAttributeVertex(const std::string& name, IAttributeVertex* attribute);
};

} // namespace Tarsel::Effects
