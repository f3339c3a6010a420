#pragma once

namespace Tarsel::Effects
{

class IGraph;
class IMember;

// A member's presence in one graph. The graph's concrete references implement it.
class IReferenceMember
{
public:
	virtual ~IReferenceMember() {}
	virtual IGraph* GetGraph() const = 0;
	virtual IMember* GetMember() const = 0;
};

} // namespace Tarsel::Effects
