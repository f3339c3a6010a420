#include "core/Path.h"

namespace Tarsel
{
Path::Path(const std::string& text) : _sText(text) {}

Path::Path(const char* text) : _sText(text ? text : "") {}

std::string Path::Filename() const
{
	const size_t iSlash = _sText.find_last_of('/');
	return iSlash == std::string::npos ? _sText : _sText.substr(iSlash + 1);
}

std::string Path::Stem() const
{
	const std::string sName = Filename();
	if (sName == "." || sName == "..")
		return sName;
	const size_t iDot = sName.find_last_of('.');
	return iDot == std::string::npos || iDot == 0 ? sName : sName.substr(0, iDot);
}

std::string Path::Extension() const
{
	const std::string sName = Filename();
	if (sName == "." || sName == "..")
		return std::string();
	const size_t iDot = sName.find_last_of('.');
	return iDot == std::string::npos || iDot == 0 ? std::string() : sName.substr(iDot);
}

Path Path::ParentPath() const
{
	const size_t iSlash = _sText.find_last_of('/');
	if (iSlash == std::string::npos)
		return Path();
	if (iSlash == 0)
		return Path("/");
	return Path(_sText.substr(0, iSlash));
}

std::vector<std::string> Path::Directories() const
{
	std::vector<std::string> vDirectories;
	const size_t iLast = _sText.find_last_of('/');
	if (iLast == std::string::npos)
		return vDirectories;
	size_t iStart = 0;
	while (iStart < iLast)
	{
		const size_t iSlash = _sText.find('/', iStart);
		if (iSlash > iStart)
			vDirectories.push_back(_sText.substr(iStart, iSlash - iStart));
		iStart = iSlash + 1;
	}
	return vDirectories;
}

bool Path::IsRelative() const
{
	return _sText.empty() || _sText[0] != '/';
}

bool Path::IsDirectory() const
{
	const std::string sName = Filename();
	return !_sText.empty() && (_sText.back() == '/' || sName == "." || sName == "..");
}

bool Path::IsValid() const
{
	return !_sText.empty() && _sText.find('\0') == std::string::npos;
}
} // namespace Tarsel
