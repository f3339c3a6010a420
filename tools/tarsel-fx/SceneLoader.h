#pragma once

#include "Scene.h"

#include <string>

namespace Tarsel::Fx
{

// Reads a scene's JSON text and checks everything that does not need the shader libraries: its shape,
// the kinds, and that every shader id and primitive it names is declared. Values are checked against
// their parameters' types when the scene runs. Every problem is reported; false when there was any.
bool LoadScene(const std::string& text, Scene& scene, SceneErrors& errors);

// The same for a file; a file that cannot be read is one error.
bool LoadSceneFile(const std::string& path, Scene& scene, SceneErrors& errors);

} // namespace Tarsel::Fx
