#pragma once

#include "core/Vector.h"
#include "quillon/QLTypes.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

// Runs linked reference programs so that tests can check what a generated program computes, not only
// that it compiles. It is a test instrument: exact GLSL semantics, fixed answers where GLSL leaves a
// result undefined, a step budget instead of hangs.
namespace Tarsel
{

class IQLProgram;
class ReferencePrimitive;

// An image a sampler may read. Texel (x, y, z) is texels[(z * height + y) * width + x]; a cube map has
// depth 6 with the faces +x, -x, +y, -y, +z, -z.
struct QLImage
{
	int width = 0;
	int height = 0;
	int depth = 1;
	bool bilinear = false; // otherwise nearest
	bool cube = false;
	std::vector<Vector4f> texels;
};

// Components of a value in declaration order (matrices column by column, arrays element by element).
typedef std::vector<double> QLComponents;

// The built-in inputs of one invocation. Varyings of a ray program and attributes of a vertex program
// are given by name.
struct QLRunInputs
{
	Vector3f rayOrigin;
	Vector3f rayDirection = Vector3f(0, 0, 1);
	int rayDepth = 0;
	int rayClass = 0;
	Vector3f rayContribution = Vector3f(1, 1, 1);
	float hitDistance = 0.0f;
	Vector2i pixelCoord;
	Vector2i frameSize = Vector2i(1, 1);
	int frameIndex = 0;
	float time = 0.0f;
	Matrix44f transform; // row by row, as the host writes matrices
	Matrix44f transformInverseTranspose;
	std::map<std::string, QLComponents> variables;
};

struct QLEmittedRay
{
	int rayClass = 0;
	Vector3f origin;
	Vector3f direction;
	Vector3f contribution = Vector3f(1, 1, 1);
};

struct QLShadowQuery
{
	Vector3f origin;
	Vector3f direction;
	float maxDistance = 0.0f;
	float answer = 1.0f;
};

// What one invocation did.
struct QLRunResults
{
	bool ok = false;
	std::string error;                           // why the run stopped, empty when ok
	std::map<int, Vector4f> accumulated;         // summed per attachment index; a float adds to x only
	std::vector<QLEmittedRay> rays;              // in emission order
	std::vector<int> outputRayCount;             // final values of ql_OutputRayCount
	std::vector<QLShadowQuery> shadows;          // every traceShadow call with its answer
	uint64_t steps = 0;                          // statements and expressions evaluated
	Vector4f position;                           // ql_Position of a vertex program
	std::map<std::string, QLComponents> outputs; // varyings written by a vertex program
};

// Answers traceShadow: 1 when unoccluded, 0 when blocked.
typedef std::function<float(const Vector3f& origin, const Vector3f& direction, float maxDistance)>
    QLShadowFunction;

namespace QlslRun
{
struct Machine;
}

class Interpreter
{
public:
	Interpreter();
	~Interpreter();

	// Samplers whose uniform holds this texture read the image; anything else samples as 0.
	void RegisterImage(const QLtexture* texture, const QLImage& image);
	// random() restarts its sequence from the seed; the default seed is 0.
	void SetSeed(uint64_t seed);
	// Null restores the default, which answers every query as unoccluded.
	void SetShadowFunction(QLShadowFunction shadow);
	// Evaluations allowed per run before it stops with an error; the default is 10 million.
	void SetStepBudget(uint64_t steps);

	// Runs one invocation of a stage (IQLShader::kType_*) of a linked reference program: setup() when the
	// stage defines it, then main(). Uniforms and uniform blocks hold the latest values the primitive
	// recorded for the program (zero without a primitive); inputs.variables then override globals by name.
	// False, with results.error, when the program is not linked, lacks the stage or main, names an
	// unknown variable, or the run fails (step budget, index out of range).
	bool Run(IQLProgram* program, int stage, const ReferencePrimitive* primitive, const QLRunInputs& inputs,
	         QLRunResults& results);

	// Internal state shared with the evaluator.
	QlslRun::Machine& GetMachine() { return *_pMachine; }

private:
	std::unique_ptr<QlslRun::Machine> _pMachine;
};

} // namespace Tarsel
