#include "effects/IEffect.h"

#include "quillon/IQLPrimitive.h"
#include "quillon/IQLProgram.h"

namespace Tarsel::Effects
{

bool ActionUpdate::Run(IQLPrimitive* primitive) const
{
	if (!_delegateApply)
		return true;
	IQLProgram* program = _pEffect ? _pEffect->GetQLProgram() : nullptr;
	AutoBindQLPrimitive bind(primitive);
	if (program)
		qlUseProgram(program->GetHandle());
	return _delegateApply(primitive, program);
}

} // namespace Tarsel::Effects
