#pragma once

#include "QlslRunValue.h"

#include <cmath>
#include <sstream>
#include <string>

namespace InterpreterTest
{

inline std::string Describe(const Tarsel::QlslRun::Value& v)
{
	std::ostringstream text;
	text << "base " << int(v.shape.base) << " " << int(v.shape.rows) << "x" << int(v.shape.columns) << " (";
	for (int k = 0; k < v.Count(); ++k)
		text << (k ? "," : "")
		     << (v.shape.base == Tarsel::QlslRun::kFloat ? double(v.s[k].f) : double(v.s[k].i));
	return text.str() + ")";
}

// "" when shape and components agree (floats within 1e-5, NaN matching NaN); otherwise both values.
inline std::string Near(const Tarsel::QlslRun::Value& actual, const Tarsel::QlslRun::Value& expected)
{
	bool same = actual.shape == expected.shape;
	for (int k = 0; same && k < expected.Count(); ++k)
	{
		if (expected.shape.base != Tarsel::QlslRun::kFloat)
			same = actual.s[k].i == expected.s[k].i;
		else if (std::isnan(expected.s[k].f))
			same = std::isnan(actual.s[k].f);
		else if (actual.s[k].f != expected.s[k].f)
			same = std::fabs(actual.s[k].f - expected.s[k].f) <=
			       1e-5f * std::fmax(1.0f, std::fabs(expected.s[k].f));
	}
	return same ? std::string() : Describe(actual) + " != expected " + Describe(expected);
}

} // namespace InterpreterTest
