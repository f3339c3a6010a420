#include "effects/Version.h"

namespace Tarsel::Effects
{
const char* GetVersion()
{
	return TARSEL_EFFECTS_VERSION;
}
} // namespace Tarsel::Effects
