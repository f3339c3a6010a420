#pragma once

// Helpers shared by the node implementations; not part of the tree's interface.
#include "syntax/Module.h"

#include <vector>

namespace Tarsel::Effects::Detail
{

template <class T>
auto CloneNode(const T* pNode, Module* pModule) -> decltype(pNode->Clone(pModule))
{
	return pNode ? pNode->Clone(pModule) : nullptr;
}

// Optional children: two nulls are equal, one null differs.
template <class T, class U>
bool EqualNodes(const T* pA, const U* pB)
{
	if (!pA || !pB)
		return pA == pB;
	return pA->Equals(pB);
}

template <class T>
bool EqualSequences(const std::vector<T*>& vA, const std::vector<T*>& vB)
{
	if (vA.size() != vB.size())
		return false;
	for (size_t i = 0; i < vA.size(); ++i)
	{
		if (!EqualNodes(vA[i], vB[i]))
			return false;
	}
	return true;
}

// The other node as this node's class, or null when the classes differ.
template <class T, class B>
const T* SameClass(const B* pOther)
{
	return pOther && pOther->GetClass() == T::ClassStatic() ? static_cast<const T*>(pOther) : nullptr;
}

// Children of a sequence go from the last to the first.
template <class T>
void DestroySequence(std::vector<T*>& vNodes)
{
	for (size_t i = vNodes.size(); i-- > 0;)
		Syntax::Destroy(vNodes[i]);
	vNodes.clear();
}

// Strings are deleted only if the owner module still holds them.
inline void ReleaseString(Module* pModule, String*& pString)
{
	if (pModule && pString)
		pModule->DestroyString(pString);
	pString = nullptr;
}

inline bool ReplaceString(Module* pModule, String*& pField, String* pNew)
{
	if (pField != pNew)
	{
		ReleaseString(pModule, pField);
		pField = pNew;
	}
	return true;
}

inline String* CloneString(const String* pString, Module* pModule)
{
	return pString ? pString->Clone(pModule) : nullptr;
}

// Byte-wise order of texts; a missing text sorts first.
int CompareStrings(const String* pA, const String* pB);

template <class T>
T* WithRange(T* pClone, const Syntax* pSource)
{
	pClone->SetRange(pSource->GetRange());
	return pClone;
}

} // namespace Tarsel::Effects::Detail
