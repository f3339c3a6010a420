#pragma once

#include "QlslRunValue.h"
#include "quillon/Interpreter.h"

#include <string_view>
#include <utility>
#include <vector>

namespace Tarsel
{
namespace QlslRun
{

// What a run can reach besides its own variables: images, the random sequence, the shadow answers and
// the record of what the program did.
struct Machine
{
	std::vector<std::pair<const QLtexture*, QLImage>> images; // a sampler holds an index into this
	uint64_t seed = 0;
	uint64_t random = 0;
	QLShadowFunction shadow;
	uint64_t budget = 10000000;
	QLRunResults* results = nullptr; // null outside a run: the ray built-ins then record nothing

	// -1 for a texture without an image.
	int TextureIndex(const QLtexture* texture) const;
	const QLImage* Image(int index) const;
	float NextRandom();
};

typedef Value (*BuiltinCode)(Machine& machine, const Value* args, int count);

// Arguments arrive converted to the overload's parameter types. Null when the name is not built in.
BuiltinCode FindBuiltin(std::string_view name);

// Samples an image at a 2D or 3D coordinate (repeat wrapping) or, for a cube map, in a direction (edges
// clamped). No image gives 0.
Value SampleImage(const QLImage* image, const Value& coord);

} // namespace QlslRun
} // namespace Tarsel
