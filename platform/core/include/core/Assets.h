#pragma once

#include "core/Path.h"

#include <string>
#include <vector>

namespace Tarsel
{
// A file read whole into memory.
class IAsset
{
public:
	enum Status
	{
		kStatus_Ok = 0,
		kStatus_NotFound = 1,
		kStatus_Unreadable = 2,
		kStatus_IsDirectory = 3,
		kStatus_InvalidPath = 4
	};
	static const char* StatusString(Status status);

	virtual ~IAsset() = default;
	// The resolved file path.
	virtual const char* GetDescription() const = 0;
	// The file's bytes followed by a terminating zero.
	virtual const char* GetData() const = 0;
	virtual size_t GetSize() const = 0;
};

// Reads files. A relative name is looked up against the current directory, then each search root in the
// order added, then each root of the colon-separated environment variable TARSEL_SHADER_PATH.
class IMgrAssets
{
public:
	virtual ~IMgrAssets() = default;
	// The second argument is the load mode; 1 loads the data at once (the only mode).
	virtual IAsset* Acquire(const Path& path, int mode, IAsset::Status& status) = 0;
	virtual void Release(IAsset* pAsset) = 0;
	virtual void AddSearchRoot(const Path& root) = 0;
	virtual void ClearSearchRoots() = 0;
	virtual std::vector<std::string> GetSearchRoots() const = 0;
};

IMgrAssets* GetMgrAssets();
// Installs an asset manager (files served from memory, say) and answers the previous one; null restores
// the file-system one.
IMgrAssets* SetMgrAssets(IMgrAssets* pMgrAssets);
} // namespace Tarsel
