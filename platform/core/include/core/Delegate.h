#pragma once

#include "core/Assert.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <vector>

namespace Tarsel
{
// A bound (object, member function) pair that can be called, compared and kept in ordered sets.
// Equality and order look at the object first, then at the member function's bytes, so the same
// binding made twice is one element of a set.
template <class R, class... Args>
class Delegate
{
public:
	Delegate() = default;

	// The object may be of a class derived from the method's; it is converted first, so a binding made
	// through a derived pointer equals the one made through the base pointer.
	template <class X, class O>
	Delegate(X* pObject, R (O::*pMethod)(Args...))
	{
		_Bind(static_cast<O*>(pObject), pMethod);
	}

	template <class X, class O>
	Delegate(const X* pObject, R (O::*pMethod)(Args...) const)
	{
		_Bind(static_cast<const O*>(pObject), pMethod);
	}

	// Calling an empty delegate is a caller's bug: it is reported and answers a default value.
	R operator()(Args... args) const
	{
		if (_pStub == nullptr)
		{
			TARSEL_FAIL("empty delegate called");
			return R();
		}
		return _pStub(_aMethod, _pObject, args...);
	}

	bool empty() const { return _pStub == nullptr; }
	explicit operator bool() const { return !empty(); }
	const void* GetObject() const { return _pObject; }

	bool operator==(const Delegate& other) const
	{
		return _pObject == other._pObject && std::memcmp(_aMethod, other._aMethod, sizeof(_aMethod)) == 0;
	}
	bool operator!=(const Delegate& other) const { return !(*this == other); }
	bool operator<(const Delegate& other) const
	{
		if (_pObject != other._pObject)
			return std::less<const void*>()(_pObject, other._pObject);
		return std::memcmp(_aMethod, other._aMethod, sizeof(_aMethod)) < 0;
	}

private:
	static constexpr size_t kMethodBytes = 2 * sizeof(void*);
	typedef R (*Stub)(const unsigned char*, const void*, Args...);

	template <class O, class M>
	void _Bind(O* pObject, M pMethod)
	{
		static_assert(sizeof(M) <= kMethodBytes, "member function pointer larger than expected");
		_pObject = pObject;
		std::memcpy(_aMethod, &pMethod, sizeof(M));
		_pStub = &_Call<O, M>;
	}

	template <class O, class M>
	static R _Call(const unsigned char* aMethod, const void* pObject, Args... args)
	{
		M pMethod;
		std::memcpy(&pMethod, aMethod, sizeof(M));
		return (static_cast<O*>(const_cast<void*>(pObject))->*pMethod)(args...);
	}

	const void* _pObject = nullptr;
	unsigned char _aMethod[kMethodBytes] = {};
	Stub _pStub = nullptr;
};

template <class R>
using FastDelegate0 = Delegate<R>;
template <class A, class R>
using FastDelegate1 = Delegate<R, A>;
template <class A, class B, class R>
using FastDelegate2 = Delegate<R, A, B>;
template <class A, class B, class C, class R>
using FastDelegate3 = Delegate<R, A, B, C>;

template <class X, class O, class R, class... Args>
Delegate<R, Args...> MakeDelegate(X* pObject, R (O::*pMethod)(Args...))
{
	return Delegate<R, Args...>(pObject, pMethod);
}

template <class X, class O, class R, class... Args>
Delegate<R, Args...> MakeDelegate(const X* pObject, R (O::*pMethod)(Args...) const)
{
	return Delegate<R, Args...>(pObject, pMethod);
}

// The one listener collection of the system: an ordered set of delegates.
// Notification walks a snapshot, so listeners may add or remove listeners while being told; one removed
// meanwhile is skipped, as its object may already be gone.
template <class D>
class ListenerSet
{
public:
	bool Add(const D& delegate)
	{
		auto it = _Find(_vEntries, delegate);
		if (_Holds(it, delegate))
		{
			if (!it->bLive)
			{
				it->bLive = true;
				--_nDead;
				++_nChanges;
			}
			return true;
		}
		_vEntries.insert(it, Entry{delegate, true});
		++_nChanges;
		return true;
	}
	bool Remove(const D& delegate)
	{
		auto it = _Find(_vEntries, delegate);
		if (!_Holds(it, delegate) || !it->bLive)
			return true;
		// Marked, not erased: a set of thousands emptied one by one would otherwise move its tail each time.
		it->bLive = false;
		++_nDead;
		++_nChanges;
		if (2 * _nDead > _vEntries.size())
			_Compact();
		return true;
	}
	bool Contains(const D& delegate) const
	{
		auto it = _Find(_vEntries, delegate);
		return _Holds(it, delegate) && it->bLive;
	}

	// Stops at the first listener that answers false and answers false; an empty set answers true.
	template <class... Args>
	bool Notify(Args&&... args) const
	{
		bool bResult = true;
		_Call([&](const D& delegate) { return bResult = delegate(args...); });
		return bResult;
	}

	// Calls every listener and answers the AND of the answers.
	template <class... Args>
	bool Visit(Args&&... args) const
	{
		bool bResult = true;
		_Call(
		    [&](const D& delegate)
		    {
			    bResult = delegate(args...) && bResult;
			    return true;
		    });
		return bResult;
	}

	void clear()
	{
		_vEntries.clear();
		_nDead = 0;
		++_nChanges;
	}
	size_t size() const { return _vEntries.size() - _nDead; }
	bool empty() const { return size() == 0; }

private:
	struct Entry
	{
		D delegate;
		bool bLive;
	};

	// The entry of the delegate, live or dead, or where it would go.
	template <class V>
	static auto _Find(V& vEntries, const D& delegate)
	{
		return std::lower_bound(vEntries.begin(), vEntries.end(), delegate,
		                        [](const Entry& entry, const D& key) { return entry.delegate < key; });
	}
	template <class It>
	bool _Holds(It it, const D& delegate) const
	{
		return it != _vEntries.end() && !(delegate < it->delegate);
	}
	void _Compact()
	{
		_vEntries.erase(std::remove_if(_vEntries.begin(), _vEntries.end(),
		                               [](const Entry& entry) { return !entry.bLive; }),
		                _vEntries.end());
		_nDead = 0;
	}

	// Calls the listeners present when the call began, in order, while call answers true. A listener may
	// add or remove listeners: those removed meanwhile are skipped, those added wait for the next call.
	template <class F>
	void _Call(F call) const
	{
		std::vector<D> vSnapshot;
		vSnapshot.reserve(size());
		for (const Entry& entry : _vEntries)
			if (entry.bLive)
				vSnapshot.push_back(entry.delegate);
		const size_t nChanges = _nChanges;
		for (const D& delegate : vSnapshot)
			if ((_nChanges == nChanges || Contains(delegate)) && !call(delegate))
				return;
	}

	// Sorted, so that listeners are called in the same order on every run; removed ones stay as dead
	// entries until they are half of the list.
	std::vector<Entry> _vEntries;
	size_t _nDead = 0;
	size_t _nChanges = 0;
};
} // namespace Tarsel
