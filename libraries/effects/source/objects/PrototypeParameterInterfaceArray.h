#pragma once

#include "objects/PrototypeParameterInterface.h"

namespace Tarsel::Effects
{

// Describes a per-instance input array of connected shaders; a declared length of 0 leaves it resizable.
class PrototypeParameterInterfaceArray : public PrototypeParameterInterface
{
public:
	PrototypeParameterInterfaceArray() = default;

	// Always true.
	bool Init(const VariableDeclaration* pDecl, IPrototypeInterface* pTarget, const std::string& sName,
	          int nLength);
	bool Init(const VariableDeclaration* pDecl, IPrototypeShader* pTarget, const std::string& sName,
	          int nLength);

	IParameter* CreateParameter(IShader* pShader, Result* pResult) override;

	bool IsFixedLength() const { return _bFixedLength; }
	int GetLength() const { return _nLength; }

private:
	bool _bFixedLength = false;
	int _nLength = 0;
};

} // namespace Tarsel::Effects
