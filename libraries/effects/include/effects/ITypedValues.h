#pragma once

#include "core/Vector.h"
#include "effects/Export.h"
#include "quillon/QLTypes.h"

#include <string>

namespace Tarsel::Effects
{

class IShader;

// Declares the five forms of one element type: plain, indexed, an array with a count, and both reads.
// Small types travel by value, vectors and matrices by reference.
#define TARSEL_TYPED_VALUES_BY_VALUE(T)                                                                      \
	virtual bool Set(T)                                                                                      \
	{                                                                                                        \
		return false;                                                                                        \
	}                                                                                                        \
	virtual bool Set(T, int /*index*/)                                                                       \
	{                                                                                                        \
		return false;                                                                                        \
	}                                                                                                        \
	virtual bool Set(T const*, int /*count*/)                                                                \
	{                                                                                                        \
		return false;                                                                                        \
	}                                                                                                        \
	virtual bool Get(T&)                                                                                     \
	{                                                                                                        \
		return false;                                                                                        \
	}                                                                                                        \
	virtual bool Get(T&, int /*index*/)                                                                      \
	{                                                                                                        \
		return false;                                                                                        \
	}
#define TARSEL_TYPED_VALUES_BY_REFERENCE(T)                                                                  \
	virtual bool Set(const T&)                                                                               \
	{                                                                                                        \
		return false;                                                                                        \
	}                                                                                                        \
	virtual bool Set(const T&, int /*index*/)                                                                \
	{                                                                                                        \
		return false;                                                                                        \
	}                                                                                                        \
	virtual bool Set(T const*, int /*count*/)                                                                \
	{                                                                                                        \
		return false;                                                                                        \
	}                                                                                                        \
	virtual bool Get(T&)                                                                                     \
	{                                                                                                        \
		return false;                                                                                        \
	}                                                                                                        \
	virtual bool Get(T&, int /*index*/)                                                                      \
	{                                                                                                        \
		return false;                                                                                        \
	}

// The typed value operations that the host calls on parameters and on per-primitive local parameters.
// Every form that an implementation does not support answers false.
class TARSEL_EFFECTS_EXPORT ITypedValues
{
public:
	virtual ~ITypedValues() {}

	TARSEL_TYPED_VALUES_BY_VALUE(bool)
	TARSEL_TYPED_VALUES_BY_VALUE(int)
	TARSEL_TYPED_VALUES_BY_VALUE(float)
	TARSEL_TYPED_VALUES_BY_VALUE(QLprimitive)
	TARSEL_TYPED_VALUES_BY_VALUE(QLtexture*)
	TARSEL_TYPED_VALUES_BY_REFERENCE(Vector2i)
	TARSEL_TYPED_VALUES_BY_REFERENCE(Vector3i)
	TARSEL_TYPED_VALUES_BY_REFERENCE(Vector4i)
	TARSEL_TYPED_VALUES_BY_REFERENCE(Vector2f)
	TARSEL_TYPED_VALUES_BY_REFERENCE(Vector3f)
	TARSEL_TYPED_VALUES_BY_REFERENCE(Vector4f)
	TARSEL_TYPED_VALUES_BY_REFERENCE(Matrix33f)
	TARSEL_TYPED_VALUES_BY_REFERENCE(Matrix44f)

	virtual bool Set(IShader*) { return false; }
	virtual bool Set(IShader*, int /*index*/) { return false; }
	virtual bool Set(IShader**, int /*count*/) { return false; }
	virtual bool Get(IShader*&) { return false; }
	virtual bool Get(IShader*&, int /*index*/) { return false; }

	virtual bool Set(const std::string&) { return false; }
	virtual bool Get(std::string&) { return false; }
	// A literal would otherwise convert to bool before it converted to a string.
	bool Set(const char* pText) { return Set(std::string(pText ? pText : "")); }
};

#undef TARSEL_TYPED_VALUES_BY_VALUE
#undef TARSEL_TYPED_VALUES_BY_REFERENCE

} // namespace Tarsel::Effects
