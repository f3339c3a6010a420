#pragma once

#include <string>

#include "effects/IMgrEffects.h"
#include "effects/IParameter.h"
#include "objects/Diagnostics.h"
#include "quillon/IQLPrimitive.h"
#include "quillon/IQuillonContext.h"

namespace Tarsel::Effects
{

inline QLprimitive HandleOf(const IQLPrimitive* primitive)
{
	return primitive ? primitive->GetHandle() : QLprimitive(0);
}

// Failed sets by name go to the context's message log, where the host looks for them.
inline void ReportParameterError(IMgrEffects* mgrEffects, const char* message, const std::string& name,
                                 const std::string& className)
{
	IQuillonContext* context = mgrEffects ? mgrEffects->GetQuillonContext() : nullptr;
	if (context)
		context->Message("Parameter error \"%s\" parameter:\"%s\" class:\"%s\"\n", message, name.c_str(),
		                 className.c_str());
}

// Sets a parameter that a shader found by name, with the caller's result installed as the manager's current
// one for the set, and reports a missing parameter or a refused value.
template <class... Args>
bool SetParameterByName(IMgrEffects* mgrEffects, IParameter* parameter, Result* result,
                        const std::string& name, const std::string& className, bool indexed, Args... args)
{
	ScopedResult scope(mgrEffects, result);
	if (parameter == nullptr)
	{
		ReportParameterError(mgrEffects, indexed ? "Can't find indexed parameter" : "Can't find parameter",
		                     name, className);
		return false;
	}
	if (!parameter->Set(args...))
	{
		ReportParameterError(mgrEffects, indexed ? "Can't set indexed parameter" : "Can't set parameter",
		                     name, className);
		return false;
	}
	return true;
}

} // namespace Tarsel::Effects
