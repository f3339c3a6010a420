#pragma once

#include "effects/IShaderWrapper.h"
#include "lights/ParametersPresented.h"

namespace Tarsel::Effects
{

// Forwards every shader operation to the wrapped shader. Subclasses present substitutes for some of its
// parameters; values set by name reach a substitute when there is one.
class Shader_PassThrough : public IShaderWrapper
{
public:
	Shader_PassThrough();
	~Shader_PassThrough() override;
	Shader_PassThrough(const Shader_PassThrough&) = delete;
	Shader_PassThrough& operator=(const Shader_PassThrough&) = delete;

	// bOwnsShader: the shader goes back to the manager with the wrapper.
	bool Init(IMgrEffects* pMgrEffects, IShader* pShader, bool bOwnsShader);
	void Shutdown();

	bool AddListenerDelete(ListenerShader& listener) override;
	bool RemoveListenerDelete(ListenerShader& listener) override;
	bool CollectShader(Module* module) override;
	bool CollectDeclarationMethod(Module* module, const std::string& method) override;
	std::string GetInterfaceName() const override;
	std::string GetClassName() const override;
	std::string GetKeyString() const override;
	bool HasMethod(const std::string& method) const override;
	std::string GetMethodNameMangled(const std::string& method) const override;
	bool HasConstructor() override;
	std::string GetConstructor() const override;
	bool AddListenerChangeStructure(ListenerShader& listener) override;
	bool RemoveListenerChangeStructure(ListenerShader& listener) override;
	IPrototypeShader* GetPrototypeShader() override;
	IMgrEffects* GetMgrEffects() override;

	bool AddListenerCreateGraphSurface(ListenerCreateGraph& listener) override;
	bool RemoveListenerCreateGraphSurface(ListenerCreateGraph& listener) override;
	IGraph* GetGraphSurface() override;
	IGraph* PeekGraphSurface() override;
	void ShutdownGraphSurface() override;
	bool AddListenerCreateGraphFrame(ListenerCreateGraph& listener) override;
	bool RemoveListenerCreateGraphFrame(ListenerCreateGraph& listener) override;
	IGraph* GetGraphFrame() override;
	IGraph* PeekGraphFrame() override;
	void ShutdownGraphFrame() override;
	bool AddListenerCreateGraphPrefix(ListenerCreateGraph& listener) override;
	bool RemoveListenerCreateGraphPrefix(ListenerCreateGraph& listener) override;
	IGraph* GetGraphPrefix() override;
	IGraph* PeekGraphPrefix() override;
	void ShutdownGraphPrefix() override;

	IReferenceShader* AcquireReference(IGraph* graph) override;
	IReferenceShader* GetReference(IGraph* graph) override;
	bool ReleaseReference(IReferenceShader* reference) override;

	IParameter* GetParameter(const std::string& name) override;
	bool VisitParameters(VisitorParameter& visitor) override;
	IMember* GetMember(const std::string& name) override;
	bool VisitMembers(VisitorMember& visitor) override;
	IParameter* GetCoord(const std::string& name) override;
	bool VisitCoords(VisitorParameter& visitor) override;
	bool SetCoord(Result* result, const std::string& name, const std::string& value) override;
	bool VisitMethods(VisitorMethod& visitor) override;
	bool IsComplete() override;
	void SetName(const std::string& name) override;
	std::string GetName() const override;

#define TARSEL_PASS_THROUGH_SET(...)                                                                         \
	bool SetParameter(Result* result, const std::string& name, __VA_ARGS__) override;
	TARSEL_PASS_THROUGH_SET(bool value)
	TARSEL_PASS_THROUGH_SET(int value)
	TARSEL_PASS_THROUGH_SET(float value)
	TARSEL_PASS_THROUGH_SET(const Vector2f& value)
	TARSEL_PASS_THROUGH_SET(const Vector3f& value)
	TARSEL_PASS_THROUGH_SET(const Vector4f& value)
	TARSEL_PASS_THROUGH_SET(const Matrix33f& value)
	TARSEL_PASS_THROUGH_SET(const Matrix44f& value)
	TARSEL_PASS_THROUGH_SET(IShader* value)
	TARSEL_PASS_THROUGH_SET(const IQLPrimitive* value)
	TARSEL_PASS_THROUGH_SET(bool value, int index)
	TARSEL_PASS_THROUGH_SET(int value, int index)
	TARSEL_PASS_THROUGH_SET(float value, int index)
	TARSEL_PASS_THROUGH_SET(const Vector2f& value, int index)
	TARSEL_PASS_THROUGH_SET(const Vector3f& value, int index)
	TARSEL_PASS_THROUGH_SET(const Vector4f& value, int index)
	TARSEL_PASS_THROUGH_SET(const Matrix33f& value, int index)
	TARSEL_PASS_THROUGH_SET(const Matrix44f& value, int index)
	TARSEL_PASS_THROUGH_SET(IShader* value, int index)
	TARSEL_PASS_THROUGH_SET(const IQLPrimitive* value, int index)
	TARSEL_PASS_THROUGH_SET(QLtexture* value)
	TARSEL_PASS_THROUGH_SET(const bool* values, int count)
	TARSEL_PASS_THROUGH_SET(const int* values, int count)
	TARSEL_PASS_THROUGH_SET(const float* values, int count)
	TARSEL_PASS_THROUGH_SET(const Vector2i* values, int count)
	TARSEL_PASS_THROUGH_SET(const Vector3i* values, int count)
	TARSEL_PASS_THROUGH_SET(const Vector4i* values, int count)
	TARSEL_PASS_THROUGH_SET(const Vector2f* values, int count)
	TARSEL_PASS_THROUGH_SET(const Vector3f* values, int count)
	TARSEL_PASS_THROUGH_SET(const Vector4f* values, int count)
	TARSEL_PASS_THROUGH_SET(const Matrix33f* values, int count)
	TARSEL_PASS_THROUGH_SET(const Matrix44f* values, int count)
	TARSEL_PASS_THROUGH_SET(const QLprimitive* values, int count)
	TARSEL_PASS_THROUGH_SET(QLtexture* const* values, int count)
	TARSEL_PASS_THROUGH_SET(IShader** values, int count)
#undef TARSEL_PASS_THROUGH_SET

	IShader* GetShaderWrapped() override
	{
		return _pShader;
	}
	// The wrapped shader is deleted under the wrapper.
	virtual bool _OnDeleteShader(IShader* pShader);

protected:
	// The substitute presented under a name, null where the wrapped shader's own parameter shows.
	virtual IParameterWrapper* _GetParameterWrapped(const std::string&)
	{
		return nullptr;
	}

	IShader* _pShader;
	IMgrEffects* _pMgrEffects;
	bool _bOwnsShader;

private:
	template <class... Args>
	bool _SetParameter(Result* result, const std::string& name, bool indexed, Args... args);
};

// A pass-through that shows its own view of the wrapped shader's parameters.
class Shader_PassThroughPresenting : public Shader_PassThrough
{
public:
	~Shader_PassThroughPresenting() override { _parameters.Clear(); }

	IParameter* GetParameter(const std::string& name) override { return _parameters.Find(name); }
	bool VisitParameters(VisitorParameter& visitor) override { return _parameters.Visit(visitor); }
	bool _OnDeleteShader(IShader* pShader) override
	{
		_parameters.Detach();
		return Shader_PassThrough::_OnDeleteShader(pShader);
	}

protected:
	IParameterWrapper* _GetParameterWrapped(const std::string& name) override
	{
		return _parameters.FindWrapped(name);
	}

	ParametersPresented _parameters;
};

} // namespace Tarsel::Effects
