#include "LightsTestSupport.h"

namespace Tarsel::Effects::Testing
{
namespace
{

size_t Count(const std::string& text, const std::string& part)
{
	size_t n = 0;
	for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
		++n;
	return n;
}

// A surface lit through the manager class by lights of two classes, compiled on the reference device.
class LightGraphTest : public LightsTest
{
protected:
	LightGraphTest()
	{
		EXPECT_TRUE(InitLights());
		matte = Create("MatteLightSet");
		receiver = lights.CreateShader("LightManagerArray", nullptr);
	}

	void Connect(int nPoints, int nDirects)
	{
		IParameter* input = receiver->GetParameter("lights");
		const int nBefore = int(connected.size());
		ASSERT_TRUE(input->SetLength(nBefore + nPoints + nDirects));
		for (int i = 0; i < nPoints + nDirects; ++i)
		{
			connected.push_back(Light(i < nPoints ? "LightPointArray" : "LightDirectArray"));
			ASSERT_TRUE(input->Set(connected.back(), nBefore + i));
		}
	}
	std::string Illuminate(const std::string& sClass)
	{
		return ArrayShader(sClass)->GetMethodNameMangled("Illuminate") +
		       "(int i, vec3 P, vec3 N, out vec3 L)\n{";
	}

	IShader* matte = nullptr;
	IShader* receiver = nullptr;
	std::vector<IShader*> connected;
};

TEST_F(LightGraphTest, ThreeLightsOfTwoClassesCompileIntoOneShaderPerClass)
{
	Connect(2, 1);
	Result result;
	ASSERT_TRUE(matte->SetParameter(&result, "lightSet", receiver)) << result.GetText();
	ASSERT_TRUE(matte->IsComplete());
	IGraph* graph = matte->GetGraphSurface();
	Compile(graph);
	const std::string text = Text(graph);
	EXPECT_EQ(Count(text, Illuminate("LightPointArray")), 1u) << text;
	EXPECT_EQ(Count(text, Illuminate("LightDirectArray")), 1u) << text;
	// The manager dispatches to one slot per class, whatever the number of lights.
	const size_t dispatch = text.find("_Illuminate(int iThis, int i, vec3 P, vec3 N, out vec3 L)\n{");
	ASSERT_NE(dispatch, std::string::npos) << text;
	EXPECT_EQ(Count(text.substr(dispatch, text.find("\n}\n", dispatch) - dispatch), "(iThis=="), 2u) << text;

	// More lights of the same classes leave the program as it was.
	Connect(20, 5);
	Compile(graph);
	EXPECT_EQ(Text(graph), text);
}

} // namespace
} // namespace Tarsel::Effects::Testing
