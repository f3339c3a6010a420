#include <gtest/gtest.h>

#include "PrintTestSupport.h"

using namespace Tarsel;
using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

const std::vector<std::string> kNoErrors;

// Prints without output indices, as the root compilers and the vertex stage do.
std::string Print(Tree& t)
{
	VisitorPrintTsl printer(nullptr, nullptr, false);
	EXPECT_TRUE(printer.Visit(t.m.get()));
	return printer.result();
}

} // namespace

TEST(PrintLayout, FunctionLinesAndTheirOwners)
{
	Tree t;
	VisitorPrintTsl empty(nullptr, nullptr, true);
	ASSERT_TRUE(empty.Visit(t.m.get()));
	EXPECT_EQ(empty.result(), "\n\n\n\n");

	FunctionPrototype* pPrototype =
	    t.Proto(kType_Float, "f", {t.Parameter(t.m->CreateType(kType_Float), "x")});
	Statement* pReturn =
	    t.m->CreateJumpStatement(kJump_Return, t.Op(kOperator_Multiply, t.V("x"), t.F("2.0")));
	Syntax* pBody = t.Define(pPrototype, {pReturn})->GetCompoundStatement();
	VisitorPrintTsl printer(nullptr, nullptr, false);
	ASSERT_TRUE(printer.Visit(t.m.get()));
	EXPECT_EQ(printer.result(), "\n\n\nfloat f(float x)\n{\n\treturn (x*2.0);\n}\n\n");
	Syntax* pModule = t.m.get();
	const std::vector<Syntax*> owners = {pModule, pModule, pModule, pPrototype, pBody, pReturn, pBody, pBody};
	for (size_t i = 0; i < owners.size(); ++i)
		EXPECT_EQ(printer.GetSyntaxForLine(static_cast<int>(i) + 1), owners[i]) << "line " << i + 1;
	EXPECT_EQ(printer.GetSyntaxForLine(0), pModule);
	EXPECT_EQ(printer.GetSyntaxForLine(9), pModule);
}

// Every statement and expression form in one body: tabs by depth, the empty line before else, loops,
// literals, operators.
TEST(PrintLayout, StatementsAndExpressions)
{
	Tree t;
	t.Globals({{kType_Int, "x"}, {kType_Bool, "a"}, {kType_Int, "b"}});
	Expression* pLess = t.Op(kOperator_Less, t.V("x"), t.I(3));
	ForStatement* pFor = t.m->CreateForStatement(t.m->CreatePostOperator(kOperator_Increment, t.V("i")));
	pFor->SetInitialization(t.Local(kType_Int, "i", t.I(0)));
	pFor->SetCondition(t.m->CreateCondition(t.Op(kOperator_Less, t.V("i"), t.I(3))));
	pFor->SetStatement(t.m->CreateJumpStatement(kJump_Continue, nullptr));
	Expression* pField = t.m->CreateFieldSelection(
	    t.Call(t.m->CreateFunctionCall(t.m->CreateType(kType_IVec2)), {t.V("x"), t.I(1)}), t.S("y"));
	Expression* pConditional =
	    t.m->CreateConditional(t.V("a"), t.m->CreateUnaryOperator(kOperator_Subtract, t.V("x")), pField);
	t.Define(
	    t.Proto(kType_Void, "main"),
	    {t.If(t.V("a"), t.E(t.Set(t.V("b"), t.I(1))), t.E(t.Set(t.V("b"), t.I(2)))),
	     t.If(t.V("a"), t.Block({t.E(t.Set(t.V("b"), t.I(1), kOperator_Add))})),
	     t.m->CreateWhileStatement(t.m->CreateCondition(pLess),
	                               t.E(t.m->CreatePostOperator(kOperator_Decrement, t.V("x")))),
	     t.m->CreateDoWhileStatement(t.Block({t.E(t.m->CreatePostOperator(kOperator_Increment, t.V("x")))}),
	                                 t.Op(kOperator_Less, t.V("x"), t.I(3))),
	     pFor, t.Local(kType_Float, "y", t.F("1.0f")), t.E(t.Set(t.V("y"), t.F("2.50"), kOperator_Multiply)),
	     t.E(t.Set(t.V("y"), t.Op(kOperator_Add, t.m->CreateFloatConstant(0.1),
	                              t.m->CreateFloatConstant(t.S(""), 1.0)))),
	     t.E(t.Set(t.m->CreateSubscript(t.V("ql_OutputRayCount"), t.I(1)),
	               t.Op(kOperator_ShiftLeft, t.V("b"), t.I(2)))),
	     t.E(t.Set(t.V("x"), pConditional)),
	     t.E(t.Set(t.V("a"), t.m->CreateUnaryOperator(kOperator_Not, t.m->CreateBoolConstant(true)))),
	     t.m->CreateDeclarationStatement(t.Decl(t.m->CreateUserType(t.S("Light")), "l")),
	     t.m->CreateJumpStatement(kJump_Return, nullptr), t.m->CreateEmptyStatement()});
	const std::string sText = Print(t);
	EXPECT_EQ(sText, Fixture("statements.qlray"));
	EXPECT_EQ(CompileOnDevice(sText, IQLShader::kType_Ray), kNoErrors);
}

TEST(PrintLayout, DeclarationsSortedAndRemovedFunctions)
{
	Tree t;
	StructDefinition* pBlock = t.m->CreateStructDefinition(t.S("weights"));
	pBlock->SetUniform(true);
	Type* pArray = t.m->CreateType(kType_Float);
	pArray->SetArray(true);
	pArray->SetLength(t.I(2));
	pBlock->AddMemberVariable(t.Decl(pArray, "a"));
	StructDefinition* pStruct = t.m->CreateStructDefinition(t.S("Sample"));
	Type* pHigh = t.m->CreateType(kType_Float);
	pHigh->SetPrecisionQualifier(kPrecision_High);
	pStruct->AddMemberVariable(t.Decl(t.m->CreateType(kType_Vec3), "direction"));
	pStruct->AddMemberVariable(t.Decl(pHigh, "intensity"));
	t.m->AddStructDefinition(pBlock);
	t.m->AddStructDefinition(pStruct);

	t.Global(kType_Int, "depthInfo", kStorage_RayAttribute);
	Type* pMatrices = t.m->CreateType(kType_Mat4);
	pMatrices->SetArray(true);
	pMatrices->SetLength(t.I(4));
	t.m->AddVariableDeclaration(
	    t.m->CreateDeclarationStatement(t.Decl(pMatrices, "m", nullptr, kStorage_MutableUniform)));
	Type* pMedium = t.m->CreateType(kType_Vec3);
	pMedium->SetPrecisionQualifier(kPrecision_Medium);
	t.m->AddVariableDeclaration(
	    t.m->CreateDeclarationStatement(t.Decl(pMedium, "color", nullptr, kStorage_Uniform)));
	VariableDeclaration* pConstant = t.Decl(t.m->CreateType(kType_Float), "k", t.F("2.5"));
	pConstant->SetStatic(true);
	pConstant->SetConst(true);
	t.m->AddVariableDeclaration(t.m->CreateDeclarationStatement(pConstant));

	FunctionPrototype* pUnused = t.Proto(kType_Void, "unused");
	pUnused->SetOptimization(kOptimization_Empty);
	Type* pVector = t.m->CreateType(kType_Float);
	pVector->SetArray(true);
	pVector->SetLength(t.I(3));
	FunctionPrototype* pGone = t.Proto(kType_Void, "gone", {t.Parameter(t.m->CreateType(kType_Float), "p")});
	pGone->SetOptimization(kOptimization_NeverCalled);
	for (FunctionPrototype* p : {pUnused,
	                             t.Proto(kType_Vec3, "shade",
	                                     {t.Parameter(t.m->CreateType(kType_Float), "w", kParameter_Out),
	                                      t.Parameter(t.m->CreateType(kType_Int), "n", kParameter_InOut),
	                                      t.Parameter(pVector, "v")}),
	                             pGone})
		t.m->AddFunctionDeclaration(p);

	t.Define(t.Proto(kType_Void, "gone"), {})->SetOptimization(kOptimization_NeverCalled);
	FunctionCall* pEmpty = t.Call("unused");
	pEmpty->SetOptimization(kOptimization_Empty);
	FunctionCall* pNeverCalled =
	    t.Call("gone", {t.V("k"), t.m->CreateFieldSelection(t.V("color"), t.S("x"))});
	pNeverCalled->SetOptimization(kOptimization_NeverCalled);
	t.Define(t.Proto(kType_Void, "main"), {t.E(pEmpty), t.E(pNeverCalled)});

	ClassDefinition* pClass = t.m->CreateClassDefinition(t.S("C"));
	pClass->AddMemberVariable(t.Decl(t.m->CreateType(kType_Float), "cm"));
	pClass->AddMemberFunction(t.m->CreateFunctionDefinition(
	    t.Proto(kType_Float, "cf"), t.Block({t.m->CreateJumpStatement(kJump_Return, t.V("cm"))})));
	t.m->AddClassDefinition(pClass);

	const std::string sText = Print(t);
	EXPECT_EQ(sText, Fixture("declarations.qlray"));
	EXPECT_EQ(CompileOnDevice(sText, IQLShader::kType_Ray), kNoErrors);
}

// The root shader of a surface graph Wood_k1f whose root instance has the key 0x2a.
TEST(PrintLayout, RootShader)
{
	Tree t;
	t.Globals({{kType_Int, "depthInfo"},
	           {kType_Int, "samplingState"},
	           {kType_Int, "auxInfo"},
	           {kType_Vec3, "prefixPrimitiveAuxColor"},
	           {kType_Float, "prefixPrimitiveAuxFloat"},
	           {kType_Vec3, "color"}},
	          kStorage_RayAttribute);
	t.Global(kType_Vec3, "Normal", kStorage_Varying);
	t.Global(kType_Vec4, "Position_WorldSpace", kStorage_Varying);
	t.Globals({{kType_Float, "g_rayMinContrib"},
	           {kType_IVec4, "g_rayDepthMax"},
	           {kType_Int, "g_rayDepthMaxTotal"},
	           {kType_Int, "g_rayDepthMaxDummy"}});
	for (const char* pName : {"_ctor_static_k1f", "_ctor_instance_k1f", "Wood_Init_k2a"})
		t.m->AddFunctionDeclaration(t.Proto(kType_Void, pName));
	t.m->AddFunctionDeclaration(
	    t.Proto(kType_Int, "Wood_GetRayCount_k2a", {t.Parameter(t.m->CreateType(kType_Int), "index")}));
	t.m->AddFunctionDeclaration(t.Proto(kType_Void, "Wood_Shade_k2a"));
	std::vector<Statement*> vSetup = {t.E(t.Call("Wood_Init_k2a"))};
	for (int i = 0; i < 8; ++i)
		vSetup.push_back(t.E(t.Set(t.m->CreateSubscript(t.V("ql_OutputRayCount"), t.I(i)),
		                           t.Call("Wood_GetRayCount_k2a", {t.I(i)}))));
	t.Define(t.Proto(kType_Void, "setup"), vSetup);
	t.Define(t.Proto(kType_Void, "main"), {t.E(t.Call("_ctor_static_k1f")), t.E(t.Call("_ctor_instance_k1f")),
	                                       t.E(t.Call("Wood_Shade_k2a"))});

	const std::string sText = Print(t);
	EXPECT_EQ(sText, Fixture("root.qlray"));
	EXPECT_EQ(CompileOnDevice(sText, IQLShader::kType_Ray), kNoErrors);

	// The frame root assigns its single ray count.
	auto* pFrame = static_cast<ExpressionStatement*>(
	    t.E(t.Set(t.V("ql_OutputRayCount"), t.Call("Wood_GetRayCount_k2a"))));
	t.m->AddStatement(pFrame);
	VisitorPrintTsl frame(nullptr, nullptr, false);
	ASSERT_TRUE(frame.Visit(pFrame, nullptr));
	EXPECT_EQ(frame.result(), "ql_OutputRayCount = Wood_GetRayCount_k2a();\n");
}

TEST(PrintLayout, VertexShader)
{
	Tree t;
	t.Global(kType_Vec4, "Position_WorldSpace", kStorage_TransformedVarying);
	t.Global(kType_Vec3, "a_Position", kStorage_Attribute);
	t.Global(kType_Vec3, "Normal", kStorage_TransformedVarying);
	t.Global(kType_Vec3, "a_Normal", kStorage_Attribute);
	auto Position = [&]()
	{
		return t.Call(t.m->CreateFunctionCall(t.m->CreateType(kType_Vec4)),
		              {t.V("a_Position"), t.m->CreateFloatConstant(1.0)});
	};
	FunctionDefinition* pMain =
	    t.Define(t.Proto(kType_Void, "main"),
	             {t.E(t.Set(t.V("Normal"), t.V("a_Normal"))), t.E(t.Set(t.V("ql_Position"), Position())),
	              t.E(t.Set(t.V("Position_WorldSpace"), Position()))});
	EXPECT_EQ(Print(t), Fixture("vertex.qlvert"));

	t.Global(kType_Vec3, "a_uv", kStorage_Attribute);
	t.Global(kType_Vec3, "uv", kStorage_Varying);
	Expression* pMatrix =
	    t.Call(t.m->CreateFunctionCall(t.m->CreateType(kType_Mat3)), {t.V("ql_PrimitiveTransformMatrix")});
	pMain->GetCompoundStatement()->AddStatement(
	    t.E(t.Set(t.V("uv"), t.Op(kOperator_Multiply, pMatrix, t.V("a_uv")))));
	const std::string sText = Print(t);
	EXPECT_NE(sText.find("\tuv = (mat3(ql_PrimitiveTransformMatrix)*a_uv);\n"), std::string::npos);
	EXPECT_EQ(CompileOnDevice(sText, IQLShader::kType_Vertex), kNoErrors);
}

// Which node owns each line decides where a device error is reported: pinned byte for byte for the
// lines of if/else, for, do-while, break, a precision and the parameter qualifiers.
TEST(PrintLayout, LineOwnersOfControlFlow)
{
	Tree t;
	Type* pLow = t.m->CreateType(kType_Int);
	pLow->SetPrecisionQualifier(kPrecision_Low);
	FunctionPrototype* pPrototype = t.Proto(kType_Void, "f",
	                                        {t.Parameter(t.m->CreateType(kType_Float), "w", kParameter_Out),
	                                         t.Parameter(pLow, "n", kParameter_InOut),
	                                         t.Parameter(t.m->CreateType(kType_Float), "x", kParameter_In)});
	Type* pLowFloat = t.m->CreateType(kType_Float);
	pLowFloat->SetPrecisionQualifier(kPrecision_Low);
	Statement* pLocal = t.m->CreateDeclarationStatement(t.Decl(pLowFloat, "y", t.V("x")));
	Statement* pThen = t.E(t.Set(t.V("w"), t.F("1.0")));
	Statement* pElse = t.E(t.Set(t.V("w"), t.F("2.0")));
	Statement* pIf = t.If(t.V("a"), pThen, pElse);
	Statement* pBreak = t.m->CreateJumpStatement(kJump_Break, nullptr);
	Statement* pInnerIf = t.If(t.V("b"), pBreak);
	CompoundStatement* pLoopBody = t.Block({pInnerIf});
	ForStatement* pFor = t.m->CreateForStatement(t.m->CreatePostOperator(kOperator_Increment, t.V("i")));
	Statement* pInit = t.Local(kType_Int, "i", t.I(0));
	pFor->SetInitialization(pInit);
	pFor->SetCondition(t.m->CreateCondition(t.Op(kOperator_Less, t.V("i"), t.I(3))));
	pFor->SetStatement(pLoopBody);
	Statement* pIncrement = t.E(t.m->CreatePostOperator(kOperator_Increment, t.V("n")));
	CompoundStatement* pDoBody = t.Block({pIncrement});
	Expression* pWhile = t.Op(kOperator_Less, t.V("n"), t.I(3));
	Statement* pDo = t.m->CreateDoWhileStatement(pDoBody, pWhile);
	FunctionDefinition* pDefinition = t.Define(pPrototype, {pLocal, pIf, pFor, pDo});
	Syntax* pBody = pDefinition->GetCompoundStatement();
	Syntax* pModule = t.m.get();

	const std::vector<std::pair<const char*, Syntax*>> vLines = {
	    {"", pModule},
	    {"", pModule},
	    {"", pModule},
	    {"void f(out float w, inout lowp int n, float x)", pPrototype},
	    {"{", pBody},
	    {"\tlowp float y = x;", pLocal},
	    {"\tif (a)", pIf},
	    {"\t\tw = 1.0;", pThen},
	    {"", pThen},
	    {"\telse", pElse},
	    {"\t\tw = 2.0;", pElse},
	    {"\tfor(\tint i = 0;", pInit},
	    {"\t(i<3);i++)", pFor},
	    {"\t{", pLoopBody},
	    {"\t\tif (b)", pInnerIf},
	    {"\t\t\tbreak;", pBreak},
	    {"\t}", pLoopBody},
	    {"\tdo", pDo},
	    {"\t{", pDoBody},
	    {"\t\tn++;", pIncrement},
	    {"\t}", pDoBody},
	    {"\twhile((n<3));", pDo},
	    {"}", pBody},
	    {"", pBody},
	    {"", pModule},
	};
	VisitorPrintTsl printer(nullptr, nullptr, false);
	ASSERT_TRUE(printer.Visit(t.m.get()));
	std::string sExpected;
	for (size_t i = 0; i < vLines.size(); ++i)
	{
		sExpected += vLines[i].first + std::string(i + 1 < vLines.size() ? "\n" : "");
		EXPECT_EQ(printer.GetSyntaxForLine(int(i) + 1), vLines[i].second)
		    << "line " << i + 1 << ": " << vLines[i].first;
	}
	EXPECT_EQ(printer.result(), sExpected);
}
