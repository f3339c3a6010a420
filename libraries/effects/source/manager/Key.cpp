#include "manager/Key.h"

#include <cstdio>

namespace Tarsel::Effects
{

std::string Key::ToString() const
{
	char text[16];
	std::snprintf(text, sizeof(text), "_k%x", _uValue);
	return text;
}

const Key& Key::Null()
{
	static const Key null;
	return null;
}

} // namespace Tarsel::Effects
