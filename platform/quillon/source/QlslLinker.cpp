#include "QlslLinker.h"

#include <algorithm>
#include <set>

namespace Tarsel
{
namespace Qlsl
{
namespace
{

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

std::string StorageText(const QLUnitVariable& variable)
{
	return variable.storage == kQLStorage_None ? "without qualifier"
	                                           : std::string("'") + QLStorageText(variable.storage) + "'";
}

QLVariable Variable(const QLUnitVariable& variable)
{
	return QLVariable{variable.name, variable.type, variable.arraySize, -1};
}

// Locations follow byte-wise name order, so that they depend only on the set of names.
void Number(std::vector<QLVariable>& variables)
{
	std::sort(variables.begin(), variables.end(),
	          [](const QLVariable& a, const QLVariable& b) { return a.name < b.name; });
	for (size_t i = 0; i < variables.size(); ++i)
		variables[i].location = int(i);
}

bool Contains(const std::vector<ReferenceShader*>& shaders, const ReferenceShader* shader)
{
	return std::find(shaders.begin(), shaders.end(), shader) != shaders.end();
}

bool Defines(const std::vector<ReferenceShader*>& shaders, const std::string& key)
{
	for (const ReferenceShader* shader : shaders)
	{
		if (shader->GetUnit()->FindDefinition(key))
			return true;
	}
	return false;
}

} // namespace

Linker::Linker(ReferenceContext* context, std::vector<std::string>& errors)
    : _pContext(context), _rErrors(errors)
{
}

void Linker::_Error(const ReferenceShader* shader, const std::string& message)
{
	_rErrors.push_back("ERROR: Link: shader '" + shader->GetLabel() + "': " + message);
}

void Linker::AddStage(int type, std::vector<ReferenceShader*> shaders)
{
	size_t attached = shaders.size();
	_PullIn(type, shaders);
	_CheckMain(type, shaders, attached);
	std::map<std::string, Definition> defined = _Definitions(shaders, attached);
	_CheckPrototypes(shaders, defined);
	_CheckRecursion(defined);
	std::map<std::string, Declared>& globals = _mStageGlobals[type];
	for (const ReferenceShader* shader : shaders)
	{
		for (const QLUnitVariable& variable : shader->GetUnit()->globals)
			_Declare(globals, variable, shader, true);
		for (const QLUnitBlock& block : shader->GetUnit()->blocks)
			_DeclareBlock(block, shader);
		linked.push_back(const_cast<ReferenceShader*>(shader));
	}
}

// Functions the stage calls but does not define may come from another compiled shader of the same type
// without a main of its own; that shader then joins the stage.
void Linker::_PullIn(int type, std::vector<ReferenceShader*>& shaders)
{
	std::vector<ReferenceShader*> candidates = _pContext->GetCompiledShaders(type);
	std::set<std::string> reported;
	for (size_t i = 0; i < shaders.size(); ++i)
	{
		for (const QLUnitCall& call : shaders[i]->GetUnit()->calls)
		{
			std::string key = call.Key();
			if (Defines(shaders, key) || reported.count(key))
				continue;
			ReferenceShader* provider = nullptr;
			for (ReferenceShader* candidate : candidates)
			{
				if (!Contains(shaders, candidate) && !candidate->GetUnit()->DefinesMain() &&
				    candidate->GetUnit()->FindDefinition(key))
				{
					provider = candidate;
					break;
				}
			}
			if (provider)
				shaders.push_back(provider);
			else if (reported.insert(key).second)
				_Error(shaders[i], "'" + key + "' : function called but not defined");
		}
	}
}

void Linker::_CheckMain(int type, const std::vector<ReferenceShader*>& shaders, size_t attached)
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
		_rErrors.push_back(std::string("ERROR: Link: ") + kStageNames[type] + " stage: 'main' : not defined");
}

// Definitions of the attached texts must be unique; pulled-in shaders only fill gaps.
std::map<std::string, Linker::Definition> Linker::_Definitions(const std::vector<ReferenceShader*>& shaders,
                                                               size_t attached)
{
	std::map<std::string, Definition> defined;
	for (size_t i = 0; i < shaders.size(); ++i)
	{
		for (const QLUnitFunction& function : shaders[i]->GetUnit()->functions)
		{
			if (!function.defined)
				continue;
			auto inserted = defined.emplace(function.name + "(" + function.parameters + ")",
			                                Definition{&function, shaders[i]});
			if (!inserted.second && i < attached && function.name != "main")
				_Error(shaders[i], "'" + function.name + "' : function already defined in shader '" +
				                       inserted.first->second.shader->GetLabel() + "'");
		}
	}
	return defined;
}

// A prototype in one text and the definition in another must agree on what the function returns.
void Linker::_CheckPrototypes(const std::vector<ReferenceShader*>& shaders,
                              const std::map<std::string, Definition>& defined)
{
	for (const ReferenceShader* shader : shaders)
	{
		for (const QLUnitFunction& function : shader->GetUnit()->functions)
		{
			auto definition = defined.find(function.name + "(" + function.parameters + ")");
			if (function.defined || definition == defined.end() ||
			    definition->second.function->returnType == function.returnType)
				continue;
			_Error(shader, "'" + function.name + "' : declared returning '" + function.returnType +
			                   "' here and defined returning '" + definition->second.function->returnType +
			                   "' in shader '" + definition->second.shader->GetLabel() + "'");
		}
	}
}

// Depth-first over the call graph with an explicit stack; a call back into the current path is a cycle.
void Linker::_CheckRecursion(const std::map<std::string, Definition>& defined)
{
	enum Mark
	{
		kUnseen,
		kOnPath,
		kDone
	};
	std::map<std::string, Mark> marks;
	struct Frame
	{
		const std::string* key;
		const QLUnitFunction* function;
		size_t next;
	};
	for (const auto& root : defined)
	{
		if (marks[root.first] != kUnseen)
			continue;
		std::vector<Frame> path{Frame{&root.first, root.second.function, 0}};
		marks[root.first] = kOnPath;
		while (!path.empty())
		{
			Frame& frame = path.back();
			if (frame.next == frame.function->callees.size())
			{
				marks[*frame.key] = kDone;
				path.pop_back();
				continue;
			}
			const std::string& callee = frame.function->callees[frame.next++];
			auto definition = defined.find(callee);
			if (definition == defined.end())
				continue;
			Mark& mark = marks[callee];
			if (mark == kOnPath)
			{
				std::string cycle;
				for (size_t i = 0; i < path.size(); ++i)
				{
					if (cycle.empty() && *path[i].key != callee)
						continue;
					cycle += path[i].function->name + " -> ";
				}
				_Error(definition->second.shader, "'" + definition->second.function->name +
				                                      "' : recursive call (" + cycle +
				                                      definition->second.function->name + ")");
				return;
			}
			if (mark == kUnseen)
			{
				mark = kOnPath;
				path.push_back(Frame{&definition->first, definition->second.function, 0});
			}
		}
	}
}

void Linker::_Declare(std::map<std::string, Declared>& declared, const QLUnitVariable& variable,
                      const ReferenceShader* shader, bool sameStorage)
{
	auto inserted = declared.emplace(variable.name, Declared{&variable, shader});
	if (inserted.second)
		return;
	const Declared& earlier = inserted.first->second;
	if (TypeText(*earlier.variable) != TypeText(variable))
		_Error(shader, "'" + variable.name + "' : declared as " + TypeText(variable) + " here and as " +
		                   TypeText(*earlier.variable) + " in shader '" + earlier.shader->GetLabel() + "'");
	else if (sameStorage && earlier.variable->storage != variable.storage)
		_Error(shader, "'" + variable.name + "' : declared " + StorageText(variable) + " here and " +
		                   StorageText(*earlier.variable) + " in shader '" + earlier.shader->GetLabel() +
		                   "'");
}

void Linker::_DeclareBlock(const QLUnitBlock& block, const ReferenceShader* shader)
{
	auto inserted = _mBlocks.emplace(block.name, std::make_pair(&block, shader));
	if (!inserted.second && !SameMembers(*inserted.first->second.first, block))
		_Error(shader, "'" + block.name + "' : uniform block members differ from shader '" +
		                   inserted.first->second.second->GetLabel() + "'");
}

// A vertex stage feeds ray shaders; ray shaders never share a program with frame or prefix shaders.
void Linker::_CheckKinds()
{
	bool ray = _mStageGlobals.count(IQLShader::kType_Ray) != 0;
	bool vertex = _mStageGlobals.count(IQLShader::kType_Vertex) != 0;
	bool screen =
	    _mStageGlobals.count(IQLShader::kType_Frame) || _mStageGlobals.count(IQLShader::kType_PrefixRay);
	if ((ray || vertex) && screen)
		_rErrors.push_back(std::string("ERROR: Link: ") + (ray ? "ray" : "vertex") +
		                   " shaders cannot be linked with frame or prefix ray shaders");
}

void Linker::_CheckVaryings()
{
	auto vertex = _mStageGlobals.find(IQLShader::kType_Vertex);
	auto ray = _mStageGlobals.find(IQLShader::kType_Ray);
	if (vertex == _mStageGlobals.end() || ray == _mStageGlobals.end())
		return;
	for (const auto& entry : ray->second)
	{
		const Declared& used = entry.second;
		if (used.variable->storage != kQLStorage_Varying)
			continue;
		auto written = vertex->second.find(entry.first);
		if (written == vertex->second.end() || !IsVertexOutput(written->second.variable->storage))
			_Error(used.shader, "'" + entry.first + "' : varying not written by the vertex stage");
		else if (TypeText(*written->second.variable) != TypeText(*used.variable))
			_Error(used.shader, "'" + entry.first + "' : varying declared as " + TypeText(*used.variable) +
			                        " here and as " + TypeText(*written->second.variable) + " in shader '" +
			                        written->second.shader->GetLabel() + "'");
	}
}

// Uniforms, uniform blocks and attributes are looked up by name, so one name may mean only one of them.
void Linker::_CheckNamespaces(const std::map<std::string, Declared>& uniformsByName)
{
	auto attributes = _mStageGlobals.find(IQLShader::kType_Vertex);
	for (const auto& block : _mBlocks)
	{
		auto uniform = uniformsByName.find(block.first);
		if (uniform != uniformsByName.end())
			_Error(block.second.second, "'" + block.first +
			                                "' : uniform block with the name of a uniform of shader '" +
			                                uniform->second.shader->GetLabel() + "'");
	}
	if (attributes == _mStageGlobals.end())
		return;
	for (const auto& entry : attributes->second)
	{
		if (entry.second.variable->storage != kQLStorage_Attribute)
			continue;
		if (uniformsByName.count(entry.first) || _mBlocks.count(entry.first))
			_Error(entry.second.shader,
			       "'" + entry.first + "' : attribute with the name of a uniform or uniform block");
	}
}

void Linker::Finish()
{
	_CheckKinds();
	_CheckVaryings();
	std::map<std::string, Declared> uniformsByName;
	for (const auto& stage : _mStageGlobals)
	{
		for (const auto& entry : stage.second)
		{
			if (IsUniform(entry.second.variable->storage))
				_Declare(uniformsByName, *entry.second.variable, entry.second.shader, false);
		}
	}
	_CheckNamespaces(uniformsByName);
	for (const auto& entry : uniformsByName)
		uniforms.push_back(Variable(*entry.second.variable));
	for (const auto& entry : _mBlocks)
		blocks.push_back(QLVariable{entry.first, "uniformblock", 0, -1});
	auto vertex = _mStageGlobals.find(IQLShader::kType_Vertex);
	if (vertex != _mStageGlobals.end())
	{
		for (const auto& entry : vertex->second)
		{
			if (entry.second.variable->storage == kQLStorage_Attribute)
				attributes.push_back(Variable(*entry.second.variable));
		}
	}
	Number(uniforms);
	Number(blocks);
	Number(attributes);
}

} // namespace Qlsl
} // namespace Tarsel
