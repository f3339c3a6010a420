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

TEST(Delegate, OrderIsStrictWeakAndByObjectFirst)
{
	Listener a, b;
	const std::vector<FastDelegate1<int, bool>> v{
	    MakeDelegate(&a, &Listener::OnEvent), MakeDelegate(&a, &Listener::OnOther),
	    MakeDelegate(&b, &Listener::OnEvent), MakeDelegate(&b, &Listener::OnOther)};
	for (size_t x = 0; x < v.size(); ++x)
		for (size_t y = 0; y < v.size(); ++y)
		{
			EXPECT_EQ(v[x] == v[y], x == y);
			EXPECT_EQ(x == y, !(v[x] < v[y]) && !(v[y] < v[x]));
			for (const auto& z : v)
				EXPECT_TRUE(!(v[x] < v[y] && v[y] < z) || v[x] < z);
		}
	// Between different objects the methods must not matter.
	EXPECT_EQ(v[0] < v[3], v[1] < v[2]);
	EXPECT_EQ(v[0], MakeDelegate(&a, &Listener::OnEvent));
}

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

	RecordingAssertHandler handler;
	ScopedAssertHandler scope(&handler);
	const FastDelegate1<int, bool> empty;
	EXPECT_FALSE(empty(1));
	EXPECT_EQ(handler.GetReports().size(), 1u);
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
	EXPECT_FALSE(set.Notify(1));
	EXPECT_EQ(log.back(), "b1");

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
// Removes every listener of the set, itself included, as an object does when it tears others down.
struct Remover
{
	ListenerSet<FastDelegate0<bool>>* pSet = nullptr;
	std::vector<Remover>* pAll = nullptr;
	int nCalls = 0;
	bool OnEvent()
	{
		++nCalls;
		for (Remover& other : *pAll)
			pSet->Remove(MakeDelegate(&other, &Remover::OnEvent));
		return true;
	}
};
} // namespace

TEST(ListenerSet, ListenersRemovedDuringNotifyAreNotCalled)
{
	ListenerSet<FastDelegate0<bool>> set;
	std::vector<Remover> removers(3);
	for (Remover& remover : removers)
	{
		remover = Remover{&set, &removers};
		set.Add(MakeDelegate(&remover, &Remover::OnEvent));
	}
	EXPECT_TRUE(set.Notify());
	EXPECT_EQ(removers[0].nCalls + removers[1].nCalls + removers[2].nCalls, 1);
	EXPECT_TRUE(set.empty());
}

namespace
{
// Adds a listener the first time it is told.
struct Adder
{
	ListenerSet<FastDelegate0<bool>>* pSet = nullptr;
	Adder* pNext = nullptr;
	int nCalls = 0;
	bool OnEvent()
	{
		if (++nCalls == 1 && pNext)
			pSet->Add(MakeDelegate(pNext, &Adder::OnEvent));
		return true;
	}
};
} // namespace

TEST(ListenerSet, ListenersAddedDuringNotifyWaitForTheNextOne)
{
	ListenerSet<FastDelegate0<bool>> set;
	std::vector<Adder> adders(2);
	adders[0] = Adder{&set, &adders[1]};
	adders[1] = Adder{&set, nullptr};
	set.Add(MakeDelegate(&adders[0], &Adder::OnEvent));
	EXPECT_TRUE(set.Notify());
	EXPECT_EQ(adders[1].nCalls, 0);
	EXPECT_TRUE(set.Visit());
	EXPECT_EQ(adders[0].nCalls, 2);
	EXPECT_EQ(adders[1].nCalls, 1);
	EXPECT_TRUE(set.Contains(MakeDelegate(&adders[1], &Adder::OnEvent)));
}

TEST(ListenerSet, EmptiedOneByOneAndRefilledKeepsItsOrder)
{
	std::vector<std::string> log;
	std::vector<Listener> listeners(10);
	ListenerSet<FastDelegate1<int, bool>> set;
	for (size_t i = 0; i < listeners.size(); ++i)
	{
		listeners[i] = Listener{&log, std::to_string(i)};
		set.Add(MakeDelegate(&listeners[i], &Listener::OnEvent));
	}
	// Removed from the front, as a scene torn down in creation order; the vector's addresses ascend.
	for (size_t i = 0; i < 8; ++i)
		set.Remove(MakeDelegate(&listeners[i], &Listener::OnEvent));
	set.Remove(MakeDelegate(&listeners[0], &Listener::OnEvent));
	EXPECT_EQ(set.size(), 2u);
	set.Add(MakeDelegate(&listeners[3], &Listener::OnEvent));
	set.Add(MakeDelegate(&listeners[9], &Listener::OnEvent));
	EXPECT_EQ(set.size(), 3u);
	EXPECT_FALSE(set.Contains(MakeDelegate(&listeners[4], &Listener::OnEvent)));
	EXPECT_TRUE(set.Notify(0));
	EXPECT_EQ(log, (std::vector<std::string>{"30", "80", "90"}));
	for (size_t i : {3, 8, 9})
		set.Remove(MakeDelegate(&listeners[i], &Listener::OnEvent));
	EXPECT_TRUE(set.empty());
}
