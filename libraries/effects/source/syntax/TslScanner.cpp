#include "syntax/TslScanner.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace Tarsel::Effects
{

namespace
{

const char* const s_aTokenText[kToken_Count] = {nullptr,
#define TSL_TOKEN_TEXT(name, terminal, text) text,
                                                TSL_TOKENS(TSL_TOKEN_TEXT)
#undef TSL_TOKEN_TEXT
};

bool IsLetter(char c)
{
	return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

struct Keyword
{
	const char* pText;
	int iLength;
	int iToken;
};

// The keywords are the tokens spelt as a word, plus the few whose message text is not their spelling;
// ordered by length so that a lookup compares only words that could match.
struct KeywordIndex
{
	std::vector<Keyword> vKeywords;
	std::vector<int> vFirstOfLength;

	KeywordIndex()
	{
		vKeywords = {
		    {"input", 5, kToken_Input}, {"true", 4, kToken_BoolConstant}, {"false", 5, kToken_BoolConstant}};
		for (int token = 1; token < kToken_Count; ++token)
		{
			const char* pText = s_aTokenText[token];
			const bool valueToken = token == kToken_Identifier || token == kToken_IntConstant ||
			                        token == kToken_FloatConstant || token == kToken_BoolConstant ||
			                        token == kToken_Reserved;
			if (pText && IsLetter(pText[0]) && !valueToken)
				vKeywords.push_back({pText, int(std::strlen(pText)), token});
		}
		std::sort(vKeywords.begin(), vKeywords.end(),
		          [](const Keyword& a, const Keyword& b) { return a.iLength < b.iLength; });
		for (size_t i = 0; i < vKeywords.size(); ++i)
			vFirstOfLength.resize(size_t(vKeywords[i].iLength) + 1, int(i));
		vFirstOfLength.push_back(int(vKeywords.size()));
	}

	// The keyword's token, or the identifier token when the word is none.
	int Find(const char* pWord, int length) const
	{
		if (length + 1 >= int(vFirstOfLength.size()))
			return kToken_Identifier;
		for (int i = vFirstOfLength[size_t(length)]; i < vFirstOfLength[size_t(length) + 1]; ++i)
		{
			const Keyword& keyword = vKeywords[size_t(i)];
			if (keyword.pText[0] == pWord[0] && std::memcmp(keyword.pText, pWord, size_t(length)) == 0)
				return keyword.iToken;
		}
		return kToken_Identifier;
	}
};

const KeywordIndex s_keywords;

struct TokenLengths
{
	unsigned char aLength[kToken_Count] = {};

	TokenLengths()
	{
		for (int token = 1; token < kToken_Count; ++token)
			aLength[token] = s_aTokenText[token] ? (unsigned char)std::strlen(s_aTokenText[token]) : 0;
	}
};

const TokenLengths s_tokenLengths;

// The tokens that start with one character, as the characters after it extend it.
struct OperatorForms
{
	int iAlone = 0;
	int iDoubled = 0;          // the character twice
	int iWithEqual = 0;        // followed by '='
	int iDoubledWithEqual = 0; // twice, then '='
};

struct OperatorTable
{
	OperatorForms aForms[128];

	OperatorTable()
	{
		for (const auto& entry :
		     {std::pair<char, OperatorForms>{'[', {kToken_LeftBracket}},
		      {']', {kToken_RightBracket}},
		      {'{', {kToken_LeftBrace}},
		      {'}', {kToken_RightBrace}},
		      {'(', {kToken_LeftParen}},
		      {')', {kToken_RightParen}},
		      {':', {kToken_Colon}},
		      {';', {kToken_Semicolon}},
		      {',', {kToken_Comma}},
		      {'?', {kToken_Question}},
		      {'~', {kToken_Tilde}},
		      {'.', {kToken_Dot}},
		      {'+', {kToken_Plus, kToken_Increment, kToken_AddAssign}},
		      {'-', {kToken_Dash, kToken_Decrement, kToken_SubAssign}},
		      {'*', {kToken_Star, 0, kToken_MulAssign}},
		      {'/', {kToken_Slash, 0, kToken_DivAssign}},
		      {'%', {kToken_Percent, 0, kToken_ModAssign}},
		      {'=', {kToken_Equal, 0, kToken_EqualEqual}},
		      {'!', {kToken_Bang, 0, kToken_NotEqual}},
		      {'&', {kToken_Ampersand, kToken_AndAnd, kToken_AndAssign}},
		      {'^', {kToken_Caret, kToken_CaretCaret, kToken_XorAssign}},
		      {'|', {kToken_Bar, kToken_BarBar, kToken_OrAssign}},
		      {'<', {kToken_Less, kToken_LeftShift, kToken_LessEqual, kToken_LeftShiftAssign}},
		      {'>', {kToken_Greater, kToken_RightShift, kToken_GreaterEqual, kToken_RightShiftAssign}}})
			aForms[int(entry.first)] = entry.second;
	}
};

const OperatorTable s_operators;

// The longest punctuation token at a character and the two after it; 0 when the character starts none.
int FindOperator(char c, char next, char third)
{
	if (c < 0)
		return 0;
	const OperatorForms& forms = s_operators.aForms[int(c)];
	if (next == c && forms.iDoubled)
		return third == '=' && forms.iDoubledWithEqual ? forms.iDoubledWithEqual : forms.iDoubled;
	if (next == '=' && forms.iWithEqual)
		return forms.iWithEqual;
	return forms.iAlone;
}

bool IsDigit(char c)
{
	return c >= '0' && c <= '9';
}

bool IsWordCharacter(char c)
{
	return IsLetter(c) || IsDigit(c);
}

int DigitValue(char c)
{
	if (IsDigit(c))
		return c - '0';
	if (c >= 'a' && c <= 'f')
		return c - 'a' + 10;
	if (c >= 'A' && c <= 'F')
		return c - 'A' + 10;
	return 99;
}

} // namespace

const char* TslTokenToString(int token)
{
	if (token <= 0 || token >= kToken_Count || !s_aTokenText[token])
		return "Unknown";
	return s_aTokenText[token];
}

bool TslScanner::Init(IParser* pParser, const std::string& text, int lineOffset)
{
	_offsetOnly = LineMap(lineOffset);
	return Init(pParser, text, _offsetOnly);
}

bool TslScanner::Init(IParser* pParser, const std::string& text, const LineMap& lines)
{
	_pParser = pParser;
	_pTokenStart = nullptr;
	_pTokenEnd = nullptr;
	_iMatchAction = 0;
	_iState = kState_Start;
	_pPosition = text.data();
	_pLineStart = _pPosition;
	_pEnd = text.data() + text.size();
	_pEndOfInput = _pEnd;
	_pLines = &lines;
	_iLine = 1;
	_position = lines.Resolve(_iLine);
	_pFiles = SourceFiles::Intern(nullptr, _position.pFile);
	return true;
}

bool TslScanner::Scan()
{
	while (_pPosition < _pEnd)
	{
		const char* p = _pPosition;
		_pTokenStart = p;
		const char c = *p;
		// Characters after p, or 0 past the end, so that every look-ahead stays inside the text.
		const char next = p + 1 < _pEnd ? p[1] : 0;
		const char third = p + 2 < _pEnd ? p[2] : 0;
		if (c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r')
			_pPosition = p + 1;
		else if (c == '\n')
		{
			_pPosition = p + 1;
			_NewLine(_pPosition);
		}
		else if (const char* pAfterComment = _ScanComment(p, next))
			_pPosition = pAfterComment;
		else if (IsLetter(c))
		{
			const char* pWord = p + 1;
			while (pWord < _pEnd && IsWordCharacter(*pWord))
				++pWord;
			_pTokenEnd = pWord;
			_SendWord();
		}
		else if (IsDigit(c) || (c == '.' && IsDigit(next)))
			_ScanNumber(p);
		else if (const int token = FindOperator(c, next, third))
		{
			// Punctuation is spelt exactly as its message text.
			_pTokenEnd = p + s_tokenLengths.aLength[token];
			_Send(token);
		}
		else
		{
			_pPosition = p;
			_iState = kState_Stopped;
			return false;
		}
	}
	return true;
}

void TslScanner::_NewLine(const char* pAfter)
{
	_pLineStart = pAfter;
	++_iLine;
	_position = _pLines->Resolve(_iLine);
	_pFiles = SourceFiles::Intern(nullptr, _position.pFile);
	_pParser->NewLine();
}

LocationRange TslScanner::_Range() const
{
	return LocationRange(_pFiles, _position.iLine, int32_t(_pTokenStart - _pLineStart), _position.iLine,
	                     int32_t(_pTokenEnd - _pLineStart));
}

void TslScanner::_Send(int token)
{
	_iMatchAction = token;
	_pPosition = _pTokenEnd;
	const LocationRange range = _Range();
	if (token == kToken_FloatConstant)
		_pParser->ParseConstantFloat(range, _pTokenStart, int(_pTokenEnd - _pTokenStart));
	else
		_pParser->ParseKeyword(range, token);
}

void TslScanner::_SendWord()
{
	const int length = int(_pTokenEnd - _pTokenStart);
	const int token = s_keywords.Find(_pTokenStart, length);
	_iMatchAction = token;
	_pPosition = _pTokenEnd;
	const LocationRange range = _Range();
	if (token == kToken_Identifier)
		_pParser->ParseIdentifier(range, _pTokenStart, length);
	else if (token == kToken_BoolConstant)
		_pParser->ParseConstantBool(range, _pTokenStart[0] == 't');
	else
		_pParser->ParseKeyword(range, token);
}

// Saturates like strtoul and then keeps 32 bits, so anything past 4294967295 arrives as -1.
void TslScanner::_SendInteger(int base)
{
	const char* p = _pTokenStart;
	if (base == 16)
		p += 2;
	else if (base == 8)
		++p;
	uint64_t value = 0;
	for (; p < _pTokenEnd; ++p)
	{
		value = value * uint64_t(base) + uint64_t(DigitValue(*p));
		if (value > 0xffffffffu)
			value = 0xffffffffu;
	}
	_iMatchAction = kToken_IntConstant;
	_pPosition = _pTokenEnd;
	_pParser->ParseConstantInt(_Range(), long(int32_t(uint32_t(value))));
}

// Digits after a '.', an optional exponent or else an optional 'f'.
const char* TslScanner::_ScanFraction(const char* p)
{
	while (p < _pEnd && IsDigit(*p))
		++p;
	if (const char* pExponent = _ScanExponent(p))
		return pExponent;
	return p < _pEnd && *p == 'f' ? p + 1 : p;
}

// End of an exponent starting at p, or null when there is none.
const char* TslScanner::_ScanExponent(const char* p)
{
	if (p >= _pEnd || (*p != 'e' && *p != 'E'))
		return nullptr;
	++p;
	if (p < _pEnd && (*p == '+' || *p == '-'))
		++p;
	if (p >= _pEnd || !IsDigit(*p))
		return nullptr;
	while (p < _pEnd && IsDigit(*p))
		++p;
	return p;
}

// Sends the longest of the integer and float forms that start at p.
void TslScanner::_ScanNumber(const char* p)
{
	const char* pDigits = p;
	while (pDigits < _pEnd && IsDigit(*pDigits))
		++pDigits;

	const char* pFloat = nullptr;
	if (pDigits < _pEnd && *pDigits == '.')
		pFloat = _ScanFraction(pDigits + 1);
	else if (const char* pExponent = _ScanExponent(pDigits))
		pFloat = pExponent;
	else if (pDigits < _pEnd && *pDigits == 'f')
		pFloat = pDigits + 1;

	int base = 10;
	const char* pInteger = pDigits;
	if (*p == '0')
	{
		const bool hex = p + 2 < _pEnd && (p[1] == 'x' || p[1] == 'X') && DigitValue(p[2]) < 16;
		base = hex ? 16 : 8;
		pInteger = p + (hex ? 2 : 1);
		while (pInteger < _pEnd && DigitValue(*pInteger) < base)
			++pInteger;
	}

	if (pFloat && pFloat > pInteger)
	{
		_pTokenEnd = pFloat;
		_Send(kToken_FloatConstant);
	}
	else
	{
		_pTokenEnd = pInteger;
		_SendInteger(base);
	}
}

// End of the comment starting at p, or null when there is none.
const char* TslScanner::_ScanComment(const char* p, char next)
{
	if (*p != '/')
		return nullptr;
	if (next == '/')
		return _ScanLineComment(p);
	return next == '*' ? _ScanBlockComment(p) : nullptr;
}

// A line comment counts only when a newline ends it; null otherwise, so that the slashes scan as tokens.
const char* TslScanner::_ScanLineComment(const char* p)
{
	const void* pNewLine = std::memchr(p + 2, '\n', size_t(_pEnd - (p + 2)));
	if (!pNewLine)
		return nullptr;
	const char* pAfter = static_cast<const char*>(pNewLine) + 1;
	_NewLine(pAfter);
	return pAfter;
}

// An unclosed block comment takes the rest of the text.
const char* TslScanner::_ScanBlockComment(const char* p)
{
	for (p += 2; p < _pEnd; ++p)
	{
		if (*p == '\n')
			_NewLine(p + 1);
		else if (*p == '*' && p + 1 < _pEnd && p[1] == '/')
			return p + 2;
	}
	return _pEnd;
}

} // namespace Tarsel::Effects
