#pragma once

#include "lights/Parameter_WrapperVectorInterfaceBase.h"

namespace Tarsel::Effects
{

// An interface-array input of a manager shader that collects lights of any classes through an ivec2
// indexer: one slot per array shader, (slot, element) per light.
class Parameter_WrapperVectorInterfaceMulti : public Parameter_WrapperVectorInterfaceBase
{
public:
	using Parameter_WrapperVectorInterfaceBase::Parameter_WrapperVectorInterfaceBase;

	using Parameter_WrapperVectorInterfaceBase::Get;
	using Parameter_WrapperVectorInterfaceBase::Set;

	bool Set(IShader* pShader, int index) override;
};

} // namespace Tarsel::Effects
