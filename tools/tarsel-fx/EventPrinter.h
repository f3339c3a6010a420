#pragma once

#include <iosfwd>
#include <string>

namespace Tarsel
{
struct QLWrite;
}

namespace Tarsel::Fx
{

// The events of a compile run, one line each on the output, in the order they happen:
//   compile FRAME EFFECT SHADERNAME
//   write FRAME PRIMITIVE UNIFORM SETTER COUNT VALUES...
//   summary: E effects, C compiles, W writes, X errors
class EventPrinter
{
public:
	explicit EventPrinter(std::ostream& out) : _out(out) {}

	// Frames count from 1; 0 is the setup before the first frame.
	void SetFrame(int frame) { _iFrame = frame; }
	int GetFrame() const { return _iFrame; }

	void Compile(const std::string& effect, const std::string& shaderName);
	void Write(const std::string& primitive, const QLWrite& write);
	void Summary(int effects, int errors);

	int GetCountCompiles() const { return _nCompiles; }
	int GetCountWrites() const { return _nWrites; }

private:
	std::ostream& _out;
	int _iFrame = 0;
	int _nCompiles = 0;
	int _nWrites = 0;
};

// The written elements as printed: "%g" for float setters, "%d" for int setters, nothing for blocks and
// textures. Each starts with a space.
std::string FormatWriteValues(const QLWrite& write);

} // namespace Tarsel::Fx
