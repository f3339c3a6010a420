#pragma once

#include "objects/IPrototypeMember.h"
#include "objects/PrototypeParameterDescriptor.h"
#include "objects/ReferencePrototypeDeclaration.h"

namespace Tarsel::Effects
{

// Describes a per-instance member array; named after the class.
class PrototypeMemberValueArray
    : public PrototypeDescriptorValue<IPrototypeMember, ReferencePrototypeMemberValueArray>
{
public:
	PrototypeMemberValueArray() = default;

	// Always true.
	bool Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl);

	IMember* CreateMember(IShader* pShader, Result* pResult) override;

protected:
	const char* _GetClassName() const override { return "PrototypeMemberValueArray"; }
};

} // namespace Tarsel::Effects
