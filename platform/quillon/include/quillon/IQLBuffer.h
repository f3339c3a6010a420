#pragma once

#include "quillon/QLTypes.h"

#include <cstddef>

namespace Tarsel
{

// Untyped device memory, bound to programs as uniform blocks.
class IQLBuffer
{
public:
	virtual ~IQLBuffer() {}

	// Allocates the storage of a buffer that has none; data may be null (contents zero).
	// False for a zero size or when storage already exists.
	virtual bool Storage(const void* data, size_t bytes) = 0;
	// Replaces existing storage; without data the contents are undefined (orphan asks for fresh memory).
	// False for a zero size, without earlier storage, or while mapped.
	virtual bool Respecify(const void* data, size_t bytes, bool orphan) = 0;
	virtual size_t GetSize() const = 0;

	// Used by QLBufferMapping; null when there is no storage or the buffer is already mapped.
	virtual void* Map(int access) = 0;
	virtual void Unmap() = 0;
};

// Maps a buffer for the lifetime of the object.
class QLBufferMapping
{
public:
	enum Access
	{
		kAccess_Read = 0,
		kAccess_Write = 1
	};

	QLBufferMapping(IQLBuffer* buffer, Access access);
	~QLBufferMapping();
	QLBufferMapping(const QLBufferMapping&) = delete;
	QLBufferMapping& operator=(const QLBufferMapping&) = delete;

	// Null when the mapping failed.
	void* GetData() const { return _pData; }

private:
	IQLBuffer* _pBuffer;
	void* _pData;
};

} // namespace Tarsel
