#include "quillon/Interpreter.h"

#include "QlslBuiltins.h"
#include "QlslRunEvaluator.h"
#include "QlslUnit.h"
#include "quillon/Reference.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace Tarsel
{

namespace QlslRun
{

int Machine::TextureIndex(const QLtexture* texture) const
{
	for (size_t i = 0; i < images.size(); ++i)
		if (images[i].first == texture)
			return int(i);
	return -1;
}

const QLImage* Machine::Image(int index) const
{
	return index >= 0 && size_t(index) < images.size() ? &images[size_t(index)].second : nullptr;
}

// splitmix64: tiny, fast and fully determined by the seed.
float Machine::NextRandom()
{
	uint64_t z = (random += 0x9e3779b97f4a7c15ull);
	z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
	z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
	z ^= z >> 31;
	return float(z >> 40) * (1.0f / 16777216.0f);
}

} // namespace QlslRun

Interpreter::Interpreter() : _pMachine(new QlslRun::Machine()) {}

Interpreter::~Interpreter() {}

void Interpreter::RegisterImage(const QLtexture* texture, const QLImage& image)
{
	int index = _pMachine->TextureIndex(texture);
	if (index >= 0)
		_pMachine->images[size_t(index)].second = image;
	else
		_pMachine->images.emplace_back(texture, image);
}

void Interpreter::SetSeed(uint64_t seed)
{
	_pMachine->seed = seed;
	_pMachine->random = seed;
}

void Interpreter::SetShadowFunction(QLShadowFunction shadow)
{
	_pMachine->shadow = std::move(shadow);
}

void Interpreter::SetStepBudget(uint64_t steps)
{
	_pMachine->budget = steps;
}

} // namespace Tarsel

namespace Tarsel
{
namespace
{

using QlslRun::Base;
using QlslRun::Evaluator;
using QlslRun::Slot;

const char* const kStageNames[] = {"ray", "vertex", "frame", "prefix ray"};

bool IsVertexOutput(QLStorage storage)
{
	return storage == kQLStorage_Varying || storage == kQLStorage_TransformedVarying ||
	       storage == kQLStorage_TransformedInvariantVarying;
}

// Sets up the globals of one stage: uniforms and blocks from the primitive, built-ins from the inputs,
// then the caller's overrides.
class Binder
{
public:
	Binder(Evaluator& evaluator, QlslRun::Machine& machine, int stage)
	    : _rEvaluator(evaluator), _rMachine(machine), _iStage(stage)
	{
	}

	void Declare(const Qlsl::Symbol& symbol, ReferenceProgram& program, const ReferencePrimitive* primitive)
	{
		_mTypes.emplace(std::string(symbol.name), symbol.type);
		if (_rEvaluator.FindGlobal(symbol.name))
			return;
		const QLWrite* write = primitive ? _Written(symbol, program, *primitive) : nullptr;
		const ReferenceBuffer* buffer = write ? dynamic_cast<const ReferenceBuffer*>(write->buffer) : nullptr;
		if (buffer)
		{
			int size = _rEvaluator.Size(symbol.type);
			int slots = int(buffer->GetSize() / sizeof(Slot));
			Slot* storage = _rEvaluator.Global(symbol.name, symbol.type, slots > size ? slots - size : 0);
			std::memcpy(storage, buffer->GetBytes(), size_t(slots) * sizeof(Slot));
			return;
		}
		Slot* storage = _rEvaluator.Global(symbol.name, symbol.type);
		int size = _rEvaluator.Size(symbol.type);
		if (symbol.type.IsSampler())
			for (int k = 0; k < size; ++k)
				storage[k].i = -1; // no texture
		if (write)
			_Fill(storage, size, *write);
		_Normalize(symbol.type, storage);
	}

	void Builtins(const QLRunInputs& in)
	{
		_Put("ql_RayOrigin", &in.rayOrigin.x, 3);
		_Put("ql_RayDirection", &in.rayDirection.x, 3);
		_Put("ql_RayContribution", &in.rayContribution.x, 3);
		_Put("ql_HitDistance", &in.hitDistance, 1);
		_Put("ql_Time", &in.time, 1);
		_Put("ql_RayDepth", &in.rayDepth, 1);
		_Put("ql_RayClass", &in.rayClass, 1);
		_Put("ql_FrameIndex", &in.frameIndex, 1);
		_Put("ql_PixelCoord", &in.pixelCoord.x, 2);
		_Put("ql_FrameSize", &in.frameSize.x, 2);
		const Matrix44f transposed[] = {in.transform.Transpose(), in.transformInverseTranspose.Transpose()};
		_Put("ql_PrimitiveTransformMatrix", transposed[0].m, 16);
		_Put("ql_PrimitiveTransformMatrixInverseTranspose", transposed[1].m, 16);
		_Put("ql_OutputRayCount", static_cast<const int*>(nullptr), 0);
		_Put("ql_Position", static_cast<const float*>(nullptr), 0);
	}

	// False with a message for a name the stage does not have.
	bool Override(const std::string& name, const QLComponents& components, std::string& error)
	{
		auto type = _mTypes.find(name);
		Slot* storage = _rEvaluator.FindGlobal(name);
		if (type == _mTypes.end() || !storage)
		{
			error = "no global named '" + name + "' in the " + kStageNames[_iStage] + " stage";
			return false;
		}
		std::vector<Base> bases;
		_rEvaluator.Bases(type->second, bases);
		for (size_t k = 0; k < bases.size() && k < components.size(); ++k)
		{
			double value = components[k];
			if (bases[k] == QlslRun::kFloat)
				storage[k].f = float(value);
			else
				storage[k].i = bases[k] == QlslRun::kBool ? value != 0.0 : int32_t(int64_t(value));
		}
		return true;
	}

	// The components of a global, empty when the stage has none of that name.
	QLComponents Read(const std::string& name)
	{
		QLComponents components;
		auto type = _mTypes.find(name);
		Slot* storage = _rEvaluator.FindGlobal(name);
		if (type == _mTypes.end() || !storage)
			return components;
		std::vector<Base> bases;
		_rEvaluator.Bases(type->second, bases);
		for (size_t k = 0; k < bases.size(); ++k)
			components.push_back(bases[k] == QlslRun::kFloat ? double(storage[k].f) : double(storage[k].i));
		return components;
	}

private:
	// The latest write of the name for the program, or one made while no program was current.
	static const QLWrite* _Written(const Qlsl::Symbol& symbol, ReferenceProgram& program,
	                               const ReferencePrimitive& primitive)
	{
		std::string name(symbol.name);
		int location = -1;
		if (symbol.kind == Qlsl::kSymbol_Block)
			location = program.GetUniformBlockLocation(name.c_str());
		else if (symbol.storage == kQLStorage_Uniform || symbol.storage == kQLStorage_MutableUniform)
			location = program.GetUniformLocation(name.c_str());
		if (location < 0)
			return nullptr;
		// Uniforms and blocks are numbered apart, so one location may carry both kinds of write.
		const std::vector<QLWrite>& writes = primitive.GetWrites();
		for (auto write = writes.rbegin(); write != writes.rend(); ++write)
			if (write->location == location && write->name == name &&
			    (write->program == program.GetHandle() || write->program == 0) &&
			    (write->setter == kQLSetter_UniformBlock) == (symbol.kind == Qlsl::kSymbol_Block))
				return &*write;
		return nullptr;
	}

	template <class T>
	void _Put(const char* name, const T* values, int count)
	{
		const Qlsl::BuiltinVariable* builtin = Qlsl::FindBuiltinVariable(name, Qlsl::StageBit(_iStage));
		if (!builtin)
			return;
		Qlsl::Type type = Qlsl::BasicTypeNamed(builtin->type);
		type.array = builtin->arraySize;
		_mTypes.emplace(name, type);
		Slot* storage = _rEvaluator.Global(name, type);
		for (int k = 0; k < count; ++k)
		{
			if (std::is_same<T, float>::value)
				storage[k].f = float(values[k]);
			else
				storage[k].i = int32_t(values[k]);
		}
	}

	// Matrices arrive row by row from the host and are kept column by column; textures become indexes.
	void _Fill(Slot* storage, int size, const QLWrite& write)
	{
		size_t bytes = std::min(write.bytes.size(), size_t(size) * sizeof(Slot));
		if (write.setter == kQLSetter_TextureArray)
		{
			std::vector<QLtexture*> textures = write.Values<QLtexture*>();
			for (size_t i = 0; i < textures.size() && int(i) < size; ++i)
				storage[i].i = _rMachine.TextureIndex(textures[i]);
			return;
		}
		std::memcpy(storage, write.bytes.data(), bytes);
		int n =
		    write.setter == kQLSetter_Matrix33fArray ? 3 : (write.setter == kQLSetter_Matrix44fArray ? 4 : 0);
		for (int m = 0; n && (m + 1) * n * n <= size; ++m)
			for (int r = 0; r < n; ++r)
				for (int c = 0; c < r; ++c)
					std::swap(storage[m * n * n + r * n + c], storage[m * n * n + c * n + r]);
	}

	void _Normalize(const Qlsl::Type& type, Slot* storage)
	{
		std::vector<Base> bases;
		_rEvaluator.Bases(type, bases);
		for (size_t k = 0; k < bases.size(); ++k)
			if (bases[k] == QlslRun::kBool)
				storage[k].i = storage[k].i != 0;
	}

	Evaluator& _rEvaluator;
	QlslRun::Machine& _rMachine;
	int _iStage;
	std::map<std::string, Qlsl::Type> _mTypes;
};

bool Fail(QLRunResults& results, const std::string& error)
{
	results.ok = false;
	results.error = error;
	return false;
}

} // namespace

bool Interpreter::Run(IQLProgram* program, int stage, const ReferencePrimitive* primitive,
                      const QLRunInputs& inputs, QLRunResults& results)
{
	results = QLRunResults();
	ReferenceProgram* reference = ReferenceProgram::From(program);
	if (!reference || !reference->IsLinked())
		return Fail(results, "the program is not a linked reference program");
	if (stage < 0 || stage >= IQLShader::kType_Count)
		return Fail(results, "no stage " + std::to_string(stage));
	std::vector<const Qlsl::Tree*> trees;
	for (const std::shared_ptr<const QLUnit>& unit : reference->GetLinkedUnits())
		if (unit->type == stage)
			trees.push_back(&unit->tree);
	if (trees.empty())
		return Fail(results, std::string("the program has no ") + kStageNames[stage] + " stage");

	QlslRun::Machine& machine = *_pMachine;
	machine.results = &results;
	struct Detach
	{
		QlslRun::Machine& machine;
		~Detach() { machine.results = nullptr; }
	} detach{machine};

	Evaluator evaluator(machine, trees);
	Binder binder(evaluator, machine, stage);
	binder.Builtins(inputs);
	for (const Qlsl::Tree* tree : trees)
		for (const Qlsl::Symbol* symbol : tree->globals)
			binder.Declare(*symbol, *reference, primitive);
	try
	{
		evaluator.InitializeGlobals();
		for (const auto& variable : inputs.variables)
			if (!binder.Override(variable.first, variable.second, results.error))
				return Fail(results, results.error);
		evaluator.CallEntry("setup");
		if (!evaluator.CallEntry("main"))
			return Fail(results, std::string("the ") + kStageNames[stage] + " stage has no main()");
	}
	catch (const QlslRun::RunError& error)
	{
		results.steps = evaluator.Steps();
		return Fail(results, "line " + std::to_string(error.line) + ": " + error.message);
	}
	results.steps = evaluator.Steps();
	for (double count : binder.Read("ql_OutputRayCount"))
		results.outputRayCount.push_back(int(count));
	QLComponents position = binder.Read("ql_Position");
	if (position.size() == 4)
		results.position =
		    Vector4f(float(position[0]), float(position[1]), float(position[2]), float(position[3]));
	for (const Qlsl::Tree* tree : trees)
		for (const Qlsl::Symbol* symbol : tree->globals)
			if (stage == IQLShader::kType_Vertex && IsVertexOutput(symbol->storage))
				results.outputs[std::string(symbol->name)] = binder.Read(std::string(symbol->name));
	results.ok = true;
	return true;
}

} // namespace Tarsel
