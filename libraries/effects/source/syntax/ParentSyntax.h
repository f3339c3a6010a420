#pragma once

#include "syntax/SyntaxNode.h"

namespace Tarsel::Effects
{

// Link between a child and the node holding it, handed to a visitor with every expression and statement.
class IParentSyntax
{
public:
	virtual Class GetClass() const = 0;
	// The node holding the child, or null.
	virtual Syntax* GetParent() const = 0;
	// The holder's own link, to walk upwards; null when unknown.
	virtual IParentSyntax* GetParentSyntax() const = 0;
	virtual ~IParentSyntax() = default;
};

// A link through which the visited node can be replaced; T is Expression or Statement.
template <class T>
class TIParentSyntax : public IParentSyntax
{
public:
	Class GetClass() const override { return T::ClassStatic(); }
	virtual bool HasReplacement() const = 0;
	// Refused (false, console message) while an earlier replacement is pending.
	virtual bool SetReplacement(T* pReplacement) = 0;
	virtual T* GetReplacement() const = 0;
	virtual bool ClearReplacement() = 0;
	// Hands the pending replacement to the holder, which deletes the old child.
	virtual bool Replace() = 0;
};

void ReportReplacementRefused();

// Pending-replacement bookkeeping shared by the replacing links.
template <class T>
class TParentSyntaxPending : public TIParentSyntax<T>
{
public:
	bool HasReplacement() const override { return _pReplacement && !_bApplied; }
	bool SetReplacement(T* pReplacement) override
	{
		if (HasReplacement())
		{
			ReportReplacementRefused();
			return false;
		}
		_pReplacement = pReplacement;
		_bApplied = false;
		return true;
	}
	T* GetReplacement() const override { return _pReplacement; }
	bool ClearReplacement() override
	{
		_pReplacement = nullptr;
		_bApplied = false;
		return true;
	}

protected:
	T* _pReplacement = nullptr;
	bool _bApplied = false;
};

// Replaces through a setter of the holder, which deletes the old child.
template <class T>
class TParentSyntaxDelegate : public TParentSyntaxPending<T>
{
public:
	using Setter = bool (*)(Syntax* pHolder, T* pNode);

	TParentSyntaxDelegate(Syntax* pHolder, IParentSyntax* pHolderLink, Setter pfnSetter)
	    : _pHolder(pHolder), _pHolderLink(pHolderLink), _pfnSetter(pfnSetter)
	{
	}
	// Binds a setter of the holder's class: TParentSyntaxDelegate<Expression>::Bind<&Subscript::SetIndex>(p,
	// l).
	template <auto Method, class H>
	static TParentSyntaxDelegate Bind(H* pHolder, IParentSyntax* pHolderLink)
	{
		return TParentSyntaxDelegate(pHolder, pHolderLink, &_Call<H, Method>);
	}

	Syntax* GetParent() const override { return _pHolder; }
	IParentSyntax* GetParentSyntax() const override { return _pHolderLink; }
	bool Replace() override
	{
		if (!this->HasReplacement())
			return false;
		this->_bApplied = true;
		return _pfnSetter(_pHolder, this->_pReplacement);
	}

private:
	template <class H, auto Method>
	static bool _Call(Syntax* pHolder, T* pNode)
	{
		return (static_cast<H*>(pHolder)->*Method)(pNode);
	}

	Syntax* _pHolder;
	IParentSyntax* _pHolderLink;
	Setter _pfnSetter;
};

// Replaces an element of the holder's sequence in place.
template <class T>
class TParentSyntaxVectorElement : public TParentSyntaxPending<T>
{
public:
	explicit TParentSyntaxVectorElement(T** ppElement) : _ppElement(ppElement) {}

	Syntax* GetParent() const override { return nullptr; }
	IParentSyntax* GetParentSyntax() const override { return nullptr; }
	bool Replace() override
	{
		if (!this->HasReplacement())
			return false;
		T* pOld = *_ppElement;
		*_ppElement = this->_pReplacement;
		this->_pReplacement = nullptr;
		if (pOld != *_ppElement)
			Syntax::Destroy(pOld);
		return true;
	}

private:
	T** _ppElement;
};

// For children that cannot be replaced; every request is accepted and ignored.
template <class T>
class TParentSyntaxNull : public TIParentSyntax<T>
{
public:
	Syntax* GetParent() const override { return nullptr; }
	IParentSyntax* GetParentSyntax() const override { return nullptr; }
	bool HasReplacement() const override { return false; }
	bool SetReplacement(T*) override { return true; }
	T* GetReplacement() const override { return nullptr; }
	bool ClearReplacement() override { return true; }
	bool Replace() override { return true; }
};

// A delegate link whose replacement must be of a narrower class than Expression; the policy R stores it.
template <class R>
class ParentExpressionPolicy : public TParentSyntaxDelegate<Expression>
{
public:
	ParentExpressionPolicy(typename R::Holder* pHolder, IParentSyntax* pHolderLink)
	    : TParentSyntaxDelegate<Expression>(pHolder, pHolderLink, &R::Replace)
	{
	}
};

// A replacement of the wrong class is refused: reported to the assert handler and deleted.
template <class H>
struct ReplaceFunction
{
	using Holder = H;
	static bool Replace(Syntax* pHolder, Expression* pNode);
};

template <class H>
struct ReplaceConditionTyped
{
	using Holder = H;
	static bool Replace(Syntax* pHolder, Expression* pNode);
};

// Read-only link: knows the holder, cannot replace.
template <class T>
class TParentSyntaxConst
{
public:
	explicit TParentSyntaxConst(const Syntax* pHolder = nullptr) : _pHolder(pHolder) {}
	virtual ~TParentSyntaxConst() = default;
	virtual const Syntax* GetParent() const { return _pHolder; }

private:
	const Syntax* _pHolder;
};

} // namespace Tarsel::Effects
