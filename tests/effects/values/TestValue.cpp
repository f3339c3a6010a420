#include "values/Value.h"
#include "values/ValueBuffer.h"

#include "core/Assert.h"
#include "core/Console.h"
#include "quillon/Reference.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{
const float kRows[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};

struct ValueFixture : ::testing::Test
{
	RecordingConsole console;
	ScopedMgrConsole scopedConsole{&console};
	RecordingAssertHandler asserts;
	ScopedAssertHandler scopedAsserts{&asserts};
	ReferenceContext context;

	template <class S>
	static S Stored(const IQLBuffer* pBuffer, int index)
	{
		S value;
		std::memcpy(&value, static_cast<const ReferenceBuffer*>(pBuffer)->GetBytes() + index * sizeof(S),
		            sizeof(S));
		return value;
	}
	static const ReferenceBuffer* Ref(const IQLBuffer* pBuffer)
	{
		return static_cast<const ReferenceBuffer*>(pBuffer);
	}
};
} // namespace

TEST_F(ValueFixture, ValueGrowKeepsOldElementsAndFillsDefaults)
{
	Value<int> value(2, true, 7);
	ASSERT_TRUE(value.Set(3, 1));
	ASSERT_TRUE(value.SetLength(4));
	EXPECT_EQ((std::vector<int>{7, 3, 7, 7}), std::vector<int>(value.GetData(), value.GetData() + 4));
	ASSERT_TRUE(value.SetLength(1));
	EXPECT_EQ(1, value.GetLength());
	EXPECT_EQ(7, value.Get(0));

	EXPECT_FALSE(value.SetLength(-1));
	EXPECT_EQ(1, value.GetLength());

	Value<float> fixed(3, false, 0.5f);
	EXPECT_EQ(0.5f, fixed.Get(2));
	EXPECT_FALSE(fixed.SetLength(5));
	EXPECT_EQ(3, fixed.GetLength());
	EXPECT_TRUE(console.HasMessage("Value::SetLength Not Resizable\n"));
}

TEST_F(ValueFixture, ValueRefusedWritesChangeNothing)
{
	Value<int> value(2, true, 0);
	const int aThree[3] = {1, 2, 3};
	EXPECT_FALSE(value.Set(9, 2));
	EXPECT_FALSE(value.Set(9, -1));
	EXPECT_FALSE(value.SetArray(aThree, 3));
	EXPECT_EQ(0, value.Get(0));
	EXPECT_EQ(0, value.Get(1));
	EXPECT_EQ(2, value.GetLength());
	EXPECT_TRUE(console.HasMessage("Value::Set Index Out of Bounds\n"));
	EXPECT_TRUE(console.HasMessage("Value::SetArray Array Out of Bounds\n"));

	std::string text = "unchanged";
	EXPECT_FALSE(value.GetValueAsString(text, 2));
	EXPECT_EQ("unchanged", text);
	EXPECT_TRUE(console.HasMessage("Value<T>::GetValueAsString Index Out of Bounds\n"));
}

TEST_F(ValueFixture, TextFormsFollowTheStream)
{
	std::string text;
	Value<Vector2i> ivec(1, false, Vector2i(3, -4));
	ASSERT_TRUE(ivec.GetValueAsString(text));
	EXPECT_EQ("(3,-4)", text);
	Value<bool> flag(1, false, true);
	ASSERT_TRUE(flag.GetValueAsString(text));
	EXPECT_EQ("1", text);
	Value<std::string> words(1, false, "two words");
	ASSERT_TRUE(words.GetValueAsString(text));
	EXPECT_EQ("two words", text);
}

// Only buffers transpose: a plain value must hold exactly what the host set.
TEST_F(ValueFixture, MatricesTransposedInBuffersOnly)
{
	const Matrix33f m(kRows);
	Value<Matrix33f> plain(1, false, Matrix33f());
	ASSERT_TRUE(plain.Set(m, 0));
	EXPECT_EQ(m, plain.GetData()[0]);

	ValueBuffer<Matrix33f> buffer(&context, 2, false, Matrix33f());
	ASSERT_TRUE(buffer.Set(m, 1));
	EXPECT_EQ(m.Transpose(), Stored<Matrix33f>(buffer.GetBuffer(), 1));
	EXPECT_EQ(m, buffer.Get(1));

	Matrix44f rows;
	rows(0, 3) = 5.0f;
	ValueBuffer<Matrix44f> filled(&context, 2, false, rows);
	EXPECT_EQ(rows.Transpose(), Stored<Matrix44f>(filled.GetBuffer(), 1));
	const Matrix44f aTwo[2] = {rows, rows.Transpose()};
	ASSERT_TRUE(filled.SetArray(aTwo, 2));
	EXPECT_EQ(rows, Stored<Matrix44f>(filled.GetBuffer(), 1));
	std::string text;
	ASSERT_TRUE(filled.GetValueAsString(text, 0));
	EXPECT_EQ(FormatValue(rows), text);
}

TEST_F(ValueFixture, BufferBoolsAreOneOrZero)
{
	ValueBuffer<bool> buffer(&context, 2, false, true);
	EXPECT_EQ(1, Stored<int32_t>(buffer.GetBuffer(), 1));
	ASSERT_TRUE(buffer.Set(false, 0));
	EXPECT_EQ(0, Stored<int32_t>(buffer.GetBuffer(), 0));
	EXPECT_TRUE(buffer.Get(1));
	{
		QLBufferMapping mapping(buffer.GetBuffer(), QLBufferMapping::kAccess_Write);
		static_cast<int32_t*>(mapping.GetData())[1] = 2;
	}
	EXPECT_FALSE(buffer.Get(1));
}

TEST_F(ValueFixture, BufferSizesAndMappings)
{
	ValueBuffer<Vector3f> empty(&context, 0, true, Vector3f());
	EXPECT_EQ(0, empty.GetLength());
	EXPECT_EQ(12u, empty.GetBuffer()->GetSize());

	ValueBuffer<Vector3f> buffer(&context, 4, true, Vector3f(1, 2, 3));
	const ReferenceBuffer* pRef = Ref(buffer.GetBuffer());
	EXPECT_EQ(48u, pRef->GetSize());
	EXPECT_EQ(1, pRef->GetCountMaps());
	EXPECT_EQ(Vector3f(1, 2, 3), Stored<Vector3f>(pRef, 3));

	const Vector3f aTwo[2] = {Vector3f(4, 4, 4), Vector3f(5, 5, 5)};
	ASSERT_TRUE(buffer.SetArray(aTwo, 2, 2));
	EXPECT_EQ(2, pRef->GetCountMaps());
	EXPECT_EQ(Vector3f(1, 2, 3), Stored<Vector3f>(pRef, 1));
	EXPECT_EQ(Vector3f(5, 5, 5), Stored<Vector3f>(pRef, 3));

	const std::vector<unsigned char> vBefore(pRef->GetBytes(), pRef->GetBytes() + pRef->GetSize());
	EXPECT_FALSE(buffer.SetArray(aTwo, 2, 3));
	EXPECT_FALSE(buffer.Set(aTwo[0], 4));
	EXPECT_EQ(vBefore, std::vector<unsigned char>(pRef->GetBytes(), pRef->GetBytes() + pRef->GetSize()));
	EXPECT_EQ(2, pRef->GetCountMaps());
	EXPECT_TRUE(console.HasMessage("ValueBuffer<T>::SetArray Length Overflow\n"));
	EXPECT_TRUE(console.HasMessage("ValueBuffer<Vector3f>::Set Index (4) Out of Bounds\n"));

	// Growing past the capacity at least doubles it; within it nothing is re-specified and nothing lost.
	ASSERT_TRUE(buffer.SetLength(6));
	EXPECT_EQ(1, pRef->GetCountRespecifies());
	EXPECT_EQ(96u, pRef->GetSize());
	ASSERT_TRUE(buffer.Set(aTwo[0], 5));
	ASSERT_TRUE(buffer.SetLength(2));
	ASSERT_TRUE(buffer.SetLength(8));
	EXPECT_EQ(1, pRef->GetCountRespecifies());
	EXPECT_EQ(Vector3f(4, 4, 4), buffer.Get(5));
	ASSERT_TRUE(buffer.SetLength(20));
	EXPECT_EQ(2, pRef->GetCountRespecifies());
	EXPECT_EQ(20 * 12u, pRef->GetSize());

	ValueBuffer<int> fixed(&context, 1, false, 0);
	EXPECT_FALSE(fixed.SetLength(2));
	EXPECT_TRUE(console.HasMessage("ValueBuffer<int>::SetLength Not Resizable\n"));
}

TEST_F(ValueFixture, BufferWithoutDeviceBufferNeverWrites)
{
	context.FailNextCreateBuffer();
	ValueBuffer<float> buffer(&context, 3, true, 1.0f);
	EXPECT_EQ(nullptr, buffer.GetBuffer());
	EXPECT_EQ(3, buffer.GetLength());
	EXPECT_TRUE(console.HasMessage("ValueBuffer<T>::_SetLength CreateBuffer\n"));
	EXPECT_FALSE(buffer.Set(2.0f, 0));
	EXPECT_TRUE(console.HasMessage("ValueBuffer<float>::Set No Buffer\n"));
	const float aTwo[2] = {2.0f, 3.0f};
	EXPECT_FALSE(buffer.SetArray(aTwo, 2));
	EXPECT_TRUE(console.HasMessage("ValueBuffer<float>::SetArray No Buffer\n"));
	EXPECT_EQ(1.0f, buffer.Get(0));
	EXPECT_TRUE(context.GetMessages().empty());
}

// A mapping the device refuses fails the write, leaves the bytes as they were and says so.
TEST_F(ValueFixture, BufferWritesRefusedByTheDeviceSaySo)
{
	ValueBuffer<int> buffer(&context, 2, true, 4);
	const int aTwo[2] = {5, 6};
	{
		QLBufferMapping held(buffer.GetBuffer(), QLBufferMapping::kAccess_Read);
		EXPECT_FALSE(buffer.Set(1, 0));
		EXPECT_FALSE(buffer.SetArray(aTwo, 2));
	}
	EXPECT_TRUE(console.HasMessage("ValueBuffer<int>::Set Map Refused\n"));
	EXPECT_TRUE(console.HasMessage("ValueBuffer<int>::SetArray Map Refused\n"));
	EXPECT_EQ(4, Stored<int32_t>(buffer.GetBuffer(), 0));
	EXPECT_EQ(4, Stored<int32_t>(buffer.GetBuffer(), 1));
}
