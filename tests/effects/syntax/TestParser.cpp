#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TestParserHelpers.h"

using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

template <class T>
const T* Cast(const Syntax* pNode)
{
	return static_cast<const T*>(pNode);
}

std::string Text(const String* pString)
{
	return pString ? pString->GetString() : "<null>";
}

std::string Print(const Expression* pExpression);

template <class T>
std::string Infix(const Expression* pExpression, const std::string& op)
{
	const T* p = Cast<T>(pExpression);
	return "(" + Print(p->GetLeft()) + " " + op + " " + Print(p->GetRight()) + ")";
}

std::string Print(const Type* pType)
{
	std::string text = pType->GetClass() == kClass_UserType
	                       ? Text(Cast<UserType>(pType)->GetName())
	                       : TypeSpecifierToString(pType->GetTypeSpecifier());
	if (pType->IsArray())
		text += "[" + (pType->GetLength() ? Print(pType->GetLength()) : "") + "]";
	return text;
}

// Fully parenthesised form of an expression: precedence and associativity show in the parentheses.
std::string Print(const Expression* p)
{
	switch (p->GetClass())
	{
	case kClass_Variable:
		return Text(Cast<Variable>(p)->GetIdentifier());
	case kClass_IntConstant:
		return std::to_string(Cast<IntConstant>(p)->GetValue());
	case kClass_FloatConstant:
		return Text(Cast<FloatConstant>(p)->GetString());
	case kClass_BoolConstant:
		return Cast<BoolConstant>(p)->GetValue() ? "true" : "false";
	case kClass_BinaryOperator:
		return Infix<BinaryOperator>(p, OperatorToString(Cast<BinaryOperator>(p)->GetOperator()));
	case kClass_Assignment:
	{
		const Operator op = Cast<Assignment>(p)->GetOperator();
		return Infix<Assignment>(p, op == 0 ? "=" : std::string(OperatorToString(op)) + "=");
	}
	case kClass_UnaryOperator:
		return "(" + std::string(OperatorToString(Cast<UnaryOperator>(p)->GetOperator())) +
		       Print(Cast<UnaryOperator>(p)->GetExpression()) + ")";
	case kClass_PostOperator:
		return "(" + Print(Cast<PostOperator>(p)->GetExpression()) +
		       OperatorToString(Cast<PostOperator>(p)->GetOperator()) + ")";
	case kClass_Conditional:
	{
		const Conditional* pConditional = Cast<Conditional>(p);
		return "(" + Print(pConditional->GetCondition()) + " ? " + Print(pConditional->GetTrue()) + " : " +
		       Print(pConditional->GetFalse()) + ")";
	}
	case kClass_Subscript:
		return Print(Cast<Subscript>(p)->GetArray()) + "[" + Print(Cast<Subscript>(p)->GetIndex()) + "]";
	case kClass_FieldSelection:
		return Print(Cast<FieldSelection>(p)->GetExpression()) + "." +
		       Text(Cast<FieldSelection>(p)->GetField());
	case kClass_FunctionSelection:
		return Print(Cast<FunctionSelection>(p)->GetExpression()) + "." +
		       Print(Cast<FunctionSelection>(p)->GetFunction());
	case kClass_FunctionCall:
	{
		const FunctionCall* pCall = Cast<FunctionCall>(p);
		std::string text = (pCall->GetName() ? Text(pCall->GetName()) : Print(pCall->GetType())) + "(";
		for (size_t i = 0; i < pCall->GetParameters().size(); ++i)
			text += (i ? ", " : "") + Print(pCall->GetParameters()[i]);
		return text + ")";
	}
	default:
		return "?";
	}
}

// "static const input float[2] w = ...": every field the parser sets, in one line.
std::string Print(const VariableDeclaration* p)
{
	const char* storage[] = {"", "input ", "coord "};
	const int kind = p->GetStorageQualifier() == kStorage_Input   ? 1
	                 : p->GetStorageQualifier() == kStorage_Coord ? 2
	                                                              : 0;
	std::string text =
	    std::string(p->IsStatic() ? "static " : "") + (p->IsConst() ? "const " : "") + storage[kind];
	if (kind == 2)
		text += std::to_string(p->GetTransformation()) + " ";
	text += Print(p->GetType()) + " " + Text(p->GetIdentifier());
	return p->GetInitializer() ? text + " = " + Print(p->GetInitializer()) : text;
}

std::string Print(const FunctionPrototype* p)
{
	const char* qualifiers[] = {"", "in ", "out ", "inout "};
	std::string text = std::string(p->GetQualifier() == kFunction_Static ? "static " : "") +
	                   Print(p->GetReturnType()) + " " + Text(p->GetName()) + "(";
	for (size_t i = 0; i < p->GetParameters().size(); ++i)
	{
		const FunctionParameter* pParameter = p->GetParameters()[i];
		text += (i ? ", " : "") + std::string(qualifiers[pParameter->GetParameterQualifier()]) +
		        Print(pParameter->GetType()) + " " + Text(pParameter->GetName());
	}
	return text + ")";
}

// Statements with every branch in brackets, so that the nesting shows.
std::string Print(const Statement* p)
{
	switch (p->GetClass())
	{
	case kClass_EmptyStatement:
		return ";";
	case kClass_ExpressionStatement:
		return Print(Cast<ExpressionStatement>(p)->GetExpression()) + ";";
	case kClass_DeclarationStatement:
		return Print(Cast<DeclarationStatement>(p)->GetDeclaration()) + ";";
	case kClass_CompoundStatement:
	{
		std::string text = "{";
		for (const Statement* pStatement : Cast<CompoundStatement>(p)->GetStatements())
			text += " " + Print(pStatement);
		return text + " }";
	}
	case kClass_SelectionStatement:
	{
		const SelectionStatement* pIf = Cast<SelectionStatement>(p);
		const std::string text = "if (" + Print(pIf->GetCondition()) + ") [" + Print(pIf->GetThen()) + "]";
		return pIf->GetElse() ? text + " else [" + Print(pIf->GetElse()) + "]" : text;
	}
	case kClass_JumpStatement:
	{
		const JumpStatement* pJump = Cast<JumpStatement>(p);
		const char* words[] = {"continue", "break", "return"};
		return words[pJump->GetType()] + (pJump->GetExpression() ? " " + Print(pJump->GetExpression()) : "") +
		       ";";
	}
	default:
		return "?";
	}
}

std::string PrintExpression(const std::string& source)
{
	std::unique_ptr<Parsed> pParsed = ParseText("{ " + source + " }");
	EXPECT_TRUE(pParsed->bParsed) << source << pParsed->FirstError();
	return pParsed->pModule->GetExpressions().size() == 1 ? Print(pParsed->pModule->GetExpressions()[0])
	                                                      : "<none>";
}

const Statement* OnlyStatement(const Parsed& parsed)
{
	EXPECT_TRUE(parsed.bParsed) << parsed.FirstError();
	EXPECT_EQ(parsed.pModule->GetStatements().size(), 1u);
	return parsed.pModule->GetStatements().at(0);
}

std::string PrintStatement(const std::string& source)
{
	return Print(OnlyStatement(*ParseText("[ " + source + " ]")));
}

void ExpectRange(const Syntax* pNode, int beginLine, int beginColumn, int endLine, int endColumn)
{
	const LocationRange& range = pNode->GetRange();
	EXPECT_EQ(range._iBeginLine, beginLine);
	EXPECT_EQ(range._iBeginColumn, beginColumn);
	EXPECT_EQ(range._iEndLine, endLine);
	EXPECT_EQ(range._iEndColumn, endColumn);
}

} // namespace

TEST(TslParser, EveryLevelBindsTighterThanTheOneBefore)
{
	// One operator of each level, loosest first; the parentheses show which operand each one took.
	EXPECT_EQ(PrintExpression("a , b = c ? d : e || f ^^ g && h | i ^ j & k == l < m << n + o * -p++"),
	          "(a , (b = (c ? d : (e || (f ^^ (g && (h | (i ^ (j & (k == (l < (m << (n + (o * "
	          "(-(p++))))))))))))))))");
	// The same operators the other way round.
	EXPECT_EQ(PrintExpression("-p++ * o + n << m < l == k & j ^ i | h && g ^^ f || e ? d : c"),
	          "(((((((((((((-(p++)) * o) + n) << m) < l) == k) & j) ^ i) | h) && g) ^^ f) || e) ? d : c)");
	EXPECT_EQ(PrintExpression("a * (b + c)"), "(a * (b + c))");
	EXPECT_EQ(PrintExpression("a != b > c >= d >> e - f % g"), "(a != ((b > c) >= (d >> (e - (f % g)))))");
}

TEST(TslParser, BinaryLevelsAssociateLeftAssignmentsRight)
{
	EXPECT_EQ(PrintExpression("a - b - c"), "((a - b) - c)");
	EXPECT_EQ(PrintExpression("a / b * c % d"), "(((a / b) * c) % d)");
	EXPECT_EQ(PrintExpression("a << b >> c"), "((a << b) >> c)");
	EXPECT_EQ(PrintExpression("a < b > c <= d >= e"), "((((a < b) > c) <= d) >= e)");
	EXPECT_EQ(PrintExpression("a == b != c"), "((a == b) != c)");
	EXPECT_EQ(PrintExpression("a & b & c | d | e ^ f ^ g"), "((((a & b) & c) | d) | ((e ^ f) ^ g))");
	EXPECT_EQ(PrintExpression("a && b && c || d || e ^^ f ^^ g"),
	          "((((a && b) && c) || d) || ((e ^^ f) ^^ g))");
	EXPECT_EQ(PrintExpression("a, b, c"), "((a , b) , c)");
	EXPECT_EQ(PrintExpression("a ? b : c ? d : e"), "(a ? b : (c ? d : e))");
	EXPECT_EQ(PrintExpression("a ? b, c : d = e"), "(a ? (b , c) : (d = e))");
	EXPECT_EQ(PrintExpression("a = b *= c /= d %= e += f -= g"),
	          "(a = (b *= (c /= (d %= (e += (f -= g))))))");
	EXPECT_EQ(PrintExpression("a <<= b >>= c &= d ^= e |= f"), "(a <<= (b >>= (c &= (d ^= (e |= f)))))");
}

TEST(TslParser, PrefixPostfixAndPrimaryForms)
{
	EXPECT_EQ(PrintExpression("- ! ~ ++ -- + a"), "(-(!(~(++(--(+a))))))");
	EXPECT_EQ(PrintExpression("a.b[i + 1].c(x, 2)++--"), "((a.b[(i + 1)].c(x, 2)++)--)");
	EXPECT_EQ(PrintExpression("++a++"), "(++(a++))");
	EXPECT_EQ(PrintExpression("f() + g(void) * h(1, 2.5, true)"), "(f() + (g() * h(1, 2.5, true)))");
	EXPECT_EQ(PrintExpression("vec3(1.0) + bvec2(a, b) + mat4(m)"), "((vec3(1.0) + bvec2(a, b)) + mat4(m))");
	EXPECT_EQ(PrintExpression("v.xyz.x + 0x10 + 010 + 1e3 + .5f"), "((((v.xyz.x + 16) + 8) + 1e3) + .5f)");
	EXPECT_EQ(PrintExpression("-1"), "(-1)");
}

TEST(TslParser, ElseBindsToTheNearestIf)
{
	EXPECT_EQ(PrintStatement("if (x) if (y) a; else b;"), "if (x) [if (y) [a;] else [b;]]");
	EXPECT_EQ(PrintStatement("if (x) { if (y) a; } else b;"), "if (x) [{ if (y) [a;] }] else [b;]");
	EXPECT_EQ(PrintStatement("if (x) a; else if (y) b; else c;"), "if (x) [a;] else [if (y) [b;] else [c;]]");
}

TEST(TslParser, LoopsDeclarationsAndJumps)
{
	std::unique_ptr<Parsed> pParsed =
	    ParseText("[ for (int i = 0; i < n; i++) { continue; break; return; return i; } ]");
	const ForStatement* pFor = Cast<ForStatement>(OnlyStatement(*pParsed));
	ASSERT_EQ(pFor->GetClass(), kClass_ForStatement);
	EXPECT_EQ(Print(pFor->GetInitialization()), "int i = 0;");
	EXPECT_EQ(Print(pFor->GetCondition()->GetExpression()), "(i < n)");
	EXPECT_EQ(Print(pFor->GetIteration()), "(i++)");
	EXPECT_EQ(Print(pFor->GetStatement()), "{ continue; break; return; return i; }");

	pParsed = ParseText("[ for (;;) ; ]");
	pFor = Cast<ForStatement>(OnlyStatement(*pParsed));
	EXPECT_EQ(pFor->GetInitialization()->GetClass(), kClass_EmptyStatement);
	EXPECT_TRUE(pFor->GetCondition() == nullptr && pFor->GetIteration() == nullptr);

	pParsed = ParseText("[ while (float d = f(x)) x--; ]");
	const WhileStatement* pWhile = Cast<WhileStatement>(OnlyStatement(*pParsed));
	ASSERT_EQ(pWhile->GetClass(), kClass_WhileStatement);
	EXPECT_EQ(Print(Cast<VariableDeclaration>(pWhile->GetCondition()->GetDeclaration())), "float d = f(x)");
	EXPECT_EQ(Print(pWhile->GetStatement()), "(x--);");

	pParsed = ParseText("[ do { x++; } while (x < 3); ]");
	const DoWhileStatement* pDo = Cast<DoWhileStatement>(OnlyStatement(*pParsed));
	ASSERT_EQ(pDo->GetClass(), kClass_DoWhileStatement);
	EXPECT_EQ(Print(pDo->GetStatement()) + Print(pDo->GetExpression()), "{ (x++); }(x < 3)");

	EXPECT_EQ(PrintStatement("{ float a[4]; Light l; vec3 v = vec3(1.0); int n[] = m; }"),
	          "{ float[4] a; Light l; vec3 v = vec3(1.0); int[] n = m; }");
}

TEST(TslParser, ClassMembers)
{
	std::unique_ptr<Parsed> pParsed = ParseText(R"(
class C : I
{
	input L light;
	coord vec3 P;
	normal vec3 N;
	tangent vec4 T;
	coord normal vec3 M;
	coord tangent vec2 U;
	output vec3 color;
	out vec4 alpha;
	static input float scale[2] = float[2](-1.0, 2.0);
	input int count = -3;
	input float bias = -0.25;
	input Light lights[] = Spot();
	static const bool kOn = true;
	float x;
	static void Tick() { }
	vec3 Shade(in vec3 n, out float w[4], inout int k) { return n; }
})");
	ASSERT_TRUE(pParsed->bParsed) << pParsed->FirstError();
	const ClassDefinition* pClass = pParsed->pModule->GetClassDefinitions().at(0);
	EXPECT_EQ(Text(pClass->GetName()) + " : " + Text(pClass->GetInterface()), "C : I");
	EXPECT_EQ(pClass->GetCountOutputs(), 2u);
	ASSERT_EQ(pClass->GetCountCoords(), 5u);
	EXPECT_EQ(Print(pClass->GetCoords().at("P")), "coord 0 vec3 P");
	EXPECT_EQ(Print(pClass->GetCoords().at("N")), "coord 1 vec3 N");
	EXPECT_EQ(Print(pClass->GetCoords().at("T")), "coord 2 vec4 T");
	EXPECT_EQ(Print(pClass->GetCoords().at("M")), "coord 1 vec3 M");
	EXPECT_EQ(Print(pClass->GetCoords().at("U")), "coord 2 vec2 U");

	// A literal standing alone folds its sign into the constant; inside a constructor the sign is an
	// operator.
	const std::vector<std::string> members = {"input L light",
	                                          "static input float[2] scale = float[2]((-1.0), 2.0)",
	                                          "input int count = -3",
	                                          "input float bias = -0.25",
	                                          "input Light[] lights = Spot()",
	                                          "static const bool kOn = true",
	                                          "float x"};
	ASSERT_EQ(pClass->GetMemberVariables().size(), members.size());
	for (size_t i = 0; i < members.size(); ++i)
		EXPECT_EQ(Print(pClass->GetMemberVariables()[i]), members[i]);
	EXPECT_EQ(Cast<FloatConstant>(pClass->GetMemberVariables()[3]->GetInitializer())->GetValue(), -0.25);

	ASSERT_EQ(pClass->GetMemberFunctions().size(), 2u);
	EXPECT_EQ(Print(pClass->GetMemberFunctions()[0]->GetFunctionPrototype()), "static void Tick()");
	EXPECT_EQ(Print(pClass->GetMemberFunctions()[1]->GetFunctionPrototype()),
	          "vec3 Shade(in vec3 n, out float[4] w, inout int k)");
	EXPECT_EQ(Print(pClass->GetMemberFunctions()[1]->GetCompoundStatement()), "{ return n; }");
}

// The initializer of an interface input names the class to connect: single and array forms both carry a
// user type of that name; only an interface input types a call by name.
TEST(TslParser, InterfaceInputInitializersAreTypedConstructors)
{
	std::unique_ptr<Parsed> pParsed = ParseText(R"(
class C
{
	input Light one = Spot();
	input Light many[2] = Spot[2](Spot(), Spot());
	input float f = Spot();
	float g = Spot();
	void M() { Light l = Spot(); }
})");
	ASSERT_TRUE(pParsed->bParsed) << pParsed->FirstError();
	const ClassDefinition* pClass = pParsed->pModule->GetClassDefinitions().at(0);
	const auto call = [&](size_t i)
	{ return Cast<FunctionCall>(pClass->GetMemberVariables().at(i)->GetInitializer()); };
	const auto typeName = [](const FunctionCall* pCall)
	{
		const Type* pType = pCall->GetType();
		return pType && pType->GetClass() == kClass_UserType ? Text(Cast<UserType>(pType)->GetName())
		                                                     : std::string("<none>");
	};

	EXPECT_EQ(typeName(call(0)), "Spot");
	EXPECT_EQ(Text(call(0)->GetName()), "Spot");
	EXPECT_FALSE(call(0)->GetType()->IsArray());
	EXPECT_EQ(typeName(call(1)), "Spot");
	EXPECT_TRUE(call(1)->GetType()->IsArray());
	EXPECT_EQ(Text(call(1)->GetName()), "<null>");
	// The array constructor's arguments, a value input and a member keep plain calls by name.
	EXPECT_EQ(typeName(Cast<FunctionCall>(call(1)->GetParameters().at(0))), "<none>");
	EXPECT_EQ(typeName(call(2)), "<none>");
	EXPECT_EQ(typeName(call(3)), "<none>");
	const auto* pLocal = Cast<DeclarationStatement>(
	    pClass->GetMemberFunctions().at(0)->GetCompoundStatement()->GetStatements().at(0));
	EXPECT_EQ(typeName(Cast<FunctionCall>(pLocal->GetDeclaration()->GetInitializer())), "<none>");

	// The typed call survives cloning with both its name and its type.
	std::unique_ptr<Module> pTarget(Module::Create());
	std::unique_ptr<FunctionCall> pClone(call(0)->Clone(pTarget.get()));
	EXPECT_EQ(typeName(pClone.get()), "Spot");
	EXPECT_EQ(Text(pClone->GetName()), "Spot");
}

TEST(TslParser, InterfacesFunctionsAndBracketedForms)
{
	std::unique_ptr<Parsed> pParsed = ParseText(R"(
interface I { float f(); void g(void); vec3 h(vec3 a, int b); }
float Square(float x) { return x * x; }
[ t = 1; ] { 1 + 2 }
)");
	ASSERT_TRUE(pParsed->bParsed) << pParsed->FirstError();
	const InterfaceDefinition* pInterface = pParsed->pModule->GetInterfaceDefinition("I");
	ASSERT_NE(pInterface, nullptr);
	ASSERT_EQ(pInterface->GetMemberFunctions().size(), 3u);
	EXPECT_EQ(Print(pInterface->GetMemberFunctions()[1]), "void g()");
	EXPECT_EQ(Print(pInterface->GetMemberFunctions()[2]), "vec3 h(in vec3 a, in int b)");
	const FunctionDefinition* pSquare = pParsed->pModule->GetFunctionDefinition("Square");
	ASSERT_NE(pSquare, nullptr);
	EXPECT_EQ(Print(pSquare->GetFunctionPrototype()) + " " + Print(pSquare->GetCompoundStatement()),
	          "float Square(in float x) { return (x * x); }");
	EXPECT_EQ(Print(pParsed->pModule->GetStatements().at(0)), "(t = 1);");
	EXPECT_EQ(Print(pParsed->pModule->GetExpressions().at(0)), "(1 + 2)");

	pParsed = ParseText("");
	EXPECT_TRUE(pParsed->bParsed && pParsed->vErrors.empty());
	EXPECT_TRUE(pParsed->pModule->GetStrings().empty());
}

TEST(TslParser, RangesSpanFirstToLastToken)
{
	std::unique_ptr<Parsed> pParsed =
	    ParseText("\n{ aa + bbb * (c) }\n[ if (x)\n  y = -z[2];\nelse { } ]", 10);
	ASSERT_TRUE(pParsed->bParsed);
	const BinaryOperator* pSum = Cast<BinaryOperator>(pParsed->pModule->GetExpressions()[0]);
	ExpectRange(pSum, 12, 2, 12, 16);
	ExpectRange(pSum->GetLeft(), 12, 2, 12, 4);
	ExpectRange(pSum->GetRight(), 12, 7, 12, 16);
	ExpectRange(Cast<BinaryOperator>(pSum->GetRight())->GetRight(), 12, 13, 12, 16);
	EXPECT_EQ(pSum->GetRange().GetSource(), &pParsed->sName);

	const SelectionStatement* pIf = Cast<SelectionStatement>(pParsed->pModule->GetStatements()[0]);
	ExpectRange(pIf, 13, 2, 15, 8);
	ExpectRange(pIf->GetCondition(), 13, 6, 13, 7);
	const ExpressionStatement* pThen = Cast<ExpressionStatement>(pIf->GetThen());
	ExpectRange(pThen, 14, 2, 14, 12);
	ExpectRange(pThen->GetExpression(), 14, 2, 14, 11);
	ExpectRange(Cast<Assignment>(pThen->GetExpression())->GetRight(), 14, 6, 14, 11);
	ExpectRange(pIf->GetElse(), 15, 5, 15, 8);
}

TEST(TslParser, RangesOfDefinitions)
{
	std::unique_ptr<Parsed> pParsed = ParseText("class C {\n  static input float w[2] = float[2](1.0, 2.0);\n"
	                                            "  vec3 f(in vec3 a) { return a; }\n}");
	ASSERT_TRUE(pParsed->bParsed);
	const ClassDefinition* pClass = pParsed->pModule->GetClassDefinitions()[0];
	ExpectRange(pClass, 1, 0, 4, 1);
	const VariableDeclaration* pMember = pClass->GetMemberVariables()[0];
	ExpectRange(pMember, 2, 2, 2, 47);
	ExpectRange(pMember->GetInitializer(), 2, 28, 2, 46);
	const FunctionDefinition* pFunction = pClass->GetMemberFunctions()[0];
	ExpectRange(pFunction, 3, 2, 3, 33);
	ExpectRange(pFunction->GetFunctionPrototype(), 3, 2, 3, 19);
	ExpectRange(pFunction->GetFunctionPrototype()->GetParameters()[0], 3, 9, 3, 18);
	ExpectRange(pFunction->GetCompoundStatement(), 3, 20, 3, 33);
}
