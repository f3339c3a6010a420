#pragma once

#include "quillon/QLTypes.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace Tarsel
{
struct QLWrite;
}

namespace Tarsel::Fx
{

// The events of a compile run, one line each on the output:
//   compile FRAME EFFECT SHADERNAME
//   write FRAME PRIMITIVE UNIFORM SETTER COUNT VALUES...
//   summary: E effects, C compiles, W writes, X errors
// An effect tells the reference effects of its primitives, and a graph applies its values, in the order of
// their addresses, which changes from run to run. So that runs print the same, the events of a frame are
// grouped by program, in the order the programs first showed up, then by primitive handle, then by
// uniform; writes to one uniform keep the order they were made in, and a program's compiles come first.
class EventPrinter
{
public:
	explicit EventPrinter(std::ostream& out) : _out(out) {}

	// Prints the events of the frame before. Frames count from 1; 0 is the setup before the first frame.
	void SetFrame(int frame);
	int GetFrame() const { return _iFrame; }

	void Compile(unsigned program, const std::string& effect, const std::string& shaderName);
	void Write(QLprimitive primitive, const std::string& name, const QLWrite& write);
	// Prints what is pending, then the summary.
	void Summary(int effects, int errors);

	int GetCountCompiles() const { return _nCompiles; }
	int GetCountWrites() const { return _nWrites; }

private:
	struct Event
	{
		unsigned program;
		QLprimitive primitive; // 0 for compiles, which come before the writes of their program
		std::string uniform;
		std::string line;
	};

	void _Flush();

	std::vector<Event> _vPending;
	std::ostream& _out;
	int _iFrame = 0;
	int _nCompiles = 0;
	int _nWrites = 0;
};

// The written elements as printed: "%g" for float setters, "%d" for int setters, nothing for blocks and
// textures. Each starts with a space.
std::string FormatWriteValues(const QLWrite& write);

} // namespace Tarsel::Fx
