#pragma once

#include <map>
#include <string>
#include <vector>

#include "core/Timer.h"

namespace Tarsel::Effects
{

// Milliseconds per timed call, by operation name, in call order.
class Profiler
{
public:
	void AddSample(const std::string& name, float milliseconds) { _mSamples[name].push_back(milliseconds); }
	const std::map<std::string, std::vector<float>>& GetSamples() const { return _mSamples; }
	// Empty when the operation was never timed.
	const std::vector<float>& GetSamples(const std::string& name) const;

private:
	std::map<std::string, std::vector<float>> _mSamples;
};

// Times one call: the sample is added when the scope ends.
class ProfileScope
{
public:
	ProfileScope(Profiler* profiler, const char* name) : _pProfiler(profiler), _szName(name) {}
	~ProfileScope()
	{
		if (_pProfiler)
			_pProfiler->AddSample(_szName, static_cast<float>(_timer.Elapsed()));
	}
	ProfileScope(const ProfileScope&) = delete;
	ProfileScope& operator=(const ProfileScope&) = delete;

private:
	Profiler* _pProfiler;
	const char* _szName;
	ManualTimer _timer;
};

} // namespace Tarsel::Effects
