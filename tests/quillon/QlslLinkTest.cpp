#include "QlslTestSupport.h"

#include <gtest/gtest.h>

using namespace Tarsel;
using namespace QlslTest;

namespace
{

const int kRay = IQLShader::kType_Ray;
const int kVertex = IQLShader::kType_Vertex;
const int kFrame = IQLShader::kType_Frame;

class QlslLink : public ::testing::Test
{
protected:
	// Compiles and attaches; the test fails at once when the text does not compile.
	IQLShader* Attach(int type, const std::string& text, const char* name)
	{
		IQLShader* shader = nullptr;
		std::vector<std::string> errors = Compile(context, type, text, &shader);
		EXPECT_TRUE(errors.empty()) << name << ": " << (errors.empty() ? "" : errors.front());
		shader->SetName(name);
		EXPECT_TRUE(program->AttachShader(shader));
		return shader;
	}
	void AttachSurface()
	{
		Attach(kRay, ReadFixture("surface_root.qlray"), "root");
		Attach(kRay, ReadFixture("surface_graph.qlray"), "graph");
		Attach(kVertex, ReadFixture("surface.qlvert"), "vertex");
	}
	// The link messages joined, empty when the link succeeded.
	std::string Link()
	{
		std::vector<std::string> errors;
		bool ok = program->Link(errors);
		std::string text;
		for (const std::string& error : errors)
			text += error + "\n";
		if (ok != errors.empty())
			text += "Link answer disagrees with the messages\n";
		return text;
	}

	ReferenceContext context;
	IQLProgram* program = context.CreateProgram();
};

const char* const kMain = "void main()\n{\n}\n";

} // namespace

TEST_F(QlslLink, SurfaceProgramGetsStableSortedLocations)
{
	AttachSurface();
	ASSERT_EQ("", Link());
	EXPECT_EQ(0, program->GetUniformLocation("__outputAttachmentIndex_o_color"));
	EXPECT_EQ(1, program->GetUniformLocation("color_k1f_k2b"));
	EXPECT_EQ(4, program->GetUniformLocation("transforms_k1f_k2e"));
	EXPECT_EQ(-1, program->GetUniformLocation("weights_k1f_k2c")); // a block, not a uniform
	EXPECT_EQ(-1, program->GetUniformLocation("g_rayMinContrib"));
	EXPECT_EQ(-1, program->GetUniformLocation(nullptr));
	EXPECT_EQ(0, program->GetUniformBlockLocation("weights_k1f_k2c"));
	EXPECT_EQ(0, program->GetAttributeLocation("a_Normal"));
	EXPECT_EQ(1, program->GetAttributeLocation("a_Position"));
	EXPECT_EQ(-1, program->GetAttributeLocation("a_uv"));
	const QLVariable* transforms = ReferenceProgram::From(program)->FindUniform(4);
	ASSERT_NE(nullptr, transforms);
	EXPECT_EQ("mat4", transforms->type);
	EXPECT_EQ(4, transforms->arraySize);
}

TEST_F(QlslLink, OtherKindsLinkTheirRootAndGraph)
{
	Attach(kFrame, ReadFixture("frame_root.qlframe"), "root");
	Attach(kFrame, ReadFixture("frame_graph.qlframe"), "graph");
	EXPECT_EQ("", Link());
	IQLProgram* prefix = context.CreateProgram();
	for (const char* file : {"prefix_root.qlprefix", "prefix_graph.qlprefix"})
	{
		IQLShader* shader = nullptr;
		ASSERT_TRUE(Compile(context, IQLShader::kType_PrefixRay, ReadFixture(file), &shader).empty());
		prefix->AttachShader(shader);
	}
	std::vector<std::string> errors;
	EXPECT_TRUE(prefix->Link(errors)) << (errors.empty() ? "" : errors.front());
	EXPECT_EQ(1, prefix->GetUniformLocation("target_k41_k43"));
}

TEST_F(QlslLink, EachStageNeedsExactlyOneMain)
{
	Attach(kRay, ReadFixture("surface_graph.qlray"), "graph");
	EXPECT_EQ("ERROR: Link: ray stage: 'main' : not defined\n", Link());
	Attach(kRay, kMain, "first");
	Attach(kRay, kMain, "second");
	EXPECT_EQ("ERROR: Link: shader 'second': 'main' : already defined in shader 'first'\n", Link());
	EXPECT_EQ(-1, program->GetUniformLocation("color_k1f_k2b")); // a failed link leaves no locations
}

TEST_F(QlslLink, CalledFunctionsNeedOneDefinitionInTheStage)
{
	Attach(kRay, ReadFixture("surface_root.qlray"), "root");
	std::string graph = ReadFixture("surface_graph.qlray");
	IQLShader* shader = Attach(kRay, Replace(graph, "void Wood_Init_k2a()\n{\n\t;\n}\n", ""), "graph");
	EXPECT_EQ("ERROR: Link: shader 'root': 'Wood_Init_k2a()' : function called but not defined\n", Link());

	program->DetachShader(shader);
	Attach(kRay, graph, "graph");
	Attach(kRay, "void Wood_Init_k2a()\n{\n}\n", "extra");
	EXPECT_EQ("ERROR: Link: shader 'extra': 'Wood_Init_k2a' : function already defined in shader 'graph'\n",
	          Link());
}

TEST_F(QlslLink, GlobalsAndVaryingsMustAgree)
{
	AttachSurface();
	Attach(kRay, "vec3 g_rayMinContrib;\n", "clash");
	EXPECT_EQ("ERROR: Link: shader 'clash': 'g_rayMinContrib' : declared as vec3 here and as float in shader "
	          "'root'\n",
	          Link());

	ReferenceContext other;
	IQLProgram* second = other.CreateProgram();
	const char* ray = "varying vec3 Normal;\nvarying vec2 uv;\nvarying vec3 tangent;\nvoid main()\n{\n}\n";
	for (auto& stage :
	     {std::make_pair(kRay, ray), std::make_pair(kVertex, "varying vec3 uv;\nvoid main() {}\n"),
	      std::make_pair(kVertex, "transformed varying vec3 Normal;\n")})
	{
		IQLShader* shader = nullptr;
		ASSERT_TRUE(Compile(other, stage.first, stage.second, &shader).empty());
		shader->SetName(stage.first == kRay ? "ray" : "vertex");
		second->AttachShader(shader);
	}
	std::vector<std::string> errors;
	EXPECT_FALSE(second->Link(errors));
	EXPECT_EQ((std::vector<std::string>{
	              "ERROR: Link: shader 'ray': 'tangent' : varying not written by the vertex stage",
	              "ERROR: Link: shader 'ray': 'uv' : varying declared as vec2 here and as vec3 in shader "
	              "'vertex'"}),
	          errors);
}

TEST_F(QlslLink, RayStageWithoutVertexStageNeedsNoVaryingSource)
{
	Attach(kRay, ReadFixture("surface_root.qlray"), "root");
	Attach(kRay, ReadFixture("surface_graph.qlray"), "graph");
	EXPECT_EQ("", Link());
}

// A graph may call into the program of another graph of the same kind; the linker brings that one in.
TEST_F(QlslLink, MissingFunctionsComeFromAnotherShaderOfTheKind)
{
	IQLShader* provider = nullptr;
	ASSERT_TRUE(Compile(context, kRay,
	                    "uniform float other_k9;\nfloat Other_Shade_k9()\n{\n\treturn other_k9;\n}\n",
	                    &provider)
	                .empty());
	Compile(context, kRay, "float Other_Shade_k9() { return 0.0; }\nvoid main() {}\n"); // has a main: skipped
	Compile(context, kFrame, "float Other_Shade_k9() { return 1.0; }\n");               // other kind: skipped
	Attach(kRay, "float Other_Shade_k9();\nvoid main()\n{\n\tOther_Shade_k9();\n}\n", "caller");
	ASSERT_EQ("", Link());
	const std::vector<IQLShader*>& linked = ReferenceProgram::From(program)->GetLinkedShaders();
	ASSERT_EQ(2u, linked.size());
	EXPECT_EQ(provider, linked[1]);
	EXPECT_EQ(0, program->GetUniformLocation("other_k9"));

	context.DestroyShader(provider);
	EXPECT_EQ("ERROR: Link: shader 'caller': 'Other_Shade_k9()' : function called but not defined\n", Link());
}

TEST_F(QlslLink, AttachRulesAndListenersAndInjectedFailure)
{
	struct Counter
	{
		int calls = 0;
		bool OnChange(IQLProgram*)
		{
			++calls;
			return true;
		}
	} counter;
	IQLProgram::ListenerChange listener = MakeDelegate(&counter, &Counter::OnChange);
	EXPECT_TRUE(program->AddListenerChange(listener));
	IQLShader* shader = Attach(kRay, kMain, "main");
	EXPECT_FALSE(program->AttachShader(shader));
	EXPECT_FALSE(program->AttachShader(nullptr));
	EXPECT_EQ("", Link());
	EXPECT_EQ(1, counter.calls);
	context.FailNextLink();
	EXPECT_EQ("ERROR: Link: failure injected\n", Link());
	EXPECT_FALSE(program->IsLinked());
	EXPECT_EQ("", Link());
	EXPECT_EQ(2, counter.calls);
	EXPECT_TRUE(program->RemoveListenerChange(listener));
	EXPECT_EQ("", Link());
	EXPECT_EQ(2, counter.calls);

	IQLShader* broken = context.CreateShader(kRay);
	program->AttachShader(broken);
	EXPECT_EQ("ERROR: Link: shader '" + static_cast<ReferenceShader*>(broken)->GetLabel() +
	              "': not compiled\n",
	          Link());
	// Destroying an attached shader detaches it.
	context.DestroyShader(broken);
	EXPECT_EQ("", Link());
	EXPECT_TRUE(program->DetachShader(shader));
	EXPECT_FALSE(program->DetachShader(shader));
	EXPECT_EQ("ERROR: Link: no shaders attached\n", Link());
}

TEST_F(QlslLink, UniformsAndBlocksAgreeAcrossTheProgram)
{
	Attach(kRay, "uniform vec3 tint;\nuniformblock W { float a[1]; };\nvoid main() {}\n", "ray");
	IQLShader* vertex = Attach(kVertex, "uniform vec4 tint;\nvoid main() {}\n", "vertex");
	EXPECT_EQ("ERROR: Link: shader 'vertex': 'tint' : declared as vec4 here and as vec3 in shader 'ray'\n",
	          Link());
	program->DetachShader(vertex);
	Attach(kRay, "float tint;\nuniformblock W { int a[1]; };\n", "other");
	EXPECT_EQ("ERROR: Link: shader 'other': 'tint' : declared as float here and as vec3 in shader 'ray'\n"
	          "ERROR: Link: shader 'other': 'W' : uniform block members differ from shader 'ray'\n",
	          Link());
}

TEST_F(QlslLink, QualifierMismatchAndArityAreLinkErrors)
{
	Attach(kRay, "uniform float gain;\nfloat f(float a, float b);\nvoid main()\n{\n\tf(gain, gain);\n}\n",
	       "a");
	Attach(kRay, "float gain;\nfloat f(float a)\n{\n\treturn a;\n}\n", "b");
	EXPECT_EQ(
	    "ERROR: Link: shader 'a': 'f(float,float)' : function called but not defined\n"
	    "ERROR: Link: shader 'b': 'gain' : declared without qualifier here and 'uniform' in shader 'a'\n",
	    Link());
}

TEST_F(QlslLink, PulledInShadersBringTheirOwnCalleesButNeverClash)
{
	Compile(context, kRay, "float Leaf_k3() { return 1.0; }\n");
	Compile(context, kRay,
	        "float Leaf_k3();\nfloat Mid_k2() { return Leaf_k3(); }\nfloat Own() { return 2.0; }\n");
	Attach(kRay, "float Mid_k2();\nfloat Own() { return 3.0; }\nvoid main()\n{\n\tMid_k2();\n\tOwn();\n}\n",
	       "main");
	ASSERT_EQ("", Link());
	EXPECT_EQ(3u, ReferenceProgram::From(program)->GetLinkedShaders().size());
}

TEST_F(QlslLink, LocationsDoNotDependOnAttachOrder)
{
	const std::string root = ReadFixture("surface_root.qlray");
	const std::string graph = ReadFixture("surface_graph.qlray");
	const std::string vertex = ReadFixture("surface.qlvert");
	Attach(kVertex, vertex, "vertex");
	Attach(kRay, graph, "graph");
	Attach(kRay, root, "root");
	ASSERT_EQ("", Link());
	IQLProgram* reversed = program;
	program = context.CreateProgram();
	AttachSurface();
	ASSERT_EQ("", Link());
	for (const QLVariable& uniform : ReferenceProgram::From(program)->GetUniforms())
		EXPECT_EQ(uniform.location, reversed->GetUniformLocation(uniform.name.c_str())) << uniform.name;
	EXPECT_EQ(program->GetAttributeLocation("a_Position"), reversed->GetAttributeLocation("a_Position"));
	EXPECT_NE(program->GetHandle(), reversed->GetHandle());
}
