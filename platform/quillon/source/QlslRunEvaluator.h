#pragma once

#include "QlslRunBuiltins.h"
#include "QlslTree.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Tarsel
{
namespace QlslRun
{

// A run stops with one of these: a runaway loop, an index out of range, a function without a body.
struct RunError
{
	int line;
	std::string message;
};

// Where a value lives: whole (count slots from base) or as the components of a swizzle.
struct Place
{
	Slot* base = nullptr;
	int count = 0;
	int extent = 0; // slots reachable from base, which bounds block arrays declared with size 1
	bool swizzled = false;
	uint8_t map[4] = {0, 0, 0, 0};
};

Shape ShapeOf(const Qlsl::Type& type);

// Executes the typed trees of one stage. Every symbol has one storage for the whole run, which is
// exact because the linker refuses recursion; globals of one name share it across the stage's texts.
class Evaluator
{
public:
	Evaluator(Machine& machine, std::vector<const Qlsl::Tree*> trees);

	// Storage of a global (or built-in) by name, created with the type on first use.
	Slot* Global(std::string_view name, const Qlsl::Type& type, int extraSlots = 0);
	Slot* FindGlobal(std::string_view name) const;
	int Size(const Qlsl::Type& type);
	// The base of every slot of a type, in order.
	void Bases(const Qlsl::Type& type, std::vector<Base>& bases);

	// Runs the global initializers of every tree in order.
	void InitializeGlobals();
	// Calls a parameterless void function; false when the stage does not define it.
	bool CallEntry(std::string_view name);
	uint64_t Steps() const { return _nSteps; }

private:
	enum Flow
	{
		kNext,
		kBreak,
		kContinue,
		kReturn
	};

	Slot* _Storage(const Qlsl::Symbol* symbol);
	const Qlsl::Function* _Definition(const Qlsl::Function* declared);
	const std::vector<int>& _Offsets(const Qlsl::Aggregate* aggregate);

	void _Eval(const Qlsl::Expr* e, Slot* out);
	void _EvalAs(const Qlsl::Expr* e, const Qlsl::Type& target, Slot* out);
	Value _Value(const Qlsl::Expr* e);
	bool _Bool(const Qlsl::Expr* e);
	int32_t _Int(const Qlsl::Expr* e);
	void _Locate(const Qlsl::Expr* e, Place& place, std::vector<Slot>& holder);
	void _Index(const Qlsl::Expr* e, Place& place);
	void _Call(const Qlsl::Expr* e, Slot* out);
	void _Builtin(const Qlsl::Expr* e, Slot* out);
	void _Binary(const Qlsl::Expr* e, Slot* out);
	void _Assign(const Qlsl::Expr* e, Slot* out);
	void _Step(const Qlsl::Expr* e, Slot* out); // ++ and --, prefix and postfix
	bool _EqualSlots(const Qlsl::Type& type, const Slot* a, const Slot* b);

	Flow _Exec(const Qlsl::Stmt* s);
	Flow _Loop(const Qlsl::Stmt* s);
	void _Count(int line);

	Machine& _rMachine;
	std::vector<const Qlsl::Tree*> _vTrees;
	std::vector<std::unique_ptr<Slot[]>> _vStorage;
	std::unordered_map<const Qlsl::Symbol*, Slot*> _mSymbols;
	std::unordered_map<std::string_view, std::pair<Slot*, int>> _mGlobals; // storage and slot count
	std::unordered_map<std::string, const Qlsl::Function*> _mDefinitions;
	std::unordered_map<const Qlsl::Function*, const Qlsl::Function*> _mResolved;
	std::unordered_map<const Qlsl::Aggregate*, std::vector<int>> _mOffsets; // members, then the total
	std::unordered_map<const Qlsl::BuiltinOverload*, BuiltinCode> _mBuiltins;
	const Qlsl::Function* _pFunction = nullptr;
	Slot* _pReturn = nullptr;
	uint64_t _nSteps = 0;
};

} // namespace QlslRun
} // namespace Tarsel
