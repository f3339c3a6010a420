#include "effects/ReferenceEffect.h"

#include "core/Assert.h"
#include "core/Result.h"
#include "effects/IMgrEffects.h"
#include "effects/IShader.h"
#include "graph/IReferenceShader.h"
#include "graph/ReferenceParameterValue.h"
#include "objects/LocalParameterValueSingle.h"

namespace Tarsel::Effects
{

namespace
{

ReferenceParameterValueSingle* ReferenceOf(ILocalParameter* local)
{
	LocalParameterValueSingle* single = dynamic_cast<LocalParameterValueSingle*>(local);
	return single ? dynamic_cast<ReferenceParameterValueSingle*>(single->GetReference()) : nullptr;
}

// Reference effects print their own failures: the effect's listeners answer with a bool only.
bool PrintFailure(IEffect* effect, Result& result)
{
	IMgrEffects* mgrEffects = effect ? effect->GetMgrEffects() : nullptr;
	if (mgrEffects)
		result.Print(mgrEffects->GetConsole());
	return false;
}

} // namespace

ReferenceEffect::ReferenceEffect()
    : _pPrimitive(nullptr), _pEffect(nullptr), _bDirty(true), _bStopUpdate(false)
{
}

ReferenceEffect::~ReferenceEffect()
{
	Shutdown();
}

bool ReferenceEffect::Init(IQLPrimitive* primitive, IEffect* effect, const DelegateReferenceShader& delegate)
{
	_pPrimitive = primitive;
	_pEffect = effect;
	_delegateReferenceShader = delegate;
	_pEffect->AddListenerDelete(MakeDelegate(this, &ReferenceEffect::_OnDeleteEffect));
	_pEffect->AddListenerChangeStructure(MakeDelegate(this, &ReferenceEffect::_OnRecompile));
	_pEffect->AddListenerCompile(MakeDelegate(this, &ReferenceEffect::_OnRecompile));
	_pEffect->AddListenerChangeValue(MakeDelegate(this, &ReferenceEffect::_OnChangeValue));
	_pEffect->AddListenerApply(MakeDelegate(this, &ReferenceEffect::_OnApply));
	_pEffect->AddListenerUpdate(MakeDelegate(this, &ReferenceEffect::_OnUpdate));
	_bDirty = true;
	return true;
}

void ReferenceEffect::Shutdown()
{
	_setListenersDelete.Visit(static_cast<IReferenceEffect*>(this));
	_setListenersDelete.clear();
	if (_pEffect)
		_RemoveHandlers();
	_pEffect = nullptr;
	ReleaseParameterLocalAll();
	_vActionsPending.clear();
	_pPrimitive = nullptr;
	_bDirty = true;
}

void ReferenceEffect::_RemoveHandlers()
{
	_pEffect->RemoveListenerDelete(MakeDelegate(this, &ReferenceEffect::_OnDeleteEffect));
	_pEffect->RemoveListenerChangeStructure(MakeDelegate(this, &ReferenceEffect::_OnRecompile));
	_pEffect->RemoveListenerCompile(MakeDelegate(this, &ReferenceEffect::_OnRecompile));
	_pEffect->RemoveListenerChangeValue(MakeDelegate(this, &ReferenceEffect::_OnChangeValue));
	_pEffect->RemoveListenerApply(MakeDelegate(this, &ReferenceEffect::_OnApply));
	_pEffect->RemoveListenerUpdate(MakeDelegate(this, &ReferenceEffect::_OnUpdate));
}

bool ReferenceEffect::Apply(Result* result)
{
	if (_pEffect == nullptr || !_pEffect->Apply(_pPrimitive, result))
		return false;
	_setListenersApply.Visit(static_cast<IReferenceEffect*>(this));
	_bDirty = false;
	return true;
}

bool ReferenceEffect::Update(Result* result)
{
	if (_bStopUpdate)
		return true;
	if (_bDirty)
		return Apply(result);
	for (const ActionUpdate& action : _vActionsPending)
		if (!action.Run(_pPrimitive))
			return false;
	_vActionsPending.clear();
	_setListenersUpdate.Visit(static_cast<IReferenceEffect*>(this));
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Local parameters
// ---------------------------------------------------------------------------------------------------------

ILocalParameter* ReferenceEffect::AcquireParameterLocal(IShader* shader, const std::string& name)
{
	IParameter* parameter = shader ? shader->GetParameter(name) : nullptr;
	if (parameter == nullptr)
		return nullptr;
	auto found = _mParametersLocal.find(parameter);
	if (found != _mParametersLocal.end())
		return found->second;
	IReferenceShader* referenceShader = _delegateReferenceShader ? _delegateReferenceShader(shader) : nullptr;
	IReferenceParameter* referenceParameter = referenceShader ? referenceShader->GetParameter(name) : nullptr;
	auto* single = dynamic_cast<ReferenceParameterValueSingle*>(referenceParameter);
	ILocalParameter* local = single ? single->AcquireLocal(_pPrimitive) : nullptr;
	if (local == nullptr)
		return nullptr;
	local->AddListenerDelete(MakeDelegate(this, &ReferenceEffect::_OnDeleteParameterLocal));
	local->AddListenerChangeValue(MakeDelegate(this, &ReferenceEffect::_OnChangeParameterLocal));
	_mParametersLocal[parameter] = local;
	return local;
}

IParameter* ReferenceEffect::_FindParameterLocal(ILocalParameter* local) const
{
	for (const auto& entry : _mParametersLocal)
		if (entry.second == local)
			return entry.first;
	return nullptr;
}

void ReferenceEffect::ReleaseParameterLocal(ILocalParameter* local)
{
	IParameter* parameter = _FindParameterLocal(local);
	if (parameter == nullptr)
		return;
	_mParametersLocal.erase(parameter);
	local->RemoveListenerDelete(MakeDelegate(this, &ReferenceEffect::_OnDeleteParameterLocal));
	local->RemoveListenerChangeValue(MakeDelegate(this, &ReferenceEffect::_OnChangeParameterLocal));
	if (ReferenceParameterValueSingle* reference = ReferenceOf(local))
		reference->ReleaseLocal(static_cast<LocalParameterValueSingle*>(local));
}

void ReferenceEffect::ReleaseParameterLocalAll()
{
	while (!_mParametersLocal.empty())
		ReleaseParameterLocal(_mParametersLocal.begin()->second);
}

bool ReferenceEffect::_OnDeleteParameterLocal(ILocalParameter* local)
{
	if (IParameter* parameter = _FindParameterLocal(local))
		_mParametersLocal.erase(parameter);
	return true;
}

// Queued like a shared value change, but only here: no other primitive sees it.
bool ReferenceEffect::_OnChangeParameterLocal(ILocalParameter* local)
{
	ReferenceParameterValueSingle* reference = ReferenceOf(local);
	if (_bDirty || _pEffect == nullptr || reference == nullptr)
		return true;
	_vActionsPending.emplace_back(_pEffect, MakeDelegate(reference, &ReferenceParameterValueSingle::Apply));
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Handlers on the effect
// ---------------------------------------------------------------------------------------------------------

bool ReferenceEffect::_OnDeleteEffect(IEffect*)
{
	_pEffect = nullptr;
	Shutdown();
	return true;
}

bool ReferenceEffect::_OnRecompile(IEffect*)
{
	_bDirty = true;
	_vActionsPending.clear();
	return true;
}

bool ReferenceEffect::_OnChangeValue(IEffect*, ActionUpdate& action)
{
	// A full apply is due anyway.
	if (_bDirty)
		return true;
	TARSEL_ASSERT(_pEffect != NULL);
	_vActionsPending.push_back(action);
	return true;
}

bool ReferenceEffect::_OnApply(IEffect*)
{
	Result result;
	return Apply(&result) || PrintFailure(_pEffect, result);
}

bool ReferenceEffect::_OnUpdate(IEffect*)
{
	Result result;
	return Update(&result) || PrintFailure(_pEffect, result);
}

} // namespace Tarsel::Effects
