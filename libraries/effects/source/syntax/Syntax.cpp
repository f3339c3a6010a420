#include "syntax/Syntax.h"
#include "syntax/SyntaxHelpers.h"

#include "core/Assert.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <mutex>
#include <new>
#include <set>

namespace Tarsel::Effects
{

using namespace Detail;

// ---------------------------------------------------------------------------------------------------------
// Allocation. Nodes and strings are small and made by the hundred thousand, so they come from per-thread
// pages of 64 KB, each holding blocks of one 16-byte size class. A page hands out its blocks before the
// next page is touched, and a page whose blocks have all come back starts again from its beginning, so a
// tree built after others were deleted lies in a few pages instead of being scattered over every page the
// thread ever used. Pages are never returned; a block freed on a thread other than its page's owner joins
// a list of that thread's own. Sanitizer builds use the global heap so that double deletes and leaks of
// nodes stay visible.
// ---------------------------------------------------------------------------------------------------------

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(TARSEL_SYNTAX_NO_POOL)
constexpr bool kUsePool = false;
#else
constexpr bool kUsePool = true;
#endif

constexpr size_t kGranule = 16;
constexpr size_t kSizeClasses = 16; // blocks up to 256 bytes
constexpr size_t kPageBytes = 64 * 1024;
constexpr size_t kPagesPerSlab = 16; // pages are taken from the heap this many at a time

struct FreeBlock
{
	FreeBlock* pNext;
};

// Header at the start of every page; the page of a block is found by masking its address.
struct Page
{
	FreeBlock* pFree;   // blocks given back on the owning thread
	char* pBump;        // first block never handed out
	Page* pNextPartial; // next page of the same class with room, while bListed
	uint32_t iOwner;
	uint32_t nUsed;
	uint32_t nBlock;
	bool bListed;
};

// Blocks start on a cache line, so that every block of 64 bytes (strings, many small nodes) is one line, and
// a node's fields are not split between two lines more often than its size makes them.
constexpr size_t kCacheLine = 64;
constexpr size_t kFirstBlock = (sizeof(Page) + kCacheLine - 1) / kCacheLine * kCacheLine;

struct Pool
{
	uint32_t iId;                       // 0 until the thread first allocates
	Page* apPartial[kSizeClasses];      // pages with room; allocation takes from the first
	FreeBlock* apForeign[kSizeClasses]; // blocks of other threads' pages freed here
	char* pSlab;                        // pages not yet given a class
	size_t nSlabPages;
};

thread_local Pool t_pool; // plain data: usable during static destruction
std::atomic<uint32_t> s_iLastPoolId{0};

bool IsPooled(size_t nBytes)
{
	return kUsePool && nBytes != 0 && nBytes <= kGranule * kSizeClasses;
}

Page* PageOf(void* p)
{
	return reinterpret_cast<Page*>(reinterpret_cast<uintptr_t>(p) & ~(uintptr_t(kPageBytes) - 1));
}

char* PageEnd(Page* pPage)
{
	return reinterpret_cast<char*>(pPage) + kPageBytes;
}

Page* NewPage(Pool& pool, size_t iClass)
{
	if (pool.nSlabPages == 0)
	{
		pool.pSlab =
		    static_cast<char*>(::operator new(kPageBytes* kPagesPerSlab, std::align_val_t(kPageBytes)));
		pool.nSlabPages = kPagesPerSlab;
	}
	Page* pPage = reinterpret_cast<Page*>(pool.pSlab);
	pool.pSlab += kPageBytes;
	--pool.nSlabPages;
	*pPage = Page{nullptr,
	              reinterpret_cast<char*>(pPage) + kFirstBlock,
	              pool.apPartial[iClass],
	              pool.iId,
	              0,
	              static_cast<uint32_t>((iClass + 1) * kGranule),
	              true};
	pool.apPartial[iClass] = pPage;
	return pPage;
}

void* TakeBlock(Page* pPage)
{
	if (FreeBlock* pBlock = pPage->pFree)
	{
		pPage->pFree = pBlock->pNext;
		++pPage->nUsed;
		return pBlock;
	}
	if (PageEnd(pPage) - pPage->pBump < static_cast<ptrdiff_t>(pPage->nBlock))
		return nullptr;
	void* p = pPage->pBump;
	pPage->pBump += pPage->nBlock;
	++pPage->nUsed;
	return p;
}

void* PoolAllocate(size_t nBytes)
{
	if (!IsPooled(nBytes))
		return ::operator new(nBytes);
	const size_t iClass = (nBytes - 1) / kGranule;
	Pool& pool = t_pool;
	if (pool.iId == 0)
		pool.iId = ++s_iLastPoolId;
	while (Page* pPage = pool.apPartial[iClass])
	{
		if (void* p = TakeBlock(pPage))
			return p;
		pPage->bListed = false;
		pool.apPartial[iClass] = pPage->pNextPartial;
	}
	if (FreeBlock* pBlock = pool.apForeign[iClass])
	{
		pool.apForeign[iClass] = pBlock->pNext;
		return pBlock;
	}
	return TakeBlock(NewPage(pool, iClass));
}

void PoolFree(void* p, size_t nBytes)
{
	if (!p)
		return;
	if (!IsPooled(nBytes))
	{
		::operator delete(p);
		return;
	}
	Pool& pool = t_pool;
	Page* pPage = PageOf(p);
	FreeBlock* pBlock = static_cast<FreeBlock*>(p);
	if (pPage->iOwner != pool.iId)
	{
		const size_t iClass = (nBytes - 1) / kGranule;
		pBlock->pNext = pool.apForeign[iClass];
		pool.apForeign[iClass] = pBlock;
		return;
	}
	if (--pPage->nUsed == 0)
	{
		// Nothing lives here any more: hand the page out again from its start.
		pPage->pFree = nullptr;
		pPage->pBump = reinterpret_cast<char*>(pPage) + kFirstBlock;
	}
	else
	{
		pBlock->pNext = pPage->pFree;
		pPage->pFree = pBlock;
	}
	if (!pPage->bListed)
	{
		const size_t iClass = pPage->nBlock / kGranule - 1;
		pPage->bListed = true;
		pPage->pNextPartial = pool.apPartial[iClass];
		pool.apPartial[iClass] = pPage;
	}
}

// Nodes waiting to be deleted by the outermost running Destroy, or null when none runs.
thread_local std::vector<Syntax*>* t_pPending = nullptr;

const LocationRange& RangeOr(const Syntax* pNode, const LocationRange& fallback)
{
	return pNode ? pNode->GetRange() : fallback;
}

} // namespace

void* Syntax::operator new(size_t nBytes)
{
	return PoolAllocate(nBytes);
}

void Syntax::operator delete(void* p, size_t nBytes)
{
	PoolFree(p, nBytes);
}

void* String::operator new(size_t nBytes)
{
	return PoolAllocate(nBytes);
}

void String::operator delete(void* p, size_t nBytes)
{
	PoolFree(p, nBytes);
}

void Syntax::Destroy(Syntax* pNode)
{
	if (!pNode)
		return;
	if (t_pPending)
	{
		t_pPending->push_back(pNode);
		return;
	}
	std::vector<Syntax*> vPending;
	t_pPending = &vPending;
	delete pNode;
	while (!vPending.empty())
	{
		Syntax* pNext = vPending.back();
		vPending.pop_back();
		delete pNext;
	}
	t_pPending = nullptr;
}

// ---------------------------------------------------------------------------------------------------------
// Ranges and strings
// ---------------------------------------------------------------------------------------------------------

namespace
{

struct SourceFilesLess
{
	bool operator()(const SourceFiles& a, const SourceFiles& b) const
	{
		return std::less<>()(a.pSource, b.pSource) ||
		       (a.pSource == b.pSource && std::less<>()(a.pFile, b.pFile));
	}
};

// Never destroyed: nodes destroyed during static destruction may still intern their ranges' names.
struct InternedFiles
{
	std::mutex mutex;
	std::set<SourceFiles, SourceFilesLess> setFiles;
};

InternedFiles& Interned()
{
	static InternedFiles* pInterned = new InternedFiles;
	return *pInterned;
}

// The parser asks for the same two or three pairs token after token; they are found here without the lock.
constexpr size_t kRecentFiles = 4;
thread_local const SourceFiles* t_apRecentFiles[kRecentFiles] = {};
thread_local size_t t_iNextRecentFiles = 0;

} // namespace

const SourceFiles* SourceFiles::Intern(const std::string* pSource, const std::string* pFile)
{
	if (pSource == nullptr && pFile == nullptr)
		return nullptr;
	for (const SourceFiles* pRecent : t_apRecentFiles)
		if (pRecent && pRecent->pSource == pSource && pRecent->pFile == pFile)
			return pRecent;
	InternedFiles& interned = Interned();
	const SourceFiles* pFiles;
	{
		std::lock_guard<std::mutex> lock(interned.mutex);
		pFiles = &*interned.setFiles.insert(SourceFiles{pSource, pFile}).first;
	}
	t_apRecentFiles[t_iNextRecentFiles] = pFiles;
	t_iNextRecentFiles = (t_iNextRecentFiles + 1) % kRecentFiles;
	return pFiles;
}

bool LocationRange::operator==(const LocationRange& other) const
{
	return _pFiles == other._pFiles && _iBeginLine == other._iBeginLine &&
	       _iBeginColumn == other._iBeginColumn && _iEndLine == other._iEndLine &&
	       _iEndColumn == other._iEndColumn;
}

std::string LocationRange::GetLocationText() const
{
	std::string sName = "<generated>";
	if (const std::string* pFile = GetFile())
	{
		const size_t iSlash = pFile->find_last_of("/\\");
		sName = iSlash == std::string::npos ? *pFile : pFile->substr(iSlash + 1);
	}
	return sName + ":" + std::to_string(_iBeginLine);
}

void Syntax::SetRange(const Syntax* pSyntax)
{
	if (pSyntax)
		_range = pSyntax->GetRange();
}

void Syntax::SetRange(const LocationRange& first, const LocationRange& last)
{
	LocationRange range = first;
	const std::string* pSource = last.GetSource();
	if (pSource && pSource != first.GetSource())
		range._pFiles = SourceFiles::Intern(pSource, first.GetFileWritten());
	range._iEndLine = last._iEndLine;
	range._iEndColumn = last._iEndColumn;
	_range = range;
}

void Syntax::SetRange(const LocationRange& first, const Syntax* pLast)
{
	SetRange(first, RangeOr(pLast, first));
}

void Syntax::SetRange(const Syntax* pFirst, const LocationRange& last)
{
	SetRange(RangeOr(pFirst, last), last);
}

void Syntax::SetRange(const Syntax* pFirst, const Syntax* pLast)
{
	if (pFirst || pLast)
		SetRange(RangeOr(pFirst, pLast->GetRange()), RangeOr(pLast, pFirst->GetRange()));
}

void Syntax::ExpandRange(const Syntax* pSyntax)
{
	if (pSyntax)
		SetRange(_range, pSyntax->GetRange());
}

String::String(const char* pText) : _sText(pText ? pText : "") {}

String::~String() = default;

String* String::Clone(Module* pModule) const
{
	return pModule->CreateString(_sText.c_str());
}

bool StringsEqual(const String* pA, const String* pB)
{
	if (!pA || !pB)
		return pA == pB;
	return pA->GetString() == pB->GetString();
}

int Detail::CompareStrings(const String* pA, const String* pB)
{
	if (!pA || !pB)
		return (pA != nullptr) - (pB != nullptr);
	return pA->GetString().compare(pB->GetString());
}

// ---------------------------------------------------------------------------------------------------------
// Expressions
// ---------------------------------------------------------------------------------------------------------

Assignment::Assignment(Module* pModule, Operator eOperator, Expression* pLeft, Expression* pRight)
    : Expression(pModule), _eOperator(eOperator), _pLeft(pLeft), _pRight(pRight)
{
}

Assignment::~Assignment()
{
	_Destroy(_pLeft);
	_Destroy(_pRight);
}

Assignment* Assignment::Clone(Module* pModule) const
{
	return static_cast<Assignment*>(CloneSpine<Assignment, Expression>(
	    this, pModule, [](const Assignment* p) { return p->_pRight; },
	    [pModule](const Assignment* p, Expression* pRight)
	    { return pModule->CreateAssignment(p->_eOperator, CloneNode(p->_pLeft, pModule), pRight); }));
}

bool Assignment::Equals(const Expression* pOther) const
{
	return EqualSpines<Assignment, Expression>(
	    this, pOther, [](const Assignment* p) { return p->_pRight; },
	    [](const Assignment* pA, const Assignment* pB)
	    { return pA->_eOperator == pB->_eOperator && EqualNodes(pA->_pLeft, pB->_pLeft); });
}

BoolConstant* BoolConstant::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateBoolConstant(_bValue), this);
}

bool BoolConstant::Equals(const Expression* pOther) const
{
	const BoolConstant* p = SameClass<BoolConstant>(pOther);
	return p && _bValue == p->_bValue;
}

IntConstant* IntConstant::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateIntConstant(_iValue), this);
}

bool IntConstant::Equals(const Expression* pOther) const
{
	const IntConstant* p = SameClass<IntConstant>(pOther);
	return p && _iValue == p->_iValue;
}

FloatConstant::FloatConstant(Module* pModule, String* pString, double dValue)
    : Expression(pModule), _dValue(dValue), _pString(pString)
{
}

FloatConstant::~FloatConstant()
{
	ReleaseString(GetModule(), _pString);
}

FloatConstant* FloatConstant::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateFloatConstant(CloneString(_pString, pModule), _dValue), this);
}

bool FloatConstant::Equals(const Expression* pOther) const
{
	const FloatConstant* p = SameClass<FloatConstant>(pOther);
	return p && _dValue == p->_dValue;
}

UnaryOperator::UnaryOperator(Module* pModule, Operator eOperator, Expression* pExpression)
    : Expression(pModule), _eOperator(eOperator), _pExpression(pExpression)
{
}

UnaryOperator::~UnaryOperator()
{
	_Destroy(_pExpression);
}

UnaryOperator* UnaryOperator::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateUnaryOperator(_eOperator, CloneNode(_pExpression, pModule)), this);
}

bool UnaryOperator::Equals(const Expression* pOther) const
{
	const UnaryOperator* p = SameClass<UnaryOperator>(pOther);
	return p && _eOperator == p->_eOperator && EqualNodes(_pExpression, p->_pExpression);
}

PostOperator::PostOperator(Module* pModule, Operator eOperator, Expression* pExpression)
    : Expression(pModule), _eOperator(eOperator), _pExpression(pExpression)
{
}

PostOperator::~PostOperator()
{
	_Destroy(_pExpression);
}

PostOperator* PostOperator::Clone(Module* pModule) const
{
	return WithRange(pModule->CreatePostOperator(_eOperator, CloneNode(_pExpression, pModule)), this);
}

bool PostOperator::Equals(const Expression* pOther) const
{
	const PostOperator* p = SameClass<PostOperator>(pOther);
	return p && _eOperator == p->_eOperator && EqualNodes(_pExpression, p->_pExpression);
}

BinaryOperator::BinaryOperator(Module* pModule, Operator eOperator, Expression* pLeft, Expression* pRight)
    : Expression(pModule), _eOperator(eOperator), _pLeft(pLeft), _pRight(pRight)
{
}

BinaryOperator::~BinaryOperator()
{
	_Destroy(_pLeft);
	_Destroy(_pRight);
}

BinaryOperator* BinaryOperator::Clone(Module* pModule) const
{
	return static_cast<BinaryOperator*>(CloneSpine<BinaryOperator, Expression>(
	    this, pModule, [](const BinaryOperator* p) { return p->_pLeft; },
	    [pModule](const BinaryOperator* p, Expression* pLeft)
	    { return pModule->CreateBinaryOperator(p->_eOperator, pLeft, CloneNode(p->_pRight, pModule)); }));
}

bool BinaryOperator::Equals(const Expression* pOther) const
{
	return EqualSpines<BinaryOperator, Expression>(
	    this, pOther, [](const BinaryOperator* p) { return p->_pLeft; },
	    [](const BinaryOperator* pA, const BinaryOperator* pB)
	    { return pA->_eOperator == pB->_eOperator && EqualNodes(pA->_pRight, pB->_pRight); });
}

Conditional::Conditional(Module* pModule, Expression* pCondition, Expression* pTrue, Expression* pFalse)
    : Expression(pModule), _pCondition(pCondition), _pTrue(pTrue), _pFalse(pFalse)
{
}

Conditional::~Conditional()
{
	_Destroy(_pCondition);
	_Destroy(_pTrue);
	_Destroy(_pFalse);
}

Conditional* Conditional::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateConditional(CloneNode(_pCondition, pModule), CloneNode(_pTrue, pModule),
	                                            CloneNode(_pFalse, pModule)),
	                 this);
}

bool Conditional::Equals(const Expression* pOther) const
{
	const Conditional* p = SameClass<Conditional>(pOther);
	return p && EqualNodes(_pCondition, p->_pCondition) && EqualNodes(_pTrue, p->_pTrue) &&
	       EqualNodes(_pFalse, p->_pFalse);
}

Variable::~Variable()
{
	ReleaseString(GetModule(), _pIdentifier);
}

Variable* Variable::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateVariable(CloneString(_pIdentifier, pModule)), this);
}

bool Variable::Equals(const Expression* pOther) const
{
	const Variable* p = SameClass<Variable>(pOther);
	return p && StringsEqual(_pIdentifier, p->_pIdentifier);
}

FieldSelection::FieldSelection(Module* pModule, Expression* pExpression, String* pField)
    : Expression(pModule), _pExpression(pExpression), _pField(pField)
{
}

FieldSelection::~FieldSelection()
{
	_Destroy(_pExpression);
	ReleaseString(GetModule(), _pField);
}

FieldSelection* FieldSelection::Clone(Module* pModule) const
{
	return WithRange(
	    pModule->CreateFieldSelection(CloneNode(_pExpression, pModule), CloneString(_pField, pModule)), this);
}

bool FieldSelection::Equals(const Expression* pOther) const
{
	const FieldSelection* p = SameClass<FieldSelection>(pOther);
	return p && EqualNodes(_pExpression, p->_pExpression) && StringsEqual(_pField, p->_pField);
}

FunctionSelection::FunctionSelection(Module* pModule, Expression* pExpression, FunctionCall* pFunction)
    : Expression(pModule), _pExpression(pExpression), _pFunction(pFunction)
{
}

FunctionSelection::~FunctionSelection()
{
	_Destroy(_pExpression);
	_Destroy(_pFunction);
}

bool FunctionSelection::SetFunction(FunctionCall* pFunction)
{
	return _Replace(_pFunction, pFunction);
}

FunctionSelection* FunctionSelection::Clone(Module* pModule) const
{
	return WithRange(
	    pModule->CreateFunctionSelection(CloneNode(_pExpression, pModule), CloneNode(_pFunction, pModule)),
	    this);
}

bool FunctionSelection::Equals(const Expression* pOther) const
{
	const FunctionSelection* p = SameClass<FunctionSelection>(pOther);
	return p && EqualNodes(_pExpression, p->_pExpression) && EqualNodes(_pFunction, p->_pFunction);
}

Subscript::Subscript(Module* pModule, Expression* pArray, Expression* pIndex)
    : Expression(pModule), _pArray(pArray), _pIndex(pIndex)
{
}

Subscript::~Subscript()
{
	_Destroy(_pArray);
	_Destroy(_pIndex);
}

Subscript* Subscript::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateSubscript(CloneNode(_pArray, pModule), CloneNode(_pIndex, pModule)),
	                 this);
}

bool Subscript::Equals(const Expression* pOther) const
{
	const Subscript* p = SameClass<Subscript>(pOther);
	return p && EqualNodes(_pArray, p->_pArray) && EqualNodes(_pIndex, p->_pIndex);
}

FunctionCall::FunctionCall(Module* pModule, String* pName)
    : Expression(pModule), _pName(pName), _pType(nullptr)
{
	if (pModule)
		pModule->_AddCall(this);
}

FunctionCall::FunctionCall(Module* pModule, Type* pType) : Expression(pModule), _pName(nullptr), _pType(pType)
{
	if (pModule)
		pModule->_AddCall(this);
}

FunctionCall::~FunctionCall()
{
	if (GetModule())
		GetModule()->_RemoveCall(this);
	DestroySequence(_vParameters);
	_Destroy(_pType);
	ReleaseString(GetModule(), _pName);
}

void FunctionCall::SetName(String* pName)
{
	ReplaceString(GetModule(), _pName, pName);
}

void FunctionCall::AddParameter(Expression* pExpression)
{
	TARSEL_ASSERT_MSG(pExpression != NULL, nullptr); // the _MSG form keeps NULL unexpanded in the report
	_vParameters.push_back(pExpression);
}

// The clone keeps the source's range like every other node, so that messages about generated code can
// still point at the library line.
FunctionCall* FunctionCall::Clone(Module* pModule) const
{
	FunctionCall* pClone = _pName ? pModule->CreateFunctionCall(CloneString(_pName, pModule))
	                              : pModule->CreateFunctionCall(CloneNode(_pType, pModule));
	if (_pName && _pType)
		pClone->SetType(CloneNode(_pType, pModule));
	for (const Expression* pParameter : _vParameters)
		pClone->AddParameter(CloneNode(pParameter, pModule));
	return WithRange(pClone, this);
}

bool FunctionCall::Equals(const Expression* pOther) const
{
	const FunctionCall* p = SameClass<FunctionCall>(pOther);
	if (!p || !StringsEqual(_pName, p->_pName))
		return false;
	if (_pType && !_pType->Equals(p->_pType))
		return false;
	return EqualSequences(_vParameters, p->_vParameters);
}

bool FunctionCall::Equals(const FunctionPrototype* pPrototype) const
{
	return pPrototype && _pName && pPrototype->GetName() && StringsEqual(_pName, pPrototype->GetName());
}

Condition::Condition(Module* pModule, Expression* pExpression)
    : Expression(pModule), _pExpression(pExpression), _pDeclaration(nullptr)
{
}

Condition::Condition(Module* pModule, Declaration* pDeclaration)
    : Expression(pModule), _pExpression(nullptr), _pDeclaration(pDeclaration)
{
}

Condition::~Condition()
{
	_Destroy(_pExpression);
	_Destroy(_pDeclaration);
}

Condition* Condition::Clone(Module* pModule) const
{
	Condition* pClone = _pDeclaration ? pModule->CreateCondition(CloneNode(_pDeclaration, pModule))
	                                  : pModule->CreateCondition(CloneNode(_pExpression, pModule));
	return WithRange(pClone, this);
}

bool Condition::Equals(const Expression* pOther) const
{
	const Condition* p = SameClass<Condition>(pOther);
	if (!p)
		return false;
	if (_pExpression && p->_pExpression && _pExpression->Equals(p->_pExpression))
		return true;
	return _pDeclaration && p->_pDeclaration && _pDeclaration->Equals(p->_pDeclaration);
}

// ---------------------------------------------------------------------------------------------------------
// Statements
// ---------------------------------------------------------------------------------------------------------

EmptyStatement* EmptyStatement::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateEmptyStatement(), this);
}

bool EmptyStatement::Equals(const Statement* pOther) const
{
	return SameClass<EmptyStatement>(pOther) != nullptr;
}

DeclarationStatement::DeclarationStatement(Module* pModule, VariableDeclaration* pDeclaration)
    : Statement(pModule), _pDeclaration(pDeclaration)
{
}

DeclarationStatement::~DeclarationStatement()
{
	_Destroy(_pDeclaration);
}

DeclarationStatement* DeclarationStatement::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateDeclarationStatement(CloneNode(_pDeclaration, pModule)), this);
}

bool DeclarationStatement::Equals(const Statement* pOther) const
{
	const DeclarationStatement* p = SameClass<DeclarationStatement>(pOther);
	return p && EqualNodes(_pDeclaration, p->_pDeclaration);
}

bool DeclarationStatement::operator<(const DeclarationStatement& other) const
{
	if (GetClass() != other.GetClass())
		return GetClass() < other.GetClass();
	if (!_pDeclaration || !other._pDeclaration)
		return !_pDeclaration && other._pDeclaration;
	return *_pDeclaration < *other._pDeclaration;
}

ExpressionStatement::ExpressionStatement(Module* pModule, Expression* pExpression)
    : Statement(pModule), _pExpression(pExpression)
{
}

ExpressionStatement::~ExpressionStatement()
{
	_Destroy(_pExpression);
}

ExpressionStatement* ExpressionStatement::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateExpressionStatement(CloneNode(_pExpression, pModule)), this);
}

bool ExpressionStatement::Equals(const Statement* pOther) const
{
	const ExpressionStatement* p = SameClass<ExpressionStatement>(pOther);
	return p && EqualNodes(_pExpression, p->_pExpression);
}

CompoundStatement::CompoundStatement(Module* pModule, Statement* pStatement) : Statement(pModule)
{
	_vStatements.push_back(pStatement);
}

CompoundStatement::~CompoundStatement()
{
	DestroySequence(_vStatements);
}

void CompoundStatement::AddStatement(Statement* pStatement)
{
	if (_vStatements.empty())
		SetRange(pStatement);
	else
		ExpandRange(pStatement);
	_vStatements.push_back(pStatement);
}

CompoundStatement* CompoundStatement::Clone(Module* pModule) const
{
	CompoundStatement* pClone = pModule->CreateCompoundStatement();
	for (const Statement* pStatement : _vStatements)
		pClone->_vStatements.push_back(CloneNode(pStatement, pModule));
	return WithRange(pClone, this);
}

bool CompoundStatement::Equals(const Statement* pOther) const
{
	const CompoundStatement* p = SameClass<CompoundStatement>(pOther);
	return p && EqualSequences(_vStatements, p->_vStatements);
}

SelectionStatement::~SelectionStatement()
{
	_Destroy(_pCondition);
	_Destroy(_pThen);
	_Destroy(_pElse);
}

SelectionStatement* SelectionStatement::Clone(Module* pModule) const
{
	return static_cast<SelectionStatement*>(CloneSpine<SelectionStatement, Statement>(
	    this, pModule, [](const SelectionStatement* p) { return p->_pElse; },
	    [pModule](const SelectionStatement* p, Statement* pElse)
	    {
		    SelectionStatement* pClone = pModule->CreateSelectionStatement();
		    pClone->SetCondition(CloneNode(p->_pCondition, pModule));
		    pClone->SetThen(CloneNode(p->_pThen, pModule));
		    pClone->SetElse(pElse);
		    return pClone;
	    }));
}

bool SelectionStatement::Equals(const Statement* pOther) const
{
	return EqualSpines<SelectionStatement, Statement>(
	    this, pOther, [](const SelectionStatement* p) { return p->_pElse; },
	    [](const SelectionStatement* pA, const SelectionStatement* pB)
	    { return EqualNodes(pA->_pCondition, pB->_pCondition) && EqualNodes(pA->_pThen, pB->_pThen); });
}

IterationStatement::~IterationStatement()
{
	_Destroy(_pStatement);
}

WhileStatement::WhileStatement(Module* pModule, Condition* pCondition, Statement* pStatement)
    : IterationStatement(pModule, pStatement), _pCondition(pCondition)
{
}

WhileStatement::~WhileStatement()
{
	_Destroy(_pCondition);
}

WhileStatement* WhileStatement::Clone(Module* pModule) const
{
	return WithRange(
	    pModule->CreateWhileStatement(CloneNode(_pCondition, pModule), CloneNode(GetStatement(), pModule)),
	    this);
}

bool WhileStatement::Equals(const Statement* pOther) const
{
	const WhileStatement* p = SameClass<WhileStatement>(pOther);
	return p && EqualNodes(_pCondition, p->_pCondition) && EqualNodes(GetStatement(), p->GetStatement());
}

DoWhileStatement::DoWhileStatement(Module* pModule, Statement* pStatement, Expression* pExpression)
    : IterationStatement(pModule, pStatement), _pExpression(pExpression)
{
}

DoWhileStatement::~DoWhileStatement()
{
	_Destroy(_pExpression);
}

DoWhileStatement* DoWhileStatement::Clone(Module* pModule) const
{
	return WithRange(
	    pModule->CreateDoWhileStatement(CloneNode(GetStatement(), pModule), CloneNode(_pExpression, pModule)),
	    this);
}

bool DoWhileStatement::Equals(const Statement* pOther) const
{
	const DoWhileStatement* p = SameClass<DoWhileStatement>(pOther);
	return p && EqualNodes(GetStatement(), p->GetStatement()) && EqualNodes(_pExpression, p->_pExpression);
}

ForStatement::ForStatement(Module* pModule, Expression* pIteration)
    : IterationStatement(pModule), _pIteration(pIteration)
{
}

ForStatement::~ForStatement()
{
	_Destroy(_pInitialization);
	_Destroy(_pCondition);
	_Destroy(_pIteration);
}

ForStatement* ForStatement::Clone(Module* pModule) const
{
	ForStatement* pClone = pModule->CreateForStatement(CloneNode(_pIteration, pModule));
	pClone->SetInitialization(CloneNode(_pInitialization, pModule));
	pClone->SetCondition(CloneNode(_pCondition, pModule));
	pClone->SetStatement(CloneNode(GetStatement(), pModule));
	return WithRange(pClone, this);
}

bool ForStatement::Equals(const Statement* pOther) const
{
	const ForStatement* p = SameClass<ForStatement>(pOther);
	return p && EqualNodes(_pInitialization, p->_pInitialization) &&
	       EqualNodes(_pCondition, p->_pCondition) && EqualNodes(_pIteration, p->_pIteration) &&
	       EqualNodes(GetStatement(), p->GetStatement());
}

JumpStatement::JumpStatement(Module* pModule, JumpType eType, Expression* pExpression)
    : Statement(pModule), _eType(eType), _pExpression(pExpression)
{
}

JumpStatement::~JumpStatement()
{
	_Destroy(_pExpression);
}

JumpStatement* JumpStatement::Clone(Module* pModule) const
{
	return WithRange(pModule->CreateJumpStatement(_eType, CloneNode(_pExpression, pModule)), this);
}

bool JumpStatement::Equals(const Statement* pOther) const
{
	const JumpStatement* p = SameClass<JumpStatement>(pOther);
	return p && _eType == p->_eType && EqualNodes(_pExpression, p->_pExpression);
}

} // namespace Tarsel::Effects
