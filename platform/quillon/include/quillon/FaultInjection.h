#pragma once

#include <string>
#include <vector>

namespace Tarsel
{

// One countdown over every reference-device call that can fail (creations, attach, compile, link, buffer
// storage and mapping, primitive writes), so that a test can fail the k-th call of a scenario and walk k
// through every call the scenario makes. Process-wide: primitives know no context.
class QLFaultInjection
{
public:
	// The k-th failable call from now fails (k >= 1); later calls succeed again. 0 disarms.
	static void FailCall(int k);
	static void Disarm() { FailCall(0); }

	// Each failable call asks here first; true means fail now. With errors, the call's message is added.
	static bool Fail(const char* site, std::vector<std::string>* errors = nullptr);

	// Failable calls seen since the last FailCall while armed.
	static int GetCountCalls();
	// Whether the armed call was reached, and which operation it was ("" when not).
	static bool WasInjected();
	static const std::string& GetSite();
};

// Arms the countdown for a scope.
class ScopedQLFault
{
public:
	explicit ScopedQLFault(int k) { QLFaultInjection::FailCall(k); }
	~ScopedQLFault() { QLFaultInjection::Disarm(); }
	ScopedQLFault(const ScopedQLFault&) = delete;
	ScopedQLFault& operator=(const ScopedQLFault&) = delete;
};

} // namespace Tarsel
