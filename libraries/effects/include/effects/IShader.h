#pragma once

#include <string>

#include "core/Delegate.h"
#include "core/Vector.h"
#include "effects/Export.h"
#include "quillon/QLTypes.h"

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class FunctionPrototype;
class IGraph;
class IMember;
class IMgrEffects;
class IParameter;
class IPrototypeShader;
class IReferenceShader;
class Module;

// One instance of a shader class, as the host and the graphs see it.
class TARSEL_EFFECTS_EXPORT IShader
{
public:
	enum shaderType
	{
		kShaderType_Other = 0,
		kShaderType_Shader = 1,
	};

	typedef FastDelegate1<IShader*, bool> ListenerShader;
	typedef FastDelegate1<IGraph*, bool> ListenerCreateGraph;
	typedef FastDelegate2<const std::string&, IParameter*, bool> VisitorParameter;
	typedef FastDelegate2<const std::string&, IMember*, bool> VisitorMember;
	typedef FastDelegate1<FunctionPrototype*, bool> VisitorMethod;

	virtual ~IShader() {}

	virtual bool AddListenerDelete(ListenerShader& listener) = 0;
	virtual bool RemoveListenerDelete(ListenerShader& listener) = 0;
	// Adds this instance's code, under its own names, to a graph's module. The module borrows the code (see
	// Module::Borrow): it must go before the shader changes or is destroyed.
	virtual bool CollectShader(Module* module) = 0;
	// Adds the declaration (prototype only) of one method to a module.
	virtual bool CollectDeclarationMethod(Module* module, const std::string& method) = 0;
	virtual std::string GetInterfaceName() const = 0;
	virtual std::string GetClassName() const = 0;
	virtual std::string GetKeyString() const = 0;
	virtual bool HasMethod(const std::string& method) const = 0;
	virtual std::string GetMethodNameMangled(const std::string& method) const = 0;
	virtual bool HasConstructor() = 0;
	virtual std::string GetConstructor() const = 0;
	virtual bool AddListenerChangeStructure(ListenerShader& listener) = 0;
	virtual bool RemoveListenerChangeStructure(ListenerShader& listener) = 0;
	virtual IPrototypeShader* GetPrototypeShader() = 0;
	virtual IMgrEffects* GetMgrEffects() = 0;

	// Graphs rooted in this shader, one per kind, made on first request.
	virtual bool AddListenerCreateGraphSurface(ListenerCreateGraph& listener) = 0;
	virtual bool RemoveListenerCreateGraphSurface(ListenerCreateGraph& listener) = 0;
	virtual IGraph* GetGraphSurface() = 0;
	virtual IGraph* PeekGraphSurface() = 0;
	virtual void ShutdownGraphSurface() = 0;
	virtual bool AddListenerCreateGraphFrame(ListenerCreateGraph& listener) = 0;
	virtual bool RemoveListenerCreateGraphFrame(ListenerCreateGraph& listener) = 0;
	virtual IGraph* GetGraphFrame() = 0;
	virtual IGraph* PeekGraphFrame() = 0;
	virtual void ShutdownGraphFrame() = 0;
	virtual bool AddListenerCreateGraphPrefix(ListenerCreateGraph& listener) = 0;
	virtual bool RemoveListenerCreateGraphPrefix(ListenerCreateGraph& listener) = 0;
	virtual IGraph* GetGraphPrefix() = 0;
	virtual IGraph* PeekGraphPrefix() = 0;
	virtual void ShutdownGraphPrefix() = 0;

	// Counted per graph; every acquisition is matched by one release.
	virtual IReferenceShader* AcquireReference(IGraph* graph) = 0;
	virtual IReferenceShader* GetReference(IGraph* graph) = 0;
	virtual bool ReleaseReference(IReferenceShader* reference) = 0;

	virtual IParameter* GetParameter(const std::string& name) = 0;
	virtual bool VisitParameters(VisitorParameter& visitor) = 0;
	virtual IMember* GetMember(const std::string& name) = 0;
	virtual bool VisitMembers(VisitorMember& visitor) = 0;
	virtual IParameter* GetCoord(const std::string& name) = 0;
	virtual bool VisitCoords(VisitorParameter& visitor) = 0;
	virtual bool SetCoord(Result* result, const std::string& name, const std::string& value) = 0;
	virtual bool VisitMethods(VisitorMethod& visitor) = 0;
	virtual bool IsComplete() = 0;
	virtual void SetName(const std::string& name) = 0;
	virtual std::string GetName() const = 0;

	virtual bool SetParameter(Result* result, const std::string& name, bool value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, int value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, float value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector2f& value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector3f& value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector4f& value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Matrix33f& value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Matrix44f& value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, IShader* value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const IQLPrimitive* value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, bool value, int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, int value, int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, float value, int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector2f& value, int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector3f& value, int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector4f& value, int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Matrix33f& value, int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Matrix44f& value, int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, IShader* value, int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const IQLPrimitive* value,
	                          int index) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, QLtexture* value) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const bool* values, int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const int* values, int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const float* values, int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector2i* values, int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector3i* values, int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector4i* values, int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector2f* values, int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector3f* values, int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Vector4f* values, int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Matrix33f* values,
	                          int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const Matrix44f* values,
	                          int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, const QLprimitive* values,
	                          int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, QLtexture* const* values,
	                          int count) = 0;
	virtual bool SetParameter(Result* result, const std::string& name, IShader** values, int count) = 0;

	virtual shaderType GetShaderType() const { return kShaderType_Other; }
};

} // namespace Tarsel::Effects
