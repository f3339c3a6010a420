#pragma once

#include "objects/ParameterValue.h"

namespace Tarsel
{
class IQLPrimitive;
class IQLProgram;
} // namespace Tarsel

namespace Tarsel::Effects
{

// A value parameter of one element.
class ParameterValueSingle : public ParameterValue
{
public:
	bool IsArray() const override { return false; }
	int GetLength() const override { return 1; }
	bool SetLength(int) override { return false; }
	bool IsResizable() const override { return false; }

	// Writes the value for one primitive at the location of the mangled name in the program.
	virtual bool Apply(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation) = 0;
};

} // namespace Tarsel::Effects
