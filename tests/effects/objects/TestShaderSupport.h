#pragma once

#include <string>
#include <vector>

#include "core/Console.h"
#include "core/Result.h"
#include "effects/IParameter.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/References.h"
#include "quillon/Reference.h"

#include <gtest/gtest.h>

namespace Tarsel::Effects::Testing
{

// Per-graph references that only know their graph; each tells the factory when it goes.
class FakeFactoryReferences : public IFactoryReferences
{
public:
	template <class Base>
	class Fake : public Base
	{
	public:
		Fake(FakeFactoryReferences* factory, IGraph* graph) : _pFactory(factory), _pGraph(graph) {}
		~Fake() override { ++_pFactory->nDestroyed; }
		IGraph* GetGraph() const override { return _pGraph; }

	private:
		FakeFactoryReferences* _pFactory;
		IGraph* _pGraph;
	};
	class FakeInterface : public Fake<ReferencePrototypeInterface>
	{
	public:
		using Fake::Fake;
		bool AddReferencePrototypeShader(ReferencePrototypeShader* reference) override
		{
			vShaders.push_back(reference);
			return true;
		}
		bool RemoveReferencePrototypeShader(ReferencePrototypeShader* reference) override
		{
			for (auto it = vShaders.begin(); it != vShaders.end(); ++it)
				if (*it == reference)
				{
					vShaders.erase(it);
					return true;
				}
			return false;
		}
		std::vector<ReferencePrototypeShader*> vShaders;
	};

	ReferencePrototypeShader* CreateReferencePrototypeShader(PrototypeShader*, IGraph* graph) override
	{
		return _Make<Fake<ReferencePrototypeShader>>(graph);
	}
	ReferencePrototypeInterface* CreateReferencePrototypeInterface(PrototypeInterface*, IGraph* graph) override
	{
		return _Make<FakeInterface>(graph);
	}
	IReferenceShader* CreateReferenceShader(IShader*, IGraph* graph) override
	{
		return _Make<Fake<IReferenceShader>>(graph);
	}

	bool bFail = false;
	int nCreated = 0;
	int nDestroyed = 0;

private:
	template <class T>
	T* _Make(IGraph* graph)
	{
		if (bFail)
			return nullptr;
		++nCreated;
		return new T(this, graph);
	}
};

// A manager on the reference device with a recording console and the reference double installed.
class ShaderTest : public ::testing::Test
{
protected:
	ShaderTest()
	{
		mgr.Init(&console, &context, nullptr);
		Impl()->SetFactoryReferences(&factory);
	}
	~ShaderTest() override { mgr.Shutdown(); }

	MgrEffectsImpl* Impl() { return mgr.GetImplementation(); }

	// Registers a library and fails the test when it does not parse.
	void Load(const std::string& name, const std::string& source)
	{
		Result result;
		ASSERT_TRUE(mgr.AddLibrary(name, source, &result)) << result.GetText();
	}
	// Creates a shader and fails the test when it cannot be made.
	IShader* Create(const std::string& className)
	{
		Result result;
		IShader* shader = mgr.CreateShader(className, &result);
		EXPECT_NE(shader, nullptr) << result.GetText();
		return shader;
	}
	// Every message of a result, joined, for substring checks.
	static std::string Text(const Result& result)
	{
		std::string text;
		for (const std::string& message : result.GetMessages())
			text += message + "|";
		return text;
	}
	static float GetFloat(IShader* shader, const std::string& name, int index = 0)
	{
		float value = -1.0f;
		IParameter* parameter = shader->GetParameter(name);
		EXPECT_TRUE(parameter && parameter->Get(value, index)) << name;
		return value;
	}
	// Generated function names of a shader's own module.
	static std::vector<std::string> MethodNames(IShader* shader)
	{
		std::vector<std::string> names;
		for (const char* method : {"Shade", "Helper"})
			if (shader->HasMethod(method))
				names.push_back(shader->GetMethodNameMangled(method));
		return names;
	}

	ReferenceContext context;
	RecordingConsole console;
	MgrEffects mgr;
	FakeFactoryReferences factory;
};

} // namespace Tarsel::Effects::Testing
