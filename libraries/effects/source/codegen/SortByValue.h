#pragma once

#include "syntax/Syntax.h"

#include <vector>

namespace Tarsel::Effects
{

// Puts a module's table in the nodes' own order (their operator<), stably, as the printer lays a program
// out. Each node's leading fields and name are read once into a compact key, so that sorting thousands of
// declarations does not chase every node at every comparison; only equal keys go back to the nodes.
void SortByValue(std::vector<StructDefinition*>& vNodes);
void SortByValue(std::vector<DeclarationStatement*>& vNodes);
void SortByValue(std::vector<FunctionPrototype*>& vNodes);
void SortByValue(std::vector<FunctionDefinition*>& vNodes);

} // namespace Tarsel::Effects
