#pragma once

#include "objects/ParameterValueArray.h"

namespace Tarsel::Effects
{

class IAccess;

// An array whose values live in a device buffer bound as a uniform block; name[i] reads mangled.a[i] and
// name.length the length uniform. Resizable when declared without a length.
class ParameterValueArraySeparate : public ParameterValueArray
{
public:
	// The instantiated object, with its typed accessors; null when Init fails (reported into the result).
	static ParameterValueArray* Create(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
	                                   const std::string& sName, Result* pResult);

	~ParameterValueArraySeparate() override;

	bool Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const std::string& sName,
	          Result* pResult);
	bool Shutdown();

	bool CollectShader(Module* pModule) override;
	bool VisitTransformations(VisitorTransformation& delegate) override;

	bool IsArray() const override { return true; }
	int GetLength() const override { return _nLength; }
	bool SetLength(int nLength) override;
	bool IsResizable() const override { return _bResizable; }

	const std::string& GetNameLengthMangled() const override { return _sNameLengthMangled; }
	bool ApplyStorage(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation) override;
	bool ApplyLength(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation) override;
	bool IsBuffer() const { return _bBuffer; }

protected:
	ParameterValueArraySeparate() = default;

private:
	bool _ReplaceReferenceLength(FieldSelection* pSelection, TIParentSyntax<Expression>* pParent);

	std::string _sNameLengthMangled;
	int _nLength = 0;
	bool _bResizable = false;
	bool _bBuffer = false;
	IAccess* _pAccess = nullptr;
};

} // namespace Tarsel::Effects
