#include "effects/MgrEffects.h"

#include "manager/MgrEffectsImpl.h"

namespace Tarsel::Effects
{

MgrEffects::MgrEffects() : _pImpl(new MgrEffectsImpl()) {}

MgrEffects::~MgrEffects()
{
	_pImpl->Shutdown();
	delete _pImpl;
}

bool MgrEffects::Init(IMgrConsole* console, IQuillonContext* context, Result* result)
{
	return _pImpl->Init(this, console, context, result);
}

MgrEffectsImpl* MgrEffects::GetImplementation()
{
	return _pImpl;
}

bool MgrEffects::Shutdown()
{
	return _pImpl->Shutdown();
}

bool MgrEffects::AddLibrary(const std::string& name, const std::string& source, Result* result)
{
	return _pImpl->AddLibrary(name, source, result);
}

bool MgrEffects::AddLibrary(const std::string& path, Result* result)
{
	return _pImpl->AddLibrary(path, result);
}

IPrototypeShader* MgrEffects::GetPrototypeShader(const std::string& name, Result* result)
{
	return _pImpl->GetPrototypeShader(name, result);
}

IPrototypeInterface* MgrEffects::GetPrototypeInterface(const std::string& name)
{
	return _pImpl->GetPrototypeInterface(name);
}

bool MgrEffects::VisitRayAttributes(VisitorTyped& visitor)
{
	return _pImpl->VisitRayAttributes(visitor);
}

bool MgrEffects::VisitVariablesGlobal(VisitorTyped& visitor)
{
	return _pImpl->VisitVariablesGlobal(visitor);
}

bool MgrEffects::VisitEffectsSurface(VisitorEffect& visitor)
{
	return _pImpl->VisitEffectsSurface(visitor);
}

bool MgrEffects::VisitEffectsRenderer(VisitorEffect& visitor)
{
	return _pImpl->VisitEffectsRenderer(visitor);
}

bool MgrEffects::VisitEffectsPrefix(VisitorEffect& visitor)
{
	return _pImpl->VisitEffectsPrefix(visitor);
}

IShader* MgrEffects::CreateShader(const std::string& className, Result* result)
{
	return _pImpl->CreateShader(className, result);
}

IShader* MgrEffects::CreateShader(const std::string& className)
{
	return _pImpl->CreateShader(className);
}

void MgrEffects::DestroyShader(IShader* shader)
{
	_pImpl->DestroyShader(shader);
}

IEffect* MgrEffects::CreateEffectSurface()
{
	return _pImpl->CreateEffectSurface();
}

void MgrEffects::DestroyEffectSurface(IEffect* effect)
{
	_pImpl->DestroyEffectSurface(effect);
}

IEffect* MgrEffects::CreateEffectRenderer()
{
	return _pImpl->CreateEffectRenderer();
}

void MgrEffects::DestroyEffectRenderer(IEffect* effect)
{
	_pImpl->DestroyEffectRenderer(effect);
}

IEffect* MgrEffects::CreateEffectPrefix()
{
	return _pImpl->CreateEffectPrefix();
}

void MgrEffects::DestroyEffectPrefix(IEffect* effect)
{
	_pImpl->DestroyEffectPrefix(effect);
}

bool MgrEffects::AddListenerAddOutput(ListenerAddOutput& listener)
{
	return _pImpl->AddListenerAddOutput(listener);
}

bool MgrEffects::RemoveListenerAddOutput(ListenerAddOutput& listener)
{
	return _pImpl->RemoveListenerAddOutput(listener);
}

bool MgrEffects::AddListenerRemoveOutput(ListenerRemoveOutput& listener)
{
	return _pImpl->AddListenerRemoveOutput(listener);
}

bool MgrEffects::RemoveListenerRemoveOutput(ListenerRemoveOutput& listener)
{
	return _pImpl->RemoveListenerRemoveOutput(listener);
}

bool MgrEffects::AcquireOutput(TypeSpecifier type, const std::string& name)
{
	return _pImpl->AcquireOutput(type, name);
}

bool MgrEffects::ReleaseOutput(const std::string& name)
{
	return _pImpl->ReleaseOutput(name);
}

int MgrEffects::GetCountOutputs()
{
	return _pImpl->GetCountOutputs();
}

bool MgrEffects::HasOutput(const std::string& name)
{
	return _pImpl->HasOutput(name);
}

bool MgrEffects::VisitOutputs(VisitorTyped& visitor)
{
	return _pImpl->VisitOutputs(visitor);
}

bool MgrEffects::SetOutputAttachmentIndex(const std::string& name, int index)
{
	return _pImpl->SetOutputAttachmentIndex(name, index);
}

bool MgrEffects::GetOutputAttachmentIndex(int& index, const std::string& name)
{
	return _pImpl->GetOutputAttachmentIndex(index, name);
}

bool MgrEffects::ClearOutputAttachmentIndex(const std::string& name)
{
	return _pImpl->ClearOutputAttachmentIndex(name);
}

bool MgrEffects::AddListenerChangeOutputIndices(ListenerChangeOutputIndices& listener)
{
	return _pImpl->AddListenerChangeOutputIndices(listener);
}

bool MgrEffects::RemoveListenerChangeOutputIndices(ListenerChangeOutputIndices& listener)
{
	return _pImpl->RemoveListenerChangeOutputIndices(listener);
}

bool MgrEffects::Update()
{
	return _pImpl->Update();
}

bool MgrEffects::Update(Result* result)
{
	return _pImpl->Update(result);
}

Key MgrEffects::CreateKey()
{
	return _pImpl->CreateKey();
}

bool MgrEffects::DestroyKey(Key& key)
{
	return _pImpl->DestroyKey(key);
}

IMgrConsole* MgrEffects::GetConsole() const
{
	return _pImpl->GetConsole();
}

IQuillonContext* MgrEffects::GetQuillonContext() const
{
	return _pImpl->GetQuillonContext();
}

Profiler* MgrEffects::GetProfiler() const
{
	return _pImpl->GetProfiler();
}

} // namespace Tarsel::Effects
