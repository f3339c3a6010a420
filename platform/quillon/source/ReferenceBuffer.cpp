#include "quillon/FaultInjection.h"
#include "quillon/Reference.h"

#include <cstring>

namespace Tarsel
{

QLBufferMapping::QLBufferMapping(IQLBuffer* buffer, Access access) : _pBuffer(buffer), _pData(nullptr)
{
	if (_pBuffer)
		_pData = _pBuffer->Map(access);
}

QLBufferMapping::~QLBufferMapping()
{
	if (_pData)
		_pBuffer->Unmap();
}

ReferenceBuffer::ReferenceBuffer(ReferenceContext* context) : _pContext(context) {}

bool ReferenceBuffer::Storage(const void* data, size_t bytes)
{
	if (QLFaultInjection::Fail("Storage"))
		return false;
	if (bytes == 0 || HasStorage() || IsMapped())
	{
		_pContext->Message("ReferenceBuffer::Storage refused (%zu bytes, %s)\n", bytes,
		                   HasStorage() ? "storage exists" : (bytes ? "mapped" : "empty"));
		return false;
	}
	_vBytes.assign(bytes, 0);
	if (data)
		std::memcpy(_vBytes.data(), data, bytes);
	return true;
}

bool ReferenceBuffer::Respecify(const void* data, size_t bytes, bool orphan)
{
	if (QLFaultInjection::Fail("Respecify"))
		return false;
	if (bytes == 0 || !HasStorage() || IsMapped())
	{
		_pContext->Message("ReferenceBuffer::Respecify refused (%zu bytes, %s)\n", bytes,
		                   !HasStorage() ? "no storage" : (bytes ? "mapped" : "empty"));
		return false;
	}
	(void)orphan; // the reference device always hands out fresh memory
	++_nRespecifies;
	// Contents are undefined after the storage is replaced without data; a marker byte makes readers
	// that rely on old contents fail visibly.
	_vBytes.assign(bytes, 0xcd);
	if (data)
		std::memcpy(_vBytes.data(), data, bytes);
	return true;
}

void* ReferenceBuffer::Map(int access)
{
	if (QLFaultInjection::Fail("Map"))
		return nullptr;
	if (!HasStorage() || IsMapped() ||
	    (access != QLBufferMapping::kAccess_Read && access != QLBufferMapping::kAccess_Write))
	{
		_pContext->Message("ReferenceBuffer::Map refused (%s)\n",
		                   !HasStorage() ? "no storage" : (IsMapped() ? "already mapped" : "bad access"));
		return nullptr;
	}
	_iMapped = access;
	++_nMaps;
	if (access == QLBufferMapping::kAccess_Read && _pContext->IsCheckingReadMappings())
		_vReadSnapshot = _vBytes;
	return _vBytes.data();
}

void ReferenceBuffer::Unmap()
{
	if (!IsMapped())
	{
		_pContext->Message("ReferenceBuffer::Unmap not mapped\n");
		return;
	}
	if (_iMapped == QLBufferMapping::kAccess_Read && !_vReadSnapshot.empty() && _vReadSnapshot != _vBytes)
	{
		_pContext->Message("ReferenceBuffer::Unmap write through a read mapping\n");
		_vBytes = _vReadSnapshot;
	}
	_vReadSnapshot.clear();
	_iMapped = -1;
}

} // namespace Tarsel
