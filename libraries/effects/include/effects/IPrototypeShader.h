#pragma once

#include <string>

#include "core/Delegate.h"
#include "core/Vector.h"
#include "effects/Export.h"
#include "effects/Types.h"
#include "quillon/QLTypes.h"

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class ClassDefinition;
class Expression;
class FunctionSelection;
class IGraph;
class IMember;
class IMgrEffects;
class IParameter;
class IShader;
class ReferencePrototypeShader;
template <class T>
class TIParentSyntax;

// The class-level view of one shader class: its static values and the code its instances share.
class TARSEL_EFFECTS_EXPORT IPrototypeShader
{
public:
	typedef FastDelegate1<IPrototypeShader*, bool> ListenerDelete;
	typedef FastDelegate2<const std::string&, IParameter*, bool> VisitorParameter;
	typedef FastDelegate2<const std::string&, IMember*, bool> VisitorMember;
	typedef FastDelegate3<TypeSpecifier, const std::string&, TransformationCoord, bool> VisitorCoord;
	typedef FastDelegate2<TypeSpecifier, const std::string&, bool> VisitorOutput;

	virtual ~IPrototypeShader() {}

	virtual bool AddListenerDelete(ListenerDelete& listener) = 0;
	virtual bool RemoveListenerDelete(ListenerDelete& listener) = 0;
	virtual std::string GetClassName() const = 0;
	virtual IMgrEffects* GetMgrEffects() const = 0;
	virtual const ClassDefinition* GetDefinition() const = 0;
	// Counted per graph; every acquisition is matched by one release.
	virtual ReferencePrototypeShader* AcquireReference(IGraph* graph) = 0;
	virtual bool ReleaseReference(ReferencePrototypeShader* reference) = 0;
	// Static parameters and members only.
	virtual bool VisitParameters(VisitorParameter& visitor) = 0;
	virtual IParameter* GetParameter(const std::string& name) = 0;
	virtual bool VisitMembers(VisitorMember& visitor) = 0;
	virtual IMember* GetMember(const std::string& name) = 0;
	virtual bool VisitCoords(VisitorCoord& visitor) = 0;
	virtual bool VisitOutputs(VisitorOutput& visitor) = 0;
	virtual bool HasConstructorStatic() = 0;
	virtual std::string GetConstructorStatic() const = 0;
	// Rewrites a call of one of this class's static methods through the class name.
	virtual bool ReplaceStatic(FunctionSelection* selection, TIParentSyntax<Expression>* parent,
	                           Result* result) = 0;
	virtual bool IsComplete() = 0;

	// Static parameters by name.
	virtual bool SetParameter(const std::string& name, QLtexture* const* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, IShader** values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const QLprimitive* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const Matrix44f* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const Matrix33f* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const Vector4f* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const Vector3f* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const Vector2f* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const float* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const Vector4i* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const Vector3i* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const Vector2i* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const int* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, const bool* values, int count) = 0;
	virtual bool SetParameter(const std::string& name, IShader* value, int index) = 0;
	virtual bool SetParameter(const std::string& name, QLtexture* value, int index) = 0;
	virtual bool SetParameter(const std::string& name, QLprimitive value, int index) = 0;
	virtual bool SetParameter(const std::string& name, const Matrix44f& value, int index) = 0;
	virtual bool SetParameter(const std::string& name, const Matrix33f& value, int index) = 0;
	virtual bool SetParameter(const std::string& name, const Vector4f& value, int index) = 0;
	virtual bool SetParameter(const std::string& name, const Vector3f& value, int index) = 0;
	virtual bool SetParameter(const std::string& name, const Vector2f& value, int index) = 0;
	virtual bool SetParameter(const std::string& name, float value, int index) = 0;
	virtual bool SetParameter(const std::string& name, int value, int index) = 0;
	virtual bool SetParameter(const std::string& name, IShader* value) = 0;
	virtual bool SetParameter(const std::string& name, QLtexture* value) = 0;
	virtual bool SetParameter(const std::string& name, QLprimitive value) = 0;
	virtual bool SetParameter(const std::string& name, const Matrix44f& value) = 0;
	virtual bool SetParameter(const std::string& name, const Matrix33f& value) = 0;
	virtual bool SetParameter(const std::string& name, const Vector4f& value) = 0;
	virtual bool SetParameter(const std::string& name, const Vector3f& value) = 0;
	virtual bool SetParameter(const std::string& name, const Vector2f& value) = 0;
	virtual bool SetParameter(const std::string& name, float value) = 0;
	virtual bool SetParameter(const std::string& name, int value) = 0;
	virtual bool SetParameter(const std::string& name, bool value) = 0;
};

} // namespace Tarsel::Effects
