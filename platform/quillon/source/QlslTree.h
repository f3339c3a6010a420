#pragma once

#include "QlslTypes.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// The typed tree of one compiled text. Nodes live in an arena owned by the unit and point at the unit's
// copy of the text, so a tree stays valid exactly as long as its unit.
namespace Tarsel
{
namespace Qlsl
{

struct BuiltinOverload;
struct Expr;
struct Stmt;

// Bump allocation for trivially destructible nodes: no per-node free, no recursive destruction.
class Arena
{
public:
	template <class T>
	T* New()
	{
		static_assert(std::is_trivially_destructible<T>::value, "arena nodes are never destroyed");
		return new (_Allocate(sizeof(T), alignof(T))) T();
	}
	template <class T>
	T** Array(const T* const* items, size_t count)
	{
		if (count == 0)
			return nullptr;
		T** array = static_cast<T**>(_Allocate(sizeof(T*) * count, alignof(T*)));
		for (size_t i = 0; i < count; ++i)
			array[i] = const_cast<T*>(items[i]);
		return array;
	}

private:
	void* _Allocate(size_t bytes, size_t alignment);

	std::vector<std::unique_ptr<unsigned char[]>> _vChunks;
	size_t _nUsed = 0;
	size_t _nSize = 0;
};

struct Member
{
	std::string_view name;
	Type type;
	int line = 0;
};

struct Aggregate
{
	std::string_view name;
	bool block = false;
	bool defined = false;
	int line = 0;
	std::vector<Member> members;

	const Member* Find(std::string_view memberName) const;
};

enum SymbolKind : uint8_t
{
	kSymbol_Global,
	kSymbol_Local,
	kSymbol_Parameter,
	kSymbol_Builtin,
	kSymbol_Block // a uniform block, addressed through its name
};

enum ParameterMode : uint8_t
{
	kParameter_In,
	kParameter_Out,
	kParameter_InOut
};

struct Symbol
{
	std::string_view name;
	Type type;
	SymbolKind kind = kSymbol_Local;
	QLStorage storage = kQLStorage_None;
	ParameterMode mode = kParameter_In;
	bool isConst = false;
	bool readOnly = false;
	int line = 0;
	const Expr* initializer = nullptr; // also the value of a constant
};

struct Function
{
	std::string_view name;
	Type returnType;
	std::vector<Symbol*> parameters;
	std::string signature; // parameter types joined by ",", the overload's identity
	const Stmt* body = nullptr;
	bool defined = false;
	int line = 0;
	size_t unitIndex = 0; // its entry in QLUnit::functions
};

enum ExprKind : uint8_t
{
	kExpr_Literal,
	kExpr_Variable,
	kExpr_Call,      // a function of the program
	kExpr_Builtin,   // a built-in function
	kExpr_Construct, // scalar, vector or matrix constructor
	kExpr_StructConstruct,
	kExpr_Field, // struct or block member
	kExpr_Swizzle,
	kExpr_Index,
	kExpr_Unary,   // prefix operators
	kExpr_Postfix, // x++ and x--
	kExpr_Binary,
	kExpr_Assign,  // = and the compound assignments
	kExpr_Select,  // ?:
	kExpr_Sequence // the comma operator
};

enum Operator : uint8_t
{
	kOp_None,
	kOp_Add,
	kOp_Sub,
	kOp_Mul,
	kOp_Div,
	kOp_Mod,
	kOp_Shl,
	kOp_Shr,
	kOp_BitAnd,
	kOp_BitOr,
	kOp_BitXor,
	kOp_And,
	kOp_Or,
	kOp_Xor,
	kOp_Less,
	kOp_Greater,
	kOp_LessEqual,
	kOp_GreaterEqual,
	kOp_Equal,
	kOp_NotEqual,
	kOp_Negate,
	kOp_Plus,
	kOp_Not,
	kOp_Complement,
	kOp_Increment,
	kOp_Decrement
};

// One typed expression. Operands: unary 1, binary/assign 2 (target first), select 3, index 2, field and
// swizzle 1, calls and constructors their arguments.
struct Expr
{
	ExprKind kind = kExpr_Literal;
	Operator op = kOp_None; // for assignments the arithmetic part, kOp_None for plain '='
	bool constant = false;  // a constant expression
	bool hasValue = false;  // a scalar constant whose value is known
	uint8_t swizzleCount = 0;
	uint8_t swizzle[4] = {0, 0, 0, 0}; // component indexes
	Type type;
	int line = 0;
	double value = 0.0;    // with hasValue: the value of an int, float or bool constant
	std::string_view text; // name, member, literal or operator text
	const Symbol* symbol = nullptr;
	const Function* function = nullptr;
	const BuiltinOverload* builtin = nullptr;
	const Member* member = nullptr;
	Expr** operands = nullptr;
	uint32_t count = 0;

	Expr* Operand(uint32_t i) const { return operands[i]; }
};

enum StmtKind : uint8_t
{
	kStmt_Empty,
	kStmt_Block,
	kStmt_Declaration, // declared: the variables, each with its initializer
	kStmt_Expression,
	kStmt_If,      // init: condition declaration or null; expr: condition; body; otherwise
	kStmt_While,   // init/expr as for if; body
	kStmt_DoWhile, // body; expr
	kStmt_For,     // init; expr (may be null); step (may be null); body
	kStmt_Return,  // expr may be null
	kStmt_Break,
	kStmt_Continue
};

struct Stmt
{
	StmtKind kind = kStmt_Empty;
	int line = 0;
	Expr* expr = nullptr;
	Expr* step = nullptr;
	Stmt* init = nullptr;
	Stmt* body = nullptr;
	Stmt* otherwise = nullptr;
	Stmt** children = nullptr; // block statements
	uint32_t count = 0;
	Symbol** declared = nullptr;
	uint32_t declaredCount = 0;
};

// Everything a compiled text declares, in text order.
struct Tree
{
	std::string text; // the nodes' names point into this copy
	Arena arena;
	std::vector<Symbol*> globals;     // globals and uniform blocks
	std::deque<Function> functions;   // one entry per overload
	std::deque<Aggregate> aggregates; // structs and uniform blocks

	const Function* FindFunction(std::string_view name, std::string_view signature) const;
};

} // namespace Qlsl
} // namespace Tarsel
