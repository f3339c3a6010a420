// Runs each end-to-end scenario once per failable device call, failing the k-th call for k = 1, 2, ...
// until a run reaches no injection. Every failure must be reported by the operation that met it, leave
// no device object and no memory behind, and leave the manager and the device usable.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>

#include "codegen/VisitorPrintTsl.h"
#include "core/Assert.h"
#include "core/Assets.h"
#include "core/Console.h"
#include "core/Result.h"
#include "effects/IEffect.h"
#include "effects/IReferenceEffect.h"
#include "effects/IShader.h"
#include "effects/MgrEffects.h"
#include "objects/Library.h"
#include "quillon/FaultInjection.h"
#include "quillon/Reference.h"
#include "values/ValueFactory.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{

// What a scenario run came to. Wrong is the failure that matters most: every call answered success, yet
// the outcome is not what was asked for.
enum class Outcome
{
	kDone,
	kReported,
	kWrong
};

struct Attempt
{
	Outcome eOutcome = Outcome::kDone;
	std::string sWhat;

	bool Reported(const std::string& sStep)
	{
		eOutcome = Outcome::kReported;
		sWhat = sStep;
		return false;
	}
	bool Wrong(const std::string& sStep)
	{
		eOutcome = Outcome::kWrong;
		sWhat = sStep;
		return false;
	}
};

std::string ReadFixture(const std::string& sPath)
{
	IAsset::Status status;
	IAsset* pAsset = GetMgrAssets()->Acquire(Path(sPath.c_str()), 1, status);
	std::string sText = pAsset ? pAsset->GetData() : "";
	GetMgrAssets()->Release(pAsset);
	return sText;
}

// What every scenario works on; it outlives the failed run so that the rerun proves it still works.
struct Host
{
	RecordingConsole console;
	ScopedMgrConsole scopedConsole{&console};
	RecordingAssertHandler asserts;
	ScopedAssertHandler scopedAsserts{&asserts};
	ReferenceContext context;
	MgrEffects manager;
	int nLibraries = 0;

	Host()
	{
		Result result;
		EXPECT_TRUE(manager.Init(&console, &context, &result));
	}
	~Host() { manager.Shutdown(); }

	// Library names stay unique, since a second library of a name is refused.
	std::string NextName(const std::string& sBase) { return sBase + "#" + std::to_string(++nLibraries); }
};

// Device objects released whatever happens, as a careful host would.
struct DeviceObjects
{
	explicit DeviceObjects(ReferenceContext& rContext) : context(rContext) {}

	ReferenceContext& context;
	IQLProgram* pProgram = nullptr;
	std::vector<IQLShader*> vShaders;

	~DeviceObjects()
	{
		context.DestroyProgram(pProgram);
		for (IQLShader* pShader : vShaders)
			context.DestroyShader(pShader);
	}

	// Compiles each (text, type) and links them into one program.
	bool Link(Attempt& run, const std::vector<std::pair<std::string, int>>& vTexts)
	{
		pProgram = context.CreateProgram();
		if (!pProgram)
			return run.Reported("CreateProgram");
		for (const auto& [sText, iType] : vTexts)
		{
			IQLShader* pShader = context.CreateShader(iType);
			if (!pShader)
				return run.Reported("CreateShader");
			vShaders.push_back(pShader);
			std::vector<std::string> vErrors;
			if (!pShader->SetString(sText, vErrors))
				return vErrors.empty() ? run.Wrong("compile failed silently") : run.Reported(vErrors.front());
			if (!pProgram->AttachShader(pShader))
				return run.Reported("AttachShader");
		}
		std::vector<std::string> vErrors;
		if (!pProgram->Link(vErrors))
			return vErrors.empty() ? run.Wrong("link failed silently") : run.Reported(vErrors.front());
		return true;
	}
};

typedef std::function<bool(Host&, Attempt&)> Scenario;

bool LoadWithIncludes(Host& host, Attempt& run)
{
	GetMgrAssets()->AddSearchRoot(Path(TARSEL_SHADERS_DIR));
	Result result;
	const bool bLoaded = host.manager.AddLibrary(std::string(TARSEL_SHADERS_DIR) + "/Surfaces.tsl", &result);
	GetMgrAssets()->ClearSearchRoots();
	return bLoaded || run.Reported("AddLibrary");
}

// A library printed as the graph shader would be, linked with a vertex stage.
bool PrintAndLink(Host& host, Attempt& run, const std::string& sFile)
{
	const std::string sData = TARSEL_TEST_DATA_DIR;
	Result result;
	Library library;
	if (!library.Init(&host.manager, host.NextName(sFile), ReadFixture(sData + "/print/" + sFile), &result,
	                  0))
		return run.Wrong("library " + sFile + " did not parse");
	VisitorPrintTsl printer(&result, &host.manager, false);
	const bool bPrinted = printer.Visit(library.GetModule());
	library.Shutdown();
	if (!bPrinted)
		return run.Wrong("library " + sFile + " did not print");
	DeviceObjects objects(host.context);
	return objects.Link(run, {{printer.result(), IQLShader::kType_Ray},
	                          {ReadFixture(sData + "/print/vertex.qlvert"), IQLShader::kType_Vertex}});
}

// Stand-in for the array parameter that owns a buffer storage.
struct BlockOwner
{
	std::string GetNameMangled() const { return "weights_k1_k2"; }
};

const char* const kStorageProgram = "uniform float gain_k1;\n"
                                    "uniform vec3 color_k2;\n"
                                    "uniform int counts_k3[2];\n"
                                    "uniformblock weights_k1_k2\n"
                                    "{\n"
                                    "\tvec3 a[4];\n"
                                    "};\n"
                                    "void main()\n"
                                    "{\n"
                                    "}\n";

// Separate and buffer storages set, grown and applied to a primitive under a linked program.
bool ApplyStorages(Host& host, Attempt& run)
{
	DeviceObjects objects(host.context);
	if (!objects.Link(run, {{kStorageProgram, IQLShader::kType_Ray}}))
		return false;
	IQLProgram* pProgram = objects.pProgram;

	std::unique_ptr<IStorage> pGain(CreateStorageSeparate(&host.manager, kType_Float, 1, false));
	std::unique_ptr<IStorage> pColor(CreateStorageSeparate(&host.manager, kType_Vec3, 1, false));
	std::unique_ptr<IStorage> pCounts(CreateStorageSeparate(&host.manager, kType_Int, 2, false));
	BlockOwner owner;
	std::unique_ptr<IStorage> pWeights(CreateStorageBuffer(&host.manager, &owner, kType_Vec3, 2, true));
	if (!pGain || !pColor || !pCounts)
		return run.Wrong("separate storage");
	if (!pWeights)
		return run.Reported("CreateStorageBuffer");
	const int aCounts[2] = {4, 5};
	if (!pGain->Set(0.5f, 0) || !pColor->Set(Vector3f(1, 2, 3), 0) || !pCounts->Set(aCounts, 2))
		return run.Wrong("separate Set");
	if (!pWeights->Set(Vector3f(7, 8, 9), 1))
		return run.Reported("buffer Set");
	if (!pWeights->SetLength(4))
		return run.Reported("buffer SetLength");
	if (!pWeights->Set(Vector3f(1, 1, 1), 3))
		return run.Reported("buffer Set after growth");

	ReferencePrimitive primitive;
	qlUseProgram(pProgram);
	const bool bApplied =
	    pGain->Apply(&primitive, pProgram, "gain_k1", pProgram->GetUniformLocation("gain_k1")) &&
	    pColor->Apply(&primitive, pProgram, "color_k2", pProgram->GetUniformLocation("color_k2")) &&
	    pCounts->Apply(&primitive, pProgram, "counts_k3", pProgram->GetUniformLocation("counts_k3")) &&
	    pWeights->Apply(&primitive, pProgram, "", pProgram->GetUniformBlockLocation("weights_k1_k2"));
	qlUseProgram(static_cast<IQLProgram*>(nullptr));
	if (!bApplied)
		return run.Reported("Apply");
	if (!primitive.GetViolations().empty())
		return run.Wrong(primitive.GetViolations().front());

	// What reached the device is what was set, the value set before the growth included.
	Vector3f weights[4];
	const IQLBuffer* pBuffer = primitive.LastByName("weights_k1_k2")->buffer;
	const ReferenceBuffer* pReference = static_cast<const ReferenceBuffer*>(pBuffer);
	if (!pReference || pReference->GetSize() != sizeof(weights))
		return run.Wrong("block buffer size");
	std::memcpy(weights, pReference->GetBytes(), sizeof(weights));
	if (!(weights[1] == Vector3f(7, 8, 9)) || !(weights[3] == Vector3f(1, 1, 1)))
		return run.Wrong("block contents");
	if (!primitive.ExpectFloat(pProgram->GetUniformLocation("gain_k1"), 0.5f).empty())
		return run.Wrong("gain");
	return true;
}

const char* const kEffectLibrary = R"(
interface Surface { void Shade(); }
class Flat : Surface
{
	output vec3 o_color;
	input float gain = 2.0;
	input vec3 tint = vec3(1.0, 0.5, 0.25);
	void Shade() { accumulate(o_color, tint * gain); }
}
)";

// Shaders and effects given back whatever happens, as a careful host would.
struct EffectObjects
{
	explicit EffectObjects(Host& rHost) : host(rHost) {}
	~EffectObjects()
	{
		host.manager.DestroyEffectSurface(pEffect);
		host.manager.DestroyShader(pShader);
	}

	Host& host;
	IShader* pShader = nullptr;
	IEffect* pEffect = nullptr;
};

// A surface effect compiled, applied to two primitives, then a value change replayed on both.
bool CompileAndApplyEffect(Host& host, Attempt& run)
{
	Result result;
	if (!host.manager.AddLibrary(host.NextName("Effects.tsl"), kEffectLibrary, &result))
		return run.Wrong("effect library did not parse");
	EffectObjects objects(host);
	objects.pShader = host.manager.CreateShader("Flat", &result);
	if (objects.pShader == nullptr)
		return run.Wrong("CreateShader");
	objects.pEffect = host.manager.CreateEffectSurface();
	if (objects.pEffect == nullptr)
		return run.Reported("CreateEffectSurface");
	ReferencePrimitive primitives[2];
	if (!objects.pEffect->SetRoot(objects.pShader))
		return run.Wrong("SetRoot");
	for (ReferencePrimitive& primitive : primitives)
		objects.pEffect->CreateReference(&primitive);
	if (!host.manager.Update(&result))
		return run.Reported("Update compile");
	if (!objects.pShader->SetParameter(nullptr, "gain", 3.0f))
		return run.Wrong("SetParameter");
	if (!host.manager.Update(&result))
		return run.Reported("Update replay");
	for (ReferencePrimitive& primitive : primitives)
	{
		if (!primitive.GetViolations().empty())
			return run.Wrong(primitive.GetViolations().front());
		const QLWrite& last = primitive.GetWrites().back();
		if (last.setter != kQLSetter_Float || last.Values<float>() != std::vector<float>{3.0f})
			return run.Wrong("replayed value");
	}
	return true;
}

bool HasLeaks()
{
#if defined(__SANITIZE_ADDRESS__)
	return __lsan_do_recoverable_leak_check() != 0;
#else
	return false;
#endif
}

// Fails each failable call of the scenario in turn; answers the number of calls failed.
int InjectEveryCall(const Scenario& scenario)
{
	for (int k = 1;; ++k)
	{
		SCOPED_TRACE("failing device call " + std::to_string(k));
		bool bInjected = false;
		std::string sSite;
		{
			Host host;
			Attempt failed;
			{
				ScopedQLFault fault(k);
				scenario(host, failed);
				bInjected = QLFaultInjection::WasInjected();
				sSite = QLFaultInjection::GetSite();
			}
			if (bInjected)
				EXPECT_EQ(Outcome::kReported, failed.eOutcome) << sSite << ": " << failed.sWhat;
			else
				EXPECT_EQ(Outcome::kDone, failed.eOutcome) << failed.sWhat;
			EXPECT_EQ(0u, host.context.GetCountPrograms() + host.context.GetCountShaders() +
			                  host.context.GetCountBuffers())
			    << "device objects left after failing " << sSite;

			Attempt again;
			EXPECT_TRUE(scenario(host, again)) << "after failing " << sSite << ": " << again.sWhat;
			EXPECT_TRUE(host.asserts.GetReports().empty())
			    << "after failing " << sSite << ": " << host.asserts.GetReports().front().sExpression;
		}
		EXPECT_FALSE(HasLeaks()) << "memory left after failing device call " << k;
		if (!bInjected || k > 1000)
			return k - 1;
	}
}

} // namespace

TEST(FaultInjection, LibraryLoadWithIncludes)
{
	// Loading reaches no device call today; the run proves the loop ends and the load succeeds.
	EXPECT_EQ(0, InjectEveryCall(LoadWithIncludes));
}

TEST(FaultInjection, PrintedLibrariesCompileAndLink)
{
	int nPoints = 0;
	for (const char* pFile : {"control.tsl", "operators.tsl", "shading.tsl"})
	{
		SCOPED_TRACE(pFile);
		nPoints +=
		    InjectEveryCall([pFile](Host& host, Attempt& run) { return PrintAndLink(host, run, pFile); });
	}
	// Per library: program, two shaders, two compiles, two attaches, one link.
	EXPECT_EQ(3 * 8, nPoints);
}

TEST(FaultInjection, StoragesApplyToLinkedProgram)
{
	const int nPoints = InjectEveryCall(ApplyStorages);
	EXPECT_GE(nPoints, 10);
	std::printf("storage scenario: %d injection points\n", nPoints);
}

TEST(FaultInjection, EffectsCompileAndApply)
{
	const int nPoints = InjectEveryCall(CompileAndApplyEffect);
	// Program, three shaders, three compiles, four attaches, one link and the writes.
	EXPECT_GE(nPoints, 12);
	std::printf("effect scenario: %d injection points\n", nPoints);
}

// The countdown itself: only the k-th call fails, and a disarmed device counts nothing.
TEST(FaultInjection, CountdownFailsExactlyTheArmedCall)
{
	ReferenceContext context;
	{
		ScopedQLFault fault(2);
		IQLShader* pFirst = context.CreateShader(IQLShader::kType_Ray);
		std::vector<std::string> vErrors;
		EXPECT_FALSE(pFirst->SetString("void main() {}", vErrors));
		EXPECT_EQ(std::vector<std::string>{"ERROR: Compile: failure injected"}, vErrors);
		EXPECT_EQ("Compile", QLFaultInjection::GetSite());
		vErrors.clear();
		EXPECT_TRUE(pFirst->SetString("void main() {}", vErrors)) << vErrors.front();
		EXPECT_EQ(3, QLFaultInjection::GetCountCalls());
	}
	EXPECT_FALSE(QLFaultInjection::WasInjected());
	EXPECT_NE(nullptr, context.CreateBuffer());
	EXPECT_EQ(0, QLFaultInjection::GetCountCalls());
}
