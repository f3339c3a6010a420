#pragma once

#include <string>

#include "core/Delegate.h"

namespace Tarsel
{
class IQLPrimitive;
class IQLProgram;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IGraph;
class IReferenceMember;
class IReferenceParameter;
class Module;
class ReferencePrototypeShader;

// A shader's presence in one graph.
class IReferenceShader
{
public:
	typedef FastDelegate1<IReferenceShader*, bool> Listener;
	typedef FastDelegate2<const std::string&, IReferenceParameter*, bool> VisitorParameter;
	typedef FastDelegate2<const std::string&, IReferenceMember*, bool> VisitorMember;

	virtual ~IReferenceShader() {}

	// Gives the reference back to its shader, which destroys it with its last holder.
	virtual bool Release() = 0;
	virtual bool AddListenerDelete(const Listener& listener) = 0;
	virtual bool RemoveListenerDelete(const Listener& listener) = 0;
	virtual bool CollectShader(Module* module) = 0;
	virtual bool CollectDeclarationMethod(Module* module, const std::string& method) = 0;
	virtual bool HasMethod(const std::string& method) = 0;
	virtual std::string GetMethodMangled(const std::string& method) = 0;
	virtual bool IsComplete() = 0;
	virtual bool HasConstructor() = 0;
	virtual std::string GetConstructor() = 0;
	virtual bool Apply(IQLPrimitive* primitive, IQLProgram* program) = 0;
	virtual bool AddListenerChangeValue(const Listener& listener) = 0;
	virtual bool RemoveListenerChangeValue(const Listener& listener) = 0;
	virtual bool AddListenerChangeStructure(const Listener& listener) = 0;
	virtual bool RemoveListenerChangeStructure(const Listener& listener) = 0;
	virtual IReferenceParameter* GetParameter(const std::string& name) = 0;
	virtual bool VisitParameters(VisitorParameter& visitor) = 0;
	virtual int GetCountParameters() = 0;
	virtual IReferenceMember* GetMember(const std::string& name) = 0;
	virtual bool VisitMembers(VisitorMember& visitor) = 0;
	virtual int GetCountMembers() = 0;
	virtual IReferenceParameter* GetCoord(const std::string& name) = 0;
	virtual bool VisitCoords(VisitorParameter& visitor) = 0;
	virtual int GetCountCoords() = 0;
	virtual ReferencePrototypeShader* GetReferencePrototype() = 0;
	virtual IGraph* GetGraph() const = 0;
};

// What a reference shader delegates to: the shader compiled into the graph, or the shader's own graph.
class IImplReferenceShader : public IReferenceShader
{
};

} // namespace Tarsel::Effects
