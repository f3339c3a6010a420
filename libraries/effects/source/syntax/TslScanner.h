#pragma once

#include <cstdint>
#include <string>

#include "syntax/Syntax.h"

namespace Tarsel::Effects
{

// The token list in code order: enumerator suffix, the grammar's terminal name, the text shown in messages.
// The grammar declares its terminals in this same order, so a code here is the parser's terminal number
// (TslParser.cpp checks every one against the generated header at compile time).
#define TSL_TOKENS(X)                                                                                        \
	X(LeftBracket, LBRACKET, "[")                                                                            \
	X(RightBracket, RBRACKET, "]")                                                                           \
	X(LeftBrace, LBRACE, "{")                                                                                \
	X(RightBrace, RBRACE, "}")                                                                               \
	X(Interface, INTERFACE, "interface")                                                                     \
	X(Identifier, IDENTIFIER, "identifier")                                                                  \
	X(Class, CLASS, "class")                                                                                 \
	X(Colon, COLON, ":")                                                                                     \
	X(Semicolon, SEMICOLON, ";")                                                                             \
	X(Coord, COORD, "coord")                                                                                 \
	X(Normal, NORMAL, "normal")                                                                              \
	X(Tangent, TANGENT, "tangent")                                                                           \
	X(Output, OUTPUT, "output")                                                                              \
	X(Out, OUT, "out")                                                                                       \
	X(Float, FLOAT, "float")                                                                                 \
	X(Vec2, VEC2, "vec2")                                                                                    \
	X(Vec3, VEC3, "vec3")                                                                                    \
	X(Vec4, VEC4, "vec4")                                                                                    \
	X(IntConstant, INTCONSTANT, "int constant")                                                              \
	X(Static, STATIC, "static")                                                                              \
	X(Const, CONST, "const")                                                                                 \
	X(Equal, EQUAL, "=")                                                                                     \
	X(Dash, DASH, "-")                                                                                       \
	X(FloatConstant, FLOATCONSTANT, "float constant")                                                        \
	X(BoolConstant, BOOLCONSTANT, "bool constant")                                                           \
	X(RightParen, RPAREN, ")")                                                                               \
	X(Comma, COMMA, ",")                                                                                     \
	X(LeftParen, LPAREN, "(")                                                                                \
	X(Bool, BOOL, "bool")                                                                                    \
	X(Int, INT, "int")                                                                                       \
	X(IVec2, IVEC2, "ivec2")                                                                                 \
	X(IVec3, IVEC3, "ivec3")                                                                                 \
	X(IVec4, IVEC4, "ivec4")                                                                                 \
	X(Mat2, MAT2, "mat2")                                                                                    \
	X(Mat3, MAT3, "mat3")                                                                                    \
	X(Mat4, MAT4, "mat4")                                                                                    \
	X(Input, INPUT, nullptr)                                                                                 \
	X(Void, VOID, "void")                                                                                    \
	X(In, IN, "in")                                                                                          \
	X(InOut, INOUT, "inout")                                                                                 \
	X(If, IF, "if")                                                                                          \
	X(While, WHILE, "while")                                                                                 \
	X(Do, DO, "do")                                                                                          \
	X(For, FOR, "for")                                                                                       \
	X(Continue, CONTINUE, "continue")                                                                        \
	X(Break, BREAK, "break")                                                                                 \
	X(Return, RETURN, "return")                                                                              \
	X(Else, ELSE, "else")                                                                                    \
	X(Dot, DOT, ".")                                                                                         \
	X(Increment, INC_OP, "++")                                                                               \
	X(Decrement, DEC_OP, "--")                                                                               \
	X(BVec2, BVEC2, "bvec2")                                                                                 \
	X(BVec3, BVEC3, "bvec3")                                                                                 \
	X(BVec4, BVEC4, "bvec4")                                                                                 \
	X(Plus, PLUS, "+")                                                                                       \
	X(Bang, BANG, "!")                                                                                       \
	X(Tilde, TILDE, "~")                                                                                     \
	X(Star, STAR, "*")                                                                                       \
	X(Slash, SLASH, "/")                                                                                     \
	X(Percent, PERCENT, "%")                                                                                 \
	X(LeftShift, LEFT_OP, "<<")                                                                              \
	X(RightShift, RIGHT_OP, ">>")                                                                            \
	X(Less, LEFT_ANGLE, "<")                                                                                 \
	X(Greater, RIGHT_ANGLE, ">")                                                                             \
	X(LessEqual, LE_OP, "<=")                                                                                \
	X(GreaterEqual, GE_OP, ">=")                                                                             \
	X(EqualEqual, EQ_OP, "==")                                                                               \
	X(NotEqual, NE_OP, "!=")                                                                                 \
	X(Ampersand, AMPERSAND, "&")                                                                             \
	X(Caret, CARET, "^")                                                                                     \
	X(Bar, VERTICAL_BAR, "|")                                                                                \
	X(AndAnd, AND_OP, "&&")                                                                                  \
	X(CaretCaret, XOR_OP, "^^")                                                                              \
	X(BarBar, OR_OP, "||")                                                                                   \
	X(Question, QUESTION, "?")                                                                               \
	X(MulAssign, MUL_ASSIGN, "*=")                                                                           \
	X(DivAssign, DIV_ASSIGN, "/=")                                                                           \
	X(ModAssign, MOD_ASSIGN, "%=")                                                                           \
	X(AddAssign, ADD_ASSIGN, "+=")                                                                           \
	X(SubAssign, SUB_ASSIGN, "-=")                                                                           \
	X(LeftShiftAssign, LEFT_ASSIGN, "<<=")                                                                   \
	X(RightShiftAssign, RIGHT_ASSIGN, ">>=")                                                                 \
	X(AndAssign, AND_ASSIGN, "&=")                                                                           \
	X(XorAssign, XOR_ASSIGN, "^=")                                                                           \
	X(OrAssign, OR_ASSIGN, "|=")                                                                             \
	X(Sampler2D, SAMPLER2D, "sampler2D")                                                                     \
	X(Sampler3D, SAMPLER3D, "sampler3D")                                                                     \
	X(SamplerCube, SAMPLERCUBE, "samplerCube")                                                               \
	X(Primitive, PRIMITIVE, "primitive")                                                                     \
	X(Reserved, RESERVED, "RESERVED")                                                                        \
	X(Struct, STRUCT, "struct")

enum TslToken
{
	kToken_End = 0,
#define TSL_TOKEN_ENUMERATOR(name, terminal, text) kToken_##name,
	TSL_TOKENS(TSL_TOKEN_ENUMERATOR)
#undef TSL_TOKEN_ENUMERATOR
	    kToken_Count
};

// Text of a token in parser messages; "Unknown" for `input` and any code outside the table.
const char* TslTokenToString(int token);

// Receiver of the scanner's tokens. Nobody deletes a parser through this interface.
class IParser
{
public:
	virtual void ParseConstantBool(const LocationRange& range, bool value) = 0;
	virtual bool ParseConstantInt(const LocationRange& range, long value) = 0;
	virtual bool ParseConstantFloat(const LocationRange& range, const char* text, int length) = 0;
	// Every token without a value: keywords, punctuation and operators.
	virtual bool ParseKeyword(const LocationRange& range, int token) = 0;
	virtual bool ParseIdentifier(const LocationRange& range, const char* text, int length) = 0;
	virtual bool NewLine() = 0;

protected:
	~IParser() = default;
};

// Hand-written longest-match scanner. It copies nothing: tokens point into the text, which must outlive Scan.
class TslScanner
{
public:
	TslScanner() = default;
	~TslScanner() = default;

	bool Init(IParser* pParser, const std::string& text, int lineOffset);
	// Numbers tokens by the file and line each line of the text came from; the map must outlive Scan.
	bool Init(IParser* pParser, const std::string& text, const LineMap& lines);
	// Sends every token in order; false when it stopped at a character that starts no token.
	bool Scan();

private:
	enum State
	{
		kState_Start = 0,
		kState_Stopped = 1,
	};

	void _ScanNumber(const char* p);
	const char* _ScanFraction(const char* p);
	const char* _ScanExponent(const char* p);
	const char* _ScanComment(const char* p, char next);
	const char* _ScanLineComment(const char* p);
	const char* _ScanBlockComment(const char* p);
	void _NewLine(const char* pAfter);
	void _SendWord();
	void _SendInteger(int base);
	void _Send(int token);
	LocationRange _Range() const;

	IParser* _pParser = nullptr;
	const char* _pTokenStart = nullptr;
	const char* _pTokenEnd = nullptr;
	int32_t _iMatchAction = 0; // code of the token last accepted
	int32_t _iState = kState_Start;
	const char* _pPosition = nullptr;
	const char* _pEnd = nullptr;
	const char* _pEndOfInput = nullptr;
	const char* _pLineStart = nullptr;
	int32_t _iLine = 0; // line of the text, from 1
	const LineMap* _pLines = nullptr;
	LineMap::Position _position{}; // where the current line was written
	const SourceFiles* _pFiles = nullptr;
	LineMap _offsetOnly; // the map of Init with a plain offset
};

} // namespace Tarsel::Effects
