#pragma once

#include <memory>
#include <string>

#include "../graph/GraphTestSupport.h"
#include "codegen/CompilerShaderRootFrame.h"
#include "codegen/CompilerShaderRootPrefixRay.h"
#include "codegen/CompilerShaderRootRay.h"
#include "codegen/PolicyVertexSurface.h"
#include "graph/IReferenceGraph.h"
#include "quillon/IQLProgram.h"
#include "quillon/IQuillonContext.h"

namespace Tarsel::Effects::Testing
{

// Roots with and without Init and GetRayCount, for ray and for frame stages.
const char* const kEntryLibrary = R"(
interface Surface { void Shade(); }
class Wood : Surface { void Init() {} int GetRayCount(int rayClass) { return rayClass; } void Shade() {} }
class Bare : Surface { void Shade() {} }
interface Renderer { void Render(); }
class Camera : Renderer { void Init() {} int GetRayCount() { return 1; } void Render() {} }
class Still : Renderer { void Render() {} }
)";

// Plays the part of an effect: owns the program, the root API shader and, for surfaces, the vertex policy,
// and compiles them in the effect's order.
class EffectDouble
{
public:
	EffectDouble(IMgrEffects* mgr, IGraph* graph) : _pMgr(mgr), _pGraph(graph)
	{
		program = Context()->CreateProgram();
		reference = graph->CreateReference(nullptr);
		if (IsSurface())
		{
			EXPECT_TRUE(policy.Init(Self(), mgr, program));
			EXPECT_TRUE(policy.BindGraph(graph));
		}
	}
	~EffectDouble()
	{
		policy.Shutdown();
		if (root)
			Context()->DestroyShader(root);
		if (_pGraph)
			_pGraph->DestroyReference(reference);
		Context()->DestroyProgram(program);
	}
	bool IsSurface() const { return _pGraph->GetType() == IQLShader::kType_Ray; }
	IEffect* Self() { return reinterpret_cast<IEffect*>(this); }
	IQuillonContext* Context() { return _pMgr->GetQuillonContext(); }
	void ForgetGraph() { _pGraph = nullptr; }

	// The root alone, as the compiler of the graph's kind makes it.
	bool CompileRoot(Result* result)
	{
		if (root == nullptr)
			root = Context()->CreateShader(_pGraph->GetType());
		switch (_pGraph->GetType())
		{
		case IQLShader::kType_Ray:
			return CompilerShaderRootRay(_pMgr, policy.GetShaderVertex(), reference, root).Compile(result);
		case IQLShader::kType_Frame:
			return CompilerShaderRootFrame(_pMgr, reference, root).Compile(result);
		default:
			return CompilerShaderRootPrefixRay(_pMgr, reference, root).Compile(result);
		}
	}
	// Graph, root and vertex stage, attached and linked.
	bool CompileAndLink(Result* result)
	{
		if (!_pGraph->Compile(result) || !CompileRoot(result) || (IsSurface() && !policy.Compile()))
			return false;
		program->AttachShader(root);
		program->AttachShader(_pGraph->GetQLShader());
		std::vector<std::string> errors;
		const bool linked = program->Link(errors);
		for (const std::string& error : errors)
			result->Add("%s", error.c_str());
		program->DetachShader(_pGraph->GetQLShader());
		program->DetachShader(root);
		return linked;
	}
	std::string RootText() const { return root ? root->GetString() : std::string(); }
	std::string VertexText() const
	{
		ShaderVertex* vertex = policy.GetShaderVertex();
		return vertex && vertex->GetQLShader() ? vertex->GetQLShader()->GetString() : std::string();
	}

	IQLProgram* program = nullptr;
	IReferenceGraph* reference = nullptr;
	IQLShader* root = nullptr;
	PolicyVertexSurface policy;

private:
	IMgrEffects* _pMgr;
	IGraph* _pGraph;
};

} // namespace Tarsel::Effects::Testing
