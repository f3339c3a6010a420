#include "lights/ParametersPresented.h"

#include "objects/NamedObjects.h"

namespace Tarsel::Effects
{

bool ParametersPresented::Collect(IShader* pShader)
{
	Clear();
	_mParameters.clear();
	IShader::VisitorParameter visitor = MakeDelegate(this, &ParametersPresented::_OnParameter);
	return pShader && pShader->VisitParameters(visitor);
}

bool ParametersPresented::_OnParameter(const std::string& sName, IParameter* pParameter)
{
	_mParameters[sName] = pParameter;
	return true;
}

IParameter* ParametersPresented::FindPlain(const std::string& sName) const
{
	return FindValue(_mParameters, sName);
}

IParameterWrapper* ParametersPresented::FindWrapped(const std::string& sName) const
{
	return FindValue(_mParametersWrapped, sName);
}

IParameter* ParametersPresented::Find(const std::string& sName) const
{
	IParameter* pWrapped = FindWrapped(sName);
	return pWrapped ? pWrapped : FindPlain(sName);
}

bool ParametersPresented::Visit(IShader::VisitorParameter& visitor) const
{
	for (const auto& entry : _mParametersWrapped)
		if (!visitor(entry.first, entry.second))
			return false;
	for (const auto& entry : _mParameters)
		if (!visitor(entry.first, entry.second))
			return false;
	return true;
}

void ParametersPresented::Substitute(const std::string& sName, IParameterWrapper* pWrapper,
                                     const std::string* psHidden)
{
	delete FindWrapped(sName);
	_mParametersWrapped[sName] = pWrapper;
	_mParameters.erase(sName);
	if (psHidden)
		_mParameters.erase(*psHidden);
}

void ParametersPresented::Detach()
{
	for (auto& entry : _mParametersWrapped)
		entry.second->Detach();
}

void ParametersPresented::Clear()
{
	DestroyValues(_mParametersWrapped);
}

IParameter* FindIndexer(const ParametersPresented& parameters, const std::string& sInput)
{
	IParameter* pIndexer = parameters.FindPlain(sInput + "Ref");
	return pIndexer && pIndexer->GetClass() == IParameter::kParameterClass_Value ? pIndexer : nullptr;
}

} // namespace Tarsel::Effects
