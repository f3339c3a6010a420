#include "core/Delegate.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Tarsel;

namespace
{
struct Listener
{
	std::vector<std::string>* pLog = nullptr;
	std::string sName;
	bool bAnswer = true;
	bool OnEvent(int value)
	{
		pLog->push_back(sName + std::to_string(value));
		return bAnswer;
	}
	bool OnOther(int) { return true; }
	int Add(int a, int b) const { return a + b; }
};
} // namespace

TEST(Delegate, CallsBoundMemberAndComparesByObjectThenFunction)
{
	std::vector<std::string> log;
	Listener a{&log, "a"}, b{&log, "b"};
	FastDelegate1<int, bool> da = MakeDelegate(&a, &Listener::OnEvent);
	EXPECT_TRUE(da(7));
	EXPECT_EQ(log, std::vector<std::string>{"a7"});

	EXPECT_EQ(da, MakeDelegate(&a, &Listener::OnEvent));
	EXPECT_NE(da, MakeDelegate(&a, &Listener::OnOther));
	EXPECT_NE(da, MakeDelegate(&b, &Listener::OnEvent));
	const FastDelegate1<int, bool> db = MakeDelegate(&b, &Listener::OnEvent);
	EXPECT_NE(da < db, db < da);
	EXPECT_FALSE(da < da);

	FastDelegate2<int, int, int> sum = MakeDelegate(static_cast<const Listener*>(&a), &Listener::Add);
	EXPECT_EQ(sum(2, 3), 5);
	EXPECT_TRUE(FastDelegate0<bool>().empty());
}

namespace
{
struct Padding
{
	virtual ~Padding() = default;
	int iPad = 0;
};
// The listener part sits after another base, so a derived pointer differs from the base pointer.
struct DerivedListener : Padding, Listener
{
};
} // namespace

TEST(Delegate, BindingThroughADerivedPointerEqualsTheBaseBinding)
{
	std::vector<std::string> log;
	DerivedListener derived;
	derived.pLog = &log;
	derived.sName = "d";
	Listener* pBase = &derived;
	ASSERT_NE(static_cast<void*>(pBase), static_cast<void*>(&derived));
	const FastDelegate1<int, bool> viaDerived = MakeDelegate(&derived, &Listener::OnEvent);
	EXPECT_EQ(viaDerived, MakeDelegate(pBase, &Listener::OnEvent));
	EXPECT_TRUE(viaDerived(4));
	EXPECT_EQ(log, std::vector<std::string>{"d4"});
	const DerivedListener& constDerived = derived;
	EXPECT_EQ(MakeDelegate(&constDerived, &Listener::Add)(1, 2), 3);
}

TEST(Delegate, CallingAnEmptyDelegateIsReportedNotFatal)
{
	RecordingAssertHandler handler;
	ScopedAssertHandler scope(&handler);
	const FastDelegate1<int, bool> empty;
	EXPECT_FALSE(empty(1));
	EXPECT_EQ(handler.GetReports().size(), 1u);
}

TEST(Delegate, OrderIsStrictAndWeakAcrossObjectsAndMethods)
{
	Listener a, b;
	const std::vector<FastDelegate1<int, bool>> v{
	    MakeDelegate(&a, &Listener::OnEvent), MakeDelegate(&a, &Listener::OnOther),
	    MakeDelegate(&b, &Listener::OnEvent), MakeDelegate(&b, &Listener::OnOther)};
	for (const auto& x : v)
		for (const auto& y : v)
		{
			EXPECT_EQ(x == y, !(x < y) && !(y < x));
			EXPECT_FALSE(x < y && y < x);
			for (const auto& z : v)
				EXPECT_TRUE(!(x < y && y < z) || x < z);
		}
	// Object first: between different objects the methods must not matter.
	EXPECT_EQ(v[0] < v[3], v[1] < v[2]);
}

TEST(ListenerSet, HoldsABindingOnceAndStopsAtFirstFalse)
{
	std::vector<std::string> log;
	Listener a{&log, "a"}, b{&log, "b", false}, c{&log, "c"};
	ListenerSet<FastDelegate1<int, bool>> set;
	EXPECT_TRUE(set.Add(MakeDelegate(&a, &Listener::OnEvent)));
	EXPECT_TRUE(set.Add(MakeDelegate(&a, &Listener::OnEvent)));
	EXPECT_EQ(set.size(), 1u);
	set.Add(MakeDelegate(&b, &Listener::OnEvent));
	set.Add(MakeDelegate(&c, &Listener::OnEvent));

	// Set order is by object address; the refusing listener ends the notification wherever it stands.
	const bool bNotified = set.Notify(1);
	EXPECT_FALSE(bNotified);
	EXPECT_EQ(log.back(), "b1");
	EXPECT_LE(log.size(), 3u);

	log.clear();
	EXPECT_FALSE(set.Visit(2));
	EXPECT_EQ(log.size(), 3u);

	EXPECT_TRUE(set.Remove(MakeDelegate(&b, &Listener::OnEvent)));
	EXPECT_TRUE(set.Notify(3));
	const ListenerSet<FastDelegate1<int, bool>> emptySet;
	EXPECT_TRUE(emptySet.Notify(0));
}

namespace
{
struct SelfRemover
{
	ListenerSet<FastDelegate0<bool>>* pSet = nullptr;
	int nCalls = 0;
	bool OnEvent()
	{
		++nCalls;
		pSet->Remove(MakeDelegate(this, &SelfRemover::OnEvent));
		return true;
	}
};
} // namespace

TEST(ListenerSet, ListenerMayRemoveItselfWhileNotified)
{
	ListenerSet<FastDelegate0<bool>> set;
	SelfRemover first{&set}, second{&set};
	set.Add(MakeDelegate(&first, &SelfRemover::OnEvent));
	set.Add(MakeDelegate(&second, &SelfRemover::OnEvent));
	EXPECT_TRUE(set.Notify());
	EXPECT_EQ(first.nCalls + second.nCalls, 2);
	EXPECT_TRUE(set.empty());
}
