#include "codegen/PolicyVertexSurface.h"

#include "core/Assert.h"
#include "effects/IMgrEffects.h"
#include "manager/Profiler.h"
#include "objects/ParameterValueConsole.h"
#include "quillon/IQLProgram.h"

namespace Tarsel::Effects
{

PolicyVertexSurface::PolicyVertexSurface()
    : _pEffect(nullptr), _pGraph(nullptr), _pVertex(nullptr), _pMgrEffects(nullptr), _pProgram(nullptr)
{
}

PolicyVertexSurface::~PolicyVertexSurface()
{
	Shutdown();
}

bool PolicyVertexSurface::Init(IEffect* effect, IMgrEffects* mgrEffects, IQLProgram* program)
{
	TARSEL_ASSERT(_pVertex == NULL);
	if (_pVertex != nullptr || program == nullptr)
		return false;
	_pEffect = effect;
	_pMgrEffects = mgrEffects;
	_pVertex = new ShaderVertex();
	if (!_pVertex->Init(mgrEffects, program))
		return false;
	_pProgram = program;
	_pProgram->AddListenerChange(MakeDelegate(_pVertex, &ShaderVertex::OnProgramChange));
	if (!_pProgram->AttachShader(_pVertex->GetQLShader()))
	{
		ConsoleOf(mgrEffects)->Message("PolicyVertexSurface::Init Add Shader\n");
		return false;
	}
	return true;
}

void PolicyVertexSurface::Shutdown()
{
	if (_pGraph)
		UnbindGraph();
	if (_pProgram && _pVertex)
	{
		_pProgram->RemoveListenerChange(MakeDelegate(_pVertex, &ShaderVertex::OnProgramChange));
		_pProgram->DetachShader(_pVertex->GetQLShader());
	}
	delete _pVertex;
	_pVertex = nullptr;
	_pProgram = nullptr;
	_pMgrEffects = nullptr;
	_pEffect = nullptr;
	_setListenersChangeAttribute.clear();
}

bool PolicyVertexSurface::BindGraph(IGraph* graph)
{
	TARSEL_ASSERT(_pGraph == NULL);
	if (_pGraph != nullptr || graph == nullptr || _pVertex == nullptr)
		return false;
	_pGraph = graph;
	IGraph::ListenerAttribute acquire = MakeDelegate(this, &PolicyVertexSurface::_OnAddAttribute);
	const bool acquired = graph->VisitAttributes(acquire);
	graph->AddListenerDelete(MakeDelegate(this, &PolicyVertexSurface::_OnDeleteGraph));
	graph->AddListenerAddAttribute(acquire);
	graph->AddListenerRemoveAttribute(MakeDelegate(this, &PolicyVertexSurface::_OnRemoveAttribute));
	return acquired;
}

bool PolicyVertexSurface::UnbindGraph()
{
	TARSEL_ASSERT(_pGraph != NULL);
	if (_pGraph == nullptr)
		return false;
	_pGraph->RemoveListenerDelete(MakeDelegate(this, &PolicyVertexSurface::_OnDeleteGraph));
	_pGraph->RemoveListenerAddAttribute(MakeDelegate(this, &PolicyVertexSurface::_OnAddAttribute));
	_pGraph->RemoveListenerRemoveAttribute(MakeDelegate(this, &PolicyVertexSurface::_OnRemoveAttribute));
	_ForgetGraph();
	return true;
}

bool PolicyVertexSurface::_OnDeleteGraph(IGraph*)
{
	_ForgetGraph();
	return true;
}

void PolicyVertexSurface::_ForgetGraph()
{
	IGraph::ListenerAttribute release = MakeDelegate(this, &PolicyVertexSurface::_OnRemoveAttribute);
	_pGraph->VisitAttributes(release);
	_pGraph = nullptr;
}

bool PolicyVertexSurface::_OnAddAttribute(IGraph::Attribute attribute)
{
	if (!_pVertex->AcquireAttribute(attribute.type, attribute.name, attribute.transformation))
		return false;
	return _setListenersChangeAttribute.Notify(_pEffect);
}

bool PolicyVertexSurface::_OnRemoveAttribute(IGraph::Attribute attribute)
{
	if (!_pVertex->ReleaseAttribute(attribute.name))
		return false;
	return _setListenersChangeAttribute.Notify(_pEffect);
}

bool PolicyVertexSurface::Compile()
{
	TARSEL_ASSERT(_pEffect != NULL);
	if (_pVertex == nullptr)
		return false;
	ProfileScope scope(_pMgrEffects->GetProfiler(), "Effect::_CompileShaderVertex");
	return _pVertex->Compile();
}

bool PolicyVertexSurface::SetName(const std::string& name)
{
	return _pVertex && _pVertex->SetName(name);
}

bool PolicyVertexSurface::VisitAttributes(ShaderVertex::VisitorAttribute& visitor)
{
	return _pVertex && _pVertex->VisitAttributes(visitor);
}

} // namespace Tarsel::Effects
