#pragma once

#include <string>

#include "quillon/IQLShader.h"

namespace Tarsel::Effects
{

class IMgrEffects;
class IShader;

// What the object model needs of a graph until graphs compile: its kind, its root and its name.
class IGraph
{
public:
	virtual ~IGraph() {}

	virtual bool SetName(const std::string& name) = 0;
	virtual const std::string& GetName() const = 0;
	virtual IShader* GetShader() = 0;
	virtual IQLShader::Type GetType() const = 0;
};

// A graph rooted in one shader; it holds the root and the name and compiles nothing yet.
class Graph : public IGraph
{
public:
	Graph();
	~Graph() override;
	Graph(const Graph&) = delete;
	Graph& operator=(const Graph&) = delete;

	bool Init(IMgrEffects* mgrEffects, IQLShader::Type type, IShader* shader, const std::string& name);
	void Shutdown();

	bool SetName(const std::string& name) override;
	const std::string& GetName() const override { return _sName; }
	IShader* GetShader() override { return _pShader; }
	IQLShader::Type GetType() const override { return _eType; }

private:
	IMgrEffects* _pMgrEffects;
	IQLShader::Type _eType;
	std::string _sName;
	IShader* _pShader;
};

} // namespace Tarsel::Effects
