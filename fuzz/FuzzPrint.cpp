// Parse, print, parse again: the two trees must be equal and print the same text, and a text that the device
// compiles must still compile once printed, and once printed without its unused functions. Taking the
// pass's marks back must print the text as before.
#include "FuzzSupport.h"

#include <memory>

#include "codegen/VisitorFindEmptyAndNeverCalledFunctions.h"
#include "codegen/VisitorPrintTsl.h"
#include "quillon/Reference.h"
#include "syntax/Module.h"
#include "syntax/TslParser.h"
#include "syntax/Visitor.h"

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{

template <class T>
bool SameList(const std::vector<T*>& vFirst, const std::vector<T*>& vSecond)
{
	if (vFirst.size() != vSecond.size())
		return false;
	for (size_t i = 0; i < vFirst.size(); ++i)
	{
		if (!vFirst[i]->Equals(vSecond[i]))
			return false;
	}
	return true;
}

// Variables of struct, class or interface type print as an empty statement, since generated code has them
// flattened away.
class FindUserTypedVariables : public Visitor
{
public:
	using Visitor::Visit;
	bool Visit(VariableDeclaration* pNode) override
	{
		bFound = bFound || pNode->GetType()->GetTypeSpecifier() == kType_UserDefined;
		return Visitor::Visit(pNode);
	}
	bool bFound = false;
};

// Classes print flattened into their members, so only a module of free definitions can come back whole.
bool CanRoundTrip(Module& module)
{
	if (!module.GetClassDefinitions().empty() || !module.GetInterfaceDefinitions().empty())
		return false;
	FindUserTypedVariables finder;
	finder.Visit(&module);
	return !finder.bFound;
}

std::vector<std::string> CompileErrors(ReferenceContext& context, const std::string& text)
{
	IQLShader* pShader = context.CreateShader(IQLShader::kType_Ray);
	std::vector<std::string> errors;
	pShader->SetString(text, errors);
	context.DestroyShader(pShader);
	return errors;
}

std::string Printed(Module* pModule)
{
	VisitorPrintTsl printer(nullptr, nullptr, false);
	TARSEL_FUZZ_CHECK(printer.Visit(pModule), "a module that printed once fails to print");
	return printer.result();
}

// A function the pass lets go while something still calls it would leave a call to an undeclared function.
void CheckOptimized(ReferenceContext& context, Module* pModule, const std::string& sPrinted)
{
	VisitorFindEmptyAndNeverCalledFunctions pass(nullptr);
	pass.Visit(pModule);
	const std::string sOptimized = Printed(pModule);
	const std::vector<std::string> errors = CompileErrors(context, sOptimized);
	TARSEL_FUZZ_CHECK(errors.empty(), errors.front() + "\n" + sOptimized);
	pass.ClearMarks();
	TARSEL_FUZZ_CHECK(Printed(pModule) == sPrinted, sPrinted + "\n----\n" + Printed(pModule));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
	static Fuzz::Environment environment;
	const std::string text(reinterpret_cast<const char*>(data), size);
	std::unique_ptr<Module> pOriginal(Module::Create());
	std::vector<std::string> errors;
	if (!TslParser::Parse(pOriginal.get(), errors, "fuzz", text, 0))
		return 0;
	VisitorPrintTsl first(nullptr, nullptr, false);
	if (!first.Visit(pOriginal.get()) || !CanRoundTrip(*pOriginal))
		return 0;

	std::unique_ptr<Module> pPrinted(Module::Create());
	errors.clear();
	const bool reparsed = TslParser::Parse(pPrinted.get(), errors, "printed", first.result(), 0);
	TARSEL_FUZZ_CHECK(reparsed, (errors.empty() ? std::string() : errors.front()) + "\n" + first.result());
	VisitorPrintTsl second(nullptr, nullptr, false);
	TARSEL_FUZZ_CHECK(second.Visit(pPrinted.get()), first.result());
	TARSEL_FUZZ_CHECK(
	    SameList(pOriginal->GetStructDefinitions(), pPrinted->GetStructDefinitions()) &&
	        SameList(pOriginal->GetVariableDeclarations(), pPrinted->GetVariableDeclarations()) &&
	        SameList(pOriginal->GetFunctionDeclarations(), pPrinted->GetFunctionDeclarations()) &&
	        SameList(pOriginal->GetFunctionDefinitions(), pPrinted->GetFunctionDefinitions()),
	    first.result());
	TARSEL_FUZZ_CHECK(second.result() == first.result(), first.result() + "\n----\n" + second.result());

	ReferenceContext context;
	if (CompileErrors(context, text).empty())
	{
		const std::vector<std::string> printedErrors = CompileErrors(context, first.result());
		TARSEL_FUZZ_CHECK(printedErrors.empty(), printedErrors.front() + "\n" + first.result());
		CheckOptimized(context, pOriginal.get(), first.result());
	}
	return 0;
}
