#pragma once

#include "manager/Key.h"
#include "objects/IPrototypeParameter.h"

#include <string>

namespace Tarsel::Effects
{

class IMgrEffects;
class IPrototypeInterface;
class IPrototypeShader;
class VariableDeclaration;

// What the two descriptors of inputs that connect shaders share. The declared type names the target: an
// interface, or a shader class when no interface has that name.
class PrototypeParameterInterface : public IPrototypeParameter
{
public:
	~PrototypeParameterInterface() override;
	PrototypeParameterInterface(const PrototypeParameterInterface&) = delete;
	PrototypeParameterInterface& operator=(const PrototypeParameterInterface&) = delete;

	TypeSpecifier GetType() const override { return kType_Void; }
	std::string GetName() const override { return _sName; }
	const std::string& GetNameMangled() const override { return _sNameMangled; }
	// A new reference for every request, owned by the caller.
	IReferencePrototypeParameter* CreateReference(IReferencePrototypeShader* pReference) override;
	bool DestroyReference(IReferencePrototypeParameter* pReference) override;

	// Returns the key; safe to repeat.
	bool Shutdown();

	IMgrEffects* GetMgrEffects() const { return _pMgrEffects; }
	const VariableDeclaration* GetDeclaration() const { return _pDecl; }
	bool IsInterface() const { return _bInterface; }
	// The target: exactly one of the two is set after Init.
	IPrototypeInterface* GetPrototypeInterface() const { return _pPrototypeInterface; }
	IPrototypeShader* GetPrototypeShader() const { return _pPrototypeShader; }
	const Key& GetKey() const { return _key; }

protected:
	PrototypeParameterInterface() = default;

	// The manager comes from the target; the name is the variable name.
	bool _Init(const VariableDeclaration* pDecl, IPrototypeInterface* pInterface, IPrototypeShader* pShader,
	           const std::string& sName);

	IMgrEffects* _pMgrEffects = nullptr;
	const VariableDeclaration* _pDecl = nullptr;
	IPrototypeInterface* _pPrototypeInterface = nullptr;
	IPrototypeShader* _pPrototypeShader = nullptr;
	bool _bInterface = false;
	Key _key;
	std::string _sName;
	std::string _sNameMangled;
};

} // namespace Tarsel::Effects
