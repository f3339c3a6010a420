#pragma once

#include "lights/Parameter_WrapperVectorInterfaceBase.h"

namespace Tarsel::Effects
{

// A single input of a manager shader that collects lights of one class through an int indexer.
class Parameter_WrapperVectorInterfaceSingle : public Parameter_WrapperVectorInterfaceBase
{
public:
	Parameter_WrapperVectorInterfaceSingle(IParameter* pParameter, IParameter* pIndexer);

	using Parameter_WrapperVectorInterfaceBase::Get;
	using Parameter_WrapperVectorInterfaceBase::Set;

	bool Get(IShader*& pShader) override;
	bool Set(IShader* pShader) override;
	bool Set(IShader* pShader, int index) override;

private:
	IShader* _pShaderConnected;
};

} // namespace Tarsel::Effects
