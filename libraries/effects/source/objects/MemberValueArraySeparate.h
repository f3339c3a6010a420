#pragma once

#include "objects/MemberValue.h"

namespace Tarsel
{
class IQLPrimitive;
class IQLProgram;
} // namespace Tarsel

namespace Tarsel::Effects
{

class Expression;
class FieldSelection;
template <class T>
class TIParentSyntax;

// A member array: a global array of the generated program, with a length uniform beside it. Its length is
// fixed by a declared length or an array-constructor initializer; without either it starts empty and may be
// resized, which changes the generated declaration.
class MemberValueArraySeparate : public MemberValue
{
public:
	// Null when Init fails.
	static MemberValueArraySeparate* Create(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
	                                        const std::string& sName, Result* pResult);

	MemberValueArraySeparate() = default;
	~MemberValueArraySeparate() override;

	bool Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const std::string& sName,
	          Result* pResult);

	bool CollectConstructor(CompoundStatement* pBody) override;
	bool CollectShader(Module* pModule) override;
	bool VisitTransformations(VisitorTransformation& delegate) override;
	bool IsArray() const override { return true; }
	int GetLength() const override { return _nLength; }
	bool SetLength(int nLength) override;
	bool IsResizable() const override { return _bResizable; }

	const std::string& GetNameLengthMangled() const { return _sNameLengthMangled; }
	// The length as the integer uniform of the length name, at the location the caller looked up.
	bool ApplyLength(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation);

private:
	bool _InitAccess();
	bool _ReplaceReferenceLength(FieldSelection* pSelection, TIParentSyntax<Expression>* pParent);

	std::string _sNameLengthMangled;
	int _nLength = 0;
	bool _bResizable = true;
};

} // namespace Tarsel::Effects
