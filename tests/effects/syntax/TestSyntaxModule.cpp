#include "TreeBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using namespace Tarsel::Effects;
using Tarsel::Effects::Test::TreeBuilder;

namespace
{

template <class T>
bool Equal(T* pA, T* pB)
{
	std::unique_ptr<T> a(pA), b(pB);
	return pA->Equals(pB);
}

// class Wood : Surface { coord normal vec3 N; output vec3 color; float k = 0.5; float Shade(float a) {...} }
ClassDefinition* MakeClass(Module& m, const char* pName = "Wood")
{
	TreeBuilder b(&m);
	ClassDefinition* p = m.CreateClassDefinition(m.CreateString(pName));
	p->SetInterface(m.CreateString("Surface"));
	VariableDeclaration* pCoord = b.Decl(kType_Vec3, "N");
	pCoord->SetStorageQualifier(kStorage_Coord);
	pCoord->SetTransformation(kTransformation_Normal);
	p->AddCoord(pCoord);
	p->AddOutput(m.CreateType(kType_Vec3), m.CreateString("color"));
	p->AddMemberVariable(b.Decl(kType_Float, "k", b.Float("0.5")));
	p->AddMemberFunction(m.CreateFunctionDefinition(
	    b.Proto(kType_Float, "Shade", {b.Param(kType_Float, "a")}), b.Block({b.Return(b.Var("a"))})));
	return p;
}

} // namespace

TEST(SyntaxDeclarations, PrototypesEqualEquivalentAndOrder)
{
	Module m;
	TreeBuilder b(&m);
	std::unique_ptr<FunctionPrototype> pA(b.Proto(kType_Float, "f", {b.Param(kType_Float, "a")}));
	std::unique_ptr<FunctionPrototype> pB(b.Proto(kType_Float, "f", {b.Param(kType_Float, "b")}));
	EXPECT_FALSE(pA->Equals(pB.get()));
	EXPECT_TRUE(pA->Equivalent(pB.get()));

	std::unique_ptr<FunctionPrototype> pTwo(
	    b.Proto(kType_Float, "f", {b.Param(kType_Float, "a"), b.Param(kType_Float, "b")}));
	EXPECT_FALSE(pA->Equals(pTwo.get()));
	EXPECT_FALSE(pTwo->Equals(pA.get()));
	EXPECT_FALSE(pA->Equivalent(pTwo.get()));
	EXPECT_FALSE(pTwo->Equivalent(pA.get()));
	std::unique_ptr<FunctionPrototype> pOut(
	    b.Proto(kType_Float, "f", {b.Param(kType_Float, "a", kParameter_Out)}));
	EXPECT_FALSE(pA->Equivalent(pOut.get()));

	// Anything touching a user type never compares equal, not even to its own clone.
	FunctionPrototype* pUser =
	    m.CreateFunctionPrototype(kFunction_None, m.CreateUserType(m.CreateString("S")), m.CreateString("g"));
	std::unique_ptr<FunctionPrototype> pUserOwner(pUser), pUserClone(pUser->Clone(&m));
	EXPECT_FALSE(pUser->Equals(pUserClone.get()));
	EXPECT_FALSE(pUser->Equals(pUser));
	EXPECT_FALSE(
	    Equal(m.CreateType(kType_UserDefined), static_cast<Type*>(m.CreateUserType(m.CreateString("S")))));

	// Order: name first, then parameter count, then the first differing parameter.
	EXPECT_TRUE(*pA < *pTwo);
	EXPECT_FALSE(*pTwo < *pA);
	EXPECT_TRUE(*pA < *pB); // "a" before "b"
	std::unique_ptr<FunctionPrototype> pG(b.Proto(kType_Void, "g", {}));
	EXPECT_TRUE(*pTwo < *pG);
	std::unique_ptr<FunctionPrototype> pStatic(b.Proto(kType_Void, "a", {}));
	pStatic->SetQualifier(kFunction_Static);
	EXPECT_TRUE(*pG < *pStatic);

	FunctionCall* pCall = b.Call("f", {});
	std::unique_ptr<FunctionCall> pCallOwner(pCall);
	EXPECT_TRUE(pCall->Equals(pTwo.get()));
	EXPECT_FALSE(pCall->Equals(pG.get()));
	EXPECT_FALSE(pCall->Equals(static_cast<const FunctionPrototype*>(nullptr)));
}

TEST(SyntaxDeclarations, TypesVariablesAndTheirOrder)
{
	Module m;
	TreeBuilder b(&m);
	auto array = [&](long n, bool bLength)
	{
		Type* p = m.CreateType(kType_Float);
		p->SetArray(true);
		if (bLength)
			p->SetLength(b.Int(n));
		return p;
	};
	EXPECT_TRUE(Equal(array(4, true), array(4, true)));
	EXPECT_FALSE(Equal(array(4, true), array(5, true)));
	EXPECT_FALSE(Equal(array(4, true), array(4, false)));
	Type* pHigh = m.CreateType(kType_Float);
	pHigh->SetPrecisionQualifier(kPrecision_High);
	EXPECT_FALSE(Equal(pHigh, m.CreateType(kType_Float)));
	// A length without the array flag is not cloned.
	std::unique_ptr<Type> pStray(m.CreateType(kType_Float));
	pStray->SetLength(b.Int(3));
	std::unique_ptr<Type> pStrayClone(pStray->Clone(&m));
	EXPECT_EQ(nullptr, pStrayClone->GetLength());

	VariableDeclaration* pStatic = b.Decl(kType_Float, "x");
	pStatic->SetStatic(true);
	EXPECT_FALSE(Equal(pStatic, b.Decl(kType_Float, "x")));
	EXPECT_FALSE(Equal(b.Decl(kType_Float, "x", b.Int(1)), b.Decl(kType_Float, "x")));
	VariableDeclaration* pFull = b.Decl(kType_Vec3, "N", b.Float("1.0"));
	pFull->SetConst(true);
	pFull->SetStorageQualifier(kStorage_Coord);
	pFull->SetTransformation(kTransformation_Tangent);
	pFull->SetRange(TreeBuilder::Range(3, 4, 3, 20));
	std::unique_ptr<VariableDeclaration> pFullOwner(pFull), pFullClone(pFull->Clone(&m));
	EXPECT_TRUE(pFullClone->Equals(pFull));
	EXPECT_EQ(kTransformation_Tangent, pFullClone->GetTransformation());
	EXPECT_EQ(pFull->GetRange(), pFullClone->GetRange());

	std::unique_ptr<VariableDeclaration> pUniformB(b.Decl(kType_Float, "b")),
	    pPlainZ(b.Decl(kType_Float, "z"));
	pUniformB->SetStorageQualifier(kStorage_Uniform);
	EXPECT_TRUE(*pPlainZ < *pUniformB); // storage before name
	std::unique_ptr<DeclarationStatement> pS1(m.CreateDeclarationStatement(b.Decl(kType_Int, "a"))),
	    pS2(m.CreateDeclarationStatement(b.Decl(kType_Int, "b")));
	EXPECT_TRUE(*pS1 < *pS2);
	EXPECT_FALSE(*pS2 < *pS1);
}

TEST(SyntaxDeclarations, ClassCoordsOutputsAndClone)
{
	Module m;
	TreeBuilder b(&m);
	std::unique_ptr<ClassDefinition> p(MakeClass(m));
	VariableDeclaration* pFirstN = p->GetCoords().at("N");
	std::unique_ptr<VariableDeclaration> pSecondN(b.Decl(kType_Vec3, "N"));
	EXPECT_FALSE(p->AddCoord(pSecondN.get()));
	EXPECT_EQ(pFirstN, p->GetCoords().at("N"));
	String* pColor = m.CreateString("color");
	std::unique_ptr<Type> pType(m.CreateType(kType_Vec4));
	EXPECT_FALSE(p->AddOutput(pType.get(), pColor));
	EXPECT_EQ(1u, p->GetCountOutputs());
	m.DestroyString(pColor);

	// A clone into another module equals its source (outputs are matched by name text).
	Module other;
	std::unique_ptr<ClassDefinition> pClone(p->Clone(&other));
	EXPECT_TRUE(pClone->Equals(p.get()));
	EXPECT_TRUE(p->Equals(pClone.get()));
	EXPECT_EQ("Surface", pClone->GetInterface()->GetString());
	EXPECT_EQ(kTransformation_Normal, pClone->GetCoords().at("N")->GetTransformation());
	std::unique_ptr<ClassDefinition> pRenamed(MakeClass(m, "Stone"));
	EXPECT_FALSE(pRenamed->Equals(p.get()));
	pRenamed->SetName(m.CreateString("Wood"));
	EXPECT_TRUE(pRenamed->Equals(p.get()));
	pRenamed->AddCoord(b.Decl(kType_Vec2, "uv"));
	EXPECT_FALSE(pRenamed->Equals(p.get()));
	EXPECT_FALSE(p->Equals(pRenamed.get()));

	// Structs compare names; interfaces only their methods.
	auto makeStruct = [&](const char* pName)
	{
		StructDefinition* pStruct = m.CreateStructDefinition(m.CreateString(pName));
		pStruct->AddMemberVariable(b.Decl(kType_Float, "x"));
		return pStruct;
	};
	EXPECT_TRUE(Equal(makeStruct("S"), makeStruct("S")));
	EXPECT_FALSE(Equal(makeStruct("S"), makeStruct("T")));
	auto makeInterface = [&](const char* pName)
	{
		InterfaceDefinition* pInterface = m.CreateInterfaceDefinition(m.CreateString(pName));
		pInterface->AddMemberFunction(b.Proto(kType_Vec3, "Shade", {}));
		return pInterface;
	};
	EXPECT_TRUE(Equal(makeInterface("A"), makeInterface("B")));
}

TEST(SyntaxModule, TablesLookupsAndInterfaceIndex)
{
	Module m;
	TreeBuilder b(&m);
	InterfaceDefinition* pFirst = m.CreateInterfaceDefinition(m.CreateString("Light"));
	InterfaceDefinition* pSecond = m.CreateInterfaceDefinition(m.CreateString("Light"));
	m.AddInterfaceDefinition(pFirst);
	m.AddInterfaceDefinition(pSecond);
	EXPECT_EQ(pSecond, m.GetInterfaceDefinition("Light"));
	EXPECT_EQ(2u, m.GetCountInterfaceDefinitions());
	EXPECT_TRUE(m.RemoveInterfaceDefinition(pSecond));
	EXPECT_EQ(nullptr, m.GetInterfaceDefinition("Light"));
	EXPECT_FALSE(m.RemoveInterfaceDefinition(pSecond));
	Syntax::Destroy(pSecond);

	ClassDefinition* pClass = MakeClass(m);
	m.AddClassDefinition(pClass);
	EXPECT_EQ(pClass, m.GetClassDefinition("Wood"));
	EXPECT_EQ(nullptr, m.GetClassDefinition("Stone"));
	FunctionDefinition* pMain = m.CreateFunctionDefinition(b.Proto(kType_Void, "main", {}), b.Block({}));
	m.AddFunctionDefinition(pMain);
	EXPECT_EQ(pMain, m.GetFunctionDefinition("main"));
	FunctionPrototype* pDeclared = b.Proto(kType_Float, "helper", {});
	m.AddFunctionDeclaration(pDeclared);
	EXPECT_EQ(pDeclared, m.GetFunctionDeclaration("helper"));
	m.ClearFunctionDeclarations();
	EXPECT_EQ(0u, m.GetCountFunctionDeclarations());
	EXPECT_EQ(nullptr, m.GetFunctionDeclaration("helper"));

	StructDefinition* pStruct = m.CreateStructDefinition(m.CreateString("Block"));
	m.AddStructDefinition(pStruct);
	EXPECT_EQ(pStruct, m.GetStructDefinition("Block"));
	EXPECT_TRUE(m.RemoveStructDefinition(pStruct));
	EXPECT_EQ(nullptr, m.GetStructDefinition("Block"));
	Syntax::Destroy(pStruct);

	m.LogError("bad");
	m.LogWarning(std::string("odd"));
	EXPECT_EQ(std::vector<std::string>{"bad"}, m.ErrorMessages());
	EXPECT_EQ(std::vector<std::string>{"odd"}, m.WarningMessages());
}

TEST(SyntaxModule, CloneMergesDeclarationsIntoTheTarget)
{
	auto pSource = std::make_unique<Module>();
	TreeBuilder b(pSource.get());
	const std::string sName = "lib.tsl";
	pSource->SetRange(TreeBuilder::Range(1, 0, 40, 1, &sName));
	pSource->AddVariableDeclaration(
	    pSource->CreateDeclarationStatement(b.Decl(kType_Float, "g", b.Float("2.0"))));
	pSource->AddFunctionDeclaration(b.Proto(kType_Float, "later", {}));
	pSource->AddFunctionDefinition(b.EveryKind());
	StructDefinition* pStruct = pSource->CreateStructDefinition(pSource->CreateString("Block"));
	pStruct->SetUniform(true);
	pStruct->AddMemberVariable(b.Decl(kType_Vec4, "v"));
	pSource->AddStructDefinition(pStruct);
	pSource->AddClassDefinition(MakeClass(*pSource));
	InterfaceDefinition* pInterface = pSource->CreateInterfaceDefinition(pSource->CreateString("Surface"));
	pInterface->AddMemberFunction(b.Proto(kType_Vec3, "Shade", {b.Param(kType_Float, "a")}));
	pSource->AddInterfaceDefinition(pInterface);
	pSource->AddStatement(b.Stmt(b.Var("loose")));
	pSource->AddExpression(b.Int(5));
	pSource->LogError("kept here");

	auto pTarget = std::make_unique<Module>();
	pTarget->AddFunctionDefinition(TreeBuilder(pTarget.get()).EveryKind()); // existing content stays first
	EXPECT_EQ(pTarget.get(), pSource->Clone(pTarget.get()));
	EXPECT_EQ(pSource->GetRange(), pTarget->GetRange());
	EXPECT_EQ(1u, pTarget->GetCountVariableDeclarations());
	EXPECT_EQ(1u, pTarget->GetCountFunctionDeclarations());
	ASSERT_EQ(2u, pTarget->GetCountFunctionDefinitions());
	EXPECT_TRUE(pTarget->GetFunctionDefinitions()[1]->Equals(pSource->GetFunctionDefinitions()[0]));
	EXPECT_TRUE(pTarget->GetVariableDeclarations()[0]->Equals(pSource->GetVariableDeclarations()[0]));
	EXPECT_TRUE(pTarget->GetStructDefinitions()[0]->Equals(pStruct));
	EXPECT_TRUE(pTarget->GetClassDefinitions()[0]->Equals(pSource->GetClassDefinitions()[0]));
	ASSERT_NE(nullptr, pTarget->GetInterfaceDefinition("Surface"));
	EXPECT_NE(pInterface, pTarget->GetInterfaceDefinition("Surface"));
	EXPECT_EQ(0u, pTarget->GetCountStatements());
	EXPECT_EQ(0u, pTarget->GetCountExpressions());
	EXPECT_TRUE(pTarget->ErrorMessages().empty());

	// The merge survives its source; a second clone of the merge equals the first.
	pSource.reset();
	Module again;
	pTarget->Clone(&again);
	for (size_t i = 0; i < again.GetCountFunctionDefinitions(); ++i)
		EXPECT_TRUE(again.GetFunctionDefinitions()[i]->Equals(pTarget->GetFunctionDefinitions()[i]));
	EXPECT_TRUE(again.GetClassDefinitions()[0]->Equals(pTarget->GetClassDefinitions()[0]));

	// Sorting the tables with the nodes' own order, as the printer does.
	auto& vFunctions = again.GetFunctionDefinitions();
	std::sort(vFunctions.begin(), vFunctions.end(), [](auto* pA, auto* pB) { return *pA < *pB; });
	EXPECT_FALSE(*vFunctions[1] < *vFunctions[0]);
}

TEST(SyntaxModule, DestructionDeletesEveryStringOnce)
{
	// Strings held by nodes of every table, by a struct member and a loose statement, and strings no node
	// holds: the sanitizer build reports any double delete or leak here.
	auto pModule = std::make_unique<Module>();
	TreeBuilder b(pModule.get());
	StructDefinition* pStruct = pModule->CreateStructDefinition(pModule->CreateString("S"));
	pStruct->AddMemberVariable(b.Decl(kType_Float, "member"));
	pModule->AddStructDefinition(pStruct);
	pModule->AddStatement(b.Stmt(b.Var("member")));
	pModule->AddExpression(b.Call("f", {b.Var("x")}));
	pModule->AddClassDefinition(MakeClass(*pModule));
	pModule->CreateString("unattached");
	pModule->AddFunctionDefinition(b.EveryKind());
	EXPECT_GT(pModule->GetCountStrings(), 20u);
	pModule.reset();
}

TEST(SyntaxModule, BorrowedNodesAreListedButNeverDeletedOrHandedOut)
{
	auto pSource = std::make_unique<Module>();
	TreeBuilder b(pSource.get());
	pSource->AddFunctionDefinition(b.EveryKind());
	pSource->AddFunctionDeclaration(b.Proto(kType_Float, "later", {}));
	pSource->AddClassDefinition(MakeClass(*pSource));
	InterfaceDefinition* pInterface = pSource->CreateInterfaceDefinition(pSource->CreateString("Surface"));
	pSource->AddInterfaceDefinition(pInterface);
	auto pCopy = std::make_unique<Module>();
	pSource->Clone(pCopy.get());

	{
		Module borrower;
		TreeBuilder own(&borrower);
		borrower.AddFunctionDeclaration(own.Proto(kType_Void, "mine", {}));
		borrower.Borrow(pSource.get());
		borrower.Borrow(&borrower); // nothing to lend itself
		borrower.AddFunctionDeclaration(own.Proto(kType_Void, "mine too", {}));
		ASSERT_EQ(3u, borrower.GetCountFunctionDeclarations());
		EXPECT_EQ(pSource->GetFunctionDeclarations()[0], borrower.GetFunctionDeclarations()[1]);
		EXPECT_EQ(pSource->GetFunctionDefinitions()[0], borrower.GetFunctionDefinition("shade"));
		EXPECT_EQ(pInterface, borrower.GetInterfaceDefinition("Surface"));
		EXPECT_FALSE(borrower.RemoveFunctionDefinition(pSource->GetFunctionDefinitions()[0]));
		EXPECT_FALSE(borrower.RemoveInterfaceDefinition(pInterface));
		EXPECT_EQ(1u, borrower.GetCountFunctionDefinitions());

		// Its own nodes come and go as before; clearing keeps the borrowed declaration.
		FunctionPrototype* pMine = borrower.GetFunctionDeclarations()[0];
		EXPECT_TRUE(borrower.RemoveFunctionDeclaration(pMine));
		EXPECT_FALSE(borrower.RemoveFunctionDeclaration(pMine));
		Syntax::Destroy(pMine);
		borrower.ClearFunctionDeclarations();
		EXPECT_EQ(0u, borrower.GetCountFunctionDeclarations());
	}
	// The source outlives the borrower whole (the sanitizer build sees any node deleted twice).
	ASSERT_EQ(1u, pSource->GetCountFunctionDeclarations());
	EXPECT_TRUE(pSource->GetFunctionDefinitions()[0]->Equals(pCopy->GetFunctionDefinitions()[0]));
	EXPECT_TRUE(pSource->GetClassDefinitions()[0]->Equals(pCopy->GetClassDefinitions()[0]));
	EXPECT_EQ(pInterface, pSource->GetInterfaceDefinition("Surface"));
}

TEST(SyntaxModule, ListsEveryCallItMadeUntilTheCallGoes)
{
	Module m;
	TreeBuilder b(&m);
	FunctionDefinition* pFunction = b.EveryKind();
	const size_t nInFunction = m.GetFunctionCalls().size();
	EXPECT_GT(nInFunction, 0u);
	FunctionCall* pLoose = b.Call("loose", {b.Call("inner", {})});
	EXPECT_EQ(nInFunction + 2, m.GetFunctionCalls().size());
	Syntax::Destroy(pLoose);
	ASSERT_EQ(nInFunction, m.GetFunctionCalls().size());
	for (const FunctionCall* pCall : m.GetFunctionCalls())
		EXPECT_EQ(&m, pCall->GetModule());

	// A clone lists its calls in the module it is made for; borrowing lists none twice.
	Module other;
	FunctionDefinition* pClone = pFunction->Clone(&other);
	EXPECT_EQ(nInFunction, other.GetFunctionCalls().size());
	EXPECT_EQ(nInFunction, m.GetFunctionCalls().size());
	m.AddFunctionDefinition(pFunction);
	other.Borrow(&m);
	EXPECT_EQ(nInFunction, other.GetFunctionCalls().size());
	ASSERT_EQ(1u, other.GetBorrowedModules().size());
	Syntax::Destroy(pClone);
	EXPECT_TRUE(other.GetFunctionCalls().empty());
}
