#include "graph/ReferenceShaderGraph.h"

#include "effects/IShader.h"
#include "objects/ParameterValueConsole.h"
#include "syntax/Module.h"

namespace Tarsel::Effects
{

ReferenceShaderGraph::~ReferenceShaderGraph()
{
	Shutdown();
}

bool ReferenceShaderGraph::Init(IGraph* other, IGraph* graph)
{
	if (other == nullptr || graph == nullptr)
		return false;
	_pOther = other;
	_pGraph = graph;
	_pOther->AddListenerDelete(MakeDelegate(this, &ReferenceShaderGraph::_OnDeleteOther));
	_pOther->AddListenerChangeValue(MakeDelegate(this, &ReferenceShaderGraph::_OnChangeValueOther));
	_pOther->AddListenerChangeStructure(MakeDelegate(this, &ReferenceShaderGraph::_OnChangeStructureOther));
	_pGraph->AddDelegateCollectShader(MakeDelegate(this, &ReferenceShaderGraph::CollectShader));
	_pGraph->AddDelegateApply(MakeDelegate(this, &ReferenceShaderGraph::Apply));
	return true;
}

void ReferenceShaderGraph::_Unlisten()
{
	if (_pOther == nullptr)
		return;
	_pOther->RemoveListenerDelete(MakeDelegate(this, &ReferenceShaderGraph::_OnDeleteOther));
	_pOther->RemoveListenerChangeValue(MakeDelegate(this, &ReferenceShaderGraph::_OnChangeValueOther));
	_pOther->RemoveListenerChangeStructure(
	    MakeDelegate(this, &ReferenceShaderGraph::_OnChangeStructureOther));
	_pOther = nullptr;
}

void ReferenceShaderGraph::Shutdown()
{
	_Unlisten();
	if (_pGraph == nullptr)
		return;
	_pGraph->RemoveDelegateCollectShader(MakeDelegate(this, &ReferenceShaderGraph::CollectShader));
	_pGraph->RemoveDelegateApply(MakeDelegate(this, &ReferenceShaderGraph::Apply));
	_pGraph = nullptr;
}

bool ReferenceShaderGraph::CollectShader(Module* module)
{
	IShader* shader = _pOther ? _pOther->GetShader() : nullptr;
	if (shader == nullptr)
		return false;
	_pCollecting = module;
	IShader::VisitorMethod visitor = MakeDelegate(this, &ReferenceShaderGraph::_DeclareMethod);
	const bool declared = shader->VisitMethods(visitor);
	_pCollecting = nullptr;
	return declared;
}

bool ReferenceShaderGraph::_DeclareMethod(FunctionPrototype* prototype)
{
	FunctionPrototype* clone = prototype->Clone(_pCollecting);
	if (clone == nullptr)
	{
		ConsoleOf(_pOther->GetMgrEffects())->Message("CollectDeclarationsMethod Clone Failed\n");
		return false;
	}
	return _pCollecting->AddFunctionDeclaration(clone);
}

bool ReferenceShaderGraph::CollectDeclarationMethod(Module* module, const std::string& method)
{
	IShader* shader = _pOther ? _pOther->GetShader() : nullptr;
	return shader && shader->CollectDeclarationMethod(module, method);
}

bool ReferenceShaderGraph::HasMethod(const std::string& method)
{
	IShader* shader = _pOther ? _pOther->GetShader() : nullptr;
	return shader && shader->HasMethod(method);
}

std::string ReferenceShaderGraph::GetMethodMangled(const std::string& method)
{
	IShader* shader = _pOther ? _pOther->GetShader() : nullptr;
	return shader ? shader->GetMethodNameMangled(method) : std::string();
}

bool ReferenceShaderGraph::Apply(IQLPrimitive* primitive, IQLProgram* program)
{
	return _pOther && _pOther->Apply(primitive, program, nullptr);
}

bool ReferenceShaderGraph::_OnDeleteOther(IGraph*)
{
	_Unlisten();
	return _setListenersChangeStructure.Notify(this);
}

bool ReferenceShaderGraph::_OnChangeValueOther(IGraph*, IGraph::DelegateApply& delegate)
{
	// The other graph re-applies its own value; this graph's effects only hear that something changed.
	return _setListenersChangeValue.Notify(this) && _pGraph->AddDelegateUpdate(delegate);
}

bool ReferenceShaderGraph::_OnChangeStructureOther(IGraph*)
{
	return _setListenersChangeStructure.Notify(this);
}

} // namespace Tarsel::Effects
