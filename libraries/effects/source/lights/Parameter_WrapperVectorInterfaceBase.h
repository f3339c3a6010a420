#pragma once

#include <vector>

#include "lights/IParameterWrapper.h"

namespace Tarsel::Effects
{

// What the two inputs of manager shaders share: an indexer array with one element per connected light,
// which also gives the input its length, and the shaders the host connected, one per element.
class Parameter_WrapperVectorInterfaceBase : public IParameterWrapper
{
public:
	Parameter_WrapperVectorInterfaceBase(IParameter* pParameter, IParameter* pIndexer);

	using IParameterWrapper::Get;
	using IParameterWrapper::Set;

	void Detach() override;
	bool IsArray() const override { return _pIndexer && _pIndexer->IsArray(); }
	int GetLength() const override { return _pIndexer ? _pIndexer->GetLength() : 0; }
	bool IsResizable() const override { return _pIndexer && _pIndexer->IsResizable(); }
	// The indexer first; the connections follow only when it took the length.
	bool SetLength(int nLength) override;
	bool Get(IShader*& pShader, int index) override;
	// Takes the count as length, then connects every element in order; stops at the first refusal.
	bool Set(IShader** ppShaders, int nCount) override;

protected:
	bool _InRange(int index) const { return index >= 0 && index < int(_vConnections.size()); }
	bool _AnyOtherConnection(int index) const;

	IParameter* _pIndexer;
	std::vector<IShader*> _vConnections;
};

} // namespace Tarsel::Effects
