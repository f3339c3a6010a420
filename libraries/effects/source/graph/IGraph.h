#pragma once

#include <set>
#include <string>

#include "core/Delegate.h"
#include "manager/MgrKeys.h"
#include "quillon/IQLShader.h"
#include "syntax/Enumerations.h"

namespace Tarsel
{
class IQLPrimitive;
class IQLProgram;
class Result;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IEffect;
class IMgrEffects;
class IPrototypeInterface;
class IPrototypeShader;
class IReferenceGraph;
class IReferenceShader;
class IShader;
class Module;
class ReferencePrototypeInterface;
class ReferencePrototypeShader;

// The shader graph of one effect: a root shader and everything reached from it through interface inputs,
// compiled into one API shader.
class IGraph
{
public:
	struct Attribute
	{
		TypeSpecifier type;
		std::string name;
		TransformationCoord transformation;
	};

	typedef FastDelegate2<IQLPrimitive*, IQLProgram*, bool> DelegateApply;
	typedef FastDelegate1<Module*, bool> DelegateCollect;
	typedef FastDelegate1<IGraph*, bool> Listener;
	typedef FastDelegate1<Attribute, bool> ListenerAttribute;
	typedef FastDelegate2<TypeSpecifier, const std::string&, bool> ListenerAddOutput;
	typedef FastDelegate1<const std::string&, bool> ListenerRemoveOutput;
	typedef FastDelegate2<IGraph*, DelegateApply&, bool> ListenerChangeValue;

	virtual ~IGraph() {}

	virtual bool SetName(const std::string& name) = 0;
	virtual const std::string& GetName() const = 0;
	virtual std::string GetNameMangled() const = 0;
	virtual IShader* GetShader() = 0;
	virtual IReferenceShader* GetReferenceShader() = 0;
	virtual IReferenceGraph* CreateReference(IEffect* effect) = 0;
	virtual bool DestroyReference(IReferenceGraph* reference) = 0;
	virtual bool AddListenerDelete(const Listener& listener) = 0;
	virtual bool RemoveListenerDelete(const Listener& listener) = 0;
	virtual bool AddReferencePrototypeShader(IPrototypeShader* prototype,
	                                         ReferencePrototypeShader* reference) = 0;
	virtual bool RemoveReferencePrototypeShader(IPrototypeShader* prototype) = 0;
	virtual bool AddReferencePrototypeInterface(IPrototypeInterface* prototype,
	                                            ReferencePrototypeInterface* reference) = 0;
	virtual bool RemoveReferencePrototypeInterface(IPrototypeInterface* prototype) = 0;
	virtual bool AddDelegateCollectShader(const DelegateCollect& delegate) = 0;
	virtual bool RemoveDelegateCollectShader(const DelegateCollect& delegate) = 0;
	virtual bool AcquireAttribute(TypeSpecifier type, const std::string& name,
	                              TransformationCoord transformation) = 0;
	virtual bool ReleaseAttribute(const std::string& name) = 0;
	virtual int GetCountAttributes() const = 0;
	virtual bool AddListenerAddAttribute(const ListenerAttribute& listener) = 0;
	virtual bool RemoveListenerAddAttribute(const ListenerAttribute& listener) = 0;
	virtual bool AddListenerRemoveAttribute(const ListenerAttribute& listener) = 0;
	virtual bool RemoveListenerRemoveAttribute(const ListenerAttribute& listener) = 0;
	virtual bool VisitAttributes(ListenerAttribute& visitor) = 0;
	virtual bool AcquireOutput(TypeSpecifier type, const std::string& name) = 0;
	virtual bool ReleaseOutput(const std::string& name) = 0;
	virtual int GetCountOutputs() = 0;
	virtual const std::set<std::string>& GetOutputsUsed() const = 0;
	virtual bool AddListenerAddOutput(ListenerAddOutput& listener) = 0;
	virtual bool RemoveListenerAddOutput(ListenerAddOutput& listener) = 0;
	virtual bool AddListenerRemoveOutput(ListenerRemoveOutput& listener) = 0;
	virtual bool RemoveListenerRemoveOutput(ListenerRemoveOutput& listener) = 0;
	virtual bool Compile(Result* result) = 0;
	virtual bool AddListenerCompile(const Listener& listener) = 0;
	virtual bool RemoveListenerCompile(const Listener& listener) = 0;

	// Compile stops named for this graph; nothing in compilation consults them yet.
	Key CreateStopCompile(const std::string& name) { return _mgrStopsCompile.Create(name); }
	bool DestroyStopCompile(Key& key) { return _mgrStopsCompile.Destroy(key); }
	size_t GetCountStopsCompile() { return _mgrStopsCompile.GetCount(); }

	virtual bool IsComplete() = 0;
	virtual bool IsCompiled() const = 0;
	virtual bool HasConstructorStatic() const = 0;
	virtual std::string GetConstructorStatic() const = 0;
	virtual bool CollectDeclarationConstructorStatic(Module* module) = 0;
	virtual bool HasConstructor() const = 0;
	virtual std::string GetConstructor() const = 0;
	virtual bool CollectDeclarationConstructor(Module* module) = 0;
	virtual bool AddDelegateApply(const DelegateApply& delegate) = 0;
	virtual bool RemoveDelegateApply(const DelegateApply& delegate) = 0;
	virtual bool Apply(IQLPrimitive* primitive, IQLProgram* program, Result* result) = 0;
	virtual bool AddDelegateUpdate(DelegateApply& delegate) = 0;
	virtual bool AddListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool RemoveListenerChangeValue(const ListenerChangeValue& listener) = 0;
	virtual bool AddListenerChangeStructure(const Listener& listener) = 0;
	virtual bool RemoveListenerChangeStructure(const Listener& listener) = 0;
	virtual IMgrEffects* GetMgrEffects() const = 0;
	virtual IQLShader* GetQLShader() const = 0;
	virtual IQLShader::Type GetType() const = 0;

protected:
	MgrKeys<std::string> _mgrStopsCompile;
};

} // namespace Tarsel::Effects
