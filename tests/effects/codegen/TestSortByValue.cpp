#include "../syntax/TreeBuilder.h"

#include "codegen/SortByValue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using namespace Tarsel::Effects;
using Tarsel::Effects::Test::TreeBuilder;

namespace
{

template <class N>
std::vector<N*> Reference(std::vector<N*> vNodes)
{
	std::stable_sort(vNodes.begin(), vNodes.end(), [](const N* pA, const N* pB) { return *pA < *pB; });
	return vNodes;
}

// Names that share long prefixes, overloads, no name at all, and every qualifier: whatever the keys decide,
// the order must be the nodes' own, and nodes that compare equal keep their places.
TEST(SortByValue, GivesTheNodesOwnStableOrder)
{
	Module m;
	TreeBuilder b(&m);
	std::mt19937 random(7);
	const char* const apNames[] = {"Light_Emit_k10", "Light_Emit_k1", "Light_Emit_k10", "a", "", nullptr};
	const TypeSpecifier aTypes[] = {kType_Float, kType_Vec3, kType_Int};
	std::vector<FunctionPrototype*> vPrototypes;
	std::vector<FunctionDefinition*> vDefinitions;
	std::vector<DeclarationStatement*> vDeclarations;
	for (int i = 0; i < 300; ++i)
	{
		const char* pName = apNames[random() % 6];
		FunctionPrototype* pPrototype = m.CreateFunctionPrototype(
		    random() % 2 ? kFunction_None : kFunction_Static, m.CreateType(aTypes[random() % 3]),
		    pName ? m.CreateString(pName) : nullptr);
		for (unsigned n = random() % 3; n > 0; --n)
			pPrototype->AddParameter(b.Param(aTypes[random() % 3], "p"));
		vPrototypes.push_back(pPrototype);
		vDefinitions.push_back(
		    m.CreateFunctionDefinition(random() % 10 ? pPrototype->Clone(&m) : nullptr, b.Block({})));
		VariableDeclaration* pVariable = b.Decl(aTypes[random() % 3], pName ? pName : "v");
		pVariable->SetStorageQualifier(random() % 2 ? kStorage_Uniform : kStorage_None);
		if (random() % 10 == 0)
		{
			Syntax::Destroy(pVariable);
			pVariable = nullptr;
		}
		vDeclarations.push_back(m.CreateDeclarationStatement(pVariable));
	}
	const auto check = [](auto vNodes)
	{
		const auto vExpected = Reference(vNodes);
		SortByValue(vNodes);
		EXPECT_EQ(vExpected, vNodes);
	};
	check(vPrototypes);
	check(vDefinitions);
	check(vDeclarations);
	for (auto* p : vPrototypes)
		Syntax::Destroy(p);
	for (auto* p : vDefinitions)
		Syntax::Destroy(p);
	for (auto* p : vDeclarations)
		Syntax::Destroy(p);
}

} // namespace
