#pragma once

namespace Tarsel::Effects
{

// Declared here so that the manager's interface can name it; defined by the area that implements it.
class IShader;

} // namespace Tarsel::Effects
