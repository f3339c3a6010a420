#pragma once

#include "lights/Shader_PassThrough.h"

namespace Tarsel::Effects
{

// A manager shader whose interface inputs with indexers collect light wrappers: connecting a light
// connects its array shader and writes the light's element into the indexer.
class Shader_LightShaderReceiver : public Shader_PassThroughPresenting
{
public:
	// Takes the shader: it goes back to the manager with the receiver.
	bool Init(IMgrEffects* pMgrEffects, IShader* pShader);

private:
	// False when wrapping must stop.
	bool _WrapInput(const std::string& sName, IParameter* pInput);
};

} // namespace Tarsel::Effects
