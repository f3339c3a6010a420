#pragma once

#include "QlslTypes.h"

#include <string>
#include <string_view>
#include <vector>

namespace Tarsel
{
namespace Qlsl
{

extern const char* const kStageNames[4];

// Thrown to abandon the text after a syntax error or too many errors; other errors are collected.
struct Abort
{
};

class Diagnostics
{
public:
	explicit Diagnostics(std::vector<std::string>& errors) : _rErrors(errors) {}

	void Error(int line, const std::string& message);
	[[noreturn]] void Fatal(int line, const std::string& message);
	int Count() const { return _nErrors; }

private:
	static const int kMaxErrors = 20;
	std::vector<std::string>& _rErrors;
	int _nErrors = 0;
};

inline std::string Quote(std::string_view name)
{
	return "'" + std::string(name) + "'";
}
inline std::string Quote(const Type& type)
{
	return "'" + type.Name() + "'";
}

} // namespace Qlsl
} // namespace Tarsel
