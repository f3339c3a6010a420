#include "quillon/Interpreter.h"

#include "QlslRunBuiltins.h"

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
