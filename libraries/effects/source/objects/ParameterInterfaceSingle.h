#pragma once

#include "objects/ParameterInterface.h"

namespace Tarsel::Effects
{

// An input that one shader is connected to. Calls through the input's name in the owner's code become
// direct calls of the connected shader's methods.
class ParameterInterfaceSingle : public ParameterInterface
{
public:
	// Null when Init fails (reported into the result).
	static ParameterInterfaceSingle* Create(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
	                                        const std::string& sOwner, Result* pResult);

	ParameterInterfaceSingle() = default;

	// sOwner names the owner (class or shader key text) for the caller's sake only. An initializer
	// connects a default shader of the class it names.
	bool Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const std::string& sOwner,
	          Result* pResult);

	using ParameterInterface::Get;
	using ParameterInterface::Set;

	bool CollectShader(Module*) override { return true; }
	bool VisitTransformations(VisitorTransformation& delegate) override;
	bool IsArray() const override { return false; }
	bool SetLength(int) override { return false; }

	bool Set(IShader* pShader) override;
	bool Set(IShader* pShader, int index) override;
	bool Get(IShader*& pShader) override { return Get(pShader, 0); }

private:
	bool _InitInitializer(Result* pResult);
	bool _ReplaceReference(FunctionSelection* pSelection, TIParentSyntax<Expression>* pParent);
};

} // namespace Tarsel::Effects
