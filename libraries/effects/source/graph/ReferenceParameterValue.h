#pragma once

#include <map>

#include "graph/IGraph.h"
#include "graph/ReferenceParameter.h"

namespace Tarsel::Effects
{

class LocalParameterValueSingle;
class ParameterValue;
class ParameterValueArray;
class ParameterValueSingle;

// A value parameter in one graph. A change of its value re-applies just this reference in a compiled graph.
class ReferenceParameterValue : public ReferenceParameter
{
public:
	~ReferenceParameterValue() override;

	void Shutdown() override;

protected:
	ReferenceParameterValue() = default;
	bool _InitValue(IGraph* graph, IParameter* parameter);
	// Looks the uniform up; a missing one prints message and answers -1.
	int _FindUniform(IQLProgram* program, const std::string& name, const char* message) const;

private:
	bool _OnChangeValue(IParameter*);
};

// One value; a primitive may hold a local copy that replaces the shared value for it.
class ReferenceParameterValueSingle : public ReferenceParameterValue
{
public:
	~ReferenceParameterValueSingle() override;

	// The primitive's local parameter, made on first request; null when it cannot be made.
	LocalParameterValueSingle* AcquireLocal(IQLPrimitive* primitive);
	bool ReleaseLocal(LocalParameterValueSingle* local);

protected:
	bool _Apply(ParameterValueSingle* parameter, IQLPrimitive* primitive, IQLProgram* program, int location);

private:
	std::map<IQLPrimitive*, LocalParameterValueSingle*> _mLocalParameters;
};

class ReferenceParameterValueSingleSeparate : public ReferenceParameterValueSingle
{
public:
	bool Init(IGraph* graph, ParameterValueSingle* parameter);
	bool Apply(IQLPrimitive* primitive, IQLProgram* program) override;
};

class ReferenceParameterValueArraySeparate : public ReferenceParameterValue
{
public:
	bool Init(IGraph* graph, ParameterValueArray* parameter);
	bool Apply(IQLPrimitive* primitive, IQLProgram* program) override;
};

} // namespace Tarsel::Effects
