#pragma once

#include "core/Delegate.h"
#include "manager/Key.h"
#include "objects/IMember.h"

#include <string>

namespace Tarsel
{
class IMgrConsole;
class Result;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IAccess;
class IMgrEffects;
class VariableDeclaration;

// What members share: a declaration, a key, the mangled name made from it, and the access that declares
// and addresses the member in generated code.
class MemberValue : public IMember
{
public:
	~MemberValue() override;
	MemberValue(const MemberValue&) = delete;
	MemberValue& operator=(const MemberValue&) = delete;

	bool AddListenerChangeLength(const ListenerChangeLength& listener) override;
	bool RemoveListenerChangeLength(const ListenerChangeLength& listener) override;
	// Per-graph member references are made by the graph; until it exists there are none.
	IReferenceMember* CreateReference(IGraph* pGraph) override;
	bool DestroyReference(IReferenceMember* pReference) override;
	std::string GetType() const override;
	std::string GetName() const override;

	bool Shutdown();

	TypeSpecifier GetTypeSpecifier() const;
	const std::string& GetNameMangled() const { return _sNameMangled; }
	const VariableDeclaration* GetDeclaration() const { return _pDecl; }
	IAccess* GetAccess() const { return _pAccess; }

protected:
	MemberValue() = default;

	// Takes a key and names the member sName followed by the key text.
	void _InitName(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl, const std::string& sName);
	// Members declared const are mutable uniforms, the others plain globals.
	int _GetAccessMode() const;
	bool _VisitAccessTransformations(VisitorTransformation& delegate);
	bool _NotifyChangeLength();

	IMgrEffects* _pMgrEffects = nullptr;
	const VariableDeclaration* _pDecl = nullptr;
	Key _key;
	std::string _sNameMangled = "uninitialized";
	IAccess* _pAccess = nullptr;

private:
	ListenerSet<ListenerChangeLength> _setListenersChangeLength;
};

} // namespace Tarsel::Effects
