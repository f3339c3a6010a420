#pragma once

#include "codegen/IAttributeVertex.h"

namespace Tarsel::Effects
{

// What the attributes share: an `attribute` a_name read in the vertex stage and written to a varying that
// the ray stages declare.
class AttributeVertex : public IAttributeVertex
{
public:
	AttributeVertex();

	bool CollectDeclarationsVertex(Module* module) override;
	bool CollectDeclarationsRay(Module* module) override;
	bool CacheQLLocation(IQLProgram* program) override;
	TypeSpecifier GetType() const override { return _eType; }
	const std::string& GetName() const override { return _sName; }
	const std::string& GetNameAttribute() const override { return _sNameAttribute; }
	const std::string& GetNameVarying() const override { return _sNameVarying; }
	int GetQLLocation() const override { return _iLocation; }

protected:
	// The varying takes the attribute's name and type unless a subclass gives others.
	bool _Init(TypeSpecifier type, const std::string& name, StorageQualifier storageVarying);
	bool _Init(TypeSpecifier type, const std::string& name, StorageQualifier storageVarying,
	           TypeSpecifier typeVarying, const std::string& nameVarying);

	TypeSpecifier _eType;
	std::string _sName;
	std::string _sNameVarying;
	std::string _sNameAttribute;
	TypeSpecifier _eTypeVarying;
	StorageQualifier _eStorageVarying;
	int _iLocation;
};

} // namespace Tarsel::Effects
