#pragma once

#include <string>

#include "objects/ParameterCommon.h"
#include "values/Value.h"

namespace Tarsel::Effects
{

class Expression;
class IMgrEffects;
class Variable;
template <class T>
class TIParentSyntax;

// A vertex coordinate of a shader: its value names the vertex attribute that the coordinate reads.
class ParameterCoord : public ParameterCommon
{
public:
	ParameterCoord();
	~ParameterCoord() override;
	ParameterCoord(const ParameterCoord&) = delete;
	ParameterCoord& operator=(const ParameterCoord&) = delete;

	bool Init(IMgrEffects* mgrEffects, TypeSpecifier type, const std::string& name,
	          TransformationCoord transformation);
	void Shutdown();

	using IParameter::Get;
	using IParameter::Set;

	bool AddListenerChangeValue(const Listener&) override { return true; }
	bool RemoveListenerChangeValue(const Listener&) override { return true; }
	bool CollectConstructor(CompoundStatement*) override { return true; }
	bool CollectShader(Module*) override { return true; }
	bool VisitTransformations(VisitorTransformation& delegate) override;
	// Complete once it names an attribute.
	bool IsComplete() const override;
	ParameterClass GetClass() const override { return kParameterClass_Coord; }
	TypeSpecifier GetTypeSpecifier() const override { return _eType; }
	std::string GetType() const override;
	std::string GetName() const override { return _sName; }
	bool IsArray() const override { return false; }
	int GetLength() const override { return 1; }
	bool SetLength(int) override { return false; }
	bool IsResizable() const override { return false; }
	bool IsDefault(int) const override { return false; }
	bool IsDefault() const override { return false; }
	bool GetAsString(std::string& value, int index) const override;
	bool GetAsString(std::string& value) const override;

	bool Set(const std::string& value) override;
	bool Get(std::string& value) override;

	TransformationCoord GetTransformation() const { return _eTransformation; }

private:
	bool _ReplaceReference(Variable* variable, TIParentSyntax<Expression>* parent);

	IMgrEffects* _pMgrEffects;
	TypeSpecifier _eType;
	std::string _sName;
	TransformationCoord _eTransformation;
	Value<std::string> _value;
};

} // namespace Tarsel::Effects
