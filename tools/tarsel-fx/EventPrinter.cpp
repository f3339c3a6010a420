#include "EventPrinter.h"

#include "quillon/QLRecord.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <ostream>

namespace Tarsel::Fx
{

std::string FormatWriteValues(const QLWrite& write)
{
	if (write.setter == kQLSetter_TextureArray || write.setter == kQLSetter_UniformBlock)
		return std::string();
	const bool bFloats =
	    write.setter == kQLSetter_Float || write.setter == kQLSetter_FloatArray ||
	    (write.setter >= kQLSetter_Vector2fArray && write.setter <= kQLSetter_Matrix44fArray);
	std::string text;
	char item[32];
	for (size_t i = 0; i + 4 <= write.bytes.size(); i += 4)
	{
		if (bFloats)
		{
			float value;
			std::memcpy(&value, &write.bytes[i], 4);
			std::snprintf(item, sizeof(item), " %g", double(value));
		}
		else
		{
			int32_t value;
			std::memcpy(&value, &write.bytes[i], 4);
			std::snprintf(item, sizeof(item), " %d", int(value));
		}
		text += item;
	}
	return text;
}

void EventPrinter::SetFrame(int frame)
{
	_Flush();
	_iFrame = frame;
}

void EventPrinter::Compile(unsigned program, const std::string& effect, const std::string& shaderName)
{
	++_nCompiles;
	_vPending.push_back({program, 0, std::string(),
	                     "compile " + std::to_string(_iFrame) + " " + effect + " " + shaderName + "\n"});
}

void EventPrinter::Write(QLprimitive primitive, const std::string& name, const QLWrite& write)
{
	++_nWrites;
	// Without a linked program current the device knows no uniform; the name written is all there is.
	const std::string& uniform = write.uniform.empty() ? write.name : write.uniform;
	_vPending.push_back({write.program, primitive, uniform,
	                     "write " + std::to_string(_iFrame) + " " + name + " " + uniform + " " +
	                         QLSetterName(write.setter) + " " + std::to_string(write.count) +
	                         FormatWriteValues(write) + "\n"});
}

void EventPrinter::_Flush()
{
	std::map<unsigned, size_t> rank; // programs in the order they first showed up
	for (const Event& event : _vPending)
		rank.emplace(event.program, rank.size());
	auto before = [&rank](const Event& a, const Event& b)
	{
		if (a.program != b.program)
			return rank[a.program] < rank[b.program];
		return a.primitive != b.primitive ? a.primitive < b.primitive : a.uniform < b.uniform;
	};
	std::stable_sort(_vPending.begin(), _vPending.end(), before);
	for (const Event& event : _vPending)
		_out << event.line;
	_vPending.clear();
}

void EventPrinter::Summary(int effects, int errors)
{
	_Flush();
	_out << "summary: " << effects << " effects, " << _nCompiles << " compiles, " << _nWrites << " writes, "
	     << errors << " errors\n";
}

} // namespace Tarsel::Fx
