#pragma once

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace Tarsel
{
class IMgrConsole;
}

namespace Tarsel::Fx
{

// Object members of a scene are kept in std::map, so that everything the scene makes is made in byte-wise
// id order on every run.
template <class T>
using SceneMap = std::map<std::string, T>;

enum class EffectKind
{
	kSurface,
	kPrefix,
	kRenderer,
};

// "shader.parameter" as it appears in frames, split at the last full stop (parameter names have none).
struct SceneTarget
{
	std::string shader;
	std::string parameter;
};

struct SceneShader
{
	std::string className;
	SceneMap<nlohmann::json> values;
	// A shader id, or for arrays a list of ids and nulls.
	SceneMap<nlohmann::json> connect;
	SceneMap<std::string> coords;
	// Made by the light-shader manager: one wrapper per light, one shared shader per light class.
	bool light = false;
};

struct SceneEffect
{
	EffectKind kind = EffectKind::kSurface;
	std::string root;
	std::vector<std::string> primitives;
};

// One change of a frame, with the JSON path that error messages name.
struct SceneChange
{
	std::string path;
	SceneTarget target;
	nlohmann::json value;
};

struct SceneLocal
{
	std::string path;
	std::string primitive;
	SceneTarget target;
	nlohmann::json value;
};

// An attachment index; null clears the index.
struct SceneOutput
{
	std::string path;
	std::string name;
	nlohmann::json index;
};

struct SceneFrame
{
	std::vector<SceneChange> values;
	std::vector<SceneChange> connect;
	std::vector<SceneChange> coords;
	std::vector<SceneLocal> local;
	std::vector<SceneOutput> outputs;
};

struct Scene
{
	std::vector<std::string> libraries;
	std::vector<SceneOutput> outputs;
	SceneMap<SceneShader> shaders;
	SceneMap<SceneEffect> effects;
	std::vector<SceneFrame> frames;
};

const char* GetKindName(EffectKind kind);

// The JSON path of a member or an element, as messages name it: "shaders.wood", "frames[1]".
std::string JoinPath(const std::string& path, const std::string& key);
std::string JoinPath(const std::string& path, size_t index);

// Reports what is wrong with a scene as "FILE: PATH: message" lines on the console's error output and
// counts them.
class SceneErrors
{
public:
	SceneErrors(const std::string& file, IMgrConsole* console) : _sFile(file), _pConsole(console) {}

	// An empty path leaves the path out.
	void Report(const std::string& path, const std::string& message);
	int GetCount() const { return _nErrors; }
	const std::string& GetFile() const { return _sFile; }

private:
	std::string _sFile;
	IMgrConsole* _pConsole;
	int _nErrors = 0;
};

} // namespace Tarsel::Fx
