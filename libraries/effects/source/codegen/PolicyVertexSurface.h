#pragma once

#include <string>

#include "codegen/ShaderVertex.h"
#include "core/Delegate.h"
#include "graph/IGraph.h"

namespace Tarsel::Effects
{

class IEffect;

// The vertex stage of a surface effect, kept in step with the attributes of the effect's graph.
class PolicyVertexSurface
{
public:
	typedef FastDelegate1<IEffect*, bool> ListenerChangeAttribute;

	PolicyVertexSurface();
	~PolicyVertexSurface();
	PolicyVertexSurface(const PolicyVertexSurface&) = delete;
	PolicyVertexSurface& operator=(const PolicyVertexSurface&) = delete;

	// The effect is only handed to the change-attribute listeners; the stage works for its manager and
	// program.
	bool Init(IEffect* effect, IMgrEffects* mgrEffects, IQLProgram* program);
	void Shutdown();

	bool BindGraph(IGraph* graph);
	bool UnbindGraph();
	bool Compile();
	bool SetName(const std::string& name);
	bool VisitAttributes(ShaderVertex::VisitorAttribute& visitor);
	bool AddListenerChangeAttribute(const ListenerChangeAttribute& listener)
	{
		return _setListenersChangeAttribute.Add(listener);
	}
	bool RemoveListenerChangeAttribute(const ListenerChangeAttribute& listener)
	{
		return _setListenersChangeAttribute.Remove(listener);
	}
	ShaderVertex* GetShaderVertex() const { return _pVertex; }

private:
	bool _OnAddAttribute(IGraph::Attribute attribute);
	bool _OnRemoveAttribute(IGraph::Attribute attribute);
	bool _OnDeleteGraph(IGraph* graph);
	void _ForgetGraph();

	IEffect* _pEffect;
	IGraph* _pGraph;
	ShaderVertex* _pVertex;
	ListenerSet<ListenerChangeAttribute> _setListenersChangeAttribute;
	IMgrEffects* _pMgrEffects;
	IQLProgram* _pProgram;
};

} // namespace Tarsel::Effects
