#include "objects/PrototypeParameterInterface.h"

#include "effects/IMgrEffects.h"
#include "effects/IPrototypeInterface.h"
#include "effects/IPrototypeShader.h"
#include "objects/ReferencePrototypeDeclaration.h"

namespace Tarsel::Effects
{

PrototypeParameterInterface::~PrototypeParameterInterface()
{
	Shutdown();
}

// The single and array references are one stand-in until the graph's own references exist.
IReferencePrototypeParameter*
PrototypeParameterInterface::CreateReference(IReferencePrototypeShader* pReference)
{
	auto* pCreated = new ReferencePrototypeParameterInterfaceSingle();
	if (pCreated->Init(this, pReference))
		return pCreated;
	delete pCreated;
	return nullptr;
}

bool PrototypeParameterInterface::DestroyReference(IReferencePrototypeParameter* pReference)
{
	delete pReference;
	return true;
}

bool PrototypeParameterInterface::Shutdown()
{
	if (_pMgrEffects)
	{
		_pMgrEffects->DestroyKey(_key);
		_key = Key::Null();
	}
	_pMgrEffects = nullptr;
	_pDecl = nullptr;
	_pPrototypeInterface = nullptr;
	_pPrototypeShader = nullptr;
	return true;
}

bool PrototypeParameterInterface::_Init(const VariableDeclaration* pDecl, IPrototypeInterface* pInterface,
                                        IPrototypeShader* pShader, const std::string& sName)
{
	Shutdown();
	_pDecl = pDecl;
	_pPrototypeInterface = pInterface;
	_pPrototypeShader = pShader;
	_bInterface = pInterface != nullptr;
	_pMgrEffects = pInterface ? pInterface->GetMgrEffects() : pShader ? pShader->GetMgrEffects() : nullptr;
	_sName = sName;
	_key = _pMgrEffects ? _pMgrEffects->CreateKey() : Key::Null();
	_sNameMangled = sName + _key.ToString();
	return true;
}

} // namespace Tarsel::Effects
