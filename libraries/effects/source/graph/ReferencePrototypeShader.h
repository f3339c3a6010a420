#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/Delegate.h"
#include "objects/IReferencePrototypeShader.h"
#include "syntax/Enumerations.h"

namespace Tarsel
{
class IQLPrimitive;
class IQLProgram;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IGraph;
class IMember;
class IParameter;
class IPrototypeMember;
class IPrototypeParameter;
class IReferencePrototypeMember;
class IReferencePrototypeParameter;
class IReferenceShader;
class Module;
class PrototypeShader;
class ReferenceMember;
class ReferenceParameter;

// One shader class in one graph: its class-level code once, its static values, and the instances of the
// class that the graph compiles.
class ReferencePrototypeShader : public IReferencePrototypeShader
{
public:
	typedef FastDelegate0<bool> Listener;
	typedef FastDelegate1<IReferenceShader*, bool> VisitorReferenceShader;

	ReferencePrototypeShader() = default;
	~ReferencePrototypeShader() override;
	ReferencePrototypeShader(const ReferencePrototypeShader&) = delete;
	ReferencePrototypeShader& operator=(const ReferencePrototypeShader&) = delete;

	bool Init(PrototypeShader* prototype, IGraph* graph);
	void Shutdown();
	// Gives this reference back to the prototype, which destroys it with its last holder.
	bool Release();

	IGraph* GetGraph() const override { return _pGraph; }
	IPrototypeShader* GetPrototypeShader() const override;

	bool Apply(IQLPrimitive* primitive, IQLProgram* program);
	bool AddReferenceShader(IReferenceShader* reference);
	bool RemoveReferenceShader(IReferenceShader* reference);
	int GetCountReferenceShader() const { return static_cast<int>(_vReferenceShaders.size()); }
	bool VisitReferenceShaders(VisitorReferenceShader& visitor);
	bool HasConstructorStatic() const;
	std::string GetConstructorStatic() const;
	ReferenceParameter* GetParameter(const std::string& name) const;
	bool AddListenerChangeStructure(const Listener& listener)
	{
		return _setListenersChangeStructure.Add(listener);
	}
	bool RemoveListenerChangeStructure(const Listener& listener)
	{
		return _setListenersChangeStructure.Remove(listener);
	}

private:
	bool _InitOutput(TypeSpecifier type, const std::string& name);
	bool _InitReferenceParameter(const std::string& name, IParameter* parameter);
	bool _InitReferenceMember(const std::string& name, IMember* member);
	bool _InitReferencePrototypeParameter(const std::string& name, IPrototypeParameter* descriptor);
	bool _InitReferencePrototypeMember(const std::string& name, IPrototypeMember* descriptor);
	bool _InitReferencePrototypeShaderStatic(IPrototypeShader* prototype);
	bool _ReleaseOutput(TypeSpecifier type, const std::string& name);
	void _ShutdownOutputs();
	bool _CollectShader(Module* module);
	bool _ApplyReferenceParameters(IQLPrimitive* primitive, IQLProgram* program);
	bool _ApplyReferenceMembers(IQLPrimitive* primitive, IQLProgram* program);
	bool _ApplyReferenceShaders(IQLPrimitive* primitive, IQLProgram* program);
	bool _OnChangeStructurePrototypeShader(PrototypeShader* prototype);
	bool _OnDeletePrototypeShaderStatic(IPrototypeShader* prototype);
	void _DetachGraph();
	bool _OnDeleteGraph(IGraph* graph);

	PrototypeShader* _pPrototype = nullptr;
	IGraph* _pGraph = nullptr;
	std::vector<std::string> _vOutputs;
	std::map<std::string, ReferenceParameter*> _mParameters;
	std::map<std::string, ReferenceMember*> _mMembers;
	// Interface descriptors make a new reference per request, so each is given back to its descriptor.
	std::map<std::string, std::pair<IPrototypeParameter*, IReferencePrototypeParameter*>>
	    _mPrototypeParameters;
	std::map<std::string, std::pair<IPrototypeMember*, IReferencePrototypeMember*>> _mPrototypeMembers;
	std::vector<IReferenceShader*> _vReferenceShaders;
	// Watched for deletion: a library may drop a class whose static code another class calls.
	std::vector<std::pair<IPrototypeShader*, ReferencePrototypeShader*>> _vReferencePrototypeShadersStatic;
	bool _bRegistered = false;
	ListenerSet<Listener> _setListenersChangeStructure;
};

} // namespace Tarsel::Effects
