#pragma once

#include "core/Vector.h"
#include "quillon/QLTypes.h"

#include <cstring>
#include <string>
#include <vector>

namespace Tarsel
{

// The primitive setter that made a write; the array forms are named after their element type.
enum QLSetter
{
	kQLSetter_Int = 0,
	kQLSetter_Float,
	kQLSetter_IntArray,
	kQLSetter_FloatArray,
	kQLSetter_Vector2iArray,
	kQLSetter_Vector3iArray,
	kQLSetter_Vector4iArray,
	kQLSetter_Vector2fArray,
	kQLSetter_Vector3fArray,
	kQLSetter_Vector4fArray,
	kQLSetter_Matrix33fArray,
	kQLSetter_Matrix44fArray,
	kQLSetter_PrimitiveArray,
	kQLSetter_TextureArray,
	kQLSetter_UniformBlock,
	kQLSetter_Count
};

// "int", "float", "int[]", "float[]", "Vector2i[]", ..., "QLprimitive[]", "QLtexture[]", "block".
const char* QLSetterName(QLSetter setter);
// kQLSetter_Count for an unknown name.
QLSetter QLSetterFromName(const char* name);

// The array setter taking elements of type T.
template <class T>
struct QLArraySetter;
#define TARSEL_QL_ARRAY_SETTER(T, K)                                                                         \
	template <>                                                                                              \
	struct QLArraySetter<T>                                                                                  \
	{                                                                                                        \
		static const QLSetter kValue = K;                                                                    \
	};
TARSEL_QL_ARRAY_SETTER(int, kQLSetter_IntArray)
TARSEL_QL_ARRAY_SETTER(float, kQLSetter_FloatArray)
TARSEL_QL_ARRAY_SETTER(Vector2i, kQLSetter_Vector2iArray)
TARSEL_QL_ARRAY_SETTER(Vector3i, kQLSetter_Vector3iArray)
TARSEL_QL_ARRAY_SETTER(Vector4i, kQLSetter_Vector4iArray)
TARSEL_QL_ARRAY_SETTER(Vector2f, kQLSetter_Vector2fArray)
TARSEL_QL_ARRAY_SETTER(Vector3f, kQLSetter_Vector3fArray)
TARSEL_QL_ARRAY_SETTER(Vector4f, kQLSetter_Vector4fArray)
TARSEL_QL_ARRAY_SETTER(Matrix33f, kQLSetter_Matrix33fArray)
TARSEL_QL_ARRAY_SETTER(Matrix44f, kQLSetter_Matrix44fArray)
TARSEL_QL_ARRAY_SETTER(QLprimitive, kQLSetter_PrimitiveArray)
TARSEL_QL_ARRAY_SETTER(QLtexture*, kQLSetter_TextureArray)
#undef TARSEL_QL_ARRAY_SETTER

// One write through a primitive, exactly as it arrived.
struct QLWrite
{
	unsigned program = 0; // handle of the program current at the time, 0 for none
	int location = -1;
	std::string name;
	std::string uniform; // the uniform at the location when a linked program was current, else empty
	QLSetter setter = kQLSetter_Count;
	int count = 0;                    // 1 for the single-value setters
	std::vector<unsigned char> bytes; // the values, count elements back to back
	IQLBuffer* buffer = nullptr;      // uniform-block writes only
	bool bound = false;               // whether the primitive was bound

	template <class T>
	std::vector<T> Values() const
	{
		std::vector<T> values(bytes.size() / sizeof(T));
		if (!values.empty())
			std::memcpy(values.data(), bytes.data(), values.size() * sizeof(T));
		return values;
	}
	// e.g. "program 3 location 2 'color_k2a' Vector3f[] count 1 (bound)".
	std::string Describe() const;
};

} // namespace Tarsel
