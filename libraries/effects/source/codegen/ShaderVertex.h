#pragma once

#include <map>
#include <string>

#include "core/Delegate.h"
#include "syntax/Enumerations.h"

namespace Tarsel
{
class IQLProgram;
class IQLShader;
} // namespace Tarsel

namespace Tarsel::Effects
{

class IAttributeVertex;
class IMgrEffects;

// The vertex shader of one surface effect: the built-in position and normal plus one coordinate per attribute
// that the effect's graph reads, each moved into the varying that the ray stages declare.
class ShaderVertex
{
public:
	typedef FastDelegate2<const std::string&, IAttributeVertex*, bool> VisitorAttribute;

	ShaderVertex();
	~ShaderVertex();
	ShaderVertex(const ShaderVertex&) = delete;
	ShaderVertex& operator=(const ShaderVertex&) = delete;

	bool Init(IMgrEffects* mgrEffects, IQLProgram* program);
	void Shutdown();

	// Shared by name and counted; a name keeps the type and transformation of its first acquisition.
	bool AcquireAttribute(TypeSpecifier type, const std::string& name, TransformationCoord transformation);
	bool ReleaseAttribute(const std::string& name);
	int GetCountAttributes() const { return static_cast<int>(_mAttributes.size()); }
	// In name order, stopping at the first false.
	bool VisitAttributes(VisitorAttribute& visitor);

	bool OnProgramChange(IQLProgram* program);
	bool SetName(const std::string& name);
	bool Compile();
	bool IsCompiled() const { return _bCompiled; }
	IQLShader* GetQLShader() const { return _pQLShader; }

private:
	struct Entry
	{
		IAttributeVertex* pAttribute;
		int nCount;
	};

	bool _AddBuiltIn(IAttributeVertex* attribute, bool initialized);
	void _DestroyAttributes();

	IMgrEffects* _pMgrEffects;
	IQLShader* _pQLShader;
	bool _bCompiled;
	std::map<std::string, Entry> _mAttributes;
};

} // namespace Tarsel::Effects
