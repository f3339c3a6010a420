#include <gtest/gtest.h>

#include "QlslTestSupport.h"

using namespace Tarsel;
using namespace QlslTest;

// Array sizes beyond an int are refused with a message instead of being converted.
TEST(QlslInputLimits, ArraySizeBeyondAnIntIsRefused)
{
	const int kRay = IQLShader::kType_Ray;
	EXPECT_EQ("ERROR: String 0 Line 2: array size is too large",
	          FirstError(kRay, "void main() {}\nuniform float a[99999999999999999999];\n"));
	EXPECT_EQ("ERROR: String 0 Line 1: array size is too large",
	          FirstError(kRay, "uniformblock b { float a[4294967296]; };\nvoid main() {}\n"));
	EXPECT_EQ("", FirstError(kRay, "uniform float a[2147483647];\nvoid main() {}\n"));
}
