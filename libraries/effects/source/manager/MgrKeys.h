#pragma once

#include <map>
#include <vector>

#include "core/Console.h"
#include "core/Delegate.h"
#include "core/Mutex.h"
#include "manager/Key.h"

namespace Tarsel::Effects
{

// Issues keys and keeps one value per live key. Callable from any thread; listeners run under the lock,
// so they must not call back into the same registry.
template <typename T>
class MgrKeys
{
public:
	typedef FastDelegate2<const Key&, const T&, bool> Listener;

	MgrKeys() : _keyNext(1) {}
	virtual ~MgrKeys() {}

	virtual bool AddListenerDestroy(const Listener& listener)
	{
		ScopedLock lock(_mutex);
		_setListenersDestroy.Add(listener);
		return true;
	}
	virtual bool RemoveListenerDestroy(const Listener& listener)
	{
		ScopedLock lock(_mutex);
		_setListenersDestroy.Remove(listener);
		return true;
	}

	bool Init() { return _Forget(); }
	bool Shutdown() { return _Forget(); }

	Key Create(const T& value)
	{
		ScopedLock lock(_mutex);
		Key key = _keyNext;
		if (_vKeysFree.empty())
			_keyNext = Key(_keyNext.GetValue() + 1);
		else
		{
			key = _vKeysFree.back();
			_vKeysFree.pop_back();
		}
		_mValues[key] = value;
		_setListenersCreate.Notify(key, value);
		return key;
	}

	bool Destroy(Key& key)
	{
		ScopedLock lock(_mutex);
		typename std::map<Key, T>::iterator it = _mValues.find(key);
		if (it == _mValues.end())
		{
			GetMgrConsole()->Message("MgrKeys::Destroy Key Not Found\n");
			return false;
		}
		const T value = it->second;
		_mValues.erase(it);
		_setListenersDestroy.Notify(key, value);
		_vKeysFree.push_back(key);
		return true;
	}

	// Not part of the registry's contract; lets the owner and tests observe creation.
	bool AddListenerCreate(const Listener& listener)
	{
		ScopedLock lock(_mutex);
		_setListenersCreate.Add(listener);
		return true;
	}
	bool RemoveListenerCreate(const Listener& listener)
	{
		ScopedLock lock(_mutex);
		_setListenersCreate.Remove(listener);
		return true;
	}
	size_t GetCount()
	{
		ScopedLock lock(_mutex);
		return _mValues.size();
	}

private:
	bool _Forget()
	{
		ScopedLock lock(_mutex);
		_vKeysFree.clear();
		_mValues.clear();
		_keyNext = Key(1);
		return true;
	}

	std::map<Key, T> _mValues;
	std::vector<Key> _vKeysFree;
	Key _keyNext;
	ListenerSet<Listener> _setListenersCreate;
	ListenerSet<Listener> _setListenersDestroy;
	Mutex _mutex;
};

} // namespace Tarsel::Effects
