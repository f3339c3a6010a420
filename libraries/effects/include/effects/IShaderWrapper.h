#pragma once

#include "effects/IShader.h"

namespace Tarsel::Effects
{

// A shader that stands for another one; connecting it connects the shader it wraps.
class IShaderWrapper : public IShader
{
public:
	virtual IShader* GetShaderWrapped() = 0;
};

} // namespace Tarsel::Effects
