#include "EventPrinter.h"

#include "quillon/QLRecord.h"

#include <cstdio>
#include <cstring>
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

void EventPrinter::Compile(const std::string& effect, const std::string& shaderName)
{
	++_nCompiles;
	_out << "compile " << _iFrame << " " << effect << " " << shaderName << "\n";
}

void EventPrinter::Write(const std::string& primitive, const QLWrite& write)
{
	++_nWrites;
	// Without a linked program current the device knows no uniform; the name written is all there is.
	const std::string& uniform = write.uniform.empty() ? write.name : write.uniform;
	_out << "write " << _iFrame << " " << primitive << " " << uniform << " " << QLSetterName(write.setter)
	     << " " << write.count << FormatWriteValues(write) << "\n";
}

void EventPrinter::Summary(int effects, int errors)
{
	_out << "summary: " << effects << " effects, " << _nCompiles << " compiles, " << _nWrites << " writes, "
	     << errors << " errors\n";
}

} // namespace Tarsel::Fx
