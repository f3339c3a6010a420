#pragma once

#include "objects/MemberValue.h"

namespace Tarsel::Effects
{

// A member of one element: a global of the generated program set by the constructor from its initializer.
class MemberValueSingleSeparate : public MemberValue
{
public:
	// Null when Init fails.
	static MemberValueSingleSeparate* Create(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
	                                         const std::string& sName, Result* pResult);

	MemberValueSingleSeparate() = default;
	~MemberValueSingleSeparate() override;

	bool Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const std::string& sName,
	          Result* pResult);

	bool CollectConstructor(CompoundStatement* pBody) override;
	bool CollectShader(Module* pModule) override;
	bool VisitTransformations(VisitorTransformation& delegate) override;
	bool IsArray() const override { return false; }
	int GetLength() const override { return 1; }
	bool SetLength(int) override { return false; }
	bool IsResizable() const override { return false; }
};

} // namespace Tarsel::Effects
