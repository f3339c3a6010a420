#pragma once

#include "QlslDiagnostics.h"
#include "QlslLexer.h"
#include "QlslUnit.h"

#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Tarsel
{
namespace Qlsl
{

// Every name of one text: aggregates, globals, functions, the locals of nested scopes and the built-ins
// used so far. Declaring records the symbol in the tree and, for globals and functions, in the unit.
class Scopes
{
public:
	Scopes(QLUnit& unit, Diagnostics& diagnostics, int type);

	// Struct and block names may be used before their definition: the printer sorts them by name.
	void CollectAggregateNames(const std::vector<Token>& tokens);
	Aggregate* FindAggregate(std::string_view name) const;
	// Reports a second definition or a clash with a variable or function; answers whether it was fine.
	bool DefineAggregate(Aggregate* aggregate, const Token& name, std::vector<Member>& members);

	Symbol* DeclareGlobal(const Token& name, const Type& type, QLStorage storage, bool isConst,
	                      const Expr* initializer);
	Symbol* DeclareLocal(const Token& name, const Type& type, SymbolKind kind);
	// A new overload, or the earlier declaration of the same one (checked against this one).
	Function* DeclareFunction(const Token& name, const Type& returnType, std::vector<Symbol*>& parameters,
	                          bool defined);
	// Overloads of the name declared so far; null when none.
	const std::vector<Function*>* FindFunctions(std::string_view name) const;
	// A local, global or built-in variable; reports and answers null when there is none.
	const Symbol* Lookup(const Token& name);

	void Push() { _vScopeMarks.push_back(_vLocals.size()); }
	void Pop()
	{
		_vLocals.resize(_vScopeMarks.back());
		_vScopeMarks.pop_back();
	}

	// The function whose body is being compiled, null outside bodies.
	void SetCurrent(Function* function)
	{
		_pCurrent = function;
		_setCallees.clear();
	}
	Function* GetCurrent() const { return _pCurrent; }
	// Calls of functions of the text made so far, one per overload.
	void RecordCall(const Function& function, int line);

private:
	bool _IsGlobalName(std::string_view name) const;
	static bool _Contains(const std::vector<Member>& members, const Aggregate* aggregate);
	size_t _ScopeStart() const { return _vScopeMarks.empty() ? 0 : _vScopeMarks.back(); }

	QLUnit& _rUnit;
	Tree& _rTree;
	Diagnostics& _rDiagnostics;
	int _iType;
	Function* _pCurrent = nullptr;
	std::unordered_set<const Function*> _setCallees; // of the current function
	std::unordered_map<std::string_view, Aggregate*> _mAggregates;
	std::unordered_map<std::string_view, Symbol*> _mGlobals;
	std::unordered_map<std::string_view, std::vector<Function*>> _mFunctions;
	std::unordered_map<std::string_view, Symbol*> _mBuiltins;
	std::unordered_map<const Function*, size_t> _mCalls; // -> index into QLUnit::calls
	std::vector<Symbol*> _vLocals;
	std::vector<size_t> _vScopeMarks;
};

} // namespace Qlsl
} // namespace Tarsel
