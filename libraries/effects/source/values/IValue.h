#pragma once

#include "syntax/Enumerations.h"

#include <string>

namespace Tarsel
{
class IQLBuffer;
}

namespace Tarsel::Effects
{

// What a parameter needs to know of its values without knowing their element type.
class IValue
{
public:
	virtual ~IValue() {}
	virtual TypeSpecifier GetTypeSpecifier() const = 0;
	virtual const char* GetTypeName() const = 0;
	virtual int GetLength() const = 0;
	virtual bool SetLength(int nValues) = 0;
	virtual bool IsResizable() const = 0;
	virtual bool GetValueAsString(std::string& sValue, int index) = 0;
	virtual bool GetValueAsString(std::string& sValue) = 0;
};

// Values kept in a device buffer, bound to programs as a uniform block.
class IValueBuffer : public IValue
{
public:
	virtual IQLBuffer* GetBuffer() const = 0;
};

} // namespace Tarsel::Effects
