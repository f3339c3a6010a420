#include "PrintTestSupport.h"

#include "codegen/VisitorFindEmptyAndNeverCalledFunctions.h"

namespace Tarsel::Effects::Testing
{
namespace
{

// The marks of one function's declaration, definition and calls, in that order, as digits.
struct Marks
{
	FunctionPrototype* pDeclaration = nullptr;
	FunctionDefinition* pDefinition = nullptr;
	std::vector<FunctionCall*> vCalls;

	std::string Text() const
	{
		std::string s = std::to_string(pDeclaration->GetOptimization());
		s += pDefinition ? std::to_string(pDefinition->GetOptimization()) : "-";
		for (const FunctionCall* pCall : vCalls)
			s += std::to_string(pCall->GetOptimization());
		return s;
	}
};

// A module without a graph, so without entry points, declared the way a graph declares its definitions.
TEST(UnusedFunctions, OnlyWhatIsProvablyUnusedIsMarked)
{
	Tree t;
	auto Declare = [&](const char* pName, TypeSpecifier eParameter)
	{
		FunctionPrototype* p = t.Proto(kType_Void, pName, {t.Parameter(t.m->CreateType(eParameter), "v")});
		t.m->AddFunctionDeclaration(p);
		return p;
	};
	Marks empty{Declare("empty", kType_Float), t.Define(t.Proto(kType_Void, "empty"), {}), {}};
	Marks idle{
	    Declare("idle", kType_Float), t.Define(t.Proto(kType_Void, "idle"), {t.E(t.Call("work"))}), {}};
	Marks work{Declare("work", kType_Float), t.Define(t.Proto(kType_Void, "work"), {t.E(t.V("x"))}), {}};
	Marks external{Declare("external", kType_Float), nullptr, {}};
	// Two overloads, the empty one first, then a second declaration of the other: f stays whole.
	Marks over{Declare("f", kType_Float), t.Define(t.Proto(kType_Void, "f"), {}), {t.Call("f", {t.V("x")})}};
	Declare("f", kType_Vec3);
	Declare("f", kType_Vec3);
	Marks pass{Declare("pass", kType_Float),
	           t.Define(t.Proto(kType_Void, "pass"), {}),
	           {t.Call("pass", {t.Op(kOperator_Add, t.V("x"), t.I(1))})}};
	// An empty function with a value is called inside an expression: it must stay whole.
	Marks valued{Declare("valued", kType_Float),
	             t.Define(t.Proto(kType_Float, "valued"), {}),
	             {t.Call("valued", {t.V("x")})}};
	t.Define(t.Proto(kType_Void, "caller"),
	         {t.E(over.vCalls[0]), t.E(pass.vCalls[0]), t.E(t.Op(kOperator_Add, valued.vCalls[0], t.I(1)))});
	Declare("caller", kType_Float);

	VisitorFindEmptyAndNeverCalledFunctions optimizer(nullptr);
	ASSERT_TRUE(optimizer.Visit(t.m.get()));
	EXPECT_EQ(empty.Text(), "11");    // empty wins over never called
	EXPECT_EQ(idle.Text(), "22");     // nothing calls it
	EXPECT_EQ(work.Text(), "00");     // called, if only from a function that goes: one sweep
	EXPECT_EQ(external.Text(), "2-"); // declared for another program and not called here
	EXPECT_EQ(over.Text(), "000");
	EXPECT_EQ(pass.Text(), "111");
	EXPECT_EQ(valued.Text(), "000");
}

// The pass reads calls from the module's list; a call made by another module and put into this tree is a
// bug in the code that built it, which debug builds stop at rather than let its function go.
TEST(UnusedFunctionsDeathTest, ACallMadeByAnotherModuleStopsDebugBuilds)
{
	Module other; // outlives the tree that holds its call
	Tree t;
	t.Define(t.Proto(kType_Void, "work"), {t.E(t.V("x"))});
	t.Define(t.Proto(kType_Void, "caller"), {t.E(other.CreateFunctionCall(other.CreateString("work")))});
	VisitorFindEmptyAndNeverCalledFunctions optimizer(nullptr);
	EXPECT_DEBUG_DEATH(optimizer.Visit(t.m.get()), "call outside its module's list");
}

// Marks taken back leave every node as the pass found it, so that code shared with other programs prints
// whole there.
TEST(UnusedFunctions, ClearingTakesEveryMarkBack)
{
	Tree t;
	FunctionDefinition* pEmpty = t.Define(t.Proto(kType_Void, "empty"), {});
	FunctionDefinition* pIdle = t.Define(t.Proto(kType_Void, "idle"), {t.E(t.Call("empty"))});
	for (FunctionDefinition* pDefinition : {pEmpty, pIdle})
		t.m->AddFunctionDeclaration(pDefinition->GetFunctionPrototype()->Clone(t.m.get()));
	VisitorFindEmptyAndNeverCalledFunctions optimizer(nullptr);
	ASSERT_TRUE(optimizer.Visit(t.m.get()));
	ASSERT_EQ(pEmpty->GetOptimization(), kOptimization_Empty);
	ASSERT_EQ(pIdle->GetOptimization(), kOptimization_NeverCalled);
	optimizer.ClearMarks();
	for (const FunctionDefinition* pDefinition : t.m->GetFunctionDefinitions())
		EXPECT_EQ(pDefinition->GetOptimization(), kOptimization_Kept);
	for (const FunctionPrototype* pDeclaration : t.m->GetFunctionDeclarations())
		EXPECT_EQ(pDeclaration->GetOptimization(), kOptimization_Kept);
	for (const FunctionCall* pCall : t.m->GetFunctionCalls())
		EXPECT_EQ(pCall->GetOptimization(), kOptimization_Kept);
}

// Far more functions than the pass reads ahead, with names too long to sit in their string nodes: every
// mark must land on the node it was decided for. Every seventh function is empty, the others call two.
TEST(UnusedFunctions, EveryMarkOfALargeModuleLandsOnItsOwnNode)
{
	constexpr int n = 500;
	const auto Name = [](int i) { return "AFunctionWithALongName_" + std::to_string(i); };
	const auto Callees = [&](int i) { return std::vector<int>{(i * 7 + 1) % n, (i * 13 + 3) % n}; };
	const auto IsEmpty = [](int i) { return i % 7 == 0; };
	std::string sText;
	std::vector<bool> vCalled(n);
	for (int i = 0; i < n; ++i)
	{
		sText += "void " + Name(i) + "(float a)\n{\n";
		if (!IsEmpty(i))
			for (int iCallee : Callees(i))
			{
				sText += "\t" + Name(iCallee) + "(a);\n";
				vCalled[iCallee] = true;
			}
		sText += "}\n";
	}
	std::unique_ptr<Module> pModule(Module::Create());
	std::vector<std::string> vErrors;
	ASSERT_TRUE(TslParser::Parse(pModule.get(), vErrors, "large", sText, 0));
	const std::vector<FunctionDefinition*> vDefinitions = pModule->GetFunctionDefinitions();
	for (FunctionDefinition* pDefinition : vDefinitions)
		pModule->AddFunctionDeclaration(pDefinition->GetFunctionPrototype()->Clone(pModule.get()));

	VisitorFindEmptyAndNeverCalledFunctions optimizer(nullptr);
	ASSERT_TRUE(optimizer.Visit(pModule.get()));
	const auto Expected = [&](int i) {
		return IsEmpty(i) ? kOptimization_Empty : vCalled[i] ? kOptimization_Kept : kOptimization_NeverCalled;
	};
	const auto NumberOf = [&](const String* pName)
	{ return std::stoi(pName->GetString().substr(Name(0).size() - 1)); };
	for (int i = 0; i < n; ++i)
	{
		ASSERT_EQ(vDefinitions[i]->GetOptimization(), Expected(i)) << Name(i);
		ASSERT_EQ(pModule->GetFunctionDeclarations()[i]->GetOptimization(), Expected(i)) << Name(i);
	}
	for (const FunctionCall* pCall : pModule->GetFunctionCalls())
		ASSERT_EQ(pCall->GetOptimization(),
		          IsEmpty(NumberOf(pCall->GetName())) ? kOptimization_Empty : kOptimization_Kept)
		    << pCall->GetName()->GetString();
}

} // namespace
} // namespace Tarsel::Effects::Testing
