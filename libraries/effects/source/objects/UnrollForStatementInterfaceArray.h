#pragma once

#include <string>

namespace Tarsel::Effects
{

class CompoundStatement;
class Expression;
class ForStatement;
class FunctionSelection;
class ParameterInterfaceArray;
class Statement;
template <class T>
class TIParentSyntax;

// array[index] with the array's name: an element of the interface input array.
bool IsElementOf(const Expression* pExpression, const std::string& sArray);

// The loop variable of a loop that counts exactly through the array, else an empty name. The loop must read
// for (int i = 0; i < array.length; ++i), call methods on the array only as array[i], and use i in its body
// only as a call argument or as the array's index; anything looser keeps the loop and its dispatch calls.
std::string PredicateUnrollForStatementInterfaceArray(const ForStatement* pLoop, const std::string& sArray);

// One copy of a qualifying loop's body per element, each calling its element's methods directly.
class UnrollForStatementInterfaceArray
{
public:
	explicit UnrollForStatementInterfaceArray(ParameterInterfaceArray* pParameter) : _pParameter(pParameter)
	{
	}

	// The compound statement that replaces the loop: the loop variable's declaration, then the iterations
	// with the increment between them. Null when an element is empty or lacks a called method.
	CompoundStatement* Unroll(const ForStatement* pLoop, const std::string& sVariable);

private:
	ParameterInterfaceArray* _pParameter;
};

// Turns array[i].m(args) in one copy of a loop's body into the direct call of element iIndex.
class BakeForStatementIteration
{
public:
	BakeForStatementIteration(ParameterInterfaceArray* pParameter, const std::string& sVariable, int iIndex)
	    : _pParameter(pParameter), _sVariable(sVariable), _iIndex(iIndex)
	{
	}

	bool Bake(Statement* pBody);

private:
	bool _Replace(FunctionSelection* pSelection, TIParentSyntax<Expression>* pParent);

	ParameterInterfaceArray* _pParameter;
	std::string _sVariable;
	int _iIndex;
};

} // namespace Tarsel::Effects
