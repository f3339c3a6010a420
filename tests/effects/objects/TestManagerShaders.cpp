#include "TestShaderSupport.h"

#include "manager/Profiler.h"

namespace Tarsel::Effects::Testing
{
namespace
{

class ManagerShaderTest : public ShaderTest
{
};

TEST_F(ManagerShaderTest, AnUnknownClassAddsOneMessageNamingIt)
{
	Result result;
	EXPECT_EQ(mgr.CreateShader("Nope", &result), nullptr);
	EXPECT_EQ(result.GetMessages(), std::vector<std::string>{"Could not create shader named \"Nope\""});
	EXPECT_EQ(mgr.GetPrototypeShader("Nope", nullptr), nullptr);
	EXPECT_EQ(mgr.GetPrototypeInterface("Nope"), nullptr);
}

TEST_F(ManagerShaderTest, WithoutAResultTheFailureGoesToTheConsole)
{
	EXPECT_EQ(mgr.CreateShader("Nope"), nullptr);
	EXPECT_TRUE(console.HasError("Could not create shader named \"Nope\"\n"));
}

TEST_F(ManagerShaderTest, TheLibraryWhoseNameSortsFirstMakesTheClass)
{
	Load("b.tsl", "class Twin\n{\n\tinput float fromB = 1.0;\n\tfloat F() { return fromB; }\n}\n");
	Load("a.tsl", "class Twin\n{\n\tinput float fromA = 1.0;\n\tfloat F() { return fromA; }\n}\n");
	IShader* shader = Create("Twin");
	ASSERT_NE(shader, nullptr);
	EXPECT_NE(shader->GetParameter("fromA"), nullptr);
	EXPECT_EQ(shader->GetParameter("fromB"), nullptr);
	EXPECT_EQ(shader->GetPrototypeShader(), mgr.GetPrototypeShader("Twin", nullptr));
}

TEST_F(ManagerShaderTest, PrototypesAreMadeOnceAndShadersGoBackToThem)
{
	Load("i.tsl", "interface Tex\n{\n\tvec4 Sample(vec2 uv);\n}\n");
	Load("c.tsl", "class Flat : Tex\n{\n\tvec4 Sample(vec2 uv) { return vec4(uv, 0.0, 1.0); }\n}\n");
	EXPECT_EQ(mgr.GetPrototypeShader("Flat", nullptr), mgr.GetPrototypeShader("Flat", nullptr));
	EXPECT_EQ(mgr.GetPrototypeInterface("Tex"), mgr.GetPrototypeInterface("Tex"));
	const size_t keysBefore = Impl()->GetCountKeys();
	IShader* shader = Create("Flat");
	mgr.DestroyShader(nullptr);
	mgr.DestroyShader(shader);
	EXPECT_EQ(Impl()->GetCountKeys(), keysBefore);
	// The overload without a result is timed around the other one.
	mgr.CreateShader("Nope");
	EXPECT_EQ(mgr.GetProfiler()->GetSamples("CreateShader").size(), 3u);
}

} // namespace
} // namespace Tarsel::Effects::Testing
