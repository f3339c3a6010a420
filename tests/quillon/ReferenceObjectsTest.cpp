#include "QlslTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace Tarsel;
using namespace QlslTest;

TEST(ReferenceContext, InjectedCreationFailuresAffectOnlyTheNextCalls)
{
	ReferenceContext context;
	context.FailNextCreateShader();
	context.FailNextCreateProgram(2);
	context.FailNextCreateBuffer();
	EXPECT_EQ(nullptr, context.CreateShader(IQLShader::kType_Ray));
	EXPECT_NE(nullptr, context.CreateShader(IQLShader::kType_Ray));
	EXPECT_EQ(nullptr, context.CreateProgram());
	EXPECT_EQ(nullptr, context.CreateProgram());
	EXPECT_NE(nullptr, context.CreateProgram());
	EXPECT_EQ(nullptr, context.CreateBuffer());
	EXPECT_NE(nullptr, context.CreateBuffer());
	EXPECT_EQ(1u, context.GetCountShaders());
	EXPECT_EQ(1u, context.GetCountPrograms());
	EXPECT_EQ(1u, context.GetCountBuffers());
	EXPECT_TRUE(context.IsDifferentialSupported());
	context.SetDifferentialSupported(false);
	EXPECT_FALSE(context.IsDifferentialSupported());
}

TEST(ReferenceContext, MessagesAndForeignObjects)
{
	ReferenceContext context;
	context.Message("Effect::Init %s %d\n", "CreateProgram", 7);
	context.Message("%s", std::string(2000, 'x').c_str());
	ASSERT_EQ(2u, context.GetMessages().size());
	EXPECT_EQ("Effect::Init CreateProgram 7\n", context.GetMessages()[0]);
	EXPECT_EQ(2000u, context.GetMessages()[1].size());

	ReferenceContext other;
	IQLBuffer* foreign = other.CreateBuffer();
	context.ClearMessages();
	context.DestroyBuffer(foreign);
	context.DestroyShader(nullptr);
	EXPECT_EQ(std::vector<std::string>{"ReferenceContext::DestroyBuffer unknown buffer\n"},
	          context.GetMessages());
	EXPECT_EQ(1u, other.GetCountBuffers());
}

TEST(ReferenceContext, UseProgramByPointerAndHandle)
{
	ReferenceContext context;
	IQLProgram* a = context.CreateProgram();
	IQLProgram* b = context.CreateProgram();
	EXPECT_NE(a->GetHandle(), b->GetHandle());
	qlUseProgram(b->GetHandle());
	EXPECT_EQ(b, qlGetCurrentProgram());
	qlUseProgram(a);
	EXPECT_EQ(a, qlGetCurrentProgram());
	context.DestroyProgram(a);
	EXPECT_EQ(nullptr, qlGetCurrentProgram());
	qlUseProgram(12345u);
	EXPECT_EQ(nullptr, qlGetCurrentProgram());
}

TEST(ReferenceBuffer, StorageRespecifyAndMappingRules)
{
	ReferenceContext context;
	IQLBuffer* buffer = context.CreateBuffer();
	EXPECT_EQ(nullptr, QLBufferMapping(buffer, QLBufferMapping::kAccess_Write).GetData()); // no storage yet
	EXPECT_FALSE(buffer->Respecify(nullptr, 8, true));
	EXPECT_FALSE(buffer->Storage(nullptr, 0));
	const int values[3] = {1, 2, 3};
	ASSERT_TRUE(buffer->Storage(values, sizeof(values)));
	EXPECT_FALSE(buffer->Storage(nullptr, 4));
	EXPECT_EQ(12u, buffer->GetSize());
	{
		QLBufferMapping write(buffer, QLBufferMapping::kAccess_Write);
		ASSERT_NE(nullptr, write.GetData());
		EXPECT_EQ(nullptr,
		          QLBufferMapping(buffer, QLBufferMapping::kAccess_Read).GetData()); // already mapped
		EXPECT_FALSE(buffer->Respecify(nullptr, 16, true));
		static_cast<int*>(write.GetData())[1] = 20;
	}
	ReferenceBuffer* reference = static_cast<ReferenceBuffer*>(buffer);
	// Writes through a read mapping go unnoticed unless the check mode is on; then they are undone and
	// reported.
	for (bool check : {false, true})
	{
		context.SetCheckReadMappings(check);
		context.ClearMessages();
		{
			QLBufferMapping read(buffer, QLBufferMapping::kAccess_Read);
			ASSERT_NE(nullptr, read.GetData());
			EXPECT_EQ(20, static_cast<const int*>(read.GetData())[1]);
			static_cast<int*>(read.GetData())[0] = check ? 77 : 99;
		}
		int first = 0;
		std::memcpy(&first, reference->GetBytes(), sizeof(first));
		EXPECT_EQ(99, first); // the unchecked write stays, the checked one is undone
		if (check)
			EXPECT_EQ("ReferenceBuffer::Unmap write through a read mapping\n", context.GetMessages().back());
		else
			EXPECT_TRUE(context.GetMessages().empty());
	}
	EXPECT_EQ(3, reference->GetCountMaps());
	ASSERT_TRUE(buffer->Respecify(nullptr, 4, true));
	EXPECT_EQ(4u, buffer->GetSize());
	EXPECT_EQ(1, reference->GetCountRespecifies());
	EXPECT_EQ(nullptr, QLBufferMapping(nullptr, QLBufferMapping::kAccess_Read).GetData());
}

class ReferencePrimitiveTest : public ::testing::Test
{
protected:
	void SetUp() override
	{
		const char* text =
		    "uniform int count;\nuniform bool flag;\nuniform float gain;\nuniform vec3 tint[2];\n"
		    "uniform mat4 xform;\nuniform sampler2D image;\nuniform primitive target;\n"
		    "uniformblock weights { float a[1]; };\nvoid main() {}\n";
		IQLShader* shader = nullptr;
		ASSERT_TRUE(Compile(context, IQLShader::kType_Ray, text, &shader).empty());
		program->AttachShader(shader);
		std::vector<std::string> errors;
		ASSERT_TRUE(program->Link(errors));
		qlUseProgram(program);
	}
	void TearDown() override { qlUseProgram(nullptr); }
	int Location(const char* name) { return program->GetUniformLocation(name); }

	ReferenceContext context;
	IQLProgram* program = context.CreateProgram();
	ReferencePrimitive primitive{42};
};

TEST_F(ReferencePrimitiveTest, RecordsEachWriteAsItArrived)
{
	const int count = Location("count");
	const int tint = Location("tint");
	EXPECT_TRUE(primitive.SetUniform("count", count, 3));
	EXPECT_EQ("", primitive.ExpectInt(count, 3));
	// The array setter with one element is not the single setter.
	EXPECT_TRUE(primitive.SetUniformArray("count", count, 1, &count));
	EXPECT_NE("", primitive.ExpectInt(count, count));
	EXPECT_EQ("", primitive.ExpectInts(count, {count}));
	EXPECT_EQ(2u, primitive.CountWrites(count));

	const Vector3f colors[2] = {{1.0f, 0.5f, 0.25f}, {0.0f, 2.0f, 4.0f}};
	EXPECT_TRUE(primitive.SetUniformArray("tint", tint, 2, colors));
	const QLWrite* write = primitive.Last(tint);
	ASSERT_NE(nullptr, write);
	EXPECT_EQ(program->GetHandle(), write->program);
	EXPECT_EQ(kQLSetter_Vector3fArray, write->setter);
	EXPECT_EQ(24u, write->bytes.size());
	EXPECT_EQ(4.0f, write->Values<Vector3f>()[1].z);
	EXPECT_FALSE(write->bound);
	EXPECT_EQ("", primitive.ExpectArray<Vector3f>(tint, {colors[0], colors[1]}));
	EXPECT_EQ("last write: program " + std::to_string(program->GetHandle()) + " location " +
	              std::to_string(tint) +
	              " 'tint' Vector3f[] count 2 {1, 0.5, 0.25, 0, 2, 4} (unbound); expected Vector3f[] count 1 "
	              "{1, 0.5, 0.25}",
	          primitive.ExpectArray<Vector3f>(tint, {colors[0]}));
	EXPECT_EQ("no write to location 99", primitive.ExpectFloat(99, 1.0f));

	{
		AutoBindQLPrimitive bind(&primitive);
		AutoBindQLPrimitive nested(&primitive);
		EXPECT_TRUE(primitive.SetUniform("gain", Location("gain"), 0.5f));
	}
	EXPECT_FALSE(primitive.IsBound());
	EXPECT_TRUE(primitive.LastByName("gain")->bound);
	EXPECT_EQ("", primitive.ExpectFloat(Location("gain"), 0.5f));

	IQLBuffer* buffer = context.CreateBuffer();
	ASSERT_TRUE(buffer->Storage(nullptr, 4));
	EXPECT_TRUE(primitive.SetUniformBlock("weights", program->GetUniformBlockLocation("weights"), buffer));
	EXPECT_EQ("", primitive.ExpectBlock(0, buffer));
	QLtexture* texture = reinterpret_cast<QLtexture*>(0x10);
	EXPECT_TRUE(primitive.SetUniformArray("image", Location("image"), 1, &texture));
	EXPECT_EQ("", primitive.ExpectArray<QLtexture*>(Location("image"), {texture}));
	primitive.ClearWrites();
	EXPECT_EQ(nullptr, primitive.Last(count));
	EXPECT_TRUE(primitive.GetViolations().empty());
}

TEST_F(ReferencePrimitiveTest, StrictWritesMustMatchTheCurrentProgram)
{
	const int gain = Location("gain");
	const Matrix44f matrix = {};
	const float values[3] = {1.0f, 2.0f, 3.0f};
	EXPECT_FALSE(primitive.SetUniform("gain", Location("count"), 1.0f)); // location of another name
	EXPECT_FALSE(primitive.SetUniform("gain", gain, 1));                 // int setter on a float
	EXPECT_FALSE(primitive.SetUniformArray("gain", gain, 3, values));    // more than declared
	EXPECT_FALSE(primitive.SetUniform("missing", -1, 1));                // absent uniform
	EXPECT_FALSE(primitive.SetUniformArray("xform", Location("xform"), -1, &matrix)); // negative count
	EXPECT_FALSE(primitive.SetUniformBlock("weights", 0, nullptr));
	EXPECT_FALSE(
	    primitive.SetUniformArray("tint", Location("tint"), 1, static_cast<const Vector3f*>(nullptr)));
	EXPECT_EQ(7u, primitive.GetViolations().size());
	EXPECT_EQ("'gain' at location " + std::to_string(gain) + ": int setter cannot write a float",
	          primitive.GetViolations()[1]);
	EXPECT_TRUE(primitive.GetWrites().empty());

	// bool uniforms take the int setter; matrices and primitives their own array setters.
	EXPECT_TRUE(primitive.SetUniform("flag", Location("flag"), 1));
	EXPECT_TRUE(primitive.SetUniformArray("xform", Location("xform"), 1, &matrix));
	const QLprimitive handle = 5;
	EXPECT_TRUE(primitive.SetUniformArray("target", Location("target"), 1, &handle));

	// Without a current program there is nothing to check against; the write is recorded under 0.
	qlUseProgram(nullptr);
	EXPECT_TRUE(primitive.SetUniform("anything", 3, 2.0f));
	EXPECT_EQ(0u, primitive.Last(3)->program);
	qlUseProgram(program);
	primitive.SetStrict(false);
	EXPECT_TRUE(primitive.SetUniform("gain", Location("count"), 1.0f));

	primitive.Unbind();
	EXPECT_EQ("Unbind without Bind", primitive.GetViolations().back());
}

// Per-primitive values are written under their declared name at the location of their keyed uniform.
TEST(ReferencePrimitive, DeclaredNameReachesItsKeyedUniform)
{
	ReferenceContext context;
	IQLProgram* program = context.CreateProgram();
	IQLShader* shader = nullptr;
	ASSERT_TRUE(Compile(context, IQLShader::kType_Ray,
	                    "uniform vec3 color_k1f_k2a;\nuniform float gain_k3;\nuniform float gain_kx;\n"
	                    "uniform float gain_k3_;\nuniform float gaink3;\nvoid main() {}\n",
	                    &shader)
	                .empty());
	program->AttachShader(shader);
	std::vector<std::string> errors;
	ASSERT_TRUE(program->Link(errors));
	qlUseProgram(program);
	ReferencePrimitive primitive;
	const Vector3f red(1, 0, 0);
	const int color = program->GetUniformLocation("color_k1f_k2a");
	EXPECT_TRUE(primitive.SetUniformArray("color", color, 1, &red));
	EXPECT_TRUE(primitive.SetUniformArray("color_k1f", color, 1, &red));
	EXPECT_TRUE(primitive.SetUniform("gain", program->GetUniformLocation("gain_k3"), 1.0f));
	EXPECT_EQ("color_k1f_k2a", primitive.LastByName("color")->uniform);
	EXPECT_EQ("color_k1f", primitive.LastByName("color_k1f_k2a")->name);
	// Not key texts: upper-case or missing digits, a trailing '_', no '_k' at all.
	EXPECT_FALSE(primitive.SetUniform("gain", program->GetUniformLocation("gain_kx"), 1.0f));
	EXPECT_FALSE(primitive.SetUniform("gain", program->GetUniformLocation("gain_k3_"), 1.0f));
	EXPECT_FALSE(primitive.SetUniform("gain", program->GetUniformLocation("gaink3"), 1.0f));
	EXPECT_FALSE(primitive.SetUniformArray("colo", color, 1, &red));
	// Every other strict check still holds under the declared name.
	EXPECT_FALSE(primitive.SetUniform("color", color, 1.0f));
	EXPECT_EQ(5u, primitive.GetViolations().size());
	qlUseProgram(nullptr);
}

TEST_F(ReferencePrimitiveTest, RefusalCanBeInjectedPerSetter)
{
	const int gain = Location("gain");
	EXPECT_TRUE(primitive.Refuse("float"));
	EXPECT_FALSE(primitive.Refuse("double"));
	EXPECT_FALSE(primitive.SetUniform("gain", gain, 1.0f));
	EXPECT_TRUE(primitive.SetUniform("count", Location("count"), 1));
	primitive.RefuseAll();
	EXPECT_FALSE(primitive.SetUniform("count", Location("count"), 1));
	primitive.AcceptAll();
	EXPECT_TRUE(primitive.SetUniform("gain", gain, 1.0f));
	EXPECT_EQ(2u, primitive.GetWrites().size());
	EXPECT_TRUE(primitive.GetViolations().empty()); // refusals are not misuse
	EXPECT_EQ(kQLSetter_TextureArray, QLSetterFromName(QLSetterName(kQLSetter_TextureArray)));
}

TEST_F(ReferencePrimitiveTest, WritesAreKeptApartPerProgram)
{
	IQLShader* shader = nullptr;
	ASSERT_TRUE(
	    Compile(context, IQLShader::kType_Ray, "uniform float gain;\nvoid main() {}\n", &shader).empty());
	IQLProgram* other = context.CreateProgram();
	other->AttachShader(shader);
	std::vector<std::string> errors;
	ASSERT_TRUE(other->Link(errors));
	const int here = Location("gain");
	const int there = other->GetUniformLocation("gain");
	EXPECT_TRUE(primitive.SetUniform("gain", here, 1.0f));
	qlUseProgram(other);
	EXPECT_TRUE(primitive.SetUniform("gain", there, 2.0f));
	EXPECT_FALSE(primitive.SetUniform("gain", here, 3.0f)); // 'here' is not gain's location there
	EXPECT_EQ(1.0f, primitive.Last(program->GetHandle(), here)->Values<float>()[0]);
	EXPECT_EQ(2.0f, primitive.Last(other->GetHandle(), there)->Values<float>()[0]);
}

TEST(ReferenceContext, DestroysWhatTheUserLeftBehind)
{
	ReferenceContext context;
	IQLShader* shader = context.CreateShader(IQLShader::kType_Vertex);
	IQLProgram* program = context.CreateProgram();
	program->AttachShader(shader);
	IQLBuffer* buffer = context.CreateBuffer();
	buffer->Storage(nullptr, 16);
	void* mapped = buffer->Map(QLBufferMapping::kAccess_Write);
	ASSERT_NE(nullptr, mapped);
	context.DestroyBuffer(buffer);
	EXPECT_EQ("ReferenceContext::DestroyBuffer buffer still mapped\n", context.GetMessages().back());
	EXPECT_EQ(0u, context.GetCountBuffers());
	// The rest goes with the context; the sanitizer build checks that nothing leaks.
}

TEST(ReferenceBuffer, RespecifiedContentsAreNotTheOldOnes)
{
	ReferenceContext context;
	IQLBuffer* buffer = context.CreateBuffer();
	const unsigned char zeros[8] = {};
	ASSERT_TRUE(buffer->Storage(zeros, sizeof(zeros)));
	ASSERT_TRUE(buffer->Respecify(nullptr, sizeof(zeros), true));
	QLBufferMapping read(buffer, QLBufferMapping::kAccess_Read);
	ASSERT_NE(nullptr, read.GetData());
	EXPECT_NE(0, std::memcmp(zeros, read.GetData(), sizeof(zeros)));
}
