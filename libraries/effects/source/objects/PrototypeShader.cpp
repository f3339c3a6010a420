#include "objects/PrototypeShader.h"

#include <algorithm>

#include "core/Assert.h"
#include "core/Result.h"
#include "effects/IParameter.h"
#include "graph/ReferencePrototypeInterface.h"
#include "graph/ReferencePrototypeShader.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/Diagnostics.h"
#include "objects/IMember.h"
#include "objects/IPrototypeMember.h"
#include "objects/IPrototypeParameter.h"
#include "objects/Library.h"
#include "objects/MemberValueArraySeparate.h"
#include "objects/MemberValueSingleSeparate.h"
#include "objects/ModuleTransformer.h"
#include "objects/NamedObjects.h"
#include "objects/ParameterInterfaceArray.h"
#include "objects/ParameterInterfaceSingle.h"
#include "objects/ParameterValueArraySeparate.h"
#include "objects/ParameterValueSingleStorageSeparate.h"
#include "objects/PrototypeInterface.h"
#include "objects/PrototypeMemberValueArray.h"
#include "objects/PrototypeMemberValueSingle.h"
#include "objects/PrototypeParameterInterfaceArray.h"
#include "objects/PrototypeParameterInterfaceSingle.h"
#include "objects/PrototypeParameterValueArray.h"
#include "objects/PrototypeParameterValueSingle.h"
#include "objects/Shader.h"
#include "syntax/VisitorDelegate.h"

namespace Tarsel::Effects
{

namespace
{
bool IsStaticInput(const VariableDeclaration* declaration)
{
	return declaration->IsStatic() && declaration->GetStorageQualifier() == kStorage_Input;
}
bool IsInstanceInput(const VariableDeclaration* declaration)
{
	return !declaration->IsStatic() && declaration->GetStorageQualifier() == kStorage_Input;
}
bool IsStaticMember(const VariableDeclaration* declaration)
{
	return declaration->IsStatic() && declaration->GetStorageQualifier() == kStorage_None;
}
bool IsInstanceMember(const VariableDeclaration* declaration)
{
	return !declaration->IsStatic() && declaration->GetStorageQualifier() == kStorage_None;
}
bool IsUserType(const VariableDeclaration* declaration)
{
	return declaration->GetType()->GetClass() == kClass_UserType;
}
bool IsStaticMethod(const FunctionDefinition* function)
{
	return function->GetFunctionPrototype()->GetQualifier() == kFunction_Static;
}
const std::string& NameOf(const VariableDeclaration* declaration)
{
	return declaration->GetIdentifier()->GetString();
}
const std::string& NameOf(const FunctionDefinition* function)
{
	return function->GetFunctionPrototype()->GetName()->GetString();
}

bool IsArray(const VariableDeclaration* declaration)
{
	return declaration->GetType()->IsArray();
}

// The value of a constant length expression; 0 when there is none.
int DeclaredLength(const VariableDeclaration* declaration)
{
	const Expression* length = declaration->GetType()->GetLength();
	return length && length->GetClass() == kClass_IntConstant
	           ? static_cast<int>(static_cast<const IntConstant*>(length)->GetValue())
	           : 0;
}

IParameter* CreateParameterValue(IMgrEffects* mgrEffects, const VariableDeclaration* declaration,
                                 const std::string& name, Result* result)
{
	if (IsArray(declaration))
		return ParameterValueArraySeparate::Create(mgrEffects, declaration, name, result);
	return ParameterValueSingleStorageSeparate::Create(mgrEffects, declaration, name, result);
}

IMember* CreateMemberValue(IMgrEffects* mgrEffects, const VariableDeclaration* declaration,
                           const std::string& name, Result* result)
{
	if (IsArray(declaration))
		return MemberValueArraySeparate::Create(mgrEffects, declaration, name, result);
	return MemberValueSingleSeparate::Create(mgrEffects, declaration, name, result);
}

IParameter* CreateParameterInterface(IMgrEffects* mgrEffects, const VariableDeclaration* declaration,
                                     const InterfaceDefinition* definition, const std::string& className,
                                     Result* result)
{
	if (IsArray(declaration))
		return ParameterInterfaceArray::Create(mgrEffects, declaration, definition, nullptr,
		                                       NameOf(declaration), className, DeclaredLength(declaration),
		                                       result);
	return ParameterInterfaceSingle::Create(mgrEffects, declaration, className, result);
}

template <class Base, class Descriptor, class Owner>
Base* CreateDescriptor(Owner owner, const VariableDeclaration* declaration)
{
	Descriptor* descriptor = new Descriptor();
	descriptor->Init(owner, declaration);
	return descriptor;
}

// The target is the interface when one of that name exists, else the shader class.
template <class Target>
IPrototypeParameter* CreateDescriptorInterface(const VariableDeclaration* declaration, Target* target)
{
	if (IsArray(declaration))
	{
		PrototypeParameterInterfaceArray* descriptor = new PrototypeParameterInterfaceArray();
		descriptor->Init(declaration, target, NameOf(declaration), DeclaredLength(declaration));
		return descriptor;
	}
	PrototypeParameterInterfaceSingle* descriptor = new PrototypeParameterInterfaceSingle();
	descriptor->Init(declaration, target, NameOf(declaration));
	return descriptor;
}

} // namespace

PrototypeShader::PrototypeShader()
    : _pLibrary(nullptr), _pStatic(nullptr), _pTemplate(nullptr), _pPrototypeInterface(nullptr),
      _pClass(nullptr)
{
}

PrototypeShader::~PrototypeShader()
{
	Shutdown();
}

// ---------------------------------------------------------------------------------------------------------
// Initialisation
// ---------------------------------------------------------------------------------------------------------

bool PrototypeShader::Init(Library* library, ClassDefinition* definition, Result* result)
{
	_pLibrary = library;
	_pClass = definition;
	const bool ready =
	    (_pClass->GetInterface() == nullptr || (_InitPrototypeInterface() && _ImplementsInterface(result)));
	if (!ready)
	{
		Shutdown();
		return false;
	}
	_InitMethodNames();
	if (!_InitParameters(result) || !_InitMembers(result) || !_InitPrototypeParameters(result) ||
	    !_InitPrototypeMembers())
	{
		Shutdown();
		return false;
	}
	// An incomplete class builds its code later, when a change of structure completes it.
	return !IsComplete() || _InitModules(result);
}

IPrototypeInterface* PrototypeShader::_FindPrototypeInterface(const std::string& name)
{
	if (IPrototypeInterface* prototype = _pLibrary->GetPrototypeInterface(name))
		return prototype;
	IMgrEffects* mgrEffects = GetMgrEffects();
	return mgrEffects ? mgrEffects->GetPrototypeInterface(name) : nullptr;
}

IPrototypeShader* PrototypeShader::_FindPrototypeShader(const std::string& name, Result* result)
{
	if (name == GetClassName())
		return this;
	if (IPrototypeShader* prototype = _pLibrary->GetPrototypeShader(name, result))
		return prototype;
	IMgrEffects* mgrEffects = GetMgrEffects();
	return mgrEffects ? mgrEffects->GetPrototypeShader(name, result) : nullptr;
}

bool PrototypeShader::_InitPrototypeInterface()
{
	TARSEL_ASSERT(_pPrototypeInterface == NULL);
	const std::string interfaceName = _pClass->GetInterface()->GetString();
	_pPrototypeInterface = _FindPrototypeInterface(interfaceName);
	if (_pPrototypeInterface)
		return true;
	ConsoleOf(GetMgrEffects())
	    ->Error("Failed to find interface %s while initializing PrototypeShader %s.\n", interfaceName.c_str(),
	            GetClassName().c_str());
	return false;
}

// Every missing method is reported, not only the first.
bool PrototypeShader::_ImplementsInterface(Result* result)
{
	const InterfaceDefinition* definition = _pPrototypeInterface->GetDefinition();
	if (definition == nullptr)
		return false;
	bool implements = true;
	for (const FunctionPrototype* method : definition->GetMemberFunctions())
	{
		const auto& functions = _pClass->GetMemberFunctions();
		const bool found = std::any_of(functions.begin(), functions.end(),
		                               [method](const FunctionDefinition* f)
		                               { return f->GetFunctionPrototype()->Equivalent(method); });
		if (found)
			continue;
		implements = false;
		if (result)
			result->Add("Class \"%s\" is missing implementation of method \"%s\" from interface \"%s\"\n",
			            GetClassName().c_str(), method->GetName()->c_str(), definition->GetName()->c_str());
	}
	return implements;
}

void PrototypeShader::_InitMethodNames()
{
	for (const FunctionDefinition* function : _pClass->GetMemberFunctions())
		if (IsStaticMethod(function))
			_mMethodNames[NameOf(function)] = GetClassName() + "_" + NameOf(function);
}

void PrototypeShader::_AddStaticParameter(const std::string& name, IParameter* parameter)
{
	IParameter::Listener listener = MakeDelegate(this, &PrototypeShader::_OnChangeStructureParameter);
	parameter->AddListenerChangeStructure(listener);
	_mParameters[name] = parameter;
}

bool PrototypeShader::_InitParameters(Result* result)
{
	for (VariableDeclaration* declaration : _pClass->GetMemberVariables())
	{
		if (!IsStaticInput(declaration))
			continue;
		if (IsUserType(declaration))
		{
			if (!_InitParameterInterface(declaration, result))
				return false;
			continue;
		}
		const std::string mangled = GetClassName() + "_" + NameOf(declaration);
		IParameter* parameter = CreateParameterValue(GetMgrEffects(), declaration, mangled, result);
		if (parameter == nullptr)
			return false;
		_AddStaticParameter(NameOf(declaration), parameter);
	}
	return true;
}

bool PrototypeShader::_InitParameterInterface(VariableDeclaration* declaration, Result* result)
{
	TARSEL_ASSERT(declaration->GetType()->GetClass() == kClass_UserType);
	const std::string typeName = static_cast<const UserType*>(declaration->GetType())->GetName()->GetString();
	IPrototypeInterface* prototypeInterface = _FindPrototypeInterface(typeName);
	IPrototypeShader* prototypeShader = _FindPrototypeShader(typeName, result);
	if (prototypeInterface && prototypeInterface->GetDefinition() == nullptr)
	{
		ConsoleOf(GetMgrEffects())->Message("PrototypeShader::_InitParameters Interface Definition\n");
		return false;
	}
	if (prototypeInterface == nullptr && prototypeShader == nullptr)
	{
		ConsoleOf(GetMgrEffects())->Message("PrototypeShader::_InitParameters Prototype Not Found\n");
		return false;
	}
	// An array of shaders needs an interface to dispatch through; a class name alone does not do.
	if (IsArray(declaration) && prototypeInterface == nullptr)
		return false;
	IParameter* parameter = CreateParameterInterface(
	    GetMgrEffects(), declaration, prototypeInterface ? prototypeInterface->GetDefinition() : nullptr,
	    GetClassName(), result);
	if (parameter == nullptr)
		return false;
	_AddStaticParameter(NameOf(declaration), parameter);
	return true;
}

bool PrototypeShader::_InitMembers(Result* result)
{
	for (VariableDeclaration* declaration : _pClass->GetMemberVariables())
	{
		if (!IsStaticMember(declaration))
			continue;
		if (IsUserType(declaration))
		{
			ConsoleOf(GetMgrEffects())
			    ->Message("PrototypeShader::_InitMembers Interface types not supported\n");
			return false;
		}
		const std::string mangled = GetClassName() + "_" + NameOf(declaration);
		IMember* member = CreateMemberValue(GetMgrEffects(), declaration, mangled, result);
		if (member == nullptr)
			return false;
		if (member->IsArray())
		{
			IMember::ListenerChangeLength listener =
			    MakeDelegate(this, &PrototypeShader::_OnChangeLengthMember);
			member->AddListenerChangeLength(listener);
		}
		_mMembers[NameOf(declaration)] = member;
	}
	return true;
}

bool PrototypeShader::_InitPrototypeParameters(Result* result)
{
	for (VariableDeclaration* declaration : _pClass->GetMemberVariables())
	{
		if (!IsInstanceInput(declaration))
			continue;
		if (IsUserType(declaration))
		{
			if (!_InitPrototypeParameterInterface(declaration, result))
				return false;
			continue;
		}
		_mPrototypeParameters[NameOf(declaration)] =
		    IsArray(declaration)
		        ? CreateDescriptor<IPrototypeParameter, PrototypeParameterValueArray>(GetMgrEffects(),
		                                                                              declaration)
		        : CreateDescriptor<IPrototypeParameter, PrototypeParameterValueSingle>(this, declaration);
	}
	return true;
}

bool PrototypeShader::_InitPrototypeParameterInterface(VariableDeclaration* declaration, Result* result)
{
	const std::string typeName = static_cast<const UserType*>(declaration->GetType())->GetName()->GetString();
	IPrototypeInterface* prototypeInterface = _FindPrototypeInterface(typeName);
	IPrototypeShader* prototypeShader = prototypeInterface ? nullptr : _FindPrototypeShader(typeName, result);
	if (prototypeInterface == nullptr && prototypeShader == nullptr)
		return false;
	const bool array = declaration->GetType()->IsArray();
	if (prototypeInterface && prototypeInterface->GetDefinition() == nullptr)
	{
		ConsoleOf(GetMgrEffects())
		    ->Message(
		        array
		            ? "PrototypeShader::_InitPrototypeParameterInterfaceArray Interface Definition NULL\n"
		            : "PrototypeShader::_InitPrototypeParameterInterfaceSingle Interface Definition NULL\n");
		return false;
	}
	_mPrototypeParameters[NameOf(declaration)] =
	    prototypeInterface ? CreateDescriptorInterface(declaration, prototypeInterface)
	                       : CreateDescriptorInterface(declaration, prototypeShader);
	return true;
}

bool PrototypeShader::_InitPrototypeMembers()
{
	for (VariableDeclaration* declaration : _pClass->GetMemberVariables())
	{
		if (!IsInstanceMember(declaration))
			continue;
		if (IsUserType(declaration))
		{
			ConsoleOf(GetMgrEffects())
			    ->Message(
			        "PrototypeShader::_InitPrototypeMemberVariables Unsupported Interface Member Variable\n");
			return false;
		}
		_mPrototypeMembers[NameOf(declaration)] =
		    IsArray(declaration)
		        ? CreateDescriptor<IPrototypeMember, PrototypeMemberValueArray>(GetMgrEffects(), declaration)
		        : CreateDescriptor<IPrototypeMember, PrototypeMemberValueSingle>(this, declaration);
	}
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Static module and template
// ---------------------------------------------------------------------------------------------------------

bool PrototypeShader::_InitModules(Result* result)
{
	return _InitStatic(result) && _InitTemplate(result);
}

void PrototypeShader::_ShutdownModules()
{
	delete _pTemplate;
	_pTemplate = nullptr;
	delete _pStatic;
	_pStatic = nullptr;
}

bool PrototypeShader::_InitStatic(Result* result)
{
	TARSEL_ASSERT(_pStatic == NULL);
	Module* module = new Module();
	bool built = _InitStaticConstructor(module) && _InitStaticMethods(module) &&
	             _ReplaceStaticCalls(module, result) && _ApplyTransformations(module);
	for (auto it = _mParameters.begin(); built && it != _mParameters.end(); ++it)
		built = it->second->CollectShader(module);
	for (auto it = _mMembers.begin(); built && it != _mMembers.end(); ++it)
		built = it->second->CollectShader(module);
	for (auto it = _mParameters.begin(); built && it != _mParameters.end(); ++it)
		built = it->second->CollectShaderGenerated(module);
	if (!built)
	{
		delete module;
		return false;
	}
	_pStatic = module;
	return true;
}

bool PrototypeShader::_InitStaticConstructor(Module* module)
{
	CompoundStatement* body = module->CreateCompoundStatement();
	bool collected = true;
	for (auto& entry : _mMembers)
		collected = collected && entry.second->CollectConstructor(body);
	for (auto& entry : _mParameters)
		collected = collected && entry.second->CollectConstructor(body);
	FunctionPrototype* prototype = module->CreateFunctionPrototype(
	    kFunction_None, module->CreateType(kType_Void), module->CreateString(GetConstructorStatic()));
	module->AddFunctionDefinition(module->CreateFunctionDefinition(prototype, body));
	return collected;
}

bool PrototypeShader::_InitStaticMethods(Module* module)
{
	for (const FunctionDefinition* function : _pClass->GetMemberFunctions())
	{
		if (!IsStaticMethod(function))
			continue;
		FunctionDefinition* clone = function->Clone(module);
		if (clone == nullptr)
		{
			ConsoleOf(GetMgrEffects())->Message("PrototypeShader::_InitStaticMethods Clone\n");
			return false;
		}
		clone->GetFunctionPrototype()->GetName()->SetString(_mMethodNames[NameOf(function)]);
		module->AddFunctionDefinition(clone);
	}
	return true;
}

// Class-qualified calls become calls of the other class's static code; calls of this class's own static
// methods get their mangled names.
bool PrototypeShader::_ReplaceStaticCalls(Module* module, Result* result)
{
	TVisitorSyntaxDelegate1<FunctionSelection, TIParentSyntax<Expression>, Result*> selections(
	    MakeDelegate(this, &PrototypeShader::_ReplaceFunctionSelectionStatic), result);
	if (!module->AcceptVisitor(&selections))
		return false;
	TVisitorSyntaxDelegate<FunctionCall, TIParentSyntax<Expression>> calls(
	    MakeDelegate(this, &PrototypeShader::_ReplaceFunctionCallStatic));
	return module->AcceptVisitor(&calls);
}

bool PrototypeShader::_ApplyTransformations(Module* module)
{
	ModuleTransformer transformer(module);
	return transformer.ApplyAll(_mParameters) && transformer.ApplyAll(_mMembers);
}

bool PrototypeShader::_InitTemplate(Result* result)
{
	TARSEL_ASSERT(_pTemplate == NULL);
	Module* module = new Module();
	ClassDefinition* copy = module->CreateClassDefinition(module->CreateString(GetClassName()));
	if (_pClass->GetInterface())
		copy->SetInterface(module->CreateString(_pClass->GetInterface()->GetString()));
	for (const FunctionDefinition* function : _pClass->GetMemberFunctions())
		if (!IsStaticMethod(function))
			copy->AddMemberFunction(function->Clone(module));
	for (const auto& coord : _pClass->GetCoords())
		copy->AddCoord(coord.second->Clone(module));
	module->AddClassDefinition(copy);
	if (!_ReplaceStaticCalls(module, result) || !_ApplyTransformations(module))
	{
		delete module;
		return false;
	}
	_pTemplate = module;
	return true;
}

bool PrototypeShader::_ReplaceFunctionSelectionStatic(FunctionSelection* selection,
                                                      TIParentSyntax<Expression>* parent, Result* result)
{
	const Expression* object = selection->GetExpression();
	if (object == nullptr || object->GetClass() != kClass_Variable)
		return true;
	const std::string className = static_cast<const Variable*>(object)->GetIdentifier()->GetString();
	IPrototypeShader* called = _FindPrototypeShader(className, result);
	if (called == nullptr)
		return true;
	if (!called->ReplaceStatic(selection, parent, result))
		return false;
	if (called != this && std::find(_vPrototypeShadersStatic.begin(), _vPrototypeShadersStatic.end(),
	                                called) == _vPrototypeShadersStatic.end())
	{
		_vPrototypeShadersStatic.push_back(called);
		ListenerDelete listener = MakeDelegate(this, &PrototypeShader::_OnDeleteReferenceStatic);
		called->AddListenerDelete(listener);
	}
	return true;
}

bool PrototypeShader::ReplaceStatic(FunctionSelection* selection, TIParentSyntax<Expression>* parent,
                                    Result* result)
{
	const FunctionCall* call = selection->GetFunction();
	const std::string method = call && call->GetName() ? call->GetName()->GetString() : std::string();
	auto found = _mMethodNames.find(method);
	if (found == _mMethodNames.end())
	{
		if (result)
			result->Add("%s: Class \"%s\" has no static method named \"%s\".",
			            selection->GetRange().GetLocationText().c_str(), GetClassName().c_str(),
			            method.c_str());
		return false;
	}
	Module* module = selection->GetModule();
	FunctionCall* clone = call->Clone(module);
	clone->SetName(module->CreateString(found->second));
	return parent->SetReplacement(clone);
}

bool PrototypeShader::_ReplaceFunctionCallStatic(FunctionCall* call, TIParentSyntax<Expression>* parent)
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

bool PrototypeShader::_OnDeleteReferenceStatic(IPrototypeShader* prototype)
{
	_vPrototypeShadersStatic.erase(
	    std::remove(_vPrototypeShadersStatic.begin(), _vPrototypeShadersStatic.end(), prototype),
	    _vPrototypeShadersStatic.end());
	return true;
}

bool PrototypeShader::_OnChangeStructureParameter(IParameter*)
{
	return _OnChangeStructureCommon();
}

bool PrototypeShader::_OnChangeLengthMember(IMember*)
{
	return _OnChangeStructureCommon();
}

bool PrototypeShader::_OnChangeStructureCommon()
{
	_ShutdownModules();
	if (IsComplete() && !_InitModules(nullptr))
	{
		_ShutdownModules();
		return false;
	}
	return _setListenersChangeStructure.Notify(this);
}

bool PrototypeShader::CollectShader(Module* module)
{
	if (_pStatic)
		module->Borrow(_pStatic);
	return true;
}

bool PrototypeShader::IsComplete()
{
	for (const auto& entry : _mParameters)
		if (!entry.second->IsComplete())
			return false;
	for (IPrototypeShader* prototype : _vPrototypeShadersStatic)
		if (!prototype->IsComplete())
			return false;
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Shaders and references
// ---------------------------------------------------------------------------------------------------------

IShader* PrototypeShader::CreateShader(Result* result)
{
	// An incomplete class has no template to make instances from.
	if (_pTemplate == nullptr)
	{
		if (result)
			result->Add("Class \"%s\" is not complete", GetClassName().c_str());
		return nullptr;
	}
	Shader* shader = new Shader();
	if (!shader->Init(this, GetTemplate(), result))
	{
		delete shader;
		return nullptr;
	}
	_mShaderPositions[shader] = _vShaders.insert(_vShaders.end(), shader);
	return shader;
}

void PrototypeShader::DestroyShader(IShader* shader)
{
	auto found = _mShaderPositions.find(shader);
	if (found == _mShaderPositions.end())
		return;
	_vShaders.erase(found->second);
	_mShaderPositions.erase(found);
	delete shader;
}

ReferencePrototypeShader* PrototypeShader::AcquireReference(IGraph* graph)
{
	auto found = _mReferences.find(graph);
	if (found != _mReferences.end())
	{
		++found->second.second;
		return found->second.first;
	}
	ReferencePrototypeShader* reference = new ReferencePrototypeShader();
	// Nothing is recorded for a reference that cannot be made, so the next request tries again.
	if (!reference->Init(this, graph))
	{
		delete reference;
		return nullptr;
	}
	if (_pPrototypeInterface)
		if (ReferencePrototypeInterface* referenceInterface = _pPrototypeInterface->GetReference(graph))
			referenceInterface->AddReferencePrototypeShader(reference);
	_mReferences[graph] = CountedReference(reference, 1);
	return reference;
}

bool PrototypeShader::ReleaseReference(ReferencePrototypeShader* reference)
{
	// Found by the reference itself: one released before may already be gone.
	auto found = std::find_if(_mReferences.begin(), _mReferences.end(),
	                          [reference](const auto& entry) { return entry.second.first == reference; });
	if (reference == nullptr || found == _mReferences.end())
	{
		ConsoleOf(GetMgrEffects())->Message("PrototypeShader::ReleaseReference Reference Not Found\n");
		return false;
	}
	if (--found->second.second > 0)
		return true;
	if (_pPrototypeInterface)
		if (ReferencePrototypeInterface* referenceInterface =
		        _pPrototypeInterface->GetReference(found->first))
			referenceInterface->RemoveReferencePrototypeShader(reference);
	_mReferences.erase(found);
	delete reference;
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Shutdown
// ---------------------------------------------------------------------------------------------------------

void PrototypeShader::Shutdown()
{
	// Every listener hears of the deletion, whatever the others answer.
	_setListenersDelete.Visit(this);
	_setListenersDelete.clear();
	ListenerDelete listener = MakeDelegate(this, &PrototypeShader::_OnDeleteReferenceStatic);
	for (IPrototypeShader* prototype : _vPrototypeShadersStatic)
		prototype->RemoveListenerDelete(listener);
	_vPrototypeShadersStatic.clear();
	ShutdownShaders();
	for (auto& entry : _mReferences)
		delete entry.second.first;
	_mReferences.clear();
	DestroyValues(_mPrototypeParameters);
	DestroyValues(_mPrototypeMembers);
	DestroyValues(_mParameters);
	DestroyValues(_mMembers);
	_ShutdownModules();
	_mMethodNames.clear();
	_pPrototypeInterface = nullptr;
	_pLibrary = nullptr;
	_pClass = nullptr;
}

void PrototypeShader::ShutdownShaders()
{
	if (!_vShaders.empty())
	{
		TARSEL_ASSERT(_pClass);
		ConsoleOf(GetMgrEffects())
		    ->Message("%s shut down with %i remaining shader(s)\n", GetClassName().c_str(),
		              static_cast<int>(_vShaders.size()));
		// Destroyed last to first, so that a shader never outlives one made before it.
		std::list<IShader*> shaders;
		shaders.swap(_vShaders);
		_mShaderPositions.clear();
		for (auto it = shaders.rbegin(); it != shaders.rend(); ++it)
			delete *it;
	}
}

// ---------------------------------------------------------------------------------------------------------
// Lookups and visits
// ---------------------------------------------------------------------------------------------------------

bool PrototypeShader::AddListenerDelete(ListenerDelete& listener)
{
	return _setListenersDelete.Add(listener);
}

bool PrototypeShader::RemoveListenerDelete(ListenerDelete& listener)
{
	return _setListenersDelete.Remove(listener);
}

bool PrototypeShader::AddListenerChangeStructure(ListenerChangeStructure& listener)
{
	return _setListenersChangeStructure.Add(listener);
}

bool PrototypeShader::RemoveListenerChangeStructure(ListenerChangeStructure& listener)
{
	return _setListenersChangeStructure.Remove(listener);
}

std::string PrototypeShader::GetClassName() const
{
	return _pClass && _pClass->GetName() ? _pClass->GetName()->GetString() : std::string();
}

std::string PrototypeShader::GetInterfaceName() const
{
	return _pClass && _pClass->GetInterface() ? _pClass->GetInterface()->GetString() : std::string();
}

IMgrEffects* PrototypeShader::GetMgrEffects() const
{
	return _pLibrary ? _pLibrary->GetMgrEffects() : nullptr;
}

std::string PrototypeShader::GetConstructorStatic() const
{
	return "__ctor_" + GetClassName();
}

std::string PrototypeShader::GetStaticMethodNameMangled(const std::string& name) const
{
	auto found = _mMethodNames.find(name);
	return found == _mMethodNames.end() ? std::string("Undefined") : found->second;
}

ClassDefinition* PrototypeShader::GetTemplate() const
{
	return _pTemplate && !_pTemplate->GetClassDefinitions().empty()
	           ? _pTemplate->GetClassDefinitions().front()
	           : nullptr;
}

IParameter* PrototypeShader::GetParameter(const std::string& name)
{
	return FindValue(_mParameters, name);
}

IMember* PrototypeShader::GetMember(const std::string& name)
{
	return FindValue(_mMembers, name);
}

IPrototypeParameter* PrototypeShader::GetPrototypeParameter(const std::string& name) const
{
	return FindValue(_mPrototypeParameters, name);
}

IPrototypeMember* PrototypeShader::GetPrototypeMember(const std::string& name) const
{
	return FindValue(_mPrototypeMembers, name);
}

bool PrototypeShader::VisitParameters(VisitorParameter& visitor)
{
	return VisitValues(_mParameters, visitor);
}

bool PrototypeShader::VisitMembers(VisitorMember& visitor)
{
	return VisitValues(_mMembers, visitor);
}

bool PrototypeShader::VisitPrototypeParameters(VisitorPrototypeParameter& visitor)
{
	return VisitValues(_mPrototypeParameters, visitor);
}

bool PrototypeShader::VisitPrototypeMembers(VisitorPrototypeMember& visitor)
{
	return VisitValues(_mPrototypeMembers, visitor);
}

bool PrototypeShader::VisitPrototypeShadersStatic(VisitorPrototypeShader& visitor)
{
	bool all = true;
	for (IPrototypeShader* prototype : _vPrototypeShadersStatic)
		all = visitor(prototype) && all;
	return all;
}

bool PrototypeShader::VisitCoords(VisitorCoord& visitor)
{
	bool all = true;
	for (const auto& entry : _pClass->GetCoords())
		all = visitor(entry.second->GetType()->GetTypeSpecifier(), entry.first,
		              entry.second->GetTransformation()) &&
		      all;
	return all;
}

bool PrototypeShader::VisitOutputs(VisitorOutput& visitor)
{
	bool all = true;
	for (const auto& entry : _pClass->GetOutputs())
		all = visitor(entry.second->GetTypeSpecifier(), entry.first->GetString()) && all;
	return all;
}

// ---------------------------------------------------------------------------------------------------------
// Static parameters by name
// ---------------------------------------------------------------------------------------------------------

template <class... Args>
bool PrototypeShader::_SetParameter(const std::string& name, Args... args)
{
	IParameter* parameter = GetParameter(name);
	if (parameter == nullptr)
	{
		ConsoleOf(GetMgrEffects())
		    ->Message("PrototypeShader::_SetParameter Parameter Not Found (%s)\n", name.c_str());
		return false;
	}
	return parameter->Set(args...);
}

#define TARSEL_PROTOTYPE_SET_ARRAY(T)                                                                        \
	bool PrototypeShader::SetParameter(const std::string& name, T values, int count)                         \
	{                                                                                                        \
		return _SetParameter(name, values, count);                                                           \
	}
#define TARSEL_PROTOTYPE_SET(T)                                                                              \
	bool PrototypeShader::SetParameter(const std::string& name, T value, int index)                          \
	{                                                                                                        \
		return _SetParameter<T, int>(name, value, index);                                                    \
	}                                                                                                        \
	bool PrototypeShader::SetParameter(const std::string& name, T value)                                     \
	{                                                                                                        \
		return _SetParameter<T>(name, value);                                                                \
	}

TARSEL_PROTOTYPE_SET_ARRAY(QLtexture* const*)
TARSEL_PROTOTYPE_SET_ARRAY(IShader**)
TARSEL_PROTOTYPE_SET_ARRAY(const QLprimitive*)
TARSEL_PROTOTYPE_SET_ARRAY(const Matrix44f*)
TARSEL_PROTOTYPE_SET_ARRAY(const Matrix33f*)
TARSEL_PROTOTYPE_SET_ARRAY(const Vector4f*)
TARSEL_PROTOTYPE_SET_ARRAY(const Vector3f*)
TARSEL_PROTOTYPE_SET_ARRAY(const Vector2f*)
TARSEL_PROTOTYPE_SET_ARRAY(const float*)
TARSEL_PROTOTYPE_SET_ARRAY(const Vector4i*)
TARSEL_PROTOTYPE_SET_ARRAY(const Vector3i*)
TARSEL_PROTOTYPE_SET_ARRAY(const Vector2i*)
TARSEL_PROTOTYPE_SET_ARRAY(const int*)
TARSEL_PROTOTYPE_SET_ARRAY(const bool*)
TARSEL_PROTOTYPE_SET(IShader*)
TARSEL_PROTOTYPE_SET(QLtexture*)
TARSEL_PROTOTYPE_SET(QLprimitive)
TARSEL_PROTOTYPE_SET(const Matrix44f&)
TARSEL_PROTOTYPE_SET(const Matrix33f&)
TARSEL_PROTOTYPE_SET(const Vector4f&)
TARSEL_PROTOTYPE_SET(const Vector3f&)
TARSEL_PROTOTYPE_SET(const Vector2f&)
TARSEL_PROTOTYPE_SET(float)
TARSEL_PROTOTYPE_SET(int)
TARSEL_PROTOTYPE_SET(bool)

#undef TARSEL_PROTOTYPE_SET
#undef TARSEL_PROTOTYPE_SET_ARRAY

} // namespace Tarsel::Effects
