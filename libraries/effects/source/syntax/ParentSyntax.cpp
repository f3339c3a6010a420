#include "syntax/Syntax.h"

#include "core/Assert.h"
#include "core/Console.h"

namespace Tarsel::Effects
{

void ReportReplacementRefused()
{
	GetMgrConsole()->Message("%s", "TParentSyntaxDelegate::SetReplacement Not Replaced\n");
}

namespace
{

// The holder only accepts one class in this place; anything else is refused and deleted so that it does
// not leak with the link.
template <class N, class H, class Setter>
bool ReplaceNarrowed(Syntax* pHolder, Expression* pNode, Setter pfnSetter)
{
	const bool bAccepted = pNode && pNode->GetClass() == N::ClassStatic();
	TARSEL_ASSERT_MSG(bAccepted, "replacement of the wrong class");
	if (!bAccepted)
	{
		Syntax::Destroy(pNode);
		return false;
	}
	return (static_cast<H*>(pHolder)->*pfnSetter)(static_cast<N*>(pNode));
}

} // namespace

template <class H>
bool ReplaceFunction<H>::Replace(Syntax* pHolder, Expression* pNode)
{
	return ReplaceNarrowed<FunctionCall, H>(pHolder, pNode, &H::SetFunction);
}

template <class H>
bool ReplaceConditionTyped<H>::Replace(Syntax* pHolder, Expression* pNode)
{
	return ReplaceNarrowed<Condition, H>(pHolder, pNode, &H::SetCondition);
}

template struct ReplaceFunction<FunctionSelection>;
template struct ReplaceConditionTyped<ForStatement>;
template struct ReplaceConditionTyped<WhileStatement>;

} // namespace Tarsel::Effects
