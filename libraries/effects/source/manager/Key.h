#pragma once

// Keys are handed to the host, so the class lives with the exported interfaces.
#include "effects/Key.h"
