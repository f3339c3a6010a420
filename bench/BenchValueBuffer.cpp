#include "values/ValueBuffer.h"

#include "quillon/Reference.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{
const int kCount = 1000000;

std::vector<Vector3f> MakeValues()
{
	std::vector<Vector3f> vValues(kCount);
	for (int i = 0; i < kCount; ++i)
		vValues[size_t(i)] = Vector3f(float(i), float(i) + 0.5f, -float(i));
	return vValues;
}

void ReportMaps(benchmark::State& state, const ValueBuffer<Vector3f>& buffer, int nMapsBefore)
{
	const int nMaps = static_cast<const ReferenceBuffer*>(buffer.GetBuffer())->GetCountMaps() - nMapsBefore;
	state.counters["maps_per_iteration"] = double(nMaps) / double(state.iterations());
	state.SetBytesProcessed(int64_t(state.iterations()) * kCount * int64_t(sizeof(Vector3f)));
}
} // namespace

static void BM_ValueBufferSetArray(benchmark::State& state)
{
	ReferenceContext context;
	ValueBuffer<Vector3f> buffer(&context, kCount, false, Vector3f());
	const std::vector<Vector3f> vValues = MakeValues();
	const int nMapsBefore = static_cast<const ReferenceBuffer*>(buffer.GetBuffer())->GetCountMaps();
	for (auto _ : state)
	{
		benchmark::DoNotOptimize(buffer.SetArray(vValues.data(), kCount));
		benchmark::ClobberMemory();
	}
	ReportMaps(state, buffer, nMapsBefore);
}
BENCHMARK(BM_ValueBufferSetArray)->Unit(benchmark::kMillisecond);

static void BM_ValueBufferSetEachElement(benchmark::State& state)
{
	ReferenceContext context;
	ValueBuffer<Vector3f> buffer(&context, kCount, false, Vector3f());
	const std::vector<Vector3f> vValues = MakeValues();
	const int nMapsBefore = static_cast<const ReferenceBuffer*>(buffer.GetBuffer())->GetCountMaps();
	for (auto _ : state)
	{
		for (int i = 0; i < kCount; ++i)
			benchmark::DoNotOptimize(buffer.Set(vValues[size_t(i)], i));
		benchmark::ClobberMemory();
	}
	ReportMaps(state, buffer, nMapsBefore);
}
BENCHMARK(BM_ValueBufferSetEachElement)->Unit(benchmark::kMillisecond);

// The floor: the same bytes copied into the device buffer's memory with no container in between.
static void BM_MemcpySameBytes(benchmark::State& state)
{
	ReferenceContext context;
	ValueBuffer<Vector3f> buffer(&context, kCount, false, Vector3f());
	const std::vector<Vector3f> vValues = MakeValues();
	const int nMapsBefore = static_cast<const ReferenceBuffer*>(buffer.GetBuffer())->GetCountMaps();
	for (auto _ : state)
	{
		QLBufferMapping mapping(buffer.GetBuffer(), QLBufferMapping::kAccess_Write);
		std::memcpy(mapping.GetData(), vValues.data(), vValues.size() * sizeof(Vector3f));
		benchmark::ClobberMemory();
	}
	ReportMaps(state, buffer, nMapsBefore);
}
BENCHMARK(BM_MemcpySameBytes)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
