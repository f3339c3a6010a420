#include "objects/PrototypeParameterInterfaceArray.h"

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

IParameter* PrototypeParameterInterfaceArray::CreateParameter(IShader*, Result* pResult)
{
	return _CreateUnsupported(pResult);
}

} // namespace Tarsel::Effects
