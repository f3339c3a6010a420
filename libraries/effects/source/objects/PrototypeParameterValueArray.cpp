#include "objects/PrototypeParameterValueArray.h"

#include "objects/ParameterValueArraySeparate.h"

namespace Tarsel::Effects
{

bool PrototypeParameterValueArray::Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl)
{
	return _Init(pMgrEffects, pDecl, pDecl ? pDecl->GetIdentifier()->GetString() : std::string());
}

IParameter* PrototypeParameterValueArray::CreateParameter(IShader*, Result* pResult)
{
	return ParameterValueArraySeparate::Create(_pMgrEffects, _pDecl, _sNameMangled, pResult);
}

} // namespace Tarsel::Effects
