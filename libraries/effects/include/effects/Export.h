#pragma once

// Marks what the shared library exports; everything else in it is hidden. Static builds of the areas
// (tools, tests) see the same marks, which cost nothing there.
#if defined(__GNUC__) || defined(__clang__)
#define TARSEL_EFFECTS_EXPORT __attribute__((visibility("default")))
#else
#define TARSEL_EFFECTS_EXPORT
#endif
