#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "PrintTestSupport.h"
#include "core/Console.h"
#include "core/Result.h"
#include "manager/MgrEffectsImpl.h"

using namespace Tarsel;
using namespace Tarsel::Effects;
using namespace Tarsel::Effects::Testing;

namespace
{

using Strings = std::vector<std::string>;

class PrintOutputs : public ::testing::Test
{
protected:
	void SetUp() override
	{
		_pPrevious = SetMgrConsole(&console);
		mgr.AcquireOutput(kType_Vec3, "a");
		mgr.AcquireOutput(kType_Vec3, "b");
	}
	void TearDown() override { SetMgrConsole(_pPrevious); }

	// Prints void main() { accumulate(<arguments>); } with a global vec3 c.
	bool PrintAccumulate(bool bIndices, const std::function<std::vector<Expression*>(Tree&)>& arguments)
	{
		t.Global(kType_Vec3, "c");
		t.Define(t.Proto(kType_Void, "main"), {t.E(t.Call("accumulate", arguments(t)))});
		VisitorPrintTsl printer(nullptr, &mgr, bIndices);
		const bool bPrinted = printer.Visit(t.m.get());
		sText = printer.result();
		return bPrinted;
	}

	RecordingConsole console;
	MgrEffectsImpl mgr;
	Tree t;
	std::string sText;

private:
	IMgrConsole* _pPrevious = nullptr;
};

} // namespace

TEST_F(PrintOutputs, UsedOutputsAreDeclaredFirstInNameOrderAndTheLineMapFollows)
{
	t.Global(kType_Vec3, "c");
	auto Accumulate = [&](Expression* pOutput) { return t.E(t.Call("accumulate", {pOutput, t.V("c")})); };
	const std::vector<Statement*> vBody = {Accumulate(t.V("b")), Accumulate(t.V("a")), Accumulate(t.V("a")),
	                                       Accumulate(t.I(3)), Accumulate(t.V("unknown"))};
	t.Define(t.Proto(kType_Void, "main"), vBody);
	VisitorPrintTsl printer(nullptr, &mgr, true);
	ASSERT_TRUE(printer.Visit(t.m.get()));
	EXPECT_EQ(printer.result(), Fixture("accumulate.qlray"));
	EXPECT_EQ(printer.GetOutputsUsed(), (std::set<std::string>{"a", "b"}));
	for (int nLine : {1, 2, 3, 4})
		EXPECT_EQ(printer.GetSyntaxForLine(nLine), t.m.get());
	EXPECT_EQ(printer.GetSyntaxForLine(5), t.m->GetVariableDeclarations()[0]);
	for (size_t i = 0; i < vBody.size(); ++i)
		EXPECT_EQ(printer.GetSyntaxForLine(10 + static_cast<int>(i)), vBody[i]);
	EXPECT_EQ(CompileOnDevice(printer.result(), IQLShader::kType_Ray), Strings());
	const std::string sOmitted = "accumulate() call refers to unknown output 'unknown', call omitted...";
	EXPECT_EQ(t.m->WarningMessages(), Strings{sOmitted});
	EXPECT_EQ(console.GetErrors(), Strings{sOmitted + "\n"});
}

TEST_F(PrintOutputs, IntConstantOutputNeedsNoIndices)
{
	ASSERT_TRUE(PrintAccumulate(false, [](Tree& t) { return std::vector<Expression*>{t.I(3), t.V("c")}; }));
	EXPECT_NE(sText.find("\taccumulate(3, c);\n"), std::string::npos);
}

TEST_F(PrintOutputs, NamedOutputWithoutIndicesFails)
{
	EXPECT_FALSE(PrintAccumulate(false,
	                             [](Tree& t) {
		                             return std::vector<Expression*>{t.V("a"), t.V("c")};
	                             }));
	const Strings vWarning = {"CANNOT GENERATE QLSL WITHOUT OUTPUT ATTACHMENT INDEX ARRAY\n"};
	EXPECT_EQ(t.m->WarningMessages(), vWarning);
	EXPECT_EQ(console.GetErrors(), vWarning);
}

TEST_F(PrintOutputs, MalformedCallsFail)
{
	const std::string sMalformed =
	    "Malformed accumulate() call found during code generation - must be of the form "
	    "accumulate(output, value)";
	EXPECT_FALSE(PrintAccumulate(true, [](Tree& t) { return std::vector<Expression*>{t.V("a")}; }));
	EXPECT_EQ(t.m->ErrorMessages(), Strings{sMalformed});
	EXPECT_EQ(console.GetErrors(), Strings{sMalformed + "\n"});

	t.m.reset(Module::Create());
	const std::string sFirst =
	    "First parameter of an accumulate() call must be an output variable or int constant";
	EXPECT_FALSE(PrintAccumulate(true,
	                             [](Tree& t) {
		                             return std::vector<Expression*>{t.F("1.0"), t.V("c")};
	                             }));
	EXPECT_EQ(t.m->ErrorMessages(), Strings{sFirst});
	EXPECT_EQ(console.GetErrors().back(), sFirst + "\n");
}

TEST_F(PrintOutputs, UnresolvedMethodCallsFailWithTheirLocation)
{
	const std::string sSource = "shaders/lib.tsl";
	Result result;
	for (bool bOnVariable : {true, false})
	{
		t.m.reset(Module::Create());
		Expression* pObject = bOnVariable ? static_cast<Expression*>(t.V("light")) : t.Call("Lookup");
		pObject->SetRange(LocationRange(&sSource, 7, 2, 7, 7));
		t.Define(t.Proto(kType_Void, "main"), {t.E(t.m->CreateFunctionSelection(pObject, t.Call("Shade")))});
		VisitorPrintTsl printer(&result, nullptr, false);
		EXPECT_FALSE(printer.Visit(t.m.get()));
	}
	EXPECT_EQ(result.GetMessages(), (Strings{"lib.tsl:7: Class \"light\" cannot be found.",
	                                         "lib.tsl:7: Class for function selection cannot be resolved."}));
}

// A compiler error inside a block at depth two, below the output-index lines, leads back to its statement.
TEST_F(PrintOutputs, DeviceErrorLinesLeadBackToTheStatement)
{
	t.Global(kType_Vec3, "c");
	Statement* pWrong = t.E(t.Set(t.V("c"), t.V("undeclared")));
	t.Define(t.Proto(kType_Void, "main"), {t.E(t.Call("accumulate", {t.V("a"), t.V("c")})),
	                                       t.If(t.m->CreateBoolConstant(true), t.Block({pWrong}))});
	VisitorPrintTsl printer(nullptr, &mgr, true);
	ASSERT_TRUE(printer.Visit(t.m.get()));
	const Strings vErrors = CompileOnDevice(printer.result(), IQLShader::kType_Ray);
	ASSERT_EQ(vErrors.size(), 1u);
	const size_t iLine = vErrors[0].find("Line ");
	ASSERT_NE(iLine, std::string::npos) << vErrors[0];
	EXPECT_EQ(printer.GetSyntaxForLine(std::atoi(vErrors[0].c_str() + iLine + 5)), pWrong)
	    << printer.result();
}
