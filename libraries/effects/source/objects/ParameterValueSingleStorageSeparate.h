#pragma once

#include "objects/ParameterValueSingle.h"

namespace Tarsel::Effects
{

// A single value held in host memory and applied as a plain uniform named by the mangled name.
class ParameterValueSingleStorageSeparate : public ParameterValueSingle
{
public:
	// The instantiated object, with its typed accessors; null when Init fails (reported into the result).
	static ParameterValueSingle* Create(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
	                                    const std::string& sName, Result* pResult);

	~ParameterValueSingleStorageSeparate() override;

	bool Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const std::string& sName,
	          Result* pResult);
	bool Shutdown();

	// uniform type mangled-name;
	bool CollectShader(Module* pModule) override;

protected:
	ParameterValueSingleStorageSeparate() = default;
};

} // namespace Tarsel::Effects
