#include "effects/MgrOutputs.h"

#include "core/Console.h"

namespace Tarsel::Effects
{

bool MgrOutputs::AddListenerAddOutput(ListenerAdd& listener)
{
	_setListenersAddOutput.Add(listener);
	return true;
}

bool MgrOutputs::RemoveListenerAddOutput(ListenerAdd& listener)
{
	_setListenersAddOutput.Remove(listener);
	return true;
}

bool MgrOutputs::AddListenerRemoveOutput(ListenerRemove& listener)
{
	_setListenersRemoveOutput.Add(listener);
	return true;
}

bool MgrOutputs::RemoveListenerRemoveOutput(ListenerRemove& listener)
{
	_setListenersRemoveOutput.Remove(listener);
	return true;
}

bool MgrOutputs::AcquireOutput(TypeSpecifier type, const std::string& name)
{
	auto it = _mOutputs.find(name);
	if (it == _mOutputs.end())
	{
		_mOutputs.emplace(name, std::make_pair(type, 1));
		// The output exists whatever the listeners answer.
		_setListenersAddOutput.Notify(type, name);
		return true;
	}
	if (it->second.first != type)
	{
		GetMgrConsole()->Message("Graph::AcquireOutput Type Collision\n");
		return false;
	}
	++it->second.second;
	return true;
}

bool MgrOutputs::ReleaseOutput(const std::string& name)
{
	auto it = _mOutputs.find(name);
	if (it == _mOutputs.end())
		return true;
	if (--it->second.second > 0)
		return true;
	_mOutputs.erase(it);
	return _setListenersRemoveOutput.Notify(name);
}

int MgrOutputs::GetCountOutputs()
{
	return static_cast<int>(_mOutputs.size());
}

bool MgrOutputs::HasOutput(const std::string& name)
{
	return _mOutputs.count(name) > 0;
}

bool MgrOutputs::VisitOutputs(Visitor& visitor)
{
	bool all = true;
	for (const auto& entry : _mOutputs)
		all = visitor(entry.second.first, entry.first) && all;
	return all;
}

bool MgrOutputs::SetOutputAttachmentIndex(const std::string& name, int index)
{
	_mAttachmentIndices[name] = index;
	return true;
}

bool MgrOutputs::GetOutputAttachmentIndex(int& index, const std::string& name)
{
	auto it = _mAttachmentIndices.find(name);
	index = it == _mAttachmentIndices.end() ? kAttachmentIndexNone : it->second;
	return true;
}

bool MgrOutputs::ClearOutputAttachmentIndex(const std::string& name)
{
	return _mAttachmentIndices.erase(name) > 0;
}

bool MgrOutputs::Shutdown()
{
	_setListenersAddOutput = ListenerSet<ListenerAdd>();
	_setListenersRemoveOutput = ListenerSet<ListenerRemove>();
	return true;
}

} // namespace Tarsel::Effects
