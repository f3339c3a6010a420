#include "values/AccessSeparate.h"

#include "core/Assert.h"
#include "syntax/Syntax.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{
struct AccessFixture : ::testing::Test
{
	RecordingAssertHandler asserts;
	ScopedAssertHandler scopedAsserts{&asserts};
	std::unique_ptr<Module> pModule{Module::Create()};
	Expression* pBody = nullptr; // the right-hand side of "x = <expression>;" in a function of the module

	Variable* Var(const char* pName) { return pModule->CreateVariable(pModule->CreateString(pName)); }
	// void f() { x = expression; }
	void AddFunction(Expression* pExpression)
	{
		Module* m = pModule.get();
		FunctionPrototype* pPrototype =
		    m->CreateFunctionPrototype(kFunction_None, m->CreateType(kType_Void), m->CreateString("f"));
		ExpressionStatement* pStatement =
		    m->CreateExpressionStatement(m->CreateAssignment(kOperator_Assign, Var("x"), pExpression));
		m->AddFunctionDefinition(
		    m->CreateFunctionDefinition(pPrototype, m->CreateCompoundStatement(pStatement)));
	}
	Expression* Right()
	{
		CompoundStatement* pBlock = pModule->GetFunctionDefinitions()[0]->GetCompoundStatement();
		auto* pStatement = static_cast<ExpressionStatement*>(pBlock->GetStatements()[0]);
		return static_cast<Assignment*>(pStatement->GetExpression())->GetRight();
	}
	bool Walk(Class, Visitor* pVisitor) { return pModule->AcceptVisitor(pVisitor); }
	bool Transform(IAccess& access)
	{
		IAccess::VisitorTransformation delegate = MakeDelegate(this, &AccessFixture::Walk);
		return access.VisitTransformations(delegate);
	}
	static std::string NameOf(const Expression* pExpression)
	{
		if (!pExpression || pExpression->GetClass() != kClass_Variable)
			return "<not a variable>";
		return static_cast<const Variable*>(pExpression)->GetIdentifier()->GetString();
	}
	const VariableDeclaration* Declared(size_t index) const
	{
		return pModule->GetVariableDeclarations()[index]->GetDeclaration();
	}
};
} // namespace

TEST_F(AccessFixture, BufferDeclaresOneElementBlockAndRewritesSubscripts)
{
	AccessBuffer access;
	ASSERT_TRUE(access.Init(kType_Float, "arr", "arr_k1_k2"));
	ASSERT_TRUE(access.CollectShader(pModule.get()));
	ASSERT_EQ(1u, pModule->GetCountStructDefinitions());
	const StructDefinition* pBlock = pModule->GetStructDefinitions()[0];
	EXPECT_EQ("arr_k1_k2", pBlock->GetName()->GetString());
	EXPECT_TRUE(pBlock->IsUniform());
	ASSERT_EQ(1u, pBlock->GetCountMemberVariables());
	const VariableDeclaration* pMember = pBlock->GetMemberVariables()[0];
	EXPECT_EQ("a", pMember->GetIdentifier()->GetString());
	EXPECT_TRUE(pMember->GetType()->IsArray());
	EXPECT_EQ(1, static_cast<const IntConstant*>(pMember->GetType()->GetLength())->GetValue());

	// arr[other[i]]: only the subscript on arr is rewritten, the index is copied as it is.
	AddFunction(pModule->CreateSubscript(Var("arr"), pModule->CreateSubscript(Var("other"), Var("i"))));
	ASSERT_TRUE(Transform(access));
	ASSERT_EQ(kClass_Subscript, Right()->GetClass());
	auto* pRewritten = static_cast<Subscript*>(Right());
	ASSERT_EQ(kClass_FieldSelection, pRewritten->GetArray()->GetClass());
	auto* pField = static_cast<FieldSelection*>(pRewritten->GetArray());
	EXPECT_EQ("a", pField->GetField()->GetString());
	EXPECT_EQ("arr_k1_k2", NameOf(pField->GetExpression()));
	ASSERT_EQ(kClass_Subscript, pRewritten->GetIndex()->GetClass());
	EXPECT_EQ("other", NameOf(static_cast<Subscript*>(pRewritten->GetIndex())->GetArray()));
}

TEST_F(AccessFixture, SeparateArraysDeclareAtLeastOneElement)
{
	for (int nLength : {0, 1, 3})
	{
		AccessSubscriptSeparate access;
		ASSERT_TRUE(access.Init(kType_Vec3, "m", "m_k5", nLength, AccessSeparate::kMode_Uniform, nullptr));
		ASSERT_TRUE(access.CollectShader(pModule.get()));
	}
	ASSERT_EQ(3u, pModule->GetCountVariableDeclarations());
	for (size_t i = 0; i < 3; ++i)
	{
		EXPECT_EQ(kStorage_Uniform, Declared(i)->GetStorageQualifier());
		EXPECT_EQ("m_k5", Declared(i)->GetIdentifier()->GetString());
		EXPECT_EQ(i < 2 ? 1 : 3,
		          static_cast<const IntConstant*>(Declared(i)->GetType()->GetLength())->GetValue());
	}

	AccessSubscriptSeparate access;
	ASSERT_TRUE(access.Init(kType_Float, "m", "m_k5", 2, AccessSeparate::kMode_Global, nullptr));
	AddFunction(pModule->CreateSubscript(Var("m"), Var("i")));
	ASSERT_TRUE(Transform(access));
	EXPECT_EQ("m_k5", NameOf(static_cast<Subscript*>(Right())->GetArray()));
}

TEST_F(AccessFixture, SeparateVariablesCarryModeAndInitializer)
{
	std::unique_ptr<Module> pSource(Module::Create());
	Expression* pInitializer = pSource->CreateFloatConstant(0.5);
	pSource->AddExpression(pInitializer);

	AccessVariableSeparate member;
	ASSERT_TRUE(member.Init(kType_Float, "v", "v_k3", 1, AccessSeparate::kMode_Global, pInitializer));
	ASSERT_TRUE(member.CollectShader(pModule.get()));
	EXPECT_EQ(kStorage_None, Declared(0)->GetStorageQualifier());
	ASSERT_NE(nullptr, Declared(0)->GetInitializer());
	EXPECT_TRUE(Declared(0)->GetInitializer()->Equals(pInitializer));
	EXPECT_NE(pInitializer, Declared(0)->GetInitializer());

	AccessVariableSeparate constant;
	ASSERT_TRUE(constant.Init(kType_Float, "c", "c_k4", 1, AccessSeparate::kMode_MutableUniform, nullptr));
	ASSERT_TRUE(constant.CollectShader(pModule.get()));
	EXPECT_EQ(kStorage_MutableUniform, Declared(1)->GetStorageQualifier());

	AccessVariableSeparate refused;
	EXPECT_FALSE(refused.Init(kType_Float, "u", "u_k6", 1, AccessSeparate::kMode_Uniform, pInitializer));
	ASSERT_EQ(1u, asserts.GetReports().size());
	EXPECT_EQ("Internal error: Initializer for the access should be defined only for member values.",
	          asserts.GetReports()[0].sMessage);

	AddFunction(pModule->CreateBinaryOperator(kOperator_Add, Var("v"), Var("w")));
	ASSERT_TRUE(Transform(member));
	auto* pSum = static_cast<BinaryOperator*>(Right());
	EXPECT_EQ("v_k3", NameOf(pSum->GetLeft()));
	EXPECT_EQ("w", NameOf(pSum->GetRight()));
}
