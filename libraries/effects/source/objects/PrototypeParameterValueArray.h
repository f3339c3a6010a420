#pragma once

#include "objects/IPrototypeParameter.h"
#include "objects/PrototypeParameterDescriptor.h"
#include "objects/ReferencePrototypeDeclaration.h"

namespace Tarsel::Effects
{

// Describes a per-instance input array of a built-in element type; named after the variable.
class PrototypeParameterValueArray
    : public PrototypeDescriptorValue<IPrototypeParameter, ReferencePrototypeParameterValueArray>
{
public:
	PrototypeParameterValueArray() = default;

	// Always true.
	bool Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl);

	IParameter* CreateParameter(IShader* pShader, Result* pResult) override;

protected:
	const char* _GetClassName() const override { return "PrototypeParameterValueArray"; }
};

} // namespace Tarsel::Effects
