#pragma once

#include <string>
#include <vector>

namespace Tarsel
{
// Told of failed internal-consistency checks. Answers: 0 continue, 1 continue and silence this check site
// for the rest of the process, 2 break into the debugger.
class IAssertHandler
{
public:
	enum Answer
	{
		kAnswer_Continue = 0,
		kAnswer_Silence = 1,
		kAnswer_Break = 2
	};
	virtual ~IAssertHandler() = default;
	virtual int Report(const char* expression, int line, const char* file, const char* message) = 0;
};

IAssertHandler* GetActiveAssertHandler();
// Installs a handler and answers the previous one; null restores the default (one line on stderr, continue).
IAssertHandler* SetActiveAssertHandler(IAssertHandler* pHandler);

// Keeps every report, for tests; answers what it is told to.
class RecordingAssertHandler : public IAssertHandler
{
public:
	struct Report_
	{
		std::string sExpression;
		int iLine;
		std::string sFile;
		std::string sMessage;
	};
	int Report(const char* expression, int line, const char* file, const char* message) override;
	const std::vector<Report_>& GetReports() const { return _vReports; }
	bool HasExpression(const std::string& expression) const;
	void SetAnswer(int answer) { _iAnswer = answer; }
	void Clear() { _vReports.clear(); }

private:
	std::vector<Report_> _vReports;
	int _iAnswer = kAnswer_Continue;
};

// Installs a handler for a scope and restores the previous one.
class ScopedAssertHandler
{
public:
	explicit ScopedAssertHandler(IAssertHandler* pHandler) : _pPrevious(SetActiveAssertHandler(pHandler)) {}
	~ScopedAssertHandler() { SetActiveAssertHandler(_pPrevious); }
	ScopedAssertHandler(const ScopedAssertHandler&) = delete;
	ScopedAssertHandler& operator=(const ScopedAssertHandler&) = delete;

private:
	IAssertHandler* _pPrevious;
};

namespace Detail
{
// Reports one failed check; a site silenced by an answer 1 is not reported again.
void ReportAssert(bool& bSilenced, const char* expression, int line, const char* file, const char* message);
} // namespace Detail
} // namespace Tarsel

// The check never changes control flow: code after it runs on. Each public macro stringifies its own
// argument, so the text is the expression as written (NULL stays "NULL", not its expansion).
#define TARSEL_DETAIL_CHECK(expr, text, message)                                                             \
	do                                                                                                       \
	{                                                                                                        \
		static bool s_bSilenced = false;                                                                     \
		if (!(expr) && !s_bSilenced)                                                                         \
			::Tarsel::Detail::ReportAssert(s_bSilenced, text, __LINE__, __FILE__, message);                  \
	} while (0)
#define TARSEL_ASSERT_MSG(expr, message) TARSEL_DETAIL_CHECK(expr, #expr, message)
#define TARSEL_ASSERT(expr) TARSEL_DETAIL_CHECK(expr, #expr, nullptr)
#define TARSEL_FAIL(message) TARSEL_DETAIL_CHECK(false, "false", message)
