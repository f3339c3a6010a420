#include "graph/ReferenceParameter.h"

#include "graph/ReferenceParameterCoord.h"
#include "graph/ReferenceParameterInterface.h"
#include "graph/ReferenceParameterValue.h"
#include "objects/IMember.h"
#include "objects/ParameterCoord.h"
#include "objects/ParameterValueArray.h"
#include "objects/ParameterValueSingle.h"

namespace Tarsel::Effects
{

namespace
{

template <class R, class P>
R* Make(IGraph* graph, P* object)
{
	R* reference = new R();
	if (!reference->Init(graph, object))
	{
		delete reference;
		return nullptr;
	}
	return reference;
}

// Members are declared and initialised in generated code; only an array's length reaches the program.
class ReferenceMemberValue : public ReferenceMember
{
public:
	bool Init(IGraph* graph, IMember* member)
	{
		_pGraph = graph;
		_pObject = member;
		return true;
	}
	void Shutdown() override { _pObject = nullptr; }
};

} // namespace

ReferenceParameter* ReferenceParameter::Create(IGraph* graph, IParameter* parameter)
{
	if (graph == nullptr || parameter == nullptr)
		return nullptr;
	switch (parameter->GetClass())
	{
	case IParameter::kParameterClass_Coord:
		if (ParameterCoord* coord = dynamic_cast<ParameterCoord*>(parameter))
			return Make<ReferenceParameterCoord>(graph, coord);
		return nullptr;
	case IParameter::kParameterClass_Interface:
		return Make<ReferenceParameterInterface>(graph, parameter);
	default:
		if (ParameterValueSingle* single = dynamic_cast<ParameterValueSingle*>(parameter))
			return Make<ReferenceParameterValueSingleSeparate>(graph, single);
		if (ParameterValueArray* array = dynamic_cast<ParameterValueArray*>(parameter))
			return Make<ReferenceParameterValueArraySeparate>(graph, array);
		return nullptr;
	}
}

ReferenceMember* ReferenceMember::Create(IGraph* graph, IMember* member)
{
	return graph && member ? Make<ReferenceMemberValue>(graph, member) : nullptr;
}

} // namespace Tarsel::Effects
