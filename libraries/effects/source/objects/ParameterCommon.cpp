#include "objects/ParameterCommon.h"

#include "graph/ReferenceParameter.h"

namespace Tarsel::Effects
{

IReferenceParameter* ParameterCommon::CreateReference(IGraph* pGraph)
{
	return ReferenceParameter::Create(pGraph, this);
}

bool ParameterCommon::DestroyReference(IReferenceParameter* pReference)
{
	delete pReference;
	return true;
}

} // namespace Tarsel::Effects
