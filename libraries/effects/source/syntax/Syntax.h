#pragma once

// Everything of the syntax tree: nodes, module, strings, ranges, enumerations, visitors and parent links.
#include "syntax/Declaration.h"
#include "syntax/Enumerations.h"
#include "syntax/Expression.h"
#include "syntax/Module.h"
#include "syntax/ParentSyntax.h"
#include "syntax/Statement.h"
#include "syntax/SyntaxNode.h"
#include "syntax/Visitor.h"
#include "syntax/VisitorDelegate.h"
