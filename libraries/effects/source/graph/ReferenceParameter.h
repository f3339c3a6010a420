#pragma once

#include "core/Delegate.h"
#include "objects/IReferenceMember.h"
#include "objects/IReferenceParameter.h"

namespace Tarsel
{
class IQLPrimitive;
class IQLProgram;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IMember;

// What the graph's references of parameters, members and coordinates share: the graph, the referenced
// object, completeness, an apply step and the structure changes that their owner relays.
template <class I, class T>
class TReferenceDeclaration : public I
{
public:
	typedef FastDelegate1<TReferenceDeclaration*, bool> Listener;

	~TReferenceDeclaration() override {}

	IGraph* GetGraph() const override { return _pGraph; }
	virtual bool IsComplete() { return true; }
	// Writes the value into the program for one primitive; references without values of their own succeed.
	virtual bool Apply(IQLPrimitive*, IQLProgram*) { return true; }
	bool AddListenerChangeStructure(const Listener& listener)
	{
		return _setListenersChangeStructure.Add(listener);
	}
	bool RemoveListenerChangeStructure(const Listener& listener)
	{
		return _setListenersChangeStructure.Remove(listener);
	}

protected:
	bool _NotifyChangeStructure() { return _setListenersChangeStructure.Notify(this); }

	IGraph* _pGraph = nullptr;
	T* _pObject = nullptr;

private:
	ListenerSet<Listener> _setListenersChangeStructure;
};

class ReferenceParameter : public TReferenceDeclaration<IReferenceParameter, IParameter>
{
public:
	typedef TReferenceDeclaration<IReferenceParameter, IParameter> Base;

	IParameter* GetParameter() const override { return _pObject; }

	// The reference that fits the parameter's class, initialised; null when it cannot be made.
	static ReferenceParameter* Create(IGraph* graph, IParameter* parameter);
	// Ends the reference: listeners removed, values released.
	virtual void Shutdown() = 0;
};

class ReferenceMember : public TReferenceDeclaration<IReferenceMember, IMember>
{
public:
	IMember* GetMember() const override { return _pObject; }

	static ReferenceMember* Create(IGraph* graph, IMember* member);
	virtual void Shutdown() = 0;
};

} // namespace Tarsel::Effects
