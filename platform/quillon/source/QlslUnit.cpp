#include "QlslUnit.h"

#include "QlslBuiltins.h"
#include "QlslDiagnostics.h"
#include "QlslLexer.h"
#include "QlslParser.h"

#include <algorithm>

namespace Tarsel
{

const char* QLStorageText(QLStorage storage)
{
	switch (storage)
	{
	case kQLStorage_None:
		return "";
	case kQLStorage_Attribute:
		return "attribute";
	case kQLStorage_Varying:
		return "varying";
	case kQLStorage_TransformedVarying:
		return "transformed varying";
	case kQLStorage_TransformedInvariantVarying:
		return "transformed invariant varying";
	case kQLStorage_Uniform:
		return "uniform";
	case kQLStorage_MutableUniform:
		return "mutable uniform";
	case kQLStorage_RayAttribute:
		return "rayattribute";
	}
	return "";
}

void QLUnit::IndexDefinitions()
{
	_mDefinitions.clear();
	for (size_t i = 0; i < functions.size(); ++i)
	{
		if (functions[i].defined)
			_mDefinitions.emplace(functions[i].name + "(" + functions[i].parameters + ")", i);
	}
}

const QLUnitFunction* QLUnit::FindDefinition(const std::string& key) const
{
	auto it = _mDefinitions.find(key);
	return it == _mDefinitions.end() ? nullptr : &functions[it->second];
}

namespace Qlsl
{

const char* const kStageNames[4] = {"ray", "vertex", "frame", "prefix ray"};

void Diagnostics::Error(int line, const std::string& message)
{
	if (_nErrors == kMaxErrors)
		Fatal(line, "too many errors");
	_rErrors.push_back("ERROR: String 0 Line " + std::to_string(line) + ": " + message);
	++_nErrors;
}

void Diagnostics::Fatal(int line, const std::string& message)
{
	_rErrors.push_back("ERROR: String 0 Line " + std::to_string(line) + ": " + message);
	++_nErrors;
	throw Abort();
}

void* Arena::_Allocate(size_t bytes, size_t alignment)
{
	size_t start = (_nUsed + alignment - 1) & ~(alignment - 1);
	if (_vChunks.empty() || start + bytes > _nSize)
	{
		_nSize = std::max<size_t>(64 * 1024, bytes);
		_vChunks.emplace_back(new unsigned char[_nSize]);
		start = 0;
	}
	_nUsed = start + bytes;
	return _vChunks.back().get() + start;
}

const Member* Aggregate::Find(std::string_view memberName) const
{
	for (const Member& member : members)
	{
		if (member.name == memberName)
			return &member;
	}
	return nullptr;
}

const Function* Tree::FindFunction(std::string_view name, std::string_view signature) const
{
	for (const Function& function : functions)
	{
		if (function.name == name && function.signature == signature)
			return &function;
	}
	return nullptr;
}

std::shared_ptr<QLUnit> Compile(const std::string& text, int type, std::vector<std::string>& errors)
{
	if (!StageBit(type))
	{
		errors.push_back("ERROR: String 0 Line 1: unknown shader type " + std::to_string(type));
		return nullptr;
	}
	auto unit = std::make_shared<QLUnit>();
	unit->type = type;
	unit->tree.text = text;
	std::vector<Token> tokens;
	std::string error;
	int errorLine = 1;
	if (!Tokenize(unit->tree.text, tokens, error, errorLine))
	{
		errors.push_back("ERROR: String 0 Line " + std::to_string(errorLine) + ": " + error);
		return nullptr;
	}
	Diagnostics diagnostics(errors);
	try
	{
		Parser(tokens, type, *unit, diagnostics).Run();
	}
	catch (const Abort&)
	{
	}
	if (diagnostics.Count())
		return nullptr;
	unit->IndexDefinitions();
	return unit;
}

} // namespace Qlsl
} // namespace Tarsel
