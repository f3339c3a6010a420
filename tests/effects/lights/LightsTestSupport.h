#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "../graph/GraphTestSupport.h"
#include "core/Assert.h"
#include "lights/MgrLightShaders.h"
#include "lights/Shader_LightShader.h"
#include "lights/Shader_LightShaderReceiver.h"
#include "objects/ParameterValue.h"
#include "values/IStorage.h"
#include "values/IValue.h"

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
	// The floats of an array parameter of a class's shared shader as its device buffer holds them.
	std::vector<float> Block(const std::string& sClass, const std::string& name)
	{
		IParameter* parameter = ArrayShader(sClass)->GetParameter(name);
		auto* value =
		    dynamic_cast<IValueBuffer*>(dynamic_cast<ParameterValue*>(parameter)->GetStorage()->GetValue());
		std::vector<float> floats(size_t(parameter->GetLength()));
		std::memcpy(floats.data(), static_cast<const ReferenceBuffer*>(value->GetBuffer())->GetBytes(),
		            floats.size() * sizeof(float));
		return floats;
	}

	// The uniform block that holds an array parameter of a class's shared shader.
	const std::string& BlockName(const std::string& sClass, const std::string& name)
	{
		return dynamic_cast<ParameterValue*>(ArrayShader(sClass)->GetParameter(name))->GetNameMangled();
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
