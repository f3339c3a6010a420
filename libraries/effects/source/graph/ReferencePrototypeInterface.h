#pragma once

#include <string>
#include <vector>

namespace Tarsel::Effects
{

class IGraph;
class IPrototypeInterface;
class ReferencePrototypeShader;

// One interface in one graph, with the references of the classes that implement it there.
class ReferencePrototypeInterface
{
public:
	ReferencePrototypeInterface() = default;
	~ReferencePrototypeInterface();
	ReferencePrototypeInterface(const ReferencePrototypeInterface&) = delete;
	ReferencePrototypeInterface& operator=(const ReferencePrototypeInterface&) = delete;

	bool Init(IPrototypeInterface* prototype, IGraph* graph);
	void Shutdown();

	IGraph* GetGraph() const { return _pGraph; }
	bool AddReferencePrototypeShader(ReferencePrototypeShader* reference);
	bool RemoveReferencePrototypeShader(ReferencePrototypeShader* reference);
	const std::vector<ReferencePrototypeShader*>& GetReferencePrototypeShaders() const
	{
		return _vReferencePrototypeShaders;
	}
	std::string GetMethodNameMangled(const std::string& method) const;

private:
	IPrototypeInterface* _pPrototype = nullptr;
	IGraph* _pGraph = nullptr;
	std::vector<ReferencePrototypeShader*> _vReferencePrototypeShaders;
};

} // namespace Tarsel::Effects
