#include "codegen/CompilerShaderRoot.h"

#include "codegen/SyntaxBuild.h"
#include "codegen/VisitorPrintTsl.h"
#include "core/Result.h"
#include "effects/IMgrEffects.h"
#include "graph/CollectorDeclaration.h"
#include "graph/IReferenceGraph.h"
#include "graph/IReferenceShader.h"
#include "objects/ParameterValueConsole.h"

namespace Tarsel::Effects
{

namespace
{

// The API sizes ql_OutputRayCount by the number of output ray classes of a ray stage.
const int kCountRayClasses = 8;

IGraph* GraphOf(IReferenceGraph* referenceGraph)
{
	return referenceGraph ? referenceGraph->GetGraph() : nullptr;
}

IReferenceShader* RootOf(IReferenceGraph* referenceGraph)
{
	IGraph* graph = GraphOf(referenceGraph);
	return graph ? graph->GetReferenceShader() : nullptr;
}

} // namespace

CompilerShaderRoot::CompilerShaderRoot(IMgrEffects* mgrEffects, IReferenceGraph* referenceGraph,
                                       IQLShader* qlShader, const Kind& kind)
    : _pMgrEffects(mgrEffects), _pReferenceGraph(referenceGraph), _pQLShader(qlShader), _kind(kind)
{
}

bool CompilerShaderRoot::Compile(Result* result)
{
	if (_pMgrEffects == nullptr || _pQLShader == nullptr || RootOf(_pReferenceGraph) == nullptr)
		return false;
	Module* module = Module::Create();
	if (!_Collect(module))
	{
		delete module;
		return false;
	}
	VisitorPrintTsl printer(result, _pMgrEffects, false);
	const bool printed = printer.Visit(module);
	delete module;
	if (!printed)
		return false;
	_pQLShader->SetName(GraphOf(_pReferenceGraph)->GetNameMangled() + "_root");
	return _SetString(printer.result(), result);
}

bool CompilerShaderRoot::_Collect(Module* module)
{
	CollectorDeclarationRayAttribute rayAttributes(module);
	IMgrEffects::VisitorTyped visitRay = MakeDelegate(&rayAttributes, &CollectorDeclaration::Collect);
	if (!_pMgrEffects->VisitRayAttributes(visitRay) || !_CollectVertexAttributeDeclarations(module))
		return false;
	CollectorDeclarationVariableGlobal globals(module);
	IMgrEffects::VisitorTyped visitGlobals = MakeDelegate(&globals, &CollectorDeclaration::Collect);
	if (_kind.bRay && !_pMgrEffects->VisitVariablesGlobal(visitGlobals))
		return false;
	return _CollectSetup(module, _pReferenceGraph) && _CollectMain(module, _pReferenceGraph) &&
	       _CollectPrototypes(module);
}

bool CompilerShaderRoot::_CollectPrototypes(Module* module)
{
	IGraph* graph = GraphOf(_pReferenceGraph);
	if (_kind.bRay &&
	    ((graph->HasConstructorStatic() && !graph->CollectDeclarationConstructorStatic(module)) ||
	     (graph->HasConstructor() && !graph->CollectDeclarationConstructor(module))))
		return false;
	IReferenceShader* root = graph->GetReferenceShader();
	for (const char* method : {"Init", "GetRayCount"})
		if (root->HasMethod(method) && !root->CollectDeclarationMethod(module, method))
			return false;
	return root->CollectDeclarationMethod(module, _kind.szEntry);
}

bool CompilerShaderRoot::_CollectSetup(Module* module, IReferenceGraph* referenceGraph)
{
	IReferenceShader* root = RootOf(referenceGraph);
	CompoundStatement* body = module->CreateCompoundStatement();
	if (root->HasMethod("Init"))
		AddExpression(module, body, BuildCall(module, root->GetMethodMangled("Init")));
	if (root->HasMethod("GetRayCount"))
	{
		const std::string name = root->GetMethodMangled("GetRayCount");
		if (!_kind.bRay)
			_CollectGetRayCount(module, body, name.c_str());
		else
			for (int index = 0; index < kCountRayClasses; ++index)
				_CollectGetRayCount(module, body, name.c_str(), index);
	}
	return DefineFunctionVoid(module, "setup", body);
}

bool CompilerShaderRoot::_CollectGetRayCount(Module* module, CompoundStatement* body, const char* name,
                                             int index)
{
	FunctionCall* count = BuildCall(module, name);
	count->AddParameter(module->CreateIntConstant(index));
	AddAssignment(
	    module, body,
	    module->CreateSubscript(BuildVariable(module, "ql_OutputRayCount"), module->CreateIntConstant(index)),
	    count);
	return true;
}

bool CompilerShaderRoot::_CollectGetRayCount(Module* module, CompoundStatement* body, const char* name)
{
	AddAssignment(module, body, BuildVariable(module, "ql_OutputRayCount"), BuildCall(module, name));
	return true;
}

bool CompilerShaderRoot::_CollectMain(Module* module, IReferenceGraph* referenceGraph)
{
	IGraph* graph = GraphOf(referenceGraph);
	IReferenceShader* root = graph->GetReferenceShader();
	if (!root->HasMethod(_kind.szEntry))
		return false;
	CompoundStatement* body = module->CreateCompoundStatement();
	if (_kind.bRay && graph->HasConstructorStatic())
		AddExpression(module, body, BuildCall(module, graph->GetConstructorStatic()));
	if (_kind.bRay && graph->HasConstructor())
		AddExpression(module, body, BuildCall(module, graph->GetConstructor()));
	AddExpression(module, body, BuildCall(module, root->GetMethodMangled(_kind.szEntry)));
	return DefineFunctionVoid(module, "main", body);
}

bool CompilerShaderRoot::_SetString(const std::string& text, Result* result)
{
	std::vector<std::string> errors;
	const bool compiled = _pQLShader->SetString(text, errors);
	// The device's own words: the root has no library lines to point back to.
	for (const std::string& error : errors)
		if (result)
			result->Add("%s", error.c_str());
	if (!compiled && _kind.szMessageSetString)
		ConsoleOf(_pMgrEffects)->Message("%s", _kind.szMessageSetString);
	return compiled;
}

} // namespace Tarsel::Effects
