#include "objects/PrototypeParameterInterfaceArray.h"

#include "effects/IPrototypeInterface.h"
#include "effects/IPrototypeShader.h"
#include "effects/IShader.h"
#include "objects/ParameterInterfaceArray.h"

namespace Tarsel::Effects
{

bool PrototypeParameterInterfaceArray::Init(const VariableDeclaration* pDecl, IPrototypeInterface* pTarget,
                                            const std::string& sName, int nLength)
{
	_Init(pDecl, pTarget, nullptr, sName);
	_nLength = nLength;
	_bFixedLength = nLength != 0;
	return true;
}

bool PrototypeParameterInterfaceArray::Init(const VariableDeclaration* pDecl, IPrototypeShader* pTarget,
                                            const std::string& sName, int nLength)
{
	_Init(pDecl, nullptr, pTarget, sName);
	_nLength = nLength;
	_bFixedLength = nLength != 0;
	return true;
}

IParameter* PrototypeParameterInterfaceArray::CreateParameter(IShader* pShader, Result* pResult)
{
	return ParameterInterfaceArray::Create(
	    _pMgrEffects, _pDecl, _pPrototypeInterface ? _pPrototypeInterface->GetDefinition() : nullptr,
	    _pPrototypeShader ? _pPrototypeShader->GetDefinition() : nullptr, _sName, pShader->GetKeyString(),
	    _nLength, pResult);
}

} // namespace Tarsel::Effects
