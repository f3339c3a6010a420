#include "codegen/PackedNames.h"

namespace Tarsel::Effects
{

void PackedNames::Clear()
{
	_vSpans.clear();
	_sBytes.clear();
}

void PackedNames::Reserve(size_t nNames, size_t nBytes)
{
	_vSpans.reserve(nNames);
	_sBytes.reserve(nBytes);
}

void PackedNames::Add(std::string_view sName)
{
	_vSpans.push_back(Span{static_cast<uint32_t>(_sBytes.size()), static_cast<uint32_t>(sName.size())});
	_sBytes.append(sName);
}

std::string_view PackedNames::operator[](size_t i) const
{
	return std::string_view(_sBytes.data() + _vSpans[i].iBegin, _vSpans[i].nLength);
}

} // namespace Tarsel::Effects
