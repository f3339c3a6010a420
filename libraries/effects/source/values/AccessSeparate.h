#pragma once

#include "syntax/Syntax.h"
#include "values/IAccess.h"

#include <string>

namespace Tarsel::Effects
{

// Replaces a variable named sName by one named sNameMangled through its parent link; others are left.
bool RenameVariable(Variable* pVariable, TIParentSyntax<Expression>* pParent, const std::string& sName,
                    const std::string& sNameMangled);

// A member declared as its own global variable (mode 0), uniform (1) or mutable uniform (2).
class AccessSeparate : public IAccess
{
public:
	enum Mode
	{
		kMode_Global = 0,
		kMode_Uniform = 1,
		kMode_MutableUniform = 2
	};

	// The initializer is copied at each collect, not owned; only globals (members) may have one.
	bool Init(TypeSpecifier eType, const std::string& sName, const std::string& sNameMangled, int nLength,
	          int iMode, const Expression* pInitializer);

	const std::string& GetName() const { return _sName; }
	const std::string& GetNameMangled() const { return _sNameMangled; }
	int GetLength() const { return _nLength; }
	int GetMode() const { return _iMode; }

protected:
	// Declares the variable; a null array length declares a single value.
	bool _Declare(Module* pModule, Expression* pArrayLength) const;
	bool _IsDeclaredName(const Expression* pExpression) const;
	Variable* _CreateMangled(Module* pModule) const;

	TypeSpecifier _eType = kType_Void;
	std::string _sName;
	std::string _sNameMangled;
	int _nLength = 0;
	int _iMode = kMode_Global;
	const Expression* _pInitializer = nullptr;
};

// A single member: references to the declared name are renamed.
class AccessVariableSeparate : public AccessSeparate
{
public:
	bool CollectShader(Module* pModule) override;
	bool VisitTransformations(VisitorTransformation& delegate) override;

private:
	bool _ReplaceVariable(Variable* pVariable, TIParentSyntax<Expression>* pParent);
};

// A member array: always declared with at least one element, subscripts address the mangled name.
class AccessSubscriptSeparate : public AccessSeparate
{
public:
	bool CollectShader(Module* pModule) override;
	bool VisitTransformations(VisitorTransformation& delegate) override;

private:
	bool _ReplaceSubscript(Subscript* pSubscript, TIParentSyntax<Expression>* pParent);
};

// A value array read from a uniform block: name[i] becomes mangled.a[i].
class AccessBuffer : public IAccess
{
public:
	bool Init(TypeSpecifier eType, const std::string& sName, const std::string& sNameMangled);
	bool CollectShader(Module* pModule) override;
	bool VisitTransformations(VisitorTransformation& delegate) override;

	static const char* FieldName() { return "a"; }

private:
	bool _ReplaceSubscript(Subscript* pSubscript, TIParentSyntax<Expression>* pParent);

	TypeSpecifier _eType = kType_Void;
	std::string _sName;
	std::string _sNameMangled;
};

} // namespace Tarsel::Effects
