#pragma once

#include "Scene.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{
class IEffect;
class IMgrEffects;
class IMgrLightShaders;
class IParameter;
class IReferenceEffect;
class IShader;
} // namespace Tarsel::Effects

namespace Tarsel::Fx
{

class EventPrinter;
class RecordingPrimitive;
struct SceneValue;

struct SceneOptions
{
	// After each update every reference effect applies itself in full, as a renderer that redraws all.
	bool bApplyAll = false;
};

// Drives a manager through a loaded scene the way a host would: libraries, shaders, effects with one
// reference effect per primitive, then every frame's changes followed by one Update. Events go to the
// printer and problems to the errors, each with the JSON path it concerns.
class SceneRunner
{
public:
	SceneRunner(Effects::IMgrEffects& mgr, SceneErrors& errors, EventPrinter& printer);
	// Shuts the manager down: its reference effects point at this runner's primitives.
	~SceneRunner();
	SceneRunner(const SceneRunner&) = delete;
	SceneRunner& operator=(const SceneRunner&) = delete;

	// Sets the scene up and runs its frames; nothing runs when the setup failed. False when anything failed.
	bool Run(const Scene& scene, const SceneOptions& options);
	// Writes the texts of each effect's last compile into dir, named EFFECT.graph.EXT, EFFECT.root.EXT and
	// EFFECT.vertex.qlvert.
	bool Emit(const std::string& dir);

	int GetCountEffects() const { return static_cast<int>(_vEffects.size()); }

private:
	struct Effect
	{
		std::string id;
		EffectKind kind;
		Effects::IEffect* pEffect;
		std::vector<Effects::IReferenceEffect*> references;
	};
	// The API shader texts of an effect's last compile.
	struct Texts
	{
		std::string graph, root, vertex;
	};

	bool _Setup(const Scene& scene);
	bool _LoadLibraries(const std::vector<std::string>& libraries);
	bool _SetOutputs(const std::vector<SceneOutput>& outputs);
	bool _StartLights(const SceneMap<SceneShader>& shaders);
	bool _CreateShaders(const SceneMap<SceneShader>& shaders);
	void _DestroyShaders();
	bool _InitShader(const std::string& id, const SceneShader& shader);
	bool _CreateEffects(const SceneMap<SceneEffect>& effects);
	Effects::IEffect* _CreateEffect(EffectKind kind);
	void _DestroyEffect(const Effect& effect);
	RecordingPrimitive* _GetPrimitive(const std::string& name);

	bool _RunFrame(const SceneFrame& frame, const std::string& path, const SceneOptions& options);
	bool _ApplyAll(const std::string& path);
	bool _CheckDevice(const std::string& path);

	// The parameter of a shader that may take a value; null (and reported) otherwise.
	Effects::IParameter* _FindParameter(const SceneTarget& target, const std::string& path,
	                                    int parameterClass);
	bool _ConvertValue(Effects::IParameter* parameter, const nlohmann::json& value, const std::string& path,
	                   SceneValue& out);
	bool _SetValue(const SceneTarget& target, const nlohmann::json& value, const std::string& path);
	bool _Connect(const SceneTarget& target, const nlohmann::json& value, const std::string& path);
	bool _SetCoord(const SceneTarget& target, const std::string& value, const std::string& path);
	bool _SetLocal(const SceneLocal& local);
	bool _SetOutput(const SceneOutput& output);
	// Reports every message of a failed call at path, or fallback when it left none.
	bool _Fail(const Result& result, const std::string& path, const std::string& fallback);

	bool _OnCompile(Effects::IEffect* effect);

	Effects::IMgrEffects& _mgr;
	SceneErrors& _errors;
	EventPrinter& _printer;
	SceneMap<Effects::IShader*> _mShaders;
	// Ids of the shaders the light manager made; it destroys them.
	std::set<std::string> _setLights;
	// Started only for scenes with lights: it needs the light library loaded.
	Effects::IMgrLightShaders* _pLights = nullptr;
	std::vector<Effect> _vEffects;
	SceneMap<std::unique_ptr<RecordingPrimitive>> _mPrimitives;
	// Violations of each primitive already reported.
	std::map<const RecordingPrimitive*, size_t> _mViolationsSeen;
	SceneMap<Texts> _mTexts;
};

} // namespace Tarsel::Fx
