// Preprocesses and parses one library from memory: the input is the main file followed by the files it may
// include or import, so that directives, macros and the parser all see arbitrary text.
#include "FuzzSupport.h"

#include "core/Result.h"
#include "effects/MgrEffects.h"
#include "quillon/Reference.h"

using namespace Tarsel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
	static Fuzz::Environment environment;
	const std::string input(reinterpret_cast<const char*>(data), size);
	environment.assets.Serve(Fuzz::SplitTexts(input, "main.tsl"));

	ReferenceContext context;
	// Differential support changes what the preprocessor defines; let the input choose it.
	context.SetDifferentialSupported(size % 2 == 0);
	Effects::MgrEffects manager;
	Result result;
	TARSEL_FUZZ_CHECK(manager.Init(&environment.console, &context, &result), "Init");
	// Failing is fine (an empty file fails without a word, by design); crashing, leaking or tripping an
	// internal check is not.
	manager.AddLibrary("main.tsl", &result);

	// Whatever the input did, the manager still takes a good library.
	Result after;
	TARSEL_FUZZ_CHECK(manager.AddLibrary("fuzz-after", "float Twice(float x) { return 2.0 * x; }\n", &after),
	                  after.GetMessages().empty() ? "" : after.GetMessages().front());
	manager.Shutdown();
	return 0;
}
