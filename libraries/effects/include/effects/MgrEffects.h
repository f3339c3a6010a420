#pragma once

#include "effects/IMgrEffects.h"

namespace Tarsel::Effects
{

// The facade the host instantiates; everything is done by the owned implementation, which records the
// facade as the manager that created objects receive.
class TARSEL_EFFECTS_EXPORT MgrEffects : public IMgrEffects
{
public:
	MgrEffects();
	~MgrEffects() override;
	MgrEffects(const MgrEffects&) = delete;
	MgrEffects& operator=(const MgrEffects&) = delete;

	bool Init(IMgrConsole* console, IQuillonContext* context, Result* result);

	bool Shutdown() override;
	MgrEffectsImpl* GetImplementation() override;
	bool AddLibrary(const std::string& name, const std::string& source, Result* result) override;
	bool AddLibrary(const std::string& path, Result* result) override;
	IPrototypeShader* GetPrototypeShader(const std::string& name, Result* result) override;
	IPrototypeInterface* GetPrototypeInterface(const std::string& name) override;
	bool VisitRayAttributes(VisitorTyped& visitor) override;
	bool VisitVariablesGlobal(VisitorTyped& visitor) override;
	bool VisitEffectsSurface(VisitorEffect& visitor) override;
	bool VisitEffectsRenderer(VisitorEffect& visitor) override;
	bool VisitEffectsPrefix(VisitorEffect& visitor) override;
	IShader* CreateShader(const std::string& className, Result* result) override;
	IShader* CreateShader(const std::string& className) override;
	void DestroyShader(IShader* shader) override;
	IEffect* CreateEffectSurface() override;
	void DestroyEffectSurface(IEffect* effect) override;
	IEffect* CreateEffectRenderer() override;
	void DestroyEffectRenderer(IEffect* effect) override;
	IEffect* CreateEffectPrefix() override;
	void DestroyEffectPrefix(IEffect* effect) override;
	bool AddListenerAddOutput(ListenerAddOutput& listener) override;
	bool RemoveListenerAddOutput(ListenerAddOutput& listener) override;
	bool AddListenerRemoveOutput(ListenerRemoveOutput& listener) override;
	bool RemoveListenerRemoveOutput(ListenerRemoveOutput& listener) override;
	bool AcquireOutput(TypeSpecifier type, const std::string& name) override;
	bool ReleaseOutput(const std::string& name) override;
	int GetCountOutputs() override;
	bool HasOutput(const std::string& name) override;
	bool VisitOutputs(VisitorTyped& visitor) override;
	bool SetOutputAttachmentIndex(const std::string& name, int index) override;
	bool GetOutputAttachmentIndex(int& index, const std::string& name) override;
	bool ClearOutputAttachmentIndex(const std::string& name) override;
	bool AddListenerChangeOutputIndices(ListenerChangeOutputIndices& listener) override;
	bool RemoveListenerChangeOutputIndices(ListenerChangeOutputIndices& listener) override;
	bool Update() override;
	bool Update(Result* result) override;
	Key CreateKey() override;
	bool DestroyKey(Key& key) override;
	IMgrConsole* GetConsole() const override;
	IQuillonContext* GetQuillonContext() const override;
	Profiler* GetProfiler() const override;

private:
	MgrEffectsImpl* _pImpl;
};

} // namespace Tarsel::Effects
