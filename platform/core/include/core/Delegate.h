#pragma once

#include "core/Assert.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <set>

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
		_setDelegates.insert(delegate);
		return true;
	}
	bool Remove(const D& delegate)
	{
		_setDelegates.erase(delegate);
		return true;
	}
	bool Contains(const D& delegate) const { return _setDelegates.count(delegate) != 0; }

	// Stops at the first listener that answers false and answers false; an empty set answers true.
	template <class... Args>
	bool Notify(Args&&... args) const
	{
		const std::set<D> setSnapshot = _setDelegates;
		for (const D& delegate : setSnapshot)
			if (Contains(delegate) && !delegate(args...))
				return false;
		return true;
	}

	// Calls every listener and answers the AND of the answers.
	template <class... Args>
	bool Visit(Args&&... args) const
	{
		const std::set<D> setSnapshot = _setDelegates;
		bool bResult = true;
		for (const D& delegate : setSnapshot)
			if (Contains(delegate))
				bResult = delegate(args...) && bResult;
		return bResult;
	}

	void clear() { _setDelegates.clear(); }
	size_t size() const { return _setDelegates.size(); }
	bool empty() const { return _setDelegates.empty(); }
	typename std::set<D>::const_iterator begin() const { return _setDelegates.begin(); }
	typename std::set<D>::const_iterator end() const { return _setDelegates.end(); }

private:
	std::set<D> _setDelegates;
};
} // namespace Tarsel
