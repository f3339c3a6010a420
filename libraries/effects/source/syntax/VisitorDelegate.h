#pragma once

#include "syntax/Visitor.h"

#include "core/Delegate.h"

namespace Tarsel::Effects
{

// Single-purpose visitors that hand every node of class N to a bound delegate. The node's children are
// walked first, so children reach the delegate before their parents.
template <class N, class P>
class TVisitorSyntaxDelegate : public Visitor
{
public:
	using Delegate = FastDelegate2<N*, P*, bool>;

	explicit TVisitorSyntaxDelegate(const Delegate& delegate) : _delegate(delegate) {}

	using Visitor::Visit;
	bool Visit(N* pNode, P* pParent) override
	{
		Visitor::Visit(pNode, pParent);
		return _delegate(pNode, pParent);
	}

private:
	Delegate _delegate;
};

// As TVisitorSyntaxDelegate for two node classes, so that two independent rewritings share one walk: on
// generated code of thousands of statements every walk is a trip through memory.
template <class N1, class N2, class P>
class TVisitorSyntaxDelegatePair : public Visitor
{
public:
	using Delegate1 = FastDelegate2<N1*, P*, bool>;
	using Delegate2 = FastDelegate2<N2*, P*, bool>;

	TVisitorSyntaxDelegatePair(const Delegate1& first, const Delegate2& second)
	    : _first(first), _second(second)
	{
	}

	using Visitor::Visit;
	bool Visit(N1* pNode, P* pParent) override
	{
		Visitor::Visit(pNode, pParent);
		return _first(pNode, pParent);
	}
	bool Visit(N2* pNode, P* pParent) override
	{
		Visitor::Visit(pNode, pParent);
		return _second(pNode, pParent);
	}

private:
	Delegate1 _first;
	Delegate2 _second;
};

template <class N, class P>
class TVisitorSyntaxConstDelegate : public Visitor
{
public:
	using Delegate = FastDelegate2<const N*, P*, bool>;

	explicit TVisitorSyntaxConstDelegate(const Delegate& delegate) : _delegate(delegate) {}

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
	using Delegate = FastDelegate3<N*, P*, A, bool>;

	TVisitorSyntaxDelegate1(const Delegate& delegate, A argument) : _delegate(delegate), _argument(argument)
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
