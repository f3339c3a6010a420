#include "SceneLoader.h"

#include <fstream>
#include <initializer_list>
#include <limits>
#include <ostream>
#include <set>
#include <sstream>

namespace Tarsel::Fx
{
using nlohmann::json;

namespace
{

class Loader
{
public:
	Loader(Scene& scene, SceneErrors& errors) : _scene(scene), _errors(errors) {}

	void Load(const json& root)
	{
		if (!_Expect(root, root.is_object(), "", "an object") ||
		    !_OnlyKeys(root, "", {"libraries", "outputs", "shaders", "effects", "frames"}))
			return;
		_ReadLibraries(root);
		_ReadOutputs(_Member(root, "outputs"), "outputs", _scene.outputs);
		// Shaders first: everything else may name them.
		_ReadShaders(root);
		_ReadEffects(root);
		_ReadFrames(root);
	}

private:
	static const json& _Member(const json& object, const char* key)
	{
		static const json kNull;
		auto it = object.find(key);
		return it == object.end() ? kNull : *it;
	}

	bool _Expect(const json& value, bool bGood, const std::string& path, const char* what)
	{
		if (!bGood)
			_errors.Report(path, std::string("expected ") + what + ", found " + _Describe(value));
		return bGood;
	}

	static std::string _Describe(const json& value)
	{
		if (value.is_string())
			return "\"" + value.get<std::string>() + "\"";
		if (value.is_number() || value.is_boolean() || value.is_null())
			return value.dump();
		return value.is_array() ? "a list" : "an object";
	}

	// A missing member is an empty object.
	bool _ExpectObject(const json& value, const std::string& path)
	{
		return value.is_null() || _Expect(value, value.is_object(), path, "an object");
	}

	bool _OnlyKeys(const json& object, const std::string& path, std::initializer_list<const char*> keys)
	{
		bool bGood = true;
		for (auto it = object.begin(); it != object.end(); ++it)
		{
			bool bKnown = false;
			for (const char* key : keys)
				bKnown = bKnown || it.key() == key;
			if (!bKnown)
				_errors.Report(JoinPath(path, it.key()), "unknown key");
			bGood = bGood && bKnown;
		}
		return bGood;
	}

	bool _ReadString(const json& value, const std::string& path, std::string& out)
	{
		if (!_Expect(value, value.is_string(), path, "a string"))
			return false;
		out = value.get<std::string>();
		return true;
	}

	void _ReadLibraries(const json& root)
	{
		const json& libraries = _Member(root, "libraries");
		if (libraries.is_null() ||
		    !_Expect(libraries, libraries.is_array(), "libraries", "a list of file names"))
			return;
		for (size_t i = 0; i < libraries.size(); ++i)
		{
			std::string name;
			if (_ReadString(libraries[i], JoinPath("libraries", i), name))
				_scene.libraries.push_back(name);
		}
	}

	void _ReadOutputs(const json& outputs, const std::string& path, std::vector<SceneOutput>& out)
	{
		if (!_ExpectObject(outputs, path))
			return;
		for (auto it = outputs.begin(); it != outputs.end(); ++it)
		{
			const std::string itemPath = JoinPath(path, it.key());
			const bool bIndex = it->is_number_integer() && *it >= 0 && *it <= std::numeric_limits<int>::max();
			if (_Expect(*it, it->is_null() || bIndex, itemPath, "an attachment index or null"))
				out.push_back({itemPath, it.key(), *it});
		}
	}

	void _ReadShaders(const json& root)
	{
		const json& shaders = _Member(root, "shaders");
		if (!_ExpectObject(shaders, "shaders"))
			return;
		// Ids are entered before any is read, so that connections may name shaders declared after them.
		for (auto it = shaders.begin(); it != shaders.end(); ++it)
			_scene.shaders[it.key()];
		for (auto it = shaders.begin(); it != shaders.end(); ++it)
			_ReadShader(*it, JoinPath("shaders", it.key()), _scene.shaders[it.key()]);
	}

	void _ReadShader(const json& value, const std::string& path, SceneShader& shader)
	{
		if (!_Expect(value, value.is_object(), path, "an object") ||
		    !_OnlyKeys(value, path, {"class", "values", "connect", "coords", "light"}))
			return;
		if (!value.contains("class"))
			_errors.Report(path, "missing \"class\"");
		else
			_ReadString(value["class"], JoinPath(path, "class"), shader.className);
		const json& light = _Member(value, "light");
		if (_Expect(light, light.is_null() || light.is_boolean(), JoinPath(path, "light"), "true or false"))
			shader.light = light.is_boolean() && light.get<bool>();
		const json& values = _Member(value, "values");
		if (_ExpectObject(values, JoinPath(path, "values")))
			for (auto it = values.begin(); it != values.end(); ++it)
				shader.values[it.key()] = *it;
		const json& connect = _Member(value, "connect");
		if (_ExpectObject(connect, JoinPath(path, "connect")))
			for (auto it = connect.begin(); it != connect.end(); ++it)
				if (_CheckConnection(*it, JoinPath(JoinPath(path, "connect"), it.key())))
					shader.connect[it.key()] = *it;
		const json& coords = _Member(value, "coords");
		if (_ExpectObject(coords, JoinPath(path, "coords")))
			for (auto it = coords.begin(); it != coords.end(); ++it)
				_ReadString(*it, JoinPath(JoinPath(path, "coords"), it.key()), shader.coords[it.key()]);
	}

	bool _CheckShaderId(const json& value, const std::string& path)
	{
		if (!_Expect(value, value.is_string(), path, "a shader id"))
			return false;
		if (_scene.shaders.count(value.get<std::string>()))
			return true;
		_errors.Report(path, "unknown shader \"" + value.get<std::string>() + "\"");
		return false;
	}

	// A shader id, or a list of ids where null leaves a slot empty.
	bool _CheckConnection(const json& value, const std::string& path)
	{
		if (!value.is_array())
			return _CheckShaderId(value, path);
		bool bGood = true;
		for (size_t i = 0; i < value.size(); ++i)
			bGood = (value[i].is_null() || _CheckShaderId(value[i], JoinPath(path, i))) && bGood;
		return bGood;
	}

	void _ReadEffects(const json& root)
	{
		const json& effects = _Member(root, "effects");
		if (!_ExpectObject(effects, "effects"))
			return;
		for (auto it = effects.begin(); it != effects.end(); ++it)
		{
			SceneEffect effect;
			if (_ReadEffect(*it, JoinPath("effects", it.key()), effect))
				_scene.effects[it.key()] = effect;
		}
	}

	bool _ReadEffect(const json& value, const std::string& path, SceneEffect& effect)
	{
		if (!_Expect(value, value.is_object(), path, "an object") ||
		    !_OnlyKeys(value, path, {"kind", "root", "primitives"}))
			return false;
		bool bGood = _ReadKind(value, path, effect.kind);
		if (!value.contains("root"))
		{
			_errors.Report(path, "missing \"root\"");
			bGood = false;
		}
		else if (_CheckShaderId(value["root"], JoinPath(path, "root")))
			effect.root = value["root"].get<std::string>();
		else
			bGood = false;
		return _ReadPrimitives(_Member(value, "primitives"), JoinPath(path, "primitives"),
		                       effect.primitives) &&
		       bGood;
	}

	bool _ReadKind(const json& value, const std::string& path, EffectKind& kind)
	{
		if (!value.contains("kind"))
		{
			_errors.Report(path, "missing \"kind\"");
			return false;
		}
		for (EffectKind candidate : {EffectKind::kSurface, EffectKind::kPrefix, EffectKind::kRenderer})
			if (value["kind"] == GetKindName(candidate))
			{
				kind = candidate;
				return true;
			}
		return _Expect(value["kind"], false, JoinPath(path, "kind"),
		               "\"surface\", \"prefix\" or \"renderer\"");
	}

	bool _ReadPrimitives(const json& value, const std::string& path, std::vector<std::string>& primitives)
	{
		if (value.is_null())
			return true;
		if (!_Expect(value, value.is_array(), path, "a list of primitive names"))
			return false;
		bool bGood = true;
		std::set<std::string> seen;
		for (size_t i = 0; i < value.size(); ++i)
		{
			std::string name;
			if (!_ReadString(value[i], JoinPath(path, i), name))
				bGood = false;
			else if (!seen.insert(name).second)
			{
				_errors.Report(JoinPath(path, i), "primitive \"" + name + "\" is listed twice");
				bGood = false;
			}
			else
				primitives.push_back(name);
		}
		return bGood;
	}

	void _ReadFrames(const json& root)
	{
		const json& frames = _Member(root, "frames");
		if (frames.is_null())
		{
			_scene.frames.resize(1);
			return;
		}
		if (!_Expect(frames, frames.is_array(), "frames", "a list of frames"))
			return;
		for (size_t i = 0; i < frames.size(); ++i)
		{
			_scene.frames.emplace_back();
			_ReadFrame(frames[i], JoinPath("frames", i), _scene.frames.back());
		}
	}

	void _ReadFrame(const json& value, const std::string& path, SceneFrame& frame)
	{
		if (!_Expect(value, value.is_object(), path, "an object") ||
		    !_OnlyKeys(value, path, {"values", "connect", "coords", "local", "outputs"}))
			return;
		_ReadChanges(_Member(value, "values"), JoinPath(path, "values"), frame.values, nullptr);
		_ReadChanges(_Member(value, "connect"), JoinPath(path, "connect"), frame.connect,
		             &Loader::_CheckConnection);
		_ReadChanges(_Member(value, "coords"), JoinPath(path, "coords"), frame.coords, &Loader::_CheckCoord);
		_ReadLocals(_Member(value, "local"), JoinPath(path, "local"), frame.local);
		_ReadOutputs(_Member(value, "outputs"), JoinPath(path, "outputs"), frame.outputs);
	}

	bool _CheckCoord(const json& value, const std::string& path)
	{
		return _Expect(value, value.is_string(), path, "a vertex attribute name");
	}

	bool _ReadTarget(const std::string& key, const std::string& path, SceneTarget& target)
	{
		const size_t dot = key.rfind('.');
		if (dot == std::string::npos || dot == 0 || dot + 1 == key.size())
		{
			_errors.Report(path, "expected \"shader.parameter\"");
			return false;
		}
		target = {key.substr(0, dot), key.substr(dot + 1)};
		if (_scene.shaders.count(target.shader))
			return true;
		_errors.Report(path, "unknown shader \"" + target.shader + "\"");
		return false;
	}

	typedef bool (Loader::*Check)(const json&, const std::string&);

	void _ReadChanges(const json& changes, const std::string& path, std::vector<SceneChange>& out,
	                  Check check)
	{
		if (!_ExpectObject(changes, path))
			return;
		for (auto it = changes.begin(); it != changes.end(); ++it)
		{
			SceneChange change{JoinPath(path, it.key()), {}, *it};
			if (_ReadTarget(it.key(), change.path, change.target) &&
			    (!check || (this->*check)(*it, change.path)))
				out.push_back(change);
		}
	}

	void _ReadLocals(const json& locals, const std::string& path, std::vector<SceneLocal>& out)
	{
		if (!_ExpectObject(locals, path))
			return;
		for (auto it = locals.begin(); it != locals.end(); ++it)
		{
			const std::string primitivePath = JoinPath(path, it.key());
			if (!_IsPrimitive(it.key()))
			{
				_errors.Report(primitivePath, "unknown primitive \"" + it.key() + "\"");
				continue;
			}
			std::vector<SceneChange> changes;
			_ReadChanges(*it, primitivePath, changes, nullptr);
			for (SceneChange& change : changes)
				out.push_back({change.path, it.key(), change.target, change.value});
		}
	}

	bool _IsPrimitive(const std::string& name) const
	{
		for (const auto& effect : _scene.effects)
			for (const std::string& primitive : effect.second.primitives)
				if (primitive == name)
					return true;
		return false;
	}

	Scene& _scene;
	SceneErrors& _errors;
};

} // namespace

bool LoadScene(const std::string& text, Scene& scene, SceneErrors& errors)
{
	const int before = errors.GetCount();
	json root;
	// Numbers too large for a double are refused as out of range, not as a parse error: catch both.
	try
	{
		root = json::parse(text);
	}
	catch (const json::exception& error)
	{
		errors.Report("", std::string("not valid JSON: ") + error.what());
		return false;
	}
	Loader(scene, errors).Load(root);
	return errors.GetCount() == before;
}

bool LoadSceneFile(const std::string& path, Scene& scene, SceneErrors& errors)
{
	std::ifstream file(path, std::ios::binary);
	std::ostringstream text;
	if (!file)
	{
		errors.Report("", "cannot read the scene file");
		return false;
	}
	text << file.rdbuf();
	return LoadScene(text.str(), scene, errors);
}

} // namespace Tarsel::Fx
