#pragma once

#include "QlslTree.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tarsel
{

struct QLUnitVariable
{
	std::string name;
	std::string type;
	int arraySize = 0; // 0: not an array
	QLStorage storage = kQLStorage_None;
	bool isConst = false;
	int line = 0;
};

struct QLUnitFunction
{
	std::string name;
	std::string returnType;
	std::string parameters; // parameter types joined by ",", the overload's identity
	int arity = 0;
	bool defined = false;
	int line = 0;
	std::vector<std::string> callees; // "name(parameters)" of the functions its body calls
};

struct QLUnitCall
{
	std::string name;
	std::string parameters; // of the overload the call resolved to
	int arity = 0;
	int line = 0; // first call
	std::string Key() const { return name + "(" + parameters + ")"; }
};

struct QLUnitBlock
{
	std::string name;
	std::vector<QLUnitVariable> members;
	int line = 0;
};

// One compiled text: its typed tree, and the summary the linker works from. Never copied or moved once
// compiled, since the tree points into it.
struct QLUnit
{
	int type = 0;
	std::vector<QLUnitVariable> globals;
	std::vector<QLUnitFunction> functions; // one entry per overload, defined or only declared
	std::vector<QLUnitCall> calls;         // calls of functions of the text, one per overload called
	std::vector<QLUnitBlock> blocks;
	Qlsl::Tree tree;

	QLUnit() = default;
	QLUnit(const QLUnit&) = delete;
	QLUnit& operator=(const QLUnit&) = delete;

	// Indexes the definitions by signature; call once the text is compiled.
	void IndexDefinitions();
	// By "name(parameters)".
	const QLUnitFunction* FindDefinition(const std::string& key) const;
	bool DefinesMain() const { return FindDefinition("main()") != nullptr; }

private:
	std::unordered_map<std::string, size_t> _mDefinitions; // key -> index into functions
};

namespace Qlsl
{
// Deeper nesting of expressions is refused; expressions never recurse, so this only bounds memory.
const int kMaxNesting = 65536;
// Statements recurse once per level; this bound keeps them well inside any thread's stack.
const int kMaxStatementNesting = 4096;

// Compiles text as a shader of a type; null on failure with errors holding one message per problem.
std::shared_ptr<QLUnit> Compile(const std::string& text, int type, std::vector<std::string>& errors);
} // namespace Qlsl

} // namespace Tarsel
