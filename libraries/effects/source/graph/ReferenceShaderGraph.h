#pragma once

#include "graph/IGraph.h"
#include "graph/IReferenceShader.h"

namespace Tarsel::Effects
{

class FunctionPrototype;

// A connected shader that has a graph of the same kind of its own: this graph only declares the methods
// that the other graph's program defines, and the other graph applies its own values.
class ReferenceShaderGraph : public IImplReferenceShader
{
public:
	ReferenceShaderGraph() = default;
	~ReferenceShaderGraph() override;
	ReferenceShaderGraph(const ReferenceShaderGraph&) = delete;
	ReferenceShaderGraph& operator=(const ReferenceShaderGraph&) = delete;

	bool Init(IGraph* other, IGraph* graph);
	void Shutdown();

	bool Release() override { return false; }
	bool AddListenerDelete(const Listener&) override { return true; }
	bool RemoveListenerDelete(const Listener&) override { return true; }
	bool CollectShader(Module* module) override;
	bool CollectDeclarationMethod(Module* module, const std::string& method) override;
	bool HasMethod(const std::string& method) override;
	std::string GetMethodMangled(const std::string& method) override;
	bool IsComplete() override { return _pOther && _pOther->IsComplete(); }
	bool HasConstructor() override { return false; }
	std::string GetConstructor() override { return "ReferenceShaderGraph"; }
	bool Apply(IQLPrimitive* primitive, IQLProgram* program) override;
	bool AddListenerChangeValue(const Listener& listener) override
	{
		return _setListenersChangeValue.Add(listener);
	}
	bool RemoveListenerChangeValue(const Listener& listener) override
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
	IReferenceParameter* GetParameter(const std::string&) override { return nullptr; }
	bool VisitParameters(VisitorParameter&) override { return true; }
	int GetCountParameters() override { return 0; }
	IReferenceMember* GetMember(const std::string&) override { return nullptr; }
	bool VisitMembers(VisitorMember&) override { return true; }
	int GetCountMembers() override { return 0; }
	IReferenceParameter* GetCoord(const std::string&) override { return nullptr; }
	bool VisitCoords(VisitorParameter&) override { return true; }
	int GetCountCoords() override { return 0; }
	ReferencePrototypeShader* GetReferencePrototype() override { return nullptr; }
	IGraph* GetGraph() const override { return _pGraph; }

	IGraph* GetOther() const { return _pOther; }

private:
	bool _DeclareMethod(FunctionPrototype* prototype);
	bool _OnDeleteOther(IGraph*);
	bool _OnChangeValueOther(IGraph*, IGraph::DelegateApply&);
	bool _OnChangeStructureOther(IGraph*);
	void _Unlisten();

	IGraph* _pOther = nullptr;
	IGraph* _pGraph = nullptr;
	Module* _pCollecting = nullptr;
	ListenerSet<Listener> _setListenersChangeValue;
	ListenerSet<Listener> _setListenersChangeStructure;
};

} // namespace Tarsel::Effects
