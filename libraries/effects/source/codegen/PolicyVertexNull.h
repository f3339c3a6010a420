#pragma once

#include <string>

#include "codegen/ShaderVertex.h"

namespace Tarsel::Effects
{

class IEffect;
class IGraph;

// Effects without geometry have no vertex stage: every operation succeeds and does nothing.
class PolicyVertexNull
{
public:
	typedef FastDelegate1<IEffect*, bool> ListenerChangeAttribute;

	bool Init(IEffect*, IMgrEffects*, IQLProgram*) { return true; }
	void Shutdown() {}
	bool BindGraph(IGraph*) { return true; }
	bool UnbindGraph() { return true; }
	bool Compile() { return true; }
	bool SetName(const std::string&) { return true; }
	bool VisitAttributes(ShaderVertex::VisitorAttribute&) { return true; }
	bool AddListenerChangeAttribute(const ListenerChangeAttribute&) { return true; }
	bool RemoveListenerChangeAttribute(const ListenerChangeAttribute&) { return true; }
	ShaderVertex* GetShaderVertex() const { return nullptr; }
};

} // namespace Tarsel::Effects
