#include "EventPrinter.h"
#include "SceneLoader.h"
#include "SceneValue.h"

#include "core/Console.h"
#include "quillon/QLRecord.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

namespace Tarsel::Fx
{
namespace
{
using Effects::TypeSpecifier;
using nlohmann::json;

// Loads a scene and gives back the error lines, one per string.
std::vector<std::string> LoadErrors(const std::string& text, Scene& scene)
{
	RecordingConsole console;
	SceneErrors errors("scene.json", &console);
	const bool bLoaded = LoadScene(text, scene, errors);
	EXPECT_EQ(bLoaded, console.GetErrors().empty());
	EXPECT_EQ(errors.GetCount(), int(console.GetErrors().size()));
	return console.GetErrors();
}

TEST(SceneLoader, ReadsEverySectionInIdOrder)
{
	Scene scene;
	const auto errors = LoadErrors(R"({
	  "libraries": ["Surfaces.tsl", "Lights.tsl"],
	  "outputs": { "o_normal": 1 },
	  "shaders": {
	    "wood": { "class": "Matte", "values": { "diffuseBounces": 1.0, "ambient": [0.1, 0.1, 0.1] },
	              "connect": { "albedo": "checker", "lights": ["key", null, "fill"] }, "coords": { "uv": "uv0" } },
	    "checker": { "class": "CheckerTexture" }, "key": { "class": "PointLight" }, "fill": { "class": "PointLight" }
	  },
	  "effects": { "floor": { "kind": "surface", "root": "wood", "primitives": ["floor1", "floor0"] },
	               "cam": { "kind": "renderer", "root": "key" } },
	  "frames": [
	    {},
	    { "values": { "wood.diffuseBounces": 0.0 } },
	    { "local": { "floor1": { "wood.ambient": [0.5, 0.5, 0.5] } } },
	    { "connect": { "wood.lights": ["key"] }, "outputs": { "o_color": 2, "o_normal": null } }
	  ]
	})",
	                               scene);
	ASSERT_TRUE(errors.empty()) << errors.front();
	EXPECT_EQ(scene.libraries, (std::vector<std::string>{"Surfaces.tsl", "Lights.tsl"}));
	std::vector<std::string> ids;
	for (const auto& shader : scene.shaders)
		ids.push_back(shader.first);
	EXPECT_EQ(ids, (std::vector<std::string>{"checker", "fill", "key", "wood"}));
	const SceneShader& wood = scene.shaders["wood"];
	EXPECT_EQ(wood.className, "Matte");
	EXPECT_EQ(wood.values.begin()->first, "ambient");
	EXPECT_TRUE(wood.connect.at("lights")[1].is_null());
	EXPECT_EQ(wood.coords.at("uv"), "uv0");
	// Effects in id order; primitives keep the order of their list.
	EXPECT_EQ(scene.effects.begin()->first, "cam");
	EXPECT_EQ(scene.effects.begin()->second.kind, EffectKind::kRenderer);
	EXPECT_EQ(scene.effects["floor"].primitives, (std::vector<std::string>{"floor1", "floor0"}));

	ASSERT_EQ(scene.frames.size(), 4u);
	EXPECT_EQ(scene.frames[1].values.at(0).target.shader, "wood");
	EXPECT_EQ(scene.frames[1].values.at(0).target.parameter, "diffuseBounces");
	EXPECT_EQ(scene.frames[1].values.at(0).path, "frames[1].values.wood.diffuseBounces");
	EXPECT_EQ(scene.frames[2].local.at(0).primitive, "floor1");
	EXPECT_EQ(scene.frames[2].local.at(0).path, "frames[2].local.floor1.wood.ambient");
	ASSERT_EQ(scene.frames[3].outputs.size(), 2u);
	EXPECT_TRUE(scene.frames[3].outputs[1].index.is_null());
}

TEST(SceneLoader, NoFramesMeansOneFrameWithoutChanges)
{
	Scene scene;
	EXPECT_TRUE(LoadErrors(R"({"shaders": {}})", scene).empty());
	ASSERT_EQ(scene.frames.size(), 1u);
	EXPECT_TRUE(scene.frames[0].values.empty());

	Scene none;
	EXPECT_TRUE(LoadErrors(R"({"frames": []})", none).empty());
	EXPECT_TRUE(none.frames.empty());
}

TEST(SceneLoader, NamesEveryProblemWithItsPath)
{
	const struct
	{
		const char* text;
		const char* error;
	} cases[] = {
	    {"[1]", "scene.json: expected an object, found a list"},
	    {"{\"shader\": {}}", "scene.json: shader: unknown key"},
	    {"{\"libraries\": \"a.tsl\"}", "libraries: expected a list of file names, found \"a.tsl\""},
	    {"{\"libraries\": [\"a.tsl\", 2]}", "libraries[1]: expected a string, found 2"},
	    {"{\"outputs\": {\"o_n\": 1.5}}", "outputs.o_n: expected an attachment index or null, found 1.5"},
	    {"{\"outputs\": {\"o_n\": -1}}", "outputs.o_n: expected an attachment index or null, found -1"},
	    {"{\"shaders\": {\"a\": {}}}", "shaders.a: missing \"class\""},
	    {"{\"shaders\": {\"a\": {\"class\": 3}}}", "shaders.a.class: expected a string, found 3"},
	    {"{\"shaders\": {\"a\": {\"class\": \"X\", \"colour\": 1}}}", "shaders.a.colour: unknown key"},
	    {"{\"shaders\": {\"a\": {\"class\": \"X\", \"values\": []}}}",
	     "shaders.a.values: expected an object"},
	    {"{\"shaders\": {\"a\": {\"class\": \"X\", \"connect\": {\"l\": [\"a\", null, \"c\"]}}}}",
	     "shaders.a.connect.l[2]: unknown shader \"c\""},
	    {"{\"shaders\": {\"a\": {\"class\": \"X\", \"connect\": {\"l\": 4}}}}",
	     "shaders.a.connect.l: expected a shader id, found 4"},
	    {"{\"shaders\": {\"a\": {\"class\": \"X\", \"coords\": {\"uv\": 0}}}}",
	     "shaders.a.coords.uv: expected a string, found 0"},
	    {"{\"effects\": {\"e\": {\"kind\": \"volume\", \"root\": \"a\"}}, \"shaders\": {\"a\": {\"class\": "
	     "\"X\"}}}",
	     "effects.e.kind: expected \"surface\", \"prefix\" or \"renderer\", found \"volume\""},
	    {"{\"effects\": {\"e\": {\"kind\": \"surface\"}}}", "effects.e: missing \"root\""},
	    {"{\"effects\": {\"e\": {\"kind\": \"surface\", \"root\": \"b\"}}}",
	     "effects.e.root: unknown shader \"b\""},
	    {"{\"effects\": {\"e\": {\"kind\": \"prefix\", \"root\": \"a\", \"primitives\": [\"p\", \"p\"]}},"
	     " \"shaders\": {\"a\": {\"class\": \"X\"}}}",
	     "effects.e.primitives[1]: primitive \"p\" is listed twice"},
	    {"{\"frames\": {}}", "frames: expected a list of frames, found an object"},
	    {"{\"frames\": [{}, {\"value\": {}}]}", "frames[1].value: unknown key"},
	    {"{\"frames\": [{\"values\": {\"ambient\": 1}}]}",
	     "frames[0].values.ambient: expected \"shader.parameter\""},
	    {"{\"frames\": [{\"values\": {\"b.ambient\": 1}}]}",
	     "frames[0].values.b.ambient: unknown shader \"b\""},
	    {"{\"frames\": [{\"coords\": {\"a.uv\": 1}}], \"shaders\": {\"a\": {\"class\": \"X\"}}}",
	     "frames[0].coords.a.uv: expected a vertex attribute name, found 1"},
	    {"{\"frames\": [{\"local\": {\"floor9\": {}}}]}",
	     "frames[0].local.floor9: unknown primitive \"floor9\""},
	    {"{\"a\": 1,}", "scene.json: not valid JSON: "},
	    {"{\"frames\": [1e400]}", "scene.json: not valid JSON: "},
	};
	for (const auto& c : cases)
	{
		Scene scene;
		const auto errors = LoadErrors(c.text, scene);
		ASSERT_EQ(errors.size(), 1u) << c.text;
		EXPECT_NE(errors[0].find(c.error), std::string::npos) << errors[0];
	}
}

TEST(SceneLoader, ReportsEveryProblemNotJustTheFirst)
{
	Scene scene;
	const auto errors = LoadErrors(R"({"shaders": {"a": {"class": 1}, "b": {}},
	                                   "effects": {"e": {"kind": "surface", "root": "c"}}})",
	                               scene);
	EXPECT_EQ(errors.size(), 3u);
}

TEST(SceneLoader, AMissingFileIsOneError)
{
	RecordingConsole console;
	SceneErrors errors("missing.json", &console);
	Scene scene;
	EXPECT_FALSE(LoadSceneFile("/nonexistent/missing.json", scene, errors));
	EXPECT_EQ(console.ErrorText(), "missing.json: cannot read the scene file\n");
}

// Records which typed form a value arrived through.
class TypedSink : public Effects::ITypedValues
{
public:
	using ITypedValues::Set;
	bool Set(float value) override { return _Record("float", &value, sizeof value, 1); }
	bool Set(const int* values, int count) override
	{
		return _Record("int[]", values, sizeof(int) * count, count);
	}
	bool Set(const bool* values, int count) override { return _Record("bool[]", values, count, count); }
	bool Set(const Vector3f& value) override { return _Record("vec3", &value, sizeof value, 1); }
	bool Set(const Vector3f* values, int count) override
	{
		return _Record("vec3[]", values, sizeof(Vector3f) * count, count);
	}
	bool Set(const Matrix33f& value) override { return _Record("mat3", &value, sizeof value, 1); }

	std::string form;
	int count = 0;
	std::vector<unsigned char> bytes;

private:
	bool _Record(const char* name, const void* data, size_t size, int n)
	{
		form = name;
		count = n;
		bytes.assign(static_cast<const unsigned char*>(data), static_cast<const unsigned char*>(data) + size);
		return true;
	}
};

struct Converted
{
	std::vector<std::string> errors;
	SceneValue value;
};

Converted Convert(const char* text, TypeSpecifier type, bool bArray = false, int length = 1,
                  bool bResizable = false)
{
	RecordingConsole console;
	SceneErrors errors("s.json", &console);
	Converted converted;
	SceneValueShape shape;
	shape.type = type;
	shape.bArray = bArray;
	shape.length = length;
	shape.bResizable = bResizable;
	const bool bGood = ConvertSceneValue(json::parse(text), shape, "p", errors, converted.value);
	EXPECT_EQ(bGood, console.GetErrors().empty()) << text;
	converted.errors = console.GetErrors();
	return converted;
}

TEST(SceneValue, SaysWhatShapeTheParameterNeeds)
{
	using namespace Effects;
	const struct
	{
		const char* text;
		TypeSpecifier type;
		bool bArray;
		int length;
		const char* error;
	} cases[] = {
	    {"[0.1, 0.1]", kType_Vec3, false, 1, "s.json: p: expected 3 numbers\n"},
	    {"\"red\"", kType_Float, false, 1, "s.json: p: expected a number\n"},
	    {"1.5", kType_Int, false, 1, "s.json: p: expected an integer\n"},
	    {"3000000000", kType_Int, false, 1, "s.json: p: expected an integer\n"},
	    {"1e300", kType_Float, false, 1, "s.json: p: expected a number\n"},
	    {"1", kType_Bool, false, 1, "s.json: p: expected true or false\n"},
	    {"[1, 2]", kType_IVec2, false, 1, ""},
	    {"[1, 2.5]", kType_IVec2, false, 1, "s.json: p: expected 2 integers\n"},
	    {"[1, 2, 3, 4]", kType_Mat3, false, 1, "s.json: p: expected 9 numbers\n"},
	    {"0.5", kType_Float, true, 4, "s.json: p: expected a list of elements (a number each)\n"},
	    {"[1, 2, 3, 4, 5]", kType_Float, true, 4, "s.json: p: expected 1 to 4 elements, found 5\n"},
	    {"[]", kType_Float, true, 4, "s.json: p: expected 1 to 4 elements, found 0\n"},
	    {"[[1, 2, 3], [1, 2]]", kType_Vec3, true, 2, "s.json: p[1]: expected 3 numbers\n"},
	    {"1", kType_Sampler2D, false, 1,
	     "s.json: p: a parameter of type sampler2D cannot be set from a scene\n"},
	};
	for (const auto& c : cases)
	{
		const Converted converted = Convert(c.text, c.type, c.bArray, c.length);
		std::string all;
		for (const std::string& error : converted.errors)
			all += error;
		EXPECT_EQ(all, c.error) << c.text;
	}
	// A resizable array takes any length, none included.
	EXPECT_TRUE(Convert("[1, 2, 3, 4, 5]", kType_Float, true, 2, true).errors.empty());
	EXPECT_EQ(Convert("[]", kType_Float, true, 2, true).value.count, 0);
}

TEST(SceneValue, ReachesTheTypedFormOfTheParameter)
{
	using namespace Effects;
	TypedSink sink;
	ASSERT_TRUE(ApplySceneValue(sink, Convert("2", kType_Float).value)); // an integer is a number too
	EXPECT_EQ(sink.form, "float");
	float f;
	std::memcpy(&f, sink.bytes.data(), sizeof f);
	EXPECT_EQ(f, 2.0f);

	ASSERT_TRUE(ApplySceneValue(sink, Convert("[[1, 2, 3], [4, 5, 6]]", kType_Vec3, true, 2).value));
	EXPECT_EQ(sink.form, "vec3[]");
	EXPECT_EQ(sink.count, 2);
	std::vector<float> floats(6);
	std::memcpy(floats.data(), sink.bytes.data(), sink.bytes.size());
	EXPECT_EQ(floats, (std::vector<float>{1, 2, 3, 4, 5, 6}));

	// Matrices are given row by row, which is how they are stored.
	ASSERT_TRUE(ApplySceneValue(sink, Convert("[1, 2, 3, 4, 5, 6, 7, 8, 9]", kType_Mat3).value));
	EXPECT_EQ(sink.form, "mat3");
	Matrix33f matrix;
	std::memcpy(static_cast<void*>(&matrix), sink.bytes.data(), sizeof matrix);
	EXPECT_EQ(matrix.m[1 * 3 + 0], 4.0f);

	ASSERT_TRUE(ApplySceneValue(sink, Convert("[true, false, true]", kType_Bool, true, 3).value));
	EXPECT_EQ(sink.form, "bool[]");
	EXPECT_EQ(sink.bytes, (std::vector<unsigned char>{1, 0, 1}));

	ASSERT_TRUE(ApplySceneValue(sink, Convert("[7]", kType_Int, true, 1).value));
	EXPECT_EQ(sink.form, "int[]");

	// A form the target does not support answers false.
	EXPECT_FALSE(ApplySceneValue(sink, Convert("[1, 2, 3, 4]", kType_Vec4).value));
}

QLWrite MakeWrite(unsigned program, QLSetter setter, const std::vector<float>& floats, int count)
{
	QLWrite write;
	write.program = program;
	write.setter = setter;
	write.count = count;
	write.uniform = "ambient_k3_k9";
	write.bytes.resize(floats.size() * 4);
	if (!floats.empty())
		std::memcpy(write.bytes.data(), floats.data(), write.bytes.size());
	return write;
}

TEST(EventPrinter, PrintsOneParsableLinePerEvent)
{
	std::ostringstream out;
	EventPrinter printer(out);
	printer.SetFrame(2);
	printer.Compile(1, "floor", "floor_k5_1");
	printer.Write(1, "floor0", MakeWrite(1, kQLSetter_Vector3fArray, {0.5f, 0.25f, 1e-7f}, 1));
	QLWrite index;
	index.program = 1;
	index.setter = kQLSetter_Int;
	index.count = 1;
	index.uniform = "__outputAttachmentIndex_o_color";
	const int value = -15;
	index.bytes.resize(4);
	std::memcpy(index.bytes.data(), &value, 4);
	printer.Write(2, "floor1", index);
	QLWrite block = MakeWrite(1, kQLSetter_UniformBlock, {}, 1);
	block.uniform.clear();
	block.name = "lights";
	printer.Write(2, "floor1", block);
	printer.Summary(1, 0);
	EXPECT_EQ(out.str(), "compile 2 floor floor_k5_1\n"
	                     "write 2 floor0 ambient_k3_k9 Vector3f[] 1 0.5 0.25 1e-07\n"
	                     "write 2 floor1 __outputAttachmentIndex_o_color int 1 -15\n"
	                     "write 2 floor1 lights block 1\n"
	                     "summary: 1 effects, 1 compiles, 3 writes, 0 errors\n");
}

TEST(EventPrinter, GroupsAFrameByProgramPrimitiveAndUniformWhateverTheOrderOfArrival)
{
	std::ostringstream out;
	EventPrinter printer(out);
	printer.SetFrame(1);
	printer.Write(2, "b", MakeWrite(7, kQLSetter_Float, {1}, 1));
	printer.Write(1, "a", MakeWrite(7, kQLSetter_Float, {2}, 1));
	printer.Compile(3, "view", "view_k1_1");
	printer.Write(3, "s", MakeWrite(3, kQLSetter_Float, {3}, 1));
	printer.Write(2, "b", MakeWrite(7, kQLSetter_Float, {4}, 1));
	QLWrite other = MakeWrite(7, kQLSetter_Float, {6}, 1);
	other.uniform = "aa_k1";
	printer.Write(1, "a", other);
	printer.Write(1, "a", MakeWrite(7, kQLSetter_Float, {5}, 1));
	printer.SetFrame(2);
	EXPECT_EQ(out.str(), "write 1 a aa_k1 float 1 6\n"
	                     "write 1 a ambient_k3_k9 float 1 2\n"
	                     "write 1 a ambient_k3_k9 float 1 5\n"
	                     "write 1 b ambient_k3_k9 float 1 1\n"
	                     "write 1 b ambient_k3_k9 float 1 4\n"
	                     "compile 1 view view_k1_1\n"
	                     "write 1 s ambient_k3_k9 float 1 3\n");
}

} // namespace
} // namespace Tarsel::Fx
