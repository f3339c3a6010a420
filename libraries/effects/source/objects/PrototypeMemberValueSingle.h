#pragma once

#include "objects/IPrototypeMember.h"
#include "objects/PrototypeParameterDescriptor.h"
#include "objects/ReferencePrototypeDeclaration.h"

namespace Tarsel::Effects
{

// Describes a per-instance member of one built-in type; named after the class.
class PrototypeMemberValueSingle
    : public PrototypeDescriptorValue<IPrototypeMember, ReferencePrototypeMemberValueSingle>
{
public:
	PrototypeMemberValueSingle() = default;

	// Always true.
	bool Init(IPrototypeShader* pPrototypeShader, const VariableDeclaration* pDecl);

	IMember* CreateMember(IShader* pShader, Result* pResult) override;

protected:
	const char* _GetClassName() const override { return "PrototypeMemberValueSingle"; }
};

} // namespace Tarsel::Effects
