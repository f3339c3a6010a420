#include "graph/ReferencePrototypeShader.h"

#include <algorithm>

#include "effects/IParameter.h"
#include "graph/IGraph.h"
#include "graph/IReferenceShader.h"
#include "graph/ReferenceParameter.h"
#include "objects/IMember.h"
#include "objects/IPrototypeMember.h"
#include "objects/IPrototypeParameter.h"
#include "objects/IReferencePrototypeMember.h"
#include "objects/IReferencePrototypeParameter.h"
#include "objects/ParameterValueConsole.h"
#include "objects/PrototypeShader.h"

namespace Tarsel::Effects
{

namespace
{

template <class M>
bool ApplyAll(const M& references, IQLPrimitive* primitive, IQLProgram* program)
{
	for (const auto& entry : references)
		if (!entry.second->Apply(primitive, program))
			return false;
	return true;
}

template <class M>
void DestroyDescriptorReferences(M& references)
{
	for (auto& entry : references)
		entry.second.first->DestroyReference(entry.second.second);
	references.clear();
}

template <class M>
void DestroyAll(M& references)
{
	for (auto& entry : references)
		delete entry.second;
	references.clear();
}

} // namespace

ReferencePrototypeShader::~ReferencePrototypeShader()
{
	Shutdown();
}

bool ReferencePrototypeShader::Init(PrototypeShader* prototype, IGraph* graph)
{
	if (prototype == nullptr || graph == nullptr)
		return false;
	_pPrototype = prototype;
	_pGraph = graph;
	graph->AddListenerDelete(MakeDelegate(this, &ReferencePrototypeShader::_OnDeleteGraph));
	IPrototypeShader::VisitorOutput outputs = MakeDelegate(this, &ReferencePrototypeShader::_InitOutput);
	IPrototypeShader::VisitorParameter parameters =
	    MakeDelegate(this, &ReferencePrototypeShader::_InitReferenceParameter);
	IPrototypeShader::VisitorMember members =
	    MakeDelegate(this, &ReferencePrototypeShader::_InitReferenceMember);
	PrototypeShader::VisitorPrototypeParameter prototypeParameters =
	    MakeDelegate(this, &ReferencePrototypeShader::_InitReferencePrototypeParameter);
	PrototypeShader::VisitorPrototypeMember prototypeMembers =
	    MakeDelegate(this, &ReferencePrototypeShader::_InitReferencePrototypeMember);
	PrototypeShader::VisitorPrototypeShader statics =
	    MakeDelegate(this, &ReferencePrototypeShader::_InitReferencePrototypeShaderStatic);
	const bool made =
	    prototype->VisitOutputs(outputs) && prototype->VisitParameters(parameters) &&
	    prototype->VisitMembers(members) && prototype->VisitPrototypeParameters(prototypeParameters) &&
	    prototype->VisitPrototypeMembers(prototypeMembers) && prototype->VisitPrototypeShadersStatic(statics);
	if (!made)
	{
		Shutdown();
		return false;
	}
	graph->AddReferencePrototypeShader(prototype, this);
	graph->AddDelegateCollectShader(MakeDelegate(this, &ReferencePrototypeShader::_CollectShader));
	graph->AddDelegateApply(MakeDelegate(this, &ReferencePrototypeShader::Apply));
	PrototypeShader::ListenerChangeStructure listener =
	    MakeDelegate(this, &ReferencePrototypeShader::_OnChangeStructurePrototypeShader);
	prototype->AddListenerChangeStructure(listener);
	_bRegistered = true;
	return true;
}

bool ReferencePrototypeShader::_InitOutput(TypeSpecifier type, const std::string& name)
{
	if (!_pGraph->AcquireOutput(type, name))
		return false;
	_vOutputs.push_back(name);
	return true;
}

bool ReferencePrototypeShader::_InitReferenceParameter(const std::string& name, IParameter* parameter)
{
	ReferenceParameter* reference = ReferenceParameter::Create(_pGraph, parameter);
	if (reference)
		_mParameters[name] = reference;
	return reference != nullptr;
}

bool ReferencePrototypeShader::_InitReferenceMember(const std::string& name, IMember* member)
{
	ReferenceMember* reference = ReferenceMember::Create(_pGraph, member);
	if (reference)
		_mMembers[name] = reference;
	return reference != nullptr;
}

bool ReferencePrototypeShader::_InitReferencePrototypeParameter(const std::string& name,
                                                                IPrototypeParameter* descriptor)
{
	IReferencePrototypeParameter* reference = descriptor->CreateReference(this);
	if (reference)
		_mPrototypeParameters[name] = std::make_pair(descriptor, reference);
	return reference != nullptr;
}

bool ReferencePrototypeShader::_InitReferencePrototypeMember(const std::string& name,
                                                             IPrototypeMember* descriptor)
{
	IReferencePrototypeMember* reference = descriptor->CreateReference(this);
	if (reference)
		_mPrototypeMembers[name] = std::make_pair(descriptor, reference);
	return reference != nullptr;
}

bool ReferencePrototypeShader::_InitReferencePrototypeShaderStatic(IPrototypeShader* prototype)
{
	if (ReferencePrototypeShader* reference = prototype->AcquireReference(_pGraph))
	{
		IPrototypeShader::ListenerDelete listener =
		    MakeDelegate(this, &ReferencePrototypeShader::_OnDeletePrototypeShaderStatic);
		prototype->AddListenerDelete(listener);
		_vReferencePrototypeShadersStatic.emplace_back(prototype, reference);
	}
	return true;
}

void ReferencePrototypeShader::_ShutdownOutputs()
{
	for (auto it = _vOutputs.rbegin(); it != _vOutputs.rend(); ++it)
		_pGraph->ReleaseOutput(*it);
	_vOutputs.clear();
}

void ReferencePrototypeShader::Shutdown()
{
	_DetachGraph();
	// Instances give themselves back before the class goes; any left here are their owners' to destroy.
	_vReferenceShaders.clear();
	_pPrototype = nullptr;
}

// Everything this reference put into its graph. The instances' bookkeeping stays: they give themselves
// back to this reference even when the graph went first.
void ReferencePrototypeShader::_DetachGraph()
{
	if (_pPrototype == nullptr || _pGraph == nullptr)
		return;
	_pGraph->RemoveListenerDelete(MakeDelegate(this, &ReferencePrototypeShader::_OnDeleteGraph));
	if (_bRegistered)
	{
		PrototypeShader::ListenerChangeStructure listener =
		    MakeDelegate(this, &ReferencePrototypeShader::_OnChangeStructurePrototypeShader);
		_pPrototype->RemoveListenerChangeStructure(listener);
		_pGraph->RemoveDelegateApply(MakeDelegate(this, &ReferencePrototypeShader::Apply));
		_pGraph->RemoveDelegateCollectShader(MakeDelegate(this, &ReferencePrototypeShader::_CollectShader));
		_pGraph->RemoveReferencePrototypeShader(_pPrototype);
		_bRegistered = false;
	}
	_ShutdownOutputs();
	for (auto& entry : _mParameters)
		entry.second->Shutdown();
	DestroyAll(_mParameters);
	for (auto& entry : _mMembers)
		entry.second->Shutdown();
	DestroyAll(_mMembers);
	DestroyDescriptorReferences(_mPrototypeParameters);
	DestroyDescriptorReferences(_mPrototypeMembers);
	IPrototypeShader::ListenerDelete listener =
	    MakeDelegate(this, &ReferencePrototypeShader::_OnDeletePrototypeShaderStatic);
	for (auto& entry : _vReferencePrototypeShadersStatic)
	{
		entry.first->RemoveListenerDelete(listener);
		entry.second->Release();
	}
	_vReferencePrototypeShadersStatic.clear();
	_pGraph = nullptr;
}

bool ReferencePrototypeShader::_OnDeleteGraph(IGraph*)
{
	_DetachGraph();
	return true;
}

bool ReferencePrototypeShader::Release()
{
	return _pPrototype && _pPrototype->ReleaseReference(this);
}

IPrototypeShader* ReferencePrototypeShader::GetPrototypeShader() const
{
	return _pPrototype;
}

bool ReferencePrototypeShader::_CollectShader(Module* module)
{
	return _pPrototype->CollectShader(module);
}

bool ReferencePrototypeShader::Apply(IQLPrimitive* primitive, IQLProgram* program)
{
	return _ApplyReferenceParameters(primitive, program) && _ApplyReferenceMembers(primitive, program) &&
	       _ApplyReferenceShaders(primitive, program);
}

bool ReferencePrototypeShader::_ApplyReferenceParameters(IQLPrimitive* primitive, IQLProgram* program)
{
	return ApplyAll(_mParameters, primitive, program);
}

bool ReferencePrototypeShader::_ApplyReferenceMembers(IQLPrimitive* primitive, IQLProgram* program)
{
	return ApplyAll(_mMembers, primitive, program);
}

bool ReferencePrototypeShader::_ApplyReferenceShaders(IQLPrimitive* primitive, IQLProgram* program)
{
	for (IReferenceShader* reference : _vReferenceShaders)
		if (!reference->Apply(primitive, program))
			return false;
	return true;
}

bool ReferencePrototypeShader::AddReferenceShader(IReferenceShader* reference)
{
	_vReferenceShaders.push_back(reference);
	if (_pGraph)
		_pPrototype->AcquireReference(_pGraph);
	return true;
}

bool ReferencePrototypeShader::RemoveReferenceShader(IReferenceShader* reference)
{
	auto found = std::find(_vReferenceShaders.begin(), _vReferenceShaders.end(), reference);
	if (found == _vReferenceShaders.end())
	{
		ConsoleOf(_pPrototype ? _pPrototype->GetMgrEffects() : nullptr)
		    ->Message("ReferencePrototypeShader::RemoveReferenceShader Reference Not Found\n");
		return false;
	}
	_vReferenceShaders.erase(found);
	return Release();
}

bool ReferencePrototypeShader::VisitReferenceShaders(VisitorReferenceShader& visitor)
{
	for (IReferenceShader* reference : _vReferenceShaders)
		if (!visitor(reference))
			return false;
	return true;
}

bool ReferencePrototypeShader::HasConstructorStatic() const
{
	return _pPrototype && _pPrototype->HasConstructorStatic();
}

std::string ReferencePrototypeShader::GetConstructorStatic() const
{
	return _pPrototype ? _pPrototype->GetConstructorStatic() : std::string();
}

ReferenceParameter* ReferencePrototypeShader::GetParameter(const std::string& name) const
{
	auto found = _mParameters.find(name);
	return found == _mParameters.end() ? nullptr : found->second;
}

// The class takes its references with it.
bool ReferencePrototypeShader::_OnDeletePrototypeShaderStatic(IPrototypeShader* prototype)
{
	auto& statics = _vReferencePrototypeShadersStatic;
	statics.erase(std::remove_if(statics.begin(), statics.end(),
	                             [prototype](const auto& entry) { return entry.first == prototype; }),
	              statics.end());
	return true;
}

bool ReferencePrototypeShader::_OnChangeStructurePrototypeShader(PrototypeShader*)
{
	return _setListenersChangeStructure.Notify();
}

} // namespace Tarsel::Effects
