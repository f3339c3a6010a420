#pragma once

#include "core/Delegate.h"
#include "syntax/Syntax.h"

namespace Tarsel::Effects
{

// Runs over one module every rewriting visitor that parameters, members and coordinates offer.
class ModuleTransformer
{
public:
	typedef FastDelegate2<Class, Visitor*, bool> Delegate;

	explicit ModuleTransformer(Module* module) : _pModule(module), _delegate(this, &ModuleTransformer::Run) {}

	bool Run(Class, Visitor* visitor) { return visitor && _pModule->AcceptVisitor(visitor); }

	// Every object of the map that the filter takes, in key order; the first refusal stops.
	template <class Map, class Filter>
	bool ApplyAll(const Map& objects, Filter take)
	{
		for (const auto& entry : objects)
			if (take(entry.second) && !entry.second->VisitTransformations(_delegate))
				return false;
		return true;
	}
	template <class Map>
	bool ApplyAll(const Map& objects)
	{
		return ApplyAll(objects, [](const auto*) { return true; });
	}

private:
	Module* _pModule;
	Delegate _delegate;
};

} // namespace Tarsel::Effects
