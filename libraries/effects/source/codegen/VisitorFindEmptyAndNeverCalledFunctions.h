#pragma once

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

#include "syntax/Syntax.h"

namespace Tarsel::Effects
{

class IGraph;

// Marks the functions of a graph's module that the program can do without: empty ones, whose calls go too,
// and ones nothing calls. Nothing is deleted; the printer writes each marked item as a comment. One sweep,
// not a fixed point: a function called only from a marked function stays.
class VisitorFindEmptyAndNeverCalledFunctions : public Visitor
{
public:
	// Without a graph the module has no entry points, which only benchmarks and tests want.
	explicit VisitorFindEmptyAndNeverCalledFunctions(IGraph* pGraph);

	using Visitor::Visit;

	// False only when the walk over the calls fails; no never-called mark is made then.
	bool Visit(Module* pModule) override;
	bool Visit(FunctionCall* pNode, TIParentSyntax<Expression>* pParent) override;

private:
	struct Record
	{
		FunctionPrototype* pPrototype = nullptr;
		FunctionDefinition* pDefinition = nullptr;
		bool bKeep = false;
		std::string sSignature;
	};

	void _CollectEntryPoints();
	bool _OnRootMethod(FunctionPrototype* pPrototype);
	void _CollectPrototypes();
	void _MarkEmpty();
	void _MarkNeverCalled();
	bool _IsEntryPoint(std::string_view sName) const;
	Record* _Find(const String* pName);

	Module* _pModule;
	IGraph* _pGraph;
	// The keys are copies, so that a lookup compares against the record's own memory, not a node elsewhere
	// in the module.
	// Keyed by views of the names in the module, which outlives the pass; the marks do not depend on the
	// order of the records, so a hash map keeps the pass linear.
	std::unordered_map<std::string_view, Record> _mRecords;
	std::set<std::string, std::less<>> _setEntryPoints;
};

} // namespace Tarsel::Effects
