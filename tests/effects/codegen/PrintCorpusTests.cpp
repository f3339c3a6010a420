#include <gtest/gtest.h>

#include "PrintTestSupport.h"
#include "SourceGenerator.h"

using namespace Tarsel;
using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

// Parses the source, prints it, parses the print: the two trees must be equal and the second print the
// same as the first. Answers the failure, empty when there is none.
template <class N>
std::string RoundTrip(const std::string& sSource, N* (*Parse)(Module*, const std::string&))
{
	Tree t;
	N* pOriginal = Parse(t.m.get(), sSource);
	if (!pOriginal)
		return "the source does not parse";
	const std::string sText = PrintNode(pOriginal);
	N* pPrinted = Parse(t.m.get(), sText);
	if (!pPrinted)
		return "the print does not parse:\n" + sText;
	if (!pOriginal->Equals(pPrinted))
		return "the print means another tree:\n" + sText;
	const std::string sAgain = PrintNode(pPrinted);
	return sAgain == sText ? std::string() : "the print prints as\n" + sAgain + "\ninstead of\n" + sText;
}

} // namespace

TEST(PrintCorpus, RandomExpressionsAndStatementsRoundTrip)
{
	SourceGenerator generator(AnyCode(), 20261123);
	int nFailures = 0;
	for (int k = 0; k < 12000 && nFailures < 5; ++k)
	{
		const bool bStatement = k % 2 == 1;
		const std::string sSource = generator.Expand(bStatement ? "Statement" : "Expr", bStatement ? 14 : 12);
		const std::string sFailure = bStatement ? RoundTrip<Statement>(sSource, ParseStatement)
		                                        : RoundTrip<Expression>(sSource, ParseExpression);
		if (!sFailure.empty())
		{
			++nFailures;
			ADD_FAILURE() << "source: " << sSource << "\n" << sFailure;
		}
	}
}

// Once printed, a well-typed program must still be one: no literal turned integer, no operator fused, no
// branch regrouped.
TEST(PrintCorpus, WellTypedProgramsCompileAfterPrinting)
{
	SourceGenerator generator(TypedCode(), 4145);
	int nFailures = 0;
	for (int k = 0; k < 150 && nFailures < 3; ++k)
	{
		std::string sSource = "float Case ( float a , int i , bool p , vec3 v ) { float fa = a ; int n = i ; "
		                      "bool q = p ; vec3 w = v ; float t = " +
		                      generator.Expand("F", 4) + " ;";
		for (int nStatement = 0; nStatement < 6; ++nStatement)
			sSource += " " + generator.Expand("T", 6);
		sSource += " return " + generator.Expand("F", 5) + " ; }\nvoid main ( ) { }\n";
		Tree t;
		ASSERT_TRUE(ParseInto(t.m.get(), sSource));
		VisitorPrintTsl printer(nullptr, nullptr, false);
		ASSERT_TRUE(printer.Visit(t.m.get()));
		const std::vector<std::string> vErrors = CompileOnDevice(printer.result(), IQLShader::kType_Ray);
		if (!vErrors.empty())
		{
			++nFailures;
			ADD_FAILURE() << vErrors.front() << "\nsource: " << sSource << "\nprinted:\n" << printer.result();
		}
	}
}
