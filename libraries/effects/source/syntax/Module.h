#pragma once

#include "syntax/Declaration.h"
#include "syntax/LineMap.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Tarsel::Effects
{

// Root of one parsed library or one generated program. Owns every node in its tables, except those it
// borrowed, and every string made by CreateString until a node that refers to it destroys it.
class Module : public Syntax
{
public:
	using InterfaceIndex = std::map<std::string, InterfaceDefinition*>;

	Module() = default;
	~Module() override;
	static Module* Create() { return new Module(); }

	static Class ClassStatic() { return kClass_Module; }
	virtual Class GetClass() const { return ClassStatic(); }
	// Merges copies of this module's declarations into the target and returns the target.
	virtual Module* Clone(Module* pTarget) const;
	// Appends the source's declarations and definitions to this module's tables without copying them, as a
	// graph collects the code of its shaders. This module walks and prints them but neither deletes them
	// nor hands them out through Remove: the source must outlive this module and stay unchanged meanwhile.
	void Borrow(Module* pSource);
	const std::vector<Module*>& GetBorrowedModules() const { return _vBorrowedModules; }
	// Every function call made by this module's factories and not yet deleted, in no particular order: a
	// pass that wants only the calls reads them here instead of walking every node.
	const std::vector<FunctionCall*>& GetFunctionCalls() const { return _vCalls; }
	virtual bool AcceptVisitor(Visitor* pVisitor) const;
	virtual bool AcceptVisitor(Visitor* pVisitor);

	// Node factories: each node is owned by this module, has a cleared range and is in no table yet.
	Variable* CreateVariable(String* pIdentifier);
	IntConstant* CreateIntConstant(long iValue);
	FloatConstant* CreateFloatConstant(String* pString);
	FloatConstant* CreateFloatConstant(String* pString, double dValue);
	FloatConstant* CreateFloatConstant(double dValue);
	BoolConstant* CreateBoolConstant(bool bValue);
	Subscript* CreateSubscript(Expression* pArray, Expression* pIndex);
	FieldSelection* CreateFieldSelection(Expression* pExpression, String* pField);
	FunctionSelection* CreateFunctionSelection(Expression* pExpression, FunctionCall* pFunction);
	PostOperator* CreatePostOperator(Operator eOperator, Expression* pExpression);
	Conditional* CreateConditional(Expression* pCondition, Expression* pTrue, Expression* pFalse);
	Assignment* CreateAssignment(Operator eOperator, Expression* pLeft, Expression* pRight);
	UnaryOperator* CreateUnaryOperator(Operator eOperator, Expression* pExpression);
	BinaryOperator* CreateBinaryOperator(Operator eOperator, Expression* pLeft, Expression* pRight);
	FunctionCall* CreateFunctionCall(String* pName);
	FunctionCall* CreateFunctionCall(Type* pType);
	FunctionParameter* CreateFunctionParameter(Type* pType);
	FunctionPrototype* CreateFunctionPrototype(FunctionQualifier eQualifier, Type* pReturnType,
	                                           String* pName);
	FunctionDefinition* CreateFunctionDefinition(FunctionPrototype* pPrototype, CompoundStatement* pBody);
	Type* CreateType(TypeSpecifier eType);
	UserType* CreateUserType(String* pName);
	DeclarationStatement* CreateDeclarationStatement(VariableDeclaration* pDeclaration);
	ExpressionStatement* CreateExpressionStatement(Expression* pExpression);
	SelectionStatement* CreateSelectionStatement();
	CompoundStatement* CreateCompoundStatement();
	CompoundStatement* CreateCompoundStatement(Statement* pStatement);
	EmptyStatement* CreateEmptyStatement();
	VariableDeclaration* CreateVariableDeclaration(Type* pType, String* pIdentifier,
	                                               Expression* pInitializer);
	Condition* CreateCondition(Expression* pExpression);
	Condition* CreateCondition(Declaration* pDeclaration);
	JumpStatement* CreateJumpStatement(JumpType eType, Expression* pExpression);
	ForStatement* CreateForStatement(Expression* pIteration);
	DoWhileStatement* CreateDoWhileStatement(Statement* pStatement, Expression* pExpression);
	WhileStatement* CreateWhileStatement(Condition* pCondition, Statement* pStatement);
	StructDefinition* CreateStructDefinition(String* pName);
	ClassDefinition* CreateClassDefinition(String* pName);
	InterfaceDefinition* CreateInterfaceDefinition(String* pName);
	String* CreateString(const char* pText);
	String* CreateString(const std::string& sText) { return CreateString(sText.c_str()); }

	// Strings. RemoveString unregisters without deleting; DestroyString deletes a registered string and
	// nulls the caller's pointer, and leaves strings of other owners alone.
	bool RemoveString(String* pString);
	void DestroyString(String*& pString);
	bool HasString(const String* pString) const;

	// Tables.
	bool AddVariableDeclaration(DeclarationStatement* pDeclaration);
	bool AddFunctionDeclaration(FunctionPrototype* pPrototype);
	bool AddFunctionDefinition(FunctionDefinition* pDefinition);
	bool AddStructDefinition(StructDefinition* pDefinition);
	bool AddClassDefinition(ClassDefinition* pDefinition);
	// Also indexes the interface by name; a later one of the same name takes over the index entry.
	bool AddInterfaceDefinition(InterfaceDefinition* pDefinition);
	bool AddStatement(Statement* pStatement);
	bool AddExpression(Expression* pExpression);

	// Take the first occurrence out of its table without deleting it.
	bool RemoveVariableDeclaration(DeclarationStatement* pDeclaration);
	bool RemoveFunctionDeclaration(FunctionPrototype* pPrototype);
	bool RemoveFunctionDefinition(FunctionDefinition* pDefinition);
	bool RemoveStructDefinition(StructDefinition* pDefinition);
	bool RemoveClassDefinition(ClassDefinition* pDefinition);
	bool RemoveInterfaceDefinition(InterfaceDefinition* pDefinition);

	// Lookups by name text; the first match or null.
	StructDefinition* GetStructDefinition(const std::string& sName) const;
	ClassDefinition* GetClassDefinition(const std::string& sName) const;
	FunctionDefinition* GetFunctionDefinition(const std::string& sName) const;
	FunctionPrototype* GetFunctionDeclaration(const std::string& sName) const;
	InterfaceDefinition* GetInterfaceDefinition(const std::string& sName) const;

	void ClearFunctionDeclarations();

	// Read-only: each string knows its slot in this list.
	const std::vector<String*>& GetStrings() const { return _vStrings; }
	std::vector<DeclarationStatement*>& GetVariableDeclarations() { return _vVariableDeclarations; }
	const std::vector<DeclarationStatement*>& GetVariableDeclarations() const
	{
		return _vVariableDeclarations;
	}
	std::vector<FunctionPrototype*>& GetFunctionDeclarations() { return _vFunctionDeclarations; }
	const std::vector<FunctionPrototype*>& GetFunctionDeclarations() const { return _vFunctionDeclarations; }
	std::vector<FunctionDefinition*>& GetFunctionDefinitions() { return _vFunctionDefinitions; }
	const std::vector<FunctionDefinition*>& GetFunctionDefinitions() const { return _vFunctionDefinitions; }
	std::vector<StructDefinition*>& GetStructDefinitions() { return _vStructDefinitions; }
	const std::vector<StructDefinition*>& GetStructDefinitions() const { return _vStructDefinitions; }
	std::vector<ClassDefinition*>& GetClassDefinitions() { return _vClassDefinitions; }
	const std::vector<ClassDefinition*>& GetClassDefinitions() const { return _vClassDefinitions; }
	std::vector<InterfaceDefinition*>& GetInterfaceDefinitions() { return _vInterfaceDefinitions; }
	const std::vector<InterfaceDefinition*>& GetInterfaceDefinitions() const
	{
		return _vInterfaceDefinitions;
	}
	const InterfaceIndex& GetInterfaceIndex() const { return _mInterfaces; }
	std::vector<Statement*>& GetStatements() { return _vStatements; }
	const std::vector<Statement*>& GetStatements() const { return _vStatements; }
	std::vector<Expression*>& GetExpressions() { return _vExpressions; }
	const std::vector<Expression*>& GetExpressions() const { return _vExpressions; }

	size_t GetCountStrings() const { return _vStrings.size(); }
	size_t GetCountVariableDeclarations() const { return _vVariableDeclarations.size(); }
	size_t GetCountFunctionDeclarations() const { return _vFunctionDeclarations.size(); }
	size_t GetCountFunctionDefinitions() const { return _vFunctionDefinitions.size(); }
	size_t GetCountStructDefinitions() const { return _vStructDefinitions.size(); }
	size_t GetCountClassDefinitions() const { return _vClassDefinitions.size(); }
	size_t GetCountInterfaceDefinitions() const { return _vInterfaceDefinitions.size(); }
	size_t GetCountStatements() const { return _vStatements.size(); }
	size_t GetCountExpressions() const { return _vExpressions.size(); }

	std::vector<std::string>& ErrorMessages() { return _vErrors; }
	const std::vector<std::string>& ErrorMessages() const { return _vErrors; }
	std::vector<std::string>& WarningMessages() { return _vWarnings; }
	const std::vector<std::string>& WarningMessages() const { return _vWarnings; }
	void LogError(const std::string& sText) { _vErrors.push_back(sText); }
	void LogError(const char* pText) { _vErrors.emplace_back(pText ? pText : ""); }
	void LogWarning(const std::string& sText) { _vWarnings.push_back(sText); }
	void LogWarning(const char* pText) { _vWarnings.emplace_back(pText ? pText : ""); }

	// Keeps a copy of the line map of a text parsed into this module, so that the file names the nodes'
	// ranges point to live as long as the nodes.
	const LineMap* KeepLineMap(const LineMap& map);

private:
	friend class FunctionCall;
	void _AddCall(FunctionCall* pCall);
	void _RemoveCall(FunctionCall* pCall);
	template <class T>
	bool _Add(std::vector<T*>& vTable, T* pNode);
	template <class T>
	bool _Remove(std::vector<T*>& vTable, T* pNode);

	std::vector<String*> _vStrings;
	// The nodes of the tables that this module deletes, in the order they were added; the rest are
	// borrowed.
	std::vector<Syntax*> _vOwned;
	std::vector<Module*> _vBorrowedModules;
	std::vector<FunctionCall*> _vCalls; // each call knows its slot
	std::vector<DeclarationStatement*> _vVariableDeclarations;
	std::vector<FunctionPrototype*> _vFunctionDeclarations;
	std::vector<FunctionDefinition*> _vFunctionDefinitions;
	std::vector<StructDefinition*> _vStructDefinitions;
	std::vector<ClassDefinition*> _vClassDefinitions;
	std::vector<InterfaceDefinition*> _vInterfaceDefinitions;
	InterfaceIndex _mInterfaces;
	std::vector<std::string> _vErrors;
	std::vector<std::string> _vWarnings;
	std::vector<Statement*> _vStatements;
	std::vector<Expression*> _vExpressions;
	// Each kept apart, so that the addresses handed out stay valid; few modules keep any, and an empty
	// vector costs nothing, where an empty deque allocates.
	std::vector<std::unique_ptr<LineMap>> _vLineMaps;
};

} // namespace Tarsel::Effects
