#pragma once

#include <string>

#include "core/Delegate.h"
#include "effects/Export.h"
#include "effects/Key.h"
#include "effects/Types.h"

namespace Tarsel
{
class Result;
class IMgrConsole;
class IQuillonContext;
} // namespace Tarsel

namespace Tarsel::Effects
{

class MgrEffectsImpl;
class Profiler;
class IEffect;
class IShader;
class IPrototypeShader;
class IPrototypeInterface;

// The library's single entry point, seen by the host and by every object of the system.
class TARSEL_EFFECTS_EXPORT IMgrEffects
{
public:
	typedef FastDelegate2<TypeSpecifier, const std::string&, bool> VisitorTyped;
	typedef FastDelegate1<IEffect*, bool> VisitorEffect;
	typedef FastDelegate2<TypeSpecifier, const std::string&, bool> ListenerAddOutput;
	typedef FastDelegate1<const std::string&, bool> ListenerRemoveOutput;
	typedef FastDelegate0<bool> ListenerChangeOutputIndices;
	typedef FastDelegate2<const Key&, const std::string&, bool> ListenerStopCompile;

	virtual ~IMgrEffects() {}

	virtual bool Shutdown() = 0;
	virtual MgrEffectsImpl* GetImplementation() = 0;
	virtual bool AddLibrary(const std::string& name, const std::string& source, Result* result) = 0;
	virtual bool AddLibrary(const std::string& path, Result* result) = 0;
	virtual IPrototypeShader* GetPrototypeShader(const std::string& name, Result* result) = 0;
	virtual IPrototypeInterface* GetPrototypeInterface(const std::string& name) = 0;
	virtual bool VisitRayAttributes(VisitorTyped& visitor) = 0;
	virtual bool VisitVariablesGlobal(VisitorTyped& visitor) = 0;
	virtual bool VisitEffectsSurface(VisitorEffect& visitor) = 0;
	virtual bool VisitEffectsRenderer(VisitorEffect& visitor) = 0;
	virtual bool VisitEffectsPrefix(VisitorEffect& visitor) = 0;
	virtual IShader* CreateShader(const std::string& className, Result* result) = 0;
	virtual IShader* CreateShader(const std::string& className) = 0;
	virtual void DestroyShader(IShader* shader) = 0;
	virtual IEffect* CreateEffectSurface() = 0;
	virtual void DestroyEffectSurface(IEffect* effect) = 0;
	virtual IEffect* CreateEffectRenderer() = 0;
	virtual void DestroyEffectRenderer(IEffect* effect) = 0;
	virtual IEffect* CreateEffectPrefix() = 0;
	virtual void DestroyEffectPrefix(IEffect* effect) = 0;
	virtual bool AddListenerAddOutput(ListenerAddOutput& listener) = 0;
	virtual bool RemoveListenerAddOutput(ListenerAddOutput& listener) = 0;
	virtual bool AddListenerRemoveOutput(ListenerRemoveOutput& listener) = 0;
	virtual bool RemoveListenerRemoveOutput(ListenerRemoveOutput& listener) = 0;
	virtual bool AcquireOutput(TypeSpecifier type, const std::string& name) = 0;
	virtual bool ReleaseOutput(const std::string& name) = 0;
	virtual int GetCountOutputs() = 0;
	virtual bool HasOutput(const std::string& name) = 0;
	virtual bool VisitOutputs(VisitorTyped& visitor) = 0;
	virtual bool SetOutputAttachmentIndex(const std::string& name, int index) = 0;
	virtual bool GetOutputAttachmentIndex(int& index, const std::string& name) = 0;
	virtual bool ClearOutputAttachmentIndex(const std::string& name) = 0;
	virtual bool AddListenerChangeOutputIndices(ListenerChangeOutputIndices& listener) = 0;
	virtual bool RemoveListenerChangeOutputIndices(ListenerChangeOutputIndices& listener) = 0;

	// Compile stops are declared but inert: nothing is recorded and compilation ignores them.
	virtual bool AddListenerCreateStopCompile(ListenerStopCompile&) { return true; }
	virtual bool RemoveListenerCreateStopCompile(ListenerStopCompile&) { return true; }
	virtual Key CreateStopCompile(const std::string&) { return Key::Null(); }
	virtual bool DestroyStopCompile(Key&) { return true; }
	virtual bool AddListenerDestroyStopCompile(ListenerStopCompile&) { return true; }
	virtual bool RemoveListenerDestroyStopCompile(ListenerStopCompile&) { return true; }
	virtual int GetCountStopsCompile() { return 0; }
	virtual bool VisitStopsCompile(ListenerStopCompile&) { return true; }

	virtual bool Update() = 0;
	virtual bool Update(Result* result) = 0;
	virtual Key CreateKey() = 0;
	virtual bool DestroyKey(Key& key) = 0;
	virtual IMgrConsole* GetConsole() const = 0;
	virtual IQuillonContext* GetQuillonContext() const = 0;
	virtual Profiler* GetProfiler() const = 0;
};

// Scope marker of the inert compile-stop facility.
class TARSEL_EFFECTS_EXPORT AutoStopCompile
{
public:
	AutoStopCompile(IMgrEffects*, const std::string&) {}
	~AutoStopCompile() {}
};

} // namespace Tarsel::Effects
