#pragma once

#include "core/Vector.h"
#include "quillon/QLTypes.h"

#include <string>

namespace Tarsel
{

// A scene object carrying its own uniform values for whatever program is current.
// Every setter answers false when the primitive refuses the write.
class IQLPrimitive
{
public:
	virtual ~IQLPrimitive() {}

	virtual bool SetUniform(const std::string& name, int location, int value) = 0;
	virtual bool SetUniform(const std::string& name, int location, float value) = 0;

	virtual bool SetUniformArray(const std::string& name, int location, int count, const int* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count, const float* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             const Vector2i* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             const Vector3i* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             const Vector4i* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             const Vector2f* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             const Vector3f* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             const Vector4f* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             const Matrix33f* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             const Matrix44f* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             const QLprimitive* values) = 0;
	virtual bool SetUniformArray(const std::string& name, int location, int count,
	                             QLtexture* const* values) = 0;

	virtual bool SetUniformBlock(const std::string& name, int location, IQLBuffer* buffer) = 0;

	virtual void Bind() = 0;
	virtual void Unbind() = 0;
	virtual QLprimitive GetHandle() const = 0;
};

// Binds a primitive for a scope; a null primitive is ignored.
class AutoBindQLPrimitive
{
public:
	explicit AutoBindQLPrimitive(IQLPrimitive* primitive) : _pPrimitive(primitive)
	{
		if (_pPrimitive)
			_pPrimitive->Bind();
	}
	~AutoBindQLPrimitive()
	{
		if (_pPrimitive)
			_pPrimitive->Unbind();
	}
	AutoBindQLPrimitive(const AutoBindQLPrimitive&) = delete;
	AutoBindQLPrimitive& operator=(const AutoBindQLPrimitive&) = delete;

private:
	IQLPrimitive* _pPrimitive;
};

} // namespace Tarsel
