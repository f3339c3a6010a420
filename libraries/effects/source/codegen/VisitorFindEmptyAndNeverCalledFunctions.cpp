#include "codegen/VisitorFindEmptyAndNeverCalledFunctions.h"

#include "effects/IShader.h"
#include "graph/IGraph.h"
#include "graph/IReferenceShader.h"
#include "syntax/Module.h"
#include "syntax/VisitorDelegate.h"

#include "core/Assert.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace Tarsel::Effects
{

namespace
{

std::string Signature(const FunctionPrototype* pPrototype)
{
	std::string sSignature;
	for (const FunctionParameter* pParameter : pPrototype->GetParameters())
		sSignature += TypeSpecifierToString(pParameter->GetType()->GetTypeSpecifier());
	return sSignature;
}

bool ReturnsVoid(const FunctionPrototype* pPrototype)
{
	const Type* pType = pPrototype->GetReturnType();
	return pType == nullptr || pType->GetTypeSpecifier() == kType_Void;
}

void SetMarks(FunctionPrototype* pPrototype, FunctionDefinition* pDefinition, Optimization eMark)
{
	if (pDefinition)
		pDefinition->SetOptimization(eMark);
	pPrototype->SetOptimization(eMark);
}

void Fetch(const void* p)
{
	if (p)
		__builtin_prefetch(p);
}

const String* NameOf(const FunctionPrototype* pPrototype)
{
	return pPrototype->GetName();
}

const String* NameOf(const FunctionDefinition* pDefinition)
{
	return pDefinition->GetFunctionPrototype()->GetName();
}

const String* NameOf(const FunctionCall* pCall)
{
	return pCall->GetName();
}

// A node's name, hashed some steps before the step that looks it up.
struct Named
{
	std::string_view sName;
	uint32_t iHash = 0;
	bool bNamed = false;
};

// Runs step(node, name) over every node of a list as a pipeline. The node is fetched kFar places ahead of
// its step, what it points to (near) kNear places ahead, its name kName places ahead, and the name's text
// and what its children point to (nearer) kText places ahead; kHash places ahead the name is hashed and its
// table slot fetched. Each stage is far enough behind the one before for a miss to arrive. A large module's
// nodes lie far apart, and their misses then overlap instead of queueing one behind the other; and each node
// is read while it is still in the cache, so that nothing of it is copied aside to be read again later.
constexpr size_t kFar = 64, kNear = 48, kName = 32, kText = 16, kHash = 8, kRing = 16;
static_assert(kRing > kHash, "a name hashed ahead must not overwrite one still to be stepped");

template <class T, class Near, class Nearer, class Step>
void Streamed(const std::vector<T*>& vNodes, const FunctionNameTable& names, Near near, Nearer nearer,
              Step step)
{
	const size_t n = vNodes.size();
	std::array<Named, kRing> ring;
	const auto hash = [&](size_t j)
	{
		const String* pName = NameOf(vNodes[j]);
		Named& named = ring[j % kRing];
		named.bNamed = pName != nullptr;
		named.sName = pName ? std::string_view(pName->GetString()) : std::string_view();
		named.iHash = FunctionNameTable::Hash(named.sName);
		names.Prefetch(named.iHash);
	};
	for (size_t j = 0; j < std::min(n, kHash); ++j)
		hash(j);
	for (size_t i = 0; i < n; ++i)
	{
		if (i + kFar < n)
			Fetch(vNodes[i + kFar]);
		if (i + kNear < n)
			near(vNodes[i + kNear]);
		if (i + kName < n)
			Fetch(NameOf(vNodes[i + kName]));
		if (i + kText < n)
		{
			nearer(vNodes[i + kText]);
			if (const String* pName = NameOf(vNodes[i + kText]))
				Fetch(pName->c_str());
		}
		if (i + kHash < n)
			hash(i + kHash);
		step(vNodes[i], ring[i % kRing]);
	}
}

void Nothing(const void*) {}

} // namespace

VisitorFindEmptyAndNeverCalledFunctions::VisitorFindEmptyAndNeverCalledFunctions(IGraph* pGraph)
    : _pModule(nullptr), _pGraph(pGraph)
{
}

bool VisitorFindEmptyAndNeverCalledFunctions::Visit(Module* pModule)
{
	_pModule = pModule;
	_vRecordsMarked.clear();
	_vCallsMarked.clear();
	_setEntryPoints.clear();
	_CollectEntryPoints();
	_CollectPrototypes();
	_MarkEmpty();
	_MarkCalls(pModule);
	for (const Module* pBorrowed : pModule->GetBorrowedModules())
		_MarkCalls(pBorrowed);
	_CheckCallsListed();
	_MarkNeverCalled();
	return true;
}

void VisitorFindEmptyAndNeverCalledFunctions::ClearMarks()
{
	for (uint32_t iNumber : _vRecordsMarked)
		SetMarks(_vRecords[iNumber].pPrototype, _vRecords[iNumber].pDefinition, kOptimization_Kept);
	for (FunctionCall* pCall : _vCallsMarked)
		pCall->SetOptimization(kOptimization_Kept);
	_vRecordsMarked.clear();
	_vCallsMarked.clear();
}

void VisitorFindEmptyAndNeverCalledFunctions::_CollectEntryPoints()
{
	if (_pGraph == nullptr)
		return;
	if (IReferenceShader* pRoot = _pGraph->GetReferenceShader())
		for (const char* pName : {"Init", "GetRayCount", "Shade", "Render"})
			if (pRoot->HasMethod(pName))
				_setEntryPoints.insert(pRoot->GetMethodMangled(pName));
	// Other graphs may call any method of this root through their declarations of it, which this module
	// cannot see.
	if (IShader* pShader = _pGraph->GetShader())
	{
		IShader::VisitorMethod visitor =
		    MakeDelegate(this, &VisitorFindEmptyAndNeverCalledFunctions::_OnRootMethod);
		pShader->VisitMethods(visitor);
	}
	if (_pGraph->HasConstructor())
		_setEntryPoints.insert(_pGraph->GetConstructor());
	if (_pGraph->HasConstructorStatic())
		_setEntryPoints.insert(_pGraph->GetConstructorStatic());
}

bool VisitorFindEmptyAndNeverCalledFunctions::_OnRootMethod(FunctionPrototype* pPrototype)
{
	if (pPrototype->GetName())
		_setEntryPoints.insert(pPrototype->GetName()->GetString());
	return true;
}

void VisitorFindEmptyAndNeverCalledFunctions::_CollectPrototypes()
{
	const std::vector<FunctionPrototype*>& vDeclarations = _pModule->GetFunctionDeclarations();
	_names.Reset(vDeclarations.size());
	_vRecords.clear();
	_vRecords.reserve(vDeclarations.size());
	_vMarks.clear();
	_vMarks.reserve(vDeclarations.size());
	Streamed(vDeclarations, _names, Nothing, Nothing,
	         [&](FunctionPrototype* pPrototype, const Named& named)
	         {
		         if (!named.bNamed)
			         return;
		         const uint32_t iNumber = _names.Add(named.sName, named.iHash);
		         if (iNumber == _vRecords.size())
		         {
			         _vRecords.push_back(Record{pPrototype, nullptr});
			         _vMarks.push_back(0);
			         return;
		         }
		         // Once overloads are seen the name stays kept: one overload's emptiness says nothing of the
		         // others. Parameters are read only for names declared twice, which few are.
		         Record& stored = _vRecords[iNumber];
		         if (Signature(stored.pPrototype) != Signature(pPrototype))
			         _vMarks[iNumber] |= kMark_Keep;
		         stored.pPrototype = pPrototype;
	         });
}

void VisitorFindEmptyAndNeverCalledFunctions::_MarkEmpty()
{
	const auto near = [](const FunctionDefinition* pDefinition)
	{
		Fetch(pDefinition->GetFunctionPrototype());
		Fetch(pDefinition->GetCompoundStatement());
	};
	// The return type is read only for empty bodies, which few are.
	const auto nearer = [](const FunctionDefinition* pDefinition)
	{
		const CompoundStatement* pBody = pDefinition->GetCompoundStatement();
		if (pBody && pBody->GetCountStatements() == 0)
			Fetch(pDefinition->GetFunctionPrototype()->GetReturnType());
	};
	Streamed(_pModule->GetFunctionDefinitions(), _names, near, nearer,
	         [&](FunctionDefinition* pDefinition, const Named& named)
	         {
		         const uint32_t iNumber =
		             named.bNamed ? _names.Find(named.sName, named.iHash) : FunctionNameTable::kAbsent;
		         if (iNumber == FunctionNameTable::kAbsent)
			         return;
		         Record& record = _vRecords[iNumber];
		         record.pDefinition = pDefinition;
		         // A call of a function that returns a value sits inside an expression, where a comment
		         // cannot stand in for it, so only void functions count as empty.
		         const CompoundStatement* pBody = pDefinition->GetCompoundStatement();
		         if (!pBody || pBody->GetCountStatements() != 0 ||
		             !ReturnsVoid(pDefinition->GetFunctionPrototype()) || (_vMarks[iNumber] & kMark_Keep) ||
		             _IsEntryPoint(named.sName))
			         return;
		         _vMarks[iNumber] |= kMark_Empty;
		         SetMarks(record.pPrototype, pDefinition, kOptimization_Empty);
		         _vRecordsMarked.push_back(iNumber);
	         });
}

// A call made by the module but not in its tree only keeps its function: the error is on the safe side.
void VisitorFindEmptyAndNeverCalledFunctions::_MarkCalls(const Module* pModule)
{
	const auto step = [&](FunctionCall* pCall, const Named& named)
	{
		const uint32_t iNumber =
		    named.bNamed ? _names.Find(named.sName, named.iHash) : FunctionNameTable::kAbsent;
		if (iNumber == FunctionNameTable::kAbsent)
			return;
		if (_vMarks[iNumber] & kMark_Empty)
		{
			pCall->SetOptimization(kOptimization_Empty);
			_vCallsMarked.push_back(pCall);
		}
		else
			_vMarks[iNumber] |= kMark_Keep;
	};
	Streamed(pModule->GetFunctionCalls(), _names, Nothing, Nothing, step);
}

// A call in the tree that no list holds would let its function go while the program still calls it. Code
// builds its nodes through the module it adds them to; debug builds check that no call came from elsewhere
// and stop at one that did.
void VisitorFindEmptyAndNeverCalledFunctions::_CheckCallsListed() const
{
#ifndef NDEBUG
	struct Check
	{
		std::set<const FunctionCall*> setListed;
		bool OnCall(FunctionCall* pCall, TIParentSyntax<Expression>*)
		{
			if (pCall->GetName() == nullptr || setListed.count(pCall) != 0)
				return true;
			TARSEL_ASSERT_MSG(false, "call outside its module's list");
			std::abort();
		}
	} check;
	check.setListed.insert(_pModule->GetFunctionCalls().begin(), _pModule->GetFunctionCalls().end());
	for (const Module* pBorrowed : _pModule->GetBorrowedModules())
		check.setListed.insert(pBorrowed->GetFunctionCalls().begin(), pBorrowed->GetFunctionCalls().end());
	TVisitorSyntaxDelegate<FunctionCall, TIParentSyntax<Expression>> walk(
	    MakeDelegate(&check, &Check::OnCall));
	_pModule->AcceptVisitor(&walk);
#endif
}

void VisitorFindEmptyAndNeverCalledFunctions::_MarkNeverCalled()
{
	for (uint32_t i = 0; i < _vRecords.size(); ++i)
		if (!(_vMarks[i] & (kMark_Keep | kMark_Empty)) && !_IsEntryPoint(_names.Name(i)))
		{
			SetMarks(_vRecords[i].pPrototype, _vRecords[i].pDefinition, kOptimization_NeverCalled);
			_vRecordsMarked.push_back(i);
		}
}

bool VisitorFindEmptyAndNeverCalledFunctions::_IsEntryPoint(std::string_view sName) const
{
	return _setEntryPoints.find(sName) != _setEntryPoints.end();
}

} // namespace Tarsel::Effects
