#include "TestShaderSupport.h"

#include "objects/MemberValueArraySeparate.h"
#include "objects/MemberValueSingleSeparate.h"
#include "objects/Shader.h"

#include <memory>

namespace Tarsel::Effects::Testing
{
namespace
{

const char* const kLamp = R"(
class Lamp
{
	float cached = 0.25;
	const float scale = 2.0;
	float table[2] = float[](1.0, 2.0);
	float grow[];
	float Shade(int i)
	{
		return cached * scale * table[i] + grow[0] + float(grow.length + table.length);
	}
}
)";

class MemberValueTest : public ShaderTest
{
protected:
	void SetUp() override
	{
		Load("lamp.tsl", kLamp);
		shader = Create("Lamp");
		ASSERT_TRUE(shader);
	}
	template <class M>
	M* Member(const std::string& name)
	{
		M* member = dynamic_cast<M*>(shader->GetMember(name));
		EXPECT_TRUE(member) << name;
		return member;
	}
	const FunctionDefinition* Function(const std::string& name) const
	{
		for (const FunctionDefinition* function :
		     static_cast<Shader*>(shader)->GetModule()->GetFunctionDefinitions())
			if (function->GetFunctionPrototype()->GetName()->GetString() == name)
				return function;
		return nullptr;
	}
	// The declared length of a global array of the shader's module, -1 when absent.
	int DeclaredLength(const std::string& name) const
	{
		for (const DeclarationStatement* statement :
		     static_cast<Shader*>(shader)->GetModule()->GetVariableDeclarations())
		{
			const VariableDeclaration* declaration = statement->GetDeclaration();
			if (declaration->GetIdentifier()->GetString() == name && declaration->GetType()->GetLength())
				return int(static_cast<const IntConstant*>(declaration->GetType()->GetLength())->GetValue());
		}
		return -1;
	}
	static std::string Assigned(const Statement* statement)
	{
		const Expression* left = static_cast<const Assignment*>(
		                             static_cast<const ExpressionStatement*>(statement)->GetExpression())
		                             ->GetLeft();
		if (left->GetClass() == kClass_Subscript)
		{
			const auto* subscript = static_cast<const Subscript*>(left);
			return static_cast<const Variable*>(subscript->GetArray())->GetIdentifier()->GetString() + "[" +
			       std::to_string(static_cast<const IntConstant*>(subscript->GetIndex())->GetValue()) + "]";
		}
		return static_cast<const Variable*>(left)->GetIdentifier()->GetString();
	}

	IShader* shader = nullptr;
};

TEST_F(MemberValueTest, ConstructorAssignsEveryInitializerToTheMangledNames)
{
	auto* cached = Member<MemberValueSingleSeparate>("cached");
	auto* scale = Member<MemberValueSingleSeparate>("scale");
	auto* table = Member<MemberValueArraySeparate>("table");
	ASSERT_TRUE(cached && scale && table);
	EXPECT_EQ(cached->GetNameMangled().rfind("PrototypeMemberValueSingle_k", 0), 0u);
	EXPECT_EQ(table->GetNameMangled().rfind("PrototypeMemberValueArray_k", 0), 0u);

	const FunctionDefinition* constructor = Function(shader->GetConstructor());
	ASSERT_TRUE(constructor);
	std::set<std::string> assigned;
	for (const Statement* statement : constructor->GetCompoundStatement()->GetStatements())
		assigned.insert(Assigned(statement));
	EXPECT_EQ(assigned,
	          (std::set<std::string>{cached->GetNameMangled(), scale->GetNameMangled(),
	                                 table->GetNameMangled() + "[0]", table->GetNameMangled() + "[1]"}));

	const ModuleNames names(*static_cast<Shader*>(shader)->GetModule());
	for (const char* declared : {"cached", "scale", "table", "grow"})
		EXPECT_EQ(names.variables.count(declared), 0u) << declared;
	EXPECT_EQ(names.variables.count(table->GetNameLengthMangled()), 1u);
}

TEST_F(MemberValueTest, DeclarationsKeepAtLeastOneElementAndConstMembersAreMutableUniforms)
{
	auto* scale = Member<MemberValueSingleSeparate>("scale");
	auto* grow = Member<MemberValueArraySeparate>("grow");
	ASSERT_TRUE(scale && grow);
	EXPECT_EQ(DeclaredLength(grow->GetNameMangled()), 1);
	EXPECT_EQ(DeclaredLength(Member<MemberValueArraySeparate>("table")->GetNameMangled()), 2);

	std::unique_ptr<Module> collected(Module::Create());
	ASSERT_TRUE(scale->CollectShader(collected.get()));
	ASSERT_TRUE(grow->CollectShader(collected.get()));
	const auto& declarations = collected->GetVariableDeclarations();
	ASSERT_EQ(declarations.size(), 3u);
	EXPECT_EQ(declarations[0]->GetDeclaration()->GetStorageQualifier(), kStorage_MutableUniform);
	EXPECT_EQ(declarations[0]->GetDeclaration()->GetInitializer(), nullptr);
	EXPECT_EQ(declarations[1]->GetDeclaration()->GetStorageQualifier(), kStorage_None);
	EXPECT_EQ(declarations[2]->GetDeclaration()->GetIdentifier()->GetString(), grow->GetNameLengthMangled());
	EXPECT_EQ(declarations[2]->GetDeclaration()->GetStorageQualifier(), kStorage_Uniform);
}

TEST_F(MemberValueTest, ResizingAnOpenMemberRebuildsTheShaderOnce)
{
	auto* grow = Member<MemberValueArraySeparate>("grow");
	ASSERT_TRUE(grow);
	Counter<IMember*> lengths;
	grow->AddListenerChangeLength(lengths.Delegate());
	ASSERT_TRUE(grow->SetLength(3));
	EXPECT_EQ(lengths.n, 1);
	EXPECT_EQ(DeclaredLength(grow->GetNameMangled()), 3);
	ASSERT_TRUE(grow->SetLength(3));
	EXPECT_FALSE(grow->SetLength(-1));
	EXPECT_EQ(lengths.n, 1);
	EXPECT_EQ(grow->GetLength(), 3);

	EXPECT_FALSE(Member<MemberValueArraySeparate>("table")->SetLength(5));
	EXPECT_TRUE(console.HasMessage("MemberValueArraySeparate::SetLength Not Resizable\n"));

	ReferencePrimitive primitive;
	ASSERT_TRUE(grow->ApplyLength(&primitive, nullptr, 6));
	EXPECT_EQ(primitive.ExpectInt(6, 3), "");
	primitive.RefuseAll();
	EXPECT_FALSE(grow->ApplyLength(&primitive, nullptr, 6));
	EXPECT_TRUE(console.HasMessage("MemberValueArraySeparate::ApplyLength Set Uniform\n"));
}

TEST_F(MemberValueTest, ArrayInitializersMustListEveryElement)
{
	Load("bad.tsl", R"(
class Open { float a[] = 1.0; void F() {} }
class Short { float a[3] = float[](1.0, 2.0); void F() {} }
)");
	Result result;
	EXPECT_EQ(mgr.CreateShader("Open", &result), nullptr);
	EXPECT_NE(Text(result).find("Unsupported Initializer|Initializer|a|"), std::string::npos) << Text(result);
	EXPECT_EQ(mgr.CreateShader("Short", &result), nullptr);
}

} // namespace
} // namespace Tarsel::Effects::Testing
