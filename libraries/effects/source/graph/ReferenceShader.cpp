#include "graph/ReferenceShader.h"

#include "core/Assert.h"
#include "effects/IShader.h"
#include "graph/IGraph.h"
#include "graph/ReferenceShaderGraph.h"
#include "graph/ReferenceShaderNode.h"

namespace Tarsel::Effects
{

ReferenceShader::~ReferenceShader()
{
	Shutdown();
}

bool ReferenceShader::Init(IShader* shader, IGraph* graph)
{
	if (shader == nullptr || graph == nullptr)
		return false;
	_pShader = shader;
	_pGraph = graph;
	if (!_InitImpl())
	{
		Shutdown();
		return false;
	}
	IShader::ListenerShader listener = MakeDelegate(this, &ReferenceShader::_OnDelete);
	_pShader->AddListenerDelete(listener);
	_pGraph->AddListenerDelete(MakeDelegate(this, &ReferenceShader::_OnDeleteGraph));
	return true;
}

void ReferenceShader::Shutdown()
{
	if (_pShader)
	{
		IShader::ListenerShader listener = MakeDelegate(this, &ReferenceShader::_OnDelete);
		_pShader->RemoveListenerDelete(listener);
	}
	if (_pGraph)
		_pGraph->RemoveListenerDelete(MakeDelegate(this, &ReferenceShader::_OnDeleteGraph));
	_setListenersDelete.Visit(this);
	_setListenersDelete.clear();
	_ShutdownImpl();
	_pShader = nullptr;
	_pGraph = nullptr;
}

// A graph that goes before this reference takes the implementation's part in it along; the shader still
// counts the reference until its holder gives it back.
bool ReferenceShader::_OnDeleteGraph(IGraph*)
{
	_ShutdownImpl();
	_pGraph->RemoveListenerDelete(MakeDelegate(this, &ReferenceShader::_OnDeleteGraph));
	_pGraph = nullptr;
	return true;
}

bool ReferenceShader::Release()
{
	return _pShader && _pShader->ReleaseReference(this);
}

IGraph* ReferenceShader::_FindOwnGraph() const
{
	switch (_pGraph->GetType())
	{
	case IQLShader::kType_Ray:
		return _pShader->PeekGraphSurface();
	case IQLShader::kType_Frame:
		return _pShader->PeekGraphFrame();
	case IQLShader::kType_PrefixRay:
		return _pShader->PeekGraphPrefix();
	default:
		TARSEL_FAIL("graph kind without shader graphs");
		return nullptr;
	}
}

bool ReferenceShader::_InitImpl()
{
	TARSEL_ASSERT(_pImpl == NULL);
	IGraph* own = _pGraph->GetShader() == _pShader ? nullptr : _FindOwnGraph();
	IImplReferenceShader* impl = nullptr;
	if (own)
	{
		ReferenceShaderGraph* graph = new ReferenceShaderGraph();
		impl = graph;
		if (!graph->Init(own, _pGraph))
			impl = nullptr, delete graph;
	}
	else
	{
		ReferenceShaderNode* node = new ReferenceShaderNode();
		impl = node;
		if (!node->Init(_pShader, _pGraph))
			impl = nullptr, delete node;
	}
	if (impl == nullptr)
		return false;
	impl->AddListenerChangeValue(MakeDelegate(this, &ReferenceShader::_OnChangeValue));
	impl->AddListenerChangeStructure(MakeDelegate(this, &ReferenceShader::_OnChangeStructure));
	_pImpl = impl;
	return true;
}

void ReferenceShader::_ShutdownImpl()
{
	if (_pImpl == nullptr)
		return;
	_pImpl->RemoveListenerChangeValue(MakeDelegate(this, &ReferenceShader::_OnChangeValue));
	_pImpl->RemoveListenerChangeStructure(MakeDelegate(this, &ReferenceShader::_OnChangeStructure));
	delete _pImpl;
	_pImpl = nullptr;
}

bool ReferenceShader::_OnChangeValue(IReferenceShader*)
{
	return _setListenersChangeValue.Notify(this);
}

bool ReferenceShader::_OnChangeStructure(IReferenceShader*)
{
	return _setListenersChangeStructure.Notify(this);
}

// The shader goes before its references: whoever holds this one hears of it while the shader's parameters
// still exist, so that the implementation can give their references back.
bool ReferenceShader::_OnDelete(IShader*)
{
	_setListenersDelete.Visit(this);
	_setListenersDelete.clear();
	_ShutdownImpl();
	return true;
}

} // namespace Tarsel::Effects
