#include "objects/PrototypeMemberValueSingle.h"

#include "effects/IPrototypeShader.h"
#include "objects/MemberValueSingleSeparate.h"

namespace Tarsel::Effects
{

bool PrototypeMemberValueSingle::Init(IPrototypeShader* pPrototypeShader, const VariableDeclaration* pDecl)
{
	return _Init(pPrototypeShader ? pPrototypeShader->GetMgrEffects() : nullptr, pDecl,
	             "PrototypeMemberValueSingle");
}

IMember* PrototypeMemberValueSingle::CreateMember(IShader*, Result* pResult)
{
	return MemberValueSingleSeparate::Create(_pMgrEffects, _pDecl, _sNameMangled, pResult);
}

} // namespace Tarsel::Effects
