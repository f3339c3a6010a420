#include "graph/ReferenceParameterInterface.h"

#include "effects/IParameter.h"
#include "effects/IShader.h"
#include "objects/ParameterInterfaceArray.h"
#include "objects/ParameterValueConsole.h"
#include "quillon/IQLPrimitive.h"
#include "quillon/IQLProgram.h"

namespace Tarsel::Effects
{

ReferenceParameterInterface::~ReferenceParameterInterface()
{
	Shutdown();
}

bool ReferenceParameterInterface::Init(IGraph* graph, IParameter* parameter)
{
	_pGraph = graph;
	_pObject = parameter;
	parameter->AddListenerChangeStructure(
	    MakeDelegate(this, &ReferenceParameterInterface::_OnChangeStructure));
	if (!_Acquire())
	{
		Shutdown();
		return false;
	}
	return true;
}

void ReferenceParameterInterface::Shutdown()
{
	if (_pObject == nullptr)
		return;
	_pObject->RemoveListenerChangeStructure(
	    MakeDelegate(this, &ReferenceParameterInterface::_OnChangeStructure));
	_Release();
	_pObject = nullptr;
}

IShader* ReferenceParameterInterface::_GetShader(int index) const
{
	IShader* shader = nullptr;
	return _pObject->Get(shader, index) ? shader : nullptr;
}

bool ReferenceParameterInterface::_Acquire()
{
	const int length = _pObject->IsArray() ? _pObject->GetLength() : 1;
	bool all = true;
	for (int index = 0; index < length; ++index)
	{
		IShader* shader = _GetShader(index);
		IReferenceShader* reference = shader ? shader->AcquireReference(_pGraph) : nullptr;
		if (reference)
		{
			reference->AddListenerDelete(
			    MakeDelegate(this, &ReferenceParameterInterface::_OnDeleteReferenceShader));
			reference->AddListenerChangeValue(
			    MakeDelegate(this, &ReferenceParameterInterface::_OnChangeValueReferenceShader));
		}
		all = all && (shader == nullptr || reference != nullptr);
		_vReferences.push_back(Slot{reference ? shader : nullptr, reference});
	}
	return all;
}

void ReferenceParameterInterface::_Release()
{
	std::vector<Slot> slots;
	slots.swap(_vReferences);
	for (const Slot& slot : slots)
	{
		if (slot.pReference == nullptr)
			continue;
		slot.pReference->RemoveListenerDelete(
		    MakeDelegate(this, &ReferenceParameterInterface::_OnDeleteReferenceShader));
		slot.pReference->RemoveListenerChangeValue(
		    MakeDelegate(this, &ReferenceParameterInterface::_OnChangeValueReferenceShader));
		slot.pShader->ReleaseReference(slot.pReference);
	}
}

bool ReferenceParameterInterface::_Matches() const
{
	const int length = _pObject->IsArray() ? _pObject->GetLength() : 1;
	if (length != static_cast<int>(_vReferences.size()))
		return false;
	for (int index = 0; index < length; ++index)
		if (_GetShader(index) != _vReferences[index].pShader)
			return false;
	return true;
}

IReferenceShader* ReferenceParameterInterface::GetReference(int index) const
{
	return index >= 0 && index < static_cast<int>(_vReferences.size()) ? _vReferences[index].pReference
	                                                                   : nullptr;
}

bool ReferenceParameterInterface::IsComplete()
{
	for (const Slot& slot : _vReferences)
		if (slot.pReference == nullptr || !slot.pReference->IsComplete())
			return false;
	return true;
}

bool ReferenceParameterInterface::Apply(IQLPrimitive* primitive, IQLProgram* program)
{
	const auto* array = dynamic_cast<const ParameterInterfaceArray*>(_pObject);
	if (array == nullptr)
		return true;
	const std::string& name = array->GetNameCount();
	const int location = program ? program->GetUniformLocation(name.c_str()) : -1;
	if (location == -1)
	{
		ConsoleOf(nullptr)->Message("ReferenceParameterInterfaceArray::Apply Count LocationUniform\n");
		return false;
	}
	if (!primitive->SetUniform(name, location, array->GetLength()))
	{
		ConsoleOf(nullptr)->Message("ReferenceParameterInterfaceArray::Apply Count SetUniform\n");
		return false;
	}
	return true;
}

// The input also fires when a connected shader changed inside; the references are only remade when the
// connections themselves changed, so a change deep in a chain does not rebuild the chain below it.
bool ReferenceParameterInterface::_OnChangeStructure(IParameter*)
{
	if (!_Matches())
	{
		_Release();
		if (!_NotifyChangeStructure())
			return false;
		_Acquire();
	}
	return _NotifyChangeStructure();
}

bool ReferenceParameterInterface::_OnDeleteReferenceShader(IReferenceShader* reference)
{
	for (Slot& slot : _vReferences)
		if (slot.pReference == reference)
		{
			slot.pReference = nullptr;
			slot.pShader = nullptr;
			return true;
		}
	ConsoleOf(nullptr)->Message(
	    "ReferenceParameterInterfaceArray::_OnDeleteReferenceShader Reference Not Found\n");
	return false;
}

bool ReferenceParameterInterface::_OnChangeValueReferenceShader(IReferenceShader*)
{
	return true;
}

} // namespace Tarsel::Effects
