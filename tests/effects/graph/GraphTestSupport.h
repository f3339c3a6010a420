#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "../objects/TestShaderSupport.h"
#include "graph/Graph.h"
#include "graph/IReferenceGraph.h"
#include "graph/IReferenceShader.h"
#include "quillon/Reference.h"

namespace Tarsel::Effects::Testing
{

// Counts the value changes that a graph relays.
struct ChangeValueCounter
{
	int n = 0;
	bool On(IGraph*, IGraph::DelegateApply&)
	{
		++n;
		return true;
	}
	bool Apply(IQLPrimitive*, IQLProgram*) { return true; }
};

// Sets an environment variable for one scope.
class ScopedVariable
{
public:
	ScopedVariable(const char* name, const char* value) : _pName(name) { setenv(name, value, 1); }
	~ScopedVariable() { unsetenv(_pName); }

private:
	const char* _pName;
};

// Shaders of small libraries compiled into graphs on the reference device.
class GraphTest : public ShaderTest
{
protected:
	// The text and name of the API shader that the graph's last compile handed to the device.
	static std::string Text(IGraph* graph)
	{
		return graph->GetQLShader() ? graph->GetQLShader()->GetString() : std::string();
	}
	static std::string Name(IGraph* graph)
	{
		return graph->GetQLShader() ? graph->GetQLShader()->GetName() : std::string();
	}
	static bool Contains(const std::string& text, const std::string& part)
	{
		return text.find(part) != std::string::npos;
	}
	// Compiles and fails the test with the device's messages when the graph does not compile.
	static void Compile(IGraph* graph)
	{
		Result result;
		ASSERT_TRUE(graph->Compile(&result)) << result.GetText() << "\n" << Text(graph);
	}
};

} // namespace Tarsel::Effects::Testing
