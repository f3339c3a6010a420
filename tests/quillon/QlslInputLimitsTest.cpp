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

// Literals past every integer type are folded without undefined conversions (the sanitizer build watches).
TEST(QlslInputLimits, HugeLiteralsFoldWithoutOverflow)
{
	const int kRay = IQLShader::kType_Ray;
	EXPECT_EQ("ERROR: String 0 Line 1: '[]' : index 18446744073709551616 out of range for 'int[4]'",
	          FirstError(kRay, "void main() { int a[4]; a[0xFFFFFFFFFFFFFFFFFF] = 1; }\n"));
	EXPECT_EQ("", FirstError(kRay, "void main() { int i = int(1e30); }\n"));
}
