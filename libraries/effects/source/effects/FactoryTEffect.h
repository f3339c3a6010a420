#pragma once

#include <algorithm>
#include <vector>

#include "core/Assert.h"
#include "core/Console.h"
#include "effects/IFactoryEffect.h"

namespace Tarsel::Effects
{

class IMgrEffects;

// Owns the effects of kind E in creation order.
template <class E>
class FactoryTEffect : public IFactoryEffect
{
public:
	FactoryTEffect() : _pMgrEffects(nullptr) {}
	~FactoryTEffect() override
	{
		for (E* effect : _vEffects)
			delete effect;
		_vEffects.clear();
	}
	FactoryTEffect(const FactoryTEffect&) = delete;
	FactoryTEffect& operator=(const FactoryTEffect&) = delete;

	bool Init(IMgrEffects* mgrEffects)
	{
		_pMgrEffects = mgrEffects;
		return true;
	}

	IEffect* CreateEffect() override
	{
		E* effect = new E();
		if (!effect->Init(_pMgrEffects))
		{
			delete effect;
			return nullptr;
		}
		_vEffects.push_back(effect);
		return effect;
	}

	bool DestroyEffect(IEffect* pEffect) override
	{
		TARSEL_ASSERT(pEffect != NULL);
		auto found = std::find_if(_vEffects.begin(), _vEffects.end(),
		                          [pEffect](E* effect) { return static_cast<IEffect*>(effect) == pEffect; });
		if (pEffect == nullptr || found == _vEffects.end())
		{
			GetMgrConsole()->Message("FactoryTEffect::DestroyEffect Effect Not Found\n");
			return false;
		}
		E* effect = *found;
		_vEffects.erase(found);
		delete effect;
		return true;
	}

	bool VisitEffects(Visitor& visitor) override
	{
		bool all = true;
		for (size_t i = 0; i < _vEffects.size(); ++i)
			all = visitor(_vEffects[i]) && all;
		return all;
	}

	size_t GetCountEffects() const { return _vEffects.size(); }

private:
	IMgrEffects* _pMgrEffects;
	std::vector<E*> _vEffects;
};

} // namespace Tarsel::Effects
