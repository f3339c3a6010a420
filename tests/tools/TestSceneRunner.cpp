#include "Commands.h"

#include "core/Console.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace Tarsel::Fx
{
namespace
{

const char* const kLibraries =
    R"("libraries": ["Interfaces.tsl", "Sampling.tsl", "Textures.tsl", "Lights.tsl", "Surfaces.tsl", "Renderers.tsl"])";

// Runs tarsel-fx compile on a scene text in a folder of its own and keeps what it printed.
class SceneRun : public ::testing::Test
{
protected:
	void SetUp() override
	{
		_dir = std::filesystem::temp_directory_path() /
		       ("tarsel-fx-scene-" + std::to_string(reinterpret_cast<uintptr_t>(this)));
		std::filesystem::create_directories(_dir);
	}
	void TearDown() override { std::filesystem::remove_all(_dir); }

	int Compile(const std::string& scene, std::vector<std::string> options = {})
	{
		const std::string path = (_dir / "scene.json").string();
		std::ofstream(path) << scene;
		Arguments args;
		args.command = Command::kCompile;
		args.includeDirs = {TARSEL_SHADERS_DIR};
		args.files = {path};
		for (size_t i = 0; i < options.size(); ++i)
			if (options[i] == "--apply-all")
				args.bApplyAll = true;
			else if (options[i] == "--emit")
				args.emitDir = options[++i];
		_out.str("");
		_console.Clear();
		return Fx::Run(args, &_console, _out);
	}

	// The scene's error lines, without the folder of the scene file.
	std::vector<std::string> Errors() const
	{
		std::vector<std::string> errors;
		for (const std::string& line : _console.GetErrors())
			if (line.find("scene.json: ") != std::string::npos)
				errors.push_back(line.substr(line.find("scene.json: ")));
		return errors;
	}

	// The event lines that match a pattern.
	std::vector<std::string> Events(const std::string& pattern) const
	{
		std::vector<std::string> lines;
		std::istringstream in(_out.str());
		const std::regex regex(pattern);
		for (std::string line; std::getline(in, line);)
			if (std::regex_search(line, regex))
				lines.push_back(line);
		return lines;
	}

	std::string Summary() const
	{
		const auto lines = Events("^summary: ");
		return lines.empty() ? std::string() : lines.back();
	}

	RecordingConsole _console;
	std::ostringstream _out;
	std::filesystem::path _dir;
};

TEST_F(SceneRun, ConnectionsAndCoordinatesAreCheckedAgainstTheClass)
{
	EXPECT_EQ(Compile(std::string("{") + kLibraries + R"(,
	  "shaders": {
	    "wood": { "class": "Matte", "values": { "albedo": 1.0 },
	              "connect": { "albedo": "key", "ambient": "key", "lights": ["key", null, "tex"] },
	              "coords": { "uvw": "uv0" } },
	    "tex": { "class": "ConstantTexture" },
	    "key": { "class": "PointLight" } },
	  "effects": { "floor": { "kind": "surface", "root": "wood", "primitives": ["p"] } } })"),
	          1);
	const std::vector<std::string> expected = {
	    "scene.json: shaders.wood.values.albedo: \"albedo\" of class \"Matte\" is an interface input, not a "
	    "value\n",
	    "scene.json: shaders.wood.connect.albedo: Input type mismatch. Expected \"Texture\" but got "
	    "\"Light::PointLight\"\n",
	    "scene.json: shaders.wood.connect.ambient: \"ambient\" of class \"Matte\" is a value, not an "
	    "interface "
	    "input\n",
	    "scene.json: shaders.wood.connect.lights: Interface mismatch. Expected \"Light\" but got "
	    "\"Texture::ConstantTexture\"\n",
	    "scene.json: shaders.wood.coords.uvw: class \"Matte\" has no coordinate named \"uvw\"\n"};
	EXPECT_EQ(Errors(), expected);
	// A scene that could not be set up runs no frame.
	EXPECT_TRUE(Events("^(compile|write) ").empty()) << _out.str();
	EXPECT_EQ(Summary(), "summary: 1 effects, 0 compiles, 0 writes, 5 errors");
}

} // namespace
} // namespace Tarsel::Fx
