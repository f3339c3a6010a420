#pragma once

#include <cstdint>
#include <initializer_list>

// Values of the interpreter. Basic values (scalars, vectors, matrices) are a shape and up to 16
// components; structs and arrays are their basic values laid end to end in Slot storage, so a copy of
// any value is a copy of its slots.
namespace Tarsel
{
namespace QlslRun
{

enum Base : uint8_t
{
	kBool,
	kInt,
	kFloat
};

// One component. Bools hold 0 or 1 in i; samplers hold the interpreter's texture index in i.
union Slot
{
	float f;
	int32_t i;
};

// rows > 1 for vectors; columns > 0 for matrices, which are square and float.
struct Shape
{
	Base base = kFloat;
	uint8_t rows = 1;
	uint8_t columns = 0;

	int Count() const { return rows * (columns ? columns : 1); }
	bool IsScalar() const { return rows == 1 && columns == 0; }
	bool IsMatrix() const { return columns > 0; }
	bool operator==(const Shape& o) const { return base == o.base && rows == o.rows && columns == o.columns; }
	bool operator!=(const Shape& o) const { return !(*this == o); }

	static Shape Scalar(Base base) { return Shape{base, 1, 0}; }
	static Shape Vector(Base base, int size) { return Shape{base, uint8_t(size), 0}; }
	static Shape Matrix(int size) { return Shape{kFloat, uint8_t(size), uint8_t(size)}; }
};

// A basic value. Matrices are column-major: element (column c, row r) is s[c * rows + r].
struct Value
{
	Shape shape;
	Slot s[16];

	int Count() const { return shape.Count(); }
	// The component used for position k: a scalar stands for every position.
	Slot At(int k) const { return shape.IsScalar() ? s[0] : s[k]; }
	float F(int k) const { return At(k).f; }
	int32_t I(int k) const { return At(k).i; }

	static Value Float(float f);
	static Value Int(int32_t i);
	static Value Bool(bool b);
	static Value Floats(std::initializer_list<float> values); // float or vecN
	static Value Ints(std::initializer_list<int32_t> values);
	static Value Bools(std::initializer_list<bool> values);
	static Value Matrix(int size, std::initializer_list<float> columnMajor);
	static Value Zero(Shape shape);
};

enum Op : uint8_t
{
	kAdd,
	kSub,
	kMul,
	kDiv,
	kMod,
	kShl,
	kShr,
	kBitAnd,
	kBitOr,
	kBitXor,
	kLogicalXor,
	kLess,
	kGreater,
	kLessEqual,
	kGreaterEqual,
	kEqual,
	kNotEqual
};

enum UnaryOp : uint8_t
{
	kNegate,
	kPlus,
	kNot,
	kComplement
};

// One component converted between bases as GLSL constructors do: float to int truncates (NaN gives 0,
// out of range saturates), anything to bool is "not zero".
Slot ConvertSlot(Slot slot, Base from, Base to);
// The whole value in another base (implicit int to float, explicit conversions).
Value Convert(const Value& value, Base to);

// Binary operators on operands that the type checker accepted; int operands meet float ones as floats.
// Integer arithmetic wraps; / truncates and % follows C++; division by zero answers 0.
Value Binary(Op op, const Value& a, const Value& b);
Value Unary(UnaryOp op, const Value& a);
// Constructors: conversion, broadcast of one scalar, diagonal matrices, matrices from matrices (the
// overlap copied, the rest identity), and components consumed in order otherwise.
Value Construct(Shape target, const Value* args, int count);
// Component-wise equality as ==: floats compare as floats (so NaN differs from itself).
bool Equal(const Value& a, const Value& b);

} // namespace QlslRun
} // namespace Tarsel
