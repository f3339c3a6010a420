#include "QlslTyping.h"

#include <cmath>

namespace Tarsel
{
namespace Qlsl
{
namespace
{

// How well arguments fit parameters: -1 not at all, otherwise the number of implicit conversions.
template <class ParameterAt>
int Fit(int parameters, Expr* const* arguments, uint32_t count, ParameterAt parameterAt)
{
	if (uint32_t(parameters) != count)
		return -1;
	int conversions = 0;
	for (uint32_t i = 0; i < count; ++i)
	{
		ParameterMode mode = kParameter_In;
		const Type& parameter = parameterAt(i, mode);
		const Type& argument = arguments[i]->type;
		if (argument == parameter)
			continue;
		// Out parameters convert on the way back, inout both ways, which only identity does.
		bool fits = mode == kParameter_In    ? ConvertsTo(argument, parameter)
		            : mode == kParameter_Out ? ConvertsTo(parameter, argument)
		                                     : false;
		if (!fits)
			return -1;
		++conversions;
	}
	return conversions;
}

// The candidate needing the fewest conversions; ambiguous when several tie with conversions.
template <class Candidate, class FitOf>
const Candidate* Best(const std::vector<Candidate>& candidates, FitOf fitOf, bool& ambiguous)
{
	const Candidate* best = nullptr;
	int bestConversions = -1;
	ambiguous = false;
	for (const Candidate& candidate : candidates)
	{
		int conversions = fitOf(candidate);
		if (conversions < 0)
			continue;
		if (!best || conversions < bestConversions)
		{
			best = &candidate;
			bestConversions = conversions;
			ambiguous = false;
		}
		else if (conversions == bestConversions)
			ambiguous = true;
	}
	return best;
}

} // namespace

std::string Typing::_ArgumentTypes(Expr* const* arguments, uint32_t count)
{
	std::string types = "(";
	for (uint32_t i = 0; i < count; ++i)
		types += (i ? ", " : "") + arguments[i]->type.Name();
	return types + ")";
}

Expr* Typing::Call(const Token& name, Expr* const* arguments, uint32_t count)
{
	bool usable = true;
	for (uint32_t i = 0; i < count; ++i)
		usable = Usable(arguments[i]) && usable;
	const Aggregate* aggregate = _rScopes.FindAggregate(name.text);
	bool construct = aggregate && !aggregate->block;
	if (construct && usable)
		return _StructConstruct(name, *aggregate, arguments, count);
	Expr* node = _Node(construct ? kExpr_StructConstruct : kExpr_Call, name.line, Type());
	node->text = name.text;
	_SetOperands(node, arguments, count);
	if (!usable)
		return _Error(node);
	if (const std::vector<Function*>* overloads = _rScopes.FindFunctions(name.text))
		return _UserCall(name, *overloads, arguments, count);
	const std::vector<BuiltinOverload>* builtins = FindBuiltinOverloads(name.text);
	bool inStage = false;
	for (size_t i = 0; builtins && i < builtins->size() && !inStage; ++i)
		inStage = ((*builtins)[i].stages & _nStage) != 0;
	if (inStage)
		return _BuiltinCall(name, *builtins, arguments, count);
	if (IsBuiltinName(name.text))
		_rDiagnostics.Error(name.line,
		                    Quote(name.text) + " : not available in " + kStageNames[_iType] + " shaders");
	else
		_rDiagnostics.Error(name.line, Quote(name.text) + " : no matching function declared");
	return _Error(node);
}

Expr* Typing::_UserCall(const Token& name, const std::vector<Function*>& overloads, Expr* const* arguments,
                        uint32_t count)
{
	Expr* node = _Node(kExpr_Call, name.line, Type());
	node->text = name.text;
	_SetOperands(node, arguments, count);
	node->constant = false;
	bool ambiguous = false;
	auto fitOf = [&](Function* const& function)
	{
		return Fit(int(function->parameters.size()), arguments, count,
		           [&](uint32_t i, ParameterMode& mode) -> const Type&
		           {
			           mode = function->parameters[i]->mode;
			           return function->parameters[i]->type;
		           });
	};
	Function* const* best = Best(overloads, fitOf, ambiguous);
	if (!best || ambiguous)
	{
		bool arity = false;
		for (const Function* function : overloads)
			arity = arity || function->parameters.size() == count;
		if (ambiguous)
			_rDiagnostics.Error(name.line, Quote(name.text) + " : ambiguous call for " +
			                                   _ArgumentTypes(arguments, count));
		else if (!arity)
			_rDiagnostics.Error(name.line, Quote(name.text) +
			                                   " : no matching overloaded function found for " +
			                                   std::to_string(count) + " arguments");
		else
			_rDiagnostics.Error(name.line, Quote(name.text) +
			                                   " : no matching overloaded function found for " +
			                                   _ArgumentTypes(arguments, count));
		return _Error(node);
	}
	const Function& function = **best;
	node->function = &function;
	node->type = function.returnType;
	for (uint32_t i = 0; i < count; ++i)
	{
		if (function.parameters[i]->mode != kParameter_In &&
		    !_CheckWritable(arguments[i],
		                    Quote(name.text) + " argument " + std::to_string(i + 1) + " ('" +
		                        (function.parameters[i]->mode == kParameter_Out ? "out" : "inout") + "')"))
			_Error(node);
	}
	_rScopes.RecordCall(function, name.line);
	return node;
}

Expr* Typing::_BuiltinCall(const Token& name, const std::vector<BuiltinOverload>& overloads,
                           Expr* const* arguments, uint32_t count)
{
	Expr* node = _Node(kExpr_Builtin, name.line, Type());
	node->text = name.text;
	_SetOperands(node, arguments, count);
	bool ambiguous = false;
	bool arity = false;
	auto fitOf = [&](const BuiltinOverload& overload)
	{
		if (!(overload.stages & _nStage))
			return -1;
		arity = arity || uint32_t(overload.count) == count;
		return Fit(overload.count, arguments, count,
		           [&](uint32_t i, ParameterMode&) -> const Type& { return overload.parameters[i]; });
	};
	const BuiltinOverload* best = Best(overloads, fitOf, ambiguous);
	if (!arity)
		_rDiagnostics.Error(name.line, Quote(name.text) + " : wrong number of arguments (" +
		                                   std::to_string(count) + ")");
	else if (!best || ambiguous)
		_rDiagnostics.Error(name.line, Quote(name.text) + " : no matching overloaded function found for " +
		                                   _ArgumentTypes(arguments, count));
	if (!best || ambiguous)
		return _Error(node);
	node->builtin = best;
	node->type = best->result;
	node->constant = node->constant && best->constant;
	return node;
}

Expr* Typing::_StructConstruct(const Token& name, const Aggregate& aggregate, Expr* const* arguments,
                               uint32_t count)
{
	Expr* node = _Node(kExpr_StructConstruct, name.line, Type::Struct(&aggregate));
	node->text = name.text;
	_SetOperands(node, arguments, count);
	if (count != aggregate.members.size())
	{
		_rDiagnostics.Error(name.line, Quote(name.text) + " : constructor needs " +
		                                   std::to_string(aggregate.members.size()) + " arguments");
		return _Error(node);
	}
	for (uint32_t i = 0; i < count; ++i)
	{
		const Member& member = aggregate.members[i];
		if (!ConvertsTo(arguments[i]->type, member.type))
		{
			_rDiagnostics.Error(name.line, Quote(name.text) + " : argument " + std::to_string(i + 1) +
			                                   " is " + Quote(arguments[i]->type) + ", member " +
			                                   Quote(member.name) + " is " + Quote(member.type));
			return _Error(node);
		}
	}
	return node;
}

Expr* Typing::Construct(const Token& typeToken, Expr* const* arguments, uint32_t count)
{
	Type type = BasicTypeNamed(typeToken.text);
	Expr* node = _Node(kExpr_Construct, typeToken.line, type);
	node->text = typeToken.text;
	_SetOperands(node, arguments, count);
	std::string what = Quote(typeToken.text);
	if (!type.IsBasic())
	{
		_rDiagnostics.Error(typeToken.line, what + " : cannot be constructed");
		return _Error(node);
	}
	if (count == 0)
	{
		_rDiagnostics.Error(typeToken.line, what + " : constructor needs arguments");
		return _Error(node);
	}
	int components = 0;
	bool matrixArgument = false;
	for (uint32_t i = 0; i < count; ++i)
	{
		if (!Usable(arguments[i]))
			return _Error(node);
		const Type& argument = arguments[i]->type;
		if (!argument.IsBasic())
		{
			_rDiagnostics.Error(typeToken.line, what + " : cannot construct from " + Quote(argument));
			return _Error(node);
		}
		if (components >= type.Components())
		{
			_rDiagnostics.Error(typeToken.line, what + " : too many arguments");
			return _Error(node);
		}
		components += argument.Components();
		matrixArgument = matrixArgument || argument.IsMatrix();
	}
	// One scalar fills a vector or the diagonal of a matrix; one matrix any matrix.
	bool single = count == 1 && (arguments[0]->type.IsScalar() || (type.IsMatrix() && matrixArgument));
	if (!single && type.IsMatrix() && matrixArgument)
	{
		_rDiagnostics.Error(typeToken.line, what + " : a matrix argument must be the only one");
		return _Error(node);
	}
	bool exact = type.IsMatrix() && !single;
	if (!single && (components < type.Components() || (exact && components != type.Components())))
	{
		_rDiagnostics.Error(typeToken.line,
		                    what + (components < type.Components() ? " : not enough" : " : too many") +
		                        " components (" + std::to_string(components) + " for " +
		                        std::to_string(type.Components()) + ")");
		return _Error(node);
	}
	if (type.IsScalar() && arguments[0]->hasValue && arguments[0]->type.IsScalar())
	{
		double value = arguments[0]->value;
		node->hasValue = true;
		// Truncated without a cast, which would be undefined for values past the integer range.
		node->value =
		    type.base == kBase_Int ? std::trunc(value) : (type.base == kBase_Bool ? value != 0.0 : value);
	}
	return node;
}

} // namespace Qlsl
} // namespace Tarsel
