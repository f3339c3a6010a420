#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "effects/MgrOutputs.h"
#include "graph/IGraph.h"

namespace Tarsel::Effects
{

class VisitorPrintTsl;

class Graph : public IGraph
{
public:
	Graph();
	~Graph() override;
	Graph(const Graph&) = delete;
	Graph& operator=(const Graph&) = delete;

	bool Init(IMgrEffects* mgrEffects, IQLShader::Type type, IShader* shader, const std::string& name);
	void Shutdown();

	bool SetName(const std::string& name) override;
	const std::string& GetName() const override { return _sName; }
	std::string GetNameMangled() const override;
	IShader* GetShader() override { return _pShader; }
	IReferenceShader* GetReferenceShader() override { return _pReferenceShader; }
	IReferenceGraph* CreateReference(IEffect* effect) override;
	bool DestroyReference(IReferenceGraph* reference) override;
	bool AddListenerDelete(const Listener& listener) override { return _setListenersDelete.Add(listener); }
	bool RemoveListenerDelete(const Listener& listener) override
	{
		return _setListenersDelete.Remove(listener);
	}
	bool AddReferencePrototypeShader(IPrototypeShader* prototype,
	                                 ReferencePrototypeShader* reference) override;
	bool RemoveReferencePrototypeShader(IPrototypeShader* prototype) override;
	bool AddReferencePrototypeInterface(IPrototypeInterface* prototype,
	                                    ReferencePrototypeInterface* reference) override;
	bool RemoveReferencePrototypeInterface(IPrototypeInterface* prototype) override;
	bool AddDelegateCollectShader(const DelegateCollect& delegate) override
	{
		return _setCollect.Add(delegate);
	}
	bool RemoveDelegateCollectShader(const DelegateCollect& delegate) override
	{
		return _setCollect.Remove(delegate);
	}
	bool AcquireAttribute(TypeSpecifier type, const std::string& name,
	                      TransformationCoord transformation) override;
	bool ReleaseAttribute(const std::string& name) override;
	int GetCountAttributes() const override { return static_cast<int>(_mAttributes.size()); }
	bool AddListenerAddAttribute(const ListenerAttribute& listener) override
	{
		return _setListenersAddAttribute.Add(listener);
	}
	bool RemoveListenerAddAttribute(const ListenerAttribute& listener) override
	{
		return _setListenersAddAttribute.Remove(listener);
	}
	bool AddListenerRemoveAttribute(const ListenerAttribute& listener) override
	{
		return _setListenersRemoveAttribute.Add(listener);
	}
	bool RemoveListenerRemoveAttribute(const ListenerAttribute& listener) override
	{
		return _setListenersRemoveAttribute.Remove(listener);
	}
	bool VisitAttributes(ListenerAttribute& visitor) override;
	bool AcquireOutput(TypeSpecifier type, const std::string& name) override;
	bool ReleaseOutput(const std::string& name) override;
	int GetCountOutputs() override { return _mgrOutputs.GetCountOutputs(); }
	const std::set<std::string>& GetOutputsUsed() const override { return _setOutputsUsed; }
	bool AddListenerAddOutput(ListenerAddOutput& listener) override
	{
		return _mgrOutputs.AddListenerAddOutput(listener);
	}
	bool RemoveListenerAddOutput(ListenerAddOutput& listener) override
	{
		return _mgrOutputs.RemoveListenerAddOutput(listener);
	}
	bool AddListenerRemoveOutput(ListenerRemoveOutput& listener) override
	{
		return _mgrOutputs.AddListenerRemoveOutput(listener);
	}
	bool RemoveListenerRemoveOutput(ListenerRemoveOutput& listener) override
	{
		return _mgrOutputs.RemoveListenerRemoveOutput(listener);
	}
	bool Compile(Result* result) override;
	bool AddListenerCompile(const Listener& listener) override { return _setListenersCompile.Add(listener); }
	bool RemoveListenerCompile(const Listener& listener) override
	{
		return _setListenersCompile.Remove(listener);
	}
	bool IsComplete() override;
	bool IsCompiled() const override { return _bCompiled; }
	bool HasConstructorStatic() const override { return true; }
	std::string GetConstructorStatic() const override { return "_ctor_static" + _rKey.ToString(); }
	bool CollectDeclarationConstructorStatic(Module* module) override;
	bool HasConstructor() const override { return true; }
	std::string GetConstructor() const override { return "_ctor_instance" + _rKey.ToString(); }
	bool CollectDeclarationConstructor(Module* module) override;
	bool AddDelegateApply(const DelegateApply& delegate) override { return _setApply.Add(delegate); }
	bool RemoveDelegateApply(const DelegateApply& delegate) override { return _setApply.Remove(delegate); }
	bool Apply(IQLPrimitive* primitive, IQLProgram* program, Result* result) override;
	bool AddDelegateUpdate(DelegateApply& delegate) override;
	bool AddListenerChangeValue(const ListenerChangeValue& listener) override
	{
		return _setListenersChangeValue.Add(listener);
	}
	bool RemoveListenerChangeValue(const ListenerChangeValue& listener) override
	{
		return _setListenersChangeValue.Remove(listener);
	}
	bool AddListenerChangeStructure(const Listener& listener) override
	{
		return _setListenersChangeStructure.Add(listener);
	}
	bool RemoveListenerChangeStructure(const Listener& listener) override
	{
		return _setListenersChangeStructure.Remove(listener);
	}
	IMgrEffects* GetMgrEffects() const override { return _pMgrEffects; }
	IQLShader* GetQLShader() const override { return _pQLShader; }
	IQLShader::Type GetType() const override { return _eType; }

	// Maps the device's "String 0 Line N" positions in a message back to the library lines that produced
	// them.
	static std::string TranslateErrorMessage(const std::string& message, const VisitorPrintTsl& printer);

private:
	struct AttributeRecord
	{
		Attribute attribute;
		int nCount;
	};

	bool _InitShader(IShader* shader);
	void _ShutdownShader();
	bool _Compile(Result* result);
	bool _CollectGlobals(Module* module);
	bool _CollectVertexAttributeDeclarations(Module* module);
	bool _CollectConstructorStatic(Module* module);
	bool _CollectConstructor(Module* module);
	void _CollectForwardDeclarations(Module* module);
	bool _SetString(const std::string& text, const VisitorPrintTsl& printer, Result* result);
	void _Invalidate();
	bool _OnChangeStructure();
	bool _OnChangeStructureReference(IReferenceShader* reference);
	bool _OnDeleteReferenceShader(IReferenceShader* reference);
	void _DestroyQLShader();

	IMgrEffects* _pMgrEffects;
	Key _rKey;
	IQLShader::Type _eType;
	std::string _sName;
	IQLShader* _pQLShader;
	bool _bInit;
	bool _bCompiled;
	int _nCompiles;
	ListenerSet<Listener> _setListenersDelete;
	IShader* _pShader;
	IReferenceShader* _pReferenceShader;
	std::vector<IReferenceGraph*> _vReferences;
	MgrOutputs _mgrOutputs;
	std::set<std::string> _setOutputsUsed;
	ListenerSet<DelegateCollect> _setCollect;
	ListenerSet<Listener> _setListenersCompile;
	std::map<std::string, AttributeRecord> _mAttributes;
	ListenerSet<ListenerAttribute> _setListenersAddAttribute;
	ListenerSet<ListenerAttribute> _setListenersRemoveAttribute;
	std::map<IPrototypeShader*, ReferencePrototypeShader*> _mReferencePrototypeShaders;
	std::map<IPrototypeInterface*, ReferencePrototypeInterface*> _mReferencePrototypeInterfaces;
	ListenerSet<ListenerChangeValue> _setListenersChangeValue;
	ListenerSet<Listener> _setListenersChangeStructure;
	ListenerSet<DelegateApply> _setApply;
};

} // namespace Tarsel::Effects
