#include "objects/Graph.h"

namespace Tarsel::Effects
{

Graph::Graph() : _pMgrEffects(nullptr), _eType(IQLShader::kType_Ray), _pShader(nullptr) {}

Graph::~Graph()
{
	Shutdown();
}

bool Graph::Init(IMgrEffects* mgrEffects, IQLShader::Type type, IShader* shader, const std::string& name)
{
	if (mgrEffects == nullptr || shader == nullptr)
		return false;
	_pMgrEffects = mgrEffects;
	_eType = type;
	_pShader = shader;
	_sName = name;
	return true;
}

void Graph::Shutdown()
{
	_pMgrEffects = nullptr;
	_pShader = nullptr;
}

bool Graph::SetName(const std::string& name)
{
	_sName = name;
	return true;
}

} // namespace Tarsel::Effects
