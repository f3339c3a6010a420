#pragma once

#include <map>
#include <string>

#include "effects/IPrototypeInterface.h"

namespace Tarsel::Effects
{

class Library;

class PrototypeInterface : public IPrototypeInterface
{
public:
	PrototypeInterface();
	~PrototypeInterface() override;
	PrototypeInterface(const PrototypeInterface&) = delete;
	PrototypeInterface& operator=(const PrototypeInterface&) = delete;

	bool Init(Library* library, InterfaceDefinition* definition);
	void Shutdown();

	ReferencePrototypeInterface* GetReference(IGraph* graph) override;
	InterfaceDefinition* GetDefinition() override { return _pDefinition; }
	std::string GetMethodNameMangled(const std::string& method) const override;
	bool HasMethod(const std::string& method) const override;
	IMgrEffects* GetMgrEffects() const override;

	std::string GetName() const;

private:
	Library* _pLibrary;
	InterfaceDefinition* _pDefinition;
	std::map<IGraph*, ReferencePrototypeInterface*> _mReferences;
};

} // namespace Tarsel::Effects
