#pragma once

#include "core/Delegate.h"
#include "lights/Shader_PassThrough.h"

namespace Tarsel::Effects
{

// One light: the shared array shader of its class, with each array value parameter shown as this light's
// element and each array interface input as this light's own input.
class Shader_LightShader : public Shader_PassThroughPresenting
{
public:
	typedef FastDelegate2<Shader_LightShader*, int, bool> ListenerChangeIndex;

	Shader_LightShader();
	~Shader_LightShader() override;

	// The array shader stays the manager's.
	bool Init(IMgrEffects* pMgrEffects, IShader* pShaderArray, int index);

	virtual bool AddListenerChangeIndex(ListenerChangeIndex& listener);
	virtual bool RemoveListenerChangeIndex(ListenerChangeIndex& listener);

	int GetIndex() const { return _iIndex; }
	// Moves this light to another element; with bMove its values go along.
	bool SetIndex(int index, bool bMove);

private:
	void _WrapParameters();
	// False when wrapping must stop.
	bool _WrapParameter(const std::string& sName, IParameter* pParameter);

	int32_t _iIndex;
	ListenerSet<ListenerChangeIndex> _setListenersIndex;
};

} // namespace Tarsel::Effects
