#include <gtest/gtest.h>

#include <pthread.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "TestParserHelpers.h"
#include "syntax/Visitor.h"

using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

std::string Repeat(const std::string& text, size_t count)
{
	std::string result;
	result.reserve(text.size() * count);
	for (size_t i = 0; i < count; ++i)
		result += text;
	return result;
}

// One deeply nesting form: the source of a function whose body nests depth times, and the depth that
// generated and real code need.
struct Form
{
	const char* pName;
	std::function<std::string(size_t)> source;
	size_t nRequired;
};

const Form kForms[] = {
    {"sum", [](size_t n) { return "float f(float a) { return a" + Repeat(" + a", n - 1) + "; }"; }, 10000},
    {"assignments", [](size_t n) { return "void f() { " + Repeat("x = ", n) + "1; }"; }, 10000},
    {"else_if",
     [](size_t n) { return "void f() { if (a) x = 0;" + Repeat(" else if (a) x = 1;", n - 1) + " }"; }, 2000},
    {"parentheses",
     [](size_t n) { return "float f() { return " + Repeat("a * (", n) + "a" + Repeat(")", n) + "; }"; }, 500},
    {"blocks", [](size_t n) { return "void f() " + Repeat("{ ", n) + "x = 1;" + Repeat(" }", n); }, 500},
};

// Runs the work on a thread with the default 8 MB stack, whatever the limit of the test's own thread.
void OnDefaultStack(const std::function<void()>& work)
{
	pthread_attr_t attributes;
	pthread_attr_init(&attributes);
	pthread_attr_setstacksize(&attributes, size_t(8) << 20);
	pthread_t thread;
	auto run = [](void* p) -> void*
	{
		(*static_cast<const std::function<void()>*>(p))();
		return nullptr;
	};
	ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)), 0);
	pthread_join(thread, nullptr);
	pthread_attr_destroy(&attributes);
}

bool Accepts(const Form& form, size_t depth)
{
	return ParseText(form.source(depth))->bParsed;
}

// Largest depth in [1, limit] that parses, by bisection (acceptance is monotonic in the depth).
size_t LargestAccepted(const Form& form, size_t limit)
{
	size_t accepted = 0, refused = limit + 1;
	while (refused - accepted > 1)
	{
		const size_t middle = accepted + (refused - accepted) / 2;
		(Accepts(form, middle) ? accepted : refused) = middle;
	}
	return accepted;
}

// Replaces every variable by a constant: the walk goes through every replacement link at every depth.
class VariablesToConstants : public Visitor
{
public:
	using Visitor::Visit;
	bool Visit(Variable* pNode, TIParentSyntax<Expression>* pParent) override
	{
		++nReplaced;
		return pParent->SetReplacement(pNode->GetModule()->CreateIntConstant(7));
	}
	size_t nReplaced = 0;
};

class CountVariables : public Visitor
{
public:
	using Visitor::Visit;
	bool Visit(const Variable*, TParentSyntaxConst<Expression>*) override
	{
		++nSeen;
		return true;
	}
	size_t nSeen = 0;
};

class Nesting : public ::testing::TestWithParam<Form>
{
};

// The largest accepted depth of each form, measured: it must reach what generated code needs, and one
// level more must be refused with the nesting message and nothing left behind.
TEST_P(Nesting, LargestAcceptedDepthCoversGeneratedCode)
{
	const Form& form = GetParam();
	const size_t largest = LargestAccepted(form, 200000);
	std::printf("largest accepted %s: %zu\n", form.pName, largest);
	RecordProperty("largest_accepted", std::to_string(largest));
	EXPECT_GE(largest, form.nRequired);
	ASSERT_LT(largest, 200000u) << "nesting must be capped somewhere";

	std::unique_ptr<Parsed> pRefused = ParseText(form.source(largest + 1));
	EXPECT_FALSE(pRefused->bParsed);
	ASSERT_EQ(pRefused->vErrors.size(), 1u);
	EXPECT_NE(pRefused->vErrors[0].find("Nesting too deep."), std::string::npos) << pRefused->FirstError();
	EXPECT_TRUE(pRefused->pModule->GetFunctionDefinitions().empty());
	EXPECT_EQ(pRefused->pModule->GetCountStrings(), 0u);
}

// At the largest accepted depth the tree survives everything later stages do to it.
TEST_P(Nesting, DeepestTreeClonesComparesWalksAndDies)
{
	const Form& form = GetParam();
	const size_t depth = LargestAccepted(form, 200000);
	OnDefaultStack(
	    [&]
	    {
		    std::unique_ptr<Parsed> pParsed = ParseText(form.source(depth));
		    ASSERT_TRUE(pParsed->bParsed) << pParsed->FirstError();
		    Module* pModule = pParsed->pModule.get();

		    std::unique_ptr<Module> pCopy(Module::Create());
		    pModule->Clone(pCopy.get());
		    const FunctionDefinition* pOriginal = pModule->GetFunctionDefinitions().at(0);
		    FunctionDefinition* pClone = pCopy->GetFunctionDefinitions().at(0);
		    EXPECT_TRUE(pClone->Equals(pOriginal));

		    CountVariables counter;
		    EXPECT_TRUE(static_cast<const Module*>(pModule)->AcceptVisitor(&counter));
		    EXPECT_GT(counter.nSeen, 0u);
		    VariablesToConstants replacer;
		    EXPECT_TRUE(pCopy->AcceptVisitor(&replacer));
		    EXPECT_EQ(replacer.nReplaced, counter.nSeen);
		    EXPECT_FALSE(pClone->Equals(pOriginal));
		    CountVariables recount;
		    EXPECT_TRUE(static_cast<const Module*>(pCopy.get())->AcceptVisitor(&recount));
		    EXPECT_EQ(recount.nSeen, 0u);
	    });
}

INSTANTIATE_TEST_SUITE_P(Forms, Nesting, ::testing::ValuesIn(kForms),
                         [](const ::testing::TestParamInfo<Form>& info)
                         { return std::string(info.param.pName); });

} // namespace
