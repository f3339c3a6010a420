#include "quillon/Reference.h"

#include <cstring>

namespace Tarsel
{

std::string FormatQLValues(QLSetter setter, const std::vector<unsigned char>& bytes);

namespace
{

// Which declared uniform types each setter may write.
bool Accepts(QLSetter setter, const std::string& type)
{
	switch (setter)
	{
	case kQLSetter_Int:
	case kQLSetter_IntArray:
		return type == "int" || type == "bool";
	case kQLSetter_Float:
	case kQLSetter_FloatArray:
		return type == "float";
	case kQLSetter_Vector2iArray:
		return type == "ivec2";
	case kQLSetter_Vector3iArray:
		return type == "ivec3";
	case kQLSetter_Vector4iArray:
		return type == "ivec4";
	case kQLSetter_Vector2fArray:
		return type == "vec2";
	case kQLSetter_Vector3fArray:
		return type == "vec3";
	case kQLSetter_Vector4fArray:
		return type == "vec4";
	case kQLSetter_Matrix33fArray:
		return type == "mat3";
	case kQLSetter_Matrix44fArray:
		return type == "mat4";
	case kQLSetter_PrimitiveArray:
		return type == "primitive";
	case kQLSetter_TextureArray:
		return type == "sampler2D" || type == "sampler3D" || type == "samplerCube";
	default:
		return false;
	}
}

// Whether uniform is declared followed by one or more key texts ("_k" and lower-case hex digits): the
// generated uniform of a per-primitive value written under its declared name.
bool IsKeyedName(const std::string& uniform, const std::string& declared)
{
	if (declared.empty() || uniform.size() <= declared.size() ||
	    uniform.compare(0, declared.size(), declared) != 0)
		return false;
	size_t at = declared.size();
	while (at < uniform.size())
	{
		if (uniform.compare(at, 2, "_k") != 0)
			return false;
		size_t digits = at + 2;
		at = digits;
		while (at < uniform.size() &&
		       ((uniform[at] >= '0' && uniform[at] <= '9') || (uniform[at] >= 'a' && uniform[at] <= 'f')))
			++at;
		if (at == digits)
			return false;
	}
	return true;
}

// The uniform or block at a location of the current linked program; null without one.
const QLVariable* CurrentVariable(int location, bool block)
{
	ReferenceProgram* program = ReferenceProgram::From(qlGetCurrentProgram());
	if (!program || !program->IsLinked())
		return nullptr;
	return block ? program->FindUniformBlock(location) : program->FindUniform(location);
}

} // namespace

ReferencePrimitive::ReferencePrimitive(QLprimitive handle) : _nHandle(handle) {}

bool ReferencePrimitive::SetUniform(const std::string& name, int location, int value)
{
	return _Write(name, location, kQLSetter_Int, 1, &value, sizeof(value), nullptr);
}

bool ReferencePrimitive::SetUniform(const std::string& name, int location, float value)
{
	return _Write(name, location, kQLSetter_Float, 1, &value, sizeof(value), nullptr);
}

#define TARSEL_QL_ARRAY_WRITE(T)                                                                             \
	bool ReferencePrimitive::SetUniformArray(const std::string& name, int location, int count,               \
	                                         const T* values)                                                \
	{                                                                                                        \
		return _Write(name, location, QLArraySetter<T>::kValue, count, values, sizeof(T), nullptr);          \
	}
TARSEL_QL_ARRAY_WRITE(int)
TARSEL_QL_ARRAY_WRITE(float)
TARSEL_QL_ARRAY_WRITE(Vector2i)
TARSEL_QL_ARRAY_WRITE(Vector3i)
TARSEL_QL_ARRAY_WRITE(Vector4i)
TARSEL_QL_ARRAY_WRITE(Vector2f)
TARSEL_QL_ARRAY_WRITE(Vector3f)
TARSEL_QL_ARRAY_WRITE(Vector4f)
TARSEL_QL_ARRAY_WRITE(Matrix33f)
TARSEL_QL_ARRAY_WRITE(Matrix44f)
TARSEL_QL_ARRAY_WRITE(QLprimitive)
#undef TARSEL_QL_ARRAY_WRITE

bool ReferencePrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         QLtexture* const* values)
{
	return _Write(name, location, kQLSetter_TextureArray, count, values, sizeof(QLtexture*), nullptr);
}

bool ReferencePrimitive::SetUniformBlock(const std::string& name, int location, IQLBuffer* buffer)
{
	return _Write(name, location, kQLSetter_UniformBlock, 1, &buffer, sizeof(buffer), buffer);
}

void ReferencePrimitive::Bind()
{
	++_nBindDepth;
}

void ReferencePrimitive::Unbind()
{
	if (_nBindDepth == 0)
	{
		_vViolations.push_back("Unbind without Bind");
		return;
	}
	--_nBindDepth;
}

void ReferencePrimitive::Refuse(QLSetter setter)
{
	_setRefused.insert(setter);
}

bool ReferencePrimitive::Refuse(const char* setterName)
{
	QLSetter setter = QLSetterFromName(setterName);
	if (setter == kQLSetter_Count)
		return false;
	Refuse(setter);
	return true;
}

void ReferencePrimitive::RefuseAll()
{
	_bRefuseAll = true;
}

void ReferencePrimitive::AcceptAll()
{
	_bRefuseAll = false;
	_setRefused.clear();
}

std::string ReferencePrimitive::_Check(const std::string& name, int location, QLSetter setter, int count,
                                       IQLBuffer* buffer) const
{
	std::string where = "'" + name + "' at location " + std::to_string(location) + ": ";
	if (count < 0)
		return where + "negative count";
	if (setter == kQLSetter_UniformBlock && !buffer)
		return where + "null buffer";
	ReferenceProgram* program = ReferenceProgram::From(qlGetCurrentProgram());
	if (!_bStrict || !program || !program->IsLinked())
		return std::string();
	bool block = setter == kQLSetter_UniformBlock;
	const QLVariable* variable = block ? program->FindUniformBlock(location) : program->FindUniform(location);
	std::string in = " in program " + std::to_string(program->GetHandle());
	if (!variable)
		return where + (block ? "no uniform block" : "no uniform") + in;
	if (variable->name != name && (block || !IsKeyedName(variable->name, name)))
		return where + "the location belongs to '" + variable->name + "'" + in;
	if (block)
		return buffer->GetSize() == 0 ? where + "buffer without storage" : std::string();
	if (!Accepts(setter, variable->type))
		return where + QLSetterName(setter) + " setter cannot write a " + variable->type;
	int capacity = variable->arraySize == 0 ? 1 : variable->arraySize;
	if (variable->arraySize >= 0 && count > capacity)
		return where + "count " + std::to_string(count) + " exceeds the size " + std::to_string(capacity);
	return std::string();
}

bool ReferencePrimitive::_Write(const std::string& name, int location, QLSetter setter, int count,
                                const void* values, size_t elementBytes, IQLBuffer* buffer)
{
	if (_bRefuseAll || _setRefused.count(setter))
		return false;
	std::string violation = _Check(name, location, setter, count, buffer);
	if (violation.empty() && count > 0 && !values)
		violation = "'" + name + "': null values";
	if (!violation.empty())
	{
		_vViolations.push_back(violation);
		return false;
	}
	IQLProgram* program = qlGetCurrentProgram();
	QLWrite write;
	write.program = program ? program->GetHandle() : 0;
	write.location = location;
	write.name = name;
	if (const QLVariable* variable = CurrentVariable(location, setter == kQLSetter_UniformBlock))
		write.uniform = variable->name;
	write.setter = setter;
	write.count = count;
	write.bytes.resize(size_t(count) * elementBytes);
	if (!write.bytes.empty())
		std::memcpy(write.bytes.data(), values, write.bytes.size());
	write.buffer = buffer;
	write.bound = IsBound();
	_vWrites.push_back(std::move(write));
	return true;
}

const QLWrite* ReferencePrimitive::Last(int location) const
{
	for (auto it = _vWrites.rbegin(); it != _vWrites.rend(); ++it)
	{
		if (it->location == location)
			return &*it;
	}
	return nullptr;
}

const QLWrite* ReferencePrimitive::Last(unsigned program, int location) const
{
	for (auto it = _vWrites.rbegin(); it != _vWrites.rend(); ++it)
	{
		if (it->location == location && it->program == program)
			return &*it;
	}
	return nullptr;
}

const QLWrite* ReferencePrimitive::LastByName(const std::string& name) const
{
	for (auto it = _vWrites.rbegin(); it != _vWrites.rend(); ++it)
	{
		if (it->name == name || it->uniform == name)
			return &*it;
	}
	return nullptr;
}

size_t ReferencePrimitive::CountWrites(int location) const
{
	size_t count = 0;
	for (const QLWrite& write : _vWrites)
		count += write.location == location;
	return count;
}

std::string ReferencePrimitive::ExpectInt(int location, int value) const
{
	return _Expect(location, kQLSetter_Int, &value, sizeof(value), 1);
}

std::string ReferencePrimitive::ExpectFloat(int location, float value) const
{
	return _Expect(location, kQLSetter_Float, &value, sizeof(value), 1);
}

std::string ReferencePrimitive::ExpectBlock(int location, const IQLBuffer* buffer) const
{
	return _Expect(location, kQLSetter_UniformBlock, &buffer, sizeof(buffer), 1);
}

std::string ReferencePrimitive::_Expect(int location, QLSetter setter, const void* bytes, size_t size,
                                        int count) const
{
	// Blocks and uniforms number their locations separately.
	const QLWrite* write = nullptr;
	bool block = setter == kQLSetter_UniformBlock;
	for (auto it = _vWrites.rbegin(); it != _vWrites.rend() && !write; ++it)
	{
		if (it->location == location && (it->setter == kQLSetter_UniformBlock) == block)
			write = &*it;
	}
	if (!write)
		return "no write to location " + std::to_string(location);
	std::vector<unsigned char> expected(size);
	if (size)
		std::memcpy(expected.data(), bytes, size);
	if (write->setter == setter && write->count == count && write->bytes == expected)
		return std::string();
	return "last write: " + write->Describe() + "; expected " + QLSetterName(setter) + " count " +
	       std::to_string(count) + " " + FormatQLValues(setter, expected);
}

} // namespace Tarsel
