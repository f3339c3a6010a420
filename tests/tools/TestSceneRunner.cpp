#include "Commands.h"

#include "core/Console.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include <string>
#include <unistd.h>
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
		_dir =
		    std::filesystem::temp_directory_path() / ("tarsel-fx-scene-" + std::to_string(::getpid()) + "-" +
		                                              std::to_string(reinterpret_cast<uintptr_t>(this)));
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

const std::string kSurfaceScene = std::string("{") + kLibraries + R"(,
  "shaders": {
    "wood": { "class": "Matte", "values": { "ambient": [0.1, 0.2, 0.3] },
              "connect": { "lights": ["key", "fill"] }, "coords": { "uv": "uv0" } },
    "key": { "class": "PointLight" }, "fill": { "class": "PointLight" },
    "camera": { "class": "PinholeRenderer" } },
  "effects": { "floor": { "kind": "surface", "root": "wood", "primitives": ["floor0", "floor1"] },
               "view": { "kind": "renderer", "root": "camera", "primitives": ["screen"] } },
  "frames": [
    {},
    { "values": { "key.intensity": 3.0, "camera.fieldOfView": 0.5 } },
    { "local": { "floor1": { "wood.ambient": [0.5, 0.5, 0.5] } } },
    {},
    { "connect": { "wood.lights": ["key"] } },
    { "outputs": { "o_color": 3 } }
  ] })";

// The uniforms written to a primitive in a frame, one entry per write.
std::vector<std::string> Uniforms(const std::vector<std::string>& writes)
{
	std::vector<std::string> uniforms;
	for (const std::string& write : writes)
	{
		std::istringstream in(write);
		std::string word, frame, primitive, uniform;
		in >> word >> frame >> primitive >> uniform;
		uniforms.push_back(uniform);
	}
	return uniforms;
}

TEST_F(SceneRun, FramesCompileApplyAndReplayPerPrimitive)
{
	ASSERT_EQ(Compile(kSurfaceScene), 0) << _console.ErrorText();
	// The first frame compiles each program once, the surface with its vertex stage, in the fixed order.
	const auto compiles = Events("^compile 1 ");
	ASSERT_EQ(compiles.size(), 5u) << _out.str();
	EXPECT_TRUE(std::regex_match(compiles[0], std::regex("compile 1 floor floor_k[0-9a-f]+_1")));
	EXPECT_TRUE(std::regex_match(compiles[1], std::regex("compile 1 floor floor_k[0-9a-f]+_root")));
	EXPECT_TRUE(std::regex_match(compiles[3], std::regex("compile 1 view view_k[0-9a-f]+_1")));

	// Every uniform reaches every primitive once.
	const auto first0 = Uniforms(Events("^write 1 floor0 "));
	const auto first1 = Uniforms(Events("^write 1 floor1 "));
	EXPECT_FALSE(first0.empty());
	EXPECT_EQ(first0, first1);
	EXPECT_EQ(std::set<std::string>(first0.begin(), first0.end()).size(), first0.size());
	EXPECT_FALSE(Events("^write 1 screen ").empty());

	// A value change is replayed as one write on each primitive of its effect, nothing compiles.
	EXPECT_TRUE(Events("^compile 2 ").empty());
	const auto second = Events("^write 2 ");
	ASSERT_EQ(second.size(), 3u) << _out.str();
	EXPECT_TRUE(std::regex_match(second[0], std::regex("write 2 floor0 intensity_k[0-9a-f_k]+ float 1 3")));
	EXPECT_TRUE(std::regex_match(second[1], std::regex("write 2 floor1 intensity_k[0-9a-f_k]+ float 1 3")));
	EXPECT_TRUE(std::regex_match(second[2], std::regex("write 2 screen fieldOfView_k[0-9a-f_k]+ .* 0\\.5")));

	// A local value reaches its own primitive only, under the shared uniform's name; then all is quiet.
	const auto local = Events("^write 3 ");
	ASSERT_EQ(local.size(), 1u) << _out.str();
	EXPECT_TRUE(std::regex_match(
	    local[0], std::regex("write 3 floor1 ambient_k[0-9a-f_k]+ Vector3f\\[\\] 1 0.5 0.5 0.5")));
	EXPECT_TRUE(Events("^(write|compile) 4 ").empty());

	// A change of structure compiles the surface again under new names and applies everything again.
	const auto recompiles = Events("^compile 5 ");
	ASSERT_EQ(recompiles.size(), 3u) << _out.str();
	EXPECT_TRUE(std::regex_match(recompiles[0], std::regex("compile 5 floor floor_k[0-9a-f]+_2")));
	EXPECT_FALSE(Events("^write 5 floor0 ").empty());
	EXPECT_TRUE(Events("^write 5 screen ").empty());

	// A new attachment index reaches the index uniform on every primitive of a program that has it.
	const std::vector<std::string> indices = {"write 6 floor0 __outputAttachmentIndex_o_color int 1 3",
	                                          "write 6 floor1 __outputAttachmentIndex_o_color int 1 3"};
	EXPECT_EQ(Events("^write 6 .*o_color"), indices);
	EXPECT_TRUE(
	    std::regex_match(Summary(), std::regex("summary: 2 effects, 8 compiles, [0-9]+ writes, 0 errors")));
}

TEST_F(SceneRun, RunsAreRepeatableAndApplyAllRedrawsEverything)
{
	ASSERT_EQ(Compile(kSurfaceScene), 0) << _console.ErrorText();
	const std::string once = _out.str();
	ASSERT_EQ(Compile(kSurfaceScene), 0);
	EXPECT_EQ(_out.str(), once);

	ASSERT_EQ(Compile(kSurfaceScene, {"--apply-all"}), 0) << _console.ErrorText();
	// A frame without changes still writes every uniform of every primitive, once.
	const auto redrawn = Uniforms(Events("^write 4 floor0 "));
	const auto first = Uniforms(Events("^write 1 floor0 "));
	EXPECT_EQ(redrawn.size(), first.size() / 2); // the first frame applied after the update and again
	EXPECT_EQ(std::set<std::string>(redrawn.begin(), redrawn.end()),
	          std::set<std::string>(first.begin(), first.end()));
}

TEST_F(SceneRun, EmitWritesTheLastTextsOfEachEffect)
{
	const std::string emit = (_dir / "out").string();
	ASSERT_EQ(Compile(kSurfaceScene, {"--emit", emit}), 0) << _console.ErrorText();
	std::set<std::string> files;
	for (const auto& entry : std::filesystem::directory_iterator(emit))
		files.insert(entry.path().filename().string());
	EXPECT_EQ(files, (std::set<std::string>{"floor.graph.qlray", "floor.root.qlray", "floor.vertex.qlvert",
	                                        "view.graph.qlframe", "view.root.qlframe"}));
	// The last compile had one light left.
	std::ifstream graph(emit + "/floor.graph.qlray");
	const std::string text((std::istreambuf_iterator<char>(graph)), std::istreambuf_iterator<char>());
	EXPECT_NE(text.find("PointLight"), std::string::npos);
}

TEST_F(SceneRun, FrameErrorsAreReportedAndLaterFramesStillRun)
{
	EXPECT_EQ(Compile(std::string("{") + kLibraries + R"(,
	  "shaders": { "camera": { "class": "PinholeRenderer" } },
	  "effects": { "view": { "kind": "renderer", "root": "camera", "primitives": ["screen"] } },
	  "frames": [ {}, { "values": { "camera.eye": 1.0, "camera.zoom": 2 } },
	              { "values": { "camera.fieldOfView": 0.5 } }, { "outputs": { "o_normal": null } } ] })"),
	          1);
	const std::vector<std::string> expected = {
	    "scene.json: frames[1].values.camera.eye: expected 3 numbers\n",
	    "scene.json: frames[1].values.camera.zoom: class \"PinholeRenderer\" has no value named \"zoom\"\n",
	    "scene.json: frames[3].outputs.o_normal: output \"o_normal\" has no attachment index to clear\n"};
	EXPECT_EQ(Errors(), expected);
	EXPECT_EQ(Events("^write 3 ").size(), 1u) << _out.str();
	EXPECT_TRUE(
	    std::regex_match(Summary(), std::regex("summary: 1 effects, 2 compiles, [0-9]+ writes, 3 errors")));
}

} // namespace
} // namespace Tarsel::Fx
