#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Tarsel
{
namespace Qlsl
{

enum TokenKind
{
	kToken_End = 0,
	kToken_Identifier,
	kToken_Keyword,
	kToken_Int,
	kToken_Float,
	kToken_Punct
};

// Keywords in one enumeration; the type keywords form one contiguous range.
enum Keyword
{
	kKw_None = 0,
	kKw_Struct,
	kKw_UniformBlock,
	kKw_Uniform,
	kKw_Mutable,
	kKw_Varying,
	kKw_Transformed,
	kKw_Invariant,
	kKw_Attribute,
	kKw_RayAttribute,
	kKw_Const,
	kKw_Static,
	kKw_If,
	kKw_Else,
	kKw_While,
	kKw_Do,
	kKw_For,
	kKw_Return,
	kKw_Break,
	kKw_Continue,
	kKw_True,
	kKw_False,
	kKw_In,
	kKw_Out,
	kKw_InOut,
	kKw_HighP,
	kKw_MediumP,
	kKw_LowP,
	kKw_TypeFirst,
	kKw_Void = kKw_TypeFirst,
	kKw_Float,
	kKw_Int,
	kKw_Bool,
	kKw_Vec2,
	kKw_Vec3,
	kKw_Vec4,
	kKw_BVec2,
	kKw_BVec3,
	kKw_BVec4,
	kKw_IVec2,
	kKw_IVec3,
	kKw_IVec4,
	kKw_Mat2,
	kKw_Mat3,
	kKw_Mat4,
	kKw_Sampler2D,
	kKw_Sampler3D,
	kKw_SamplerCube,
	kKw_Primitive,
	kKw_TypeLast = kKw_Primitive
};

struct Token
{
	TokenKind kind = kToken_End;
	Keyword keyword = kKw_None;
	std::string_view text;
	int line = 1;

	bool Is(char c) const { return kind == kToken_Punct && text.size() == 1 && text[0] == c; }
	bool Is(std::string_view punct) const { return kind == kToken_Punct && text == punct; }
	bool Is(Keyword k) const { return kind == kToken_Keyword && keyword == k; }
	bool IsType() const
	{
		return kind == kToken_Keyword && keyword >= kKw_TypeFirst && keyword <= kKw_TypeLast;
	}
};

// Splits text into tokens ending with one kToken_End. On a lexical error answers false with the
// message in error and its line in errorLine.
bool Tokenize(const std::string& text, std::vector<Token>& tokens, std::string& error, int& errorLine);

} // namespace Qlsl
} // namespace Tarsel
