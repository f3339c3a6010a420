#include "QlslTestSupport.h"
#include "QlslUnit.h"

#include <gtest/gtest.h>

using namespace Tarsel;
using namespace Tarsel::Qlsl;

namespace
{

const Function& Find(const QLUnit& unit, std::string_view name)
{
	const Function* function = unit.tree.FindFunction(name, "");
	EXPECT_NE(nullptr, function) << name;
	return *function;
}

// The expression of the n-th statement of a function body: its initializer or its expression.
const Expr* Statement(const Function& function, uint32_t n)
{
	const Stmt* statement = function.body->children[n];
	return statement->kind == kStmt_Declaration ? statement->declared[0]->initializer : statement->expr;
}

} // namespace

// Types come from the operator's rules, never from the left operand alone.
TEST(QlslTree, EveryExpressionCarriesItsType)
{
	ReferenceContext context;
	IQLShader* shader = nullptr;
	ASSERT_TRUE(QlslTest::Compile(
	                context, IQLShader::kType_Ray,
	                "uniform mat4 M;\nuniform vec4 v;\nvoid main()\n{\n"
	                "\tvec3 a = (M*v).xyz;\n\tvec2 b = (2.0*v).xy;\n\tfloat c = (1+2.5);\n"
	                "\tbool d = (v.x<1.0) && true;\n\tvec3 e = vec3(1.0)*mat3(M);\n\tint f = 2*3-1;\n}\n",
	                &shader)
	                .empty());
	IQLProgram* program = context.CreateProgram();
	program->AttachShader(shader);
	std::vector<std::string> errors;
	ASSERT_TRUE(program->Link(errors));
	std::shared_ptr<const QLUnit> unit = ReferenceProgram::From(program)->GetLinkedUnits().at(0);
	// The tree outlives the shader that produced it.
	context.DestroyShader(shader);
	const Function& main = Find(*unit, "main");
	ASSERT_EQ(6u, main.body->count);

	const Expr* swizzle = Statement(main, 0);
	EXPECT_EQ(kExpr_Swizzle, swizzle->kind);
	EXPECT_EQ("vec3", swizzle->type.Name());
	EXPECT_EQ("vec4", swizzle->Operand(0)->type.Name());
	EXPECT_EQ("mat4", swizzle->Operand(0)->Operand(0)->type.Name());
	EXPECT_EQ("vec4", Statement(main, 1)->Operand(0)->type.Name());
	EXPECT_EQ("float", Statement(main, 2)->type.Name());
	EXPECT_EQ("bool", Statement(main, 3)->type.Name());
	EXPECT_EQ("bool", Statement(main, 3)->Operand(0)->type.Name());
	EXPECT_EQ("vec3", Statement(main, 4)->type.Name());
	const Expr* folded = Statement(main, 5);
	EXPECT_EQ("int", folded->type.Name());
	EXPECT_TRUE(folded->hasValue);
	EXPECT_EQ(5.0, folded->value);
}

// Calls point at the overload they resolved to; the unit lists the calls the linker must satisfy.
TEST(QlslTree, CallsResolveByParameterTypes)
{
	std::vector<std::string> errors;
	std::shared_ptr<QLUnit> unit = Compile(
	    "float f(float x);\nvec3 f(vec3 v);\nvoid g(out float r);\nvoid main()\n{\n\tf(1);\n\tf(ivec3(1));\n"
	    "\tfloat r;\n\tg(r);\n}\n",
	    IQLShader::kType_Ray, errors);
	ASSERT_TRUE(unit) << errors.front();
	const Function& main = Find(*unit, "main");
	EXPECT_EQ("float", Statement(main, 0)->function->signature);
	EXPECT_EQ("vec3", Statement(main, 1)->function->signature);
	EXPECT_EQ("vec3", Statement(main, 1)->type.Name());
	ASSERT_EQ(3u, unit->calls.size());
	EXPECT_EQ("f(float)", unit->calls[0].Key());
	EXPECT_EQ("g(float)", unit->calls[2].Key());
	EXPECT_EQ(std::vector<std::string>({"f(float)", "f(vec3)", "g(float)"}),
	          unit->functions[main.unitIndex].callees);
	EXPECT_EQ(kParameter_Out, Statement(main, 3)->function->parameters[0]->mode);
}
