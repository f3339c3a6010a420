#pragma once

#include <string>

#include "core/Delegate.h"

namespace Tarsel
{
class IQLPrimitive;
class Result;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IEffect;
class ILocalParameter;
class IShader;

// An effect's presence on one primitive: its pending value changes and its local parameters.
class IReferenceEffect
{
public:
	typedef FastDelegate1<IReferenceEffect*, bool> Listener;

	virtual ~IReferenceEffect() {}

	virtual bool AddListenerDelete(const Listener& listener) = 0;
	virtual bool RemoveListenerDelete(const Listener& listener) = 0;
	virtual bool Apply(Result* result) = 0;
	virtual bool AddListenerApply(const Listener& listener) = 0;
	virtual bool RemoveListenerApply(const Listener& listener) = 0;
	virtual bool Update(Result* result) = 0;
	virtual void SetStopUpdate(bool stop) = 0;
	virtual bool AddListenerUpdate(const Listener& listener) = 0;
	virtual bool RemoveListenerUpdate(const Listener& listener) = 0;
	// The primitive's own copy of a value parameter of a shader in the effect's graph; null when the shader
	// is not in the graph or the parameter cannot be local. A Set on it reaches this primitive at the next
	// Update.
	virtual ILocalParameter* AcquireParameterLocal(IShader* shader, const std::string& name) = 0;
	virtual void ReleaseParameterLocal(ILocalParameter* local) = 0;
	virtual void ReleaseParameterLocalAll() = 0;
	virtual IEffect* GetEffect() = 0;
	virtual IQLPrimitive* GetQLPrimitive() = 0;
};

} // namespace Tarsel::Effects
