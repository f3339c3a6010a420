#include "core/Mutex.h"
#include "core/Vector.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace Tarsel;

namespace
{
template <class T>
std::string Text(const T& value)
{
	std::ostringstream stream;
	stream << value;
	return stream.str();
}
} // namespace

TEST(Vector, StreamForms)
{
	EXPECT_EQ(Text(Vector2i(3, -4)), "(3,-4)");
	EXPECT_EQ(Text(Vector4i(1, 2, 3, 4)), "(1,2,3,4)");
	EXPECT_EQ(Text(Vector3f(1.0f, 2.5f, -0.125f)), "(1,2.5,-0.125)");
	EXPECT_EQ(Text(Matrix33f(2.0f)), "((2,0,0),(0,2,0),(0,0,2))");
	EXPECT_EQ(Text(Matrix44f()), Text(Matrix44f(1.0f)));
}

// A matrix transposed once when built and once more when read still looks right through operator() alone,
// so raw storage and text are checked against the argument order too.
TEST(Matrix, StorageAndTextFollowArgumentOrder)
{
	const float a[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
	const Matrix33f m(a);
	for (int i = 0; i < 9; ++i)
		EXPECT_EQ(m.m[i], a[i]) << i;
	EXPECT_EQ(m(0, 1), 2.0f);
	EXPECT_EQ(Text(m), "((1,2,3),(4,5,6),(7,8,9))");
	EXPECT_EQ(Text(m.Transpose()), "((1,4,7),(2,5,8),(3,6,9))");
	EXPECT_EQ(m.Transpose().Transpose(), m);

	float b[16];
	for (int i = 0; i < 16; ++i)
		b[i] = float(i) + 0.5f;
	EXPECT_EQ(Text(Matrix44f(b)),
	          "((0.5,1.5,2.5,3.5),(4.5,5.5,6.5,7.5),(8.5,9.5,10.5,11.5),(12.5,13.5,14.5,15.5))");
	EXPECT_EQ(Matrix44f(b).Transpose().m[1], 4.5f);
}

TEST(Mutex, SameThreadMayLockAgain)
{
	// Listeners run under a registry's lock and may call back into it.
	Mutex mutex;
	ScopedLock outer(mutex);
	ScopedLock inner(mutex);
	SUCCEED();
}
