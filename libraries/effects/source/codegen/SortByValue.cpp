#include "codegen/SortByValue.h"
#include "codegen/PackedNames.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace Tarsel::Effects
{

namespace
{

// The fields each operator< compares first, in its order: integers, then a name (none sorts first).
struct Leading
{
	std::array<int, 4> aFields{};
	const String* pName = nullptr;
};

Leading LeadingOf(const StructDefinition* pNode)
{
	return {{pNode->GetClass()}, pNode->GetName()};
}

Leading LeadingOf(const DeclarationStatement* pNode)
{
	const VariableDeclaration* pDeclaration = pNode->GetDeclaration();
	if (pDeclaration == nullptr)
		return {{pNode->GetClass(), 0}};
	return {{pNode->GetClass(), 1, pDeclaration->GetClass(), pDeclaration->GetStorageQualifier()},
	        pDeclaration->GetIdentifier()};
}

Leading LeadingOf(const FunctionPrototype* pNode)
{
	return {{pNode->GetClass(), pNode->GetQualifier()}, pNode->GetName()};
}

Leading LeadingOf(const FunctionDefinition* pNode)
{
	const FunctionPrototype* pPrototype = pNode->GetFunctionPrototype();
	if (pPrototype == nullptr)
		return {{0}};
	return {{1, pPrototype->GetClass(), pPrototype->GetQualifier()}, pPrototype->GetName()};
}

struct Key
{
	std::array<int, 4> aFields;
	bool bName;
	uint32_t iNode; // the node's place before sorting, and its name's in the packed names
};

template <class N>
void SortKeyed(std::vector<N*>& vNodes)
{
	if (vNodes.size() < 2)
		return;
	PackedNames names;
	std::vector<Key> vKeys(vNodes.size());
	for (size_t i = 0; i < vNodes.size(); ++i)
	{
		const Leading leading = LeadingOf(vNodes[i]);
		vKeys[i] = {leading.aFields, leading.pName != nullptr, static_cast<uint32_t>(i)};
		names.Add(leading.pName ? std::string_view(leading.pName->GetString()) : "");
	}
	const auto name = [&](const Key& key) { return names[key.iNode]; };
	std::stable_sort(vKeys.begin(), vKeys.end(),
	                 [&](const Key& a, const Key& b)
	                 {
		                 if (a.aFields != b.aFields)
			                 return a.aFields < b.aFields;
		                 if (a.bName != b.bName)
			                 return !a.bName;
		                 if (const int iOrder = name(a).compare(name(b)))
			                 return iOrder < 0;
		                 return *vNodes[a.iNode] < *vNodes[b.iNode];
	                 });
	std::vector<N*> vSorted;
	vSorted.reserve(vNodes.size());
	for (const Key& key : vKeys)
		vSorted.push_back(vNodes[key.iNode]);
	vNodes.swap(vSorted);
}

} // namespace

void SortByValue(std::vector<StructDefinition*>& vNodes)
{
	SortKeyed(vNodes);
}

void SortByValue(std::vector<DeclarationStatement*>& vNodes)
{
	SortKeyed(vNodes);
}

void SortByValue(std::vector<FunctionPrototype*>& vNodes)
{
	SortKeyed(vNodes);
}

void SortByValue(std::vector<FunctionDefinition*>& vNodes)
{
	SortKeyed(vNodes);
}

} // namespace Tarsel::Effects
