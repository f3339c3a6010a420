#include "QlslLinker.h"
#include "quillon/FaultInjection.h"
#include "quillon/Reference.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace Tarsel
{
namespace
{

// Variables are kept in name order, which is also their location order.
int FindLocation(const std::vector<QLVariable>& variables, const char* name)
{
	if (!name)
		return -1;
	auto it = std::lower_bound(variables.begin(), variables.end(), name,
	                           [](const QLVariable& variable, const char* key)
	                           { return std::strcmp(variable.name.c_str(), key) < 0; });
	return it != variables.end() && it->name == name ? it->location : -1;
}

const QLVariable* FindByLocation(const std::vector<QLVariable>& variables, int location)
{
	return location >= 0 && size_t(location) < variables.size() ? &variables[size_t(location)] : nullptr;
}

} // namespace

ReferenceProgram::ReferenceProgram(ReferenceContext* context, unsigned handle)
    : _pContext(context), _nHandle(handle)
{
}

ReferenceProgram::~ReferenceProgram() {}

ReferenceProgram* ReferenceProgram::From(IQLProgram* program)
{
	return dynamic_cast<ReferenceProgram*>(program);
}

void ReferenceProgram::SetName(const char* name)
{
	_sName = name ? name : "";
}

void ReferenceProgram::SetName(const std::string& name)
{
	_sName = name;
}

bool ReferenceProgram::AttachShader(IQLShader* shader)
{
	if (QLFaultInjection::Fail("AttachShader") || _pContext->ConsumeFailAttach())
		return false;
	if (!dynamic_cast<ReferenceShader*>(shader) ||
	    std::find(_vAttached.begin(), _vAttached.end(), shader) != _vAttached.end())
	{
		_pContext->Message("ReferenceProgram::AttachShader refused (%s)\n",
		                   shader ? "attached twice" : "null");
		return false;
	}
	_vAttached.push_back(shader);
	return true;
}

bool ReferenceProgram::DetachShader(IQLShader* shader)
{
	auto it = std::find(_vAttached.begin(), _vAttached.end(), shader);
	if (it == _vAttached.end())
	{
		_pContext->Message("ReferenceProgram::DetachShader shader not attached\n");
		return false;
	}
	_vAttached.erase(it);
	return true;
}

void ReferenceProgram::ForgetShader(IQLShader* shader)
{
	_vAttached.erase(std::remove(_vAttached.begin(), _vAttached.end(), shader), _vAttached.end());
	_vLinked.erase(std::remove(_vLinked.begin(), _vLinked.end(), shader), _vLinked.end());
}

bool ReferenceProgram::Link(std::vector<std::string>& errors)
{
	_bLinked = false;
	_vLinked.clear();
	_vUniforms.clear();
	_vUniformBlocks.clear();
	_vAttributes.clear();
	_vLinkedUnits.clear();
	if (QLFaultInjection::Fail("Link", &errors))
		return false;
	if (_pContext->ConsumeFailLink())
	{
		errors.push_back("ERROR: Link: failure injected");
		return false;
	}
	if (_vAttached.empty())
	{
		errors.push_back("ERROR: Link: no shaders attached");
		return false;
	}
	size_t before = errors.size();
	std::map<int, std::vector<ReferenceShader*>> stages;
	for (IQLShader* shader : _vAttached)
	{
		ReferenceShader* reference = static_cast<ReferenceShader*>(shader);
		if (!reference->IsCompiled())
			errors.push_back("ERROR: Link: shader '" + reference->GetLabel() + "': not compiled");
		else
			stages[reference->GetType()].push_back(reference);
	}
	if (errors.size() != before)
		return false;
	Qlsl::Linker linker(_pContext, errors);
	for (auto& stage : stages)
		linker.AddStage(stage.first, stage.second);
	linker.Finish();
	if (errors.size() != before)
		return false;
	_vLinked = linker.linked;
	_vUniforms = linker.uniforms;
	_vUniformBlocks = linker.blocks;
	_vAttributes = linker.attributes;
	// The typed trees stay with the program even when a shader is recompiled or destroyed later.
	for (IQLShader* shader : _vLinked)
		_vLinkedUnits.push_back(static_cast<ReferenceShader*>(shader)->GetUnit());
	_bLinked = true;
	++_nLinks;
	_setListenersChange.Notify(static_cast<IQLProgram*>(this));
	return true;
}

int ReferenceProgram::GetUniformLocation(const char* name) const
{
	return FindLocation(_vUniforms, name);
}

int ReferenceProgram::GetUniformBlockLocation(const char* name) const
{
	return FindLocation(_vUniformBlocks, name);
}

int ReferenceProgram::GetAttributeLocation(const char* name) const
{
	return FindLocation(_vAttributes, name);
}

const QLVariable* ReferenceProgram::FindUniform(int location) const
{
	return FindByLocation(_vUniforms, location);
}

const QLVariable* ReferenceProgram::FindUniformBlock(int location) const
{
	return FindByLocation(_vUniformBlocks, location);
}

bool ReferenceProgram::AddListenerChange(const ListenerChange& listener)
{
	_setListenersChange.Add(listener);
	return true;
}

bool ReferenceProgram::RemoveListenerChange(const ListenerChange& listener)
{
	_setListenersChange.Remove(listener);
	return true;
}

} // namespace Tarsel
