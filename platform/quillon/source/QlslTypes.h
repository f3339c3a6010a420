#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Tarsel
{

// Global storage qualifiers as they appear in program text.
enum QLStorage
{
	kQLStorage_None = 0,
	kQLStorage_Attribute,
	kQLStorage_Varying,
	kQLStorage_TransformedVarying,
	kQLStorage_TransformedInvariantVarying,
	kQLStorage_Uniform,
	kQLStorage_MutableUniform,
	kQLStorage_RayAttribute
};

const char* QLStorageText(QLStorage storage);

namespace Qlsl
{

enum BaseType : uint8_t
{
	kBase_Error = 0, // an expression already reported; never reported again
	kBase_Void,
	kBase_Bool,
	kBase_Int,
	kBase_Float,
	kBase_Sampler2D,
	kBase_Sampler3D,
	kBase_SamplerCube,
	kBase_Primitive,
	kBase_Struct // structs and uniform blocks
};

struct Aggregate;

// The type of a declaration or expression. Vectors have rows > 1; matrices have columns > 0 and are
// always float (the language has square matrices only).
struct Type
{
	BaseType base = kBase_Error;
	uint8_t rows = 1;
	uint8_t columns = 0;
	int array = 0; // 0 not an array, > 0 its size, -1 unsized (only parameters)
	const Aggregate* aggregate = nullptr;

	static Type Scalar(BaseType base) { return Type{base, 1, 0, 0, nullptr}; }
	static Type Vector(BaseType base, int size) { return Type{base, uint8_t(size), 0, 0, nullptr}; }
	static Type Matrix(int size) { return Type{kBase_Float, uint8_t(size), uint8_t(size), 0, nullptr}; }
	static Type Struct(const Aggregate* aggregate) { return Type{kBase_Struct, 1, 0, 0, aggregate}; }

	bool IsError() const { return base == kBase_Error; }
	bool IsVoid() const { return base == kBase_Void && array == 0; }
	bool IsArray() const { return array != 0; }
	bool IsNumeric() const { return (base == kBase_Int || base == kBase_Float) && array == 0; }
	bool IsScalar() const
	{
		return array == 0 && rows == 1 && columns == 0 && base >= kBase_Bool && base <= kBase_Float;
	}
	bool IsVector() const { return array == 0 && rows > 1 && columns == 0; }
	bool IsMatrix() const { return array == 0 && columns > 0; }
	bool IsBool() const { return IsScalar() && base == kBase_Bool; }
	bool IsInt() const { return IsScalar() && base == kBase_Int; }
	bool IsSampler() const { return base >= kBase_Sampler2D && base <= kBase_SamplerCube; }
	bool IsOpaque() const { return IsSampler() || base == kBase_Primitive; }
	// Scalars, vectors and matrices of bool, int or float.
	bool IsBasic() const { return array == 0 && base >= kBase_Bool && base <= kBase_Float; }
	bool HasOpaque() const; // an opaque type itself, or a struct holding one
	int Components() const { return rows * (columns ? columns : 1); }
	Type Element() const
	{
		Type element = *this;
		element.array = 0;
		return element;
	}
	Type WithBase(BaseType newBase) const
	{
		Type changed = *this;
		changed.base = newBase;
		return changed;
	}

	bool operator==(const Type& other) const
	{
		return base == other.base && rows == other.rows && columns == other.columns && array == other.array &&
		       aggregate == other.aggregate;
	}
	bool operator!=(const Type& other) const { return !(*this == other); }

	// "vec3", "mat4", "int[8]", "S"; Name(false) leaves out the array part.
	std::string Name(bool withArray = true) const;
};

// Implicit conversions: identical types, or int to float in the same shape. Nothing else.
bool ConvertsTo(const Type& from, const Type& to);
// "float", "ivec3", "sampler2D", ... (no arrays, no structs); an error type for anything else.
Type BasicTypeNamed(std::string_view name);

} // namespace Qlsl
} // namespace Tarsel
