#include "RecordingPrimitive.h"

#include "EventPrinter.h"

namespace Tarsel::Fx
{

bool RecordingPrimitive::_Report(bool bAccepted)
{
	if (bAccepted && !GetWrites().empty())
		_printer.Write(GetHandle(), _sName, GetWrites().back());
	return bAccepted;
}

bool RecordingPrimitive::SetUniform(const std::string& name, int location, int value)
{
	return _Report(ReferencePrimitive::SetUniform(name, location, value));
}

bool RecordingPrimitive::SetUniform(const std::string& name, int location, float value)
{
	return _Report(ReferencePrimitive::SetUniform(name, location, value));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count, const int* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const float* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const Vector2i* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const Vector3i* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const Vector4i* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const Vector2f* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const Vector3f* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const Vector4f* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const Matrix33f* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const Matrix44f* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         const QLprimitive* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformArray(const std::string& name, int location, int count,
                                         QLtexture* const* values)
{
	return _Report(ReferencePrimitive::SetUniformArray(name, location, count, values));
}

bool RecordingPrimitive::SetUniformBlock(const std::string& name, int location, IQLBuffer* buffer)
{
	return _Report(ReferencePrimitive::SetUniformBlock(name, location, buffer));
}

} // namespace Tarsel::Fx
