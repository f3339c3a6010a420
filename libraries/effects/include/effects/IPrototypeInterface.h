#pragma once

#include <string>

#include "effects/Export.h"

namespace Tarsel::Effects
{

class IGraph;
class IMgrEffects;
class InterfaceDefinition;
class ReferencePrototypeInterface;

// The class-level view of one interface: what its methods are called in generated code.
class TARSEL_EFFECTS_EXPORT IPrototypeInterface
{
public:
	virtual ~IPrototypeInterface() {}

	// The graph's reference, made on first request; null when it cannot be made.
	virtual ReferencePrototypeInterface* GetReference(IGraph* graph) = 0;
	virtual InterfaceDefinition* GetDefinition() = 0;
	virtual std::string GetMethodNameMangled(const std::string& method) const = 0;
	virtual bool HasMethod(const std::string& method) const = 0;
	virtual IMgrEffects* GetMgrEffects() const = 0;
};

} // namespace Tarsel::Effects
