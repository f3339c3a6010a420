#pragma once

#include "objects/PrototypeParameterInterface.h"

namespace Tarsel::Effects
{

// Describes a per-instance input that one shader is connected to. An initializer names the class of the
// default shader.
class PrototypeParameterInterfaceSingle : public PrototypeParameterInterface
{
public:
	PrototypeParameterInterfaceSingle() = default;

	// Always true.
	bool Init(const VariableDeclaration* pDecl, IPrototypeInterface* pTarget, const std::string& sName);
	bool Init(const VariableDeclaration* pDecl, IPrototypeShader* pTarget, const std::string& sName);

	IParameter* CreateParameter(IShader* pShader, Result* pResult) override;

	// "InterfaceIndices" followed by the key text.
	const std::string& GetNameIndices() const { return _sNameIndices; }

private:
	void _CheckInitializer() const;

	std::string _sNameIndices;
};

} // namespace Tarsel::Effects
