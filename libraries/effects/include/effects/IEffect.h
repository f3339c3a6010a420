#pragma once

#include <string>

#include "core/Delegate.h"
#include "manager/Key.h"

namespace Tarsel
{
class IQLPrimitive;
class IQLProgram;
class Result;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IAttributeVertex;
class IEffect;
class IMgrEffects;
class IReferenceEffect;
class IShader;

// One queued value change of an effect: replayed on every primitive that still has the old value.
class ActionUpdate
{
public:
	typedef FastDelegate2<IQLPrimitive*, IQLProgram*, bool> DelegateApply;

	ActionUpdate() : _pEffect(nullptr) {}
	ActionUpdate(IEffect* effect, const DelegateApply& apply) : _pEffect(effect), _delegateApply(apply) {}

	// Binds the primitive and makes the effect's program current, as a full apply does: between two
	// applies of one effect another effect's program may have become current.
	bool Run(IQLPrimitive* primitive) const;

	IEffect* GetEffect() const { return _pEffect; }
	const DelegateApply& GetDelegateApply() const { return _delegateApply; }

private:
	IEffect* _pEffect;
	DelegateApply _delegateApply;
};

// One compiled program built from a root shader and the shaders connected to it, applied per primitive.
class IEffect
{
public:
	typedef FastDelegate1<IEffect*, bool> Listener;
	typedef FastDelegate2<IEffect*, ActionUpdate&, bool> ListenerChangeValue;
	typedef FastDelegate2<const Key&, const std::string&, bool> VisitorStopCompile;
	typedef FastDelegate2<const std::string&, IAttributeVertex*, bool> VisitorAttribute;

	virtual ~IEffect() {}

	virtual bool SetName(const std::string& name) = 0;
	virtual bool AddListenerDelete(const Listener& listener) = 0;
	virtual bool RemoveListenerDelete(const Listener& listener) = 0;
	virtual bool AddListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool RemoveListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool AddListenerChangeStructure(const Listener& listener) = 0;
	virtual bool RemoveListenerChangeStructure(const Listener& listener) = 0;

	// Compile stops are inert for effects as for the manager.
	virtual Key CreateStopCompile(const std::string&) { return Key::Null(); }
	virtual bool DestroyStopCompile(Key&) { return true; }
	virtual bool VisitStopsCompile(VisitorStopCompile&) { return true; }

	virtual bool AddListenerCompile(const Listener& listener) = 0;
	virtual bool RemoveListenerCompile(const Listener& listener) = 0;
	virtual bool IsCompiled() = 0;
	virtual bool VisitAttributes(VisitorAttribute& visitor) = 0;
	virtual bool AddListenerChangeAttribute(const Listener& listener) = 0;
	virtual bool RemoveListenerChangeAttribute(const Listener& listener) = 0;
	virtual bool SetRoot(IShader* shader) = 0;
	virtual bool GetRoot(IShader*& shader) const = 0;
	virtual IReferenceEffect* CreateReference(IQLPrimitive* primitive) = 0;
	virtual void DestroyReference(IReferenceEffect* reference) = 0;
	virtual bool AddListenerApply(const Listener& listener) = 0;
	virtual bool RemoveListenerApply(const Listener& listener) = 0;
	virtual bool Apply(IQLPrimitive* primitive, Result* result) = 0;
	virtual bool Apply(Result* result) = 0;
	virtual bool AddListenerUpdate(const Listener& listener) = 0;
	virtual bool RemoveListenerUpdate(const Listener& listener) = 0;
	virtual bool Update(Result* result) = 0;
	virtual IQLProgram* GetQLProgram() = 0;
	virtual IMgrEffects* GetMgrEffects() const = 0;
};

} // namespace Tarsel::Effects
