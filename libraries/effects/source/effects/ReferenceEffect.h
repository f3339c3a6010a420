#pragma once

#include <map>
#include <vector>

#include "effects/IEffect.h"
#include "effects/IReferenceEffect.h"

namespace Tarsel::Effects
{

class ILocalParameter;
class IParameter;
class IReferenceShader;

// An effect on one primitive: applies everything when dirty, otherwise replays the value changes queued
// since.
class ReferenceEffect : public IReferenceEffect
{
public:
	typedef FastDelegate1<IShader*, IReferenceShader*> DelegateReferenceShader;

	ReferenceEffect();
	~ReferenceEffect() override;
	ReferenceEffect(const ReferenceEffect&) = delete;
	ReferenceEffect& operator=(const ReferenceEffect&) = delete;

	bool Init(IQLPrimitive* primitive, IEffect* effect, const DelegateReferenceShader& delegate);
	void Shutdown();

	bool AddListenerDelete(const Listener& listener) override { return _setListenersDelete.Add(listener); }
	bool RemoveListenerDelete(const Listener& listener) override
	{
		return _setListenersDelete.Remove(listener);
	}
	bool Apply(Result* result) override;
	bool AddListenerApply(const Listener& listener) override { return _setListenersApply.Add(listener); }
	bool RemoveListenerApply(const Listener& listener) override
	{
		return _setListenersApply.Remove(listener);
	}
	bool Update(Result* result) override;
	void SetStopUpdate(bool stop) override { _bStopUpdate = stop; }
	bool AddListenerUpdate(const Listener& listener) override { return _setListenersUpdate.Add(listener); }
	bool RemoveListenerUpdate(const Listener& listener) override
	{
		return _setListenersUpdate.Remove(listener);
	}
	ILocalParameter* AcquireParameterLocal(IShader* shader, const std::string& name) override;
	void ReleaseParameterLocal(ILocalParameter* local) override;
	void ReleaseParameterLocalAll() override;
	IEffect* GetEffect() override { return _pEffect; }
	IQLPrimitive* GetQLPrimitive() override { return _pPrimitive; }

	bool IsDirty() const { return _bDirty; }
	size_t GetCountActionsPending() const { return _vActionsPending.size(); }

private:
	void _RemoveHandlers();
	IParameter* _FindParameterLocal(ILocalParameter* local) const;
	bool _OnDeleteEffect(IEffect* effect);
	bool _OnRecompile(IEffect* effect);
	bool _OnChangeValue(IEffect* effect, ActionUpdate& action);
	bool _OnApply(IEffect* effect);
	bool _OnUpdate(IEffect* effect);
	bool _OnDeleteParameterLocal(ILocalParameter* local);
	bool _OnChangeParameterLocal(ILocalParameter* local);

	IQLPrimitive* _pPrimitive;
	IEffect* _pEffect;
	bool _bDirty;
	bool _bStopUpdate;
	DelegateReferenceShader _delegateReferenceShader;
	std::map<IParameter*, ILocalParameter*> _mParametersLocal;
	ListenerSet<Listener> _setListenersDelete;
	ListenerSet<Listener> _setListenersApply;
	ListenerSet<Listener> _setListenersUpdate;
	std::vector<ActionUpdate> _vActionsPending;
};

} // namespace Tarsel::Effects
