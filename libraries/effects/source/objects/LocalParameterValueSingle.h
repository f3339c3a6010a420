#pragma once

#include "effects/ILocalParameter.h"
#include "objects/ParameterValue.h"

namespace Tarsel::Effects
{

class IReferenceParameter;
class IStorage;

// A copy of a single value parameter that one primitive uses instead of the shared value.
class LocalParameterValueSingle : public ILocalParameter
{
public:
	// The instantiated object, with its typed accessors; null when Init fails.
	static LocalParameterValueSingle* Create(IQLPrimitive* pPrimitive, IReferenceParameter* pReference);

	~LocalParameterValueSingle() override;
	LocalParameterValueSingle(const LocalParameterValueSingle&) = delete;
	LocalParameterValueSingle& operator=(const LocalParameterValueSingle&) = delete;

	// Copies the referenced parameter's type, length and current values.
	bool Init(IQLPrimitive* pPrimitive, IReferenceParameter* pReference);
	bool Shutdown();

	bool AddListenerDelete(const ListenerDelete& listener) override;
	bool RemoveListenerDelete(const ListenerDelete& listener) override;
	bool AddListenerChangeValue(const ListenerChangeValue& listener) override;
	bool RemoveListenerChangeValue(const ListenerChangeValue& listener) override;
	// Under the parameter's declared name, at the location of its mangled name.
	bool Apply(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation) override;

	IReferenceParameter* GetReference() const { return _pReference; }
	IQLPrimitive* GetPrimitive() const { return _pPrimitive; }

protected:
	LocalParameterValueSingle() = default;

	IReferenceParameter* _pReference = nullptr;
	IQLPrimitive* _pPrimitive = nullptr;
	IStorage* _pStorage = nullptr;

private:
	bool _OnChangeStorage(IStorage* storage);

	ListenerSet<ListenerDelete> _setListenersDelete;
	ListenerSet<ListenerChangeValue> _setListenersChangeValue;
};

} // namespace Tarsel::Effects
