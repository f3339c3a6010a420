#pragma once

// The ray-tracing API wrapper: interfaces plus the reference device that implements them.
#include "quillon/IQLBuffer.h"
#include "quillon/IQLPrimitive.h"
#include "quillon/IQLProgram.h"
#include "quillon/IQLShader.h"
#include "quillon/IQuillonContext.h"
#include "quillon/QLRecord.h"
#include "quillon/QLTypes.h"
#include "quillon/Reference.h"
