#include "QlslUnit.h"
#include "quillon/FaultInjection.h"
#include "quillon/Reference.h"

namespace Tarsel
{

ReferenceShader::ReferenceShader(ReferenceContext* context, int type)
    : _pContext(context), _iType(type), _nId(context->NextShaderId())
{
}

ReferenceShader::~ReferenceShader() {}

void ReferenceShader::SetName(const char* name)
{
	_sName = name ? name : "";
}

void ReferenceShader::SetName(const std::string& name)
{
	_sName = name;
}

bool ReferenceShader::SetString(const std::string& text, std::vector<std::string>& errors)
{
	_sText = text;
	_pUnit = QLFaultInjection::Fail("Compile", &errors) ? nullptr : Qlsl::Compile(text, _iType, errors);
	return _pUnit != nullptr;
}

std::string ReferenceShader::GetLabel() const
{
	return _sName.empty() ? "shader " + std::to_string(_nId) : _sName;
}

} // namespace Tarsel
