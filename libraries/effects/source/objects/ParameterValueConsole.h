#pragma once

#include "core/Console.h"
#include "effects/IMgrEffects.h"

namespace Tarsel::Effects
{

// Objects of the shader model report to their manager's console, or to the process-wide one when they have
// no manager (before Init, after Shutdown).
inline IMgrConsole* ConsoleOf(const IMgrEffects* pMgrEffects)
{
	IMgrConsole* pConsole = pMgrEffects ? pMgrEffects->GetConsole() : nullptr;
	return pConsole ? pConsole : GetMgrConsole();
}

} // namespace Tarsel::Effects
