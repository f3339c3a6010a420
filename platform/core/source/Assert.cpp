#include "core/Assert.h"

#include <csignal>
#include <cstdio>

namespace Tarsel
{
namespace
{
class DefaultAssertHandler : public IAssertHandler
{
public:
	int Report(const char* expression, int line, const char* file, const char* message) override
	{
		std::fprintf(stderr, "%s(%d) : Assertion failed: %s%s%s\n", file, line, expression,
		             message ? " : " : "", message ? message : "");
		return kAnswer_Continue;
	}
};

DefaultAssertHandler g_defaultHandler;
IAssertHandler* g_pHandler = nullptr;
} // namespace

IAssertHandler* GetActiveAssertHandler()
{
	return g_pHandler ? g_pHandler : &g_defaultHandler;
}

IAssertHandler* SetActiveAssertHandler(IAssertHandler* pHandler)
{
	IAssertHandler* pPrevious = g_pHandler;
	g_pHandler = pHandler;
	return pPrevious;
}

int RecordingAssertHandler::Report(const char* expression, int line, const char* file, const char* message)
{
	_vReports.push_back({expression ? expression : "", line, file ? file : "", message ? message : ""});
	return _iAnswer;
}

bool RecordingAssertHandler::HasExpression(const std::string& expression) const
{
	for (const Report_& report : _vReports)
		if (report.sExpression == expression)
			return true;
	return false;
}

namespace Detail
{
void ReportAssert(bool& bSilenced, const char* expression, int line, const char* file, const char* message)
{
	switch (GetActiveAssertHandler()->Report(expression, line, file, message))
	{
	case IAssertHandler::kAnswer_Silence:
		bSilenced = true;
		break;
	case IAssertHandler::kAnswer_Break:
		std::raise(SIGTRAP);
		break;
	default:
		break;
	}
}
} // namespace Detail
} // namespace Tarsel
