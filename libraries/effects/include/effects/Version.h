#pragma once

namespace Tarsel::Effects
{
// The library's version text, "major.minor.patch".
const char* GetVersion();
} // namespace Tarsel::Effects
