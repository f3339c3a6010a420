#pragma once

#include <map>
#include <string>
#include <utility>

#include "core/Delegate.h"
#include "effects/Export.h"
#include "effects/Types.h"

namespace Tarsel::Effects
{

// Counts acquisitions of named outputs and tells listeners about the first acquisition and the last release.
class TARSEL_EFFECTS_EXPORT MgrOutputs
{
public:
	typedef FastDelegate2<TypeSpecifier, const std::string&, bool> ListenerAdd;
	typedef FastDelegate1<const std::string&, bool> ListenerRemove;
	typedef FastDelegate2<TypeSpecifier, const std::string&, bool> Visitor;

	// Index reported for an output the host gave none.
	static const int kAttachmentIndexNone = 15;

	virtual ~MgrOutputs() {}

	virtual bool AddListenerAddOutput(ListenerAdd& listener);
	virtual bool RemoveListenerAddOutput(ListenerAdd& listener);
	virtual bool AddListenerRemoveOutput(ListenerRemove& listener);
	virtual bool RemoveListenerRemoveOutput(ListenerRemove& listener);
	virtual bool AcquireOutput(TypeSpecifier type, const std::string& name);
	virtual bool ReleaseOutput(const std::string& name);
	virtual int GetCountOutputs();
	virtual bool HasOutput(const std::string& name);
	virtual bool VisitOutputs(Visitor& visitor);
	virtual bool SetOutputAttachmentIndex(const std::string& name, int index);
	virtual bool GetOutputAttachmentIndex(int& index, const std::string& name);
	virtual bool ClearOutputAttachmentIndex(const std::string& name);

	bool Init() { return true; }
	// Outputs and indices outlive the listeners on purpose: graphs may still release them.
	bool Shutdown();

private:
	std::map<std::string, std::pair<TypeSpecifier, int>> _mOutputs;
	std::map<std::string, int> _mAttachmentIndices;
	ListenerSet<ListenerAdd> _setListenersAddOutput;
	ListenerSet<ListenerRemove> _setListenersRemoveOutput;
};

} // namespace Tarsel::Effects
