#pragma once

#include "objects/IReferencePrototypeMember.h"
#include "objects/IReferencePrototypeParameter.h"
#include "objects/IReferencePrototypeShader.h"

namespace Tarsel::Effects
{

// Binds one declaration descriptor to the graph of a class reference. This is all a descriptor's per-graph
// reference knows until the graph's references, which also collect and apply, derive from it.
template <class I>
class ReferencePrototypeDeclaration : public I
{
public:
	typedef typename I::Descriptor Descriptor;

	bool Init(Descriptor* pDescriptor, IReferencePrototypeShader* pReference)
	{
		_pDescriptor = pDescriptor;
		_pReference = pReference;
		return pDescriptor && pReference && pReference->GetGraph();
	}
	bool Shutdown()
	{
		_pDescriptor = nullptr;
		_pReference = nullptr;
		return true;
	}

	IGraph* GetGraph() const override { return _pReference ? _pReference->GetGraph() : nullptr; }
	Descriptor* GetDescriptor() const override { return _pDescriptor; }
	IReferencePrototypeShader* GetReferencePrototypeShader() const override { return _pReference; }

private:
	Descriptor* _pDescriptor = nullptr;
	IReferencePrototypeShader* _pReference = nullptr;
};

typedef ReferencePrototypeDeclaration<IReferencePrototypeParameter> ReferencePrototypeParameterValueSingle;
typedef ReferencePrototypeDeclaration<IReferencePrototypeParameter> ReferencePrototypeParameterValueArray;
typedef ReferencePrototypeDeclaration<IReferencePrototypeParameter>
    ReferencePrototypeParameterInterfaceSingle;
typedef ReferencePrototypeDeclaration<IReferencePrototypeParameter> ReferencePrototypeParameterInterfaceArray;
typedef ReferencePrototypeDeclaration<IReferencePrototypeMember> ReferencePrototypeMemberValueSingle;
typedef ReferencePrototypeDeclaration<IReferencePrototypeMember> ReferencePrototypeMemberValueArray;

} // namespace Tarsel::Effects
