#include "codegen/VisitorFindEmptyAndNeverCalledFunctions.h"

#include "effects/IShader.h"
#include "graph/IGraph.h"
#include "graph/IReferenceShader.h"
#include "syntax/Module.h"
#include "syntax/VisitorDelegate.h"

#include "core/Assert.h"

#include <algorithm>
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

// Runs step over every node of a list, fetching the node kFar places ahead, what the node kNear places
// ahead points to (near) and what that points to kNearest places ahead (nearest). A large module's nodes lie
// far apart, and their misses then overlap instead of queueing one behind the other.
constexpr size_t kFar = 48, kNear = 24, kNearest = 12;

template <class T, class Near, class Nearest, class Step>
void FetchingAhead(const std::vector<T*>& vNodes, Near near, Nearest nearest, Step step)
{
	const size_t n = vNodes.size();
	for (size_t i = 0; i < n; ++i)
	{
		if (i + kFar < n)
			Fetch(vNodes[i + kFar]);
		if (i + kNear < n)
			near(vNodes[i + kNear]);
		if (i + kNearest < n)
			nearest(vNodes[i + kNearest]);
		step(vNodes[i], i);
	}
}

void FetchName(const FunctionPrototype* pPrototype)
{
	Fetch(pPrototype->GetName());
}

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
	_ReserveForNames();
	_CollectEntryPoints();
	_CollectPrototypes();
	_MarkEmpty();
	_vCalls.clear();
	_namesQueried.Clear();
	_CollectCalls(pModule);
	for (const Module* pBorrowed : pModule->GetBorrowedModules())
		_CollectCalls(pBorrowed);
	_CheckCallsListed();
	_MarkCalls();
	_MarkNeverCalled();
	return true;
}

// On a large module, growing the lists by doubling would copy them and write to memory twice.
void VisitorFindEmptyAndNeverCalledFunctions::_ReserveForNames()
{
	size_t nCalls = _pModule->GetFunctionCalls().size();
	for (const Module* pBorrowed : _pModule->GetBorrowedModules())
		nCalls += pBorrowed->GetFunctionCalls().size();
	_vCalls.reserve(nCalls);
	const size_t nNames =
	    std::max({nCalls, _pModule->GetCountFunctionDeclarations(), _pModule->GetCountFunctionDefinitions()});
	constexpr size_t kBytesPerName = 24;
	_namesQueried.Reserve(nNames, nNames * kBytesPerName);
	_vNumbers.reserve(nNames);
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
	std::vector<FunctionPrototype*> vPrototypes;
	vPrototypes.reserve(vDeclarations.size());
	_namesQueried.Clear();
	FetchingAhead(
	    vDeclarations, FetchName, [](const FunctionPrototype*) {},
	    [&](FunctionPrototype* pPrototype, size_t)
	    {
		    if (pPrototype->GetName() == nullptr)
			    return;
		    vPrototypes.push_back(pPrototype);
		    _namesQueried.Add(pPrototype->GetName()->GetString());
	    });
	_names.Reset(vPrototypes.size());
	_names.AddAll(_namesQueried, _vNumbers);
	_vRecords.assign(_names.Size(), Record());
	_vMarks.assign(_names.Size(), 0);
	for (size_t i = 0; i < vPrototypes.size(); ++i)
	{
		Record& stored = _vRecords[_vNumbers[i]];
		// Once overloads are seen the name stays kept: one overload's emptiness says nothing of the others.
		// Parameters are read only for names declared twice, which few are.
		if (stored.pPrototype && Signature(stored.pPrototype) != Signature(vPrototypes[i]))
			_vMarks[_vNumbers[i]] |= kMark_Keep;
		stored.pPrototype = vPrototypes[i];
	}
}

void VisitorFindEmptyAndNeverCalledFunctions::_MarkEmpty()
{
	const std::vector<FunctionDefinition*>& vDefinitions = _pModule->GetFunctionDefinitions();
	// One read of each definition: a large module's nodes are not in the cache a second time.
	std::vector<bool> vCouldBeEmpty(vDefinitions.size());
	_namesQueried.Clear();
	const auto near = [](const FunctionDefinition* pDefinition)
	{
		Fetch(pDefinition->GetFunctionPrototype());
		Fetch(pDefinition->GetCompoundStatement());
	};
	const auto nearest = [](const FunctionDefinition* pDefinition)
	{ FetchName(pDefinition->GetFunctionPrototype()); };
	FetchingAhead(vDefinitions, near, nearest,
	              [&](const FunctionDefinition* pDefinition, size_t i)
	              {
		              const FunctionPrototype* pPrototype = pDefinition->GetFunctionPrototype();
		              const CompoundStatement* pBody = pDefinition->GetCompoundStatement();
		              const String* pName = pPrototype->GetName();
		              _namesQueried.Add(pName ? std::string_view(pName->GetString()) : std::string_view());
		              vCouldBeEmpty[i] = pBody && pBody->GetCountStatements() == 0;
	              });
	_names.FindAll(_namesQueried, _vNumbers);
	for (size_t i = 0; i < vDefinitions.size(); ++i)
	{
		const uint32_t iNumber = _vNumbers[i];
		if (iNumber == FunctionNameTable::kAbsent)
			continue;
		Record& record = _vRecords[iNumber];
		record.pDefinition = vDefinitions[i];
		// A call of a function that returns a value sits inside an expression, where a comment cannot stand
		// in for it, so only void functions count as empty. Read here, for the few empty bodies only.
		if (!vCouldBeEmpty[i] || !ReturnsVoid(record.pDefinition->GetFunctionPrototype()) ||
		    (_vMarks[iNumber] & kMark_Keep) || _IsEntryPoint(_names.Name(iNumber)))
			continue;
		_vMarks[iNumber] |= kMark_Empty;
		SetMarks(record.pPrototype, record.pDefinition, kOptimization_Empty);
		_vRecordsMarked.push_back(iNumber);
	}
}

// A call made by the module but not in its tree only keeps its function: the error is on the safe side.
void VisitorFindEmptyAndNeverCalledFunctions::_CollectCalls(const Module* pModule)
{
	FetchingAhead(
	    pModule->GetFunctionCalls(), [](const FunctionCall* pCall) { Fetch(pCall->GetName()); },
	    [](const FunctionCall*) {},
	    [&](FunctionCall* pCall, size_t)
	    {
		    if (pCall->GetName() == nullptr)
			    return;
		    _vCalls.push_back(pCall);
		    _namesQueried.Add(pCall->GetName()->GetString());
	    });
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
	} check{{_vCalls.begin(), _vCalls.end()}};
	TVisitorSyntaxDelegate<FunctionCall, TIParentSyntax<Expression>> walk(
	    MakeDelegate(&check, &Check::OnCall));
	_pModule->AcceptVisitor(&walk);
#endif
}

void VisitorFindEmptyAndNeverCalledFunctions::_MarkCalls()
{
	_names.FindAll(_namesQueried, _vNumbers);
	for (size_t i = 0; i < _vCalls.size(); ++i)
	{
		const uint32_t iNumber = _vNumbers[i];
		if (iNumber == FunctionNameTable::kAbsent)
			continue;
		if (_vMarks[iNumber] & kMark_Empty)
		{
			_vCalls[i]->SetOptimization(kOptimization_Empty);
			_vCallsMarked.push_back(_vCalls[i]);
		}
		else
			_vMarks[iNumber] |= kMark_Keep;
	}
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
