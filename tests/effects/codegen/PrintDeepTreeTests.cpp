#include <gtest/gtest.h>

#include <pthread.h>

#include <functional>

#include "PrintTestSupport.h"

using namespace Tarsel;
using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

// Runs f on a thread with a stack of 1 MB: far less than printing a 10,000-term chain by recursion
// needs, far more than printing it in a loop does.
void OnSmallStack(const std::function<void()>& f)
{
	pthread_attr_t attributes;
	ASSERT_EQ(pthread_attr_init(&attributes), 0);
	ASSERT_EQ(pthread_attr_setstacksize(&attributes, 1 << 20), 0);
	pthread_t thread;
	auto Run = [](void* p) -> void*
	{
		(*static_cast<const std::function<void()>*>(p))();
		return nullptr;
	};
	ASSERT_EQ(pthread_create(&thread, &attributes, Run, const_cast<std::function<void()>*>(&f)), 0);
	pthread_join(thread, nullptr);
	pthread_attr_destroy(&attributes);
}

std::string Name(int i)
{
	return "v" + std::to_string(i);
}

std::string PrintBody(Tree& t, const std::vector<Statement*>& vBody)
{
	t.Define(t.Proto(kType_Void, "main"), vBody);
	VisitorPrintTsl printer(nullptr, nullptr, false);
	EXPECT_TRUE(printer.Visit(t.m.get()));
	return printer.result();
}

const std::string kHead = "\n\n\nvoid main()\n{\n";
const std::string kTail = "}\n\n";

} // namespace

TEST(PrintDeepTree, LongLeftChainsAndAssignmentChains)
{
	const int nTerms = 10000;
	Tree t;
	Expression* pSum = t.V("v0");
	Expression* pSequence = t.V("v0");
	Expression* pAssignment = t.V(Name(nTerms - 1).c_str());
	std::string sSum = "v0", sSequence = "v0", sAssignment = Name(nTerms - 1);
	for (int i = 1; i < nTerms; ++i)
	{
		// Mixed operators, and an operand that needs parentheses, on the way down.
		const Operator e = i % 3 == 0 ? kOperator_Subtract : kOperator_Add;
		Expression* pRight = i % 1000 == 0 ? t.Set(t.V(Name(i).c_str()), t.I(1)) : t.V(Name(i).c_str());
		pSum = t.Op(e, pSum, pRight);
		sSum = sSum + OperatorToString(e) + (i % 1000 == 0 ? "(" + Name(i) + " = 1)" : Name(i)) + ")";
		pSequence = t.Op(kOperator_Comma, pSequence, t.Set(t.V(Name(i).c_str()), t.I(i)));
		sSequence += "," + Name(i) + " = " + std::to_string(i) + ")";
		pAssignment = t.Set(t.V(Name(nTerms - 1 - i).c_str()), pAssignment);
		sAssignment = Name(nTerms - 1 - i) + " = " + sAssignment;
	}
	sSum.insert(0, nTerms - 1, '(');
	sSequence.insert(0, nTerms - 1, '(');
	std::string sText;
	OnSmallStack([&]() { sText = PrintBody(t, {t.E(pSum), t.E(pSequence), t.E(pAssignment)}); });
	EXPECT_EQ(sText, kHead + "\t" + sSum + ";\n\t" + sSequence + ";\n\t" + sAssignment + ";\n" + kTail);
}

// Every link of an else-if chain prints as the first else-if does, however deep the chain goes.
TEST(PrintDeepTree, LongElseIfChains)
{
	const int nLinks = 2000;
	Tree t;
	Statement* pChain = t.E(t.V("last"));
	for (int i = nLinks - 1; i >= 0; --i)
		pChain = t.If(t.V(Name(i).c_str()), t.E(t.Set(t.V("x"), t.I(i))), pChain);
	std::string sText;
	OnSmallStack([&]() { sText = PrintBody(t, {pChain}); });

	std::string sExpected = kHead + "\tif (v0)\n\t\tx = 0;\n\n\telse\n";
	for (int i = 1; i < nLinks; ++i)
		sExpected += "\t\tif (" + Name(i) + ")\n\t\tx = " + std::to_string(i) + ";\n\n\telse\n";
	EXPECT_EQ(sText, sExpected + "\t\tlast;\n" + kTail);
}

// Nesting that does not form a chain recurses, to a depth the parser allows; it round-trips.
TEST(PrintDeepTree, DeepParenthesesAndBlocksRoundTrip)
{
	const int nDepth = 500;
	std::string sParentheses = "x", sBlocks = "x = 1;";
	for (int i = 0; i < nDepth; ++i)
	{
		sParentheses = "v" + std::to_string(i) + " * (" + sParentheses + ")";
		sBlocks = "{ " + sBlocks + " }";
	}
	Tree t;
	Statement* pOriginal = ParseStatement(t.m.get(), "{ y = " + sParentheses + "; " + sBlocks + " }");
	ASSERT_TRUE(pOriginal);
	const std::string sText = PrintNode(pOriginal);
	Statement* pPrinted = ParseStatement(t.m.get(), sText);
	ASSERT_TRUE(pPrinted);
	EXPECT_TRUE(pOriginal->Equals(pPrinted));
	EXPECT_EQ(PrintNode(pPrinted), sText);
}
