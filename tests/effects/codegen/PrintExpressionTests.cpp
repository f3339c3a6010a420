#include <gtest/gtest.h>

#include "PrintTestSupport.h"
#include "core/Result.h"

using namespace Tarsel;
using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

struct Case
{
	Expression* pTree;
	const char* pText;
};

// Each tree prints as the given text, and that text parses back into the same tree.
void ExpectReparsed(Tree& t, const std::vector<Case>& vCases)
{
	for (const Case& c : vCases)
	{
		const std::string sText = PrintNode(c.pTree);
		EXPECT_EQ(sText, c.pText);
		Expression* pParsed = ParseExpression(t.m.get(), sText);
		EXPECT_TRUE(pParsed && c.pTree->Equals(pParsed)) << sText;
		t.m->AddExpression(c.pTree);
	}
}

} // namespace

// A blank goes exactly where two tokens would otherwise lex as others: "--" as a decrement, "+++" as
// "++ +", "1." as a float.
TEST(PrintExpression, AdjacentTokensNeverFuse)
{
	Tree t;
	ExpectReparsed(
	    t, {
	           {t.Op(kOperator_Subtract, t.V("x"), t.Un(kOperator_Subtract, t.F("1.0"))), "(x- -1.0)"},
	           {t.Un(kOperator_Subtract, t.Un(kOperator_Subtract, t.V("x"))), "- -x"},
	           {t.Op(kOperator_Add, t.V("i"), t.Un(kOperator_Increment, t.V("i"))), "(i+ ++i)"},
	           {t.Op(kOperator_Subtract, t.V("a"), t.Un(kOperator_Decrement, t.V("b"))), "(a- --b)"},
	           {t.Un(kOperator_Subtract, t.Un(kOperator_Decrement, t.V("x"))), "- --x"},
	           // These lex as intended without a blank, so they get none.
	           {t.Un(kOperator_Decrement, t.Un(kOperator_Subtract, t.V("x"))), "---x"},
	           {t.Op(kOperator_Add, t.Post(kOperator_Increment, t.V("a")), t.V("b")), "(a+++b)"},
	           {t.Set(t.Post(kOperator_Increment, t.V("a")), t.V("b"), kOperator_Add), "a+++= b"},
	           {t.Set(t.Post(kOperator_Decrement, t.V("a")), t.Un(kOperator_Subtract, t.V("b")),
	                  kOperator_Subtract),
	            "a---= -b"},
	           {t.Op(kOperator_Less, t.V("a"), t.Un(kOperator_Subtract, t.V("b"))), "(a<-b)"},
	           // Runs of unary operators: the last token is read from the last place one must start.
	           {t.Un(kOperator_Subtract,
	                 t.Un(kOperator_Not, t.Un(kOperator_Subtract, t.Un(kOperator_Subtract, t.V("x"))))),
	            "-!- -x"},
	           {t.Un(kOperator_Not,
	                 t.Un(kOperator_Not, t.Un(kOperator_Decrement, t.Un(kOperator_Subtract, t.V("x"))))),
	            "!!---x"},
	           {t.Field(t.I(1), "x"), "1 .x"},
	           {t.Field(t.F("1.0"), "x"), "1.0.x"},
	       });
	// An int scans negative only past 32 bits and prints as its bit pattern; a negative float keeps its sign.
	EXPECT_EQ(PrintNode(t.Keep(t.Op(kOperator_Subtract, t.V("a"), t.I(-5)))), "(a-0xfffffffb)");
	EXPECT_EQ(PrintNode(t.Keep(t.Un(kOperator_Subtract, t.m->CreateFloatConstant(-2.0)))),
	          "- -2.000000000000000");
}

// Parentheses where the printed form of a child binds more loosely than its position allows; none where
// the form brings its own (binary operations, the branches of a conditional).
TEST(PrintExpression, PrecedenceKeepsTheTreeShape)
{
	Tree t;
	auto Choice = [&t]() { return t.Cond(t.V("c"), t.V("a"), t.V("b")); };
	ExpectReparsed(
	    t,
	    {
	        {t.Op(kOperator_Multiply,
	              t.Cond(t.Op(kOperator_Greater, t.V("x"), t.F("0.0")), t.V("x"), t.V("y")), t.F("2.0")),
	         "((((x>0.0)) ? (x) : (y))*2.0)"},
	        {t.Field(t.Un(kOperator_Subtract, t.V("v")), "x"), "(-v).x"},
	        {t.Sub(Choice(), t.I(0)), "((c) ? (a) : (b))[0]"},
	        {t.Post(kOperator_Increment, t.Un(kOperator_Subtract, t.V("a"))), "(-a)++"},
	        {t.Un(kOperator_Not, Choice()), "!((c) ? (a) : (b))"},
	        {t.Op(kOperator_Add, t.Set(t.V("a"), t.V("b")), t.I(1)), "((a = b)+1)"},
	        {t.Op(kOperator_LogicalAnd, t.V("p"), t.Set(t.V("q"), t.V("r"), kOperator_BitOr)),
	         "(p&&(q|= r))"},
	        {t.Set(Choice(), t.V("d")), "((c) ? (a) : (b)) = d"},
	        {t.Set(t.Set(t.V("a"), t.V("b")), t.V("c")), "(a = b) = c"},
	        {t.Set(t.V("a"), t.Set(t.V("b"), Choice())), "a = b = (c) ? (a) : (b)"},
	        {t.Op(kOperator_Comma, t.Set(t.V("a"), t.I(1)), t.Set(t.V("b"), t.I(2))), "(a = 1,b = 2)"},
	        {t.Cond(t.V("c"), t.Op(kOperator_Comma, t.V("a"), t.V("b")), t.Set(t.V("x"), t.V("y"))),
	         "(c) ? ((a,b)) : (x = y)"},
	        {t.Cond(Choice(), t.V("d"), t.V("e")), "((c) ? (a) : (b)) ? (d) : (e)"},
	        {t.Op(kOperator_Subtract, t.V("a"), t.Op(kOperator_Subtract, t.V("b"), t.V("c"))), "(a-(b-c))"},
	        {t.Call("f", {t.Op(kOperator_Comma, t.V("a"), t.V("b")), Choice()}), "f((a,b), (c) ? (a) : (b))"},
	    });
	EXPECT_EQ(PrintNode(t.Keep(t.Field(t.I(-5), "x"))), "0xfffffffb.x");
	EXPECT_EQ(PrintNode(t.Keep(t.Sub(t.m->CreateFloatConstant(-0.0), t.I(0)))), "(-0.000000000000000)[0]");
	EXPECT_EQ(PrintNode(t.Keep(t.Field(t.F("-0.5f"), "x"))), "(-0.5).x");
}

// An else always stays with the if it belongs to, whatever the then-branch ends in.
TEST(PrintExpression, ElseStaysWithItsIf)
{
	Tree t;
	Statement* pInnerOpen = t.If(t.V("a"), t.If(t.V("b"), t.E(t.V("x"))), t.E(t.V("y")));
	const std::string sOpen = PrintNode(pInnerOpen);
	EXPECT_EQ(sOpen, "if (a)\n{\n\tif (b)\n\t\tx;\n}\n\nelse\ny;\n");
	auto* pParsed = static_cast<SelectionStatement*>(ParseStatement(t.m.get(), sOpen));
	ASSERT_TRUE(pParsed && pParsed->GetElse());
	EXPECT_EQ(pParsed->GetThen()->GetClass(), kClass_CompoundStatement);

	Statement* pThroughLoop = t.If(
	    t.V("a"), t.m->CreateWhileStatement(t.m->CreateCondition(t.V("c")), t.If(t.V("b"), t.E(t.V("x")))),
	    t.E(t.V("y")));
	EXPECT_NE(PrintNode(pThroughLoop).find("{\n\twhile(c)"), std::string::npos);

	// A then-branch whose ifs all have an else needs no braces.
	Statement* pClosed = t.If(t.V("a"), t.If(t.V("b"), t.E(t.V("x")), t.E(t.V("z"))), t.E(t.V("y")));
	const std::string sClosed = PrintNode(pClosed);
	EXPECT_EQ(sClosed.find('{'), std::string::npos);
	Statement* pReparsed = ParseStatement(t.m.get(), sClosed);
	EXPECT_TRUE(pReparsed && pClosed->Equals(pReparsed)) << sClosed;
	for (Statement* p : {pInnerOpen, pThroughLoop, pClosed})
		t.m->AddStatement(p);
}

// A child that cannot be printed anywhere in the tree fails the whole print, which then leaves no text.
TEST(PrintExpression, AFailedChildFailsThePrint)
{
	using MakeStatement = Statement* (*)(Tree&, Expression*);
	const std::vector<std::pair<const char*, MakeStatement>> vPositions = {
	    {"for body",
	     [](Tree& t, Expression* p) -> Statement*
	     {
		     ForStatement* pFor = t.m->CreateForStatement(nullptr);
		     pFor->SetStatement(t.E(p));
		     return pFor;
	     }},
	    {"call argument",
	     [](Tree& t, Expression* p) -> Statement* {
		     return t.E(t.Call("g", {p, t.I(1)}));
	     }},
	    {"constructor argument",
	     [](Tree& t, Expression* p) -> Statement* {
		     return t.E(t.Call(t.m->CreateFunctionCall(t.m->CreateType(kType_Vec2)), {t.I(1), p}));
	     }},
	    {"else branch",
	     [](Tree& t, Expression* p) -> Statement*
	     { return t.If(t.V("a"), t.E(t.V("b")), t.If(t.V("c"), t.E(t.V("d")), t.E(p))); }},
	    {"chain operand",
	     [](Tree& t, Expression* p) -> Statement*
	     { return t.E(t.Op(kOperator_Add, t.Op(kOperator_Add, t.V("a"), p), t.V("c"))); }},
	    {"assignment chain",
	     [](Tree& t, Expression* p) -> Statement* { return t.E(t.Set(t.V("a"), t.Set(t.V("b"), p))); }},
	    {"unary chain",
	     [](Tree& t, Expression* p) -> Statement*
	     { return t.E(t.Un(kOperator_Not, t.Un(kOperator_Not, p))); }},
	    {"initializer", [](Tree& t, Expression* p) -> Statement* { return t.Local(kType_Float, "x", p); }},
	};
	for (const auto& [pWhere, Make] : vPositions)
	{
		SCOPED_TRACE(pWhere);
		Tree t;
		Expression* pUnresolved = t.m->CreateFunctionSelection(t.V("light"), t.Call("Shade"));
		t.Define(t.Proto(kType_Void, "main"), {t.E(t.V("before")), Make(t, pUnresolved)});
		Result result;
		VisitorPrintTsl printer(&result, nullptr, false);
		EXPECT_FALSE(printer.Visit(t.m.get()));
		EXPECT_EQ(printer.result(), "");
		EXPECT_EQ(printer.GetSyntaxForLine(1), t.m.get());
		ASSERT_EQ(result.GetMessages().size(), 1u);
		EXPECT_NE(result.GetMessages()[0].find("Class \"light\" cannot be found."), std::string::npos);
	}
}

// Trimming the 'f' never leaves an integer behind; the trimmed text is kept in the tree.
TEST(PrintExpression, FloatLiteralsStayFloats)
{
	Tree t;
	for (const auto& [pSource, pPrinted] : std::vector<std::pair<const char*, const char*>>{{"2f", "2."},
	                                                                                        {"09f", "09."},
	                                                                                        {"2", "2."},
	                                                                                        {"1.5f", "1.5"},
	                                                                                        {".5f", ".5"},
	                                                                                        {"3.", "3."},
	                                                                                        {"1e3", "1e3"}})
	{
		FloatConstant* pLiteral = t.F(pSource);
		EXPECT_EQ(PrintNode(pLiteral), pPrinted);
		EXPECT_EQ(pLiteral->GetString()->GetString(), pPrinted);
		Expression* pParsed = ParseExpression(t.m.get(), pPrinted);
		ASSERT_TRUE(pParsed);
		EXPECT_EQ(pParsed->GetClass(), kClass_FloatConstant) << pPrinted;
		t.m->AddExpression(pLiteral);
	}
	const std::string sGlobal = "float x = 09.;\nfloat y = 2. * x;\n";
	EXPECT_EQ(CompileOnDevice(sGlobal + "void main()\n{\n}\n", IQLShader::kType_Ray),
	          std::vector<std::string>());
}

// An array constructor left without its brackets would construct one float from three. (The reference
// device does not parse array constructors yet, so the text is not compiled here.)
TEST(PrintExpression, ArrayConstructorsKeepTheirLength)
{
	Tree t;
	Type* pArray = t.m->CreateType(kType_Float);
	pArray->SetArray(true);
	pArray->SetLength(t.I(3));
	Expression* pConstructor = t.Call(t.m->CreateFunctionCall(pArray), {t.F("1.0"), t.F("2.0"), t.F("3.0")});
	Type* pDeclared = t.m->CreateType(kType_Float);
	pDeclared->SetArray(true);
	pDeclared->SetLength(t.I(3));
	t.m->AddVariableDeclaration(t.m->CreateDeclarationStatement(t.Decl(pDeclared, "k", pConstructor)));
	t.Define(t.Proto(kType_Void, "main"), {});
	VisitorPrintTsl printer(nullptr, nullptr, false);
	ASSERT_TRUE(printer.Visit(t.m.get()));
	EXPECT_NE(printer.result().find("float k[3] = float[3](1.0, 2.0, 3.0);\n"), std::string::npos);
	// Without a length the brackets stay, or the declaration would be a scalar.
	Type* pOpen = t.m->CreateType(kType_Float);
	pOpen->SetArray(true);
	EXPECT_EQ(PrintNode(t.Keep(t.m->CreateDeclarationStatement(t.Decl(pOpen, "v")))), "float v[];\n");
}
