#include "manager/Profiler.h"

namespace Tarsel::Effects
{

const std::vector<float>& Profiler::GetSamples(const std::string& name) const
{
	static const std::vector<float> none;
	std::map<std::string, std::vector<float>>::const_iterator it = _mSamples.find(name);
	return it == _mSamples.end() ? none : it->second;
}

} // namespace Tarsel::Effects
