#include "codegen/CompilerShaderRootRay.h"

#include "codegen/IAttributeVertex.h"
#include "codegen/ShaderVertex.h"
#include "graph/CollectorDeclaration.h"

namespace Tarsel::Effects
{

CompilerShaderRootRay::CompilerShaderRootRay(IMgrEffects* mgrEffects, ShaderVertex* vertex,
                                             IReferenceGraph* referenceGraph, IQLShader* qlShader)
    : CompilerShaderRoot(mgrEffects, referenceGraph, qlShader,
                         Kind{"Shade", true, "CompilerShaderRootRay::Compile SetString\n"}),
      _pVertex(vertex)
{
}

bool CompilerShaderRootRay::_CollectVertexAttributeDeclarations(Module* module)
{
	if (_pVertex == nullptr)
		return false;
	CollectorDeclarationAttributeRay collector(module);
	ShaderVertex::VisitorAttribute visitor =
	    MakeDelegate(&collector, &CollectorDeclarationAttributeRay::CollectAttributeVertex);
	return _pVertex->VisitAttributes(visitor);
}

} // namespace Tarsel::Effects
