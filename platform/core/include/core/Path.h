#pragma once

#include <string>
#include <vector>

namespace Tarsel
{
// A file path parsed into its parts; '/' separates directories.
class Path
{
public:
	Path() = default;
	Path(const std::string& text);
	Path(const char* text);

	const std::string& AsString() const { return _sText; }
	const char* AsChar() const { return _sText.c_str(); }
	// "dir/name.tsl": Stem "name", Extension ".tsl", Filename "name.tsl", ParentPath "dir".
	std::string Stem() const;
	std::string Extension() const;
	std::string Filename() const;
	Path ParentPath() const;
	std::vector<std::string> Directories() const;
	bool IsRelative() const;
	// The text names a directory (it ends in '/', or is "." or "..").
	bool IsDirectory() const;
	// Not empty and without NUL characters.
	bool IsValid() const;

private:
	std::string _sText;
};
} // namespace Tarsel
