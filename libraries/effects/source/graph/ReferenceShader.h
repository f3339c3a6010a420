#pragma once

#include "graph/IReferenceShader.h"

namespace Tarsel::Effects
{

class IShader;

// One shader's presence in one graph. It compiles the shader into the graph, or, when the shader has a graph
// of the same kind of its own, refers to that graph; the choice is made once, in Init.
class ReferenceShader : public IReferenceShader
{
public:
	ReferenceShader() = default;
	~ReferenceShader() override;
	ReferenceShader(const ReferenceShader&) = delete;
	ReferenceShader& operator=(const ReferenceShader&) = delete;

	bool Init(IShader* shader, IGraph* graph);
	void Shutdown();

	bool Release() override;
	bool AddListenerDelete(const Listener& listener) override { return _setListenersDelete.Add(listener); }
	bool RemoveListenerDelete(const Listener& listener) override
	{
		return _setListenersDelete.Remove(listener);
	}
	bool CollectShader(Module* module) override { return _pImpl && _pImpl->CollectShader(module); }
	bool CollectDeclarationMethod(Module* module, const std::string& method) override
	{
		return _pImpl && _pImpl->CollectDeclarationMethod(module, method);
	}
	bool HasMethod(const std::string& method) override { return _pImpl && _pImpl->HasMethod(method); }
	std::string GetMethodMangled(const std::string& method) override
	{
		return _pImpl ? _pImpl->GetMethodMangled(method) : std::string();
	}
	bool IsComplete() override { return _pImpl && _pImpl->IsComplete(); }
	bool HasConstructor() override { return _pImpl && _pImpl->HasConstructor(); }
	std::string GetConstructor() override { return _pImpl ? _pImpl->GetConstructor() : std::string(); }
	bool Apply(IQLPrimitive* primitive, IQLProgram* program) override
	{
		return _pImpl && _pImpl->Apply(primitive, program);
	}
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
	IReferenceParameter* GetParameter(const std::string& name) override
	{
		return _pImpl ? _pImpl->GetParameter(name) : nullptr;
	}
	bool VisitParameters(VisitorParameter& visitor) override
	{
		return !_pImpl || _pImpl->VisitParameters(visitor);
	}
	int GetCountParameters() override { return _pImpl ? _pImpl->GetCountParameters() : 0; }
	IReferenceMember* GetMember(const std::string& name) override
	{
		return _pImpl ? _pImpl->GetMember(name) : nullptr;
	}
	bool VisitMembers(VisitorMember& visitor) override { return !_pImpl || _pImpl->VisitMembers(visitor); }
	int GetCountMembers() override { return _pImpl ? _pImpl->GetCountMembers() : 0; }
	IReferenceParameter* GetCoord(const std::string& name) override
	{
		return _pImpl ? _pImpl->GetCoord(name) : nullptr;
	}
	bool VisitCoords(VisitorParameter& visitor) override { return !_pImpl || _pImpl->VisitCoords(visitor); }
	int GetCountCoords() override { return _pImpl ? _pImpl->GetCountCoords() : 0; }
	ReferencePrototypeShader* GetReferencePrototype() override
	{
		return _pImpl ? _pImpl->GetReferencePrototype() : nullptr;
	}
	IGraph* GetGraph() const override { return _pGraph; }

	IShader* GetShader() const { return _pShader; }
	// The implementation in use, for tests and tools that need to know how the shader takes part.
	IImplReferenceShader* GetImpl() const { return _pImpl; }

private:
	bool _InitImpl();
	void _ShutdownImpl();
	IGraph* _FindOwnGraph() const;
	bool _OnChangeValue(IReferenceShader*);
	bool _OnChangeStructure(IReferenceShader*);
	bool _OnDelete(IShader*);
	bool _OnDeleteGraph(IGraph*);

	IShader* _pShader = nullptr;
	IGraph* _pGraph = nullptr;
	IImplReferenceShader* _pImpl = nullptr;
	ListenerSet<Listener> _setListenersDelete;
	ListenerSet<Listener> _setListenersChangeValue;
	ListenerSet<Listener> _setListenersChangeStructure;
};

} // namespace Tarsel::Effects
