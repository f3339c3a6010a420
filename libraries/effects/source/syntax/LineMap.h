#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace Tarsel::Effects
{

// Where each line of a preprocessed text was written: the file and that file's own line number. The
// preprocessor appends one entry per line it emits; the scanner and the parser's messages read it back.
// A map without lines numbers line n as n + the line offset, in the library itself.
class LineMap
{
public:
	struct Position
	{
		const std::string* pFile; // null: the library's own text
		int32_t iLine;
	};

	LineMap() = default;
	// Not explicit: callers that still hand a plain line offset get the map they meant.
	LineMap(int lineOffset) : _iLineOffset(lineOffset) {}

	// The next line of the text comes from line `line` of `file`.
	void AddLine(const std::string& file, int32_t line);
	// Position of 1-based line `line` of the text. Lines past the last entry continue its file.
	Position Resolve(int32_t line) const;

	int32_t GetCountLines() const { return _nLines; }
	int GetLineOffset() const { return _iLineOffset; }
	void Clear();

private:
	// Consecutive lines of the text that are consecutive lines of one file.
	struct Run
	{
		int32_t iFirst;    // first line of the text in the run
		int32_t iFileLine; // its line in the file
		size_t iFile;      // index into _dFiles
	};

	// A deque, so that the names stay where they are while files are added.
	std::deque<std::string> _dFiles;
	std::vector<Run> _vRuns;
	int32_t _nLines = 0;
	int _iLineOffset = 0;
};

} // namespace Tarsel::Effects
