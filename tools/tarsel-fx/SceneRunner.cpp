#include "SceneRunner.h"

#include "EventPrinter.h"
#include "RecordingPrimitive.h"
#include "SceneValue.h"

#include "core/Result.h"
#include "effects/IEffect.h"
#include "effects/ILocalParameter.h"
#include "effects/IMgrEffects.h"
#include "effects/IMgrLightShaders.h"
#include "effects/IParameter.h"
#include "effects/IReferenceEffect.h"
#include "effects/IShader.h"
#include "quillon/Reference.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace Tarsel::Fx
{
using namespace Effects;
using nlohmann::json;

namespace
{

const char* GetProgramExtension(EffectKind kind)
{
	switch (kind)
	{
	case EffectKind::kSurface:
		return "qlray";
	case EffectKind::kPrefix:
		return "qlprefix";
	case EffectKind::kRenderer:
		return "qlframe";
	}
	return "ql";
}

const char* GetClassWord(int parameterClass)
{
	switch (parameterClass)
	{
	case IParameter::kParameterClass_Value:
		return "value";
	case IParameter::kParameterClass_Coord:
		return "coordinate";
	default:
		return "interface input";
	}
}

std::string WithArticle(const char* word)
{
	return std::string(word[0] == 'i' ? "an " : "a ") + word;
}

std::string TrimNewline(std::string text)
{
	while (!text.empty() && text.back() == '\n')
		text.pop_back();
	return text;
}

bool EndsWith(const std::string& text, const std::string& end)
{
	return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool WriteText(const std::filesystem::path& path, const std::string& text)
{
	std::ofstream file(path, std::ios::binary);
	return file && (file << text) && file.flush();
}

} // namespace

SceneRunner::SceneRunner(IMgrEffects& mgr, SceneErrors& errors, EventPrinter& printer)
    : _mgr(mgr), _errors(errors), _printer(printer)
{
}

// Gives everything back as a host does, then shuts the manager down: its reference effects point at this
// runner's primitives.
SceneRunner::~SceneRunner()
{
	for (const Effect& effect : _vEffects)
		_DestroyEffect(effect);
	_DestroyShaders();
	_mgr.Shutdown();
}

// Lights go back to their manager, which shuts down before the effects manager does.
void SceneRunner::_DestroyShaders()
{
	for (const auto& shader : _mShaders)
		if (_setLights.count(shader.first) == 0)
			_mgr.DestroyShader(shader.second);
	if (_pLights == nullptr)
		return;
	for (const std::string& id : _setLights)
		_pLights->DestroyShader(_mShaders[id]);
	_pLights->Shutdown();
	Effects::DestroyMgrLightShaders();
	_pLights = nullptr;
}

void SceneRunner::_DestroyEffect(const Effect& effect)
{
	switch (effect.kind)
	{
	case EffectKind::kSurface:
		return _mgr.DestroyEffectSurface(effect.pEffect);
	case EffectKind::kPrefix:
		return _mgr.DestroyEffectPrefix(effect.pEffect);
	case EffectKind::kRenderer:
		return _mgr.DestroyEffectRenderer(effect.pEffect);
	}
}

bool SceneRunner::Run(const Scene& scene, const SceneOptions& options)
{
	const int before = _errors.GetCount();
	if (!_Setup(scene))
		return false;
	for (size_t i = 0; i < scene.frames.size(); ++i)
	{
		_printer.SetFrame(static_cast<int>(i) + 1);
		_RunFrame(scene.frames[i], JoinPath("frames", i), options);
	}
	return _errors.GetCount() == before;
}

bool SceneRunner::_Setup(const Scene& scene)
{
	if (!_LoadLibraries(scene.libraries))
		return false;
	const int before = _errors.GetCount();
	_SetOutputs(scene.outputs);
	if (!_StartLights(scene.shaders))
		return false;
	_CreateShaders(scene.shaders);
	_CreateEffects(scene.effects);
	return _errors.GetCount() == before;
}

bool SceneRunner::_Fail(const Result& result, const std::string& path, const std::string& fallback)
{
	// A result holds its outermost message last; that one is printed first, as the console prints results.
	const std::vector<std::string>& messages = result.GetMessages();
	for (auto it = messages.rbegin(); it != messages.rend(); ++it)
		_errors.Report(path, TrimNewline(*it));
	if (messages.empty())
		_errors.Report(path, fallback);
	return false;
}

bool SceneRunner::_LoadLibraries(const std::vector<std::string>& libraries)
{
	bool bGood = true;
	for (size_t i = 0; i < libraries.size(); ++i)
	{
		Result result;
		if (!_mgr.AddLibrary(libraries[i], &result))
			bGood = _Fail(result, JoinPath("libraries", i), "cannot load \"" + libraries[i] + "\"");
	}
	return bGood;
}

bool SceneRunner::_SetOutputs(const std::vector<SceneOutput>& outputs)
{
	bool bGood = true;
	for (const SceneOutput& output : outputs)
		bGood = _SetOutput(output) && bGood;
	return bGood;
}

bool SceneRunner::_SetOutput(const SceneOutput& output)
{
	if (output.index.is_null())
	{
		if (_mgr.ClearOutputAttachmentIndex(output.name))
			return true;
		_errors.Report(output.path, "output \"" + output.name + "\" has no attachment index to clear");
		return false;
	}
	return _mgr.SetOutputAttachmentIndex(output.name, output.index.get<int>());
}

bool SceneRunner::_StartLights(const SceneMap<SceneShader>& shaders)
{
	const auto light =
	    std::find_if(shaders.begin(), shaders.end(), [](const auto& entry) { return entry.second.light; });
	if (light == shaders.end())
		return true;
	_pLights = Effects::CreateMgrLightShaders();
	if (_pLights->Init(&_mgr, _mgr.GetConsole()))
		return true;
	Effects::DestroyMgrLightShaders();
	_pLights = nullptr;
	_errors.Report(JoinPath(JoinPath("shaders", light->first), "light"),
	               "the light-shader manager cannot start; load Interfaces.tsl and LightArrays.tsl");
	return false;
}

// All shaders exist before any is connected, so that connections need no order.
bool SceneRunner::_CreateShaders(const SceneMap<SceneShader>& shaders)
{
	bool bGood = true;
	for (const auto& entry : shaders)
	{
		Result result;
		const bool light = entry.second.light && _pLights;
		IShader* shader = light ? _pLights->CreateShader(entry.second.className, &result)
		                        : _mgr.CreateShader(entry.second.className, &result);
		if (shader)
		{
			_mShaders[entry.first] = shader;
			if (light)
				_setLights.insert(entry.first);
		}
		else
			bGood = _Fail(result, JoinPath(JoinPath("shaders", entry.first), "class"),
			              "cannot create the shader");
	}
	for (const auto& entry : shaders)
		bGood = (!_mShaders.count(entry.first) || _InitShader(entry.first, entry.second)) && bGood;
	return bGood;
}

bool SceneRunner::_InitShader(const std::string& id, const SceneShader& shader)
{
	const std::string path = JoinPath("shaders", id);
	bool bGood = true;
	for (const auto& value : shader.values)
		bGood = _SetValue({id, value.first}, value.second, JoinPath(JoinPath(path, "values"), value.first)) &&
		        bGood;
	for (const auto& connect : shader.connect)
		bGood = _Connect({id, connect.first}, connect.second,
		                 JoinPath(JoinPath(path, "connect"), connect.first)) &&
		        bGood;
	for (const auto& coord : shader.coords)
		bGood = _SetCoord({id, coord.first}, coord.second, JoinPath(JoinPath(path, "coords"), coord.first)) &&
		        bGood;
	return bGood;
}

IEffect* SceneRunner::_CreateEffect(EffectKind kind)
{
	switch (kind)
	{
	case EffectKind::kSurface:
		return _mgr.CreateEffectSurface();
	case EffectKind::kPrefix:
		return _mgr.CreateEffectPrefix();
	case EffectKind::kRenderer:
		return _mgr.CreateEffectRenderer();
	}
	return nullptr;
}

RecordingPrimitive* SceneRunner::_GetPrimitive(const std::string& name)
{
	std::unique_ptr<RecordingPrimitive>& primitive = _mPrimitives[name];
	if (!primitive)
		primitive.reset(new RecordingPrimitive(name, QLprimitive(_mPrimitives.size()), _printer));
	return primitive.get();
}

bool SceneRunner::_CreateEffects(const SceneMap<SceneEffect>& effects)
{
	bool bGood = true;
	for (const auto& entry : effects)
	{
		const std::string path = JoinPath("effects", entry.first);
		IEffect* effect = _CreateEffect(entry.second.kind);
		if (effect == nullptr)
		{
			_errors.Report(path, "the device could not make the effect's program");
			bGood = false;
			continue;
		}
		_vEffects.push_back({entry.first, entry.second.kind, effect, {}});
		IEffect::Listener onCompile = MakeDelegate(this, &SceneRunner::_OnCompile);
		effect->AddListenerCompile(onCompile);
		effect->SetName(entry.first);
		if (!effect->SetRoot(_mShaders[entry.second.root]))
		{
			_errors.Report(JoinPath(path, "root"),
			               "cannot build a graph from shader \"" + entry.second.root + "\"");
			bGood = false;
			continue;
		}
		for (const std::string& name : entry.second.primitives)
			_vEffects.back().references.push_back(effect->CreateReference(_GetPrimitive(name)));
	}
	return bGood;
}

bool SceneRunner::_RunFrame(const SceneFrame& frame, const std::string& path, const SceneOptions& options)
{
	const int before = _errors.GetCount();
	for (const SceneChange& change : frame.values)
		_SetValue(change.target, change.value, change.path);
	for (const SceneChange& change : frame.connect)
		_Connect(change.target, change.value, change.path);
	for (const SceneChange& change : frame.coords)
		_SetCoord(change.target, change.value.get<std::string>(), change.path);
	for (const SceneLocal& local : frame.local)
		_SetLocal(local);
	_SetOutputs(frame.outputs);
	Result result;
	if (!_mgr.Update(&result))
		_Fail(result, path, "the update failed (see the lines above)");
	if (options.bApplyAll)
		_ApplyAll(path);
	_CheckDevice(path);
	return _errors.GetCount() == before;
}

bool SceneRunner::_ApplyAll(const std::string& path)
{
	bool bGood = true;
	for (const Effect& effect : _vEffects)
		for (IReferenceEffect* reference : effect.references)
		{
			Result result;
			if (reference && !reference->Apply(&result))
				bGood = _Fail(result, path, "effect \"" + effect.id + "\" could not apply itself");
		}
	return bGood;
}

// Writes that the strict device refused never reach the output; each is an error of the frame.
bool SceneRunner::_CheckDevice(const std::string& path)
{
	bool bGood = true;
	for (const auto& entry : _mPrimitives)
	{
		const std::vector<std::string>& violations = entry.second->GetViolations();
		size_t& seen = _mViolationsSeen[entry.second.get()];
		for (; seen < violations.size(); ++seen)
		{
			_errors.Report(path, "primitive \"" + entry.first + "\": " + violations[seen]);
			bGood = false;
		}
	}
	return bGood;
}

IParameter* SceneRunner::_FindParameter(const SceneTarget& target, const std::string& path,
                                        int parameterClass)
{
	IShader* shader = _mShaders.count(target.shader) ? _mShaders[target.shader] : nullptr;
	if (shader == nullptr)
		return nullptr; // its creation failed and was reported
	IParameter* parameter = parameterClass == IParameter::kParameterClass_Coord
	                            ? shader->GetCoord(target.parameter)
	                            : shader->GetParameter(target.parameter);
	if (parameter == nullptr)
	{
		_errors.Report(path, "class \"" + shader->GetClassName() + "\" has no " +
		                         GetClassWord(parameterClass) + " named \"" + target.parameter + "\"");
		return nullptr;
	}
	if (parameter->GetClass() != parameterClass)
	{
		_errors.Report(path, "\"" + target.parameter + "\" of class \"" + shader->GetClassName() + "\" is " +
		                         WithArticle(GetClassWord(parameter->GetClass())) + ", not " +
		                         WithArticle(GetClassWord(parameterClass)));
		return nullptr;
	}
	return parameter;
}

bool SceneRunner::_ConvertValue(IParameter* parameter, const json& value, const std::string& path,
                                SceneValue& out)
{
	SceneValueShape shape;
	shape.type = parameter->GetTypeSpecifier();
	shape.bArray = parameter->IsArray();
	shape.bResizable = parameter->IsResizable();
	shape.length = parameter->GetLength();
	return ConvertSceneValue(value, shape, path, _errors, out);
}

bool SceneRunner::_SetValue(const SceneTarget& target, const json& value, const std::string& path)
{
	IParameter* parameter = _FindParameter(target, path, IParameter::kParameterClass_Value);
	SceneValue converted;
	if (parameter == nullptr || !_ConvertValue(parameter, value, path, converted))
		return false;
	// The list sets the length of an array that has none of its own.
	if (parameter->IsResizable() && !parameter->SetLength(converted.count))
	{
		_errors.Report(path, "cannot make the array " + std::to_string(converted.count) + " long");
		return false;
	}
	if (converted.count == 0 || ApplySceneValue(*parameter, converted))
		return true;
	_errors.Report(path, "the parameter refused the value");
	return false;
}

bool SceneRunner::_Connect(const SceneTarget& target, const json& value, const std::string& path)
{
	IParameter* parameter = _FindParameter(target, path, IParameter::kParameterClass_Interface);
	if (parameter == nullptr)
		return false;
	IShader* shader = _mShaders[target.shader];
	Result result;
	if (!value.is_array())
	{
		if (shader->SetParameter(&result, target.parameter, _mShaders[value.get<std::string>()]))
			return true;
		return _Fail(result, path, "cannot connect \"" + value.get<std::string>() + "\"");
	}
	std::vector<IShader*> shaders;
	for (const json& id : value)
		shaders.push_back(id.is_null() ? nullptr : _mShaders[id.get<std::string>()]);
	if (parameter->IsResizable() && !parameter->SetLength(static_cast<int>(shaders.size())))
	{
		_errors.Report(path, "cannot make the array " + std::to_string(shaders.size()) + " long");
		return false;
	}
	if (shaders.empty() ||
	    shader->SetParameter(&result, target.parameter, shaders.data(), static_cast<int>(shaders.size())))
		return true;
	return _Fail(result, path, "cannot connect the shaders");
}

bool SceneRunner::_SetCoord(const SceneTarget& target, const std::string& value, const std::string& path)
{
	if (_FindParameter(target, path, IParameter::kParameterClass_Coord) == nullptr)
		return false;
	Result result;
	if (_mShaders[target.shader]->SetCoord(&result, target.parameter, value))
		return true;
	return _Fail(result, path, "cannot bind the coordinate to \"" + value + "\"");
}

// A local value goes to the primitive's reference effect of every effect whose graph holds the shader.
bool SceneRunner::_SetLocal(const SceneLocal& local)
{
	IParameter* parameter = _FindParameter(local.target, local.path, IParameter::kParameterClass_Value);
	SceneValue converted;
	if (parameter == nullptr || !_ConvertValue(parameter, local.value, local.path, converted))
		return false;
	IShader* shader = _mShaders[local.target.shader];
	const IQLPrimitive* primitive = _mPrimitives.at(local.primitive).get();
	bool bFound = false;
	bool bGood = true;
	for (const Effect& effect : _vEffects)
		for (IReferenceEffect* reference : effect.references)
		{
			if (reference == nullptr || reference->GetQLPrimitive() != primitive)
				continue;
			ILocalParameter* parameterLocal =
			    reference->AcquireParameterLocal(shader, local.target.parameter);
			bFound = bFound || parameterLocal != nullptr;
			bGood = (parameterLocal == nullptr || ApplySceneValue(*parameterLocal, converted)) && bGood;
		}
	if (!bFound)
		_errors.Report(local.path, "no effect of primitive \"" + local.primitive + "\" uses shader \"" +
		                               local.target.shader + "\"");
	else if (!bGood)
		_errors.Report(local.path, "the local parameter refused the value");
	return bFound && bGood;
}

// The compile listener runs after the program linked; its attached shaders are this compile's texts.
bool SceneRunner::_OnCompile(IEffect* effect)
{
	const Effect* entry = nullptr;
	for (const Effect& candidate : _vEffects)
		if (candidate.pEffect == effect)
			entry = &candidate;
	ReferenceProgram* program = ReferenceProgram::From(effect->GetQLProgram());
	if (entry == nullptr || program == nullptr)
		return true;
	// The root compiler names its shader after the graph with "_root"; the vertex stage has a type of its
	// own.
	std::vector<const IQLShader*> ordered[3];
	for (const IQLShader* shader : program->GetAttachedShaders())
		ordered[shader->GetType() == 1 ? 2 : EndsWith(shader->GetName(), "_root") ? 1 : 0].push_back(shader);
	Texts& texts = _mTexts[entry->id];
	std::string* slots[3] = {&texts.graph, &texts.root, &texts.vertex};
	for (int i = 0; i < 3; ++i)
		for (const IQLShader* shader : ordered[i])
		{
			_printer.Compile(program->GetHandle(), entry->id, shader->GetName());
			*slots[i] = shader->GetString();
		}
	return true;
}

bool SceneRunner::Emit(const std::string& dir)
{
	std::error_code error;
	std::filesystem::create_directories(dir, error);
	bool bGood = true;
	for (const Effect& effect : _vEffects)
	{
		auto texts = _mTexts.find(effect.id);
		if (texts == _mTexts.end())
			continue;
		const std::string base = (std::filesystem::path(dir) / effect.id).string();
		const std::string extension = GetProgramExtension(effect.kind);
		const std::pair<std::string, const std::string*> files[] = {
		    {base + ".graph." + extension, &texts->second.graph},
		    {base + ".root." + extension, &texts->second.root},
		    {base + ".vertex.qlvert", &texts->second.vertex}};
		for (const auto& file : files)
			if (!file.second->empty() && !WriteText(file.first, *file.second))
			{
				_errors.Report("", "cannot write \"" + file.first + "\"");
				bGood = false;
			}
	}
	return bGood;
}

} // namespace Tarsel::Fx
