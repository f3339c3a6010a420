#pragma once

#include <map>
#include <string>

#include "graph/IReferenceShader.h"
#include "graph/ReferenceParameter.h"

namespace Tarsel::Effects
{

class IShader;
class IParameter;

// A shader whose code is compiled into the graph: it collects the shader's methods and owns the references
// of the shader's parameters, members and coordinates.
class ReferenceShaderNode : public IImplReferenceShader
{
public:
	ReferenceShaderNode() = default;
	~ReferenceShaderNode() override;
	ReferenceShaderNode(const ReferenceShaderNode&) = delete;
	ReferenceShaderNode& operator=(const ReferenceShaderNode&) = delete;

	bool Init(IShader* shader, IGraph* graph);
	void Shutdown();

	bool Release() override { return false; }
	bool AddListenerDelete(const Listener&) override { return true; }
	bool RemoveListenerDelete(const Listener&) override { return true; }
	bool CollectShader(Module* module) override;
	bool CollectDeclarationMethod(Module* module, const std::string& method) override;
	bool HasMethod(const std::string& method) override;
	std::string GetMethodMangled(const std::string& method) override;
	bool IsComplete() override;
	bool HasConstructor() override;
	std::string GetConstructor() override;
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
	IReferenceParameter* GetParameter(const std::string& name) override;
	bool VisitParameters(VisitorParameter& visitor) override;
	int GetCountParameters() override { return static_cast<int>(_mParameters.size()); }
	IReferenceMember* GetMember(const std::string& name) override;
	bool VisitMembers(VisitorMember& visitor) override;
	int GetCountMembers() override { return static_cast<int>(_mMembers.size()); }
	IReferenceParameter* GetCoord(const std::string& name) override;
	bool VisitCoords(VisitorParameter& visitor) override;
	int GetCountCoords() override { return static_cast<int>(_mCoords.size()); }
	ReferencePrototypeShader* GetReferencePrototype() override { return _pReferencePrototype; }
	IGraph* GetGraph() const override { return _pGraph; }

private:
	enum Completeness
	{
		kComplete_Unknown,
		kComplete_No,
		kComplete_Yes
	};

	bool _InitParameter(const std::string& name, IParameter* parameter);
	bool _InitMember(const std::string& name, IMember* member);
	bool _InitCoord(const std::string& name, IParameter* coord);
	bool _ComputeComplete();
	bool _OnChangeStructureShader(IShader*);
	bool _OnChangeStructureParameter(ReferenceParameter::Base* reference);
	bool _OnChangeStructure();

	IShader* _pShader = nullptr;
	IGraph* _pGraph = nullptr;
	ReferencePrototypeShader* _pReferencePrototype = nullptr;
	bool _bAdded = false;
	// Asked by every node while collecting; kept until a change of structure below this node.
	Completeness _eComplete = kComplete_Unknown;
	std::map<std::string, ReferenceParameter*> _mParameters;
	std::map<std::string, ReferenceMember*> _mMembers;
	std::map<std::string, ReferenceParameter*> _mCoords;
	ListenerSet<Listener> _setListenersChangeValue;
	ListenerSet<Listener> _setListenersChangeStructure;
};

} // namespace Tarsel::Effects
