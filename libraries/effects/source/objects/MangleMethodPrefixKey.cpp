#include "objects/MangleMethodPrefixKey.h"

#include "manager/Key.h"
#include "syntax/Syntax.h"

namespace Tarsel::Effects
{

std::string MangleMethodPrefixKey::Mangle(const std::string& prefix, const FunctionPrototype* prototype) const
{
	return prefix + prototype->GetName()->GetString() + _pKey->ToString();
}

} // namespace Tarsel::Effects
