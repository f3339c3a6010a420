// Compiles one to three QLSL texts on the reference device, links those that compile, and writes a value
// to every uniform of a linked program through a strict primitive.
#include "FuzzSupport.h"

#include "quillon/Reference.h"

using namespace Tarsel;

namespace
{

const std::map<std::string, int> kStages = {{"ray", IQLShader::kType_Ray},
                                            {"vertex", IQLShader::kType_Vertex},
                                            {"frame", IQLShader::kType_Frame},
                                            {"prefix", IQLShader::kType_PrefixRay}};

// A zero of the uniform's type through the setter that type takes; the primitive refuses anything else.
bool WriteZero(ReferencePrimitive& primitive, const QLVariable& uniform)
{
	const int count = uniform.arraySize > 0 ? uniform.arraySize : 1;
	const std::vector<float> floats(size_t(count) * 16, 0.0f);
	const std::vector<int> ints(size_t(count) * 4, 0);
	const std::string& type = uniform.type;
	if (type == "int" || type == "bool")
		return primitive.SetUniformArray(uniform.name, uniform.location, count, ints.data());
	if (type == "float")
		return primitive.SetUniformArray(uniform.name, uniform.location, count, floats.data());
	if (type == "vec3")
		return primitive.SetUniformArray(uniform.name, uniform.location, count,
		                                 reinterpret_cast<const Vector3f*>(floats.data()));
	if (type == "vec4")
		return primitive.SetUniformArray(uniform.name, uniform.location, count,
		                                 reinterpret_cast<const Vector4f*>(floats.data()));
	if (type == "mat4")
		return primitive.SetUniformArray(uniform.name, uniform.location, count,
		                                 reinterpret_cast<const Matrix44f*>(floats.data()));
	return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
	static Fuzz::Environment environment;
	const std::string input(reinterpret_cast<const char*>(data), size);
	Fuzz::Texts texts = Fuzz::SplitTexts(input, "ray");
	if (texts.size() > 3)
		texts.resize(3);

	ReferenceContext context;
	IQLProgram* pProgram = context.CreateProgram();
	bool allCompiled = true;
	for (const auto& text : texts)
	{
		auto stage = kStages.find(text.first);
		IQLShader* pShader =
		    context.CreateShader(stage == kStages.end() ? IQLShader::kType_Ray : stage->second);
		std::vector<std::string> errors;
		const bool compiled = pShader->SetString(text.second, errors);
		TARSEL_FUZZ_CHECK(compiled == errors.empty(), compiled ? errors.front() : "no message");
		allCompiled = allCompiled && compiled;
		pProgram->AttachShader(pShader);
	}
	std::vector<std::string> errors;
	const bool linked = pProgram->Link(errors);
	TARSEL_FUZZ_CHECK(linked == errors.empty(), linked ? errors.front() : "no message");
	TARSEL_FUZZ_CHECK(allCompiled || !linked, "a program with a failed shader linked");
	if (linked)
	{
		ReferenceProgram* pReference = ReferenceProgram::From(pProgram);
		ReferencePrimitive primitive;
		qlUseProgram(pProgram);
		for (const QLVariable& uniform : pReference->GetUniforms())
		{
			TARSEL_FUZZ_CHECK(pProgram->GetUniformLocation(uniform.name.c_str()) == uniform.location,
			                  uniform.name);
			TARSEL_FUZZ_CHECK(WriteZero(primitive, uniform), uniform.name + " " + uniform.type);
		}
		qlUseProgram(static_cast<IQLProgram*>(nullptr));
	}
	// The context's destructor releases the program and the shaders, as for a host that forgot them.
	return 0;
}
