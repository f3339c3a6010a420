#pragma once

#include "core/Delegate.h"
#include "quillon/QLTypes.h"

#include <string>
#include <vector>

namespace Tarsel
{

// A set of shaders linked into one executable program. Locations are valid after a successful link.
class IQLProgram
{
public:
	// Told with the program after every successful link.
	typedef FastDelegate1<IQLProgram*, bool> ListenerChange;

	virtual ~IQLProgram() {}

	virtual void SetName(const char* name) = 0;
	virtual void SetName(const std::string& name) = 0;
	virtual const std::string& GetName() const = 0;

	// False for null, for a shader already attached here, or (detach) for one that is not attached.
	virtual bool AttachShader(IQLShader* shader) = 0;
	virtual bool DetachShader(IQLShader* shader) = 0;

	virtual bool Link(std::vector<std::string>& errors) = 0;
	virtual bool IsLinked() const = 0;

	// -1 when the linked program has no such name.
	virtual int GetUniformLocation(const char* name) const = 0;
	virtual int GetUniformBlockLocation(const char* name) const = 0;
	virtual int GetAttributeLocation(const char* name) const = 0;

	// Non-zero and unique within the process.
	virtual unsigned GetHandle() const = 0;

	virtual bool AddListenerChange(const ListenerChange& listener) = 0;
	virtual bool RemoveListenerChange(const ListenerChange& listener) = 0;
};

// Makes the program current for subsequent primitive writes; null clears it.
void qlUseProgram(IQLProgram* program);
// The same by native handle; 0 clears it. Unknown handles clear it as well.
void qlUseProgram(unsigned handle);
// The current program, null when none.
IQLProgram* qlGetCurrentProgram();

} // namespace Tarsel
