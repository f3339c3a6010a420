#pragma once

#include <map>
#include <string>

#include "effects/IShader.h"
#include "lights/IParameterWrapper.h"

namespace Tarsel::Effects
{

// What a shader wrapper shows as its parameters: its substitutes (owned) first, then the wrapped shader's
// own parameters that no substitute took over.
class ParametersPresented
{
public:
	ParametersPresented() = default;
	~ParametersPresented() { Clear(); }
	ParametersPresented(const ParametersPresented&) = delete;
	ParametersPresented& operator=(const ParametersPresented&) = delete;

	// Starts from every parameter of the shader, none substituted.
	bool Collect(IShader* pShader);
	const std::map<std::string, IParameter*>& GetPlain() const { return _mParameters; }
	IParameter* FindPlain(const std::string& sName) const;
	IParameterWrapper* FindWrapped(const std::string& sName) const;
	IParameter* Find(const std::string& sName) const;
	// Stops at the first false answer.
	bool Visit(IShader::VisitorParameter& visitor) const;

	// Shows the substitute under sName in place of the parameter, and hides the parameter sHidden (an indexer
	// that the substitute writes) when given. Takes the wrapper.
	void Substitute(const std::string& sName, IParameterWrapper* pWrapper, const std::string* psHidden);
	template <class F>
	bool VisitWrapped(F&& function) const
	{
		for (const auto& entry : _mParametersWrapped)
			if (!function(entry.second))
				return false;
		return true;
	}
	// The wrapped shader is gone: the substitutes must not reach into it any more.
	void Detach();
	void Clear();

private:
	bool _OnParameter(const std::string& sName, IParameter* pParameter);

	std::map<std::string, IParameter*> _mParameters;
	std::map<std::string, IParameterWrapper*> _mParametersWrapped;
};

// The indexer that goes with an interface input: the value parameter named after it with "Ref".
IParameter* FindIndexer(const ParametersPresented& parameters, const std::string& sInput);

} // namespace Tarsel::Effects
