#pragma once

#include "syntax/Enumerations.h"

#include <string>

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class IMember;
class IReferencePrototypeMember;
class IReferencePrototypeShader;
class IShader;

// Describes one per-instance member variable of a shader class and makes that member for every new shader.
class IPrototypeMember
{
public:
	typedef IReferencePrototypeMember Reference;

	virtual ~IPrototypeMember() {}
	virtual TypeSpecifier GetType() const = 0;
	virtual std::string GetName() const = 0;
	virtual const std::string& GetNameMangled() const = 0;
	// Owned by the caller; null (reported into the result) when the member cannot be initialised.
	virtual IMember* CreateMember(IShader* pShader, Result* pResult) = 0;
	virtual IReferencePrototypeMember* CreateReference(IReferencePrototypeShader* pReference) = 0;
	virtual bool DestroyReference(IReferencePrototypeMember* pReference) = 0;
};

} // namespace Tarsel::Effects
