#pragma once

#include <string>

#include "quillon/IQLShader.h"

namespace Tarsel
{
class Result;
} // namespace Tarsel

namespace Tarsel::Effects
{

class CompoundStatement;
class IMgrEffects;
class IReferenceGraph;
class Module;

// Writes the entry points of an effect (`setup` and `main`) as a small API shader of their own that calls
// into the graph's shader, which the effect links with it. The kinds differ in the entry method, in whether
// the graph's globals and constructors take part, and in the shape of `ql_OutputRayCount`.
class CompilerShaderRoot
{
public:
	virtual ~CompilerShaderRoot() {}

	bool Compile(Result* result);

protected:
	struct Kind
	{
		const char* szEntry;
		// Ray stages: globals, graph constructors and one ray count per output ray class.
		bool bRay;
		// Console line of a rejected text; null for none.
		const char* szMessageSetString;
	};

	CompilerShaderRoot(IMgrEffects* mgrEffects, IReferenceGraph* referenceGraph, IQLShader* qlShader,
	                   const Kind& kind);

	virtual bool _CollectVertexAttributeDeclarations(Module*) { return true; }
	bool _CollectSetup(Module* module, IReferenceGraph* referenceGraph);
	bool _CollectMain(Module* module, IReferenceGraph* referenceGraph);
	bool _CollectGetRayCount(Module* module, CompoundStatement* body, const char* name, int index);
	bool _CollectGetRayCount(Module* module, CompoundStatement* body, const char* name);

	IMgrEffects* _pMgrEffects;
	IReferenceGraph* _pReferenceGraph;
	IQLShader* _pQLShader;

private:
	bool _Collect(Module* module);
	bool _CollectPrototypes(Module* module);
	bool _SetString(const std::string& text, Result* result);

	Kind _kind;
};

} // namespace Tarsel::Effects
