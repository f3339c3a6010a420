#include "graph/Graph.h"

#include "effects/IPrototypeShader.h"

#include <algorithm>
#include <cstdlib>

#include "codegen/VisitorFindEmptyAndNeverCalledFunctions.h"
#include "codegen/VisitorPrintTsl.h"
#include "core/Assert.h"
#include "core/Result.h"
#include "effects/IMgrEffects.h"
#include "effects/IShader.h"
#include "graph/CollectorDeclaration.h"
#include "graph/IReferenceShader.h"
#include "graph/ReferenceGraph.h"
#include "graph/ReferencePrototypeShader.h"
#include "manager/Profiler.h"
#include "objects/Diagnostics.h"
#include "objects/ParameterValueConsole.h"
#include "quillon/IQLPrimitive.h"
#include "quillon/IQuillonContext.h"
#include "syntax/Module.h"

namespace Tarsel::Effects
{

namespace
{

// Read at every compile so that a host can switch the pass off between compiles.
bool OptimizationsDisabled()
{
	const char* value = std::getenv("TZR_DISABLE_EFFECTS_OPTIMIZATIONS");
	return value && std::atoi(value) != 0;
}

FunctionDefinition* CreateFunctionVoid(Module* module, const std::string& name, CompoundStatement* body)
{
	FunctionPrototype* prototype = module->CreateFunctionPrototype(
	    kFunction_None, module->CreateType(kType_Void), module->CreateString(name));
	return module->CreateFunctionDefinition(prototype, body);
}

void AddCall(Module* module, CompoundStatement* body, const std::string& name)
{
	body->AddStatement(
	    module->CreateExpressionStatement(module->CreateFunctionCall(module->CreateString(name))));
}

bool DeclareFunctionVoid(Module* module, const std::string& name)
{
	return module->AddFunctionDeclaration(module->CreateFunctionPrototype(
	    kFunction_None, module->CreateType(kType_Void), module->CreateString(name)));
}

// Each phase of a compile is sampled on its own, so that its share can be followed as graphs grow.
template <class F>
bool Timed(Profiler* profiler, const char* name, F phase)
{
	ProfileScope scope(profiler, name);
	return phase();
}

} // namespace

Graph::Graph()
    : _pMgrEffects(nullptr), _eType(IQLShader::kType_Ray), _pQLShader(nullptr), _bInit(false),
      _bCompiled(false), _nCompiles(0), _pShader(nullptr), _pReferenceShader(nullptr)
{
}

Graph::~Graph()
{
	Shutdown();
}

bool Graph::Init(IMgrEffects* mgrEffects, IQLShader::Type type, IShader* shader, const std::string& name)
{
	TARSEL_ASSERT(shader != NULL);
	TARSEL_ASSERT(_rKey == Key::Null());
	if (shader == nullptr || mgrEffects == nullptr)
		return false;
	_pMgrEffects = mgrEffects;
	_rKey = mgrEffects->CreateKey();
	_eType = type;
	_sName = name;
	_mgrOutputs.Init();
	if (!_InitShader(shader))
	{
		Shutdown();
		return false;
	}
	return true;
}

bool Graph::_InitShader(IShader* shader)
{
	TARSEL_ASSERT(_pShader == NULL);
	// The reference asks the graph for its root, so the root is known before the reference is made.
	_pShader = shader;
	_pReferenceShader = shader->AcquireReference(this);
	if (_pReferenceShader == nullptr)
	{
		_pShader = nullptr;
		return false;
	}
	_pReferenceShader->AddListenerDelete(MakeDelegate(this, &Graph::_OnDeleteReferenceShader));
	_pReferenceShader->AddListenerChangeStructure(MakeDelegate(this, &Graph::_OnChangeStructureReference));
	_bInit = true;
	_bCompiled = false;
	return true;
}

void Graph::_ShutdownShader()
{
	IReferenceShader* reference = _pReferenceShader;
	IShader* shader = _pShader;
	_pReferenceShader = nullptr;
	_pShader = nullptr;
	reference->RemoveListenerDelete(MakeDelegate(this, &Graph::_OnDeleteReferenceShader));
	reference->RemoveListenerChangeStructure(MakeDelegate(this, &Graph::_OnChangeStructureReference));
	if (shader)
		shader->ReleaseReference(reference);
}

void Graph::Shutdown()
{
	_setListenersDelete.Visit(this);
	_setListenersDelete.clear();
	_bInit = false;
	_setListenersChangeValue.clear();
	_setListenersChangeStructure.clear();
	_setCollect.clear();
	_setApply.clear();
	for (IReferenceGraph* reference : _vReferences)
		delete reference;
	_vReferences.clear();
	if (_pReferenceShader)
		_ShutdownShader();
	_mReferencePrototypeShaders.clear();
	_mReferencePrototypeInterfaces.clear();
	_bCompiled = false;
	_setOutputsUsed.clear();
	_DestroyQLShader();
	_mgrOutputs.Shutdown();
	if (_pMgrEffects && _rKey != Key::Null())
		_pMgrEffects->DestroyKey(_rKey);
	_rKey = Key::Null();
	_pMgrEffects = nullptr;
}

void Graph::_DestroyQLShader()
{
	IQuillonContext* context = _pMgrEffects ? _pMgrEffects->GetQuillonContext() : nullptr;
	if (_pQLShader && context)
		context->DestroyShader(_pQLShader);
	_pQLShader = nullptr;
}

bool Graph::SetName(const std::string& name)
{
	_sName = name;
	if (_pQLShader)
		_pQLShader->SetName(name);
	return true;
}

std::string Graph::GetNameMangled() const
{
	return _sName + _rKey.ToString();
}

IReferenceGraph* Graph::CreateReference(IEffect* effect)
{
	ReferenceGraph* reference = new ReferenceGraph();
	if (!reference->Init(this, effect))
	{
		delete reference;
		return nullptr;
	}
	_vReferences.push_back(reference);
	return reference;
}

bool Graph::DestroyReference(IReferenceGraph* reference)
{
	auto found = std::find(_vReferences.begin(), _vReferences.end(), reference);
	if (found == _vReferences.end())
		return false;
	_vReferences.erase(found);
	delete reference;
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Prototype references
// ---------------------------------------------------------------------------------------------------------

bool Graph::AddReferencePrototypeShader(IPrototypeShader* prototype, ReferencePrototypeShader* reference)
{
	reference->AddListenerChangeStructure(MakeDelegate(this, &Graph::_OnChangeStructure));
	_mReferencePrototypeShaders[prototype] = reference;
	return true;
}

bool Graph::RemoveReferencePrototypeShader(IPrototypeShader* prototype)
{
	auto found = _mReferencePrototypeShaders.find(prototype);
	if (found == _mReferencePrototypeShaders.end())
	{
		ConsoleOf(_pMgrEffects)->Message("Graph::RemoveReferencePrototypeShader PrototypeShader Not Found\n");
		return false;
	}
	found->second->RemoveListenerChangeStructure(MakeDelegate(this, &Graph::_OnChangeStructure));
	_mReferencePrototypeShaders.erase(found);
	return true;
}

bool Graph::AddReferencePrototypeInterface(IPrototypeInterface* prototype,
                                           ReferencePrototypeInterface* reference)
{
	_mReferencePrototypeInterfaces[prototype] = reference;
	return true;
}

bool Graph::RemoveReferencePrototypeInterface(IPrototypeInterface* prototype)
{
	if (_mReferencePrototypeInterfaces.erase(prototype) == 0)
	{
		ConsoleOf(_pMgrEffects)
		    ->Message("Graph::RemoveReferencePrototypeInterface IPrototypeInterface Not Found\n");
		return false;
	}
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Attributes and outputs
// ---------------------------------------------------------------------------------------------------------

bool Graph::AcquireAttribute(TypeSpecifier type, const std::string& name, TransformationCoord transformation)
{
	auto found = _mAttributes.find(name);
	if (found != _mAttributes.end())
	{
		if (found->second.attribute.type != type)
		{
			ConsoleOf(_pMgrEffects)->Message("Graph::AcquireAttribute Type Collision\n");
			return false;
		}
		++found->second.nCount;
		return true;
	}
	// The effect hears of it here: a structure notice that comes after would find the graph no longer
	// compiled.
	_OnChangeStructure();
	Attribute attribute = {type, name, transformation};
	_mAttributes[name] = AttributeRecord{attribute, 1};
	_setListenersAddAttribute.Visit(attribute);
	return true;
}

bool Graph::ReleaseAttribute(const std::string& name)
{
	auto found = _mAttributes.find(name);
	if (found == _mAttributes.end())
		return true;
	_OnChangeStructure();
	if (--found->second.nCount > 0)
		return true;
	Attribute attribute = found->second.attribute;
	_mAttributes.erase(found);
	return _setListenersRemoveAttribute.Notify(attribute);
}

bool Graph::VisitAttributes(ListenerAttribute& visitor)
{
	bool all = true;
	for (const auto& entry : _mAttributes)
		all = visitor(entry.second.attribute) && all;
	return all;
}

bool Graph::AcquireOutput(TypeSpecifier type, const std::string& name)
{
	_Invalidate();
	if (!_pMgrEffects || !_pMgrEffects->AcquireOutput(type, name))
		return false;
	if (!_mgrOutputs.AcquireOutput(type, name))
	{
		_pMgrEffects->ReleaseOutput(name);
		return false;
	}
	_setListenersChangeStructure.Notify(this);
	return true;
}

bool Graph::ReleaseOutput(const std::string& name)
{
	_Invalidate();
	if (!_mgrOutputs.ReleaseOutput(name) || !_pMgrEffects || !_pMgrEffects->ReleaseOutput(name))
		return false;
	_setListenersChangeStructure.Notify(this);
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// State
// ---------------------------------------------------------------------------------------------------------

bool Graph::IsComplete()
{
	return _bInit && _pReferenceShader && _pReferenceShader->IsComplete();
}

void Graph::_Invalidate()
{
	_bCompiled = false;
	_setOutputsUsed.clear();
}

bool Graph::_OnChangeStructure()
{
	const bool wasCompiled = _bCompiled;
	_Invalidate();
	return wasCompiled ? _setListenersChangeStructure.Notify(this) : true;
}

bool Graph::_OnChangeStructureReference(IReferenceShader*)
{
	return _OnChangeStructure();
}

bool Graph::_OnDeleteReferenceShader(IReferenceShader*)
{
	_pShader = nullptr;
	_pReferenceShader = nullptr;
	return _OnChangeStructure();
}

// ---------------------------------------------------------------------------------------------------------
// Values
// ---------------------------------------------------------------------------------------------------------

bool Graph::Apply(IQLPrimitive* primitive, IQLProgram* program, Result*)
{
	ProfileScope scope(_pMgrEffects ? _pMgrEffects->GetProfiler() : nullptr, "Graph::Apply");
	AutoBindQLPrimitive bind(primitive);
	return _setApply.Notify(primitive, program);
}

bool Graph::AddDelegateUpdate(DelegateApply& delegate)
{
	// An uncompiled graph applies everything after its next compile anyway.
	if (!_bCompiled)
		return true;
	return _setListenersChangeValue.Notify(this, delegate);
}

// ---------------------------------------------------------------------------------------------------------
// Compile
// ---------------------------------------------------------------------------------------------------------

bool Graph::CollectDeclarationConstructorStatic(Module* module)
{
	return DeclareFunctionVoid(module, GetConstructorStatic());
}

bool Graph::CollectDeclarationConstructor(Module* module)
{
	return DeclareFunctionVoid(module, GetConstructor());
}

bool Graph::Compile(Result* result)
{
	if (!IsComplete())
		return false;
	ProfileScope scope(_pMgrEffects->GetProfiler(), "Graph::_Compile");
	// Code that shaders build while collecting (calls rewritten through their inputs) reports into this
	// compile's result; without one, into whatever the calling operation installed.
	MgrEffectsImpl* impl = _pMgrEffects->GetImplementation();
	ScopedResult installed(_pMgrEffects, result ? result : impl ? impl->GetResult() : nullptr);
	return _Compile(result);
}

bool Graph::_Compile(Result* result)
{
	Module* module = Module::Create();
	if (module == nullptr)
	{
		ConsoleOf(_pMgrEffects)->Message("Graph::_Compile Module Creation\n");
		return false;
	}
	Profiler* profiler = _pMgrEffects->GetProfiler();
	const bool collected = Timed(profiler, "Graph::_Compile Collect",
	                             [&]
	                             {
		                             if (!_CollectGlobals(module) || !_CollectConstructorStatic(module) ||
		                                 !_CollectConstructor(module) || !_setCollect.Notify(module))
			                             return false;
		                             _CollectForwardDeclarations(module);
		                             return true;
	                             });
	if (!collected)
	{
		delete module;
		return false;
	}
	VisitorFindEmptyAndNeverCalledFunctions optimizer(this);
	if (!OptimizationsDisabled())
		optimizer.Visit(module);
	VisitorPrintTsl printer(result, _pMgrEffects, true);
	const bool printed = Timed(profiler, "Graph::_Compile Print", [&] { return printer.Visit(module); });
	// The marks sit on the shaders' own code, which other graphs print too.
	optimizer.ClearMarks();
	const bool compiled = printed && Timed(profiler, "Graph::_Compile SetString",
	                                       [&] { return _SetString(printer.result(), printer, result); });
	if (compiled)
	{
		_bCompiled = true;
		_setOutputsUsed = printer.GetOutputsUsed();
	}
	// The line map points into the module, so it goes only after any error has been translated.
	delete module;
	if (compiled)
		_setListenersCompile.Visit(this);
	return compiled;
}

bool Graph::_CollectGlobals(Module* module)
{
	CollectorDeclarationRayAttribute rayAttributes(module);
	IMgrEffects::VisitorTyped visitRay = MakeDelegate(&rayAttributes, &CollectorDeclaration::Collect);
	CollectorDeclarationVariableGlobal globals(module);
	IMgrEffects::VisitorTyped visitGlobals = MakeDelegate(&globals, &CollectorDeclaration::Collect);
	return _pMgrEffects->VisitRayAttributes(visitRay) && _pMgrEffects->VisitVariablesGlobal(visitGlobals) &&
	       (_eType != IQLShader::kType_Ray || _CollectVertexAttributeDeclarations(module));
}

bool Graph::_CollectVertexAttributeDeclarations(Module* module)
{
	CollectorDeclarationAttributeRay attributes(module);
	attributes.Collect(kType_Vec3, "Normal");
	attributes.Collect(kType_Vec4, "Position_WorldSpace");
	ListenerAttribute visitor =
	    MakeDelegate(&attributes, &CollectorDeclarationAttributeRay::CollectAttribute);
	return VisitAttributes(visitor);
}

bool Graph::_CollectConstructorStatic(Module* module)
{
	// By class name, not by the map's pointer order, so that a graph prints the same text on every run.
	std::map<std::string, ReferencePrototypeShader*> byName;
	for (const auto& entry : _mReferencePrototypeShaders)
		byName.emplace(entry.first->GetClassName(), entry.second);
	CompoundStatement* body = module->CreateCompoundStatement();
	for (const auto& entry : byName)
		if (entry.second->HasConstructorStatic())
			AddCall(module, body, entry.second->GetConstructorStatic());
	return module->AddFunctionDefinition(CreateFunctionVoid(module, GetConstructorStatic(), body));
}

bool Graph::_CollectConstructor(Module* module)
{
	CompoundStatement* body = module->CreateCompoundStatement();
	if (_pReferenceShader->HasConstructor())
		AddCall(module, body, _pReferenceShader->GetConstructor());
	return module->AddFunctionDefinition(CreateFunctionVoid(module, GetConstructor(), body));
}

void Graph::_CollectForwardDeclarations(Module* module)
{
	// Copied first: adding declarations must not disturb the lists being walked.
	const std::vector<FunctionDefinition*> functions = module->GetFunctionDefinitions();
	for (const FunctionDefinition* function : functions)
		if (function->GetFunctionPrototype()->GetName()->GetString() != "main")
			module->AddFunctionDeclaration(function->GetFunctionPrototype()->Clone(module));
	for (const ClassDefinition* definition : module->GetClassDefinitions())
		for (const FunctionDefinition* function : definition->GetMemberFunctions())
			module->AddFunctionDeclaration(function->GetFunctionPrototype()->Clone(module));
}

bool Graph::_SetString(const std::string& text, const VisitorPrintTsl& printer, Result* result)
{
	IQuillonContext* context = _pMgrEffects->GetQuillonContext();
	_DestroyQLShader();
	_pQLShader = context ? context->CreateShader(_eType) : nullptr;
	if (_pQLShader == nullptr)
		return false;
	++_nCompiles;
	_pQLShader->SetName(GetNameMangled() + "_" + std::to_string(_nCompiles));
	std::vector<std::string> errors;
	if (_pQLShader->SetString(text, errors))
		return true;
	if (result && !errors.empty())
		result->Add("%s", TranslateErrorMessage(errors.back(), printer).c_str());
	ConsoleOf(_pMgrEffects)->Message("Graph::_Compile SetString\n");
	return false;
}

std::string Graph::TranslateErrorMessage(const std::string& message, const VisitorPrintTsl& printer)
{
	static const std::string prefix = "String 0 Line ";
	std::string output;
	size_t begin = 0;
	while (begin < message.size())
	{
		size_t end = message.find('\n', begin);
		end = end == std::string::npos ? message.size() : end + 1;
		const std::string piece = message.substr(begin, end - begin);
		begin = end;
		const size_t at = piece.find(prefix);
		const size_t digits = at == std::string::npos ? piece.size() : at + prefix.size();
		size_t after = digits;
		while (after < piece.size() && piece[after] >= '0' && piece[after] <= '9')
			++after;
		// No number, or one that runs to the end of the piece: nothing to map.
		const int line = after < piece.size() && after > digits ? std::atoi(piece.c_str() + digits) : 0;
		if (line < 1)
		{
			output += piece;
			continue;
		}
		output += printer.GetSyntaxForLine(line)->GetRange().GetLocationText() + piece.substr(after);
	}
	return output;
}

} // namespace Tarsel::Effects
