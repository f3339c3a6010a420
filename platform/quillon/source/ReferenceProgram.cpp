#include "QlslUnit.h"
#include "quillon/FaultInjection.h"
#include "quillon/Reference.h"

#include <algorithm>
#include <map>
#include <set>

namespace Tarsel
{
namespace
{

const char* const kStageNames[] = {"ray", "vertex", "frame", "prefix ray"};

struct Declared
{
	const QLUnitVariable* variable;
	const ReferenceShader* shader;
};

bool IsVertexOutput(QLStorage storage)
{
	return storage == kQLStorage_Varying || storage == kQLStorage_TransformedVarying ||
	       storage == kQLStorage_TransformedInvariantVarying;
}

bool IsUniform(QLStorage storage)
{
	return storage == kQLStorage_Uniform || storage == kQLStorage_MutableUniform;
}

std::string TypeText(const QLUnitVariable& variable)
{
	if (variable.arraySize == 0)
		return variable.type;
	return variable.type + "[" + (variable.arraySize > 0 ? std::to_string(variable.arraySize) : "") + "]";
}

bool SameMembers(const QLUnitBlock& a, const QLUnitBlock& b)
{
	if (a.members.size() != b.members.size())
		return false;
	for (size_t i = 0; i < a.members.size(); ++i)
	{
		if (a.members[i].name != b.members[i].name || TypeText(a.members[i]) != TypeText(b.members[i]))
			return false;
	}
	return true;
}

// Links the shaders of one stage and of the whole program; collects everything a program needs.
class Linker
{
public:
	Linker(ReferenceContext* context, std::vector<std::string>& errors) : _pContext(context), _rErrors(errors)
	{
	}

	void AddStage(int type, std::vector<ReferenceShader*> shaders)
	{
		size_t attached = shaders.size();
		_PullIn(type, shaders);
		_CheckMain(type, shaders, attached);
		_CheckDefinitions(shaders, attached);
		std::map<std::string, Declared>& globals = _mStageGlobals[type];
		for (const ReferenceShader* shader : shaders)
		{
			for (const QLUnitVariable& variable : shader->GetUnit()->globals)
				_Declare(globals, variable, shader, true);
			for (const QLUnitBlock& block : shader->GetUnit()->blocks)
				_DeclareBlock(block, shader);
			_vLinked.push_back(const_cast<ReferenceShader*>(shader));
		}
	}

	// Program-wide rules: varyings read by the ray stage come from the vertex stage, uniforms agree.
	void Finish()
	{
		auto vertex = _mStageGlobals.find(IQLShader::kType_Vertex);
		auto ray = _mStageGlobals.find(IQLShader::kType_Ray);
		if (vertex != _mStageGlobals.end() && ray != _mStageGlobals.end())
		{
			for (const auto& entry : ray->second)
			{
				const Declared& used = entry.second;
				if (used.variable->storage != kQLStorage_Varying)
					continue;
				auto written = vertex->second.find(entry.first);
				if (written == vertex->second.end() || !IsVertexOutput(written->second.variable->storage))
					_Error(used.shader, "'" + entry.first + "' : varying not written by the vertex stage");
				else if (TypeText(*written->second.variable) != TypeText(*used.variable))
					_Error(used.shader, "'" + entry.first + "' : varying declared as " +
					                        TypeText(*used.variable) + " here and as " +
					                        TypeText(*written->second.variable) + " in shader '" +
					                        written->second.shader->GetLabel() + "'");
			}
		}
		std::map<std::string, Declared> uniforms;
		for (const auto& stage : _mStageGlobals)
		{
			for (const auto& entry : stage.second)
			{
				if (IsUniform(entry.second.variable->storage))
					_Declare(uniforms, *entry.second.variable, entry.second.shader, false);
			}
		}
		for (const auto& entry : uniforms)
			_vUniforms.push_back(_Variable(*entry.second.variable));
		for (const auto& entry : _mBlocks)
			_vBlocks.push_back(QLVariable{entry.first, "uniformblock", 0, -1});
		auto attributes = _mStageGlobals.find(IQLShader::kType_Vertex);
		if (attributes != _mStageGlobals.end())
		{
			for (const auto& entry : attributes->second)
			{
				if (entry.second.variable->storage == kQLStorage_Attribute)
					_vAttributes.push_back(_Variable(*entry.second.variable));
			}
		}
		_Number(_vUniforms);
		_Number(_vBlocks);
		_Number(_vAttributes);
	}

	std::vector<IQLShader*> _vLinked;
	std::vector<QLVariable> _vUniforms;
	std::vector<QLVariable> _vBlocks;
	std::vector<QLVariable> _vAttributes;

private:
	void _Error(const ReferenceShader* shader, const std::string& message)
	{
		_rErrors.push_back("ERROR: Link: shader '" + shader->GetLabel() + "': " + message);
	}

	static bool _Contains(const std::vector<ReferenceShader*>& shaders, const ReferenceShader* shader)
	{
		return std::find(shaders.begin(), shaders.end(), shader) != shaders.end();
	}

	static bool _Defines(const std::vector<ReferenceShader*>& shaders, const QLUnitCall& call)
	{
		for (const ReferenceShader* shader : shaders)
		{
			if (shader->GetUnit()->FindDefinition(call.name, call.arity))
				return true;
		}
		return false;
	}

	// Functions the stage calls but does not define may come from another compiled shader of the same
	// type without a main of its own; that shader then joins the stage.
	void _PullIn(int type, std::vector<ReferenceShader*>& shaders)
	{
		std::vector<ReferenceShader*> candidates = _pContext->GetCompiledShaders(type);
		std::set<std::pair<std::string, int>> reported;
		for (size_t i = 0; i < shaders.size(); ++i)
		{
			for (const QLUnitCall& call : shaders[i]->GetUnit()->calls)
			{
				if (_Defines(shaders, call) || reported.count(std::make_pair(call.name, call.arity)))
					continue;
				ReferenceShader* provider = nullptr;
				for (ReferenceShader* candidate : candidates)
				{
					if (!_Contains(shaders, candidate) && !candidate->GetUnit()->DefinesMain() &&
					    candidate->GetUnit()->FindDefinition(call.name, call.arity))
					{
						provider = candidate;
						break;
					}
				}
				if (provider)
					shaders.push_back(provider);
				else if (reported.insert(std::make_pair(call.name, call.arity)).second)
					_Error(shaders[i], "'" + call.name + "' : function called but not defined (" +
					                       std::to_string(call.arity) + " arguments)");
			}
		}
	}

	void _CheckMain(int type, const std::vector<ReferenceShader*>& shaders, size_t attached)
	{
		const ReferenceShader* first = nullptr;
		for (size_t i = 0; i < attached; ++i)
		{
			if (!shaders[i]->GetUnit()->DefinesMain())
				continue;
			if (first)
				_Error(shaders[i], "'main' : already defined in shader '" + first->GetLabel() + "'");
			else
				first = shaders[i];
		}
		if (!first)
			_rErrors.push_back(std::string("ERROR: Link: ") + kStageNames[type] +
			                   " stage: 'main' : not defined");
	}

	// Definitions of the attached texts must be unique; pulled-in shaders only fill gaps.
	void _CheckDefinitions(const std::vector<ReferenceShader*>& shaders, size_t attached)
	{
		std::map<std::string, const ReferenceShader*> defined;
		for (size_t i = 0; i < attached; ++i)
		{
			for (const QLUnitFunction& function : shaders[i]->GetUnit()->functions)
			{
				if (!function.defined || function.name == "main")
					continue;
				auto inserted = defined.emplace(function.name + "(" + function.parameters + ")", shaders[i]);
				if (!inserted.second)
					_Error(shaders[i], "'" + function.name + "' : function already defined in shader '" +
					                       inserted.first->second->GetLabel() + "'");
			}
		}
	}

	void _Declare(std::map<std::string, Declared>& declared, const QLUnitVariable& variable,
	              const ReferenceShader* shader, bool sameStorage)
	{
		auto inserted = declared.emplace(variable.name, Declared{&variable, shader});
		if (inserted.second)
			return;
		const Declared& earlier = inserted.first->second;
		if (TypeText(*earlier.variable) != TypeText(variable))
			_Error(shader, "'" + variable.name + "' : declared as " + TypeText(variable) + " here and as " +
			                   TypeText(*earlier.variable) + " in shader '" + earlier.shader->GetLabel() +
			                   "'");
		else if (sameStorage && earlier.variable->storage != variable.storage)
			_Error(shader, "'" + variable.name + "' : declared " + _Storage(variable) + " here and " +
			                   _Storage(*earlier.variable) + " in shader '" + earlier.shader->GetLabel() +
			                   "'");
	}

	static std::string _Storage(const QLUnitVariable& variable)
	{
		return variable.storage == kQLStorage_None ? "without qualifier"
		                                           : std::string("'") + QLStorageText(variable.storage) + "'";
	}

	void _DeclareBlock(const QLUnitBlock& block, const ReferenceShader* shader)
	{
		auto inserted = _mBlocks.emplace(block.name, std::make_pair(&block, shader));
		if (!inserted.second && !SameMembers(*inserted.first->second.first, block))
			_Error(shader, "'" + block.name + "' : uniform block members differ from shader '" +
			                   inserted.first->second.second->GetLabel() + "'");
	}

	static QLVariable _Variable(const QLUnitVariable& variable)
	{
		return QLVariable{variable.name, variable.type, variable.arraySize, -1};
	}

	static void _Number(std::vector<QLVariable>& variables)
	{
		std::sort(variables.begin(), variables.end(),
		          [](const QLVariable& a, const QLVariable& b) { return a.name < b.name; });
		for (size_t i = 0; i < variables.size(); ++i)
			variables[i].location = int(i);
	}

	ReferenceContext* _pContext;
	std::vector<std::string>& _rErrors;
	std::map<int, std::map<std::string, Declared>> _mStageGlobals;
	std::map<std::string, std::pair<const QLUnitBlock*, const ReferenceShader*>> _mBlocks;
};

int FindLocation(const std::vector<QLVariable>& variables, const char* name)
{
	if (!name)
		return -1;
	for (const QLVariable& variable : variables)
	{
		if (variable.name == name)
			return variable.location;
	}
	return -1;
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
	if (QLFaultInjection::Fail("AttachShader"))
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
	Linker linker(_pContext, errors);
	for (auto& stage : stages)
		linker.AddStage(stage.first, stage.second);
	linker.Finish();
	if (errors.size() != before)
		return false;
	_vLinked = linker._vLinked;
	_vUniforms = linker._vUniforms;
	_vUniformBlocks = linker._vBlocks;
	_vAttributes = linker._vAttributes;
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
