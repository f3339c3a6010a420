#pragma once

#include "core/Delegate.h"
#include "syntax/Enumerations.h"

namespace Tarsel::Effects
{

class Module;
class Visitor;

// How a value is declared and addressed in generated program text.
class IAccess
{
public:
	typedef FastDelegate2<Class, Visitor*, bool> VisitorTransformation;

	virtual ~IAccess() {}
	virtual bool CollectShader(Module* pModule) = 0;
	// Offers each rewriting visitor with the node class it rewrites; the visitor lives for the call only.
	virtual bool VisitTransformations(VisitorTransformation& delegate) = 0;
};

} // namespace Tarsel::Effects
