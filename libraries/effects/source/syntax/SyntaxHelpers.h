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

// Long chains of one node class through one child (sums nest to the left, assignments to the right,
// else-if chains through the else branch) are cloned and compared along that spine in a loop, so that
// their length costs no stack. Next gives a node's spine child; Make builds a node's clone around the
// clone of its spine child; Same compares everything of two nodes but the spine child.
template <class T, class Base, class Next, class Make>
Base* CloneSpine(const T* pTop, Module* pModule, Next next, Make make)
{
	std::vector<const T*> vSpine;
	const Base* pBottom = pTop;
	while (pBottom && pBottom->GetClass() == T::ClassStatic())
	{
		vSpine.push_back(static_cast<const T*>(pBottom));
		pBottom = next(vSpine.back());
	}
	Base* pClone = CloneNode(pBottom, pModule);
	for (size_t i = vSpine.size(); i-- > 0;)
		pClone = WithRange(make(vSpine[i], pClone), vSpine[i]);
	return pClone;
}

template <class T, class Base, class Next, class Same>
bool EqualSpines(const T* pTop, const Base* pOther, Next next, Same same)
{
	const Base* pA = pTop;
	const Base* pB = pOther;
	while (pA && pA->GetClass() == T::ClassStatic())
	{
		const T* pNodeA = static_cast<const T*>(pA);
		const T* pNodeB = SameClass<T>(pB);
		if (!pNodeB || !same(pNodeA, pNodeB))
			return false;
		pA = next(pNodeA);
		pB = next(pNodeB);
	}
	return EqualNodes(pA, pB);
}

} // namespace Tarsel::Effects::Detail
