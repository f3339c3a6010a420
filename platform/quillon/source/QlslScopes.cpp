#include "QlslScopes.h"

#include "QlslBuiltins.h"

namespace Tarsel
{
namespace Qlsl
{
namespace
{

// Names the linker can see, written the way the program text writes them.
QLUnitVariable UnitVariable(std::string_view name, const Type& type, QLStorage storage, bool isConst,
                            int line)
{
	return QLUnitVariable{std::string(name), type.Name(false), type.array, storage, isConst, line};
}

// Inputs are read-only: uniforms, constants, attributes and what the vertex stage handed to the ray stage.
bool ReadOnlyStorage(QLStorage storage, int type)
{
	switch (storage)
	{
	case kQLStorage_Uniform:
	case kQLStorage_Attribute:
		return true;
	case kQLStorage_Varying:
		return type != 1;
	default:
		return false;
	}
}

} // namespace

Scopes::Scopes(QLUnit& unit, Diagnostics& diagnostics, int type)
    : _rUnit(unit), _rTree(unit.tree), _rDiagnostics(diagnostics), _iType(type)
{
}

void Scopes::CollectAggregateNames(const std::vector<Token>& tokens)
{
	for (size_t i = 0; i + 1 < tokens.size(); ++i)
	{
		const Token& t = tokens[i];
		if ((t.Is(kKw_Struct) || t.Is(kKw_UniformBlock)) && tokens[i + 1].kind == kToken_Identifier &&
		    !_mAggregates.count(tokens[i + 1].text))
		{
			_rTree.aggregates.emplace_back();
			Aggregate& aggregate = _rTree.aggregates.back();
			aggregate.name = tokens[i + 1].text;
			aggregate.block = t.Is(kKw_UniformBlock);
			aggregate.line = tokens[i + 1].line;
			_mAggregates[aggregate.name] = &aggregate;
		}
	}
}

Aggregate* Scopes::FindAggregate(std::string_view name) const
{
	auto it = _mAggregates.find(name);
	return it == _mAggregates.end() ? nullptr : it->second;
}

// Whether members reach the aggregate through members of members; walked without recursion.
bool Scopes::_Contains(const std::vector<Member>& members, const Aggregate* aggregate)
{
	std::vector<const Member*> pending;
	std::unordered_set<const Aggregate*> seen;
	for (const Member& member : members)
		pending.push_back(&member);
	while (!pending.empty())
	{
		const Aggregate* inner = pending.back()->type.aggregate;
		pending.pop_back();
		if (inner == aggregate)
			return true;
		if (inner && seen.insert(inner).second)
		{
			for (const Member& member : inner->members)
				pending.push_back(&member);
		}
	}
	return false;
}

bool Scopes::DefineAggregate(Aggregate* aggregate, const Token& name, std::vector<Member>& members)
{
	if (aggregate->defined || _mGlobals.count(name.text) || _mFunctions.count(name.text))
	{
		_rDiagnostics.Error(name.line, Quote(name.text) + " : redefinition");
		return false;
	}
	if (_Contains(members, aggregate))
	{
		_rDiagnostics.Error(name.line, Quote(name.text) + " : structure contains itself");
		return false;
	}
	aggregate->defined = true;
	aggregate->line = name.line;
	aggregate->members = std::move(members);
	if (!aggregate->block)
		return true;
	// A block is addressed through its name, like a read-only variable of the block's type.
	Symbol* symbol = _rTree.arena.New<Symbol>();
	symbol->name = aggregate->name;
	symbol->type = Type::Struct(aggregate);
	symbol->kind = kSymbol_Block;
	symbol->readOnly = true;
	symbol->line = aggregate->line;
	_mGlobals[symbol->name] = symbol;
	_rTree.globals.push_back(symbol);
	QLUnitBlock block;
	block.name = std::string(aggregate->name);
	block.line = aggregate->line;
	for (const Member& member : aggregate->members)
		block.members.push_back(UnitVariable(member.name, member.type, kQLStorage_None, false, member.line));
	_rUnit.blocks.push_back(std::move(block));
	return true;
}

// An aggregate counts once defined: a redefinition is reported where the second definition stands.
bool Scopes::_IsGlobalName(std::string_view name) const
{
	const Aggregate* aggregate = FindAggregate(name);
	return _mGlobals.count(name) || _mFunctions.count(name) || (aggregate && aggregate->defined);
}

Symbol* Scopes::DeclareGlobal(const Token& name, const Type& type, QLStorage storage, bool isConst,
                              const Expr* initializer)
{
	if (_IsGlobalName(name.text))
	{
		_rDiagnostics.Error(name.line, Quote(name.text) + " : redefinition");
		return nullptr;
	}
	Symbol* symbol = _rTree.arena.New<Symbol>();
	symbol->name = name.text;
	symbol->type = type;
	symbol->kind = kSymbol_Global;
	symbol->storage = storage;
	symbol->isConst = isConst;
	symbol->readOnly = isConst || ReadOnlyStorage(storage, _iType);
	symbol->line = name.line;
	symbol->initializer = initializer;
	_mGlobals[symbol->name] = symbol;
	_rTree.globals.push_back(symbol);
	_rUnit.globals.push_back(UnitVariable(name.text, type, storage, isConst, name.line));
	return symbol;
}

Symbol* Scopes::DeclareLocal(const Token& name, const Type& type, SymbolKind kind)
{
	for (size_t i = _vLocals.size(); i > _ScopeStart(); --i)
	{
		if (_vLocals[i - 1]->name == name.text)
		{
			_rDiagnostics.Error(name.line, Quote(name.text) + " : redefinition");
			break;
		}
	}
	Symbol* symbol = _rTree.arena.New<Symbol>();
	symbol->name = name.text;
	symbol->type = type;
	symbol->kind = kind;
	symbol->line = name.line;
	_vLocals.push_back(symbol);
	return symbol;
}

Function* Scopes::DeclareFunction(const Token& name, const Type& returnType, std::vector<Symbol*>& parameters,
                                  bool defined)
{
	std::string signature;
	for (const Symbol* parameter : parameters)
	{
		if (!signature.empty())
			signature += ",";
		signature += parameter->type.Name(false) + (parameter->type.array ? "[]" : "");
	}
	const Aggregate* aggregate = FindAggregate(name.text);
	if (_mGlobals.count(name.text) || (aggregate && aggregate->defined))
	{
		_rDiagnostics.Error(name.line, Quote(name.text) + " : redefinition");
		return nullptr;
	}
	std::vector<Function*>& overloads = _mFunctions[name.text];
	for (Function* overload : overloads)
	{
		if (overload->signature != signature)
			continue;
		if (overload->returnType != returnType)
			_rDiagnostics.Error(name.line, Quote(name.text) +
			                                   " : overloaded functions must not differ only in return type");
		if (overload->defined && defined)
			_rDiagnostics.Error(name.line, Quote(name.text) + " : function already has a body");
		if (defined && !overload->defined)
		{
			// The definition's parameter names are the ones the body sees.
			overload->parameters = parameters;
			overload->defined = true;
			_rUnit.functions[overload->unitIndex].defined = true;
		}
		return overload;
	}
	_rTree.functions.emplace_back();
	Function& function = _rTree.functions.back();
	function.name = name.text;
	function.returnType = returnType;
	function.parameters = parameters;
	function.signature = signature;
	function.defined = defined;
	function.line = name.line;
	function.unitIndex = _rUnit.functions.size();
	overloads.push_back(&function);
	_rUnit.functions.push_back(QLUnitFunction{std::string(name.text),
	                                          returnType.Name(),
	                                          signature,
	                                          int(parameters.size()),
	                                          defined,
	                                          name.line,
	                                          {}});
	return &function;
}

const std::vector<Function*>* Scopes::FindFunctions(std::string_view name) const
{
	auto it = _mFunctions.find(name);
	return it == _mFunctions.end() ? nullptr : &it->second;
}

const Symbol* Scopes::Lookup(const Token& name)
{
	for (size_t i = _vLocals.size(); i > 0; --i)
	{
		if (_vLocals[i - 1]->name == name.text)
			return _vLocals[i - 1];
	}
	auto global = _mGlobals.find(name.text);
	if (global != _mGlobals.end())
		return global->second;
	auto known = _mBuiltins.find(name.text);
	if (known != _mBuiltins.end())
		return known->second;
	if (const BuiltinVariable* builtin = FindBuiltinVariable(name.text, StageBit(_iType)))
	{
		Symbol* symbol = _rTree.arena.New<Symbol>();
		symbol->name = builtin->name;
		symbol->type = BasicTypeNamed(builtin->type);
		symbol->type.array = builtin->arraySize;
		symbol->kind = kSymbol_Builtin;
		symbol->readOnly = !builtin->writable;
		_mBuiltins[symbol->name] = symbol;
		return symbol;
	}
	if (IsBuiltinName(name.text))
		_rDiagnostics.Error(name.line,
		                    Quote(name.text) + " : not available in " + kStageNames[_iType] + " shaders");
	else
		_rDiagnostics.Error(name.line, Quote(name.text) + " : undeclared identifier");
	return nullptr;
}

void Scopes::RecordCall(const Function& function, int line)
{
	if (_pCurrent && _setCallees.insert(&function).second)
		_rUnit.functions[_pCurrent->unitIndex].callees.push_back(std::string(function.name) + "(" +
		                                                         function.signature + ")");
	if (_mCalls.emplace(&function, _rUnit.calls.size()).second)
		_rUnit.calls.push_back(QLUnitCall{std::string(function.name), function.signature,
		                                  int(function.parameters.size()), line});
}

} // namespace Qlsl
} // namespace Tarsel
