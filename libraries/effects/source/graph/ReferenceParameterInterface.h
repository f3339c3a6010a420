#pragma once

#include <vector>

#include "graph/IReferenceShader.h"
#include "graph/ReferenceParameter.h"

namespace Tarsel::Effects
{

class IShader;

// An interface input in one graph. It holds the reference of every connected shader in this graph, which is
// how a graph grows from its root through the connections. A single input is an array of one.
class ReferenceParameterInterface : public ReferenceParameter
{
public:
	ReferenceParameterInterface() = default;
	~ReferenceParameterInterface() override;
	ReferenceParameterInterface(const ReferenceParameterInterface&) = delete;
	ReferenceParameterInterface& operator=(const ReferenceParameterInterface&) = delete;

	bool Init(IGraph* graph, IParameter* parameter);
	void Shutdown() override;

	// Complete when every slot holds a shader whose reference is complete; an empty array is complete.
	bool IsComplete() override;
	// An array writes its element count, which the dispatched loops of the program run up to.
	bool Apply(IQLPrimitive* primitive, IQLProgram* program) override;
	int GetCountReferences() const { return static_cast<int>(_vReferences.size()); }
	IReferenceShader* GetReference(int index) const;

private:
	struct Slot
	{
		IShader* pShader;
		IReferenceShader* pReference;
	};

	bool _Acquire();
	void _Release();
	bool _Matches() const;
	IShader* _GetShader(int index) const;
	bool _OnChangeStructure(IParameter*);
	bool _OnDeleteReferenceShader(IReferenceShader* reference);
	bool _OnChangeValueReferenceShader(IReferenceShader*);

	std::vector<Slot> _vReferences;
};

} // namespace Tarsel::Effects
