#pragma once

#include "syntax/Enumerations.h"

#include <string>

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class IParameter;
class IReferencePrototypeParameter;
class IReferencePrototypeShader;
class IShader;

// Describes one per-instance input of a shader class and makes that input for every new shader.
class IPrototypeParameter
{
public:
	typedef IReferencePrototypeParameter Reference;

	virtual ~IPrototypeParameter() {}
	// The declared type; 0 for interface inputs.
	virtual TypeSpecifier GetType() const = 0;
	virtual std::string GetName() const = 0;
	virtual const std::string& GetNameMangled() const = 0;
	// Owned by the caller; null (reported into the result) when the parameter cannot be initialised.
	virtual IParameter* CreateParameter(IShader* pShader, Result* pResult) = 0;
	virtual IReferencePrototypeParameter* CreateReference(IReferencePrototypeShader* pReference) = 0;
	virtual bool DestroyReference(IReferencePrototypeParameter* pReference) = 0;
};

} // namespace Tarsel::Effects
