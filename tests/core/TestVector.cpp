#include "core/Timer.h"
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
}

TEST(Matrix, ArgumentOrderAndSingleTranspose)
{
	const float a[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
	const Matrix33f m(a);
	EXPECT_EQ(m(0, 1), 2.0f);
	EXPECT_EQ(m(1, 0), 4.0f);
	const Matrix33f t = m.Transpose();
	EXPECT_EQ(t(0, 1), 4.0f);
	EXPECT_EQ(t(1, 0), 2.0f);
	EXPECT_NE(t, m);
	EXPECT_EQ(t.Transpose(), m);

	const Matrix44f identity;
	EXPECT_EQ(identity, Matrix44f(1.0f));
	float b[16];
	for (int i = 0; i < 16; ++i)
		b[i] = float(i);
	EXPECT_EQ(Matrix44f(b).Transpose()(0, 3), 12.0f);
	EXPECT_EQ(Matrix33f(), Matrix33f(0.0f));
}

TEST(Timer, ElapsedGrowsFromReset)
{
	ManualTimer timer;
	const double first = timer.Elapsed();
	EXPECT_GE(first, 0.0);
	EXPECT_GE(timer.Elapsed(), first);
	EXPECT_GT(QueryPerformanceFrequency(), 0);
}
