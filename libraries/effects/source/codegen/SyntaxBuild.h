#pragma once

#include <string>

#include "syntax/Module.h"

namespace Tarsel::Effects
{

// Small builders for the generated entry-point and vertex programs, which are made of calls, assignments
// and plain declarations only.

inline Variable* BuildVariable(Module* module, const std::string& name)
{
	return module->CreateVariable(module->CreateString(name));
}

inline FunctionCall* BuildCall(Module* module, const std::string& name)
{
	return module->CreateFunctionCall(module->CreateString(name));
}

inline void AddExpression(Module* module, CompoundStatement* body, Expression* expression)
{
	body->AddStatement(module->CreateExpressionStatement(expression));
}

inline void AddAssignment(Module* module, CompoundStatement* body, Expression* left, Expression* right)
{
	AddExpression(module, body, module->CreateAssignment(kOperator_Assign, left, right));
}

// A void function without parameters.
inline FunctionPrototype* BuildPrototypeVoid(Module* module, const std::string& name)
{
	return module->CreateFunctionPrototype(kFunction_None, module->CreateType(kType_Void),
	                                       module->CreateString(name));
}

inline bool DefineFunctionVoid(Module* module, const std::string& name, CompoundStatement* body)
{
	return module->AddFunctionDefinition(
	    module->CreateFunctionDefinition(BuildPrototypeVoid(module, name), body));
}

inline void DeclareGlobal(Module* module, StorageQualifier qualifier, TypeSpecifier type,
                          const std::string& name)
{
	VariableDeclaration* declaration =
	    module->CreateVariableDeclaration(module->CreateType(type), module->CreateString(name), nullptr);
	declaration->SetStorageQualifier(qualifier);
	module->AddVariableDeclaration(module->CreateDeclarationStatement(declaration));
}

} // namespace Tarsel::Effects
