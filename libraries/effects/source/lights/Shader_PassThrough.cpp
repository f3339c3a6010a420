#include "lights/Shader_PassThrough.h"

#include "core/Assert.h"
#include "effects/IMgrEffects.h"
#include "lights/IParameterWrapper.h"
#include "objects/ParameterSet.h"

namespace Tarsel::Effects
{

Shader_PassThrough::Shader_PassThrough() : _pShader(nullptr), _pMgrEffects(nullptr), _bOwnsShader(false) {}

Shader_PassThrough::~Shader_PassThrough()
{
	Shutdown();
}

bool Shader_PassThrough::Init(IMgrEffects* pMgrEffects, IShader* pShader, bool bOwnsShader)
{
	if (!pMgrEffects || !pShader)
		return false;
	_pMgrEffects = pMgrEffects;
	_pShader = pShader;
	_bOwnsShader = bOwnsShader;
	ListenerShader listener = MakeDelegate(this, &Shader_PassThrough::_OnDeleteShader);
	return _pShader->AddListenerDelete(listener);
}

void Shader_PassThrough::Shutdown()
{
	if (_pShader)
	{
		ListenerShader listener = MakeDelegate(this, &Shader_PassThrough::_OnDeleteShader);
		_pShader->RemoveListenerDelete(listener);
		if (_bOwnsShader && _pMgrEffects)
			_pMgrEffects->DestroyShader(_pShader);
	}
	_pShader = nullptr;
	_pMgrEffects = nullptr;
}

bool Shader_PassThrough::_OnDeleteShader(IShader*)
{
	_pShader = nullptr;
	TARSEL_FAIL("possible object leak");
	return true;
}

namespace
{
// What an operation answers once the wrapped shader is gone.
template <class R>
R Nothing()
{
	return R();
}
} // namespace

#define TARSEL_FORWARD(R, F, PARAMS, ARGS, QUALIFIER)                                                        \
	R Shader_PassThrough::F PARAMS QUALIFIER                                                                 \
	{                                                                                                        \
		return _pShader ? _pShader->F ARGS : Nothing<R>();                                                   \
	}
#define TARSEL_FORWARD_VOID(F, PARAMS, ARGS)                                                                 \
	void Shader_PassThrough::F PARAMS                                                                        \
	{                                                                                                        \
		if (_pShader)                                                                                        \
			_pShader->F ARGS;                                                                                \
	}

TARSEL_FORWARD(bool, AddListenerDelete, (ListenerShader & listener), (listener), )
TARSEL_FORWARD(bool, RemoveListenerDelete, (ListenerShader & listener), (listener), )
TARSEL_FORWARD(bool, CollectShader, (Module * module), (module), )
TARSEL_FORWARD(bool, CollectDeclarationMethod, (Module * module, const std::string& method),
               (module, method), )
TARSEL_FORWARD(std::string, GetInterfaceName, (), (), const)
TARSEL_FORWARD(std::string, GetClassName, (), (), const)
TARSEL_FORWARD(std::string, GetKeyString, (), (), const)
TARSEL_FORWARD(bool, HasMethod, (const std::string& method), (method), const)
TARSEL_FORWARD(std::string, GetMethodNameMangled, (const std::string& method), (method), const)
TARSEL_FORWARD(bool, HasConstructor, (), (), )
TARSEL_FORWARD(std::string, GetConstructor, (), (), const)
TARSEL_FORWARD(bool, AddListenerChangeStructure, (ListenerShader & listener), (listener), )
TARSEL_FORWARD(bool, RemoveListenerChangeStructure, (ListenerShader & listener), (listener), )
TARSEL_FORWARD(IPrototypeShader*, GetPrototypeShader, (), (), )
TARSEL_FORWARD(IMgrEffects*, GetMgrEffects, (), (), )
TARSEL_FORWARD(bool, AddListenerCreateGraphSurface, (ListenerCreateGraph & listener), (listener), )
TARSEL_FORWARD(bool, RemoveListenerCreateGraphSurface, (ListenerCreateGraph & listener), (listener), )
TARSEL_FORWARD(IGraph*, GetGraphSurface, (), (), )
TARSEL_FORWARD(IGraph*, PeekGraphSurface, (), (), )
TARSEL_FORWARD_VOID(ShutdownGraphSurface, (), ())
TARSEL_FORWARD(bool, AddListenerCreateGraphFrame, (ListenerCreateGraph & listener), (listener), )
TARSEL_FORWARD(bool, RemoveListenerCreateGraphFrame, (ListenerCreateGraph & listener), (listener), )
TARSEL_FORWARD(IGraph*, GetGraphFrame, (), (), )
TARSEL_FORWARD(IGraph*, PeekGraphFrame, (), (), )
TARSEL_FORWARD_VOID(ShutdownGraphFrame, (), ())
TARSEL_FORWARD(bool, AddListenerCreateGraphPrefix, (ListenerCreateGraph & listener), (listener), )
TARSEL_FORWARD(bool, RemoveListenerCreateGraphPrefix, (ListenerCreateGraph & listener), (listener), )
TARSEL_FORWARD(IGraph*, GetGraphPrefix, (), (), )
TARSEL_FORWARD(IGraph*, PeekGraphPrefix, (), (), )
TARSEL_FORWARD_VOID(ShutdownGraphPrefix, (), ())
TARSEL_FORWARD(IReferenceShader*, AcquireReference, (IGraph * graph), (graph), )
TARSEL_FORWARD(IReferenceShader*, GetReference, (IGraph * graph), (graph), )
TARSEL_FORWARD(bool, ReleaseReference, (IReferenceShader * reference), (reference), )
TARSEL_FORWARD(IParameter*, GetParameter, (const std::string& name), (name), )
TARSEL_FORWARD(bool, VisitParameters, (VisitorParameter & visitor), (visitor), )
TARSEL_FORWARD(IMember*, GetMember, (const std::string& name), (name), )
TARSEL_FORWARD(bool, VisitMembers, (VisitorMember & visitor), (visitor), )
TARSEL_FORWARD(IParameter*, GetCoord, (const std::string& name), (name), )
TARSEL_FORWARD(bool, VisitCoords, (VisitorParameter & visitor), (visitor), )
TARSEL_FORWARD(bool, SetCoord, (Result * result, const std::string& name, const std::string& value),
               (result, name, value), )
TARSEL_FORWARD(bool, VisitMethods, (VisitorMethod & visitor), (visitor), )
TARSEL_FORWARD(bool, IsComplete, (), (), )
TARSEL_FORWARD_VOID(SetName, (const std::string& name), (name))
TARSEL_FORWARD(std::string, GetName, (), (), const)

#undef TARSEL_FORWARD
#undef TARSEL_FORWARD_VOID

// Shaders reach a substitute as they are, so that it can tell a light wrapper from its array shader.
template <class... Args>
bool Shader_PassThrough::_SetParameter(Result* result, const std::string& name, bool indexed, Args... args)
{
	if (IParameterWrapper* wrapper = _GetParameterWrapped(name))
		return SetParameterByName(_pMgrEffects, wrapper, result, name, GetClassName(), indexed, args...);
	return _pShader && _pShader->SetParameter(result, name, args...);
}

#define TARSEL_PASS_THROUGH_SET(INDEXED, PARAMS, ARGS)                                                       \
	bool Shader_PassThrough::SetParameter PARAMS                                                             \
	{                                                                                                        \
		return _SetParameter(result, name, INDEXED, TARSEL_UNPACK ARGS);                                     \
	}
#define TARSEL_UNPACK(...) __VA_ARGS__
#define TARSEL_PASS_THROUGH_SET_TYPE(T)                                                                      \
	TARSEL_PASS_THROUGH_SET(false, (Result * result, const std::string& name, T value), (value))             \
	TARSEL_PASS_THROUGH_SET(true, (Result * result, const std::string& name, T value, int index),            \
	                        (value, index))
#define TARSEL_PASS_THROUGH_SET_ARRAY(T)                                                                     \
	TARSEL_PASS_THROUGH_SET(true, (Result * result, const std::string& name, T values, int count),           \
	                        (values, count))

TARSEL_PASS_THROUGH_SET_TYPE(bool)
TARSEL_PASS_THROUGH_SET_TYPE(int)
TARSEL_PASS_THROUGH_SET_TYPE(float)
TARSEL_PASS_THROUGH_SET_TYPE(const Vector2f&)
TARSEL_PASS_THROUGH_SET_TYPE(const Vector3f&)
TARSEL_PASS_THROUGH_SET_TYPE(const Vector4f&)
TARSEL_PASS_THROUGH_SET_TYPE(const Matrix33f&)
TARSEL_PASS_THROUGH_SET_TYPE(const Matrix44f&)
TARSEL_PASS_THROUGH_SET_TYPE(IShader*)
TARSEL_PASS_THROUGH_SET(false, (Result * result, const std::string& name, QLtexture* value), (value))
TARSEL_PASS_THROUGH_SET_ARRAY(const bool*)
TARSEL_PASS_THROUGH_SET_ARRAY(const int*)
TARSEL_PASS_THROUGH_SET_ARRAY(const float*)
TARSEL_PASS_THROUGH_SET_ARRAY(const Vector2i*)
TARSEL_PASS_THROUGH_SET_ARRAY(const Vector3i*)
TARSEL_PASS_THROUGH_SET_ARRAY(const Vector4i*)
TARSEL_PASS_THROUGH_SET_ARRAY(const Vector2f*)
TARSEL_PASS_THROUGH_SET_ARRAY(const Vector3f*)
TARSEL_PASS_THROUGH_SET_ARRAY(const Vector4f*)
TARSEL_PASS_THROUGH_SET_ARRAY(const Matrix33f*)
TARSEL_PASS_THROUGH_SET_ARRAY(const Matrix44f*)
TARSEL_PASS_THROUGH_SET_ARRAY(const QLprimitive*)
TARSEL_PASS_THROUGH_SET_ARRAY(QLtexture* const*)
TARSEL_PASS_THROUGH_SET_ARRAY(IShader**)

#undef TARSEL_PASS_THROUGH_SET_TYPE
#undef TARSEL_PASS_THROUGH_SET_ARRAY

// A substitute takes the primitive's handle, as the shader's own parameters do.
bool Shader_PassThrough::SetParameter(Result* result, const std::string& name, const IQLPrimitive* value)
{
	if (IParameterWrapper* wrapper = _GetParameterWrapped(name))
		return SetParameterByName(_pMgrEffects, wrapper, result, name, GetClassName(), false,
		                          HandleOf(value));
	return _pShader && _pShader->SetParameter(result, name, value);
}

bool Shader_PassThrough::SetParameter(Result* result, const std::string& name, const IQLPrimitive* value,
                                      int index)
{
	if (IParameterWrapper* wrapper = _GetParameterWrapped(name))
		return SetParameterByName(_pMgrEffects, wrapper, result, name, GetClassName(), true, HandleOf(value),
		                          index);
	return _pShader && _pShader->SetParameter(result, name, value, index);
}

#undef TARSEL_PASS_THROUGH_SET
#undef TARSEL_UNPACK

} // namespace Tarsel::Effects
