#include "codegen/AttributeVertex.h"

#include "codegen/SyntaxBuild.h"
#include "quillon/IQLProgram.h"

namespace Tarsel::Effects
{

AttributeVertex::AttributeVertex()
    : _eType(kType_Void), _eTypeVarying(kType_Void), _eStorageVarying(kStorage_Varying), _iLocation(-1)
{
}

bool AttributeVertex::_Init(TypeSpecifier type, const std::string& name, StorageQualifier storageVarying)
{
	return _Init(type, name, storageVarying, type, name);
}

bool AttributeVertex::_Init(TypeSpecifier type, const std::string& name, StorageQualifier storageVarying,
                            TypeSpecifier typeVarying, const std::string& nameVarying)
{
	if (name.empty())
		return false;
	_eType = type;
	_sName = name;
	_sNameAttribute = "a_" + name;
	_eTypeVarying = typeVarying;
	_sNameVarying = nameVarying;
	_eStorageVarying = storageVarying;
	return true;
}

bool AttributeVertex::CollectDeclarationsVertex(Module* module)
{
	DeclareGlobal(module, kStorage_Attribute, _eType, _sNameAttribute);
	DeclareGlobal(module, _eStorageVarying, _eTypeVarying, _sNameVarying);
	return true;
}

bool AttributeVertex::CollectDeclarationsRay(Module* module)
{
	DeclareGlobal(module, kStorage_Varying, _eTypeVarying, _sNameVarying);
	return true;
}

bool AttributeVertex::CacheQLLocation(IQLProgram* program)
{
	_iLocation = program ? program->GetAttributeLocation(_sNameAttribute.c_str()) : -1;
	return _iLocation >= 0;
}

} // namespace Tarsel::Effects
