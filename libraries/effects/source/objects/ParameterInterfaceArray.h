#pragma once

#include "objects/ParameterInterface.h"

namespace Tarsel::Effects
{

class ClassDefinition;
class CompoundStatement;
class FieldSelection;
class ForStatement;
class FunctionPrototype;
class InterfaceDefinition;
class Statement;
class Type;

// An array of connected shaders. In the owner's code, array[i].m(args) goes through a dispatch function that
// picks element i, array.length reads the count uniform, and counted loops over the array are unrolled so
// that each copy of the body calls its element directly. Resizable when declared without a length.
class ParameterInterfaceArray : public ParameterInterface
{
public:
	// Exactly one of the definitions is given: the element type's interface or class. Null when Init fails.
	static ParameterInterfaceArray* Create(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
	                                       const InterfaceDefinition* pInterface,
	                                       const ClassDefinition* pClass, const std::string& sName,
	                                       const std::string& sOwner, int nLength, Result* pResult);

	ParameterInterfaceArray() = default;

	// A declared length of 0 makes a resizable array of one empty slot.
	bool Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
	          const InterfaceDefinition* pInterface, const std::string& sName, const std::string& sOwner,
	          int nLength, Result* pResult);
	bool Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const ClassDefinition* pClass,
	          const std::string& sName, const std::string& sOwner, int nLength, Result* pResult);

	using ParameterInterface::Get;
	using ParameterInterface::Set;

	// The count uniform.
	bool CollectShader(Module* pModule) override;
	// A dispatch function for every method, with the declarations of the element methods it calls.
	bool CollectShaderGenerated(Module* pModule) override;
	bool VisitTransformations(VisitorTransformation& delegate) override;
	bool IsArray() const override { return true; }
	bool SetLength(int nLength) override;

	bool Set(IShader* pShader, int index) override;
	// Replaces every element: the first count from the shaders, the rest left empty.
	bool Set(IShader** ppShaders, int nCount) override;

	const std::string& GetNameCount() const { return _sNameCount; }
	std::string GetNameDispatch(const std::string& sMethod) const { return _sNameMangled + "_" + sMethod; }

private:
	bool _Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const std::string& sName,
	           int nLength, Result* pResult);
	bool _ReportMismatch(IShader* pShader) const;
	bool _InitInitializer(Result* pResult);
	// Defaults of the single constructor for the slots from iBegin up to iEnd.
	bool _InitDefaults(const FunctionCall* pInit, int iBegin, int iEnd, Result* pResult);
	bool _InitDefaultsArray(const FunctionCall* pInit, Result* pResult);
	// The initializer when it is one constructor for every element, else null.
	const FunctionCall* _GetSingleConstructor() const;

	// The methods that get a dispatch function: the interface's, or the element class's non-static ones.
	std::vector<const FunctionPrototype*> _GetMethods() const;
	bool _HasDispatch(const std::string& sMethod) const;
	bool _CreateFunctionsSwitch(Module* pModule);
	bool _CreateFunctionSwitch(Module* pModule, const FunctionPrototype* pMethod);
	bool _CreateFunctionSwitchBody(Module* pModule, const FunctionPrototype* pMethod,
	                               CompoundStatement* pBody);
	FunctionCall* _CreateCallFunctionSwitch(Module* pModule, const FunctionPrototype* pMethod,
	                                        const std::string& sName);
	Statement* _CreateStatementFunctionSwitch(Module* pModule, const FunctionPrototype* pMethod,
	                                          const std::string& sName);

	bool _UnrollLoop(ForStatement* pLoop, TIParentSyntax<Statement>* pParent);
	bool _ReplaceReference(FunctionSelection* pSelection, TIParentSyntax<Expression>* pParent);
	bool _ReplaceReferenceLength(FieldSelection* pSelection, TIParentSyntax<Expression>* pParent);

	const InterfaceDefinition* _pInterface = nullptr;
	const ClassDefinition* _pClassDefinition = nullptr;
	std::string _sNameCount;
};

// The value a dispatch function returns when no element matches; null for void and for types without a zero
// (textures, primitives, structs, arrays).
Expression* CreateZeroValue(Module* pModule, const Type* pType);

} // namespace Tarsel::Effects
