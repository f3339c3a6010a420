#include "syntax/Syntax.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

using namespace Tarsel::Effects;

namespace
{

// A payload filled with one byte per node: two nodes handed the same memory, or a free list written over a
// live node, break the pattern.
class Checked : public Syntax
{
public:
	virtual bool Intact() const = 0;
};

template <size_t N>
class Probe : public Checked
{
public:
	explicit Probe(uint32_t i) : _c(static_cast<unsigned char>(i * 131u + 7u)) { std::memset(_a, _c, N); }
	bool Intact() const override
	{
		return std::all_of(_a, _a + N, [this](unsigned char c) { return c == _c; });
	}

private:
	unsigned char _c;
	unsigned char _a[N];
};

using Nodes = std::vector<Checked*>;

// Three pooled size classes and one too large for the pool.
void Make(Nodes& v, uint32_t nCount)
{
	for (uint32_t i = 0; i < nCount; ++i)
	{
		const uint32_t iSerial = static_cast<uint32_t>(v.size());
		v.push_back(i % 4 == 0   ? static_cast<Checked*>(new Probe<1>(iSerial))
		            : i % 4 == 1 ? static_cast<Checked*>(new Probe<40>(iSerial))
		            : i % 4 == 2 ? static_cast<Checked*>(new Probe<200>(iSerial))
		                         : static_cast<Checked*>(new Probe<300>(iSerial)));
	}
}

void Destroy(Nodes& v, size_t nKeep = 0)
{
	std::shuffle(v.begin(), v.end(), std::mt19937(static_cast<uint32_t>(v.size())));
	for (size_t i = nKeep; i < v.size(); ++i)
		Syntax::Destroy(v[i]);
	v.resize(nKeep);
}

void ExpectSound(Nodes v)
{
	EXPECT_TRUE(std::all_of(v.begin(), v.end(), [](const Checked* p) { return p->Intact(); }));
	std::sort(v.begin(), v.end());
	EXPECT_TRUE(std::adjacent_find(v.begin(), v.end()) == v.end());
}

TEST(SyntaxAllocation, ReusedBlocksNeverOverlapLiveNodes)
{
	Nodes here;
	for (int round = 0; round < 4; ++round)
	{
		Make(here, 20000);
		Destroy(here, here.size() / 2);
		ExpectSound(here);
	}
	// One thread frees the other's nodes while both keep allocating.
	std::thread other(
	    [&here]
	    {
		    Nodes there;
		    Destroy(here);
		    Make(there, 20000);
		    Destroy(there, 10000);
		    ExpectSound(there);
		    Destroy(there);
	    });
	Nodes more;
	Make(more, 20000);
	other.join();
	Make(more, 20000);
	ExpectSound(more);
	Destroy(more);
}

// After a mass deletion the next nodes must lie together again, not spread over every page used before.
TEST(SyntaxAllocation, NodesMadeAfterDeletionsArePacked)
{
#if defined(__SANITIZE_ADDRESS__) || defined(TARSEL_SYNTAX_NO_POOL)
	GTEST_SKIP() << "nodes come from the global heap in this build";
#endif
	Nodes v;
	Make(v, 200000);
	Destroy(v);
	Make(v, 4000); // 1,000 of each size
	std::vector<uintptr_t> vPages;
	for (size_t i = 0; i < v.size(); ++i)
		if (i % 4 != 3) // the pooled ones
			vPages.push_back(reinterpret_cast<uintptr_t>(v[i]) / (64 * 1024));
	std::sort(vPages.begin(), vPages.end());
	const size_t nPages = std::unique(vPages.begin(), vPages.end()) - vPages.begin();
	// 3,000 blocks of at most 256 bytes fill at most a dozen 64 KB pages; scattered reuse touches thousands.
	EXPECT_LE(nPages, 12u);
	Destroy(v);
}

} // namespace
