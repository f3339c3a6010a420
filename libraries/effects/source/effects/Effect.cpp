#include "effects/Effect.h"

#include <algorithm>

#include "core/Assert.h"
#include "core/Console.h"
#include "core/Result.h"
#include "effects/IParameter.h"
#include "effects/IPrototypeShader.h"
#include "effects/IShader.h"
#include "effects/ReferenceEffect.h"
#include "graph/Graph.h"
#include "manager/Profiler.h"
#include "quillon/IQLPrimitive.h"
#include "quillon/IQLProgram.h"
#include "quillon/IQuillonContext.h"

namespace Tarsel::Effects
{

namespace
{

const char* const kPrefixOutputAttachmentIndex = "__outputAttachmentIndex_";

Profiler* ProfilerOf(IMgrEffects* mgrEffects)
{
	return mgrEffects ? mgrEffects->GetProfiler() : nullptr;
}

// Walks the interface inputs below a shader and reports every gap that keeps the graph from compiling.
class CompileProblems
{
public:
	// False when anything was reported.
	bool Walk(IShader* shader, const std::string& path)
	{
		_Shader(shader, path);
		return _bFine;
	}

private:
	bool _Parameter(const std::string& name, IParameter* parameter)
	{
		const std::string path = _sPath + "." + name;
		if (parameter == nullptr)
			return _Report("IParameter is NULL for %s\n", path);
		if (parameter->GetClass() != IParameter::kParameterClass_Interface)
			return true;
		if (!parameter->IsArray())
			return _Input(parameter, 0, path);
		for (int i = 0; i < parameter->GetLength(); ++i)
			_Input(parameter, i, path + "[" + std::to_string(i) + "]");
		return true;
	}

	bool _Input(IParameter* parameter, int index, const std::string& path)
	{
		IShader* shader = nullptr;
		if (!parameter->Get(shader, index) || shader == nullptr)
			return _Report("Interface input doesn't have a shader attached for %s\n", path);
		IPrototypeShader* prototype = shader->GetPrototypeShader();
		if (prototype == nullptr)
			return _Report("shader doesn't have a prototype for %s\n", path);
		_Shader(shader, path + "(" + prototype->GetClassName() + ")");
		return true;
	}

	void _Shader(IShader* shader, const std::string& path)
	{
		if (shader->GetPrototypeShader() == nullptr)
		{
			_Report("shader doesn't have a prototype for %s\n", path);
			return;
		}
		const std::string outer = _sPath;
		_sPath = path;
		IShader::VisitorParameter visitor = MakeDelegate(this, &CompileProblems::_Parameter);
		shader->VisitParameters(visitor);
		_sPath = outer;
	}

	bool _Report(const char* format, const std::string& path)
	{
		GetMgrConsole()->Message(format, path.c_str());
		_bFine = false;
		return true;
	}

	std::string _sPath;
	bool _bFine = true;
};

} // namespace

template <class PV, class PC>
Effect<PV, PC>::Effect()
    : _pMgrEffects(nullptr), _sName("Constructor"), _bCompiled(false), _pGraph(nullptr),
      _pReferenceGraph(nullptr), _pReferenceShaderRoot(nullptr), _pShaderRoot(nullptr), _pProgram(nullptr),
      _pPrimitiveApplying(nullptr), _pResultUpdate(nullptr), _bAbandoned(false)
{
}

template <class PV, class PC>
Effect<PV, PC>::~Effect()
{
	Shutdown();
}

template <class PV, class PC>
bool Effect<PV, PC>::Init(IMgrEffects* mgrEffects)
{
	_pMgrEffects = mgrEffects;
	_sName = "Init";
	_bCompiled = false;
	IQuillonContext* context = mgrEffects ? mgrEffects->GetQuillonContext() : nullptr;
	_pProgram = context ? context->CreateProgram() : nullptr;
	if (_pProgram == nullptr)
	{
		Shutdown();
		GetMgrConsole()->Message("Effect::Init CreateProgram\n");
		return false;
	}
	_pProgram->SetName(_sName);
	if (!_policyVertex.Init(this, mgrEffects, _pProgram))
	{
		Shutdown();
		return false;
	}
	_policyVertex.SetName(_sName);
	IMgrEffects::ListenerChangeOutputIndices listener = MakeDelegate(this, &Effect::_OnChangeOutputIndices);
	_pMgrEffects->AddListenerChangeOutputIndices(listener);
	return true;
}

template <class PV, class PC>
void Effect<PV, PC>::Shutdown()
{
	_setListenersDelete.Visit(static_cast<IEffect*>(this));
	_setListenersDelete.clear();
	for (IReferenceEffect* reference : _vReferenceEffects)
		delete reference;
	_vReferenceEffects.clear();
	_setListenersApply.clear();
	_setListenersUpdate.clear();
	// Nothing can change any more; listeners of gone references must not stay behind.
	_setListenersChangeValue.clear();
	_setListenersChangeStructure.clear();
	_setListenersCompile.clear();
	_policyVertex.Shutdown();
	if (_pMgrEffects)
	{
		IMgrEffects::ListenerChangeOutputIndices listener =
		    MakeDelegate(this, &Effect::_OnChangeOutputIndices);
		_pMgrEffects->RemoveListenerChangeOutputIndices(listener);
	}
	if (_pGraph)
		_ShutdownGraph();
	_pReferenceShaderRoot = nullptr;
	IQuillonContext* context = _pMgrEffects ? _pMgrEffects->GetQuillonContext() : nullptr;
	if (context)
	{
		context->DestroyShader(_pShaderRoot);
		if (_pProgram)
			context->DestroyProgram(_pProgram);
	}
	_pShaderRoot = nullptr;
	_pProgram = nullptr;
	_bCompiled = false;
	_sName = "Shutdown";
	_pMgrEffects = nullptr;
}

template <class PV, class PC>
bool Effect<PV, PC>::SetName(const std::string& name)
{
	_sName = name;
	if (_pGraph)
		_pGraph->SetName(name);
	if (_pShaderRoot)
		_pShaderRoot->SetName(name);
	if (_pProgram)
		_pProgram->SetName(name);
	_policyVertex.SetName(name);
	return true;
}

template <class PV, class PC>
IGraph* Effect<PV, PC>::GetGraph() const
{
	return _pGraph;
}

// ---------------------------------------------------------------------------------------------------------
// Root and graph
// ---------------------------------------------------------------------------------------------------------

template <class PV, class PC>
bool Effect<PV, PC>::SetRoot(IShader* shader)
{
	if (_pGraph)
		_ShutdownGraph();
	_pReferenceShaderRoot = nullptr;
	if (!_InitGraph(shader))
		return false;
	_pReferenceShaderRoot = shader->GetReference(_pGraph);
	_bCompiled = false;
	_setListenersChangeStructure.Visit(static_cast<IEffect*>(this));
	return true;
}

template <class PV, class PC>
bool Effect<PV, PC>::GetRoot(IShader*& shader) const
{
	shader = _pGraph ? _pGraph->GetShader() : nullptr;
	return true;
}

template <class PV, class PC>
bool Effect<PV, PC>::_InitGraph(IShader* shader)
{
	TARSEL_ASSERT(_pGraph == NULL);
	_pGraph = new Graph();
	if (!_pGraph->Init(_pMgrEffects, PC::GetType(), shader, _sName))
	{
		delete _pGraph;
		_pGraph = nullptr;
		Shutdown();
		return false;
	}
	_pReferenceGraph = _pGraph->CreateReference(this);
	_pReferenceGraph->AddListenerChangeValue(MakeDelegate(this, &Effect::_OnChangeValueGraph));
	_pReferenceGraph->AddListenerChangeStructure(MakeDelegate(this, &Effect::_OnChangeStructureGraph));
	_pReferenceGraph->AddListenerCompile(MakeDelegate(this, &Effect::_OnCompileGraph));
	_policyVertex.BindGraph(_pGraph);
	return true;
}

template <class PV, class PC>
void Effect<PV, PC>::_ShutdownGraph()
{
	// The graph owns the reference it made for this effect; the vertex policy lets go when told of the
	// deletion.
	delete _pGraph;
	_pGraph = nullptr;
	_pReferenceGraph = nullptr;
	_bCompiled = false;
}

template <class PV, class PC>
IReferenceShader* Effect<PV, PC>::_GetReferenceShader(IShader* shader)
{
	return shader && _pGraph ? shader->GetReference(_pGraph) : nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// Reference effects
// ---------------------------------------------------------------------------------------------------------

template <class PV, class PC>
IReferenceEffect* Effect<PV, PC>::CreateReference(IQLPrimitive* primitive)
{
	ReferenceEffect* reference = new ReferenceEffect();
	reference->Init(primitive, this, MakeDelegate(this, &Effect::_GetReferenceShader));
	_vReferenceEffects.push_back(reference);
	return reference;
}

template <class PV, class PC>
void Effect<PV, PC>::DestroyReference(IReferenceEffect* reference)
{
	auto found = std::find(_vReferenceEffects.begin(), _vReferenceEffects.end(), reference);
	if (found != _vReferenceEffects.end())
		_vReferenceEffects.erase(found);
	delete reference;
}

// ---------------------------------------------------------------------------------------------------------
// Update and compile
// ---------------------------------------------------------------------------------------------------------

template <class PV, class PC>
bool Effect<PV, PC>::Update(Result* result)
{
	if (!_bCompiled)
	{
		if (_pGraph == nullptr)
		{
			_CheckCompileProblems(result);
			return false;
		}
		_pResultUpdate = result;
		const bool graphCompiled = _pGraph->Compile(result);
		_pResultUpdate = nullptr;
		if (_bAbandoned)
		{
			// Only now is the graph off the stack.
			_bAbandoned = false;
			Shutdown();
			return false;
		}
		// A graph that compiled but whose program did not link leaves the effect uncompiled too.
		if (!graphCompiled || !_bCompiled)
		{
			_CheckCompileProblems(result);
			return false;
		}
	}
	// Every primitive catches up, even after one has failed.
	return _setListenersUpdate.Visit(static_cast<IEffect*>(this));
}

template <class PV, class PC>
bool Effect<PV, PC>::_OnCompileGraph(IReferenceGraph* referenceGraph)
{
	TARSEL_ASSERT(referenceGraph->GetGraph()->IsComplete());
	TARSEL_ASSERT(referenceGraph->GetGraph()->IsCompiled());
	Result local;
	const bool compiled = _Compile(&local);
	if (!compiled && _pResultUpdate)
		_pResultUpdate->Add(local);
	return compiled;
}

template <class PV, class PC>
bool Effect<PV, PC>::_Abandon(const char* message)
{
	GetMgrConsole()->Message("%s", message);
	_bAbandoned = true;
	return false;
}

template <class PV, class PC>
bool Effect<PV, PC>::_Compile(Result* result)
{
	ProfileScope scope(ProfilerOf(_pMgrEffects), "Effect< PolicyVertex, PolicyCompiler >::_Compile");
	if (!_pGraph->IsComplete())
	{
		if (result)
			result->Add("Graph is not complete\n");
		return false;
	}
	if (!_pGraph->IsCompiled() && !_pGraph->Compile(result))
	{
		if (result)
			result->Add("Compile failed\n");
		return false;
	}
	IQuillonContext* context = _pMgrEffects->GetQuillonContext();
	if (_pShaderRoot)
	{
		_pProgram->DetachShader(_pShaderRoot);
		context->DestroyShader(_pShaderRoot);
		_pShaderRoot = nullptr;
	}
	_pShaderRoot = context->CreateShader(PC::GetType());
	if (_pShaderRoot == nullptr)
		return _Abandon("Effect::Init CreateShader\n");
	_pShaderRoot->SetName(_sName);
	if (!_pProgram->AttachShader(_pShaderRoot))
		return _Abandon("Effect::Init AddShader\n");
	if (!_pProgram->AttachShader(_pGraph->GetQLShader()))
		return _Abandon("Effect::InitGraph AddShader\n");
	if (!PC::Compile(_pMgrEffects, _policyVertex.GetShaderVertex(), _pReferenceGraph, _pShaderRoot, result) ||
	    !_policyVertex.Compile())
		return false;
	std::vector<std::string> errors;
	bool linked = false;
	{
		ProfileScope link(ProfilerOf(_pMgrEffects), "Effect Init CreateProgram");
		linked = _pProgram->Link(errors);
	}
	if (!linked)
	{
		GetMgrConsole()->Message("Effect::_Compile Link\n");
		for (const std::string& error : errors)
			if (result)
				result->Add("%s", error.c_str());
		return false;
	}
	_bCompiled = true;
	_setListenersCompile.Visit(static_cast<IEffect*>(this));
	return true;
}

template <class PV, class PC>
bool Effect<PV, PC>::_OnChangeStructureGraph(IReferenceGraph*)
{
	_bCompiled = false;
	_setListenersChangeStructure.Visit(static_cast<IEffect*>(this));
	return true;
}

template <class PV, class PC>
bool Effect<PV, PC>::_OnChangeValueGraph(IReferenceGraph*, IGraph::DelegateApply& apply)
{
	ActionUpdate action(this, apply);
	return _setListenersChangeValue.Visit(static_cast<IEffect*>(this), action);
}

template <class PV, class PC>
bool Effect<PV, PC>::_CheckCompileProblems(Result*)
{
	IMgrConsole* console = GetMgrConsole();
	console->Message("Effect::Apply Not Compiled for %s\n", _sName.c_str());
	if (_bCompiled)
		return true;
	if (_pMgrEffects == nullptr)
		console->Message("MgrEffects pointer is NULL\n");
	if (_pGraph == nullptr)
	{
		console->Message("There is no graph in Effect %s\n", _sName.c_str());
		return false;
	}
	IShader* root = nullptr;
	GetRoot(root);
	CompileProblems problems;
	if (root && !problems.Walk(root, _sName))
		return false;
	console->Message("Could not find any problems for the Effect %s\n", _sName.c_str());
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Apply
// ---------------------------------------------------------------------------------------------------------

template <class PV, class PC>
bool Effect<PV, PC>::Apply(Result*)
{
	if (!_bCompiled)
		return true;
	return _setListenersApply.Visit(static_cast<IEffect*>(this));
}

template <class PV, class PC>
bool Effect<PV, PC>::Apply(IQLPrimitive* primitive, Result* result)
{
	if (!_bCompiled)
		return true;
	ProfileScope scope(ProfilerOf(_pMgrEffects), "Effect< PolicyVertex >::Apply");
	AutoBindQLPrimitive bind(primitive);
	qlUseProgram(_pProgram->GetHandle());
	if (!_pGraph->Apply(primitive, _pProgram, result))
		return false;
	_pPrimitiveApplying = primitive;
	const bool written = _WriteOutputAttachmentIndices();
	_pPrimitiveApplying = nullptr;
	return written;
}

// A refused write still keeps the manager from telling the other effects.
template <class PV, class PC>
bool Effect<PV, PC>::_OnChangeOutputIndices()
{
	_WriteOutputAttachmentIndices();
	return true;
}

template <class PV, class PC>
bool Effect<PV, PC>::_WriteOutputAttachmentIndices()
{
	if (!_bCompiled)
		return true;
	bool all = true;
	for (const std::string& name : _pGraph->GetOutputsUsed())
		all = _UpdateOutputAttachmentIndexForOutput(name) && all;
	return all;
}

template <class PV, class PC>
bool Effect<PV, PC>::_UpdateOutputAttachmentIndexForOutput(const std::string& outputName)
{
	int index = 0;
	_pMgrEffects->GetOutputAttachmentIndex(index, outputName);
	const std::string uniform = kPrefixOutputAttachmentIndex + outputName;
	const int location = _pProgram->GetUniformLocation(uniform.c_str());
	if (location < 0)
		return true;
	if (_pPrimitiveApplying)
		return _pPrimitiveApplying->SetUniform(uniform, location, index);
	bool all = true;
	for (IReferenceEffect* reference : _vReferenceEffects)
	{
		// Outside an apply the program current is anyone's: write as an apply would.
		IQLPrimitive* primitive = reference->GetQLPrimitive();
		AutoBindQLPrimitive bind(primitive);
		qlUseProgram(_pProgram->GetHandle());
		all = (primitive && primitive->SetUniform(uniform, location, index)) && all;
	}
	return all;
}

template class Effect<PolicyVertexSurface, PolicyCompilerRay>;
template class Effect<PolicyVertexNull, PolicyCompilerFrame>;
template class Effect<PolicyVertexNull, PolicyCompilerPrefixRay>;

} // namespace Tarsel::Effects
