#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tarsel
{

// Global storage qualifiers as they appear in program text.
enum QLStorage
{
	kQLStorage_None = 0,
	kQLStorage_Attribute,
	kQLStorage_Varying,
	kQLStorage_TransformedVarying,
	kQLStorage_TransformedInvariantVarying,
	kQLStorage_Uniform,
	kQLStorage_MutableUniform,
	kQLStorage_RayAttribute
};

const char* QLStorageText(QLStorage storage);

struct QLUnitVariable
{
	std::string name;
	std::string type;
	int arraySize = 0; // 0: not an array, -1: an array whose size is not a literal
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
};

struct QLUnitCall
{
	std::string name;
	int arity = 0;
	int line = 0; // first call
};

struct QLUnitBlock
{
	std::string name;
	std::vector<QLUnitVariable> members;
	int line = 0;
};

// What the linker needs of one compiled text.
struct QLUnit
{
	int type = 0;
	std::vector<QLUnitVariable> globals;
	std::vector<QLUnitFunction> functions; // one entry per overload, defined or only declared
	std::vector<QLUnitCall> calls;         // calls of functions of the text, one per name and arity
	std::vector<QLUnitBlock> blocks;

	// Indexes the definitions by name and arity; call once the text is compiled.
	void IndexDefinitions();
	const QLUnitFunction* FindDefinition(const std::string& name, int arity) const;
	bool DefinesMain() const { return FindDefinition("main", 0) != nullptr; }

private:
	static std::string _Key(const std::string& name, int arity) { return name + "/" + std::to_string(arity); }
	std::unordered_map<std::string, size_t> _mDefinitions; // key -> index into functions
};

namespace Qlsl
{
// Deeper nesting of blocks and expressions is refused instead of risking the stack.
const int kMaxNesting = 256;

// Compiles text as a shader of a type; null on failure with errors holding one message per problem.
std::shared_ptr<QLUnit> Compile(const std::string& text, int type, std::vector<std::string>& errors);
} // namespace Qlsl

} // namespace Tarsel
