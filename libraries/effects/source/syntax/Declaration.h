#pragma once

#include "syntax/Statement.h"

#include <map>
#include <string>
#include <vector>

namespace Tarsel::Effects
{

class Type : public Syntax
{
public:
	Type(Module* pModule, TypeSpecifier eType) : _pModule(pModule), _eType(eType) {}
	~Type() override;

	static Class ClassStatic() { return kClass_Type; }
	virtual Class GetClass() const { return ClassStatic(); }
	virtual Type* Clone(Module* pModule) const;
	virtual bool Equals(const Type* pOther) const;
	virtual bool AcceptVisitor(Visitor* pVisitor) const;
	virtual bool AcceptVisitor(Visitor* pVisitor);

	Module* GetModule() const { return _pModule; }
	TypeSpecifier GetTypeSpecifier() const { return _eType; }
	PrecisionQualifier GetPrecisionQualifier() const { return _ePrecision; }
	void SetPrecisionQualifier(PrecisionQualifier ePrecision) { _ePrecision = ePrecision; }
	bool IsArray() const { return _bArray; }
	void SetArray(bool bArray) { _bArray = bArray; }
	Expression* GetLength() { return _pLength; }
	const Expression* GetLength() const { return _pLength; }
	bool SetLength(Expression* pLength) { return _Replace(_pLength, pLength); }

protected:
	// Copies precision, array flag and length into a clone made by a derived class.
	void _CopyInto(Type* pClone, Module* pModule) const;

private:
	Module* _pModule;
	TypeSpecifier _eType;
	PrecisionQualifier _ePrecision = kPrecision_None;
	bool _bArray = false;
	Expression* _pLength = nullptr;
};

// A struct, class or interface named in source; never equal to anything (see Equals).
class UserType : public Type
{
public:
	UserType(Module* pModule, String* pName) : Type(pModule, kType_UserDefined), _pName(pName) {}
	~UserType() override;

	static Class ClassStatic() { return kClass_UserType; }
	Class GetClass() const override { return ClassStatic(); }
	UserType* Clone(Module* pModule) const override;
	bool Equals(const Type* pOther) const override;
	bool AcceptVisitor(Visitor* pVisitor) const override;
	bool AcceptVisitor(Visitor* pVisitor) override;

	String* GetName() { return _pName; }
	const String* GetName() const { return _pName; }
	void SetName(String* pName);

private:
	String* _pName;
};

class Declaration : public Syntax
{
public:
	explicit Declaration(Module* pModule) : _pModule(pModule) {}
	~Declaration() override = default;

	static Class ClassStatic() { return kClass_Declaration; }
	virtual Class GetClass() const = 0;
	virtual Declaration* Clone(Module* pModule) const = 0;
	virtual bool Equals(const Declaration* pOther) const = 0;
	virtual bool AcceptVisitor(Visitor* pVisitor) const = 0;
	virtual bool AcceptVisitor(Visitor* pVisitor) = 0;

	Module* GetModule() const { return _pModule; }

private:
	Module* _pModule;
};

#define TARSEL_DECLARATION_NODE(Name)                                                                        \
	static Class ClassStatic()                                                                               \
	{                                                                                                        \
		return kClass_##Name;                                                                                \
	}                                                                                                        \
	Class GetClass() const override                                                                          \
	{                                                                                                        \
		return ClassStatic();                                                                                \
	}                                                                                                        \
	Name* Clone(Module* pModule) const override;                                                             \
	bool Equals(const Declaration* pOther) const override;                                                   \
	bool AcceptVisitor(Visitor* pVisitor) const override;                                                    \
	bool AcceptVisitor(Visitor* pVisitor) override

class VariableDeclaration : public Declaration
{
public:
	VariableDeclaration(Module* pModule, Type* pType, String* pIdentifier, Expression* pInitializer);
	~VariableDeclaration() override;
	TARSEL_DECLARATION_NODE(VariableDeclaration);
	// By class, then storage qualifier, then identifier text.
	virtual bool operator<(const VariableDeclaration& other) const;

	bool IsStatic() const { return _bStatic; }
	void SetStatic(bool bStatic) { _bStatic = bStatic; }
	bool IsConst() const { return _bConst; }
	void SetConst(bool bConst) { _bConst = bConst; }
	StorageQualifier GetStorageQualifier() const { return _eStorage; }
	void SetStorageQualifier(StorageQualifier eStorage) { _eStorage = eStorage; }
	TransformationCoord GetTransformation() const { return _eTransformation; }
	void SetTransformation(TransformationCoord eTransformation) { _eTransformation = eTransformation; }
	Type* GetType() { return _pType; }
	const Type* GetType() const { return _pType; }
	bool SetType(Type* pType) { return _Replace(_pType, pType); }
	String* GetIdentifier() { return _pIdentifier; }
	const String* GetIdentifier() const { return _pIdentifier; }
	Expression* GetInitializer() { return _pInitializer; }
	const Expression* GetInitializer() const { return _pInitializer; }
	bool SetInitializer(Expression* pInitializer) { return _Replace(_pInitializer, pInitializer); }

private:
	bool _bStatic = false;
	bool _bConst = false;
	StorageQualifier _eStorage = kStorage_None;
	TransformationCoord _eTransformation = kTransformation_Coord;
	Type* _pType;
	String* _pIdentifier;
	Expression* _pInitializer;
};

class FunctionParameter : public Syntax
{
public:
	FunctionParameter(Module* pModule, Type* pType) : _pModule(pModule), _pType(pType) {}
	~FunctionParameter() override;

	static Class ClassStatic() { return kClass_FunctionParameter; }
	virtual Class GetClass() const { return ClassStatic(); }
	virtual FunctionParameter* Clone(Module* pModule) const;
	virtual bool Equals(const FunctionParameter* pOther) const;
	// By type specifier, then qualifier, then name text.
	virtual bool operator<(const FunctionParameter& other) const;
	virtual bool AcceptVisitor(Visitor* pVisitor) const;
	virtual bool AcceptVisitor(Visitor* pVisitor);

	Module* GetModule() const { return _pModule; }
	Type* GetType() { return _pType; }
	const Type* GetType() const { return _pType; }
	String* GetName() { return _pName; }
	const String* GetName() const { return _pName; }
	void SetName(String* pName);
	ParameterQualifier GetParameterQualifier() const { return _eQualifier; }
	void SetParameterQualifier(ParameterQualifier eQualifier) { _eQualifier = eQualifier; }

private:
	Module* _pModule;
	Type* _pType;
	String* _pName = nullptr;
	ParameterQualifier _eQualifier = kParameter_None;
};

class FunctionPrototype : public Declaration
{
public:
	FunctionPrototype(Module* pModule, FunctionQualifier eQualifier, Type* pReturnType, String* pName);
	~FunctionPrototype() override;
	TARSEL_DECLARATION_NODE(FunctionPrototype);
	// By class, qualifier, name text, return type specifier, parameter count, first differing parameter.
	virtual bool operator<(const FunctionPrototype& other) const;
	// Equals, except that parameters are compared by qualifier and type only.
	bool Equivalent(const Declaration* pOther) const;

	FunctionQualifier GetQualifier() const { return _eQualifier; }
	void SetQualifier(FunctionQualifier eQualifier) { _eQualifier = eQualifier; }
	Type* GetReturnType() { return _pReturnType; }
	const Type* GetReturnType() const { return _pReturnType; }
	bool SetReturnType(Type* pType) { return _Replace(_pReturnType, pType); }
	String* GetName() { return _pName; }
	const String* GetName() const { return _pName; }
	std::vector<FunctionParameter*>& GetParameters() { return _vParameters; }
	const std::vector<FunctionParameter*>& GetParameters() const { return _vParameters; }
	size_t GetCountParameters() const { return _vParameters.size(); }
	void AddParameter(FunctionParameter* pParameter) { _vParameters.push_back(pParameter); }
	Optimization GetOptimization() const { return _eOptimization; }
	void SetOptimization(Optimization eOptimization) { _eOptimization = eOptimization; }

private:
	bool _CompareTo(const Declaration* pOther, bool bNames) const;

	FunctionQualifier _eQualifier;
	Type* _pReturnType;
	String* _pName;
	std::vector<FunctionParameter*> _vParameters;
	Optimization _eOptimization = kOptimization_Kept;
};

class FunctionDefinition : public Declaration
{
public:
	FunctionDefinition(Module* pModule, FunctionPrototype* pPrototype, CompoundStatement* pBody);
	~FunctionDefinition() override;
	TARSEL_DECLARATION_NODE(FunctionDefinition);
	virtual bool operator<(const FunctionDefinition& other) const;

	FunctionPrototype* GetFunctionPrototype() { return _pPrototype; }
	const FunctionPrototype* GetFunctionPrototype() const { return _pPrototype; }
	CompoundStatement* GetCompoundStatement() { return _pBody; }
	const CompoundStatement* GetCompoundStatement() const { return _pBody; }
	bool SetCompoundStatement(CompoundStatement* pBody) { return _Replace(_pBody, pBody); }
	Optimization GetOptimization() const { return _eOptimization; }
	void SetOptimization(Optimization eOptimization) { _eOptimization = eOptimization; }

private:
	FunctionPrototype* _pPrototype;
	CompoundStatement* _pBody;
	Optimization _eOptimization = kOptimization_Kept;
};

class StructDefinition : public Declaration
{
public:
	StructDefinition(Module* pModule, String* pName) : Declaration(pModule), _pName(pName) {}
	~StructDefinition() override;
	TARSEL_DECLARATION_NODE(StructDefinition);
	virtual bool operator<(const StructDefinition& other) const;

	String* GetName() { return _pName; }
	const String* GetName() const { return _pName; }
	void SetName(String* pName);
	bool IsUniform() const { return _bUniform; }
	void SetUniform(bool bUniform) { _bUniform = bUniform; }
	std::vector<VariableDeclaration*>& GetMemberVariables() { return _vMembers; }
	const std::vector<VariableDeclaration*>& GetMemberVariables() const { return _vMembers; }
	size_t GetCountMemberVariables() const { return _vMembers.size(); }
	void AddMemberVariable(VariableDeclaration* pMember) { _vMembers.push_back(pMember); }

private:
	String* _pName;
	bool _bUniform = false;
	std::vector<VariableDeclaration*> _vMembers;
};

class InterfaceDefinition : public Declaration
{
public:
	InterfaceDefinition(Module* pModule, String* pName) : Declaration(pModule), _pName(pName) {}
	~InterfaceDefinition() override;
	TARSEL_DECLARATION_NODE(InterfaceDefinition);

	String* GetName() { return _pName; }
	const String* GetName() const { return _pName; }
	void SetName(String* pName);
	std::vector<FunctionPrototype*>& GetMemberFunctions() { return _vFunctions; }
	const std::vector<FunctionPrototype*>& GetMemberFunctions() const { return _vFunctions; }
	size_t GetCountMemberFunctions() const { return _vFunctions.size(); }
	void AddMemberFunction(FunctionPrototype* pFunction) { _vFunctions.push_back(pFunction); }

private:
	String* _pName;
	std::vector<FunctionPrototype*> _vFunctions;
};

class ClassDefinition : public Declaration
{
public:
	using Coords = std::map<std::string, VariableDeclaration*>;
	// By name text, not by node address, so that every walk over them (and the printed text) is the same
	// on every run.
	struct LessName
	{
		bool operator()(const String* pFirst, const String* pSecond) const
		{
			return pFirst->GetString() < pSecond->GetString();
		}
	};
	using Outputs = std::map<String*, Type*, LessName>;

	ClassDefinition(Module* pModule, String* pName) : Declaration(pModule), _pName(pName) {}
	~ClassDefinition() override;
	TARSEL_DECLARATION_NODE(ClassDefinition);

	String* GetName() { return _pName; }
	const String* GetName() const { return _pName; }
	void SetName(String* pName);
	// The interface the class implements, or null.
	String* GetInterface() { return _pInterface; }
	const String* GetInterface() const { return _pInterface; }
	void SetInterface(String* pInterface);
	std::vector<FunctionDefinition*>& GetMemberFunctions() { return _vFunctions; }
	const std::vector<FunctionDefinition*>& GetMemberFunctions() const { return _vFunctions; }
	size_t GetCountMemberFunctions() const { return _vFunctions.size(); }
	void AddMemberFunction(FunctionDefinition* pFunction) { _vFunctions.push_back(pFunction); }
	std::vector<VariableDeclaration*>& GetMemberVariables() { return _vVariables; }
	const std::vector<VariableDeclaration*>& GetMemberVariables() const { return _vVariables; }
	size_t GetCountMemberVariables() const { return _vVariables.size(); }
	void AddMemberVariable(VariableDeclaration* pVariable) { _vVariables.push_back(pVariable); }
	// Coordinates by name; false (and nothing entered) when the name is taken.
	const Coords& GetCoords() const { return _mCoords; }
	size_t GetCountCoords() const { return _mCoords.size(); }
	bool AddCoord(VariableDeclaration* pCoord);
	// Outputs keyed by their name object; false (and nothing entered) when the name text is taken.
	const Outputs& GetOutputs() const { return _mOutputs; }
	size_t GetCountOutputs() const { return _mOutputs.size(); }
	bool AddOutput(Type* pType, String* pName);

private:
	String* _pName;
	String* _pInterface = nullptr;
	std::vector<FunctionDefinition*> _vFunctions;
	std::vector<VariableDeclaration*> _vVariables;
	Coords _mCoords;
	Outputs _mOutputs;
};

} // namespace Tarsel::Effects
