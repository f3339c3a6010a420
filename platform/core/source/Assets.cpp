#include "core/Assets.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace Tarsel
{
const char* IAsset::StatusString(Status status)
{
	switch (status)
	{
	case kStatus_Ok:
		return "ok";
	case kStatus_NotFound:
		return "file not found";
	case kStatus_Unreadable:
		return "file cannot be read";
	case kStatus_IsDirectory:
		return "path is a directory";
	case kStatus_InvalidPath:
		return "invalid path";
	}
	return "unknown status";
}

namespace
{
class FileAsset : public IAsset
{
public:
	FileAsset(std::string path, std::string data) : _sPath(std::move(path)), _sData(std::move(data)) {}
	const char* GetDescription() const override { return _sPath.c_str(); }
	const char* GetData() const override { return _sData.c_str(); }
	size_t GetSize() const override { return _sData.size(); }

private:
	std::string _sPath;
	std::string _sData;
};

enum class Kind
{
	Missing,
	File,
	Directory
};

Kind KindOf(const std::string& path)
{
	struct stat info;
	if (::stat(path.c_str(), &info) != 0)
		return Kind::Missing;
	return S_ISDIR(info.st_mode) ? Kind::Directory : Kind::File;
}

// Plain reads, so that a failing read is told apart from the end of the file.
bool ReadWhole(const std::string& path, std::string& data)
{
	const int iFile = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
	if (iFile < 0)
		return false;
	char aBuffer[65536];
	bool bOk = true;
	for (;;)
	{
		const ssize_t nRead = ::read(iFile, aBuffer, sizeof(aBuffer));
		if (nRead > 0)
			data.append(aBuffer, size_t(nRead));
		else if (nRead == 0 || errno != EINTR)
		{
			bOk = nRead == 0;
			break;
		}
	}
	::close(iFile);
	return bOk;
}

std::vector<std::string> SplitColons(const char* text)
{
	std::vector<std::string> vParts;
	if (text == nullptr)
		return vParts;
	std::stringstream stream(text);
	std::string sPart;
	while (std::getline(stream, sPart, ':'))
		if (!sPart.empty())
			vParts.push_back(sPart);
	return vParts;
}

std::string Join(const std::string& root, const std::string& name)
{
	return root.back() == '/' ? root + name : root + "/" + name;
}

class MgrAssets : public IMgrAssets
{
public:
	IAsset* Acquire(const Path& path, int, IAsset::Status& status) override
	{
		if (!path.IsValid())
		{
			status = IAsset::kStatus_InvalidPath;
			return nullptr;
		}
		std::string sResolved;
		status = _Resolve(path, sResolved);
		if (status != IAsset::kStatus_Ok)
			return nullptr;
		std::string sData;
		if (!ReadWhole(sResolved, sData))
		{
			status = IAsset::kStatus_Unreadable;
			return nullptr;
		}
		return new FileAsset(sResolved, std::move(sData));
	}

	void Release(IAsset* pAsset) override { delete pAsset; }
	void AddSearchRoot(const Path& root) override
	{
		if (root.IsValid())
			_vRoots.push_back(root.AsString());
	}
	void ClearSearchRoots() override { _vRoots.clear(); }

	std::vector<std::string> GetSearchRoots() const override
	{
		std::vector<std::string> vRoots = _vRoots;
		for (const std::string& sRoot : SplitColons(std::getenv("TARSEL_SHADER_PATH")))
			vRoots.push_back(sRoot);
		return vRoots;
	}

private:
	// The first candidate that is a file wins. A directory of that name does not stop the search (a root may
	// well hold a folder named like a library elsewhere), but when nothing better turns up it is reported as
	// such rather than as a missing file.
	IAsset::Status _Resolve(const Path& path, std::string& resolved) const
	{
		std::vector<std::string> vCandidates{path.AsString()};
		if (path.IsRelative())
			for (const std::string& sRoot : GetSearchRoots())
				vCandidates.push_back(Join(sRoot, path.AsString()));
		IAsset::Status status = IAsset::kStatus_NotFound;
		for (const std::string& sCandidate : vCandidates)
		{
			const Kind kind = KindOf(sCandidate);
			if (kind == Kind::File)
			{
				resolved = sCandidate;
				return IAsset::kStatus_Ok;
			}
			if (kind == Kind::Directory && status == IAsset::kStatus_NotFound)
			{
				resolved = sCandidate;
				status = IAsset::kStatus_IsDirectory;
			}
		}
		return status;
	}

	std::vector<std::string> _vRoots;
};

IMgrAssets*& Installed()
{
	static IMgrAssets* pInstalled = nullptr;
	return pInstalled;
}
} // namespace

IMgrAssets* GetMgrAssets()
{
	static MgrAssets mgrAssets;
	return Installed() ? Installed() : &mgrAssets;
}

IMgrAssets* SetMgrAssets(IMgrAssets* pMgrAssets)
{
	IMgrAssets* pPrevious = GetMgrAssets();
	Installed() = pMgrAssets;
	return pPrevious;
}
} // namespace Tarsel
