#include "TreeBuilder.h"

#include "core/Assert.h"
#include "core/Console.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace Tarsel;
using namespace Tarsel::Effects;
using Tarsel::Effects::Test::TreeBuilder;

namespace
{

bool Named(const Variable* p, const char* pName)
{
	return p->GetIdentifier()->GetString() == pName;
}

// Replaces every variable of one name by the constant 1 and counts the constants it then visits.
class ReplaceVariable : public Visitor
{
public:
	using Visitor::Visit;
	explicit ReplaceVariable(const char* pName) : _pName(pName) {}
	int nConstantsVisited = 0;
	std::vector<Syntax*> vParents;

	bool Visit(Variable* p, TIParentSyntax<Expression>* pParent) override
	{
		if (Named(p, _pName))
		{
			vParents.push_back(pParent->GetParent());
			pParent->SetReplacement(p->GetModule()->CreateIntConstant(1));
		}
		return true;
	}
	bool Visit(IntConstant*, TIParentSyntax<Expression>*) override
	{
		++nConstantsVisited;
		return true;
	}

private:
	const char* _pName;
};

int CountStrings(const Module& m, const char* pText)
{
	int n = 0;
	for (const String* p : m.GetStrings())
		n += p->GetString() == pText;
	return n;
}

Statement* Walk(Visitor& visitor, Statement* p)
{
	TParentSyntaxNull<Statement> link;
	EXPECT_TRUE(p->AcceptVisitor(&visitor, &link));
	return p;
}

} // namespace

// Each holder must put the replacement into the child that asked for it and nowhere else.
TEST(SyntaxVisitor, ReplacementLandsInTheVisitedChild)
{
	Module m;
	TreeBuilder b(&m);
	using Leaf = std::function<Expression*()>;
	using Shape = std::function<Statement*(Leaf)>;
	auto x = [&] { return b.Var("x"); };
	auto condition = [&](Expression* p) { return m.CreateCondition(p); };
	const std::vector<Shape> vShapes = {
	    [&](Leaf t) { return b.Stmt(b.Bin(kOperator_Subtract, x(), t())); },
	    [&](Leaf t) { return b.Stmt(b.Bin(kOperator_Subtract, t(), x())); },
	    [&](Leaf t) { return b.Stmt(b.Assign(kOperator_Add, x(), t())); },
	    [&](Leaf t) { return b.Stmt(m.CreateSubscript(x(), t())); },
	    [&](Leaf t) { return b.Stmt(m.CreateSubscript(t(), x())); },
	    [&](Leaf t) { return b.Stmt(m.CreateConditional(x(), t(), x())); },
	    [&](Leaf t) { return b.Stmt(m.CreateConditional(x(), x(), t())); },
	    [&](Leaf t) { return b.Stmt(m.CreateConditional(t(), x(), x())); },
	    [&](Leaf t) {
		    return b.Stmt(b.Call("f", {x(), t(), x()}));
	    },
	    [&](Leaf t) { return b.Stmt(m.CreateFieldSelection(t(), m.CreateString("xy"))); },
	    [&](Leaf t) { return b.Stmt(m.CreatePostOperator(kOperator_Increment, t())); },
	    [&](Leaf t) { return b.Stmt(m.CreateUnaryOperator(kOperator_Subtract, t())); },
	    [&](Leaf t) { return b.Stmt(m.CreateFunctionSelection(t(), b.Call("g", {x()}))); },
	    [&](Leaf t) { return b.Stmt(m.CreateFunctionSelection(x(), b.Call("g", {t()}))); },
	    [&](Leaf t) { return b.Return(t()); },
	    [&](Leaf t) { return m.CreateDeclarationStatement(b.Decl(kType_Float, "d", t())); },
	    [&](Leaf t) { return m.CreateWhileStatement(condition(t()), b.Stmt(x())); },
	    [&](Leaf t) { return m.CreateWhileStatement(condition(x()), b.Stmt(t())); },
	    [&](Leaf t) { return m.CreateDoWhileStatement(b.Stmt(x()), t()); },
	    [&](Leaf t)
	    {
		    ForStatement* p = m.CreateForStatement(t());
		    p->SetCondition(condition(x()));
		    return p;
	    },
	    [&](Leaf t)
	    {
		    ForStatement* p = m.CreateForStatement(x());
		    p->SetInitialization(b.Stmt(t()));
		    p->SetStatement(b.Stmt(x()));
		    return p;
	    },
	    [&](Leaf t)
	    {
		    SelectionStatement* p = m.CreateSelectionStatement();
		    p->SetCondition(x());
		    p->SetThen(b.Stmt(x()));
		    p->SetElse(b.Stmt(t()));
		    return p;
	    },
	};
	for (size_t i = 0; i < vShapes.size(); ++i)
	{
		std::unique_ptr<Statement> pTree(vShapes[i]([&] { return b.Var("target"); }));
		std::unique_ptr<Statement> pExpected(vShapes[i]([&] { return b.Int(1); }));
		ReplaceVariable visitor("target");
		Walk(visitor, pTree.get());
		EXPECT_TRUE(pTree->Equals(pExpected.get())) << "shape " << i;
		EXPECT_EQ(1, visitor.nConstantsVisited) << "shape " << i;
		EXPECT_EQ(0, CountStrings(m, "target")) << "shape " << i; // the replaced variable is gone
	}
}

TEST(SyntaxVisitor, ReplacedConstantsAreVisitedAndOldNodesFreed)
{
	Module m;
	TreeBuilder b(&m);
	// a = x + x;
	std::unique_ptr<Statement> p(
	    b.Stmt(b.Assign(kOperator_Assign, b.Var("a"), b.Bin(kOperator_Add, b.Var("x"), b.Var("x")))));
	ReplaceVariable visitor("x");
	Walk(visitor, p.get());
	std::unique_ptr<Statement> pExpected(
	    b.Stmt(b.Assign(kOperator_Assign, b.Var("a"), b.Bin(kOperator_Add, b.Int(1), b.Int(1)))));
	EXPECT_TRUE(p->Equals(pExpected.get()));
	EXPECT_EQ(2, visitor.nConstantsVisited);
	ASSERT_EQ(2u, visitor.vParents.size());
	EXPECT_EQ(kClass_BinaryOperator, static_cast<Expression*>(visitor.vParents[0])->GetClass());
	EXPECT_EQ(0, CountStrings(m, "x"));
}

TEST(SyntaxVisitor, ParentLinksLeadUpwards)
{
	Module m;
	TreeBuilder b(&m);
	struct Probe : Visitor
	{
		using Visitor::Visit;
		Syntax* pParent = nullptr;
		Syntax* pGrandParent = nullptr;
		Class eFamily = kClass_Module;
		bool Visit(Variable* p, TIParentSyntax<Expression>* pLink) override
		{
			if (Named(p, "deep"))
			{
				eFamily = pLink->GetClass();
				pParent = pLink->GetParent();
				pGrandParent = pLink->GetParentSyntax()->GetParent();
			}
			return true;
		}
	} probe;
	Expression* pInner = b.Bin(kOperator_Multiply, b.Var("deep"), b.Int(2));
	Assignment* pOuter = b.Assign(kOperator_Assign, b.Var("a"), pInner);
	std::unique_ptr<Statement> p(b.Stmt(pOuter));
	Walk(probe, p.get());
	EXPECT_EQ(kClass_Expression, probe.eFamily);
	EXPECT_EQ(pInner, probe.pParent);
	EXPECT_EQ(pOuter, probe.pGrandParent);
}

TEST(SyntaxVisitor, StatementReplacedInPlaceInsideABlock)
{
	Module m;
	TreeBuilder b(&m);
	struct SwapMiddle : Visitor
	{
		using Visitor::Visit;
		std::vector<long> vSeen;
		bool Visit(ExpressionStatement* p, TIParentSyntax<Statement>* pLink) override
		{
			const auto* pValue = static_cast<const IntConstant*>(p->GetExpression());
			vSeen.push_back(pValue->GetValue());
			if (pValue->GetValue() == 2)
			{
				TreeBuilder b(p->GetModule());
				EXPECT_TRUE(pLink->SetReplacement(b.Stmt(b.Int(20))));
			}
			return true;
		}
	} visitor;
	std::unique_ptr<CompoundStatement> pBlock(
	    b.Block({b.Stmt(b.Int(1)), b.Stmt(b.Int(2)), b.Stmt(b.Int(3))}));
	Walk(visitor, pBlock.get());
	EXPECT_EQ((std::vector<long>{1, 2, 20, 3}), visitor.vSeen);
	std::unique_ptr<CompoundStatement> pExpected(
	    b.Block({b.Stmt(b.Int(1)), b.Stmt(b.Int(20)), b.Stmt(b.Int(3))}));
	EXPECT_TRUE(pBlock->Equals(pExpected.get()));
}

TEST(SyntaxVisitor, SecondPendingReplacementIsRefused)
{
	Module m;
	TreeBuilder b(&m);
	RecordingConsole console;
	ScopedMgrConsole scope(&console);
	struct Twice : Visitor
	{
		using Visitor::Visit;
		bool bSecond = true;
		bool Visit(Variable* p, TIParentSyntax<Expression>* pLink) override
		{
			Module* pModule = p->GetModule();
			EXPECT_TRUE(pLink->SetReplacement(pModule->CreateIntConstant(1)));
			Expression* pSecond = pModule->CreateIntConstant(2);
			bSecond = pLink->SetReplacement(pSecond);
			Syntax::Destroy(pSecond);
			return true;
		}
	} visitor;
	std::unique_ptr<Statement> p(b.Stmt(b.Var("x")));
	Walk(visitor, p.get());
	EXPECT_FALSE(visitor.bSecond);
	EXPECT_EQ(std::vector<std::string>{"TParentSyntaxDelegate::SetReplacement Not Replaced\n"},
	          console.GetMessages());
	std::unique_ptr<Statement> pExpected(b.Stmt(b.Int(1)));
	EXPECT_TRUE(p->Equals(pExpected.get()));
}

TEST(SyntaxVisitor, NarrowLinksAcceptOnlyTheirClass)
{
	Module m;
	TreeBuilder b(&m);
	RecordingAssertHandler handler;
	ScopedAssertHandler scope(&handler);
	// Replaces the call of a function selection, and a for loop's condition, with whatever it is told.
	struct Narrow : Visitor
	{
		using Visitor::Visit;
		std::function<Expression*(Module*)> make;
		bool Visit(FunctionCall* p, TIParentSyntax<Expression>* pLink) override
		{
			if (p->GetName()->GetString() == "old")
				pLink->SetReplacement(make(p->GetModule()));
			return true;
		}
		bool Visit(Condition* p, TIParentSyntax<Expression>* pLink) override
		{
			if (p->GetExpression()->GetClass() == kClass_Variable)
				pLink->SetReplacement(make(p->GetModule()));
			return true;
		}
	} visitor;

	visitor.make = [](Module* pModule) { return pModule->CreateFunctionCall(pModule->CreateString("new")); };
	std::unique_ptr<Statement> pSelect(b.Stmt(m.CreateFunctionSelection(b.Var("light"), b.Call("old", {}))));
	Walk(visitor, pSelect.get());
	std::unique_ptr<Statement> pExpected(
	    b.Stmt(m.CreateFunctionSelection(b.Var("light"), b.Call("new", {}))));
	EXPECT_TRUE(pSelect->Equals(pExpected.get()));

	visitor.make = [](Module* pModule)
	{ return pModule->CreateCondition(pModule->CreateBoolConstant(true)); };
	ForStatement* pFor = m.CreateForStatement(nullptr);
	pFor->SetCondition(m.CreateCondition(b.Var("go")));
	std::unique_ptr<Statement> pLoop(pFor);
	Walk(visitor, pLoop.get());
	EXPECT_EQ(kClass_BoolConstant, pFor->GetCondition()->GetExpression()->GetClass());
	EXPECT_TRUE(handler.GetReports().empty());

	// A plain expression cannot stand where a call must: refused, reported, the walk stops, nothing leaks.
	visitor.make = [](Module* pModule) { return pModule->CreateIntConstant(0); };
	std::unique_ptr<Statement> pBad(b.Stmt(m.CreateFunctionSelection(b.Var("light"), b.Call("old", {}))));
	TParentSyntaxNull<Statement> link;
	EXPECT_FALSE(pBad->AcceptVisitor(&visitor, &link));
	EXPECT_EQ(1u, handler.GetReports().size());
	std::unique_ptr<Statement> pUnchanged(
	    b.Stmt(m.CreateFunctionSelection(b.Var("light"), b.Call("old", {}))));
	EXPECT_TRUE(pBad->Equals(pUnchanged.get()));
}

TEST(SyntaxVisitor, ModuleWalkOrderAndStops)
{
	Module m;
	TreeBuilder b(&m);
	struct Recorder : Visitor
	{
		using Visitor::Visit;
		std::vector<std::string> vSeen;
		std::string sStopAt;
		bool Visit(FunctionPrototype* p) override
		{
			vSeen.push_back(p->GetName()->GetString());
			return Visitor::Visit(p);
		}
		bool Visit(VariableDeclaration* p) override
		{
			vSeen.push_back("var " + p->GetIdentifier()->GetString());
			return Visitor::Visit(p);
		}
		bool Visit(Variable* p, TIParentSyntax<Expression>*) override
		{
			vSeen.push_back("use " + p->GetIdentifier()->GetString());
			return p->GetIdentifier()->GetString() != sStopAt;
		}
	} recorder;

	m.AddVariableDeclaration(m.CreateDeclarationStatement(b.Decl(kType_Float, "global", b.Var("seed"))));
	m.AddFunctionDeclaration(b.Proto(kType_Void, "declared", {}));
	m.AddFunctionDefinition(
	    m.CreateFunctionDefinition(b.Proto(kType_Void, "first", {}), b.Block({b.Stmt(b.Var("u"))})));
	m.AddFunctionDefinition(
	    m.CreateFunctionDefinition(b.Proto(kType_Void, "second", {}), b.Block({b.Stmt(b.Var("v"))})));
	ClassDefinition* pClass = m.CreateClassDefinition(m.CreateString("C"));
	pClass->AddMemberFunction(m.CreateFunctionDefinition(b.Proto(kType_Void, "method", {}), b.Block({})));
	pClass->AddMemberVariable(b.Decl(kType_Float, "member"));
	m.AddClassDefinition(pClass);
	for (const char* pName : {"Zeta", "Alpha"})
	{
		InterfaceDefinition* p = m.CreateInterfaceDefinition(m.CreateString(pName));
		p->AddMemberFunction(b.Proto(kType_Void, pName, {}));
		m.AddInterfaceDefinition(p);
	}
	StructDefinition* pStruct = m.CreateStructDefinition(m.CreateString("S"));
	pStruct->AddMemberVariable(b.Decl(kType_Float, "field"));
	m.AddStructDefinition(pStruct);
	m.AddStatement(b.Stmt(b.Var("loose")));
	m.AddExpression(b.Var("looser"));

	EXPECT_TRUE(m.AcceptVisitor(&recorder));
	EXPECT_EQ((std::vector<std::string>{"var global", "use seed", "declared", "first", "use u", "second",
	                                    "use v", "var member", "method", "Alpha", "Zeta"}),
	          recorder.vSeen);

	recorder.vSeen.clear();
	EXPECT_TRUE(pStruct->AcceptVisitor(&recorder));
	EXPECT_EQ(std::vector<std::string>{"var field"}, recorder.vSeen);

	recorder.vSeen.clear();
	recorder.sStopAt = "u";
	EXPECT_FALSE(m.AcceptVisitor(&recorder));
	EXPECT_EQ("use u", recorder.vSeen.back());

	// The const walk sees the same nodes.
	struct ConstCount : Visitor
	{
		using Visitor::Visit;
		int n = 0;
		bool Visit(const Variable*, TParentSyntaxConst<Expression>*) override { return ++n > 0; }
	} constCount;
	EXPECT_TRUE(static_cast<const Module&>(m).AcceptVisitor(&constCount));
	EXPECT_EQ(3, constCount.n);
}

TEST(SyntaxVisitor, DelegateVisitorsSeeChildrenFirst)
{
	Module m;
	TreeBuilder b(&m);
	struct Listener
	{
		std::vector<std::string> vSeen;
		bool OnSubscript(Subscript* p, TIParentSyntax<Expression>*)
		{
			vSeen.push_back(static_cast<Variable*>(p->GetArray())->GetIdentifier()->GetString());
			return true;
		}
		bool OnVariable(const Variable* p, TParentSyntaxConst<Expression>*)
		{
			vSeen.push_back(p->GetIdentifier()->GetString());
			return true;
		}
		bool OnSelection(FunctionSelection* p, TIParentSyntax<Expression>*, int* pCount)
		{
			++*pCount;
			return p->GetFunction() != nullptr;
		}
	} listener;
	// a[b[1]]
	std::unique_ptr<Statement> p(
	    b.Stmt(m.CreateSubscript(b.Var("a"), m.CreateSubscript(b.Var("b"), b.Int(1)))));
	TVisitorSyntaxDelegate<Subscript, TIParentSyntax<Expression>> visitor(
	    MakeDelegate(&listener, &Listener::OnSubscript));
	Walk(visitor, p.get());
	EXPECT_EQ((std::vector<std::string>{"b", "a"}), listener.vSeen);

	listener.vSeen.clear();
	TVisitorSyntaxConstDelegate<Variable, TParentSyntaxConst<Expression>> constVisitor(
	    MakeDelegate(&listener, &Listener::OnVariable));
	TParentSyntaxConst<Statement> constLink;
	EXPECT_TRUE(static_cast<const Statement*>(p.get())->AcceptVisitor(&constVisitor, &constLink));
	EXPECT_EQ((std::vector<std::string>{"a", "b"}), listener.vSeen);

	int nCount = 0;
	std::unique_ptr<Statement> pSelect(b.Stmt(
	    m.CreateFunctionSelection(m.CreateFunctionSelection(b.Var("x"), b.Call("f", {})), b.Call("g", {}))));
	TVisitorSyntaxDelegate1<FunctionSelection, TIParentSyntax<Expression>, int*> counter(
	    MakeDelegate(&listener, &Listener::OnSelection), &nCount);
	Walk(counter, pSelect.get());
	EXPECT_EQ(2, nCount);
}
