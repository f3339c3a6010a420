#pragma once

#include "quillon/Reference.h"

#include <string>

namespace Tarsel::Fx
{

class EventPrinter;

// A scene's primitive on the reference device. Each primitive keeps its own record; this one also hands
// every accepted write to the printer as it happens, so that writes to several primitives print in the
// order they were made.
class RecordingPrimitive : public ReferencePrimitive
{
public:
	RecordingPrimitive(const std::string& name, QLprimitive handle, EventPrinter& printer)
	    : ReferencePrimitive(handle), _sName(name), _printer(printer)
	{
	}

	const std::string& GetName() const { return _sName; }

	bool SetUniform(const std::string& name, int location, int value) override;
	bool SetUniform(const std::string& name, int location, float value) override;
	bool SetUniformArray(const std::string& name, int location, int count, const int* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const float* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector2i* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector3i* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector4i* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector2f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector3f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector4f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Matrix33f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Matrix44f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count,
	                     const QLprimitive* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, QLtexture* const* values) override;
	bool SetUniformBlock(const std::string& name, int location, IQLBuffer* buffer) override;

private:
	// Passes on the write that the device just recorded, when it accepted one.
	bool _Report(bool bAccepted);

	std::string _sName;
	EventPrinter& _printer;
};

} // namespace Tarsel::Fx
