#include "QlslTypes.h"

#include "QlslTree.h"

#include <unordered_map>

namespace Tarsel
{
namespace Qlsl
{
namespace
{

const char* ScalarName(BaseType base)
{
	switch (base)
	{
	case kBase_Void:
		return "void";
	case kBase_Bool:
		return "bool";
	case kBase_Int:
		return "int";
	case kBase_Float:
		return "float";
	case kBase_Sampler2D:
		return "sampler2D";
	case kBase_Sampler3D:
		return "sampler3D";
	case kBase_SamplerCube:
		return "samplerCube";
	case kBase_Primitive:
		return "primitive";
	default:
		return "<error>";
	}
}

const char* VectorPrefix(BaseType base)
{
	return base == kBase_Int ? "ivec" : (base == kBase_Bool ? "bvec" : "vec");
}

} // namespace

bool Type::HasOpaque() const
{
	if (IsOpaque())
		return true;
	if (base != kBase_Struct || !aggregate)
		return false;
	for (const Member& member : aggregate->members)
	{
		if (member.type.aggregate != aggregate && member.type.HasOpaque())
			return true;
	}
	return false;
}

std::string Type::Name(bool withArray) const
{
	std::string name;
	if (base == kBase_Struct)
		name = aggregate ? std::string(aggregate->name) : "<struct>";
	else if (columns)
		name = "mat" + std::to_string(int(columns));
	else if (rows > 1)
		name = VectorPrefix(base) + std::to_string(int(rows));
	else
		name = ScalarName(base);
	if (withArray && array)
		name += "[" + (array > 0 ? std::to_string(array) : std::string()) + "]";
	return name;
}

bool ConvertsTo(const Type& from, const Type& to)
{
	if (from == to)
		return true;
	return from.base == kBase_Int && to.base == kBase_Float && from.rows == to.rows && from.columns == 0 &&
	       to.columns == 0 && from.array == 0 && to.array == 0;
}

Type BasicTypeNamed(std::string_view name)
{
	static const std::unordered_map<std::string_view, Type> kTypes = {
	    {"void", Type::Scalar(kBase_Void)},
	    {"bool", Type::Scalar(kBase_Bool)},
	    {"int", Type::Scalar(kBase_Int)},
	    {"float", Type::Scalar(kBase_Float)},
	    {"vec2", Type::Vector(kBase_Float, 2)},
	    {"vec3", Type::Vector(kBase_Float, 3)},
	    {"vec4", Type::Vector(kBase_Float, 4)},
	    {"ivec2", Type::Vector(kBase_Int, 2)},
	    {"ivec3", Type::Vector(kBase_Int, 3)},
	    {"ivec4", Type::Vector(kBase_Int, 4)},
	    {"bvec2", Type::Vector(kBase_Bool, 2)},
	    {"bvec3", Type::Vector(kBase_Bool, 3)},
	    {"bvec4", Type::Vector(kBase_Bool, 4)},
	    {"mat2", Type::Matrix(2)},
	    {"mat3", Type::Matrix(3)},
	    {"mat4", Type::Matrix(4)},
	    {"sampler2D", Type::Scalar(kBase_Sampler2D)},
	    {"sampler3D", Type::Scalar(kBase_Sampler3D)},
	    {"samplerCube", Type::Scalar(kBase_SamplerCube)},
	    {"primitive", Type::Scalar(kBase_Primitive)},
	};
	auto it = kTypes.find(name);
	return it == kTypes.end() ? Type() : it->second;
}

} // namespace Qlsl
} // namespace Tarsel
