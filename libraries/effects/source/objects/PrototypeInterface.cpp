#include "objects/PrototypeInterface.h"

#include "effects/IMgrEffects.h"
#include "graph/ReferencePrototypeInterface.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/Library.h"
#include "syntax/Syntax.h"

namespace Tarsel::Effects
{

PrototypeInterface::PrototypeInterface() : _pLibrary(nullptr), _pDefinition(nullptr) {}

PrototypeInterface::~PrototypeInterface()
{
	Shutdown();
}

bool PrototypeInterface::Init(Library* library, InterfaceDefinition* definition)
{
	_pLibrary = library;
	_pDefinition = definition;
	return true;
}

void PrototypeInterface::Shutdown()
{
	for (auto& entry : _mReferences)
		delete entry.second;
	_mReferences.clear();
	_pLibrary = nullptr;
	_pDefinition = nullptr;
}

ReferencePrototypeInterface* PrototypeInterface::GetReference(IGraph* graph)
{
	auto found = _mReferences.find(graph);
	if (found != _mReferences.end())
		return found->second;
	ReferencePrototypeInterface* reference = new ReferencePrototypeInterface();
	if (!reference->Init(this, graph))
	{
		delete reference;
		return nullptr;
	}
	_mReferences[graph] = reference;
	return reference;
}

std::string PrototypeInterface::GetName() const
{
	return _pDefinition ? _pDefinition->GetName()->GetString() : std::string();
}

std::string PrototypeInterface::GetMethodNameMangled(const std::string& method) const
{
	return "__" + GetName() + "_" + method;
}

bool PrototypeInterface::HasMethod(const std::string& method) const
{
	if (_pDefinition == nullptr)
		return false;
	for (const FunctionPrototype* function : _pDefinition->GetMemberFunctions())
		if (function->GetName()->GetString() == method)
			return true;
	return false;
}

IMgrEffects* PrototypeInterface::GetMgrEffects() const
{
	return _pLibrary ? _pLibrary->GetMgrEffects() : nullptr;
}

} // namespace Tarsel::Effects
