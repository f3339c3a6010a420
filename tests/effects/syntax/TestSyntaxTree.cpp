#include "TreeBuilder.h"

#include "core/Assert.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <thread>

using namespace Tarsel;
using namespace Tarsel::Effects;
using Tarsel::Effects::Test::TreeBuilder;

namespace
{

// Every node reachable through the default walk, with the strings they hold.
class Collector : public Visitor
{
public:
	using Visitor::Visit;
	std::set<const void*> nodes;
	std::set<const void*> strings;

	bool Visit(const Variable* p, TParentSyntaxConst<Expression>* pParent) override
	{
		strings.insert(p->GetIdentifier());
		return Add(p) && Visitor::Visit(p, pParent);
	}
	bool Visit(const BinaryOperator* p, TParentSyntaxConst<Expression>* pParent) override
	{
		return Add(p) && Visitor::Visit(p, pParent);
	}
	bool Visit(const FunctionCall* p, TParentSyntaxConst<Expression>* pParent) override
	{
		if (p->GetName())
			strings.insert(p->GetName());
		return Add(p) && Visitor::Visit(p, pParent);
	}
	bool Visit(const CompoundStatement* p, TParentSyntaxConst<Statement>* pParent) override
	{
		return Add(p) && Visitor::Visit(p, pParent);
	}
	bool Visit(const ForStatement* p, TParentSyntaxConst<Statement>* pParent) override
	{
		return Add(p) && Visitor::Visit(p, pParent);
	}
	bool Visit(const VariableDeclaration* p) override
	{
		strings.insert(p->GetIdentifier());
		return Add(p) && Visitor::Visit(p);
	}

private:
	bool Add(const void* p)
	{
		nodes.insert(p);
		return true;
	}
};

Collector Collect(const FunctionDefinition* p)
{
	Collector collector;
	p->AcceptVisitor(&collector);
	return collector;
}

} // namespace

TEST(SyntaxTables, TextsSizesAndChannels)
{
	EXPECT_STREQ("Expression", ClassToString(kClass_Expression));
	EXPECT_STREQ("Do While Statement", ClassToString(kClass_DoWhileStatement));
	EXPECT_STREQ("Module", ClassToString(kClass_Module));
	EXPECT_STREQ("Unknown", ClassToString(static_cast<Class>(42)));
	EXPECT_STREQ("Unknown", ClassToString(static_cast<Class>(-1)));
	EXPECT_STREQ("||", OperatorToString(kOperator_LogicalOr));
	EXPECT_STREQ(",", OperatorToString(kOperator_Comma));
	EXPECT_STREQ("Unknown", OperatorToString(static_cast<Operator>(24)));
	EXPECT_STREQ("UNKNOWN", TypeSpecifierToString(static_cast<TypeSpecifier>(21)));
	EXPECT_STREQ("samplerCube", TypeSpecifierToString(kType_SamplerCube));
	EXPECT_EQ(36u, TypeSpecifierToSizeInBytes(kType_Mat3));
	EXPECT_EQ(0u, TypeSpecifierToSizeInBytes(kType_BVec3));
	EXPECT_EQ(0u, TypeSpecifierToSizeInBytes(static_cast<TypeSpecifier>(99)));
	EXPECT_EQ(0, TypeSpecifierToCountChannels(kType_UserDefined));
	EXPECT_EQ(4, TypeSpecifierToCountChannels(kType_Mat4));
	EXPECT_STREQ("", StorageQualifierToString(kStorage_None));
	EXPECT_STREQ("Unknown", StorageQualifierToString(kStorage_Reserved3));
	EXPECT_STREQ("Unknown", StorageQualifierToString(kStorage_Coord));
	EXPECT_STREQ("transformed invariant varying",
	             StorageQualifierToString(kStorage_TransformedInvariantVarying));
	EXPECT_STREQ("input", StorageQualifierToString(kStorage_Input));
}

TEST(SyntaxRange, FirstAndLastCombineBeginEndAndSource)
{
	Module m;
	TreeBuilder b(&m);
	const std::string sA = "dir/a.tsl", sB = "b.tsl";
	std::unique_ptr<Expression> pFirst(b.Int(1)), pLast(b.Int(2));
	pFirst->SetRange(TreeBuilder::Range(2, 4, 2, 5, &sA));
	pLast->SetRange(TreeBuilder::Range(3, 0, 3, 7, nullptr));

	std::unique_ptr<Expression> p(b.Int(3));
	p->SetRange(pFirst.get(), pLast.get());
	EXPECT_EQ(TreeBuilder::Range(2, 4, 3, 7, &sA),
	          p->GetRange()); // the last has no source: the first's stays
	p->SetRange(pLast.get(), TreeBuilder::Range(9, 1, 9, 12, &sB));
	EXPECT_EQ(TreeBuilder::Range(3, 0, 9, 12, &sB), p->GetRange());
	p->SetRange(TreeBuilder::Range(1, 1, 1, 2, &sB), pFirst.get());
	EXPECT_EQ(TreeBuilder::Range(1, 1, 2, 5, &sA), p->GetRange());

	p->ExpandRange(pLast.get());
	EXPECT_EQ(TreeBuilder::Range(1, 1, 3, 7, &sA), p->GetRange());
	EXPECT_EQ("a.tsl:1", p->GetRange().GetLocationText());
	p->ClearRange();
	EXPECT_EQ(LocationRange(), p->GetRange());
	EXPECT_EQ("<generated>:0", p->GetRange().GetLocationText());
}

// Ranges keep their names as one shared pair; a join must still combine the last one's library with the
// first one's file, and threads parsing at once must agree on the pairs.
TEST(SyntaxRange, NamesAreSharedPairsThatJoinsCombine)
{
	const std::string sLibrary = "lib", sOther = "other", sIncluded = "inc.tsl";
	const LocationRange included(&sLibrary, 1, 0, 1, 4, &sIncluded);
	EXPECT_EQ(included._pFiles, LocationRange(&sLibrary, 7, 0, 9, 1, &sIncluded)._pFiles);
	EXPECT_NE(included._pFiles, LocationRange(&sLibrary, 1, 0, 1, 4)._pFiles);
	const std::string* pUnknown = nullptr;
	EXPECT_EQ(nullptr, LocationRange(pUnknown, 1, 0, 1, 4)._pFiles);

	Module m;
	TreeBuilder b(&m);
	std::unique_ptr<Expression> p(b.Int(1));
	p->SetRange(included, LocationRange(&sOther, 3, 0, 3, 2));
	EXPECT_EQ(&sOther, p->GetRange().GetSource());
	EXPECT_EQ(&sIncluded, p->GetRange().GetFileWritten());
	EXPECT_EQ("inc.tsl:1", p->GetRange().GetLocationText());

	std::vector<const SourceFiles*> vFound(4);
	std::vector<std::thread> vThreads;
	for (size_t i = 0; i < vFound.size(); ++i)
		vThreads.emplace_back([&, i] { vFound[i] = SourceFiles::Intern(&sOther, &sIncluded); });
	for (std::thread& thread : vThreads)
		thread.join();
	for (const SourceFiles* pFound : vFound)
		EXPECT_EQ(p->GetRange()._pFiles, pFound);
}

TEST(SyntaxRange, CompoundStatementSpansItsStatements)
{
	Module m;
	TreeBuilder b(&m);
	Statement* aStatements[] = {b.Stmt(b.Int(1)), b.Stmt(b.Int(2)), b.Stmt(b.Int(3))};
	for (int i = 0; i < 3; ++i)
		aStatements[i]->SetRange(TreeBuilder::Range(5 + i, 2 + i, 5 + i, 8 + i));
	std::unique_ptr<CompoundStatement> pBlock(m.CreateCompoundStatement());
	for (Statement* p : aStatements)
		pBlock->AddStatement(p);
	EXPECT_EQ(TreeBuilder::Range(5, 2, 7, 10), pBlock->GetRange());

	// The constructor's first statement leaves the range alone.
	Statement* pFirst = b.Stmt(b.Int(4));
	pFirst->SetRange(TreeBuilder::Range(1, 1, 1, 3));
	std::unique_ptr<CompoundStatement> pOther(m.CreateCompoundStatement(pFirst));
	EXPECT_EQ(LocationRange(), pOther->GetRange());
	EXPECT_EQ(1u, pOther->GetCountStatements());
}

TEST(SyntaxEquals, ComparesStructureNotSpelling)
{
	Module m;
	TreeBuilder b(&m);
	auto equal = [](Syntax* pA, Syntax* pB)
	{
		std::unique_ptr<Syntax> a(pA), bb(pB);
		if (auto* pE = dynamic_cast<Expression*>(pA))
			return pE->Equals(static_cast<Expression*>(pB));
		return static_cast<Statement*>(pA)->Equals(static_cast<Statement*>(pB));
	};
	EXPECT_TRUE(equal(b.Int(3), b.Int(3)));
	EXPECT_FALSE(equal(b.Int(3), b.Float("3.0")));
	EXPECT_FALSE(equal(b.Float("3.0"), b.Int(3)));
	EXPECT_TRUE(equal(b.Float("1.0"), b.Float("1.00")));
	EXPECT_TRUE(equal(b.Return(), b.Return()));
	EXPECT_FALSE(equal(b.Return(), b.Return(b.Int(0))));
	EXPECT_FALSE(equal(b.Return(b.Int(0)), b.Return()));
	EXPECT_FALSE(
	    equal(m.CreateJumpStatement(kJump_Break, nullptr), m.CreateJumpStatement(kJump_Continue, nullptr)));
	EXPECT_FALSE(equal(b.Bin(kOperator_Subtract, b.Var("a"), b.Var("b")),
	                   b.Bin(kOperator_Subtract, b.Var("b"), b.Var("a"))));
	EXPECT_FALSE(equal(b.Assign(kOperator_Add, b.Var("a"), b.Var("b")),
	                   b.Assign(kOperator_Assign, b.Var("a"), b.Var("b"))));
	EXPECT_FALSE(equal(b.Var("x"), m.CreateFieldSelection(b.Var("x"), m.CreateString("y"))));

	auto makeIf = [&](bool bElse)
	{
		SelectionStatement* p = m.CreateSelectionStatement();
		p->SetCondition(b.Var("x"));
		p->SetThen(b.Stmt(b.Int(1)));
		if (bElse)
			p->SetElse(m.CreateEmptyStatement());
		return p;
	};
	EXPECT_FALSE(equal(makeIf(false), makeIf(true)));
	EXPECT_FALSE(equal(makeIf(true), makeIf(false)));
	EXPECT_TRUE(equal(makeIf(true), makeIf(true)));

	// A constructor call compares its type; calls by name ignore their optimization mark.
	FunctionCall* pVec3 = m.CreateFunctionCall(m.CreateType(kType_Vec3));
	EXPECT_FALSE(equal(pVec3, m.CreateFunctionCall(m.CreateType(kType_Vec4))));
	FunctionCall* pMarked = b.Call("f", {b.Int(1)});
	pMarked->SetOptimization(kOptimization_NeverCalled);
	EXPECT_TRUE(equal(pMarked, b.Call("f", {b.Int(1)})));
	EXPECT_FALSE(equal(b.Call("f", {b.Int(1)}), b.Call("f", {b.Int(1), b.Int(2)})));
}

TEST(SyntaxClone, CopyIsEqualIndependentAndInTheTarget)
{
	auto pSource = std::make_unique<Module>();
	auto pTarget = std::make_unique<Module>();
	TreeBuilder b(pSource.get());
	FunctionDefinition* pOriginal = b.EveryKind();
	FunctionDefinition* pClone = pOriginal->Clone(pTarget.get());

	EXPECT_TRUE(pClone->Equals(pOriginal));
	EXPECT_TRUE(pOriginal->Equals(pClone));
	EXPECT_EQ(pTarget.get(), pClone->GetModule());
	EXPECT_EQ(pTarget.get(), pClone->GetCompoundStatement()->GetModule());
	EXPECT_EQ(0, pClone->GetOptimization());

	// Same ranges, statement by statement, the for loop's call included.
	const auto& vOriginal = pOriginal->GetCompoundStatement()->GetStatements();
	const auto& vCopy = pClone->GetCompoundStatement()->GetStatements();
	ASSERT_EQ(vOriginal.size(), vCopy.size());
	for (size_t i = 0; i < vOriginal.size(); ++i)
		EXPECT_EQ(vOriginal[i]->GetRange(), vCopy[i]->GetRange()) << i;

	// Nothing shared, and every string of the copy lives in the target.
	Collector original = Collect(pOriginal), copy = Collect(pClone);
	EXPECT_GT(copy.nodes.size(), 8u);
	for (const void* p : copy.nodes)
		EXPECT_EQ(0u, original.nodes.count(p));
	for (const void* p : copy.strings)
	{
		EXPECT_EQ(0u, original.strings.count(p));
		EXPECT_TRUE(pTarget->HasString(static_cast<const String*>(p)));
	}
	EXPECT_EQ(pSource->GetCountStrings(), pTarget->GetCountStrings());

	// Either copy survives the other's destruction.
	Syntax::Destroy(pOriginal);
	pSource.reset();
	EXPECT_EQ(Collect(pClone).nodes.size(), copy.nodes.size());
	FunctionDefinition* pThird = pClone->Clone(pTarget.get());
	EXPECT_TRUE(pThird->Equals(pClone));
	Syntax::Destroy(pClone);
	Syntax::Destroy(pThird);
	EXPECT_EQ(0u, pTarget->GetCountStrings());
}

TEST(SyntaxOwnership, SettersReplaceOnlyTheirChildAndFreeTheOldOne)
{
	Module m;
	TreeBuilder b(&m);
	Variable* pRight = b.Var("right");
	std::unique_ptr<BinaryOperator> p(b.Bin(kOperator_Add, b.Var("left"), pRight));
	EXPECT_EQ(2u, m.GetCountStrings());
	EXPECT_TRUE(p->SetLeft(b.Int(7)));
	EXPECT_EQ(pRight, p->GetRight());
	EXPECT_EQ(kClass_IntConstant, p->GetLeft()->GetClass());
	EXPECT_EQ(1u, m.GetCountStrings()); // "left" went with its variable
	EXPECT_EQ("right", m.GetStrings()[0]->GetString());

	// Setting the child that is already there keeps it alive.
	EXPECT_TRUE(p->SetRight(pRight));
	EXPECT_EQ("right", static_cast<Variable*>(p->GetRight())->GetIdentifier()->GetString());

	std::unique_ptr<FunctionCall> pCall(b.Call("old", {}));
	pCall->SetName(m.CreateString("new"));
	EXPECT_EQ("new", pCall->GetName()->GetString());
	EXPECT_EQ(2u, m.GetCountStrings());
}

TEST(SyntaxOwnership, StringsBelongToTheModuleThatMadeThem)
{
	Module a, other;
	String* pForeign = other.CreateString("foreign");
	{
		std::unique_ptr<Variable> p(a.CreateVariable(pForeign));
	}
	// A node of another module leaves the string alone.
	ASSERT_EQ(1u, other.GetCountStrings());
	EXPECT_EQ(pForeign, other.GetStrings()[0]);

	String* pLoose = a.CreateString("loose");
	String* pCopy = pLoose;
	EXPECT_TRUE(a.RemoveString(pLoose));
	EXPECT_FALSE(a.RemoveString(pLoose));
	a.DestroyString(pCopy); // not registered any more: untouched
	EXPECT_EQ(pLoose, pCopy);
	delete pLoose;

	String* pKept = a.CreateString("kept");
	String* pGone = a.CreateString("gone");
	a.DestroyString(pGone);
	EXPECT_EQ(nullptr, pGone);
	ASSERT_EQ(1u, a.GetCountStrings());
	EXPECT_EQ(pKept, a.GetStrings()[0]);
	String* pOtherKept = pKept;
	other.DestroyString(pOtherKept);
	EXPECT_EQ(pKept, pOtherKept);

	pKept->AddPrefix("-");
	EXPECT_EQ("-kept", pKept->GetString());
}

TEST(SyntaxOwnership, FloatConstantTextAndNullCallArgument)
{
	Module m;
	std::unique_ptr<FloatConstant> pHalf(m.CreateFloatConstant(0.5));
	EXPECT_EQ("0.5000000000000000", pHalf->GetString()->GetString());
	std::unique_ptr<FloatConstant> pParsed(m.CreateFloatConstant(m.CreateString("2.5e1")));
	EXPECT_DOUBLE_EQ(25.0, pParsed->GetValue());

	RecordingAssertHandler handler;
	ScopedAssertHandler scope(&handler);
	std::unique_ptr<FunctionCall> pCall(m.CreateFunctionCall(m.CreateString("f")));
	pCall->AddParameter(nullptr);
	ASSERT_EQ(1u, handler.GetReports().size());
	EXPECT_EQ("pExpression != NULL", handler.GetReports()[0].sExpression);
	EXPECT_NE(std::string::npos, handler.GetReports()[0].sFile.find("Syntax"));
	// The tree copes with the hole it was given.
	std::unique_ptr<FunctionCall> pClone(pCall->Clone(&m));
	EXPECT_TRUE(pClone->Equals(pCall.get()));
}

// Long chains such as a + a + ... nest to the left and must not need stack in proportion to their length.
TEST(SyntaxDeep, LongLeftChainsDestroyCloneAndCompareFlat)
{
	Module m;
	TreeBuilder b(&m);
	const int kLength = 100000;
	Expression* pChain = b.Var("a");
	for (int i = 0; i < kLength; ++i)
		pChain = b.Bin(kOperator_Add, pChain, b.Int(i));
	Expression* pClone = pChain->Clone(&m);
	EXPECT_TRUE(pClone->Equals(pChain));
	static_cast<BinaryOperator*>(pClone)->SetRight(b.Int(-1));
	EXPECT_FALSE(pClone->Equals(pChain));
	Syntax::Destroy(pChain);
	Syntax::Destroy(pClone);
	EXPECT_EQ(0u, m.GetCountStrings());

	// Deep nesting of other shapes (a statement chain through blocks) is still destroyed iteratively.
	Statement* pNested = b.Stmt(b.Var("x"));
	for (int i = 0; i < kLength; ++i)
		pNested = b.Block({pNested});
	delete pNested;
	EXPECT_EQ(0u, m.GetCountStrings());
}
