#include "QlslLexer.h"

#include <cstring>
#include <unordered_map>

namespace Tarsel
{
namespace Qlsl
{
namespace
{

const std::unordered_map<std::string_view, Keyword>& Keywords()
{
	static const std::unordered_map<std::string_view, Keyword> keywords = {
	    {"struct", kKw_Struct},
	    {"uniformblock", kKw_UniformBlock},
	    {"uniform", kKw_Uniform},
	    {"mutable", kKw_Mutable},
	    {"varying", kKw_Varying},
	    {"transformed", kKw_Transformed},
	    {"invariant", kKw_Invariant},
	    {"attribute", kKw_Attribute},
	    {"rayattribute", kKw_RayAttribute},
	    {"const", kKw_Const},
	    {"static", kKw_Static},
	    {"if", kKw_If},
	    {"else", kKw_Else},
	    {"while", kKw_While},
	    {"do", kKw_Do},
	    {"for", kKw_For},
	    {"return", kKw_Return},
	    {"break", kKw_Break},
	    {"continue", kKw_Continue},
	    {"true", kKw_True},
	    {"false", kKw_False},
	    {"in", kKw_In},
	    {"out", kKw_Out},
	    {"inout", kKw_InOut},
	    {"highp", kKw_HighP},
	    {"mediump", kKw_MediumP},
	    {"lowp", kKw_LowP},
	    {"void", kKw_Void},
	    {"float", kKw_Float},
	    {"int", kKw_Int},
	    {"bool", kKw_Bool},
	    {"vec2", kKw_Vec2},
	    {"vec3", kKw_Vec3},
	    {"vec4", kKw_Vec4},
	    {"bvec2", kKw_BVec2},
	    {"bvec3", kKw_BVec3},
	    {"bvec4", kKw_BVec4},
	    {"ivec2", kKw_IVec2},
	    {"ivec3", kKw_IVec3},
	    {"ivec4", kKw_IVec4},
	    {"mat2", kKw_Mat2},
	    {"mat3", kKw_Mat3},
	    {"mat4", kKw_Mat4},
	    {"sampler2D", kKw_Sampler2D},
	    {"sampler3D", kKw_Sampler3D},
	    {"samplerCube", kKw_SamplerCube},
	    {"primitive", kKw_Primitive},
	};
	return keywords;
}

bool IsIdentStart(char c)
{
	return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsDigit(char c)
{
	return c >= '0' && c <= '9';
}

bool IsIdentChar(char c)
{
	return IsIdentStart(c) || IsDigit(c);
}

// The length of the operator at p: compound forms first, then the single characters.
size_t MatchPunct(const char* p, const char* end)
{
	static const char kSingles[] = "+-*/%<>=!~&|^?:;,.()[]{}";
	char c = p[0];
	char next = p + 1 < end ? p[1] : 0;
	if ((c == '<' || c == '>') && next == c)
		return p + 2 < end && p[2] == '=' ? 3 : 2;
	if ((c == '+' || c == '-' || c == '&' || c == '|' || c == '^') && next == c)
		return 2;
	if (next == '=' && c && std::strchr("<>=!+-*/%&|^", c))
		return 2;
	return c && std::strchr(kSingles, c) ? 1 : 0;
}

// Scans a number starting at p; answers its length and whether it is a float. Zero on a malformed one.
size_t ScanNumber(const char* p, const char* end, bool& isFloat)
{
	const char* q = p;
	isFloat = false;
	if (q + 1 < end && q[0] == '0' && (q[1] == 'x' || q[1] == 'X'))
	{
		q += 2;
		const char* digits = q;
		while (q < end && (IsDigit(*q) || (*q >= 'a' && *q <= 'f') || (*q >= 'A' && *q <= 'F')))
			++q;
		return q == digits ? 0 : size_t(q - p);
	}
	while (q < end && IsDigit(*q))
		++q;
	if (q < end && *q == '.')
	{
		isFloat = true;
		++q;
		while (q < end && IsDigit(*q))
			++q;
	}
	if (q < end && (*q == 'e' || *q == 'E'))
	{
		const char* e = q + 1;
		if (e < end && (*e == '+' || *e == '-'))
			++e;
		if (e >= end || !IsDigit(*e))
			return 0;
		while (e < end && IsDigit(*e))
			++e;
		q = e;
		isFloat = true;
	}
	if (isFloat && q < end && (*q == 'f' || *q == 'F'))
		++q;
	return size_t(q - p);
}

} // namespace

bool Tokenize(const std::string& text, std::vector<Token>& tokens, std::string& error, int& errorLine)
{
	const auto& keywords = Keywords();
	const char* p = text.data();
	const char* end = p + text.size();
	int line = 1;
	tokens.clear();
	tokens.reserve(text.size() / 3 + 1);
	while (p < end)
	{
		char c = *p;
		if (c == '\n')
		{
			++line;
			++p;
			continue;
		}
		if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v')
		{
			++p;
			continue;
		}
		if (c == '/' && p + 1 < end && p[1] == '/')
		{
			while (p < end && *p != '\n')
				++p;
			continue;
		}
		if (c == '/' && p + 1 < end && p[1] == '*')
		{
			int startLine = line;
			p += 2;
			while (p + 1 < end && !(p[0] == '*' && p[1] == '/'))
				line += (*p++ == '\n');
			if (p + 1 >= end)
			{
				error = "unterminated comment";
				errorLine = startLine;
				return false;
			}
			p += 2;
			continue;
		}
		Token token;
		token.line = line;
		if (IsIdentStart(c))
		{
			const char* q = p;
			while (q < end && IsIdentChar(*q))
				++q;
			token.text = std::string_view(p, size_t(q - p));
			auto it = keywords.find(token.text);
			token.kind = it == keywords.end() ? kToken_Identifier : kToken_Keyword;
			token.keyword = it == keywords.end() ? kKw_None : it->second;
		}
		else if (IsDigit(c) || (c == '.' && p + 1 < end && IsDigit(p[1])))
		{
			bool isFloat = false;
			size_t n = ScanNumber(p, end, isFloat);
			if (n == 0 || (p + n < end && IsIdentChar(p[n])))
			{
				const char* q = p;
				while (q < end && (IsIdentChar(*q) || *q == '.'))
					++q;
				error = "'" + std::string(p, size_t(q - p)) + "' : invalid number";
				errorLine = line;
				return false;
			}
			token.kind = isFloat ? kToken_Float : kToken_Int;
			token.text = std::string_view(p, n);
		}
		else
		{
			size_t n = MatchPunct(p, end);
			if (n == 0)
			{
				error = std::string("'") + c + "' : invalid character";
				errorLine = line;
				return false;
			}
			token.kind = kToken_Punct;
			token.text = std::string_view(p, n);
		}
		p += token.text.size();
		tokens.push_back(token);
	}
	Token last;
	last.line = line;
	tokens.push_back(last);
	return true;
}

} // namespace Qlsl
} // namespace Tarsel
