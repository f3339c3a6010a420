#pragma once

#include "effects/Export.h"

namespace Tarsel::Effects
{
// The library's version text, "major.minor.patch".
TARSEL_EFFECTS_EXPORT const char* GetVersion();
} // namespace Tarsel::Effects
