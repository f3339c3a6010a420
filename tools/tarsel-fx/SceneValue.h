#pragma once

#include "effects/ITypedValues.h"
#include "syntax/Enumerations.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace Tarsel::Fx
{

class SceneErrors;

// What a value must look like: the parameter's element type and, for arrays, how many elements it takes.
struct SceneValueShape
{
	Effects::TypeSpecifier type = Effects::kType_Void;
	bool bArray = false;
	bool bResizable = false;
	int length = 1;
};

// A scene value converted to a parameter's type: the components of every element, back to back.
struct SceneValue
{
	Effects::TypeSpecifier type = Effects::kType_Void;
	bool bArray = false;
	int count = 0;
	std::vector<float> floats;
	std::vector<int32_t> ints;
};

// Checks the value against the shape and converts it. A mismatch is reported at path (or at the element's
// path) in words that say what was expected, such as "expected 3 numbers".
bool ConvertSceneValue(const nlohmann::json& value, const SceneValueShape& shape, const std::string& path,
                       SceneErrors& errors, SceneValue& out);

// Sets the converted value through the typed operations that parameters and local parameters share:
// the single form, or the array form with the count.
bool ApplySceneValue(Effects::ITypedValues& target, const SceneValue& value);

} // namespace Tarsel::Fx
