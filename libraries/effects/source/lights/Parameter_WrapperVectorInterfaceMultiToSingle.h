#pragma once

#include "lights/IParameterWrapper.h"

namespace Tarsel::Effects
{

class Shader_LightShader;

// One light's own input, which is really an interface array of its class's array shader: the array holds
// one slot per connected shader and this light's element of the ivec2 indexer says (slot, element).
class Parameter_WrapperVectorInterfaceMultiToSingle : public IParameterWrapper_ArrayCell
{
public:
	Parameter_WrapperVectorInterfaceMultiToSingle(IParameter* pParameter, IParameter* pIndexer,
	                                              Shader_LightShader* pOwner);
	// Marks this light's element as deleted.
	~Parameter_WrapperVectorInterfaceMultiToSingle() override;

	using IParameterWrapper::Get;
	using IParameterWrapper::Set;

	void Detach() override;
	bool IsArray() const override { return false; }
	int GetLength() const override { return _pIndexer ? _pIndexer->GetLength() : 0; }
	bool SetLength(int nLength) override { return _pIndexer && _pIndexer->SetLength(nLength); }
	bool IsResizable() const override { return _pIndexer && _pIndexer->IsResizable(); }

	bool Get(IShader*& pShader) override;
	bool Set(IShader* pShader) override;
	bool GetAsString(std::string& sValue) const override;

	bool SetSubIndex(int index, bool bMove) override;
	int GetSubIndex() const override { return _iIndex; }

private:
	bool _WriteIndexer(const Vector2i& value);

	IParameter* _pIndexer;
	Shader_LightShader* _pOwner;
	int32_t _iIndex;
	IShader* _pShaderConnected;
	Shader_LightShader* _pLightConnected;
};

// Connects a shader into an interface array the way light inputs share one: a light wrapper stands for
// its array shader, which takes one slot however many of its lights are connected. Answers the slot and
// the element in the array shader's arrays (0 for other shaders) through value.
bool ConnectToInterfaceArray(IParameter* pArray, IShader* pShader, Vector2i& value);

} // namespace Tarsel::Effects
