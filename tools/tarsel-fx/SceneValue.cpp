#include "SceneValue.h"

#include "Scene.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

namespace Tarsel::Fx
{
using namespace Effects;
using nlohmann::json;

namespace
{

enum class Component
{
	kFloat,
	kInt,
	kBool,
};

// How an element of a settable type is written in a scene.
struct ElementForm
{
	TypeSpecifier type;
	Component component;
	int components; // 0: a single scalar, not a list
};

const ElementForm kForms[] = {
    {kType_Float, Component::kFloat, 0}, {kType_Int, Component::kInt, 0},
    {kType_Bool, Component::kBool, 0},   {kType_Vec2, Component::kFloat, 2},
    {kType_Vec3, Component::kFloat, 3},  {kType_Vec4, Component::kFloat, 4},
    {kType_IVec2, Component::kInt, 2},   {kType_IVec3, Component::kInt, 3},
    {kType_IVec4, Component::kInt, 4},   {kType_Mat3, Component::kFloat, 9},
    {kType_Mat4, Component::kFloat, 16},
};

const ElementForm* FindForm(TypeSpecifier type)
{
	for (const ElementForm& form : kForms)
		if (form.type == type)
			return &form;
	return nullptr;
}

std::string DescribeElement(const ElementForm& form)
{
	static const char* const kScalar[] = {"a number", "an integer", "true or false"};
	static const char* const kList[] = {"numbers", "integers", "booleans"};
	const int component = static_cast<int>(form.component);
	if (form.components == 0)
		return kScalar[component];
	return std::to_string(form.components) + " " + kList[component];
}

bool IsComponent(const json& value, Component component)
{
	switch (component)
	{
	// Out of range is not the number the author meant, and converting it would be undefined.
	case Component::kFloat:
		return value.is_number() && std::fabs(value.get<double>()) <= std::numeric_limits<float>::max();
	case Component::kInt:
		return value.is_number_integer() && value >= std::numeric_limits<int32_t>::min() &&
		       value <= std::numeric_limits<int32_t>::max();
	case Component::kBool:
		return value.is_boolean();
	}
	return false;
}

void AppendComponent(const json& value, Component component, SceneValue& out)
{
	if (component == Component::kFloat)
		out.floats.push_back(value.get<float>());
	else if (component == Component::kInt)
		out.ints.push_back(value.get<int32_t>());
	else
		out.ints.push_back(value.get<bool>() ? 1 : 0);
}

bool ConvertElement(const json& value, const ElementForm& form, const std::string& path, SceneErrors& errors,
                    SceneValue& out)
{
	bool bGood = form.components == 0 ? IsComponent(value, form.component)
	                                  : value.is_array() && value.size() == size_t(form.components);
	for (size_t i = 0; bGood && form.components != 0 && i < value.size(); ++i)
		bGood = IsComponent(value[i], form.component);
	if (!bGood)
	{
		errors.Report(path, "expected " + DescribeElement(form));
		return false;
	}
	if (form.components == 0)
		AppendComponent(value, form.component, out);
	else
		for (const json& component : value)
			AppendComponent(component, form.component, out);
	return true;
}

bool CheckArrayLength(const json& value, const SceneValueShape& shape, const ElementForm& form,
                      const std::string& path, SceneErrors& errors)
{
	if (!value.is_array())
	{
		errors.Report(path, "expected a list of elements (" + DescribeElement(form) + " each)");
		return false;
	}
	if (shape.bResizable || (!value.empty() && value.size() <= size_t(shape.length)))
		return true;
	errors.Report(path, "expected 1 to " + std::to_string(shape.length) + " elements, found " +
	                        std::to_string(value.size()));
	return false;
}

// Sets count elements of type T whose components are in components.
template <class T, class C>
bool SetElements(ITypedValues& target, const std::vector<C>& components, const SceneValue& value)
{
	std::vector<T> elements(value.count);
	static_assert(std::is_trivially_copyable<T>::value, "elements are copied as their components");
	if (value.count > 0)
		std::memcpy(static_cast<void*>(elements.data()), components.data(), elements.size() * sizeof(T));
	if (!value.bArray)
		return value.count == 1 && target.Set(elements[0]);
	return target.Set(elements.data(), value.count);
}

// std::vector<bool> has no array to hand out.
bool SetBools(ITypedValues& target, const SceneValue& value)
{
	std::unique_ptr<bool[]> elements(new bool[value.count > 0 ? value.count : 1]);
	for (int i = 0; i < value.count; ++i)
		elements[i] = value.ints[i] != 0;
	if (!value.bArray)
		return value.count == 1 && target.Set(elements[0]);
	return target.Set(static_cast<const bool*>(elements.get()), value.count);
}

} // namespace

bool ConvertSceneValue(const json& value, const SceneValueShape& shape, const std::string& path,
                       SceneErrors& errors, SceneValue& out)
{
	const ElementForm* form = FindForm(shape.type);
	if (form == nullptr)
	{
		errors.Report(path, std::string("a parameter of type ") + TypeSpecifierToString(shape.type) +
		                        " cannot be set from a scene");
		return false;
	}
	out = SceneValue();
	out.type = shape.type;
	out.bArray = shape.bArray;
	if (!shape.bArray)
	{
		out.count = 1;
		return ConvertElement(value, *form, path, errors, out);
	}
	if (!CheckArrayLength(value, shape, *form, path, errors))
		return false;
	bool bGood = true;
	for (size_t i = 0; i < value.size(); ++i)
		bGood = ConvertElement(value[i], *form, JoinPath(path, i), errors, out) && bGood;
	out.count = static_cast<int>(value.size());
	return bGood;
}

bool ApplySceneValue(ITypedValues& target, const SceneValue& value)
{
	switch (value.type)
	{
	case kType_Float:
		return SetElements<float>(target, value.floats, value);
	case kType_Int:
		return SetElements<int>(target, value.ints, value);
	case kType_Bool:
		return SetBools(target, value);
	case kType_Vec2:
		return SetElements<Vector2f>(target, value.floats, value);
	case kType_Vec3:
		return SetElements<Vector3f>(target, value.floats, value);
	case kType_Vec4:
		return SetElements<Vector4f>(target, value.floats, value);
	case kType_IVec2:
		return SetElements<Vector2i>(target, value.ints, value);
	case kType_IVec3:
		return SetElements<Vector3i>(target, value.ints, value);
	case kType_IVec4:
		return SetElements<Vector4i>(target, value.ints, value);
	case kType_Mat3:
		return SetElements<Matrix33f>(target, value.floats, value);
	case kType_Mat4:
		return SetElements<Matrix44f>(target, value.floats, value);
	default:
		return false;
	}
}

} // namespace Tarsel::Fx
