#include "codegen/ShaderVertex.h"

#include "codegen/AttributeVertexCoord.h"
#include "codegen/AttributeVertexNormal.h"
#include "codegen/AttributeVertexPosition.h"
#include "codegen/SyntaxBuild.h"
#include "codegen/VisitorPrintTsl.h"
#include "core/Result.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/ParameterValueConsole.h"
#include "quillon/IQLShader.h"
#include "quillon/IQuillonContext.h"

namespace Tarsel::Effects
{

ShaderVertex::ShaderVertex() : _pMgrEffects(nullptr), _pQLShader(nullptr), _bCompiled(false) {}

ShaderVertex::~ShaderVertex()
{
	Shutdown();
}

bool ShaderVertex::Init(IMgrEffects* mgrEffects, IQLProgram*)
{
	// A second Init would lose the first API shader.
	if (_pQLShader != nullptr || mgrEffects == nullptr || mgrEffects->GetQuillonContext() == nullptr)
		return false;
	_pMgrEffects = mgrEffects;
	_pQLShader = mgrEffects->GetQuillonContext()->CreateShader(IQLShader::kType_Vertex);
	if (_pQLShader == nullptr)
		return false;
	AttributeVertexPosition* position = new AttributeVertexPosition();
	const bool positionInit = position->Init(kType_Vec3, "Position");
	AttributeVertexNormal* normal = new AttributeVertexNormal();
	const bool normalInit = normal->Init(kType_Vec3, "Normal");
	return _AddBuiltIn(position, positionInit) && _AddBuiltIn(normal, normalInit);
}

bool ShaderVertex::_AddBuiltIn(IAttributeVertex* attribute, bool initialized)
{
	if (!initialized)
	{
		delete attribute;
		return false;
	}
	_mAttributes[attribute->GetName()] = Entry{attribute, 1};
	return true;
}

void ShaderVertex::Shutdown()
{
	_DestroyAttributes();
	if (_pQLShader)
		_pMgrEffects->GetQuillonContext()->DestroyShader(_pQLShader);
	_pQLShader = nullptr;
	_bCompiled = false;
	_pMgrEffects = nullptr;
}

void ShaderVertex::_DestroyAttributes()
{
	for (auto& entry : _mAttributes)
		delete entry.second.pAttribute;
	_mAttributes.clear();
}

bool ShaderVertex::AcquireAttribute(TypeSpecifier type, const std::string& name,
                                    TransformationCoord transformation)
{
	if (name.empty())
	{
		ConsoleOf(_pMgrEffects)->Message("ShaderVertex::AcquireAttribute Name Null\n");
		return false;
	}
	auto found = _mAttributes.find(name);
	if (found == _mAttributes.end())
	{
		AttributeVertexCoord* coord = new AttributeVertexCoord();
		if (!coord->Init(type, name, transformation))
		{
			delete coord;
			return false;
		}
		_mAttributes[name] = Entry{coord, 1};
		return true;
	}
	IAttributeVertex* attribute = found->second.pAttribute;
	if (attribute->GetSemantic() != kSemantic_Coord || attribute->GetType() != type)
	{
		ConsoleOf(_pMgrEffects)->Message("ShaderVertex::AcquireAttribute Type Conflict\n");
		return false;
	}
	if (static_cast<AttributeVertexCoord*>(attribute)->GetTransformation() != transformation)
	{
		ConsoleOf(_pMgrEffects)->Message("ShaderVertex::AcquireAttribute Transformation Conflict\n");
		return false;
	}
	++found->second.nCount;
	return true;
}

bool ShaderVertex::ReleaseAttribute(const std::string& name)
{
	auto found = _mAttributes.find(name);
	if (found == _mAttributes.end())
		return true;
	if (--found->second.nCount > 0)
		return true;
	delete found->second.pAttribute;
	_mAttributes.erase(found);
	_bCompiled = false;
	return true;
}

bool ShaderVertex::VisitAttributes(VisitorAttribute& visitor)
{
	for (auto& entry : _mAttributes)
		if (!visitor(entry.first, entry.second.pAttribute))
			return false;
	return true;
}

bool ShaderVertex::OnProgramChange(IQLProgram* program)
{
	for (auto& entry : _mAttributes)
		if (!entry.second.pAttribute->CacheQLLocation(program))
			return false;
	return true;
}

bool ShaderVertex::SetName(const std::string& name)
{
	if (_pQLShader == nullptr)
		return false;
	_pQLShader->SetName(name);
	return true;
}

bool ShaderVertex::Compile()
{
	if (_pQLShader == nullptr)
		return false;
	Module* module = Module::Create();
	for (auto& entry : _mAttributes)
		entry.second.pAttribute->CollectDeclarationsVertex(module);
	CompoundStatement* body = module->CreateCompoundStatement();
	for (auto& entry : _mAttributes)
		entry.second.pAttribute->CollectTransformation(module, body);
	DefineFunctionVoid(module, "main", body);
	Result result;
	VisitorPrintTsl printer(&result, _pMgrEffects, false);
	const bool printed = printer.Visit(module);
	delete module;
	if (!printed)
	{
		// Without an installed result the printer's messages have nowhere to go.
		MgrEffectsImpl* impl = _pMgrEffects->GetImplementation();
		if (impl && impl->GetResult())
			impl->AddResult(result);
		return false;
	}
	std::vector<std::string> errors;
	if (!_pQLShader->SetString(printer.result(), errors))
	{
		ConsoleOf(_pMgrEffects)->Message("ShaderVertex::Compile SetString\n");
		return false;
	}
	_bCompiled = true;
	return true;
}

} // namespace Tarsel::Effects
