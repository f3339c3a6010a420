#pragma once

#include "syntax/Visitor.h"

#include <functional>

namespace Tarsel::Effects
{

// Single-purpose visitors that hand every node of class N to a delegate, children before their parents.
template <class N, class P>
class TVisitorSyntaxDelegate : public Visitor
{
public:
	using Delegate = std::function<bool(N*, P*)>;

	explicit TVisitorSyntaxDelegate(Delegate delegate) : _delegate(std::move(delegate)) {}
	template <class O>
	TVisitorSyntaxDelegate(O* pObject, bool (O::*pfnMethod)(N*, P*))
	    : _delegate([pObject, pfnMethod](N* pNode, P* pParent)
	                { return (pObject->*pfnMethod)(pNode, pParent); })
	{
	}

	using Visitor::Visit;
	bool Visit(N* pNode, P* pParent) override
	{
		Visitor::Visit(pNode, pParent);
		return _delegate(pNode, pParent);
	}

private:
	Delegate _delegate;
};

template <class N, class P>
class TVisitorSyntaxConstDelegate : public Visitor
{
public:
	using Delegate = std::function<bool(const N*, P*)>;

	explicit TVisitorSyntaxConstDelegate(Delegate delegate) : _delegate(std::move(delegate)) {}
	template <class O>
	TVisitorSyntaxConstDelegate(O* pObject, bool (O::*pfnMethod)(const N*, P*))
	    : _delegate([pObject, pfnMethod](const N* pNode, P* pParent)
	                { return (pObject->*pfnMethod)(pNode, pParent); })
	{
	}

	using Visitor::Visit;
	bool Visit(const N* pNode, P* pParent) override
	{
		Visitor::Visit(pNode, pParent);
		return _delegate(pNode, pParent);
	}

private:
	Delegate _delegate;
};

// As TVisitorSyntaxDelegate, with one extra argument passed through to the delegate.
template <class N, class P, class A>
class TVisitorSyntaxDelegate1 : public Visitor
{
public:
	using Delegate = std::function<bool(N*, P*, A)>;

	TVisitorSyntaxDelegate1(Delegate delegate, A argument)
	    : _delegate(std::move(delegate)), _argument(std::move(argument))
	{
	}
	template <class O>
	TVisitorSyntaxDelegate1(O* pObject, bool (O::*pfnMethod)(N*, P*, A), A argument)
	    : _delegate([pObject, pfnMethod](N* pNode, P* pParent, A a)
	                { return (pObject->*pfnMethod)(pNode, pParent, a); }),
	      _argument(std::move(argument))
	{
	}

	using Visitor::Visit;
	bool Visit(N* pNode, P* pParent) override
	{
		Visitor::Visit(pNode, pParent);
		return _delegate(pNode, pParent, _argument);
	}

private:
	Delegate _delegate;
	A _argument;
};

} // namespace Tarsel::Effects
