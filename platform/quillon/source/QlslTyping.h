#pragma once

#include "QlslBuiltins.h"
#include "QlslDiagnostics.h"
#include "QlslLexer.h"
#include "QlslScopes.h"

namespace Tarsel
{
namespace Qlsl
{

// Builds typed expression nodes from typed operands and checks them. An operand whose type is an error
// has been reported already: nodes built on it are errors too and report nothing more.
class Typing
{
public:
	Typing(Arena& arena, Diagnostics& diagnostics, Scopes& scopes, int type);

	// Expressions (QlslTyping.cpp).
	Expr* Literal(const Token& token);
	Expr* Variable(const Token& name);
	Expr* Unary(const Token& op, Expr* operand);
	Expr* Postfix(const Token& op, Expr* operand);
	Expr* Binary(const Token& op, Expr* left, Expr* right);
	Expr* Assign(const Token& op, Expr* target, Expr* value);
	Expr* Select(const Token& op, Expr* condition, Expr* yes, Expr* no);
	Expr* Sequence(const Token& op, Expr* left, Expr* right);
	Expr* Index(const Token& bracket, Expr* base, Expr* index);
	Expr* Field(Expr* base, const Token& field);

	// Calls and constructors (QlslCalls.cpp); arguments are count consecutive pointers.
	Expr* Call(const Token& name, Expr* const* arguments, uint32_t count);
	Expr* Construct(const Token& type, Expr* const* arguments, uint32_t count);

	// Statement-level checks.
	void Condition(const Expr* condition, const char* what);
	void Initializer(const Token& name, const Type& type, const Expr* value);
	void Return(int line, const Type& returnType, const Expr* value);
	// The size of an array declarator: a positive constant int; reports and answers 1 otherwise.
	int ArraySize(const Expr* size);
	// Whether a value may stand where a value is used; reports void values.
	bool Usable(const Expr* expr);

private:
	Expr* _Node(ExprKind kind, int line, const Type& type);
	Expr* _Error(Expr* node);
	void _SetOperands(Expr* node, Expr* const* operands, uint32_t count);
	// The type of left op right for the arithmetic operators; an error type when there is none.
	Type _Arithmetic(Operator op, const Type& left, const Type& right) const;
	Type _BinaryType(Operator op, const Type& left, const Type& right) const;
	void _Fold(Expr* node);
	// Why target cannot be written, or null when it can.
	const char* _NotWritable(const Expr* target, std::string& name) const;
	bool _CheckWritable(const Expr* target, const std::string& context);
	void _CheckIndexRange(const Expr* base, const Expr* index, int line);
	Expr* _StructConstruct(const Token& name, const Aggregate& aggregate, Expr* const* arguments,
	                       uint32_t count);
	Expr* _UserCall(const Token& name, const std::vector<Function*>& overloads, Expr* const* arguments,
	                uint32_t count);
	Expr* _BuiltinCall(const Token& name, const std::vector<BuiltinOverload>& overloads,
	                   Expr* const* arguments, uint32_t count);
	static std::string _ArgumentTypes(Expr* const* arguments, uint32_t count);

	Arena& _rArena;
	Diagnostics& _rDiagnostics;
	Scopes& _rScopes;
	int _iType;
	unsigned _nStage;
};

// The operator a token stands for; assignment tokens answer their arithmetic part.
Operator OperatorOf(std::string_view text);

} // namespace Qlsl
} // namespace Tarsel
