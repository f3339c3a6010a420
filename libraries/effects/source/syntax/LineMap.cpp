#include "syntax/LineMap.h"

#include <algorithm>

namespace Tarsel::Effects
{

void LineMap::AddLine(const std::string& file, int32_t line)
{
	++_nLines;
	if (!_vRuns.empty())
	{
		const Run& last = _vRuns.back();
		if (_dFiles[last.iFile] == file && last.iFileLine + (_nLines - last.iFirst) == line)
			return;
	}
	// Few files take part in one load, and a run usually returns to a recent one.
	size_t iFile = _dFiles.size();
	for (size_t i = _dFiles.size(); i-- > 0;)
	{
		if (_dFiles[i] == file)
		{
			iFile = i;
			break;
		}
	}
	if (iFile == _dFiles.size())
		_dFiles.push_back(file);
	_vRuns.push_back({_nLines, line, iFile});
}

LineMap::Position LineMap::Resolve(int32_t line) const
{
	auto after = std::upper_bound(_vRuns.begin(), _vRuns.end(), line,
	                              [](int32_t value, const Run& run) { return value < run.iFirst; });
	if (after == _vRuns.begin())
		return {nullptr, line + _iLineOffset};
	const Run& run = *(after - 1);
	return {&_dFiles[run.iFile], run.iFileLine + (line - run.iFirst)};
}

void LineMap::Clear()
{
	_dFiles.clear();
	_vRuns.clear();
	_nLines = 0;
	_iLineOffset = 0;
}

} // namespace Tarsel::Effects
