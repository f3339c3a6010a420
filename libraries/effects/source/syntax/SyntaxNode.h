#pragma once

#include "syntax/Enumerations.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace Tarsel::Effects
{

class Module;
class Visitor;
class Syntax;
class Expression;
class Statement;
class Declaration;
class Type;
class FunctionPrototype;
class IParentSyntax;
template <class T>
class TIParentSyntax;
template <class T>
class TParentSyntaxConst;

// The names a node's lines belong to. Every node of a file shares one such pair, so that a range holds one
// pointer instead of two: hundreds of thousands of nodes are 8 bytes smaller, and more of them fit a cache
// line. Pairs are interned for the life of the process; there are a few per library ever parsed.
struct SourceFiles
{
	const std::string* pSource; // the library name the parser was given; null when unknown
	// The file the first line was written in, as the preprocessor named it (an included file, or the
	// library's own); null when the text came without a line map.
	const std::string* pFile;

	// The one pair of these names, or null when both are null. Thread-safe.
	static const SourceFiles* Intern(const std::string* pSource, const std::string* pFile);
};

// Source span of a node. Lines are those of the file the text was written in (a library's text may splice
// several files); columns are 0-based byte offsets, the end column is just past the last token. The end
// line counts in the file of the last token.
struct LocationRange
{
	const SourceFiles* _pFiles = nullptr;
	int32_t _iBeginLine = 0;
	int32_t _iBeginColumn = 0;
	int32_t _iEndLine = 0;
	int32_t _iEndColumn = 0;

	LocationRange() = default;
	LocationRange(const std::string* pSource, int32_t iBeginLine, int32_t iBeginColumn, int32_t iEndLine,
	              int32_t iEndColumn, const std::string* pFile = nullptr)
	    : _pFiles(SourceFiles::Intern(pSource, pFile)), _iBeginLine(iBeginLine), _iBeginColumn(iBeginColumn),
	      _iEndLine(iEndLine), _iEndColumn(iEndColumn)
	{
	}
	LocationRange(const SourceFiles* pFiles, int32_t iBeginLine, int32_t iBeginColumn, int32_t iEndLine,
	              int32_t iEndColumn)
	    : _pFiles(pFiles), _iBeginLine(iBeginLine), _iBeginColumn(iBeginColumn), _iEndLine(iEndLine),
	      _iEndColumn(iEndColumn)
	{
	}

	bool operator==(const LocationRange& other) const;
	bool operator!=(const LocationRange& other) const { return !(*this == other); }

	const std::string* GetSource() const { return _pFiles ? _pFiles->pSource : nullptr; }
	const std::string* GetFileWritten() const { return _pFiles ? _pFiles->pFile : nullptr; }
	// The file the node was written in: the included file's path, else the library name; null when unknown.
	const std::string* GetFile() const
	{
		const std::string* pFile = GetFileWritten();
		return pFile ? pFile : GetSource();
	}
	// File name without directories (or "<generated>"), ":" and the begin line: where a user finds the node.
	std::string GetLocationText() const;
};

// Base of every node. Nodes come from one pool-backed allocator (see Syntax.cpp) and are destroyed
// iteratively, so that trees of any depth can be deleted. Clone and Equals follow the long chains (sums,
// assignments, else-if) in loops and recurse once per level of any other nesting; visitor walks recurse
// once per level. Both rely on the parser's cap on tree height (TslParser::kMaxTreeHeight).
class Syntax
{
public:
	Syntax() = default;
	Syntax(const Syntax&) = delete;
	Syntax& operator=(const Syntax&) = delete;
	virtual ~Syntax() = default;

	const LocationRange& GetRange() const { return _range; }
	void ClearRange() { _range = LocationRange(); }
	void SetRange(const LocationRange& range) { _range = range; }
	void SetRange(const Syntax* pSyntax);
	// Begin of the first, end of the last; the source is the last one's unless that is null. A null
	// node counts as the other argument.
	void SetRange(const LocationRange& first, const LocationRange& last);
	void SetRange(const LocationRange& first, const Syntax* pLast);
	void SetRange(const Syntax* pFirst, const LocationRange& last);
	void SetRange(const Syntax* pFirst, const Syntax* pLast);
	// Keeps the begin and takes the node's end (and its source when that is set). Null does nothing.
	void ExpandRange(const Syntax* pSyntax);

	// Deletes a node and everything below it. Nodes met while a deletion is already running are queued
	// instead of deleted recursively, which keeps the destruction of deep trees flat.
	static void Destroy(Syntax* pNode);

	static void* operator new(size_t nBytes);
	static void operator delete(void* p, size_t nBytes);

protected:
	template <class T>
	static void _Destroy(T*& pNode)
	{
		Destroy(pNode);
		pNode = nullptr;
	}
	// Replaces a child: deletes the old one unless it is the new one.
	template <class T>
	static bool _Replace(T*& pField, T* pNew)
	{
		if (pField != pNew)
		{
			Destroy(pField);
			pField = pNew;
		}
		return true;
	}

private:
	LocationRange _range;
};

// An identifier or literal text. It belongs to the node that refers to it and stays registered in the
// module that made it until that node destroys it through the module.
class String
{
public:
	explicit String(const char* pText);
	String(const String&) = delete;
	String& operator=(const String&) = delete;
	virtual ~String();
	virtual String* Clone(Module* pModule) const;

	const std::string& GetString() const { return _sText; }
	const char* c_str() const { return _sText.c_str(); }
	void SetString(const std::string& sText) { _sText = sText; }
	bool Equals(const String* pOther) const { return pOther && _sText == pOther->_sText; }
	void AddPrefix(const char* pPrefix) { _sText.insert(0, pPrefix ? pPrefix : ""); }

	static void* operator new(size_t nBytes);
	static void operator delete(void* p, size_t nBytes);

private:
	friend class Module;
	std::string _sText;
	Module* _pRegistry = nullptr; // module whose string list holds this string, if any
	size_t _iRegistryIndex = 0;   // position in that list, for constant-time removal
};

// Text equality that treats two nulls as equal.
bool StringsEqual(const String* pA, const String* pB);

} // namespace Tarsel::Effects
