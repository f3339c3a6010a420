#include "effects/Version.h"

namespace Tarsel::Effects
{
const char* GetVersion()
{
	return "0.1.0";
}
} // namespace Tarsel::Effects
