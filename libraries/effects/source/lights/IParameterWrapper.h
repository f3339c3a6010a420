#pragma once

#include "effects/IParameter.h"

namespace Tarsel::Effects
{

// A transformed view of a parameter of a wrapped shader. What concerns graphs, code and listeners is the
// wrapped parameter's; the values and the length are the view's own.
class IParameterWrapper : public IParameter
{
public:
	explicit IParameterWrapper(IParameter* pParameter) : _pParameter(pParameter) {}
	IParameterWrapper(const IParameterWrapper&) = delete;
	IParameterWrapper& operator=(const IParameterWrapper&) = delete;

	IParameter* GetParameterWrapped() const { return _pParameter; }
	// The wrapped shader is going away under the view: nothing may be reached through it any more.
	virtual void Detach() { _pParameter = nullptr; }

	bool AddListenerChangeValue(const Listener& listener) override
	{
		return _pParameter && _pParameter->AddListenerChangeValue(listener);
	}
	bool RemoveListenerChangeValue(const Listener& listener) override
	{
		return _pParameter && _pParameter->RemoveListenerChangeValue(listener);
	}
	bool AddListenerChangeStructure(const Listener& listener) override
	{
		return _pParameter && _pParameter->AddListenerChangeStructure(listener);
	}
	bool RemoveListenerChangeStructure(const Listener& listener) override
	{
		return _pParameter && _pParameter->RemoveListenerChangeStructure(listener);
	}
	IReferenceParameter* CreateReference(IGraph* pGraph) override
	{
		return _pParameter ? _pParameter->CreateReference(pGraph) : nullptr;
	}
	bool DestroyReference(IReferenceParameter* pReference) override
	{
		return _pParameter && _pParameter->DestroyReference(pReference);
	}
	bool CollectConstructor(CompoundStatement* pBody) override
	{
		return _pParameter && _pParameter->CollectConstructor(pBody);
	}
	bool CollectShader(Module* pModule) override
	{
		return _pParameter && _pParameter->CollectShader(pModule);
	}
	bool CollectShaderGenerated(Module* pModule) override
	{
		return _pParameter && _pParameter->CollectShaderGenerated(pModule);
	}
	bool VisitTransformations(VisitorTransformation& delegate) override
	{
		return _pParameter && _pParameter->VisitTransformations(delegate);
	}
	bool IsComplete() const override { return _pParameter && _pParameter->IsComplete(); }
	ParameterClass GetClass() const override
	{
		return _pParameter ? _pParameter->GetClass() : kParameterClass_Value;
	}
	TypeSpecifier GetTypeSpecifier() const override
	{
		return _pParameter ? _pParameter->GetTypeSpecifier() : TypeSpecifier(0);
	}
	std::string GetType() const override { return _pParameter ? _pParameter->GetType() : std::string(); }
	std::string GetName() const override { return _pParameter ? _pParameter->GetName() : std::string(); }

	bool IsDefault(int) const override { return false; }
	bool IsDefault() const override { return false; }
	bool GetAsString(std::string&, int) const override { return false; }
	bool GetAsString(std::string&) const override { return false; }

protected:
	IParameter* _pParameter;
};

// A view of one element of an array whose element can move when the lights are renumbered.
class IParameterWrapper_ArrayCell : public IParameterWrapper
{
public:
	using IParameterWrapper::IParameterWrapper;

	// With bMove the value of the old element is copied to the new one.
	virtual bool SetSubIndex(int index, bool bMove) = 0;
	virtual int GetSubIndex() const = 0;
};

} // namespace Tarsel::Effects
