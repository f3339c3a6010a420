#include "lights/Parameter_WrapperVectorInterfaceMulti.h"

#include "lights/Parameter_WrapperVectorInterfaceMultiToSingle.h"

namespace Tarsel::Effects
{

bool Parameter_WrapperVectorInterfaceMulti::Set(IShader* pShader, int index)
{
	if (!_pParameter || !_pIndexer || !_InRange(index))
		return false;
	Vector2i value(-1, -1);
	// A cleared connection leaves the slot to the other lights of its class.
	if (pShader && !ConnectToInterfaceArray(_pParameter, pShader, value))
		return false;
	if (!_pIndexer->Set(value, index))
		return false;
	_vConnections[size_t(index)] = pShader;
	return true;
}

} // namespace Tarsel::Effects
