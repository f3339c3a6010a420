#include "QlslRunBuiltins.h"

#include <cmath>

namespace Tarsel
{
namespace QlslRun
{
namespace
{

struct Lookup
{
	const QLImage& image;
	int dims;   // 2 or 3
	int layer;  // the face of a cube map
	bool clamp; // cube maps clamp to their edges; everything else repeats

	int Wrap(int i, int size) const
	{
		if (clamp)
			return i < 0 ? 0 : (i >= size ? size - 1 : i);
		return ((i % size) + size) % size;
	}
	const Vector4f& Fetch(const int* at) const
	{
		int x = Wrap(at[0], image.width);
		int y = Wrap(at[1], image.height);
		int z = dims == 3 ? Wrap(at[2], image.depth) : layer;
		return image.texels[size_t((z * image.height + y) * image.width + x)];
	}
};

// Repeat keeps the fraction, clamp the unit range; both keep later integer conversions in range.
float Normalized(float x, bool clamp)
{
	if (!std::isfinite(x))
		return 0.0f;
	return clamp ? std::fmin(std::fmax(x, 0.0f), 1.0f) : x - std::floor(x);
}

Value Filter(const Lookup& lookup, const float* coord)
{
	const int sizes[3] = {lookup.image.width, lookup.image.height, lookup.image.depth};
	int base[3] = {0, 0, 0};
	float weight[3] = {0.0f, 0.0f, 0.0f};
	for (int axis = 0; axis < lookup.dims; ++axis)
	{
		float x = Normalized(coord[axis], lookup.clamp) * float(sizes[axis]);
		if (!lookup.image.bilinear)
		{
			base[axis] = int(std::floor(x));
			continue;
		}
		// Texel centres sit at half-integers.
		float shifted = x - 0.5f;
		base[axis] = int(std::floor(shifted));
		weight[axis] = shifted - std::floor(shifted);
	}
	float sum[4] = {0.0f, 0.0f, 0.0f, 0.0f};
	int corners = lookup.image.bilinear ? 1 << lookup.dims : 1;
	for (int corner = 0; corner < corners; ++corner)
	{
		int at[3];
		float w = 1.0f;
		for (int axis = 0; axis < lookup.dims; ++axis)
		{
			bool upper = (corner >> axis) & 1;
			at[axis] = base[axis] + upper;
			w *= upper ? weight[axis] : 1.0f - weight[axis];
		}
		const Vector4f& texel = lookup.Fetch(at);
		const float* components = &texel.x;
		for (int k = 0; k < 4; ++k)
			sum[k] += w * components[k];
	}
	return Value::Floats({sum[0], sum[1], sum[2], sum[3]});
}

// The face and face coordinates of a direction, as cube maps are addressed.
int CubeFace(const Value& direction, float* st)
{
	float x = direction.s[0].f, y = direction.s[1].f, z = direction.s[2].f;
	float ax = std::fabs(x), ay = std::fabs(y), az = std::fabs(z);
	int face;
	float sc, tc, ma;
	if (ax >= ay && ax >= az)
	{
		face = x >= 0 ? 0 : 1;
		sc = x >= 0 ? -z : z;
		tc = -y;
		ma = ax;
	}
	else if (ay >= az)
	{
		face = y >= 0 ? 2 : 3;
		sc = x;
		tc = y >= 0 ? z : -z;
		ma = ay;
	}
	else
	{
		face = z >= 0 ? 4 : 5;
		sc = z >= 0 ? x : -x;
		tc = -y;
		ma = az;
	}
	st[0] = 0.5f * (sc / ma + 1.0f);
	st[1] = 0.5f * (tc / ma + 1.0f);
	return face;
}

bool Usable(const QLImage* image)
{
	return image && image->width > 0 && image->height > 0 && image->depth > 0 &&
	       image->texels.size() >= size_t(image->width) * size_t(image->height) * size_t(image->depth);
}

} // namespace

Value SampleImage(const QLImage* image, const Value& coord)
{
	if (!Usable(image))
		return Value::Zero(Shape::Vector(kFloat, 4));
	if (image->cube)
	{
		float st[2];
		int face = CubeFace(coord, st);
		if (face >= image->depth)
			return Value::Zero(Shape::Vector(kFloat, 4));
		return Filter(Lookup{*image, 2, face, true}, st);
	}
	float xyz[3] = {coord.s[0].f, coord.s[1].f, coord.s[2].f};
	int dims = coord.Count() >= 3 ? 3 : 2;
	return Filter(Lookup{*image, dims, 0, false}, xyz);
}

} // namespace QlslRun
} // namespace Tarsel
