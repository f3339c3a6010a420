#pragma once

#include "core/Vector.h"
#include "quillon/IQLPrimitive.h"
#include "quillon/QLTypes.h"
#include "syntax/Enumerations.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace Tarsel::Effects
{

class IShader;

// How an element sits in a device buffer. Most types go as they are.
template <class T>
struct BufferAsIs
{
	typedef T Stored;
	static Stored ToBuffer(const T& value) { return value; }
	static T FromBuffer(const Stored& stored) { return stored; }
};

// Buffers carry bool as a 32-bit integer; only 1 reads back as true, so garbage is never taken for true.
struct BufferBoolAsInt
{
	typedef int32_t Stored;
	static Stored ToBuffer(bool value) { return value ? 1 : 0; }
	static bool FromBuffer(const Stored& stored) { return stored == 1; }
};

// Programs read block matrices column-major, the host writes them row-major.
template <class M>
struct BufferTransposed
{
	typedef M Stored;
	static Stored ToBuffer(const M& value) { return value.Transpose(); }
	static M FromBuffer(const Stored& stored) { return stored.Transpose(); }
};

// How a separate value reaches a primitive.
struct ApplyArray
{
	template <class T>
	static bool Apply(IQLPrimitive* pPrimitive, const std::string& sName, int iLocation, const T* pData,
	                  int nCount)
	{
		return pPrimitive->SetUniformArray(sName, iLocation, nCount, pData);
	}
};

// int and float have single-value setters, used for a length of 1.
struct ApplyScalar
{
	template <class T>
	static bool Apply(IQLPrimitive* pPrimitive, const std::string& sName, int iLocation, const T* pData,
	                  int nCount)
	{
		if (nCount == 1)
			return pPrimitive->SetUniform(sName, iLocation, pData[0]);
		return pPrimitive->SetUniformArray(sName, iLocation, nCount, pData);
	}
};

// Programs have no bool uniforms: bools go through the int setters as 1 or 0.
struct ApplyBoolAsInt
{
	static bool Apply(IQLPrimitive* pPrimitive, const std::string& sName, int iLocation, const bool* pData,
	                  int nCount);
};

// Host-only values (text, shader links) never reach a program.
struct ApplyNone
{
	template <class T>
	static bool Apply(IQLPrimitive*, const std::string&, int, const T*, int)
	{
		return false;
	}
};

// The one table of per-type facts. Everything else in values, buffers and storage is written once.
template <class T>
struct ValueTraits;

#define TARSEL_VALUE_TYPE(T, NAME, SPECIFIER, BUFFER, APPLY, DEFAULT)                                        \
	template <>                                                                                              \
	struct ValueTraits<T> : BUFFER, APPLY                                                                    \
	{                                                                                                        \
		static const char* Name() { return NAME; }                                                           \
		static TypeSpecifier Specifier() { return SPECIFIER; }                                               \
		static T Default() { return DEFAULT; }                                                               \
	};

TARSEL_VALUE_TYPE(bool, "bool", kType_Bool, BufferBoolAsInt, ApplyBoolAsInt, false)
TARSEL_VALUE_TYPE(int, "int", kType_Int, BufferAsIs<int>, ApplyScalar, 0)
TARSEL_VALUE_TYPE(Vector2i, "Vector2i", kType_IVec2, BufferAsIs<Vector2i>, ApplyArray, Vector2i())
TARSEL_VALUE_TYPE(Vector3i, "Vector3i", kType_IVec3, BufferAsIs<Vector3i>, ApplyArray, Vector3i())
TARSEL_VALUE_TYPE(Vector4i, "Vector4i", kType_IVec4, BufferAsIs<Vector4i>, ApplyArray, Vector4i())
TARSEL_VALUE_TYPE(float, "float", kType_Float, BufferAsIs<float>, ApplyScalar, 0.0f)
TARSEL_VALUE_TYPE(Vector2f, "Vector2f", kType_Vec2, BufferAsIs<Vector2f>, ApplyArray, Vector2f())
TARSEL_VALUE_TYPE(Vector3f, "Vector3f", kType_Vec3, BufferAsIs<Vector3f>, ApplyArray, Vector3f())
TARSEL_VALUE_TYPE(Vector4f, "Vector4f", kType_Vec4, BufferAsIs<Vector4f>, ApplyArray, Vector4f())
TARSEL_VALUE_TYPE(Matrix33f, "Matrix33f", kType_Mat3, BufferTransposed<Matrix33f>, ApplyArray,
                  Matrix33f(1.0f))
TARSEL_VALUE_TYPE(Matrix44f, "Matrix44f", kType_Mat4, BufferTransposed<Matrix44f>, ApplyArray, Matrix44f())
TARSEL_VALUE_TYPE(QLprimitive, "QLprimitive", kType_Primitive, BufferAsIs<QLprimitive>, ApplyArray, 0u)
TARSEL_VALUE_TYPE(QLtexture*, "QLtexture", kType_Sampler2D, BufferAsIs<QLtexture*>, ApplyArray, nullptr)
TARSEL_VALUE_TYPE(std::string, "string", kType_UserDefined, BufferAsIs<std::string>, ApplyNone, std::string())
TARSEL_VALUE_TYPE(IShader*, "IShader", kType_UserDefined, BufferAsIs<IShader*>, ApplyNone, nullptr)
#undef TARSEL_VALUE_TYPE

// Printable forms: the stream's own, pointers included (no boolalpha: bools print as 1 or 0).
template <class T>
void WriteValue(std::ostream& stream, const T& value)
{
	stream << value;
}
inline void WriteValue(std::ostream& stream, QLtexture* value)
{
	stream << static_cast<const void*>(value);
}
inline void WriteValue(std::ostream& stream, IShader* value)
{
	stream << static_cast<const void*>(value);
}

// Calls f with a null T* for the element type of a specifier; false for types without a value form.
// Buffers of every sampler kind hold texture pointers; separate values know only sampler2D.
template <class F>
bool DispatchValueType(TypeSpecifier eType, F&& f, bool bAllSamplers = false)
{
	switch (eType)
	{
	case kType_Float:
		f(static_cast<float*>(nullptr));
		return true;
	case kType_Int:
		f(static_cast<int*>(nullptr));
		return true;
	case kType_Bool:
		f(static_cast<bool*>(nullptr));
		return true;
	case kType_Vec2:
		f(static_cast<Vector2f*>(nullptr));
		return true;
	case kType_Vec3:
		f(static_cast<Vector3f*>(nullptr));
		return true;
	case kType_Vec4:
		f(static_cast<Vector4f*>(nullptr));
		return true;
	case kType_IVec2:
		f(static_cast<Vector2i*>(nullptr));
		return true;
	case kType_IVec3:
		f(static_cast<Vector3i*>(nullptr));
		return true;
	case kType_IVec4:
		f(static_cast<Vector4i*>(nullptr));
		return true;
	case kType_Mat3:
		f(static_cast<Matrix33f*>(nullptr));
		return true;
	case kType_Mat4:
		f(static_cast<Matrix44f*>(nullptr));
		return true;
	case kType_Sampler2D:
		f(static_cast<QLtexture**>(nullptr));
		return true;
	case kType_Sampler3D:
	case kType_SamplerCube:
		if (!bAllSamplers)
			return false;
		f(static_cast<QLtexture**>(nullptr));
		return true;
	case kType_Primitive:
		f(static_cast<QLprimitive*>(nullptr));
		return true;
	default:
		return false;
	}
}

} // namespace Tarsel::Effects
