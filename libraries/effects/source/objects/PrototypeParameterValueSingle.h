#pragma once

#include "objects/IPrototypeParameter.h"
#include "objects/PrototypeParameterDescriptor.h"
#include "objects/ReferencePrototypeDeclaration.h"

namespace Tarsel::Effects
{

// Describes a per-instance input of one built-in type; named after the variable.
class PrototypeParameterValueSingle
    : public PrototypeDescriptorValue<IPrototypeParameter, ReferencePrototypeParameterValueSingle>
{
public:
	PrototypeParameterValueSingle() = default;

	// Always true.
	bool Init(IPrototypeShader* pPrototypeShader, const VariableDeclaration* pDecl);

	IParameter* CreateParameter(IShader* pShader, Result* pResult) override;

protected:
	const char* _GetClassName() const override { return "PrototypeParameterValueSingle"; }
};

} // namespace Tarsel::Effects
