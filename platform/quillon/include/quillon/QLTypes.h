#pragma once

#include <cstdint>

namespace Tarsel
{

// Native handle of a scene primitive as the ray-tracing API knows it.
typedef uint32_t QLprimitive;

// Textures are only ever passed around by pointer; the wrapper never looks inside.
struct QLtexture;

class IQuillonContext;
class IQLShader;
class IQLProgram;
class IQLBuffer;
class IQLPrimitive;

} // namespace Tarsel
