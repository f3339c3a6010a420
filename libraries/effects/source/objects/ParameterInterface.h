#pragma once

#include <set>
#include <string>
#include <vector>

#include "effects/IShader.h"
#include "manager/Key.h"
#include "objects/ParameterCommon.h"
#include "values/Value.h"

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class Expression;
class FunctionCall;
class FunctionSelection;
class IMgrEffects;
class MgrEffectsImpl;
class VariableDeclaration;
template <class T>
class TIParentSyntax;

// Replaces a method selection by a plain call of sName: pFirst (when given) in front of copies of the
// selection's own arguments.
bool ReplaceSelectionByCall(FunctionSelection* pSelection, TIParentSyntax<Expression>* pParent,
                            const std::string& sName, Expression* pFirst);

// What single inputs and input arrays that connect shaders share: the slots of connected shaders, the
// defaults the input owns, and the listening on every connected shader. A single input is one fixed slot.
class ParameterInterface : public ParameterCommon
{
public:
	~ParameterInterface() override;
	ParameterInterface(const ParameterInterface&) = delete;
	ParameterInterface& operator=(const ParameterInterface&) = delete;

	using IParameter::Get;
	using IParameter::Set;

	// Interface inputs hold no values that a program reads per primitive.
	bool AddListenerChangeValue(const Listener&) override { return true; }
	bool RemoveListenerChangeValue(const Listener&) override { return true; }
	// Calls the constructor of every connected shader, in slot order.
	bool CollectConstructor(CompoundStatement* pBody) override;
	// Every slot holds a complete shader; an empty array is complete.
	bool IsComplete() const override;
	ParameterClass GetClass() const override { return kParameterClass_Interface; }
	TypeSpecifier GetTypeSpecifier() const override { return kType_UserDefined; }
	// The declared interface or class name.
	std::string GetType() const override { return _sType; }
	std::string GetName() const override { return _sName; }
	int GetLength() const override { return _pValue ? _pValue->GetLength() : 0; }
	bool IsResizable() const override { return _pValue && _pValue->IsResizable(); }
	bool IsDefault(int index) const override;
	bool IsDefault() const override { return IsDefault(0); }
	bool GetAsString(std::string& sValue, int index) const override;
	bool GetAsString(std::string& sValue) const override { return GetAsString(sValue, 0); }
	bool Get(IShader*& pShader, int index) override;

	const std::string& GetNameMangled() const { return _sNameMangled; }
	const std::string& GetNameIndex() const { return _sNameIndex; }
	const Key& GetKey() const { return _key; }
	// The connected shader's mangled name of the method a selection calls; false, with the message naming
	// the interface or the class that lacks it, when there is none.
	bool ResolveMethod(IShader* pShader, const FunctionSelection* pSelection, std::string& sMangled) const;

	// Returns the key and releases every slot, destroying the defaults; safe to repeat.
	void Shutdown();

protected:
	ParameterInterface() = default;

	// sPrefix names the kind in generated names; a resizable value starts with one empty slot.
	bool _InitCommon(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const char* sPrefix,
	                 int nLength, bool bResizable);
	bool _Fits(IShader* pShader) const;
	// Where user-facing errors go: the result the calling operation installed, if any.
	MgrEffectsImpl* _Impl() const;
	IShader* _GetSlot(int index) const { return _pValue->Get(index); }
	// Empties one slot: the shader is no longer listened to unless another slot holds it, and a default is
	// destroyed unless another slot holds it, which then owns it.
	void _Release(int index);
	// Empties every slot; the defaults among them are destroyed unless kept.
	void _ReleaseAll(const std::set<IShader*>& setKept);
	void _Store(int index, IShader* pShader, bool bDefault);
	// Every write of a slot and of the length goes through these, which keep the count of empty slots.
	void _Put(int index, IShader* pShader);
	void _Resize(int nLength);
	bool _NotifyChangeStructure();
	// A new shader of the class a constructor call names, or null (reported to the console).
	IShader* _CreateDefault(const FunctionCall* pCall, const char* sFailure, Result* pResult) const;
	int _FindSlot(IShader* pShader, int iExcept) const;

	IMgrEffects* _pMgrEffects = nullptr;
	const VariableDeclaration* _pDecl = nullptr;
	Key _key;
	std::string _sName;
	std::string _sType;
	std::string _sNameMangled;
	std::string _sNameIndex;
	Value<IShader*>* _pValue = nullptr;
	std::vector<bool> _vDefaults;
	// A host connecting N shaders one by one asks for completeness after each: answered at once while a
	// slot is empty.
	int _nEmpty = 0;

private:
	bool _OnDeleteShader(IShader* pShader);
	bool _OnChangeStructureShader(IShader* pShader);
	void _Listen(IShader* pShader);
	void _Unlisten(IShader* pShader);

	// Set while this input asks or tells its connected shaders, so that a connection cycle (a shader
	// reaching itself through inputs) ends here instead of recursing.
	mutable bool _bChecking = false;
	bool _bNotifying = false;
};

} // namespace Tarsel::Effects
