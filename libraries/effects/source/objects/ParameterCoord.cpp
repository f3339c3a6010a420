#include "objects/ParameterCoord.h"

#include "graph/ReferenceParameter.h"
#include "objects/Diagnostics.h"
#include "syntax/VisitorDelegate.h"

namespace Tarsel::Effects
{

ParameterCoord::ParameterCoord()
    : _pMgrEffects(nullptr), _eType(kType_Void), _eTransformation(kTransformation_Coord),
      _value(1, false, std::string())
{
}

ParameterCoord::~ParameterCoord()
{
	Shutdown();
}

bool ParameterCoord::Init(IMgrEffects* mgrEffects, TypeSpecifier type, const std::string& name,
                          TransformationCoord transformation)
{
	_pMgrEffects = mgrEffects;
	_eType = type;
	_sName = name;
	_eTransformation = transformation;
	// Normals and tangents are transformed as directions in space.
	if (transformation != kTransformation_Coord && type != kType_Vec3)
	{
		ConsoleOf(mgrEffects)->Message("ParameterCoord::Init Transformed Coords must be declared vec3\n");
		return false;
	}
	return true;
}

void ParameterCoord::Shutdown()
{
	_setListenersChangeStructure.clear();
	_pMgrEffects = nullptr;
}

bool ParameterCoord::IsComplete() const
{
	return !_value.Get(0).empty();
}

std::string ParameterCoord::GetType() const
{
	return TypeSpecifierToString(_eType);
}

bool ParameterCoord::GetAsString(std::string& value, int index) const
{
	if (index != 0)
		return false;
	value = _value.Get(0);
	return true;
}

bool ParameterCoord::GetAsString(std::string& value) const
{
	return GetAsString(value, 0);
}

bool ParameterCoord::Get(std::string& value)
{
	return GetAsString(value, 0);
}

bool ParameterCoord::Set(const std::string& value)
{
	if (value == _value.Get(0))
		return true;
	_value.Set(value, 0);
	return _setListenersChangeStructure.Notify(this);
}

bool ParameterCoord::VisitTransformations(VisitorTransformation& delegate)
{
	TVisitorSyntaxDelegate<Variable, TIParentSyntax<Expression>> visitor(
	    MakeDelegate(this, &ParameterCoord::_ReplaceReference));
	return delegate(kClass_Variable, &visitor);
}

bool ParameterCoord::_ReplaceReference(Variable* variable, TIParentSyntax<Expression>*)
{
	if (variable->GetIdentifier()->GetString() == _sName)
		variable->GetIdentifier()->SetString(_value.Get(0));
	return true;
}

} // namespace Tarsel::Effects
