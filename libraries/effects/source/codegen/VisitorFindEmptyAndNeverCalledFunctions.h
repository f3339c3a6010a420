#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "codegen/FunctionNameTable.h"
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

	// Reads the calls from the module's list of calls and those of the modules it borrowed, not by walking
	// the tree: on a large module the walk alone would be most of the pass, all of it memory traffic.
	bool Visit(Module* pModule) override;
	// Takes back every mark the last Visit made, while its module lives. A graph's module borrows its
	// shaders' code, so the marks sit on nodes that other graphs print too; the graph clears them once its
	// program is printed.
	void ClearMarks();

private:
	struct Record
	{
		FunctionPrototype* pPrototype = nullptr;
		FunctionDefinition* pDefinition = nullptr;
	};
	// Kept apart from the records: the calls touch them in no useful order, and at a byte each they stay
	// in the cache.
	enum Mark : uint8_t
	{
		kMark_Keep = 1,
		kMark_Empty = 2,
	};

	void _CollectEntryPoints();
	bool _OnRootMethod(FunctionPrototype* pPrototype);
	void _CollectPrototypes();
	void _MarkEmpty();
	void _MarkCalls(const Module* pModule);
	void _CheckCallsListed() const;
	void _MarkNeverCalled();
	bool _IsEntryPoint(std::string_view sName) const;

	Module* _pModule;
	IGraph* _pGraph;
	FunctionNameTable _names;
	std::vector<Record> _vRecords; // by the name's number
	std::vector<uint8_t> _vMarks;  // by the name's number
	std::vector<uint32_t> _vRecordsMarked;
	std::vector<FunctionCall*> _vCallsMarked;
	std::set<std::string, std::less<>> _setEntryPoints;
};

} // namespace Tarsel::Effects
