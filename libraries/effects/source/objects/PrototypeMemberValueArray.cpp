#include "objects/PrototypeMemberValueArray.h"

#include "objects/MemberValueArraySeparate.h"

namespace Tarsel::Effects
{

bool PrototypeMemberValueArray::Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl)
{
	return _Init(pMgrEffects, pDecl, "PrototypeMemberValueArray");
}

IMember* PrototypeMemberValueArray::CreateMember(IShader*, Result* pResult)
{
	return MemberValueArraySeparate::Create(_pMgrEffects, _pDecl, _sNameMangled, pResult);
}

} // namespace Tarsel::Effects
