#include "syntax/Syntax.h"
#include "syntax/SyntaxHelpers.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace Tarsel::Effects
{

using namespace Detail;

namespace
{

template <class T>
bool RemoveFirst(std::vector<T*>& vNodes, T* pNode)
{
	auto it = std::find(vNodes.begin(), vNodes.end(), pNode);
	if (it == vNodes.end())
		return false;
	vNodes.erase(it);
	return true;
}

template <class T, class GetName>
T* FindByName(const std::vector<T*>& vNodes, const std::string& sName, GetName getName)
{
	for (T* pNode : vNodes)
	{
		const String* pName = pNode ? getName(pNode) : nullptr;
		if (pName && pName->GetString() == sName)
			return pNode;
	}
	return nullptr;
}

const String* PrototypeName(const FunctionPrototype* pPrototype)
{
	return pPrototype ? pPrototype->GetName() : nullptr;
}

// Clones every node of a table and appends the clones to the target's table through its Add operation.
template <class T>
void CloneTable(const std::vector<T*>& vSource, Module* pTarget, bool (Module::*pfnAdd)(T*))
{
	const size_t nCount = vSource.size(); // the target may be this module
	for (size_t i = 0; i < nCount; ++i)
		(pTarget->*pfnAdd)(CloneNode(vSource[i], pTarget));
}

} // namespace

// Strings are set aside first so that the nodes deleted below find none registered; each is then deleted
// exactly once at the end, whichever node it belonged to.
Module::~Module()
{
	std::vector<String*> vStrings;
	vStrings.swap(_vStrings);
	_vCalls.clear(); // the calls deleted below need not leave one by one
	_mInterfaces.clear();
	for (Syntax* pNode : _vOwned)
		Syntax::Destroy(pNode);
	for (String* pString : vStrings)
		delete pString;
}

template <class T>
bool Module::_Add(std::vector<T*>& vTable, T* pNode)
{
	vTable.push_back(pNode);
	if (pNode)
		_vOwned.push_back(pNode);
	return true;
}

template <class T>
bool Module::_Remove(std::vector<T*>& vTable, T* pNode)
{
	Syntax* pSyntax = pNode;
	auto it = std::find(_vOwned.rbegin(), _vOwned.rend(), pSyntax);
	if (pNode == nullptr || it == _vOwned.rend() || !RemoveFirst(vTable, pNode))
		return false;
	_vOwned.erase(std::next(it).base());
	return true;
}

void Module::_AddCall(FunctionCall* pCall)
{
	pCall->_iCallSlot = static_cast<uint32_t>(_vCalls.size());
	_vCalls.push_back(pCall);
}

void Module::_RemoveCall(FunctionCall* pCall)
{
	const uint32_t iSlot = pCall->_iCallSlot;
	if (iSlot >= _vCalls.size() || _vCalls[iSlot] != pCall)
		return;
	_vCalls[iSlot] = _vCalls.back();
	_vCalls[iSlot]->_iCallSlot = iSlot;
	_vCalls.pop_back();
}

void Module::Borrow(Module* pSource)
{
	if (pSource == nullptr || pSource == this)
		return;
	_vBorrowedModules.push_back(pSource);
	const auto append = [](auto& vTable, const auto& vSource)
	{ vTable.insert(vTable.end(), vSource.begin(), vSource.end()); };
	append(_vVariableDeclarations, pSource->_vVariableDeclarations);
	append(_vFunctionDeclarations, pSource->_vFunctionDeclarations);
	append(_vFunctionDefinitions, pSource->_vFunctionDefinitions);
	append(_vStructDefinitions, pSource->_vStructDefinitions);
	append(_vClassDefinitions, pSource->_vClassDefinitions);
	append(_vInterfaceDefinitions, pSource->_vInterfaceDefinitions);
	for (const auto& entry : pSource->_mInterfaces)
		_mInterfaces[entry.first] = entry.second;
}

Module* Module::Clone(Module* pTarget) const
{
	if (!pTarget)
		return nullptr;
	CloneTable(_vVariableDeclarations, pTarget, &Module::AddVariableDeclaration);
	CloneTable(_vFunctionDeclarations, pTarget, &Module::AddFunctionDeclaration);
	CloneTable(_vFunctionDefinitions, pTarget, &Module::AddFunctionDefinition);
	CloneTable(_vStructDefinitions, pTarget, &Module::AddStructDefinition);
	CloneTable(_vClassDefinitions, pTarget, &Module::AddClassDefinition);
	CloneTable(_vInterfaceDefinitions, pTarget, &Module::AddInterfaceDefinition);
	pTarget->SetRange(GetRange());
	return pTarget;
}

// ---------------------------------------------------------------------------------------------------------
// Factories
// ---------------------------------------------------------------------------------------------------------

Variable* Module::CreateVariable(String* pIdentifier)
{
	return new Variable(this, pIdentifier);
}

IntConstant* Module::CreateIntConstant(long iValue)
{
	return new IntConstant(this, iValue);
}

FloatConstant* Module::CreateFloatConstant(String* pString)
{
	return new FloatConstant(this, pString, pString ? std::atof(pString->c_str()) : 0.0);
}

FloatConstant* Module::CreateFloatConstant(String* pString, double dValue)
{
	return new FloatConstant(this, pString, dValue);
}

FloatConstant* Module::CreateFloatConstant(double dValue)
{
	char aText[64];
	std::snprintf(aText, sizeof(aText), "%#.16g", dValue);
	return new FloatConstant(this, CreateString(aText), dValue);
}

BoolConstant* Module::CreateBoolConstant(bool bValue)
{
	return new BoolConstant(this, bValue);
}

Subscript* Module::CreateSubscript(Expression* pArray, Expression* pIndex)
{
	return new Subscript(this, pArray, pIndex);
}

FieldSelection* Module::CreateFieldSelection(Expression* pExpression, String* pField)
{
	return new FieldSelection(this, pExpression, pField);
}

FunctionSelection* Module::CreateFunctionSelection(Expression* pExpression, FunctionCall* pFunction)
{
	return new FunctionSelection(this, pExpression, pFunction);
}

PostOperator* Module::CreatePostOperator(Operator eOperator, Expression* pExpression)
{
	return new PostOperator(this, eOperator, pExpression);
}

Conditional* Module::CreateConditional(Expression* pCondition, Expression* pTrue, Expression* pFalse)
{
	return new Conditional(this, pCondition, pTrue, pFalse);
}

Assignment* Module::CreateAssignment(Operator eOperator, Expression* pLeft, Expression* pRight)
{
	return new Assignment(this, eOperator, pLeft, pRight);
}

UnaryOperator* Module::CreateUnaryOperator(Operator eOperator, Expression* pExpression)
{
	return new UnaryOperator(this, eOperator, pExpression);
}

BinaryOperator* Module::CreateBinaryOperator(Operator eOperator, Expression* pLeft, Expression* pRight)
{
	return new BinaryOperator(this, eOperator, pLeft, pRight);
}

FunctionCall* Module::CreateFunctionCall(String* pName)
{
	return new FunctionCall(this, pName);
}

FunctionCall* Module::CreateFunctionCall(Type* pType)
{
	return new FunctionCall(this, pType);
}

FunctionParameter* Module::CreateFunctionParameter(Type* pType)
{
	return new FunctionParameter(this, pType);
}

FunctionPrototype* Module::CreateFunctionPrototype(FunctionQualifier eQualifier, Type* pReturnType,
                                                   String* pName)
{
	return new FunctionPrototype(this, eQualifier, pReturnType, pName);
}

FunctionDefinition* Module::CreateFunctionDefinition(FunctionPrototype* pPrototype, CompoundStatement* pBody)
{
	return new FunctionDefinition(this, pPrototype, pBody);
}

Type* Module::CreateType(TypeSpecifier eType)
{
	return new Type(this, eType);
}

UserType* Module::CreateUserType(String* pName)
{
	return new UserType(this, pName);
}

DeclarationStatement* Module::CreateDeclarationStatement(VariableDeclaration* pDeclaration)
{
	return new DeclarationStatement(this, pDeclaration);
}

ExpressionStatement* Module::CreateExpressionStatement(Expression* pExpression)
{
	return new ExpressionStatement(this, pExpression);
}

SelectionStatement* Module::CreateSelectionStatement()
{
	return new SelectionStatement(this);
}

CompoundStatement* Module::CreateCompoundStatement()
{
	return new CompoundStatement(this);
}

CompoundStatement* Module::CreateCompoundStatement(Statement* pStatement)
{
	return new CompoundStatement(this, pStatement);
}

EmptyStatement* Module::CreateEmptyStatement()
{
	return new EmptyStatement(this);
}

VariableDeclaration* Module::CreateVariableDeclaration(Type* pType, String* pIdentifier,
                                                       Expression* pInitializer)
{
	return new VariableDeclaration(this, pType, pIdentifier, pInitializer);
}

Condition* Module::CreateCondition(Expression* pExpression)
{
	return new Condition(this, pExpression);
}

Condition* Module::CreateCondition(Declaration* pDeclaration)
{
	return new Condition(this, pDeclaration);
}

JumpStatement* Module::CreateJumpStatement(JumpType eType, Expression* pExpression)
{
	return new JumpStatement(this, eType, pExpression);
}

ForStatement* Module::CreateForStatement(Expression* pIteration)
{
	return new ForStatement(this, pIteration);
}

DoWhileStatement* Module::CreateDoWhileStatement(Statement* pStatement, Expression* pExpression)
{
	return new DoWhileStatement(this, pStatement, pExpression);
}

WhileStatement* Module::CreateWhileStatement(Condition* pCondition, Statement* pStatement)
{
	return new WhileStatement(this, pCondition, pStatement);
}

StructDefinition* Module::CreateStructDefinition(String* pName)
{
	return new StructDefinition(this, pName);
}

ClassDefinition* Module::CreateClassDefinition(String* pName)
{
	return new ClassDefinition(this, pName);
}

InterfaceDefinition* Module::CreateInterfaceDefinition(String* pName)
{
	return new InterfaceDefinition(this, pName);
}

// ---------------------------------------------------------------------------------------------------------
// Strings: each registered string knows its slot, so that unregistering is constant time however many
// strings a large library has.
// ---------------------------------------------------------------------------------------------------------

String* Module::CreateString(const char* pText)
{
	String* pString = new String(pText);
	pString->_pRegistry = this;
	pString->_iRegistryIndex = _vStrings.size();
	_vStrings.push_back(pString);
	return pString;
}

bool Module::HasString(const String* pString) const
{
	return pString && pString->_pRegistry == this && pString->_iRegistryIndex < _vStrings.size() &&
	       _vStrings[pString->_iRegistryIndex] == pString;
}

bool Module::RemoveString(String* pString)
{
	if (!HasString(pString))
		return false;
	String* pLast = _vStrings.back();
	_vStrings[pString->_iRegistryIndex] = pLast;
	pLast->_iRegistryIndex = pString->_iRegistryIndex;
	_vStrings.pop_back();
	pString->_pRegistry = nullptr;
	return true;
}

void Module::DestroyString(String*& pString)
{
	if (!RemoveString(pString))
		return;
	delete pString;
	pString = nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// Tables
// ---------------------------------------------------------------------------------------------------------

bool Module::AddVariableDeclaration(DeclarationStatement* pDeclaration)
{
	return _Add(_vVariableDeclarations, pDeclaration);
}

bool Module::AddFunctionDeclaration(FunctionPrototype* pPrototype)
{
	return _Add(_vFunctionDeclarations, pPrototype);
}

bool Module::AddFunctionDefinition(FunctionDefinition* pDefinition)
{
	return _Add(_vFunctionDefinitions, pDefinition);
}

bool Module::AddStructDefinition(StructDefinition* pDefinition)
{
	return _Add(_vStructDefinitions, pDefinition);
}

bool Module::AddClassDefinition(ClassDefinition* pDefinition)
{
	return _Add(_vClassDefinitions, pDefinition);
}

bool Module::AddInterfaceDefinition(InterfaceDefinition* pDefinition)
{
	_Add(_vInterfaceDefinitions, pDefinition);
	if (pDefinition && pDefinition->GetName())
		_mInterfaces[pDefinition->GetName()->GetString()] = pDefinition;
	return true;
}

bool Module::AddStatement(Statement* pStatement)
{
	return _Add(_vStatements, pStatement);
}

bool Module::AddExpression(Expression* pExpression)
{
	return _Add(_vExpressions, pExpression);
}

bool Module::RemoveVariableDeclaration(DeclarationStatement* pDeclaration)
{
	return _Remove(_vVariableDeclarations, pDeclaration);
}

bool Module::RemoveFunctionDeclaration(FunctionPrototype* pPrototype)
{
	return _Remove(_vFunctionDeclarations, pPrototype);
}

bool Module::RemoveFunctionDefinition(FunctionDefinition* pDefinition)
{
	return _Remove(_vFunctionDefinitions, pDefinition);
}

bool Module::RemoveStructDefinition(StructDefinition* pDefinition)
{
	return _Remove(_vStructDefinitions, pDefinition);
}

bool Module::RemoveClassDefinition(ClassDefinition* pDefinition)
{
	return _Remove(_vClassDefinitions, pDefinition);
}

bool Module::RemoveInterfaceDefinition(InterfaceDefinition* pDefinition)
{
	if (!_Remove(_vInterfaceDefinitions, pDefinition))
		return false;
	// Looked up by pointer: the interface may have been renamed since it was indexed.
	for (auto it = _mInterfaces.begin(); it != _mInterfaces.end(); ++it)
	{
		if (it->second == pDefinition)
		{
			_mInterfaces.erase(it);
			break;
		}
	}
	return true;
}

StructDefinition* Module::GetStructDefinition(const std::string& sName) const
{
	return FindByName(_vStructDefinitions, sName, [](const StructDefinition* p) { return p->GetName(); });
}

ClassDefinition* Module::GetClassDefinition(const std::string& sName) const
{
	return FindByName(_vClassDefinitions, sName, [](const ClassDefinition* p) { return p->GetName(); });
}

FunctionDefinition* Module::GetFunctionDefinition(const std::string& sName) const
{
	return FindByName(_vFunctionDefinitions, sName,
	                  [](const FunctionDefinition* p) { return PrototypeName(p->GetFunctionPrototype()); });
}

FunctionPrototype* Module::GetFunctionDeclaration(const std::string& sName) const
{
	return FindByName(_vFunctionDeclarations, sName, &PrototypeName);
}

InterfaceDefinition* Module::GetInterfaceDefinition(const std::string& sName) const
{
	auto it = _mInterfaces.find(sName);
	return it == _mInterfaces.end() ? nullptr : it->second;
}

void Module::ClearFunctionDeclarations()
{
	std::vector<Syntax*> vDeclarations(_vFunctionDeclarations.begin(), _vFunctionDeclarations.end());
	_vFunctionDeclarations.clear();
	std::sort(vDeclarations.begin(), vDeclarations.end());
	const auto declaration = [&](Syntax* pNode)
	{ return std::binary_search(vDeclarations.begin(), vDeclarations.end(), pNode); };
	const auto owned = std::stable_partition(_vOwned.begin(), _vOwned.end(),
	                                         [&](Syntax* pNode) { return !declaration(pNode); });
	for (auto it = owned; it != _vOwned.end(); ++it)
		Syntax::Destroy(*it);
	_vOwned.erase(owned, _vOwned.end());
}

const LineMap* Module::KeepLineMap(const LineMap& map)
{
	_vLineMaps.push_back(std::make_unique<LineMap>(map));
	return _vLineMaps.back().get();
}

} // namespace Tarsel::Effects
