#pragma once

#include "core/Delegate.h"

namespace Tarsel::Effects
{

class IEffect;

// Makes, owns and visits the effects of one kind.
class IFactoryEffect
{
public:
	typedef FastDelegate1<IEffect*, bool> Visitor;

	virtual ~IFactoryEffect() {}

	virtual IEffect* CreateEffect() = 0;
	virtual bool DestroyEffect(IEffect* effect) = 0;
	virtual bool VisitEffects(Visitor& visitor) = 0;
};

} // namespace Tarsel::Effects
