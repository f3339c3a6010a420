#include "manager/MgrEffectsImpl.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "core/Console.h"
#include "core/Result.h"
#include "effects/Effect.h"
#include "effects/FactoryTEffect.h"
#include "effects/IShader.h"
#include "manager/Profiler.h"
#include "objects/Library.h"
#include "objects/PrototypeInterface.h"
#include "objects/PrototypeShader.h"
#include "quillon/IQuillonContext.h"

namespace Tarsel::Effects
{

namespace
{
const char* const kOutputColor = "o_color";

template <class E>
IFactoryEffect* CreateFactory(IMgrEffects* mgrEffects)
{
	FactoryTEffect<E>* factory = new FactoryTEffect<E>();
	factory->Init(mgrEffects);
	return factory;
}

void DeleteFactory(IFactoryEffect*& factory)
{
	delete factory;
	factory = nullptr;
}

IEffect* CreateEffect(IFactoryEffect* factory)
{
	return factory ? factory->CreateEffect() : nullptr;
}

void DestroyEffect(IFactoryEffect* factory, IEffect* effect)
{
	if (factory && effect)
		factory->DestroyEffect(effect);
}

bool VisitEffects(IFactoryEffect* factory, IMgrEffects::VisitorEffect& visitor)
{
	return factory && factory->VisitEffects(visitor);
}

// Reports each failing effect as it happens, with everything gathered so far.
struct VisitorUpdate
{
	Result* pResult;
	IMgrConsole* pConsole;
	bool Update(IEffect* effect)
	{
		if (effect->Update(pResult))
			return true;
		if (pResult)
			pResult->Print(pConsole);
		return false;
	}
};

template <typename Visitor>
bool VisitAll(const MgrEffectsImpl::TypedNames& entries, Visitor& visitor)
{
	bool all = true;
	for (const auto& entry : entries)
		all = visitor(entry.first, entry.second) && all;
	return all;
}
} // namespace

MgrEffectsImpl::MgrEffectsImpl()
    : _pMgrEffects(nullptr), _pConsole(nullptr), _pContext(nullptr), _pProfiler(nullptr),
      _pFactorySurface(nullptr), _pFactoryRenderer(nullptr), _pFactoryPrefix(nullptr), _pResult(nullptr),
      _iLineOffset(0)
{
}

MgrEffectsImpl::~MgrEffectsImpl()
{
	Shutdown();
}

bool MgrEffectsImpl::Init(IMgrEffects* owner, IMgrConsole* console, IQuillonContext* context, Result* result)
{
	(void)result; // for the effect factories' initialisation
	_pMgrEffects = owner;
	_pProfiler = new Profiler();
	_pConsole = console;
	_pContext = context;
	_mgrOutputs.Init();
	// Acquired before the relays exist, so the host is never told about it.
	AcquireOutput(kType_Vec3, kOutputColor);
	MgrOutputs::ListenerAdd relayAdd = MakeDelegate(this, &MgrEffectsImpl::_OnAddOutput);
	MgrOutputs::ListenerRemove relayRemove = MakeDelegate(this, &MgrEffectsImpl::_OnRemoveOutput);
	_mgrOutputs.AddListenerAddOutput(relayAdd);
	_mgrOutputs.AddListenerRemoveOutput(relayRemove);
	_mgrKeys.Init();
	_pFactorySurface = CreateFactory<EffectSurface>(owner);
	_pFactoryRenderer = CreateFactory<EffectRenderer>(owner);
	_pFactoryPrefix = CreateFactory<EffectPrefix>(owner);

	// A manager initialised again after Shutdown starts its lists afresh.
	_vRayAttributes.clear();
	_vVariablesGlobal.clear();
	const char* const rayInts[] = {"depthInfo", "samplingState", "auxInfo"};
	for (const char* name : rayInts)
		_vRayAttributes.emplace_back(kType_Int, name);
	_vRayAttributes.emplace_back(kType_Vec3, "prefixPrimitiveAuxColor");
	_vRayAttributes.emplace_back(kType_Float, "prefixPrimitiveAuxFloat");
	_vRayAttributes.emplace_back(kType_Vec3, "color");
	// Devices with ray differentials carry them themselves; the preprocessor tells shaders instead.
	if (_pContext == nullptr || !_pContext->IsDifferentialSupported())
	{
		_vRayAttributes.emplace_back(kType_Float, "dP");
		_vRayAttributes.emplace_back(kType_Float, "dPdT");
	}
	_AddPadAttributes();

	_vVariablesGlobal.emplace_back(kType_Float, "g_rayMinContrib");
	_vVariablesGlobal.emplace_back(kType_IVec4, "g_rayDepthMax");
	_vVariablesGlobal.emplace_back(kType_Int, "g_rayDepthMaxTotal");
	_vVariablesGlobal.emplace_back(kType_Int, "g_rayDepthMaxDummy");
	return true;
}

// Pads the ray payload to the size the host asks for.
void MgrEffectsImpl::_AddPadAttributes()
{
	const char* pad = std::getenv("TZR_RAY_ATTRIBUTE_PAD_INTS");
	const int count = pad ? std::atoi(pad) : 0;
	char name[32];
	for (int i = 0; i < count; ++i)
	{
		std::snprintf(name, sizeof(name), "rayPad%d", i);
		_vRayAttributes.emplace_back(kType_Int, name);
	}
}

bool MgrEffectsImpl::Shutdown()
{
	// Effects hold graphs of the libraries' shaders: they go first.
	DeleteFactory(_pFactorySurface);
	DeleteFactory(_pFactoryRenderer);
	DeleteFactory(_pFactoryPrefix);
	for (auto& entry : _mLibraries)
		entry.second->ShutdownShaders();
	for (auto& entry : _mLibraries)
		entry.second->ShutdownClasses();
	for (auto& entry : _mLibraries)
		delete entry.second;
	_mLibraries.clear();
	delete _pProfiler;
	_pProfiler = nullptr;
	_mgrKeys.Shutdown();
	MgrOutputs::ListenerAdd relayAdd = MakeDelegate(this, &MgrEffectsImpl::_OnAddOutput);
	MgrOutputs::ListenerRemove relayRemove = MakeDelegate(this, &MgrEffectsImpl::_OnRemoveOutput);
	_mgrOutputs.RemoveListenerAddOutput(relayAdd);
	_mgrOutputs.RemoveListenerRemoveOutput(relayRemove);
	ReleaseOutput(kOutputColor);
	_mgrOutputs.Shutdown();
	_pContext = nullptr;
	_pConsole = nullptr;
	_pMgrEffects = nullptr;
	_pResult = nullptr;
	return true;
}

bool MgrEffectsImpl::AddLibrary(const std::string& name, const std::string& source, Result* result)
{
	ProfileScope scope(_pProfiler, "Add Library");
	if (_mLibraries.count(name) > 0)
		return true;
	Library* library = new Library();
	// Text from the host, rather than from a file load, comes without a map of its lines.
	const bool mapped = _lineMap.GetCountLines() > 0;
	if (!library->Init(_pMgrEffects, name, source, result, mapped ? _lineMap : LineMap(_iLineOffset)))
	{
		if (result)
			result->Add("Effects Manager: Failed to initialize Shader Library '%s'\n", name.c_str());
		delete library;
		return false;
	}
	_mLibraries[name] = library;
	return true;
}

bool MgrEffectsImpl::AddLibrary(const std::string& path, Result* result)
{
	DefinedNames defined;
	Macros macros;
	return _AddLibrary(path, defined, macros, result);
}

IPrototypeShader* MgrEffectsImpl::GetPrototypeShader(const std::string& name, Result* result)
{
	ProfileScope scope(_pProfiler, "GetPrototypeShader");
	for (auto& entry : _mLibraries)
		if (IPrototypeShader* prototype = entry.second->GetPrototypeShader(name, result))
			return prototype;
	return nullptr;
}

IPrototypeInterface* MgrEffectsImpl::GetPrototypeInterface(const std::string& name)
{
	ProfileScope scope(_pProfiler, "GetPrototypeInterface");
	for (auto& entry : _mLibraries)
		if (IPrototypeInterface* prototype = entry.second->GetPrototypeInterface(name))
			return prototype;
	return nullptr;
}

bool MgrEffectsImpl::VisitRayAttributes(VisitorTyped& visitor)
{
	return VisitAll(_vRayAttributes, visitor);
}

bool MgrEffectsImpl::VisitVariablesGlobal(VisitorTyped& visitor)
{
	return VisitAll(_vVariablesGlobal, visitor);
}

bool MgrEffectsImpl::VisitEffectsSurface(VisitorEffect& visitor)
{
	return VisitEffects(_pFactorySurface, visitor);
}

bool MgrEffectsImpl::VisitEffectsRenderer(VisitorEffect& visitor)
{
	return VisitEffects(_pFactoryRenderer, visitor);
}

bool MgrEffectsImpl::VisitEffectsPrefix(VisitorEffect& visitor)
{
	return VisitEffects(_pFactoryPrefix, visitor);
}

IShader* MgrEffectsImpl::CreateShader(const std::string& className, Result* result)
{
	ProfileScope scope(_pProfiler, "CreateShader");
	for (auto& entry : _mLibraries)
		if (IShader* shader = entry.second->CreateShader(className, result))
			return shader;
	if (result)
		result->Add("Could not create shader named \"%s\"", className.c_str());
	return nullptr;
}

IShader* MgrEffectsImpl::CreateShader(const std::string& className)
{
	ProfileScope scope(_pProfiler, "CreateShader");
	Result local;
	IShader* shader = CreateShader(className, &local);
	if (shader == nullptr)
		local.Print(_pConsole);
	return shader;
}

// Shaders are owned by their prototypes; the manager keeps no list of its own.
void MgrEffectsImpl::DestroyShader(IShader* shader)
{
	if (shader == nullptr)
		return;
	if (PrototypeShader* prototype = dynamic_cast<PrototypeShader*>(shader->GetPrototypeShader()))
		prototype->DestroyShader(shader);
}

IEffect* MgrEffectsImpl::CreateEffectSurface()
{
	return CreateEffect(_pFactorySurface);
}

void MgrEffectsImpl::DestroyEffectSurface(IEffect* effect)
{
	DestroyEffect(_pFactorySurface, effect);
}

IEffect* MgrEffectsImpl::CreateEffectRenderer()
{
	return CreateEffect(_pFactoryRenderer);
}

void MgrEffectsImpl::DestroyEffectRenderer(IEffect* effect)
{
	DestroyEffect(_pFactoryRenderer, effect);
}

IEffect* MgrEffectsImpl::CreateEffectPrefix()
{
	return CreateEffect(_pFactoryPrefix);
}

void MgrEffectsImpl::DestroyEffectPrefix(IEffect* effect)
{
	DestroyEffect(_pFactoryPrefix, effect);
}

bool MgrEffectsImpl::AddListenerAddOutput(ListenerAddOutput& listener)
{
	_setListenersAddOutput.Add(listener);
	return true;
}

bool MgrEffectsImpl::RemoveListenerAddOutput(ListenerAddOutput& listener)
{
	_setListenersAddOutput.Remove(listener);
	return true;
}

bool MgrEffectsImpl::AddListenerRemoveOutput(ListenerRemoveOutput& listener)
{
	_setListenersRemoveOutput.Add(listener);
	return true;
}

bool MgrEffectsImpl::RemoveListenerRemoveOutput(ListenerRemoveOutput& listener)
{
	_setListenersRemoveOutput.Remove(listener);
	return true;
}

bool MgrEffectsImpl::AcquireOutput(TypeSpecifier type, const std::string& name)
{
	return _mgrOutputs.AcquireOutput(type, name);
}

bool MgrEffectsImpl::ReleaseOutput(const std::string& name)
{
	return _mgrOutputs.ReleaseOutput(name);
}

int MgrEffectsImpl::GetCountOutputs()
{
	return _mgrOutputs.GetCountOutputs();
}

bool MgrEffectsImpl::HasOutput(const std::string& name)
{
	return _mgrOutputs.HasOutput(name);
}

bool MgrEffectsImpl::VisitOutputs(VisitorTyped& visitor)
{
	return _mgrOutputs.VisitOutputs(visitor);
}

bool MgrEffectsImpl::SetOutputAttachmentIndex(const std::string& name, int index)
{
	if (!_mgrOutputs.SetOutputAttachmentIndex(name, index))
		return false;
	_setListenersChangeOutputIndices.Notify();
	return true;
}

bool MgrEffectsImpl::GetOutputAttachmentIndex(int& index, const std::string& name)
{
	return _mgrOutputs.GetOutputAttachmentIndex(index, name);
}

bool MgrEffectsImpl::ClearOutputAttachmentIndex(const std::string& name)
{
	if (!_mgrOutputs.ClearOutputAttachmentIndex(name))
		return false;
	_setListenersChangeOutputIndices.Notify();
	return true;
}

bool MgrEffectsImpl::AddListenerChangeOutputIndices(ListenerChangeOutputIndices& listener)
{
	_setListenersChangeOutputIndices.Add(listener);
	return true;
}

bool MgrEffectsImpl::RemoveListenerChangeOutputIndices(ListenerChangeOutputIndices& listener)
{
	_setListenersChangeOutputIndices.Remove(listener);
	return true;
}

bool MgrEffectsImpl::_OnAddOutput(TypeSpecifier type, const std::string& name)
{
	return _setListenersAddOutput.Notify(type, name);
}

bool MgrEffectsImpl::_OnRemoveOutput(const std::string& name)
{
	return _setListenersRemoveOutput.Notify(name);
}

bool MgrEffectsImpl::Update(Result* result)
{
	VisitorUpdate update{result, _pConsole};
	VisitorEffect visitor = MakeDelegate(&update, &VisitorUpdate::Update);
	// Every kind is updated even after a failure.
	const bool surfaces = VisitEffects(_pFactorySurface, visitor);
	const bool prefixes = VisitEffects(_pFactoryPrefix, visitor);
	const bool renderers = VisitEffects(_pFactoryRenderer, visitor);
	return surfaces && prefixes && renderers;
}

bool MgrEffectsImpl::Update()
{
	Result local;
	if (Update(&local))
		return true;
	local.Print(_pConsole);
	return false;
}

Key MgrEffectsImpl::CreateKey()
{
	return _mgrKeys.Create(0);
}

bool MgrEffectsImpl::DestroyKey(Key& key)
{
	return _mgrKeys.Destroy(key);
}

void MgrEffectsImpl::AddResult(Result& result)
{
	_pResult->Add(result);
}

void MgrEffectsImpl::AddResultMessage(const char* format, ...)
{
	if (_pResult == nullptr)
		return;
	va_list args;
	va_start(args, format);
	va_list copy;
	va_copy(copy, args);
	const int length = std::vsnprintf(nullptr, 0, format, copy);
	va_end(copy);
	std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
	if (length > 0)
		std::vsnprintf(&text[0], text.size() + 1, format, args);
	va_end(args);
	_pResult->Add("%s", text.c_str());
	_pConsole->Message("%s", text.c_str());
}

} // namespace Tarsel::Effects
