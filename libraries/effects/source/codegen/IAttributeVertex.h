#pragma once

#include <string>

#include "syntax/Enumerations.h"

namespace Tarsel
{
class IQLProgram;
} // namespace Tarsel

namespace Tarsel::Effects
{

class CompoundStatement;
class Module;

enum AttributeSemantic
{
	kSemantic_Position = 0,
	kSemantic_Normal = 1,
	kSemantic_Coord = 2,
};

// One per-vertex input: declared and moved into a varying by the vertex stage, read as a varying by the ray
// stages.
class IAttributeVertex
{
public:
	virtual ~IAttributeVertex() {}

	virtual bool CollectDeclarationsVertex(Module* module) = 0;
	virtual bool CollectTransformation(Module* module, CompoundStatement* body) = 0;
	virtual bool CollectDeclarationsRay(Module* module) = 0;
	// True when the linked program has the attribute.
	virtual bool CacheQLLocation(IQLProgram* program) = 0;
	virtual AttributeSemantic GetSemantic() const = 0;
	virtual TypeSpecifier GetType() const = 0;
	virtual const std::string& GetName() const = 0;
	virtual const std::string& GetNameAttribute() const = 0;
	virtual const std::string& GetNameVarying() const = 0;
	virtual int GetQLLocation() const = 0;
};

} // namespace Tarsel::Effects
