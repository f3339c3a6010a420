#pragma once

#include "quillon/QLTypes.h"

namespace Tarsel
{

// The host's connection to the ray-tracing device; every API object is created and destroyed here.
class IQuillonContext
{
public:
	virtual ~IQuillonContext() {}

	virtual bool IsDifferentialSupported() const = 0;

	// type is an IQLShader::Type; null for an unknown type or when the device refuses.
	virtual IQLShader* CreateShader(int type) = 0;
	// Detaches the shader from every program first. Null is ignored.
	virtual void DestroyShader(IQLShader* shader) = 0;
	virtual IQLProgram* CreateProgram() = 0;
	virtual void DestroyProgram(IQLProgram* program) = 0;
	virtual IQLBuffer* CreateBuffer() = 0;
	virtual void DestroyBuffer(IQLBuffer* buffer) = 0;

	// printf-style diagnostic sink of the device.
	virtual void Message(const char* format, ...)
#if defined(__GNUC__)
	    __attribute__((format(printf, 2, 3)))
#endif
	    = 0;
};

} // namespace Tarsel
