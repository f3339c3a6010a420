#include "values/ValueTraits.h"

#include <vector>

namespace Tarsel::Effects
{

bool ApplyBoolAsInt::Apply(IQLPrimitive* pPrimitive, const std::string& sName, int iLocation,
                           const bool* pData, int nCount)
{
	if (nCount == 1)
		return pPrimitive->SetUniform(sName, iLocation, pData[0] ? 1 : 0);
	std::vector<int> vInts(pData, pData + nCount);
	return pPrimitive->SetUniformArray(sName, iLocation, nCount, vInts.data());
}

} // namespace Tarsel::Effects
