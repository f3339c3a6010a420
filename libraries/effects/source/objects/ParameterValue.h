#pragma once

#include "core/Delegate.h"
#include "manager/Key.h"
#include "objects/ParameterCommon.h"
#include "values/PolicyAccessor.h"

#include <string>

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class Expression;
class FieldSelection;
class IMgrEffects;
class IStorage;
class Module;
class Type;
class VariableDeclaration;
template <class T>
class TIParentSyntax;

// Adds "uniform type name;" to the module, which takes the type.
bool AddUniformDeclaration(Module* pModule, Type* pType, const std::string& sName);
// Replaces sName.length by a variable named sNameLength; any other field of sName fails, other selections
// are left.
bool ReplaceReferenceLength(FieldSelection* pSelection, TIParentSyntax<Expression>* pParent,
                            const std::string& sName, const std::string& sNameLength);

// The array forms with a count, written into the storage from element 0 on.
template <class Base, class T>
class AccessorArray : public Base
{
public:
	using Base::Base;
	using Base::Get;
	using Base::Set;
	bool Set(const T* pValues, int nCount) override { return this->_pStorage->Set(pValues, nCount); }
};

template <class Base>
class PolicyAccessorArrayStorage
    : public FoldLayers<Base, AccessorArray, bool, int, float, QLprimitive, QLtexture*, Vector2i, Vector3i,
                        Vector4i, Vector2f, Vector3f, Vector4f, Matrix33f, Matrix44f>::Type
{
};

// The whole typed family over a class that has a _pStorage: what is actually instantiated for value
// parameters and local parameters.
template <class P>
using ParameterValueAccessors = PolicyAccessorValueStorage<PolicyAccessorValueOffsetStorage<
    PolicyAccessorReferenceStorage<PolicyAccessorReferenceOffsetStorage<PolicyAccessorArrayStorage<P>>>>>;

// What value parameters share: a declaration, a key, the mangled name made from it, and the storage that
// holds the values.
class ParameterValue : public ParameterCommon
{
public:
	~ParameterValue() override;
	ParameterValue(const ParameterValue&) = delete;
	ParameterValue& operator=(const ParameterValue&) = delete;

	bool AddListenerChangeValue(const Listener& listener) override;
	bool RemoveListenerChangeValue(const Listener& listener) override;

	// Per-graph parameter references are made by the graph; until it exists there are none.

	// Values come from the host, never from generated constructors.
	bool CollectConstructor(CompoundStatement* pBody) override;
	bool IsComplete() const override { return true; }
	ParameterClass GetClass() const override { return kParameterClass_Value; }
	TypeSpecifier GetTypeSpecifier() const override;
	std::string GetType() const override;
	std::string GetName() const override;
	bool IsDefault(int) const override { return false; }
	bool IsDefault() const override { return false; }
	bool GetAsString(std::string& sValue, int index) const override;
	bool GetAsString(std::string& sValue) const override;

	const std::string& GetNameMangled() const { return _sNameMangled; }
	IMgrEffects* GetMgrEffects() const { return _pMgrEffects; }
	const VariableDeclaration* GetDeclaration() const { return _pDecl; }
	IStorage* GetStorage() const { return _pStorage; }
	const Key& GetKey() const { return _key; }

protected:
	ParameterValue() = default;

	// Takes a key and names the parameter sName followed by the key text.
	void _InitName(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const std::string& sName);
	// Owns the storage and relays its value changes.
	bool _SetStorage(IStorage* pStorage);
	// Destroys the storage, returns the key and forgets manager and declaration.
	void _ShutdownValue();

	IMgrEffects* _pMgrEffects = nullptr;
	const VariableDeclaration* _pDecl = nullptr;
	Key _key;
	std::string _sNameMangled = "uninitialized";
	IStorage* _pStorage = nullptr;

private:
	bool _OnChangeValue(IStorage* pStorage);

	ListenerSet<Listener> _setListenersChangeValue;
};

} // namespace Tarsel::Effects
