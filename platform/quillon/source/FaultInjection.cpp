#include "quillon/FaultInjection.h"

namespace Tarsel
{
namespace
{

struct Countdown
{
	int iTarget = 0;
	int nCalls = 0;
	std::string sSite;
};

Countdown& State()
{
	static Countdown countdown;
	return countdown;
}

} // namespace

void QLFaultInjection::FailCall(int k)
{
	State() = Countdown{k > 0 ? k : 0, 0, std::string()};
}

bool QLFaultInjection::Fail(const char* site, std::vector<std::string>* errors)
{
	Countdown& state = State();
	// Disarmed calls are not counted, so a long run cannot overflow the count.
	if (state.iTarget == 0 || ++state.nCalls != state.iTarget)
		return false;
	state.sSite = site;
	if (errors)
		errors->push_back(std::string("ERROR: ") + site + ": failure injected");
	return true;
}

int QLFaultInjection::GetCountCalls()
{
	return State().nCalls;
}

bool QLFaultInjection::WasInjected()
{
	return !State().sSite.empty();
}

const std::string& QLFaultInjection::GetSite()
{
	return State().sSite;
}

} // namespace Tarsel
