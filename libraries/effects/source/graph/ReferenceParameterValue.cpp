#include "graph/ReferenceParameterValue.h"

#include "core/Assert.h"
#include "objects/LocalParameterValueSingle.h"
#include "objects/ParameterValueArray.h"
#include "objects/ParameterValueArraySeparate.h"
#include "objects/ParameterValueConsole.h"
#include "objects/ParameterValueSingle.h"
#include "quillon/IQLProgram.h"

namespace Tarsel::Effects
{

ReferenceParameterValue::~ReferenceParameterValue()
{
	Shutdown();
}

bool ReferenceParameterValue::_InitValue(IGraph* graph, IParameter* parameter)
{
	_pGraph = graph;
	_pObject = parameter;
	return parameter->AddListenerChangeValue(MakeDelegate(this, &ReferenceParameterValue::_OnChangeValue));
}

void ReferenceParameterValue::Shutdown()
{
	if (_pObject)
		_pObject->RemoveListenerChangeValue(MakeDelegate(this, &ReferenceParameterValue::_OnChangeValue));
	_pObject = nullptr;
}

int ReferenceParameterValue::_FindUniform(IQLProgram* program, const std::string& name,
                                          const char* message) const
{
	const int location = program ? program->GetUniformLocation(name.c_str()) : -1;
	if (location == -1)
		ConsoleOf(static_cast<ParameterValue*>(_pObject)->GetMgrEffects())->Message("%s", message);
	return location;
}

bool ReferenceParameterValue::_OnChangeValue(IParameter*)
{
	IGraph::DelegateApply apply = MakeDelegate(this, &ReferenceParameterValue::Apply);
	return _pGraph->AddDelegateUpdate(apply);
}

ReferenceParameterValueSingle::~ReferenceParameterValueSingle()
{
	TARSEL_ASSERT(_mLocalParameters.size() == 0);
	for (auto& entry : _mLocalParameters)
		delete entry.second;
}

LocalParameterValueSingle* ReferenceParameterValueSingle::AcquireLocal(IQLPrimitive* primitive)
{
	auto found = _mLocalParameters.find(primitive);
	if (found != _mLocalParameters.end())
		return found->second;
	LocalParameterValueSingle* local = LocalParameterValueSingle::Create(primitive, this);
	if (local)
		_mLocalParameters[primitive] = local;
	return local;
}

bool ReferenceParameterValueSingle::ReleaseLocal(LocalParameterValueSingle* local)
{
	auto found = local ? _mLocalParameters.find(local->GetPrimitive()) : _mLocalParameters.end();
	if (found == _mLocalParameters.end() || found->second != local)
		return false;
	_mLocalParameters.erase(found);
	delete local;
	return true;
}

bool ReferenceParameterValueSingle::_Apply(ParameterValueSingle* parameter, IQLPrimitive* primitive,
                                           IQLProgram* program, int location)
{
	auto found = _mLocalParameters.find(primitive);
	if (found != _mLocalParameters.end())
		return found->second->Apply(primitive, program, location);
	return parameter->Apply(primitive, program, location);
}

bool ReferenceParameterValueSingleSeparate::Init(IGraph* graph, ParameterValueSingle* parameter)
{
	return _InitValue(graph, parameter);
}

bool ReferenceParameterValueSingleSeparate::Apply(IQLPrimitive* primitive, IQLProgram* program)
{
	ParameterValueSingle* parameter = static_cast<ParameterValueSingle*>(_pObject);
	const int location = _FindUniform(program, parameter->GetNameMangled(),
	                                  "ReferenceParameterValueSingleSeparate::Apply Value LocationUniform\n");
	return location != -1 && _Apply(parameter, primitive, program, location);
}

bool ReferenceParameterValueArraySeparate::Init(IGraph* graph, ParameterValueArray* parameter)
{
	return _InitValue(graph, parameter);
}

bool ReferenceParameterValueArraySeparate::Apply(IQLPrimitive* primitive, IQLProgram* program)
{
	ParameterValueArray* parameter = static_cast<ParameterValueArray*>(_pObject);
	const int locationLength =
	    _FindUniform(program, parameter->GetNameLengthMangled(),
	                 "ReferenceParameterValueArraySeparate::Apply Length LocationUniform\n");
	if (locationLength == -1)
		return false;
	const ParameterValueArraySeparate* separate = dynamic_cast<const ParameterValueArraySeparate*>(parameter);
	const std::string& name = parameter->GetNameMangled();
	int location = -1;
	if (separate && separate->IsBuffer())
		location = program->GetUniformBlockLocation(name.c_str());
	else
		location = program->GetUniformLocation(name.c_str());
	if (location == -1)
	{
		ConsoleOf(parameter->GetMgrEffects())
		    ->Message("ReferenceParameterValueArraySeparate::Apply Value LocationUniform\n");
		return false;
	}
	return parameter->ApplyStorage(primitive, program, location) &&
	       parameter->ApplyLength(primitive, program, locationLength);
}

} // namespace Tarsel::Effects
