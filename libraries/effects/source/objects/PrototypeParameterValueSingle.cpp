#include "objects/PrototypeParameterValueSingle.h"

#include "effects/IPrototypeShader.h"
#include "objects/ParameterValueSingleStorageSeparate.h"

namespace Tarsel::Effects
{

bool PrototypeParameterValueSingle::Init(IPrototypeShader* pPrototypeShader, const VariableDeclaration* pDecl)
{
	return _Init(pPrototypeShader ? pPrototypeShader->GetMgrEffects() : nullptr, pDecl,
	             pDecl ? pDecl->GetIdentifier()->GetString() : std::string());
}

IParameter* PrototypeParameterValueSingle::CreateParameter(IShader*, Result* pResult)
{
	return ParameterValueSingleStorageSeparate::Create(_pMgrEffects, _pDecl, _sNameMangled, pResult);
}

} // namespace Tarsel::Effects
