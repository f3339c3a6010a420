#pragma once

#include "syntax/Enumerations.h"

namespace Tarsel
{
class Result;
}

namespace Tarsel::Effects
{

class Expression;
class IMgrEffects;
class IStorage;

// Evaluation of declaration initializers on the host. Scalars accept constants and negations of them, or
// their type's constructor of one argument; vectors and matrices a constructor that broadcasts one argument
// or gives every component. Failures report to the manager's console and into the result.

// Evaluates pInitializer, of element type eType, into element index of the storage.
bool InitializeValue(IMgrEffects* pMgrEffects, IStorage* pStorage, TypeSpecifier eType,
                     const Expression* pInitializer, int index, Result* pResult);

// Evaluates an array initializer. An array constructor gives element i from argument i and sets the length
// of a resizable array (a fixed one must have the argument count as length); any other initializer fills
// every element of a fixed array and leaves a resizable one as it is.
bool InitializeValueArray(IMgrEffects* pMgrEffects, IStorage* pStorage, TypeSpecifier eType,
                          const Expression* pInitializer, bool bResizable, Result* pResult);

// The elements from iBegin up to iEnd of an array that has grown: evaluated from an initializer that is not
// an array constructor, left as the storage made them otherwise.
bool InitializeValueArrayPartial(IMgrEffects* pMgrEffects, IStorage* pStorage, TypeSpecifier eType,
                                 const Expression* pInitializer, int iBegin, int iEnd, Result* pResult);

// A call whose type is an array type: float[](1.0, 2.0).
bool IsArrayConstructor(const Expression* pExpression);

} // namespace Tarsel::Effects
