#include "EffectTestSupport.h"

#include <algorithm>

#include "quillon/Interpreter.h"

namespace Tarsel::Effects::Testing
{
namespace
{

class EffectApplyTest : public EffectTest
{
protected:
	void SetUp() override
	{
		flat = Create("Flat");
		// A coordinate without a vertex attribute leaves the graph incomplete.
		ASSERT_TRUE(flat->SetCoord(nullptr, "uv", "uv0"));
		first = Primitive();
		second = Primitive();
		surface = Effect(mgr.CreateEffectSurface(), flat, {first, second}, &references);
	}
	static size_t Count(const std::vector<std::string>& names, const std::string& name)
	{
		return static_cast<size_t>(std::count(names.begin(), names.end(), name));
	}

	IShader* flat = nullptr;
	ReferencePrimitive* first = nullptr;
	ReferencePrimitive* second = nullptr;
	IEffect* surface = nullptr;
	std::vector<IReferenceEffect*> references;
};

// The uniform a write reached, without its key texts.
std::string Declared(const std::string& uniform)
{
	const size_t key = uniform.find("_k");
	return uniform.rfind("__", 0) == 0 || key == std::string::npos ? uniform : uniform.substr(0, key);
}

// The latest write that reached the uniform of a declared name.
const QLWrite* Last(const ReferencePrimitive* primitive, const std::string& name)
{
	const std::vector<QLWrite>& writes = primitive->GetWrites();
	for (auto write = writes.rbegin(); write != writes.rend(); ++write)
		if (Declared(write->uniform) == name)
			return &*write;
	return nullptr;
}

std::vector<std::string> DeclaredNames(const ReferencePrimitive* primitive)
{
	std::vector<std::string> names;
	for (const QLWrite& write : primitive->GetWrites())
		names.push_back(Declared(write.uniform));
	std::sort(names.begin(), names.end());
	return names;
}

TEST_F(EffectApplyTest, ACompileGivesEveryPrimitiveEveryUniformOnceAndValueChangesReplayOneWriteEach)
{
	EXPECT_FALSE(surface->IsCompiled());
	Update();
	ASSERT_TRUE(surface->IsCompiled());
	// The array's values and its length.
	const std::vector<std::string> all = {"__outputAttachmentIndex_o_color", "gain", "tint", "weights",
	                                      "weights"};
	for (ReferencePrimitive* primitive : {first, second})
	{
		EXPECT_EQ(DeclaredNames(primitive), all) << Violations(primitive);
		EXPECT_TRUE(primitive->GetViolations().empty()) << Violations(primitive);
		const QLWrite* index = primitive->LastByName("__outputAttachmentIndex_o_color");
		ASSERT_NE(index, nullptr);
		EXPECT_EQ(index->Values<int>(), std::vector<int>{15});
	}

	// Nothing changed: nothing is written.
	ClearWrites();
	Update();
	EXPECT_TRUE(first->GetWrites().empty());

	const int links = Links(surface);
	ASSERT_TRUE(flat->SetParameter(nullptr, "gain", 3.0f));
	Update();
	EXPECT_EQ(Links(surface), links);
	for (ReferencePrimitive* primitive : {first, second})
	{
		ASSERT_EQ(primitive->GetWrites().size(), 1u) << Violations(primitive);
		const QLWrite& write = primitive->GetWrites()[0];
		EXPECT_EQ(Declared(write.uniform), "gain");
		EXPECT_EQ(write.Values<float>(), std::vector<float>{3.0f});
		EXPECT_TRUE(write.bound);
		EXPECT_EQ(write.program, surface->GetQLProgram()->GetHandle());
	}
}

TEST_F(EffectApplyTest, AChangeWhileDirtyIsDroppedForTheFullApplyAndAStoppedReferenceKeepsItsQueue)
{
	// Both references are dirty until the first update applies them in full.
	ASSERT_TRUE(flat->SetParameter(nullptr, "gain", 4.0f));
	Update();
	EXPECT_EQ(first->GetWrites().size(), 5u);
	ASSERT_NE(Last(first, "gain"), nullptr);
	EXPECT_EQ(Last(first, "gain")->Values<float>()[0], 4.0f);

	ClearWrites();
	references[0]->SetStopUpdate(true);
	ASSERT_TRUE(flat->SetParameter(nullptr, "gain", 5.0f));
	Update();
	EXPECT_TRUE(first->GetWrites().empty());
	EXPECT_EQ(second->GetWrites().size(), 1u);
	references[0]->SetStopUpdate(false);
	Update();
	ASSERT_EQ(first->GetWrites().size(), 1u);
	EXPECT_EQ(first->GetWrites()[0].Values<float>(), std::vector<float>{5.0f});
	EXPECT_EQ(second->GetWrites().size(), 1u);
}

TEST_F(EffectApplyTest, ALocalValueReachesOnlyItsPrimitive)
{
	Update();
	ILocalParameter* local = references[1]->AcquireParameterLocal(flat, "tint");
	ASSERT_NE(local, nullptr);
	EXPECT_EQ(references[1]->AcquireParameterLocal(flat, "tint"), local);
	EXPECT_EQ(references[1]->AcquireParameterLocal(flat, "missing"), nullptr);
	ClearWrites();
	ASSERT_TRUE(local->Set(Vector3f(0.5f, 0.5f, 0.5f)));
	Update();
	EXPECT_TRUE(first->GetWrites().empty());
	ASSERT_EQ(second->GetWrites().size(), 1u) << Violations(second);
	EXPECT_EQ(Declared(second->GetWrites()[0].uniform), "tint");
	EXPECT_EQ(second->GetWrites()[0].Values<Vector3f>()[0].x, 0.5f);

	// A shared change now reaches the second primitive as its local value.
	ClearWrites();
	ASSERT_TRUE(flat->SetParameter(nullptr, "tint", Vector3f(1.0f, 1.0f, 1.0f)));
	Update();
	EXPECT_EQ(first->GetWrites()[0].Values<Vector3f>()[0].x, 1.0f);
	EXPECT_EQ(second->GetWrites()[0].Values<Vector3f>()[0].x, 0.5f);

	references[1]->ReleaseParameterLocal(local);
	ClearWrites();
	surface->Apply(nullptr);
	EXPECT_EQ(Last(second, "tint")->Values<Vector3f>()[0].x, 1.0f);
}

TEST_F(EffectApplyTest, AStructureChangeRecompilesAndReappliesEverything)
{
	Update();
	IGraph* graph = dynamic_cast<EffectSurface*>(surface)->GetGraph();
	const std::string name = graph->GetQLShader()->GetName();
	ASSERT_EQ(name.substr(name.size() - 2), "_1");
	ASSERT_TRUE(flat->SetParameter(nullptr, "gain", 6.0f));
	Result result;
	ASSERT_TRUE(flat->SetCoord(&result, "uv", "uv1")) << result.GetText();
	EXPECT_FALSE(surface->IsCompiled());
	ClearWrites();
	const int links = Links(surface);
	Update();
	EXPECT_EQ(Links(surface), links + 1);
	EXPECT_EQ(graph->GetQLShader()->GetName().substr(name.size() - 2), "_2");
	for (ReferencePrimitive* primitive : {first, second})
	{
		EXPECT_EQ(primitive->GetWrites().size(), 5u) << Violations(primitive);
		EXPECT_EQ(Last(primitive, "gain")->Values<float>()[0], 6.0f);
	}
}

TEST_F(EffectApplyTest, AnUncompiledEffectAppliesNothing)
{
	EXPECT_TRUE(surface->Apply(first, nullptr));
	EXPECT_TRUE(surface->Apply(nullptr));
	EXPECT_TRUE(first->GetWrites().empty());
	EXPECT_FALSE(first->IsBound());
}

TEST_F(EffectApplyTest, OutputAttachmentIndicesFollowTheManager)
{
	Update();
	ClearWrites();
	ASSERT_TRUE(mgr.SetOutputAttachmentIndex("o_color", 3));
	for (ReferencePrimitive* primitive : {first, second})
	{
		ASSERT_EQ(primitive->GetWrites().size(), 1u) << Violations(primitive);
		const QLWrite& write = primitive->GetWrites()[0];
		EXPECT_EQ(write.uniform, "__outputAttachmentIndex_o_color");
		EXPECT_EQ(write.Values<int>(), std::vector<int>{3});
		EXPECT_TRUE(write.bound);
	}
	ClearWrites();
	ASSERT_TRUE(mgr.ClearOutputAttachmentIndex("o_color"));
	EXPECT_EQ(first->GetWrites()[0].Values<int>(), std::vector<int>{15});
}

// The program computes what the shader says, with the values the primitive received.
TEST_F(EffectApplyTest, TheCompiledSurfaceShadesWithTheAppliedValues)
{
	ASSERT_TRUE(mgr.SetOutputAttachmentIndex("o_color", 0));
	Update();
	Interpreter interpreter;
	QLRunInputs inputs;
	QLRunResults results;
	ASSERT_TRUE(interpreter.Run(surface->GetQLProgram(), IQLShader::kType_Ray, first, inputs, results))
	    << results.error;
	EXPECT_EQ(results.accumulated[0].x, 2.0f);
	EXPECT_EQ(results.accumulated[0].y, 1.0f);
	EXPECT_EQ(results.accumulated[0].z, 0.5f);

	ASSERT_TRUE(flat->SetParameter(nullptr, "gain", 4.0f));
	Update();
	results = QLRunResults();
	ASSERT_TRUE(interpreter.Run(surface->GetQLProgram(), IQLShader::kType_Ray, first, inputs, results));
	EXPECT_EQ(results.accumulated[0].x, 4.0f);
}

} // namespace
} // namespace Tarsel::Effects::Testing
