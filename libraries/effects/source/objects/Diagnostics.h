#pragma once

#include "effects/IMgrEffects.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/ParameterValueConsole.h"

namespace Tarsel::Effects
{

// Makes a caller's result the manager's current one for a scope, so that nested failures are reported
// into it; the one installed before comes back afterwards.
class ScopedResult
{
public:
	ScopedResult(IMgrEffects* mgrEffects, Result* result)
	    : _pImpl(mgrEffects ? mgrEffects->GetImplementation() : nullptr), _pPrevious(nullptr)
	{
		if (_pImpl)
		{
			_pPrevious = _pImpl->GetResult();
			_pImpl->SetResult(result);
		}
	}
	~ScopedResult()
	{
		if (_pImpl)
			_pImpl->SetResult(_pPrevious);
	}
	ScopedResult(const ScopedResult&) = delete;
	ScopedResult& operator=(const ScopedResult&) = delete;

private:
	MgrEffectsImpl* _pImpl;
	Result* _pPrevious;
};

} // namespace Tarsel::Effects
