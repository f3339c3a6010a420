#include "codegen/VisitorFindEmptyAndNeverCalledFunctions.h"

#include "effects/IShader.h"
#include "graph/IGraph.h"
#include "graph/IReferenceShader.h"
#include "syntax/Module.h"

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

void MarkUnlessMarked(FunctionPrototype* pPrototype, FunctionDefinition* pDefinition, Optimization eMark)
{
	if (pDefinition && pDefinition->GetOptimization() == kOptimization_Kept)
		pDefinition->SetOptimization(eMark);
	if (pPrototype->GetOptimization() == kOptimization_Kept)
		pPrototype->SetOptimization(eMark);
}

} // namespace

VisitorFindEmptyAndNeverCalledFunctions::VisitorFindEmptyAndNeverCalledFunctions(IGraph* pGraph)
    : _pModule(nullptr), _pGraph(pGraph)
{
}

bool VisitorFindEmptyAndNeverCalledFunctions::Visit(Module* pModule)
{
	_pModule = pModule;
	_mRecords.clear();
	_setEntryPoints.clear();
	_CollectEntryPoints();
	_CollectPrototypes();
	_MarkEmpty();
	if (!Visitor::Visit(pModule))
		return false;
	_MarkNeverCalled();
	return true;
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
	_mRecords.reserve(_pModule->GetFunctionDeclarations().size());
	for (FunctionPrototype* pPrototype : _pModule->GetFunctionDeclarations())
	{
		if (pPrototype->GetName() == nullptr)
			continue;
		Record record;
		record.pPrototype = pPrototype;
		record.sSignature = Signature(pPrototype);
		auto [it, bInserted] = _mRecords.try_emplace(pPrototype->GetName()->GetString());
		// Once overloads are seen the name stays kept: one overload's emptiness says nothing of the others.
		if (!bInserted)
			record.bKeep = it->second.bKeep || it->second.sSignature != record.sSignature;
		it->second = std::move(record);
	}
}

void VisitorFindEmptyAndNeverCalledFunctions::_MarkEmpty()
{
	for (FunctionDefinition* pDefinition : _pModule->GetFunctionDefinitions())
		if (Record* pRecord = _Find(pDefinition->GetFunctionPrototype()->GetName()))
			pRecord->pDefinition = pDefinition;
	for (FunctionDefinition* pDefinition : _pModule->GetFunctionDefinitions())
	{
		const CompoundStatement* pBody = pDefinition->GetCompoundStatement();
		const String* pName = pDefinition->GetFunctionPrototype()->GetName();
		// A call of a function that returns a value sits inside an expression, where a comment cannot
		// stand in for it, so only void functions count as empty.
		if (pBody == nullptr || pBody->GetCountStatements() != 0 || pName == nullptr ||
		    !ReturnsVoid(pDefinition->GetFunctionPrototype()) || _IsEntryPoint(pName->GetString()))
			continue;
		Record* pRecord = _Find(pName);
		if (pRecord == nullptr || pRecord->bKeep)
			continue;
		pRecord->pDefinition = pDefinition;
		pRecord->pPrototype->SetOptimization(kOptimization_Empty);
		pDefinition->SetOptimization(kOptimization_Empty);
	}
}

bool VisitorFindEmptyAndNeverCalledFunctions::Visit(FunctionCall* pNode, TIParentSyntax<Expression>* pParent)
{
	if (Record* pRecord = _Find(pNode->GetName()))
	{
		if (pRecord->pPrototype->GetOptimization() == kOptimization_Empty)
			pNode->SetOptimization(kOptimization_Empty);
		else
			pRecord->bKeep = true;
	}
	return Visitor::Visit(pNode, pParent);
}

void VisitorFindEmptyAndNeverCalledFunctions::_MarkNeverCalled()
{
	for (auto& [sName, record] : _mRecords)
		if (!record.bKeep && !_IsEntryPoint(sName))
			MarkUnlessMarked(record.pPrototype, record.pDefinition, kOptimization_NeverCalled);
}

bool VisitorFindEmptyAndNeverCalledFunctions::_IsEntryPoint(std::string_view sName) const
{
	return _setEntryPoints.find(sName) != _setEntryPoints.end();
}

VisitorFindEmptyAndNeverCalledFunctions::Record*
VisitorFindEmptyAndNeverCalledFunctions::_Find(const String* pName)
{
	if (pName == nullptr)
		return nullptr;
	auto found = _mRecords.find(pName->GetString());
	return found == _mRecords.end() ? nullptr : &found->second;
}

} // namespace Tarsel::Effects
