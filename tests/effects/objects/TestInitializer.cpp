#include "TestShaderSupport.h"

namespace Tarsel::Effects::Testing
{
namespace
{

// Each case is one class with one input, so that a refused initializer fails exactly one creation.
class InitializerTest : public ShaderTest
{
protected:
	// Creates a shader of a new class holding "input <declaration>;"; null when creation fails.
	IShader* TryInput(const std::string& declaration, Result& result)
	{
		const std::string name = "K" + std::to_string(_nClasses++);
		Load(name + ".tsl", "class " + name + "\n{\n\tinput " + declaration + ";\n\tvoid F() {}\n}\n");
		return mgr.CreateShader(name, &result);
	}
	IParameter* Input(const std::string& declaration)
	{
		Result result;
		IShader* shader = TryInput(declaration, result);
		EXPECT_NE(shader, nullptr) << declaration << ": " << result.GetText();
		return shader ? shader->GetParameter("x") : nullptr;
	}
	// The result's messages, first added first, when creation fails as it must.
	std::string Refusal(const std::string& declaration)
	{
		Result result;
		EXPECT_EQ(TryInput(declaration, result), nullptr) << declaration;
		return Text(result);
	}

private:
	int _nClasses = 0;
};

TEST_F(InitializerTest, ScalarFormsConvertAsTheLanguageDoes)
{
	float f = 0;
	int i = 0;
	bool b = false;
	ASSERT_TRUE(Input("float x = -2")->Get(f));
	EXPECT_EQ(f, -2.0f);
	ASSERT_TRUE(Input("int x = 2.9")->Get(i));
	EXPECT_EQ(i, 2);
	ASSERT_TRUE(Input("int x = -2.9")->Get(i));
	EXPECT_EQ(i, -2);
	ASSERT_TRUE(Input("int x = int(-(-3))")->Get(i));
	EXPECT_EQ(i, 3);
	ASSERT_TRUE(Input("float x = float(-(0.5))")->Get(f));
	EXPECT_EQ(f, -0.5f);
	ASSERT_TRUE(Input("bool x = true")->Get(b));
	EXPECT_TRUE(b);
	ASSERT_TRUE(Input("bool x = bool(true)")->Get(b));
	EXPECT_TRUE(b);
}

TEST_F(InitializerTest, VectorAndMatrixConstructorsBroadcastOrTakeEveryComponent)
{
	Vector3f v3;
	ASSERT_TRUE(Input("vec3 x = vec3(0.5)")->Get(v3));
	EXPECT_EQ(v3, Vector3f(0.5f, 0.5f, 0.5f));
	Vector4f v4;
	ASSERT_TRUE(Input("vec4 x = vec4(1, -2, 3.5, float(4))")->Get(v4));
	EXPECT_EQ(v4, Vector4f(1, -2, 3.5f, 4));
	Vector2i v2i;
	ASSERT_TRUE(Input("ivec2 x = ivec2(7.8, -1)")->Get(v2i));
	EXPECT_EQ(v2i, Vector2i(7, -1));

	Matrix33f m3;
	ASSERT_TRUE(Input("mat3 x = mat3(2.0)")->Get(m3));
	EXPECT_EQ(m3, Matrix33f(2.0f));
	Matrix44f m4;
	ASSERT_TRUE(Input("mat4 x = mat4(0,1,2,3, 4,5,6,7, 8,9,10,11, 12,13,14,15)")->Get(m4));
	EXPECT_EQ(m4(0, 1), 1.0f);
	EXPECT_EQ(m4(3, 2), 14.0f);
	// Without initializer a mat3 is the identity.
	ASSERT_TRUE(Input("mat3 x")->Get(m3));
	EXPECT_EQ(m3, Matrix33f(1.0f));
}

TEST_F(InitializerTest, RefusedFormsNameTheirReason)
{
	const std::string boolFromInt = Refusal("bool x = 1");
	EXPECT_NE(boolFromInt.find("Int Constant|Unsupported boolean expression|Initializer|x|"),
	          std::string::npos)
	    << boolFromInt;
	EXPECT_TRUE(console.HasMessage("_GetExpressionValue Unsupported Expression Bool\n"));

	EXPECT_NE(Refusal("vec3 x = vec3(1, 2)").find("Parameter Count|Initializer|x|"), std::string::npos);
	EXPECT_TRUE(console.HasMessage("_InitInitializerTypeTuple Parameter Count\n"));
	EXPECT_NE(Refusal("mat3 x = mat3(1, 2, 3)").find("Parameter Count"), std::string::npos);

	// The failing argument is named by its position.
	EXPECT_NE(Refusal("vec2 x = vec2(1, true)").find("Unsupported Expression|Index 1|"), std::string::npos);
	EXPECT_NE(Refusal("float x = float(!1.0)").find("!|Unsupported unary operator|"), std::string::npos);
	EXPECT_TRUE(console.HasMessage("_GetExpressionValueUnaryOperator Unsupported Operator\n"));

	// A constructor of another type, or of another argument count, fits neither scalar form.
	const std::string otherType = Refusal("float x = int(1)");
	EXPECT_NE(otherType.find(".tsl:3: Unsupported Initializer|"), std::string::npos) << otherType;
	EXPECT_NE(Refusal("vec3 x = vec4(1)").find("Unsupported Initializer"), std::string::npos);
	EXPECT_NE(Refusal("int x = int(1, 2)").find("Unsupported Initializer"), std::string::npos);

	EXPECT_NE(Refusal("sampler2D x = 1").find("sampler2D|Unsupported initializer|"), std::string::npos);
	EXPECT_TRUE(console.HasMessage("_InitializeValue Type\n"));
}

TEST_F(InitializerTest, ArraysTakeTheirLengthFromTheDeclarationOrTheConstructor)
{
	IParameter* filled = Input("float x[3] = 1.0");
	ASSERT_TRUE(filled);
	EXPECT_EQ(filled->GetLength(), 3);
	EXPECT_FALSE(filled->IsResizable());
	float f = 0;
	ASSERT_TRUE(filled->Get(f, 2));
	EXPECT_EQ(f, 1.0f);

	IParameter* listed = Input("vec2 x[] = vec2[](vec2(1, 2), vec2(3))");
	ASSERT_TRUE(listed);
	EXPECT_EQ(listed->GetLength(), 2);
	EXPECT_TRUE(listed->IsResizable());
	Vector2f v;
	ASSERT_TRUE(listed->Get(v, 1));
	EXPECT_EQ(v, Vector2f(3, 3));

	// A resizable array is not filled by a single value: it stays empty until it grows.
	IParameter* empty = Input("int x[] = 4");
	ASSERT_TRUE(empty);
	EXPECT_EQ(empty->GetLength(), 0);

	const std::string mismatch = Refusal("float x[2] = float[](1.0, 2.0, 3.0)");
	EXPECT_NE(mismatch.find("Length Mismatch|Initializer|x|"), std::string::npos) << mismatch;
	EXPECT_TRUE(console.HasMessage("_InitializeValueArray Length\n"));
	EXPECT_NE(Refusal("float x[] = float[](1.0, true)").find("Index 1|x|"), std::string::npos);
	// Boolean vectors have no buffer form.
	EXPECT_NE(Refusal("bvec2 x[2]").find("Unsupported type \"bvec2\""), std::string::npos);
}

} // namespace
} // namespace Tarsel::Effects::Testing
