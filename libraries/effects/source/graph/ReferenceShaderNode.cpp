#include "graph/ReferenceShaderNode.h"

#include "effects/IParameter.h"
#include "effects/IPrototypeShader.h"
#include "effects/IShader.h"
#include "graph/IGraph.h"
#include "graph/ReferencePrototypeShader.h"
#include "objects/IMember.h"
#include "objects/ParameterValueConsole.h"
#include "syntax/Module.h"

namespace Tarsel::Effects
{

namespace
{

template <class M, class V>
bool VisitReferences(const M& references, V& visitor)
{
	bool all = true;
	for (const auto& entry : references)
		all = visitor(entry.first, entry.second) && all;
	return all;
}

template <class M>
typename M::mapped_type FindReference(const M& references, const std::string& name)
{
	auto found = references.find(name);
	return found == references.end() ? nullptr : found->second;
}

template <class M>
bool ApplyReferences(const M& references, IQLPrimitive* primitive, IQLProgram* program)
{
	for (const auto& entry : references)
		if (!entry.second->Apply(primitive, program))
			return false;
	return true;
}

} // namespace

ReferenceShaderNode::~ReferenceShaderNode()
{
	Shutdown();
}

bool ReferenceShaderNode::Init(IShader* shader, IGraph* graph)
{
	_pShader = shader;
	_pGraph = graph;
	IPrototypeShader* prototype = shader->GetPrototypeShader();
	_pReferencePrototype = prototype ? prototype->AcquireReference(graph) : nullptr;
	if (_pReferencePrototype == nullptr)
	{
		Shutdown();
		return false;
	}
	graph->AddDelegateCollectShader(MakeDelegate(this, &ReferenceShaderNode::CollectShader));
	IShader::ListenerShader listener = MakeDelegate(this, &ReferenceShaderNode::_OnChangeStructureShader);
	shader->AddListenerChangeStructure(listener);
	IShader::VisitorParameter parameters = MakeDelegate(this, &ReferenceShaderNode::_InitParameter);
	IShader::VisitorMember members = MakeDelegate(this, &ReferenceShaderNode::_InitMember);
	IShader::VisitorParameter coords = MakeDelegate(this, &ReferenceShaderNode::_InitCoord);
	const bool made =
	    shader->VisitParameters(parameters) && shader->VisitMembers(members) && shader->VisitCoords(coords);
	if (!made)
	{
		Shutdown();
		return false;
	}
	_bAdded = _pReferencePrototype->AddReferenceShader(this);
	return true;
}

bool ReferenceShaderNode::_InitParameter(const std::string& name, IParameter* parameter)
{
	ReferenceParameter* reference = ReferenceParameter::Create(_pGraph, parameter);
	if (reference == nullptr)
		return false;
	reference->AddListenerChangeStructure(
	    MakeDelegate(this, &ReferenceShaderNode::_OnChangeStructureParameter));
	_mParameters[name] = reference;
	return true;
}

bool ReferenceShaderNode::_InitMember(const std::string& name, IMember* member)
{
	ReferenceMember* reference = ReferenceMember::Create(_pGraph, member);
	if (reference)
		_mMembers[name] = reference;
	return reference != nullptr;
}

bool ReferenceShaderNode::_InitCoord(const std::string& name, IParameter* coord)
{
	ReferenceParameter* reference = ReferenceParameter::Create(_pGraph, coord);
	if (reference == nullptr)
		return false;
	reference->AddListenerChangeStructure(
	    MakeDelegate(this, &ReferenceShaderNode::_OnChangeStructureParameter));
	_mCoords[name] = reference;
	return true;
}

void ReferenceShaderNode::Shutdown()
{
	if (_pReferencePrototype == nullptr)
		return;
	if (_bAdded)
		_pReferencePrototype->RemoveReferenceShader(this);
	_bAdded = false;
	_pGraph->RemoveDelegateCollectShader(MakeDelegate(this, &ReferenceShaderNode::CollectShader));
	IShader::ListenerShader listener = MakeDelegate(this, &ReferenceShaderNode::_OnChangeStructureShader);
	_pShader->RemoveListenerChangeStructure(listener);
	for (auto* references : {&_mParameters, &_mCoords})
	{
		for (auto& entry : *references)
			delete entry.second;
		references->clear();
	}
	for (auto& entry : _mMembers)
		delete entry.second;
	_mMembers.clear();
	_pReferencePrototype->Release();
	_pReferencePrototype = nullptr;
}

bool ReferenceShaderNode::CollectShader(Module* module)
{
	if (IsComplete())
		return _pShader->CollectShader(module);
	ConsoleOf(_pShader->GetMgrEffects())->Message("ReferenceShaderNode::CollectShader Shader Incomplete\n");
	module->LogError("Shader '" + _pShader->GetName() + "' is incomplete.");
	return false;
}

bool ReferenceShaderNode::CollectDeclarationMethod(Module* module, const std::string& method)
{
	return _pShader->CollectDeclarationMethod(module, method);
}

bool ReferenceShaderNode::HasMethod(const std::string& method)
{
	return _pShader->HasMethod(method);
}

std::string ReferenceShaderNode::GetMethodMangled(const std::string& method)
{
	return _pShader->GetMethodNameMangled(method);
}

bool ReferenceShaderNode::IsComplete()
{
	if (_eComplete == kComplete_Unknown)
		_eComplete = _ComputeComplete() ? kComplete_Yes : kComplete_No;
	return _eComplete == kComplete_Yes;
}

// The shader's own answer walks every shader connected below it; the references below keep theirs, so
// asking them keeps a whole graph's check linear.
bool ReferenceShaderNode::_ComputeComplete()
{
	IPrototypeShader* prototype = _pShader->GetPrototypeShader();
	if (prototype == nullptr || !prototype->IsComplete())
		return false;
	for (auto* references : {&_mParameters, &_mCoords})
		for (const auto& entry : *references)
			if (!entry.second->IsComplete())
				return false;
	return true;
}

bool ReferenceShaderNode::HasConstructor()
{
	return _pShader->HasConstructor();
}

std::string ReferenceShaderNode::GetConstructor()
{
	return _pShader->GetConstructor();
}

bool ReferenceShaderNode::Apply(IQLPrimitive* primitive, IQLProgram* program)
{
	return ApplyReferences(_mParameters, primitive, program) &&
	       ApplyReferences(_mMembers, primitive, program);
}

IReferenceParameter* ReferenceShaderNode::GetParameter(const std::string& name)
{
	return FindReference(_mParameters, name);
}

bool ReferenceShaderNode::VisitParameters(VisitorParameter& visitor)
{
	return VisitReferences(_mParameters, visitor);
}

IReferenceMember* ReferenceShaderNode::GetMember(const std::string& name)
{
	return FindReference(_mMembers, name);
}

bool ReferenceShaderNode::VisitMembers(VisitorMember& visitor)
{
	return VisitReferences(_mMembers, visitor);
}

IReferenceParameter* ReferenceShaderNode::GetCoord(const std::string& name)
{
	return FindReference(_mCoords, name);
}

bool ReferenceShaderNode::VisitCoords(VisitorParameter& visitor)
{
	return VisitReferences(_mCoords, visitor);
}

bool ReferenceShaderNode::_OnChangeStructure()
{
	_eComplete = kComplete_Unknown;
	return _setListenersChangeStructure.Notify(this);
}

bool ReferenceShaderNode::_OnChangeStructureShader(IShader*)
{
	return _OnChangeStructure();
}

bool ReferenceShaderNode::_OnChangeStructureParameter(ReferenceParameter::Base*)
{
	return _OnChangeStructure();
}

} // namespace Tarsel::Effects
