#include "quillon/QLRecord.h"

#include <cstdio>
#include <cstring>

namespace Tarsel
{
namespace
{

const char* const kSetterNames[kQLSetter_Count] = {
    "int",         "float",       "int[]",         "float[]",     "Vector2i[]",
    "Vector3i[]",  "Vector4i[]",  "Vector2f[]",    "Vector3f[]",  "Vector4f[]",
    "Matrix33f[]", "Matrix44f[]", "QLprimitive[]", "QLtexture[]", "block"};

} // namespace

const char* QLSetterName(QLSetter setter)
{
	return setter >= 0 && setter < kQLSetter_Count ? kSetterNames[setter] : "unknown";
}

QLSetter QLSetterFromName(const char* name)
{
	for (int i = 0; name && i < kQLSetter_Count; ++i)
	{
		if (std::strcmp(kSetterNames[i], name) == 0)
			return QLSetter(i);
	}
	return kQLSetter_Count;
}

// Values print by their element kind so that a mismatch reads naturally in a test failure.
std::string FormatQLValues(QLSetter setter, const std::vector<unsigned char>& bytes)
{
	std::string text = "{";
	char item[64];
	if (setter == kQLSetter_TextureArray || setter == kQLSetter_UniformBlock)
	{
		for (size_t i = 0; i + sizeof(void*) <= bytes.size(); i += sizeof(void*))
		{
			void* pointer = nullptr;
			std::memcpy(&pointer, &bytes[i], sizeof(void*));
			std::snprintf(item, sizeof(item), "%s%p", i ? ", " : "", pointer);
			text += item;
		}
		return text + "}";
	}
	bool floats = setter == kQLSetter_Float || setter == kQLSetter_FloatArray ||
	              (setter >= kQLSetter_Vector2fArray && setter <= kQLSetter_Matrix44fArray);
	for (size_t i = 0; i + 4 <= bytes.size(); i += 4)
	{
		if (floats)
		{
			float value;
			std::memcpy(&value, &bytes[i], 4);
			std::snprintf(item, sizeof(item), "%s%g", i ? ", " : "", double(value));
		}
		else
		{
			int value;
			std::memcpy(&value, &bytes[i], 4);
			std::snprintf(item, sizeof(item), "%s%d", i ? ", " : "", value);
		}
		text += item;
	}
	return text + "}";
}

std::string QLWrite::Describe() const
{
	return "program " + std::to_string(program) + " location " + std::to_string(location) + " '" + name +
	       "' " + QLSetterName(setter) + " count " + std::to_string(count) + " " +
	       FormatQLValues(setter, bytes) + (bound ? " (bound)" : " (unbound)");
}

} // namespace Tarsel
