#include "Scene.h"

#include "core/Console.h"

namespace Tarsel::Fx
{

const char* GetKindName(EffectKind kind)
{
	switch (kind)
	{
	case EffectKind::kSurface:
		return "surface";
	case EffectKind::kPrefix:
		return "prefix";
	case EffectKind::kRenderer:
		return "renderer";
	}
	return "?";
}

void SceneErrors::Report(const std::string& path, const std::string& message)
{
	++_nErrors;
	_pConsole->Error("%s: %s%s\n", _sFile.c_str(), path.empty() ? "" : (path + ": ").c_str(),
	                 message.c_str());
}

std::string JoinPath(const std::string& path, const std::string& key)
{
	return path.empty() ? key : path + "." + key;
}

std::string JoinPath(const std::string& path, size_t index)
{
	return path + "[" + std::to_string(index) + "]";
}

} // namespace Tarsel::Fx
