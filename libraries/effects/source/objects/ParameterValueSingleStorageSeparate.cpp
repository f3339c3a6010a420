#include "objects/ParameterValueSingleStorageSeparate.h"

#include "core/Result.h"
#include "objects/ParameterValueConsole.h"
#include "objects/ParameterValueExpression.h"
#include "syntax/Syntax.h"
#include "values/ValueFactory.h"

namespace Tarsel::Effects
{

namespace
{
// Every sampler is a texture handle on the host; the program's declaration keeps the declared kind.
TypeSpecifier StoredType(TypeSpecifier eType)
{
	return eType == kType_Sampler3D || eType == kType_SamplerCube ? kType_Sampler2D : eType;
}
} // namespace

ParameterValueSingle* ParameterValueSingleStorageSeparate::Create(IMgrEffects* pMgrEffects,
                                                                  const VariableDeclaration* pDecl,
                                                                  const std::string& sName, Result* pResult)
{
	auto* pParameter =
	    new ParameterValueAccessors<FacadeParameterValueSingle<ParameterValueSingleStorageSeparate>>();
	if (pParameter->Init(pMgrEffects, pDecl, sName, pResult))
		return pParameter;
	delete pParameter;
	return nullptr;
}

ParameterValueSingleStorageSeparate::~ParameterValueSingleStorageSeparate()
{
	Shutdown();
}

bool ParameterValueSingleStorageSeparate::Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                                               const std::string& sName, Result* pResult)
{
	Shutdown();
	if (!pDecl)
		return false;
	_InitName(pMgrEffects, pDecl, sName);
	const TypeSpecifier eType = GetTypeSpecifier();
	if (!_SetStorage(CreateStorageSeparate(pMgrEffects, StoredType(eType), 1, false)))
	{
		ConsoleOf(pMgrEffects)->Message("ParameterValueSingleStorageSeparate::Init Storage\n");
		if (pResult)
		{
			pResult->Add("Unsupported type \"%s\"", TypeSpecifierToString(eType));
			pResult->Add("%s", GetName().c_str());
		}
		Shutdown();
		return false;
	}
	const Expression* pInitializer = pDecl->GetInitializer();
	if (pInitializer && !InitializeValue(pMgrEffects, _pStorage, eType, pInitializer, 0, pResult))
	{
		if (pResult)
		{
			pResult->Add("Initializer");
			pResult->Add("%s", GetName().c_str());
		}
		return false;
	}
	return true;
}

bool ParameterValueSingleStorageSeparate::Shutdown()
{
	_ShutdownValue();
	return true;
}

bool ParameterValueSingleStorageSeparate::CollectShader(Module* pModule)
{
	return pModule && _pDecl &&
	       AddUniformDeclaration(pModule, _pDecl->GetType()->Clone(pModule), _sNameMangled);
}

} // namespace Tarsel::Effects
