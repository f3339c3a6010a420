#pragma once

#include "effects/IMgrEffects.h"
#include "objects/IReferencePrototypeShader.h"
#include "objects/ParameterValueConsole.h"
#include "syntax/Syntax.h"

#include <algorithm>
#include <map>
#include <string>

namespace Tarsel::Effects
{

// The layout and per-graph reference bookkeeping that the four value descriptors share. I is the
// descriptor interface (parameter or member), R the reference it hands out, one per graph.
template <class I, class R>
class PrototypeDescriptorValue : public I
{
public:
	typedef typename I::Reference Reference;

	~PrototypeDescriptorValue() override
	{
		Shutdown();
		for (auto& entry : _mReferences)
			delete entry.second;
		_mReferences.clear();
	}
	PrototypeDescriptorValue(const PrototypeDescriptorValue&) = delete;
	PrototypeDescriptorValue& operator=(const PrototypeDescriptorValue&) = delete;

	TypeSpecifier GetType() const override
	{
		return _pDecl ? _pDecl->GetType()->GetTypeSpecifier() : kType_Void;
	}
	std::string GetName() const override
	{
		return _pDecl ? _pDecl->GetIdentifier()->GetString() : std::string();
	}
	const std::string& GetNameMangled() const override { return _sNameMangled; }

	Reference* CreateReference(IReferencePrototypeShader* pReferenceShader) override
	{
		IGraph* pGraph = pReferenceShader ? pReferenceShader->GetGraph() : nullptr;
		auto it = _mReferences.find(pGraph);
		if (it != _mReferences.end())
			return it->second;
		R* pReference = new R();
		if (!pReference->Init(this, pReferenceShader))
		{
			delete pReference;
			return nullptr;
		}
		_mReferences[pGraph] = pReference;
		return pReference;
	}

	bool DestroyReference(Reference* pReference) override
	{
		// Found by identity, so that a reference given back twice is never read after it has gone.
		auto it = std::find_if(_mReferences.begin(), _mReferences.end(),
		                       [pReference](const auto& entry) { return entry.second == pReference; });
		if (!pReference || it == _mReferences.end())
		{
			ConsoleOf(_pMgrEffects)->Message("%s::DestroyReference Reference Not Found\n", _GetClassName());
			return false;
		}
		R* pKept = it->second;
		_mReferences.erase(it);
		delete pKept;
		return true;
	}

	// Returns the key; safe to repeat. References stay until destruction.
	bool Shutdown()
	{
		if (_pMgrEffects)
		{
			_pMgrEffects->DestroyKey(_key);
			_key = Key::Null();
		}
		_pMgrEffects = nullptr;
		_pDecl = nullptr;
		return true;
	}

	IMgrEffects* GetMgrEffects() const { return _pMgrEffects; }
	const VariableDeclaration* GetDeclaration() const { return _pDecl; }
	const Key& GetKey() const { return _key; }
	size_t GetCountReferences() const { return _mReferences.size(); }

protected:
	PrototypeDescriptorValue() = default;

	// Takes the key and names the descriptor sPrefix followed by the key text.
	bool _Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const std::string& sPrefix)
	{
		Shutdown();
		_pMgrEffects = pMgrEffects;
		_pDecl = pDecl;
		_key = pMgrEffects ? pMgrEffects->CreateKey() : Key::Null();
		_sNameMangled = sPrefix + _key.ToString();
		return true;
	}
	// The class name that starts the console messages.
	virtual const char* _GetClassName() const = 0;

	IMgrEffects* _pMgrEffects = nullptr;
	const VariableDeclaration* _pDecl = nullptr;
	Key _key;
	std::string _sNameMangled;

private:
	std::map<IGraph*, R*> _mReferences;
};

} // namespace Tarsel::Effects
