#pragma once

#include <set>
#include <string>
#include <vector>

#include "core/Console.h"
#include "core/Result.h"
#include "effects/IParameter.h"
#include "effects/IPrototypeInterface.h"
#include "effects/IPrototypeShader.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "graph/IReferenceShader.h"
#include "graph/ReferencePrototypeShader.h"
#include "manager/MgrEffectsImpl.h"
#include "quillon/Reference.h"
#include "syntax/VisitorDelegate.h"

#include <gtest/gtest.h>

namespace Tarsel::Effects::Testing
{

// Counts the calls of a listener or visitor.
template <class A>
struct Counter
{
	int n = 0;
	bool On(A)
	{
		++n;
		return true;
	}
	FastDelegate1<A, bool> Delegate() { return MakeDelegate(this, &Counter::On); }
};

// A manager on the reference device with a recording console.
class ShaderTest : public ::testing::Test
{
protected:
	ShaderTest() { mgr.Init(&console, &context, nullptr); }
	~ShaderTest() override { mgr.Shutdown(); }

	MgrEffectsImpl* Impl() { return mgr.GetImplementation(); }

	// Registers a library and fails the test when it does not parse.
	void Load(const std::string& name, const std::string& source)
	{
		Result result;
		ASSERT_TRUE(mgr.AddLibrary(name, source, &result)) << result.GetText();
	}
	// Creates a shader and fails the test when it cannot be made.
	IShader* Create(const std::string& className)
	{
		Result result;
		IShader* shader = mgr.CreateShader(className, &result);
		EXPECT_NE(shader, nullptr) << result.GetText();
		return shader;
	}
	// Every message of a result, joined, for substring checks.
	static std::string Text(const Result& result)
	{
		std::string text;
		for (const std::string& message : result.GetMessages())
			text += message + "|";
		return text;
	}
	static float GetFloat(IShader* shader, const std::string& name, int index = 0)
	{
		float value = -1.0f;
		IParameter* parameter = shader->GetParameter(name);
		EXPECT_TRUE(parameter && parameter->Get(value, index)) << name;
		return value;
	}
	static std::string Messages(const std::vector<std::string>& messages)
	{
		std::string text;
		for (const std::string& message : messages)
			text += message;
		return text;
	}

	ReferenceContext context;
	RecordingConsole console;
	MgrEffects mgr;
};

// What a module holds, by name: function definitions, called functions and global declarations.
class ModuleNames
{
public:
	explicit ModuleNames(const Module& module)
	{
		for (const FunctionDefinition* function : module.GetFunctionDefinitions())
			functions.insert(function->GetFunctionPrototype()->GetName()->GetString());
		for (const DeclarationStatement* statement : module.GetVariableDeclarations())
			globals.insert(statement->GetDeclaration()->GetIdentifier()->GetString());
		TVisitorSyntaxConstDelegate<FunctionCall, TParentSyntaxConst<Expression>> callVisitor(
		    MakeDelegate(this, &ModuleNames::_OnCall));
		module.AcceptVisitor(&callVisitor);
		TVisitorSyntaxConstDelegate<Variable, TParentSyntaxConst<Expression>> variableVisitor(
		    MakeDelegate(this, &ModuleNames::_OnVariable));
		module.AcceptVisitor(&variableVisitor);
	}
	std::set<std::string> functions;
	std::set<std::string> calls;
	std::set<std::string> globals;
	std::set<std::string> variables;

private:
	bool _OnVariable(const Variable* variable, TParentSyntaxConst<Expression>*)
	{
		variables.insert(variable->GetIdentifier()->GetString());
		return true;
	}
	bool _OnCall(const FunctionCall* call, TParentSyntaxConst<Expression>*)
	{
		if (call->GetName())
			calls.insert(call->GetName()->GetString());
		return true;
	}
};

// The code a shader adds to a graph's module.
inline ModuleNames CollectedNames(IShader* shader)
{
	Module module;
	EXPECT_TRUE(shader->CollectShader(&module));
	return ModuleNames(module);
}

} // namespace Tarsel::Effects::Testing
