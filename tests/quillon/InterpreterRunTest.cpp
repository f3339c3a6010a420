#include "QlslTestSupport.h"
#include "quillon/Interpreter.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Tarsel;

namespace
{

class InterpreterRun : public ::testing::Test
{
protected:
	// Links one ray shader per text and runs it; the test fails when anything does not compile or link.
	QLRunResults Run(const std::vector<std::string>& texts, int stage = IQLShader::kType_Ray)
	{
		for (const std::string& text : texts)
		{
			IQLShader* shader = nullptr;
			std::vector<std::string> errors = QlslTest::Compile(context, stage, text, &shader);
			EXPECT_TRUE(errors.empty()) << errors.front();
			program->AttachShader(shader);
		}
		std::vector<std::string> errors;
		EXPECT_TRUE(program->Link(errors)) << (errors.empty() ? "" : errors.front());
		QLRunResults results;
		interpreter.Run(program, stage, &primitive, inputs, results);
		return results;
	}
	// The rgb accumulated at index 0 by a main that computes it.
	Vector4f Accumulated(const std::string& body, const std::string& globals = "")
	{
		QLRunResults results = Run({globals + "\nvoid main() {\n" + body + "\n}\n"});
		EXPECT_TRUE(results.ok) << results.error;
		return results.accumulated[0];
	}

	ReferenceContext context;
	IQLProgram* program = context.CreateProgram();
	ReferencePrimitive primitive{7};
	Interpreter interpreter;
	QLRunInputs inputs;
};

TEST_F(InterpreterRun, Smoke)
{
	EXPECT_EQ(Vector4f(3, 2, 1, 0), Accumulated("vec3 v = vec3(1.0, 2.0, 3.0); accumulate(0, v.zyx);"));
}

} // namespace
