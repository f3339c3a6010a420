#pragma once

#include <string>
#include <vector>

#include "../graph/GraphTestSupport.h"
#include "core/Assert.h"
#include "lights/MgrLightShaders.h"
#include "lights/Shader_LightShader.h"
#include "lights/Shader_LightShaderReceiver.h"

namespace Tarsel::Effects::Testing
{

// The shipped light library behind a light manager, with every assert recorded.
class LightsTest : public GraphTest
{
protected:
	LightsTest() : asserts(), scopedAsserts(&asserts)
	{
		ScopedVariable path("TARSEL_SHADER_PATH", TARSEL_SHADERS_DIR);
		for (const char* file : {"Interfaces.tsl", "LightArrays.tsl"})
		{
			Result result;
			EXPECT_TRUE(mgr.AddLibrary(file, &result)) << file << ": " << result.GetText();
		}
	}
	~LightsTest() override { lights.Shutdown(); }

	bool InitLights() { return lights.Init(&mgr, &console); }
	Shader_LightShader* Light(const std::string& sClass)
	{
		Result result;
		IShader* shader = lights.CreateShader(sClass, &result);
		EXPECT_NE(shader, nullptr) << sClass << ": " << result.GetText();
		return dynamic_cast<Shader_LightShader*>(shader);
	}
	IShader* ArrayShader(const std::string& sClass) const
	{
		const MgrLightShaders::Record* record = lights.GetRecord(sClass);
		return record ? record->pShaderArray : nullptr;
	}
	// Element index of an array parameter of a class's shared shader.
	template <class T>
	T Element(const std::string& sClass, const std::string& name, int index)
	{
		T value{};
		IShader* shader = ArrayShader(sClass);
		IParameter* parameter = shader ? shader->GetParameter(name) : nullptr;
		EXPECT_TRUE(parameter && parameter->Get(value, index))
		    << sClass << "." << name << "[" << index << "]";
		return value;
	}
	int Length(const std::string& sClass, const std::string& name)
	{
		IShader* shader = ArrayShader(sClass);
		IParameter* parameter = shader ? shader->GetParameter(name) : nullptr;
		return parameter ? parameter->GetLength() : -1;
	}
	bool Asserted(const std::string& expression, const std::string& message) const
	{
		for (const auto& report : asserts.GetReports())
			if (report.sExpression == expression && report.sMessage == message)
				return true;
		return false;
	}

	RecordingAssertHandler asserts;
	ScopedAssertHandler scopedAsserts;
	MgrLightShaders lights;
};

} // namespace Tarsel::Effects::Testing
