#pragma once

#include <string>

#include "effects/Export.h"

namespace Tarsel::Effects
{

// Identifies an object for the manager's lifetime; its text suffixes generated names that must be unique.
class TARSEL_EFFECTS_EXPORT Key
{
public:
	Key() : _uValue(0) {}
	explicit Key(unsigned int value) : _uValue(value) {}

	bool operator==(const Key& other) const { return _uValue == other._uValue; }
	bool operator!=(const Key& other) const { return _uValue != other._uValue; }
	bool operator<(const Key& other) const { return _uValue < other._uValue; }

	unsigned int GetValue() const { return _uValue; }
	std::string ToString() const;

	static const Key& Null();

private:
	unsigned int _uValue;
};

} // namespace Tarsel::Effects
