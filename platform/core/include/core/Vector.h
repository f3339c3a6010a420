#pragma once

#include <cstdint>
#include <ostream>

namespace Tarsel
{
template <class T>
struct Vector2
{
	T x = T(), y = T();
	Vector2() = default;
	Vector2(T x_, T y_) : x(x_), y(y_) {}
	explicit Vector2(const T* a) : x(a[0]), y(a[1]) {}
	const T* Data() const { return &x; }
	bool operator==(const Vector2& o) const { return x == o.x && y == o.y; }
	bool operator!=(const Vector2& o) const { return !(*this == o); }
};

template <class T>
struct Vector3
{
	T x = T(), y = T(), z = T();
	Vector3() = default;
	Vector3(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}
	explicit Vector3(const T* a) : x(a[0]), y(a[1]), z(a[2]) {}
	const T* Data() const { return &x; }
	bool operator==(const Vector3& o) const { return x == o.x && y == o.y && z == o.z; }
	bool operator!=(const Vector3& o) const { return !(*this == o); }
};

template <class T>
struct Vector4
{
	T x = T(), y = T(), z = T(), w = T();
	Vector4() = default;
	Vector4(T x_, T y_, T z_, T w_) : x(x_), y(y_), z(z_), w(w_) {}
	explicit Vector4(const T* a) : x(a[0]), y(a[1]), z(a[2]), w(a[3]) {}
	const T* Data() const { return &x; }
	bool operator==(const Vector4& o) const { return x == o.x && y == o.y && z == o.z && w == o.w; }
	bool operator!=(const Vector4& o) const { return !(*this == o); }
};

typedef Vector2<int32_t> Vector2i;
typedef Vector3<int32_t> Vector3i;
typedef Vector4<int32_t> Vector4i;
typedef Vector2<float> Vector2f;
typedef Vector3<float> Vector3f;
typedef Vector4<float> Vector4f;

// A square matrix of floats stored row after row, m[row * N + column], in the order of the constructor's
// arguments. The single-float constructor makes a diagonal matrix, like the shading language's mat3(f).
template <int N>
struct MatrixN
{
	float m[N * N] = {};

	MatrixN() = default;
	explicit MatrixN(float diagonal)
	{
		for (int i = 0; i < N; ++i)
			m[i * N + i] = diagonal;
	}
	explicit MatrixN(const float* values)
	{
		for (int i = 0; i < N * N; ++i)
			m[i] = values[i];
	}
	float& operator()(int row, int column) { return m[row * N + column]; }
	float operator()(int row, int column) const { return m[row * N + column]; }
	const float* Data() const { return m; }

	MatrixN Transpose() const
	{
		MatrixN t;
		for (int row = 0; row < N; ++row)
			for (int column = 0; column < N; ++column)
				t.m[column * N + row] = m[row * N + column];
		return t;
	}
	bool operator==(const MatrixN& o) const
	{
		for (int i = 0; i < N * N; ++i)
			if (m[i] != o.m[i])
				return false;
		return true;
	}
	bool operator!=(const MatrixN& o) const { return !(*this == o); }
};

// The default Matrix33f is all zeros; the default Matrix44f is the identity.
typedef MatrixN<3> Matrix33f;
struct Matrix44f : MatrixN<4>
{
	Matrix44f() : MatrixN<4>(1.0f) {}
	explicit Matrix44f(float diagonal) : MatrixN<4>(diagonal) {}
	explicit Matrix44f(const float* values) : MatrixN<4>(values) {}
	Matrix44f(const MatrixN<4>& other) : MatrixN<4>(other) {}
	Matrix44f Transpose() const { return Matrix44f(MatrixN<4>::Transpose()); }
};

static_assert(sizeof(Vector2i) == 8 && sizeof(Vector3i) == 12 && sizeof(Vector4i) == 16, "int vector layout");
static_assert(sizeof(Vector2f) == 8 && sizeof(Vector3f) == 12 && sizeof(Vector4f) == 16,
              "float vector layout");
static_assert(sizeof(Matrix33f) == 36 && sizeof(Matrix44f) == 64, "matrix layout");

// Text forms: vectors "(x,y,z)"; matrices row by row "((a,b,c),(d,e,f),(g,h,i))"; numbers in the stream's
// own format, with no spaces.
template <class T>
std::ostream& operator<<(std::ostream& stream, const Vector2<T>& v)
{
	return stream << '(' << v.x << ',' << v.y << ')';
}
template <class T>
std::ostream& operator<<(std::ostream& stream, const Vector3<T>& v)
{
	return stream << '(' << v.x << ',' << v.y << ',' << v.z << ')';
}
template <class T>
std::ostream& operator<<(std::ostream& stream, const Vector4<T>& v)
{
	return stream << '(' << v.x << ',' << v.y << ',' << v.z << ',' << v.w << ')';
}
template <int N>
std::ostream& operator<<(std::ostream& stream, const MatrixN<N>& matrix)
{
	stream << '(';
	for (int row = 0; row < N; ++row)
	{
		stream << (row ? ",(" : "(");
		for (int column = 0; column < N; ++column)
			stream << (column ? "," : "") << matrix(row, column);
		stream << ')';
	}
	return stream << ')';
}
} // namespace Tarsel
