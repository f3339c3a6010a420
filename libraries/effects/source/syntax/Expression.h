#pragma once

#include "syntax/SyntaxNode.h"

#include <vector>

namespace Tarsel::Effects
{

class Expression : public Syntax
{
public:
	explicit Expression(Module* pModule) : _pModule(pModule) {}
	~Expression() override = default;

	static Class ClassStatic() { return kClass_Expression; }
	virtual Class GetClass() const = 0;
	virtual Expression* Clone(Module* pModule) const = 0;
	virtual bool Equals(const Expression* pOther) const = 0;
	virtual bool AcceptVisitor(Visitor* pVisitor, TParentSyntaxConst<Expression>* pParent) const = 0;
	virtual bool AcceptVisitor(Visitor* pVisitor, TIParentSyntax<Expression>* pParent) = 0;

	Module* GetModule() const { return _pModule; }

private:
	Module* _pModule;
};

// Declaration boilerplate shared by every concrete expression or statement class.
#define TARSEL_PARENTED_NODE(Name, Base)                                                                     \
	static Class ClassStatic()                                                                               \
	{                                                                                                        \
		return kClass_##Name;                                                                                \
	}                                                                                                        \
	Class GetClass() const override                                                                          \
	{                                                                                                        \
		return ClassStatic();                                                                                \
	}                                                                                                        \
	Name* Clone(Module* pModule) const override;                                                             \
	bool Equals(const Base* pOther) const override;                                                          \
	bool AcceptVisitor(Visitor* pVisitor, TParentSyntaxConst<Base>* pParent) const override;                 \
	bool AcceptVisitor(Visitor* pVisitor, TIParentSyntax<Base>* pParent) override
#define TARSEL_EXPRESSION_NODE(Name) TARSEL_PARENTED_NODE(Name, Expression)

class Assignment : public Expression
{
public:
	Assignment(Module* pModule, Operator eOperator, Expression* pLeft, Expression* pRight);
	~Assignment() override;
	TARSEL_EXPRESSION_NODE(Assignment);

	Operator GetOperator() const { return _eOperator; }
	Expression* GetLeft() { return _pLeft; }
	const Expression* GetLeft() const { return _pLeft; }
	bool SetLeft(Expression* pLeft) { return _Replace(_pLeft, pLeft); }
	Expression* GetRight() { return _pRight; }
	const Expression* GetRight() const { return _pRight; }
	bool SetRight(Expression* pRight) { return _Replace(_pRight, pRight); }

private:
	Operator _eOperator;
	Expression* _pLeft;
	Expression* _pRight;
};

class BoolConstant : public Expression
{
public:
	BoolConstant(Module* pModule, bool bValue) : Expression(pModule), _bValue(bValue) {}
	TARSEL_EXPRESSION_NODE(BoolConstant);

	bool GetValue() const { return _bValue; }

private:
	bool _bValue;
};

class IntConstant : public Expression
{
public:
	IntConstant(Module* pModule, long iValue) : Expression(pModule), _iValue(iValue) {}
	TARSEL_EXPRESSION_NODE(IntConstant);

	long GetValue() const { return _iValue; }
	void SetValue(long iValue) { _iValue = iValue; }

private:
	long _iValue;
};

class FloatConstant : public Expression
{
public:
	FloatConstant(Module* pModule, String* pString, double dValue);
	~FloatConstant() override;
	TARSEL_EXPRESSION_NODE(FloatConstant);

	double GetValue() const { return _dValue; }
	String* GetString() { return _pString; }
	const String* GetString() const { return _pString; }

private:
	double _dValue;
	String* _pString;
};

class UnaryOperator : public Expression
{
public:
	UnaryOperator(Module* pModule, Operator eOperator, Expression* pExpression);
	~UnaryOperator() override;
	TARSEL_EXPRESSION_NODE(UnaryOperator);

	Operator GetOperator() const { return _eOperator; }
	Expression* GetExpression() { return _pExpression; }
	const Expression* GetExpression() const { return _pExpression; }
	bool SetExpression(Expression* pExpression) { return _Replace(_pExpression, pExpression); }

private:
	Operator _eOperator;
	Expression* _pExpression;
};

class PostOperator : public Expression
{
public:
	PostOperator(Module* pModule, Operator eOperator, Expression* pExpression);
	~PostOperator() override;
	TARSEL_EXPRESSION_NODE(PostOperator);

	Operator GetOperator() const { return _eOperator; }
	Expression* GetExpression() { return _pExpression; }
	const Expression* GetExpression() const { return _pExpression; }
	// Used by the walk so that the operand can be replaced in place.
	bool SetExpression(Expression* pExpression) { return _Replace(_pExpression, pExpression); }

private:
	Operator _eOperator;
	Expression* _pExpression;
};

class BinaryOperator : public Expression
{
public:
	BinaryOperator(Module* pModule, Operator eOperator, Expression* pLeft, Expression* pRight);
	~BinaryOperator() override;
	TARSEL_EXPRESSION_NODE(BinaryOperator);

	Operator GetOperator() const { return _eOperator; }
	Expression* GetLeft() { return _pLeft; }
	const Expression* GetLeft() const { return _pLeft; }
	bool SetLeft(Expression* pLeft) { return _Replace(_pLeft, pLeft); }
	Expression* GetRight() { return _pRight; }
	const Expression* GetRight() const { return _pRight; }
	bool SetRight(Expression* pRight) { return _Replace(_pRight, pRight); }

private:
	Operator _eOperator;
	Expression* _pLeft;
	Expression* _pRight;
};

class Conditional : public Expression
{
public:
	Conditional(Module* pModule, Expression* pCondition, Expression* pTrue, Expression* pFalse);
	~Conditional() override;
	TARSEL_EXPRESSION_NODE(Conditional);

	Expression* GetCondition() { return _pCondition; }
	const Expression* GetCondition() const { return _pCondition; }
	bool SetCondition(Expression* pCondition) { return _Replace(_pCondition, pCondition); }
	Expression* GetTrue() { return _pTrue; }
	const Expression* GetTrue() const { return _pTrue; }
	bool SetTrue(Expression* pTrue) { return _Replace(_pTrue, pTrue); }
	Expression* GetFalse() { return _pFalse; }
	const Expression* GetFalse() const { return _pFalse; }
	bool SetFalse(Expression* pFalse) { return _Replace(_pFalse, pFalse); }

private:
	Expression* _pCondition;
	Expression* _pTrue;
	Expression* _pFalse;
};

class Variable : public Expression
{
public:
	Variable(Module* pModule, String* pIdentifier) : Expression(pModule), _pIdentifier(pIdentifier) {}
	~Variable() override;
	TARSEL_EXPRESSION_NODE(Variable);

	String* GetIdentifier() { return _pIdentifier; }
	const String* GetIdentifier() const { return _pIdentifier; }

private:
	String* _pIdentifier;
};

class FieldSelection : public Expression
{
public:
	FieldSelection(Module* pModule, Expression* pExpression, String* pField);
	~FieldSelection() override;
	TARSEL_EXPRESSION_NODE(FieldSelection);

	Expression* GetExpression() { return _pExpression; }
	const Expression* GetExpression() const { return _pExpression; }
	bool SetExpression(Expression* pExpression) { return _Replace(_pExpression, pExpression); }
	String* GetField() { return _pField; }
	const String* GetField() const { return _pField; }

private:
	Expression* _pExpression;
	String* _pField;
};

class FunctionCall;

class FunctionSelection : public Expression
{
public:
	FunctionSelection(Module* pModule, Expression* pExpression, FunctionCall* pFunction);
	~FunctionSelection() override;
	TARSEL_EXPRESSION_NODE(FunctionSelection);

	Expression* GetExpression() { return _pExpression; }
	const Expression* GetExpression() const { return _pExpression; }
	bool SetExpression(Expression* pExpression) { return _Replace(_pExpression, pExpression); }
	FunctionCall* GetFunction() { return _pFunction; }
	const FunctionCall* GetFunction() const { return _pFunction; }
	bool SetFunction(FunctionCall* pFunction);

private:
	Expression* _pExpression;
	FunctionCall* _pFunction;
};

class Subscript : public Expression
{
public:
	Subscript(Module* pModule, Expression* pArray, Expression* pIndex);
	~Subscript() override;
	TARSEL_EXPRESSION_NODE(Subscript);

	Expression* GetArray() { return _pArray; }
	const Expression* GetArray() const { return _pArray; }
	bool SetArray(Expression* pArray) { return _Replace(_pArray, pArray); }
	Expression* GetIndex() { return _pIndex; }
	const Expression* GetIndex() const { return _pIndex; }
	bool SetIndex(Expression* pIndex) { return _Replace(_pIndex, pIndex); }

private:
	Expression* _pArray;
	Expression* _pIndex;
};

// A call by name, or a constructor call on a type. The constructor of a class that initialises an
// interface input has both: the class name and a user type of that name.
class FunctionCall : public Expression
{
public:
	FunctionCall(Module* pModule, String* pName);
	FunctionCall(Module* pModule, Type* pType);
	~FunctionCall() override;
	TARSEL_EXPRESSION_NODE(FunctionCall);
	// Calls match functions by name only.
	virtual bool Equals(const FunctionPrototype* pPrototype) const;

	String* GetName() { return _pName; }
	const String* GetName() const { return _pName; }
	void SetName(String* pName);
	Type* GetType() { return _pType; }
	const Type* GetType() const { return _pType; }
	bool SetType(Type* pType) { return _Replace(_pType, pType); }
	std::vector<Expression*>& GetParameters() { return _vParameters; }
	const std::vector<Expression*>& GetParameters() const { return _vParameters; }
	size_t GetCountParameters() const { return _vParameters.size(); }
	void AddParameter(Expression* pExpression);
	Optimization GetOptimization() const { return _eOptimization; }
	void SetOptimization(Optimization eOptimization) { _eOptimization = eOptimization; }

private:
	friend class Module;
	String* _pName;
	Type* _pType;
	std::vector<Expression*> _vParameters;
	Optimization _eOptimization = kOptimization_Kept;
	uint32_t _iCallSlot = 0; // in the module's list of calls
};

// The condition of a loop: an expression, or a declaration with initializer; exactly one is set.
class Condition : public Expression
{
public:
	Condition(Module* pModule, Expression* pExpression);
	Condition(Module* pModule, Declaration* pDeclaration);
	~Condition() override;
	TARSEL_EXPRESSION_NODE(Condition);

	Expression* GetExpression() { return _pExpression; }
	const Expression* GetExpression() const { return _pExpression; }
	bool SetExpression(Expression* pExpression) { return _Replace(_pExpression, pExpression); }
	Declaration* GetDeclaration() { return _pDeclaration; }
	const Declaration* GetDeclaration() const { return _pDeclaration; }

private:
	Expression* _pExpression;
	Declaration* _pDeclaration;
};

} // namespace Tarsel::Effects
