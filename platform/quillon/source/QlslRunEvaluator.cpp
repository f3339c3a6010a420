#include "QlslRunEvaluator.h"

#include "QlslBuiltins.h"

#include <cstring>

namespace Tarsel
{
namespace QlslRun
{

using namespace Qlsl;

namespace
{

// Arithmetic operators of the tree in the value model's terms.
Op ToOp(Operator op)
{
	switch (op)
	{
	case kOp_Add:
		return kAdd;
	case kOp_Sub:
		return kSub;
	case kOp_Mul:
		return kMul;
	case kOp_Div:
		return kDiv;
	case kOp_Mod:
		return kMod;
	case kOp_Shl:
		return kShl;
	case kOp_Shr:
		return kShr;
	case kOp_BitAnd:
		return kBitAnd;
	case kOp_BitOr:
		return kBitOr;
	case kOp_BitXor:
		return kBitXor;
	case kOp_Xor:
		return kLogicalXor;
	case kOp_Less:
		return kLess;
	case kOp_Greater:
		return kGreater;
	case kOp_LessEqual:
		return kLessEqual;
	case kOp_GreaterEqual:
		return kGreaterEqual;
	case kOp_Equal:
		return kEqual;
	default:
		return kNotEqual;
	}
}

UnaryOp ToUnary(Operator op)
{
	switch (op)
	{
	case kOp_Negate:
		return kNegate;
	case kOp_Not:
		return kNot;
	case kOp_Complement:
		return kComplement;
	default:
		return kPlus;
	}
}

// A constant folded by the compiler, in the slot of its base.
Slot Folded(double value, BaseType base)
{
	Slot slot;
	if (base == kBase_Float)
		slot.f = float(value);
	else if (base == kBase_Bool)
		slot.i = value != 0.0;
	else
		slot.i = int32_t(uint32_t(int64_t(value)));
	return slot;
}

void Load(const Place& place, Slot* out)
{
	if (!place.swizzled)
	{
		std::memcpy(out, place.base, sizeof(Slot) * size_t(place.count));
		return;
	}
	for (int i = 0; i < place.count; ++i)
		out[i] = place.base[place.map[i]];
}

void Store(const Place& place, const Slot* in)
{
	if (!place.swizzled)
	{
		std::memmove(place.base, in, sizeof(Slot) * size_t(place.count));
		return;
	}
	for (int i = 0; i < place.count; ++i)
		place.base[place.map[i]] = in[i];
}

// Slots for a call's arguments: on the stack unless a call passes large arrays or structs.
class Scratch
{
public:
	explicit Scratch(int size)
	{
		if (size > kInline)
		{
			_vHeap.resize(size_t(size));
			_pData = _vHeap.data();
		}
	}
	Slot* Data() { return _pData; }

private:
	static const int kInline = 64;
	Slot _aInline[kInline];
	std::vector<Slot> _vHeap;
	Slot* _pData = _aInline;
};

} // namespace

Shape ShapeOf(const Type& type)
{
	Base base = type.base == kBase_Float ? kFloat : (type.base == kBase_Bool ? kBool : kInt);
	return Shape{base, type.rows, type.columns};
}

Evaluator::Evaluator(Machine& machine, std::vector<const Tree*> trees)
    : _rMachine(machine), _vTrees(std::move(trees))
{
	// Earlier texts win, as in the linker: pulled-in shaders only fill gaps.
	for (const Tree* tree : _vTrees)
		for (const Function& function : tree->functions)
			if (function.defined && function.body)
				_mDefinitions.emplace(std::string(function.name) + "(" + function.signature + ")", &function);
}

const std::vector<int>& Evaluator::_Offsets(const Aggregate* aggregate)
{
	auto found = _mOffsets.find(aggregate);
	if (found != _mOffsets.end())
		return found->second;
	std::vector<int> offsets;
	int offset = 0;
	for (const Member& member : aggregate->members)
	{
		offsets.push_back(offset);
		offset += Size(member.type);
	}
	offsets.push_back(offset);
	return _mOffsets[aggregate] = std::move(offsets);
}

int Evaluator::Size(const Type& type)
{
	int element = 0;
	if (type.base == kBase_Struct && type.aggregate)
		element = _Offsets(type.aggregate).back();
	else if (type.base != kBase_Void && type.base != kBase_Error)
		element = type.Components();
	return element * (type.array > 0 ? type.array : 1);
}

void Evaluator::Bases(const Type& type, std::vector<Base>& bases)
{
	for (int i = 0; i < (type.array > 0 ? type.array : 1); ++i)
	{
		if (type.base == kBase_Struct && type.aggregate)
		{
			for (const Member& member : type.aggregate->members)
				Bases(member.type, bases);
			continue;
		}
		bases.insert(bases.end(), size_t(Size(type.Element())), ShapeOf(type).base);
	}
}

Slot* Evaluator::Global(std::string_view name, const Type& type, int extraSlots)
{
	auto found = _mGlobals.find(name);
	if (found != _mGlobals.end())
		return found->second.first;
	int size = Size(type) + extraSlots;
	_vStorage.emplace_back(new Slot[size_t(size > 0 ? size : 1)]());
	Slot* storage = _vStorage.back().get();
	_mGlobals[name] = {storage, size};
	return storage;
}

Slot* Evaluator::FindGlobal(std::string_view name) const
{
	auto found = _mGlobals.find(name);
	return found == _mGlobals.end() ? nullptr : found->second.first;
}

Slot* Evaluator::_Storage(const Symbol* symbol)
{
	auto found = _mSymbols.find(symbol);
	if (found != _mSymbols.end())
		return found->second;
	Slot* storage;
	if (symbol->kind == kSymbol_Local || symbol->kind == kSymbol_Parameter)
	{
		_vStorage.emplace_back(new Slot[size_t(Size(symbol->type) + 1)]());
		storage = _vStorage.back().get();
	}
	else
		storage = Global(symbol->name, symbol->type);
	_mSymbols[symbol] = storage;
	return storage;
}

const Function* Evaluator::_Definition(const Function* declared)
{
	auto found = _mResolved.find(declared);
	if (found != _mResolved.end())
		return found->second;
	const Function* definition = declared->body ? declared : nullptr;
	if (!definition)
	{
		auto defined = _mDefinitions.find(std::string(declared->name) + "(" + declared->signature + ")");
		definition = defined == _mDefinitions.end() ? nullptr : defined->second;
	}
	return _mResolved[declared] = definition;
}

void Evaluator::InitializeGlobals()
{
	for (const Tree* tree : _vTrees)
		for (const Symbol* symbol : tree->globals)
			if (symbol->initializer && symbol->kind == kSymbol_Global)
				_EvalAs(symbol->initializer, symbol->type, _Storage(symbol));
}

bool Evaluator::CallEntry(std::string_view name)
{
	auto found = _mDefinitions.find(std::string(name) + "()");
	if (found == _mDefinitions.end())
		return false;
	_pFunction = found->second;
	_pReturn = nullptr;
	_Exec(found->second->body);
	return true;
}

void Evaluator::_Count(int line)
{
	if (++_nSteps > _rMachine.budget)
		throw RunError{line, "step budget of " + std::to_string(_rMachine.budget) + " exceeded"};
}

// Expressions.

Value Evaluator::_Value(const Expr* e)
{
	Value value;
	value.shape = ShapeOf(e->type);
	_Eval(e, value.s);
	return value;
}

bool Evaluator::_Bool(const Expr* e)
{
	Slot slot;
	_Eval(e, &slot);
	return slot.i != 0;
}

int32_t Evaluator::_Int(const Expr* e)
{
	Slot slot;
	_Eval(e, &slot);
	return slot.i;
}

// Implicit conversions only ever turn int into float, on basic types.
void Evaluator::_EvalAs(const Expr* e, const Type& target, Slot* out)
{
	_Eval(e, out);
	if (e->type.base == target.base || !target.IsBasic() || !e->type.IsBasic())
		return;
	Base from = ShapeOf(e->type).base, to = ShapeOf(target).base;
	for (int k = 0; k < target.Components(); ++k)
		out[k] = ConvertSlot(out[k], from, to);
}

void Evaluator::_Eval(const Expr* e, Slot* out)
{
	if (e->hasValue && e->type.IsScalar())
	{
		*out = Folded(e->value, e->type.base);
		return;
	}
	switch (e->kind)
	{
	case kExpr_Literal:
		*out = Folded(e->value, e->type.base);
		return;
	case kExpr_Variable:
		std::memcpy(out, _Storage(e->symbol), sizeof(Slot) * size_t(Size(e->type)));
		return;
	case kExpr_Field:
	case kExpr_Swizzle:
	case kExpr_Index:
	{
		std::vector<Slot> holder;
		Place place;
		_Locate(e, place, holder);
		Load(place, out);
		return;
	}
	case kExpr_Call:
		_Call(e, out);
		return;
	case kExpr_Builtin:
		_Builtin(e, out);
		return;
	case kExpr_Construct:
	{
		Value args[16];
		for (uint32_t i = 0; i < e->count && i < 16; ++i)
			args[i] = _Value(e->Operand(i));
		Value value = Construct(ShapeOf(e->type), args, int(e->count < 16 ? e->count : 16));
		std::memcpy(out, value.s, sizeof(Slot) * size_t(value.Count()));
		return;
	}
	case kExpr_StructConstruct:
	{
		const std::vector<int>& offsets = _Offsets(e->type.aggregate);
		for (uint32_t i = 0; i < e->count; ++i)
			_EvalAs(e->Operand(i), e->type.aggregate->members[i].type, out + offsets[i]);
		return;
	}
	case kExpr_Unary:
		if (e->op == kOp_Increment || e->op == kOp_Decrement)
		{
			_Step(e, out);
			return;
		}
		{
			Value value = Unary(ToUnary(e->op), _Value(e->Operand(0)));
			std::memcpy(out, value.s, sizeof(Slot) * size_t(value.Count()));
		}
		return;
	case kExpr_Postfix:
		_Step(e, out);
		return;
	case kExpr_Binary:
		_Binary(e, out);
		return;
	case kExpr_Assign:
		_Assign(e, out);
		return;
	case kExpr_Select:
		_EvalAs(_Bool(e->Operand(0)) ? e->Operand(1) : e->Operand(2), e->type, out);
		return;
	case kExpr_Sequence:
	{
		for (uint32_t i = 0; i + 1 < e->count; ++i)
		{
			Scratch scratch(Size(e->Operand(i)->type));
			_Eval(e->Operand(i), scratch.Data());
		}
		_Eval(e->Operand(e->count - 1), out);
		return;
	}
	}
}

void Evaluator::_Locate(const Expr* e, Place& place, std::vector<Slot>& holder)
{
	switch (e->kind)
	{
	case kExpr_Variable:
		place.base = _Storage(e->symbol);
		place.count = Size(e->type);
		place.extent = place.count;
		if (e->symbol->kind == kSymbol_Block)
			place.extent = _mGlobals[e->symbol->name].second;
		place.swizzled = false;
		return;
	case kExpr_Field:
	{
		_Locate(e->Operand(0), place, holder);
		const Aggregate* aggregate = e->Operand(0)->type.aggregate;
		int offset = _Offsets(aggregate)[size_t(e->member - aggregate->members.data())];
		// The last member of a uniform block reaches to the end of the bound buffer.
		const Expr* base = e->Operand(0);
		bool open = base->kind == kExpr_Variable && base->symbol->kind == kSymbol_Block &&
		            e->member == &aggregate->members.back();
		place.base += offset;
		place.count = Size(e->type);
		place.extent = open ? place.extent - offset : place.count;
		return;
	}
	case kExpr_Swizzle:
	{
		_Locate(e->Operand(0), place, holder);
		uint8_t map[4];
		for (int i = 0; i < e->swizzleCount; ++i)
			map[i] = place.swizzled ? place.map[e->swizzle[i]] : e->swizzle[i];
		std::memcpy(place.map, map, sizeof(map));
		place.swizzled = true;
		place.count = e->swizzleCount;
		return;
	}
	case kExpr_Index:
		_Locate(e->Operand(0), place, holder);
		_Index(e, place);
		return;
	default:
		// Not a variable: the value itself, in the caller's holder.
		holder.assign(size_t(Size(e->type)), Slot());
		_Eval(e, holder.data());
		place.base = holder.data();
		place.count = place.extent = int(holder.size());
		place.swizzled = false;
		return;
	}
}

void Evaluator::_Index(const Expr* e, Place& place)
{
	const Type& type = e->Operand(0)->type;
	int32_t index = _Int(e->Operand(1));
	int element = Size(e->type);
	int size = type.IsArray() ? place.extent / element : (type.IsMatrix() ? type.columns : type.rows);
	if (index < 0 || index >= size)
		throw RunError{e->line, "index " + std::to_string(index) + " out of range for '" + type.Name() +
		                            "' of " + std::to_string(size)};
	if (place.swizzled)
	{
		place.map[0] = place.map[index];
		place.count = 1;
		return;
	}
	place.base += index * element;
	place.count = place.extent = element;
}

void Evaluator::_Call(const Expr* e, Slot* out)
{
	const Function* function = _Definition(e->function);
	if (!function)
		throw RunError{e->line, "'" + std::string(e->function->name) + "' : function has no definition"};
	size_t count = function->parameters.size();
	std::vector<int> offsets(count + 1, 0);
	for (size_t i = 0; i < count; ++i)
		offsets[i + 1] = offsets[i] + Size(function->parameters[i]->type);
	Scratch values(offsets[count]);
	std::vector<Place> places(count);
	std::vector<Slot> holder;
	// Everything is evaluated before anything is copied in, so f(a, f(b)) keeps both calls apart.
	for (size_t i = 0; i < count; ++i)
	{
		const Symbol* parameter = function->parameters[i];
		if (parameter->mode != kParameter_In)
			_Locate(e->Operand(uint32_t(i)), places[i], holder);
		if (parameter->mode == kParameter_Out)
			std::memset(values.Data() + offsets[i], 0, sizeof(Slot) * size_t(offsets[i + 1] - offsets[i]));
		else
			_EvalAs(e->Operand(uint32_t(i)), parameter->type, values.Data() + offsets[i]);
	}
	for (size_t i = 0; i < count; ++i)
		std::memcpy(_Storage(function->parameters[i]), values.Data() + offsets[i],
		            sizeof(Slot) * size_t(offsets[i + 1] - offsets[i]));
	const Function* caller = _pFunction;
	Slot* callerReturn = _pReturn;
	_pFunction = function;
	_pReturn = out;
	_Exec(function->body);
	_pFunction = caller;
	_pReturn = callerReturn;
	for (size_t i = 0; i < count; ++i)
		if (function->parameters[i]->mode != kParameter_In)
			Store(places[i], _Storage(function->parameters[i]));
}

void Evaluator::_Builtin(const Expr* e, Slot* out)
{
	auto found = _mBuiltins.find(e->builtin);
	if (found == _mBuiltins.end())
		found = _mBuiltins.emplace(e->builtin, FindBuiltin(e->builtin->name)).first;
	Value args[4];
	for (uint32_t i = 0; i < e->count && i < 4; ++i)
	{
		args[i] = _Value(e->Operand(i));
		const Type& parameter = e->builtin->parameters[i];
		if (parameter.IsBasic() && parameter.base != e->Operand(i)->type.base)
			args[i] = Convert(args[i], ShapeOf(parameter).base);
	}
	Value result = found->second(_rMachine, args, int(e->count));
	// Built-ins may answer more components than the overload keeps (textureSize of a 2D sampler).
	std::memcpy(out, result.s, sizeof(Slot) * size_t(Size(e->type)));
}

bool Evaluator::_EqualSlots(const Type& type, const Slot* a, const Slot* b)
{
	std::vector<Base> bases;
	Bases(type, bases);
	for (size_t k = 0; k < bases.size(); ++k)
	{
		bool same = bases[k] == kFloat ? a[k].f == b[k].f : a[k].i == b[k].i;
		if (!same)
			return false;
	}
	return true;
}

void Evaluator::_Binary(const Expr* e, Slot* out)
{
	const Expr* left = e->Operand(0);
	const Expr* right = e->Operand(1);
	if (e->op == kOp_And || e->op == kOp_Or)
	{
		bool first = _Bool(left);
		bool decided = e->op == kOp_And ? !first : first;
		out->i = decided ? first : _Bool(right);
		return;
	}
	if ((e->op == kOp_Equal || e->op == kOp_NotEqual) && !left->type.IsBasic())
	{
		int size = Size(left->type);
		Scratch a(size), b(size);
		_Eval(left, a.Data());
		_Eval(right, b.Data());
		out->i = _EqualSlots(left->type, a.Data(), b.Data()) == (e->op == kOp_Equal);
		return;
	}
	// Left before right, as GLSL evaluates: a call on the left may write an out argument read on the right.
	const Value a = _Value(left);
	const Value b = _Value(right);
	Value value = Binary(ToOp(e->op), a, b);
	std::memcpy(out, value.s, sizeof(Slot) * size_t(value.Count()));
}

void Evaluator::_Assign(const Expr* e, Slot* out)
{
	std::vector<Slot> holder;
	Place place;
	_Locate(e->Operand(0), place, holder);
	const Type& type = e->Operand(0)->type;
	if (e->op == kOp_None)
	{
		Scratch value(Size(type));
		_EvalAs(e->Operand(1), type, value.Data());
		Store(place, value.Data());
		std::memcpy(out, value.Data(), sizeof(Slot) * size_t(place.count));
		return;
	}
	Value current;
	current.shape = ShapeOf(type);
	Load(place, current.s);
	Value result = Binary(ToOp(e->op), current, _Value(e->Operand(1)));
	if (result.shape.base != current.shape.base)
		result = Convert(result, current.shape.base);
	Store(place, result.s);
	std::memcpy(out, result.s, sizeof(Slot) * size_t(place.count));
}

void Evaluator::_Step(const Expr* e, Slot* out)
{
	std::vector<Slot> holder;
	Place place;
	_Locate(e->Operand(0), place, holder);
	Value before;
	before.shape = ShapeOf(e->type);
	Load(place, before.s);
	Value one = Convert(Value::Int(1), before.shape.base);
	Value after = Binary(e->op == kOp_Increment ? kAdd : kSub, before, one);
	Store(place, after.s);
	const Value& answer = e->kind == kExpr_Postfix ? before : after;
	std::memcpy(out, answer.s, sizeof(Slot) * size_t(place.count));
}

// Statements.

Evaluator::Flow Evaluator::_Exec(const Stmt* s)
{
	_Count(s->line);
	switch (s->kind)
	{
	case kStmt_Empty:
		return kNext;
	case kStmt_Block:
		for (uint32_t i = 0; i < s->count; ++i)
		{
			Flow flow = _Exec(s->children[i]);
			if (flow != kNext)
				return flow;
		}
		return kNext;
	case kStmt_Declaration:
		for (uint32_t i = 0; i < s->declaredCount; ++i)
		{
			const Symbol* symbol = s->declared[i];
			Slot* storage = _Storage(symbol);
			// An uninitialised local starts at zero rather than at whatever it held last time.
			if (symbol->initializer)
				_EvalAs(symbol->initializer, symbol->type, storage);
			else
				std::memset(storage, 0, sizeof(Slot) * size_t(Size(symbol->type)));
		}
		return kNext;
	case kStmt_Expression:
	{
		Scratch scratch(Size(s->expr->type));
		_Eval(s->expr, scratch.Data());
		return kNext;
	}
	case kStmt_If:
		if (s->init)
			_Exec(s->init);
		if (_Bool(s->expr))
			return _Exec(s->body);
		return s->otherwise ? _Exec(s->otherwise) : kNext;
	case kStmt_While:
	case kStmt_DoWhile:
	case kStmt_For:
		return _Loop(s);
	case kStmt_Return:
		if (s->expr)
		{
			if (_pReturn)
				_EvalAs(s->expr, _pFunction->returnType, _pReturn);
			else
			{
				Scratch ignored(Size(s->expr->type));
				_Eval(s->expr, ignored.Data());
			}
		}
		return kReturn;
	case kStmt_Break:
		return kBreak;
	case kStmt_Continue:
		return kContinue;
	}
	return kNext;
}

Evaluator::Flow Evaluator::_Loop(const Stmt* s)
{
	if (s->kind == kStmt_For && s->init)
		_Exec(s->init);
	for (bool first = true;; first = false)
	{
		_Count(s->line);
		if (s->kind == kStmt_While && s->init)
			_Exec(s->init);
		bool test = s->expr && !(s->kind == kStmt_DoWhile && first);
		if (test && !_Bool(s->expr))
			return kNext;
		Flow flow = _Exec(s->body);
		if (flow == kBreak)
			return kNext;
		if (flow == kReturn)
			return kReturn;
		if (s->kind == kStmt_For && s->step)
		{
			Scratch scratch(Size(s->step->type));
			_Eval(s->step, scratch.Data());
		}
	}
}

} // namespace QlslRun
} // namespace Tarsel
