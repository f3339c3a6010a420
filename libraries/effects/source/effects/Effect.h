#pragma once

#include <string>
#include <vector>

#include "codegen/PolicyVertexNull.h"
#include "codegen/PolicyVertexSurface.h"
#include "effects/IEffect.h"
#include "effects/IMgrEffects.h"
#include "effects/PolicyCompiler.h"
#include "graph/IReferenceGraph.h"

namespace Tarsel
{
class IQLShader;
} // namespace Tarsel

namespace Tarsel::Effects
{

class Graph;
class IReferenceShader;

// One program of an effect kind: the graph of its root shader, the root stage that the compiler policy
// writes and, for surfaces, the vertex stage of the vertex policy.
template <class PolicyVertex, class PolicyCompiler>
class Effect : public IEffect
{
public:
	Effect();
	~Effect() override;
	Effect(const Effect&) = delete;
	Effect& operator=(const Effect&) = delete;

	bool Init(IMgrEffects* mgrEffects);
	void Shutdown();

	bool SetName(const std::string& name) override;
	const std::string& GetName() const { return _sName; }
	bool AddListenerDelete(const Listener& listener) override { return _setListenersDelete.Add(listener); }
	bool RemoveListenerDelete(const Listener& listener) override
	{
		return _setListenersDelete.Remove(listener);
	}
	bool AddListenerChangeValue(const ListenerChangeValue& listener) override
	{
		return _setListenersChangeValue.Add(listener);
	}
	bool RemoveListenerChangeValue(const ListenerChangeValue& listener) override
	{
		return _setListenersChangeValue.Remove(listener);
	}
	bool AddListenerChangeStructure(const Listener& listener) override
	{
		return _setListenersChangeStructure.Add(listener);
	}
	bool RemoveListenerChangeStructure(const Listener& listener) override
	{
		return _setListenersChangeStructure.Remove(listener);
	}
	bool AddListenerCompile(const Listener& listener) override { return _setListenersCompile.Add(listener); }
	bool RemoveListenerCompile(const Listener& listener) override
	{
		return _setListenersCompile.Remove(listener);
	}
	bool IsCompiled() override { return _bCompiled; }
	bool VisitAttributes(VisitorAttribute& visitor) override
	{
		return _policyVertex.VisitAttributes(visitor);
	}
	bool AddListenerChangeAttribute(const Listener& listener) override
	{
		return _policyVertex.AddListenerChangeAttribute(listener);
	}
	bool RemoveListenerChangeAttribute(const Listener& listener) override
	{
		return _policyVertex.RemoveListenerChangeAttribute(listener);
	}
	bool SetRoot(IShader* shader) override;
	bool GetRoot(IShader*& shader) const override;
	IReferenceEffect* CreateReference(IQLPrimitive* primitive) override;
	void DestroyReference(IReferenceEffect* reference) override;
	bool AddListenerApply(const Listener& listener) override { return _setListenersApply.Add(listener); }
	bool RemoveListenerApply(const Listener& listener) override
	{
		return _setListenersApply.Remove(listener);
	}
	bool Apply(IQLPrimitive* primitive, Result* result) override;
	bool Apply(Result* result) override;
	bool AddListenerUpdate(const Listener& listener) override { return _setListenersUpdate.Add(listener); }
	bool RemoveListenerUpdate(const Listener& listener) override
	{
		return _setListenersUpdate.Remove(listener);
	}
	bool Update(Result* result) override;
	IQLProgram* GetQLProgram() override { return _pProgram; }
	IMgrEffects* GetMgrEffects() const override { return _pMgrEffects; }

	// For tools and tests that read what was compiled.
	IGraph* GetGraph() const;
	IQLShader* GetQLShaderRoot() const { return _pShaderRoot; }
	const std::vector<IReferenceEffect*>& GetReferenceEffects() const { return _vReferenceEffects; }
	const PolicyVertex& GetPolicyVertex() const { return _policyVertex; }

protected:
	bool _InitGraph(IShader* shader);
	void _ShutdownGraph();
	bool _Compile(Result* result);
	// Shuts the effect down after a device refusal; deferred while the graph is still compiling.
	bool _Abandon(const char* message);
	bool _OnCompileGraph(IReferenceGraph* referenceGraph);
	bool _OnChangeStructureGraph(IReferenceGraph* referenceGraph);
	bool _OnChangeValueGraph(IReferenceGraph* referenceGraph, IGraph::DelegateApply& apply);
	bool _OnChangeOutputIndices();
	bool _WriteOutputAttachmentIndices();
	bool _UpdateOutputAttachmentIndexForOutput(const std::string& outputName);
	bool _CheckCompileProblems(Result* result);
	IReferenceShader* _GetReferenceShader(IShader* shader);

private:
	IMgrEffects* _pMgrEffects;
	std::string _sName;
	std::vector<IReferenceEffect*> _vReferenceEffects;
	PolicyVertex _policyVertex;
	bool _bCompiled;
	Graph* _pGraph;
	IReferenceGraph* _pReferenceGraph;
	IReferenceShader* _pReferenceShaderRoot;
	IQLShader* _pShaderRoot;
	IQLProgram* _pProgram;
	ListenerSet<Listener> _setListenersDelete;
	ListenerSet<ListenerChangeValue> _setListenersChangeValue;
	ListenerSet<Listener> _setListenersChangeStructure;
	ListenerSet<Listener> _setListenersCompile;
	ListenerSet<Listener> _setListenersApply;
	ListenerSet<Listener> _setListenersUpdate;
	IQLPrimitive* _pPrimitiveApplying;
	// The caller's result while an Update compiles, so that the compile steps report to it.
	Result* _pResultUpdate;
	// Set when a compile step was refused by the device inside a graph compile.
	bool _bAbandoned;
};

typedef Effect<PolicyVertexSurface, PolicyCompilerRay> EffectSurface;
typedef Effect<PolicyVertexNull, PolicyCompilerFrame> EffectRenderer;
typedef Effect<PolicyVertexNull, PolicyCompilerPrefixRay> EffectPrefix;

extern template class Effect<PolicyVertexSurface, PolicyCompilerRay>;
extern template class Effect<PolicyVertexNull, PolicyCompilerFrame>;
extern template class Effect<PolicyVertexNull, PolicyCompilerPrefixRay>;

} // namespace Tarsel::Effects
