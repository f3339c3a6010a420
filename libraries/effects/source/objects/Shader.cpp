#include "objects/Shader.h"

#include <algorithm>

#include "core/Result.h"
#include "effects/IParameter.h"
#include "effects/IShaderWrapper.h"
#include "graph/Graph.h"
#include "graph/ReferenceShader.h"
#include "objects/Diagnostics.h"
#include "objects/IMember.h"
#include "objects/IPrototypeMember.h"
#include "objects/IPrototypeParameter.h"
#include "objects/MangleMethodPrefixKey.h"
#include "objects/ModuleTransformer.h"
#include "objects/NamedObjects.h"
#include "objects/ParameterCoord.h"
#include "objects/ParameterSet.h"
#include "objects/PrototypeShader.h"
#include "quillon/IQLPrimitive.h"
#include "quillon/IQuillonContext.h"
#include "syntax/VisitorDelegate.h"

namespace Tarsel::Effects
{

namespace
{
const IQLShader::Type kGraphTypes[] = {IQLShader::kType_Ray, IQLShader::kType_Frame,
                                       IQLShader::kType_PrefixRay};
} // namespace

Shader::Shader() : _pPrototype(nullptr), _pModule(nullptr), _pMangleMethod(nullptr) {}

Shader::~Shader()
{
	Shutdown();
}

// ---------------------------------------------------------------------------------------------------------
// Creation
// ---------------------------------------------------------------------------------------------------------

bool Shader::Init(PrototypeShader* prototype, const ClassDefinition* definition, Result* result)
{
	_sName = prototype->GetClassName();
	_pPrototype = prototype;
	PrototypeShader::ListenerChangeStructure listener =
	    MakeDelegate(this, &Shader::_OnChangeStructurePrototype);
	_pPrototype->AddListenerChangeStructure(listener);
	_key = GetMgrEffects()->CreateKey();
	_pMangleMethod = new MangleMethodPrefixKey(&_key);
	// Every declaration is tried, so that one call reports every bad initializer.
	const bool parameters = _InitParameters(result);
	const bool members = _InitMembers(result);
	const bool coords = _InitCoords();
	bool initialised = parameters && members && coords && definition;
	if (initialised)
	{
		_InitMethodNames(definition);
		if (IsComplete())
		{
			ScopedResult scope(GetMgrEffects(), result);
			initialised = _BuildModule(result);
		}
	}
	if (!initialised)
		Shutdown();
	return initialised;
}

bool Shader::_InitParameters(Result* result)
{
	bool all = true;
	for (const auto& entry : _pPrototype->GetPrototypeParameters())
	{
		IParameter* parameter = entry.second->CreateParameter(this, result);
		if (parameter == nullptr)
		{
			all = false;
			continue;
		}
		IParameter::Listener listener = MakeDelegate(this, &Shader::_OnChangeStructureParameter);
		parameter->AddListenerChangeStructure(listener);
		_mParameters[entry.first] = parameter;
	}
	return all;
}

bool Shader::_InitMembers(Result* result)
{
	bool all = true;
	for (const auto& entry : _pPrototype->GetPrototypeMembers())
	{
		IMember* member = entry.second->CreateMember(this, result);
		if (member == nullptr)
		{
			all = false;
			continue;
		}
		IMember::ListenerChangeLength listener = MakeDelegate(this, &Shader::_OnChangeLengthMember);
		member->AddListenerChangeLength(listener);
		_mMembers[entry.first] = member;
	}
	return all;
}

bool Shader::_InitCoords()
{
	bool all = true;
	for (const auto& entry : _pPrototype->GetDefinition()->GetCoords())
	{
		const VariableDeclaration* declaration = entry.second;
		ParameterCoord* coord = new ParameterCoord();
		if (!coord->Init(GetMgrEffects(), declaration->GetType()->GetTypeSpecifier(), entry.first,
		                 declaration->GetTransformation()))
		{
			delete coord;
			all = false;
			continue;
		}
		IParameter::Listener listener = MakeDelegate(this, &Shader::_OnChangeStructureParameter);
		coord->AddListenerChangeStructure(listener);
		_mCoords[entry.first] = coord;
	}
	return all;
}

void Shader::_InitMethodNames(const ClassDefinition* definition)
{
	const std::string prefix = GetClassName() + "_";
	for (const FunctionDefinition* function : definition->GetMemberFunctions())
	{
		const FunctionPrototype* prototype = function->GetFunctionPrototype();
		_mMethodNames[prototype->GetName()->GetString()] = _pMangleMethod->Mangle(prefix, prototype);
	}
}

// ---------------------------------------------------------------------------------------------------------
// The instance's module
// ---------------------------------------------------------------------------------------------------------

bool Shader::_BuildModule(Result*)
{
	const ClassDefinition* definition = _pPrototype->GetTemplate();
	if (definition == nullptr)
		return false;
	Module* module = new Module();
	for (const FunctionDefinition* function : definition->GetMemberFunctions())
	{
		FunctionDefinition* clone = function->Clone(module);
		const std::string& name = function->GetFunctionPrototype()->GetName()->GetString();
		clone->GetFunctionPrototype()->GetName()->SetString(GetMethodNameMangled(name));
		module->AddFunctionDefinition(clone);
	}
	TVisitorSyntaxDelegate<FunctionCall, TIParentSyntax<Expression>> calls(
	    MakeDelegate(this, &Shader::_RenameCalls));
	bool built = _CollectConstructor(module) && module->AcceptVisitor(&calls);
	for (auto it = _mParameters.begin(); built && it != _mParameters.end(); ++it)
		built = it->second->CollectShader(module);
	for (auto it = _mMembers.begin(); built && it != _mMembers.end(); ++it)
		built = it->second->CollectShader(module);
	// Interface inputs last: unrolling multiplies the code that every later rewriting walk would cross, and
	// renaming commutes with their rewriting.
	const auto interface = [](const IParameter* parameter)
	{ return parameter->GetClass() == IParameter::kParameterClass_Interface; };
	const auto other = [&](const IParameter* parameter) { return !interface(parameter); };
	ModuleTransformer transformer(module);
	built = built && transformer.ApplyAll(_mParameters, other) && transformer.ApplyAll(_mMembers) &&
	        transformer.ApplyAll(_mCoords) && transformer.ApplyAll(_mParameters, interface);
	for (auto it = _mParameters.begin(); built && it != _mParameters.end(); ++it)
		built = it->second->CollectShaderGenerated(module);
	if (!built)
	{
		delete module;
		return false;
	}
	_pModule = module;
	return true;
}

bool Shader::_CollectConstructor(Module* module)
{
	CompoundStatement* body = module->CreateCompoundStatement();
	bool collected = true;
	for (auto it = _mMembers.begin(); collected && it != _mMembers.end(); ++it)
		collected = it->second->CollectConstructor(body);
	for (auto it = _mParameters.begin(); collected && it != _mParameters.end(); ++it)
		collected = it->second->CollectConstructor(body);
	FunctionPrototype* prototype = module->CreateFunctionPrototype(
	    kFunction_None, module->CreateType(kType_Void), module->CreateString(GetConstructor()));
	module->AddFunctionDefinition(module->CreateFunctionDefinition(prototype, body));
	return collected;
}

// A call selected on an object is that object's method, not this instance's.
bool Shader::_RenameCalls(FunctionCall* call, TIParentSyntax<Expression>* parent)
{
	if (call->GetName() == nullptr)
		return true;
	const FunctionSelection* holder =
	    parent ? dynamic_cast<const FunctionSelection*>(parent->GetParent()) : nullptr;
	if (holder && holder->GetFunction() == call)
		return true;
	auto found = _mMethodNames.find(call->GetName()->GetString());
	if (found != _mMethodNames.end())
		call->GetName()->SetString(found->second);
	return true;
}

// Everyone above hears first and forgets its answer before this shader asks its inputs again: in a cycle
// of connections the shaders above are also below, and a stale answer of theirs would complete the cycle.
bool Shader::_OnChangeStructure()
{
	_iComplete = -1;
	delete _pModule;
	_pModule = nullptr;
	const bool notified = _setListenersChangeStructure.Notify(this);
	const bool built = _pModule != nullptr || !IsComplete() || _BuildModule(nullptr);
	return notified && built;
}

bool Shader::_OnChangeStructurePrototype(PrototypeShader*)
{
	return _OnChangeStructure();
}

bool Shader::_OnChangeStructureParameter(IParameter*)
{
	return _OnChangeStructure();
}

bool Shader::_OnChangeLengthMember(IMember*)
{
	return _OnChangeStructure();
}

bool Shader::CollectShader(Module* module)
{
	if (_pModule == nullptr && !_BuildModule(nullptr))
		return false;
	module->Borrow(_pModule);
	return true;
}

bool Shader::CollectDeclarationMethod(Module* module, const std::string& method)
{
	const FunctionDefinition* function =
	    _pModule ? _pModule->GetFunctionDefinition(GetMethodNameMangled(method)) : nullptr;
	if (function == nullptr)
	{
		ConsoleOf(GetMgrEffects())->Message("Shader::CollectDeclarationMethod Method Not Found\n");
		return false;
	}
	module->AddFunctionDeclaration(function->GetFunctionPrototype()->Clone(module));
	return true;
}

bool Shader::VisitMethods(VisitorMethod& visitor)
{
	bool all = true;
	if (_pModule)
		for (FunctionDefinition* function : _pModule->GetFunctionDefinitions())
			all = visitor(function->GetFunctionPrototype()) && all;
	return all;
}

bool Shader::IsComplete()
{
	if (_iComplete < 0)
		_iComplete = _ComputeComplete() ? 1 : 0;
	return _iComplete == 1;
}

bool Shader::_ComputeComplete()
{
	if (_pPrototype == nullptr || !_pPrototype->IsComplete())
		return false;
	for (const auto& entry : _mParameters)
		if (!entry.second->IsComplete())
			return false;
	for (const auto& entry : _mCoords)
		if (!entry.second->IsComplete())
			return false;
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Names
// ---------------------------------------------------------------------------------------------------------

std::string Shader::GetInterfaceName() const
{
	return _pPrototype ? _pPrototype->GetInterfaceName() : std::string();
}

std::string Shader::GetClassName() const
{
	return _pPrototype ? _pPrototype->GetClassName() : std::string();
}

bool Shader::HasMethod(const std::string& method) const
{
	return _mMethodNames.count(method) != 0;
}

std::string Shader::GetMethodNameMangled(const std::string& method) const
{
	auto found = _mMethodNames.find(method);
	return found == _mMethodNames.end() ? std::string("MethodNotFound") : found->second;
}

std::string Shader::GetConstructor() const
{
	return "__ctor_" + _key.ToString();
}

IPrototypeShader* Shader::GetPrototypeShader()
{
	return _pPrototype;
}

IMgrEffects* Shader::GetMgrEffects()
{
	return _pPrototype ? _pPrototype->GetMgrEffects() : nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// Listeners, graphs and references
// ---------------------------------------------------------------------------------------------------------

bool Shader::AddListenerDelete(ListenerShader& listener)
{
	return _setListenersDelete.Add(listener);
}

bool Shader::RemoveListenerDelete(ListenerShader& listener)
{
	return _setListenersDelete.Remove(listener);
}

bool Shader::AddListenerChangeStructure(ListenerShader& listener)
{
	return _setListenersChangeStructure.Add(listener);
}

bool Shader::RemoveListenerChangeStructure(ListenerShader& listener)
{
	return _setListenersChangeStructure.Remove(listener);
}

IGraph* Shader::_GetGraph(GraphKind kind)
{
	GraphSlot& slot = _aGraphs[kind];
	if (slot.pGraph)
		return slot.pGraph;
	Graph* graph = new Graph();
	if (!graph->Init(GetMgrEffects(), kGraphTypes[kind], this, _sName))
	{
		delete graph;
		return nullptr;
	}
	graph->SetName(GetName());
	slot.pGraph = graph;
	slot.setListenersCreate.Notify(graph);
	return graph;
}

void Shader::_ShutdownGraph(GraphKind kind)
{
	delete _aGraphs[kind].pGraph;
	_aGraphs[kind].pGraph = nullptr;
}

#define TARSEL_SHADER_GRAPH(Kind)                                                                            \
	bool Shader::AddListenerCreateGraph##Kind(ListenerCreateGraph& listener)                                 \
	{                                                                                                        \
		return _aGraphs[kGraph_##Kind].setListenersCreate.Add(listener);                                     \
	}                                                                                                        \
	bool Shader::RemoveListenerCreateGraph##Kind(ListenerCreateGraph& listener)                              \
	{                                                                                                        \
		return _aGraphs[kGraph_##Kind].setListenersCreate.Remove(listener);                                  \
	}                                                                                                        \
	IGraph* Shader::GetGraph##Kind()                                                                         \
	{                                                                                                        \
		return _GetGraph(kGraph_##Kind);                                                                     \
	}                                                                                                        \
	IGraph* Shader::PeekGraph##Kind()                                                                        \
	{                                                                                                        \
		return _aGraphs[kGraph_##Kind].pGraph;                                                               \
	}                                                                                                        \
	void Shader::ShutdownGraph##Kind()                                                                       \
	{                                                                                                        \
		_ShutdownGraph(kGraph_##Kind);                                                                       \
	}

TARSEL_SHADER_GRAPH(Surface)
TARSEL_SHADER_GRAPH(Frame)
TARSEL_SHADER_GRAPH(Prefix)

#undef TARSEL_SHADER_GRAPH

IReferenceShader* Shader::AcquireReference(IGraph* graph)
{
	auto found = _mReferences.find(graph);
	if (found != _mReferences.end())
	{
		++found->second.second;
		return found->second.first;
	}
	ReferenceShader* reference = new ReferenceShader();
	// Nothing is recorded for a reference that cannot be made, so the next request tries again.
	if (!reference->Init(this, graph))
	{
		delete reference;
		return nullptr;
	}
	_mReferences[graph] = CountedReference(reference, 1);
	return reference;
}

IReferenceShader* Shader::GetReference(IGraph* graph)
{
	auto found = _mReferences.find(graph);
	return found == _mReferences.end() ? nullptr : found->second.first;
}

bool Shader::ReleaseReference(IReferenceShader* reference)
{
	// Found by the reference itself: one released before may already be gone.
	auto found = std::find_if(_mReferences.begin(), _mReferences.end(),
	                          [reference](const auto& entry) { return entry.second.first == reference; });
	if (reference == nullptr || found == _mReferences.end())
	{
		ConsoleOf(GetMgrEffects())->Message("Shader::ReleaseReference Reference Not Found\n");
		return false;
	}
	if (--found->second.second == 0)
	{
		_mReferences.erase(found);
		delete reference;
	}
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Parameters, members and coordinates
// ---------------------------------------------------------------------------------------------------------

IParameter* Shader::GetParameter(const std::string& name)
{
	return FindValue(_mParameters, name);
}

bool Shader::VisitParameters(VisitorParameter& visitor)
{
	return VisitValues(_mParameters, visitor);
}

IMember* Shader::GetMember(const std::string& name)
{
	return FindValue(_mMembers, name);
}

bool Shader::VisitMembers(VisitorMember& visitor)
{
	return VisitValues(_mMembers, visitor);
}

IParameter* Shader::GetCoord(const std::string& name)
{
	return FindValue(_mCoords, name);
}

bool Shader::VisitCoords(VisitorParameter& visitor)
{
	bool all = true;
	for (const auto& entry : _mCoords)
		all = visitor(entry.first, entry.second) && all;
	return all;
}

bool Shader::SetCoord(Result* result, const std::string& name, const std::string& value)
{
	ScopedResult scope(GetMgrEffects(), result);
	ParameterCoord* coord = FindValue(_mCoords, name);
	return coord && coord->Set(value);
}

template <class... Args>
bool Shader::_SetValue(Result* result, const std::string& name, bool indexed, Args... args)
{
	return SetParameterByName(GetMgrEffects(), GetParameter(name), result, name, GetClassName(), indexed,
	                          args...);
}

// Only instances of shader classes can be connected; a wrapper stands for the shader it wraps.
bool Shader::_SetShader(Result* result, const std::string& name, IShader* shader, const int* index)
{
	if (IShaderWrapper* wrapper = index ? nullptr : dynamic_cast<IShaderWrapper*>(shader))
		shader = wrapper->GetShaderWrapped();
	if (shader && shader->GetShaderType() != kShaderType_Shader)
	{
		if (result)
			result->Add("sub shader %s can not be attached to %s, it's not compatible\n",
			            shader->GetName().c_str(), _sName.c_str());
		return false;
	}
	IParameter* parameter = GetParameter(name);
	if (parameter == nullptr)
	{
		if (result)
			result->Add("Can't get parameter %s of the shader %s\n", name.c_str(), _sName.c_str());
		return false;
	}
	ScopedResult scope(GetMgrEffects(), result);
	return index ? parameter->Set(shader, *index) : parameter->Set(shader);
}

bool Shader::_SetShaders(Result* result, const std::string& name, IShader** shaders, int count)
{
	for (int i = 0; shaders && i < count; ++i)
	{
		if (shaders[i] && shaders[i]->GetShaderType() != kShaderType_Shader)
		{
			if (result)
				result->Add("sub shader %s can not be attached to %s, it's not compatible\n",
				            shaders[i]->GetName().c_str(), _sName.c_str());
			return false;
		}
	}
	return _SetValue(result, name, true, shaders, count);
}

#define TARSEL_SHADER_SET(T)                                                                                 \
	bool Shader::SetParameter(Result* result, const std::string& name, T value)                              \
	{                                                                                                        \
		return _SetValue<T>(result, name, false, value);                                                     \
	}                                                                                                        \
	bool Shader::SetParameter(Result* result, const std::string& name, T value, int index)                   \
	{                                                                                                        \
		return _SetValue<T, int>(result, name, true, value, index);                                          \
	}
#define TARSEL_SHADER_SET_ARRAY(T)                                                                           \
	bool Shader::SetParameter(Result* result, const std::string& name, T values, int count)                  \
	{                                                                                                        \
		return _SetValue(result, name, true, values, count);                                                 \
	}

TARSEL_SHADER_SET(bool)
TARSEL_SHADER_SET(int)
TARSEL_SHADER_SET(float)
TARSEL_SHADER_SET(const Vector2f&)
TARSEL_SHADER_SET(const Vector3f&)
TARSEL_SHADER_SET(const Vector4f&)
TARSEL_SHADER_SET(const Matrix33f&)
TARSEL_SHADER_SET(const Matrix44f&)
TARSEL_SHADER_SET_ARRAY(const bool*)
TARSEL_SHADER_SET_ARRAY(const int*)
TARSEL_SHADER_SET_ARRAY(const float*)
TARSEL_SHADER_SET_ARRAY(const Vector2i*)
TARSEL_SHADER_SET_ARRAY(const Vector3i*)
TARSEL_SHADER_SET_ARRAY(const Vector4i*)
TARSEL_SHADER_SET_ARRAY(const Vector2f*)
TARSEL_SHADER_SET_ARRAY(const Vector3f*)
TARSEL_SHADER_SET_ARRAY(const Vector4f*)
TARSEL_SHADER_SET_ARRAY(const Matrix33f*)
TARSEL_SHADER_SET_ARRAY(const Matrix44f*)
TARSEL_SHADER_SET_ARRAY(const QLprimitive*)
TARSEL_SHADER_SET_ARRAY(QLtexture* const*)

#undef TARSEL_SHADER_SET
#undef TARSEL_SHADER_SET_ARRAY

bool Shader::SetParameter(Result* result, const std::string& name, const IQLPrimitive* value)
{
	return _SetValue(result, name, false, HandleOf(value));
}

bool Shader::SetParameter(Result* result, const std::string& name, const IQLPrimitive* value, int index)
{
	return _SetValue(result, name, true, HandleOf(value), index);
}

bool Shader::SetParameter(Result* result, const std::string& name, QLtexture* value)
{
	return _SetValue(result, name, false, value);
}

bool Shader::SetParameter(Result* result, const std::string& name, IShader* value)
{
	return _SetShader(result, name, value, nullptr);
}

bool Shader::SetParameter(Result* result, const std::string& name, IShader* value, int index)
{
	return _SetShader(result, name, value, &index);
}

bool Shader::SetParameter(Result* result, const std::string& name, IShader** values, int count)
{
	return _SetShaders(result, name, values, count);
}

// ---------------------------------------------------------------------------------------------------------
// Shutdown
// ---------------------------------------------------------------------------------------------------------

void Shader::Shutdown()
{
	_iComplete = -1;
	if (_pPrototype)
	{
		PrototypeShader::ListenerChangeStructure listener =
		    MakeDelegate(this, &Shader::_OnChangeStructurePrototype);
		_pPrototype->RemoveListenerChangeStructure(listener);
	}
	// Every listener hears of the deletion, whatever the others answer.
	_setListenersDelete.Visit(this);
	_setListenersDelete.clear();
	for (auto& entry : _mReferences)
		delete entry.second.first;
	_mReferences.clear();
	for (int kind = 0; kind < kGraph_Count; ++kind)
		_ShutdownGraph(static_cast<GraphKind>(kind));
	DestroyValues(_mParameters);
	DestroyValues(_mMembers);
	DestroyValues(_mCoords);
	if (_pPrototype && _key != Key::Null())
		GetMgrEffects()->DestroyKey(_key);
	_key = Key::Null();
	_pPrototype = nullptr;
	delete _pModule;
	_pModule = nullptr;
	delete _pMangleMethod;
	_pMangleMethod = nullptr;
	_sName.clear();
	_mMethodNames.clear();
}

} // namespace Tarsel::Effects
