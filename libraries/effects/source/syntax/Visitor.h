#pragma once

#include "syntax/Module.h"
#include "syntax/ParentSyntax.h"

namespace Tarsel::Effects
{

// Double-dispatch visitor. The default overloads walk the children (see Visitor.cpp for the order) and stop
// at the first false. Non-const walks apply replacements requested through the parent links. Walks recurse
// once per tree level (an override may call the base walk of its node, so the walk cannot be a loop);
// trees reaching the walk are expected to be no deeper than the parser's cap on tree height.
class Visitor
{
public:
	virtual ~Visitor() = default;

	virtual bool Visit(const Module* pModule);
	virtual bool Visit(Module* pModule);
	virtual bool Visit(const InterfaceDefinition* pNode);
	virtual bool Visit(InterfaceDefinition* pNode);
	virtual bool Visit(const ClassDefinition* pNode);
	virtual bool Visit(ClassDefinition* pNode);
	virtual bool Visit(const StructDefinition* pNode);
	virtual bool Visit(StructDefinition* pNode);
	virtual bool Visit(const FunctionParameter* pNode);
	virtual bool Visit(FunctionParameter* pNode);
	virtual bool Visit(const FunctionDefinition* pNode);
	virtual bool Visit(FunctionDefinition* pNode);
	virtual bool Visit(const FunctionPrototype* pNode);
	virtual bool Visit(FunctionPrototype* pNode);
	virtual bool Visit(const VariableDeclaration* pNode);
	virtual bool Visit(VariableDeclaration* pNode);
	virtual bool Visit(const UserType* pNode);
	virtual bool Visit(UserType* pNode);
	virtual bool Visit(const Type* pNode);
	virtual bool Visit(Type* pNode);
	virtual bool Visit(const JumpStatement* pNode, TParentSyntaxConst<Statement>* pParent);
	virtual bool Visit(JumpStatement* pNode, TIParentSyntax<Statement>* pParent);
	virtual bool Visit(const ForStatement* pNode, TParentSyntaxConst<Statement>* pParent);
	virtual bool Visit(ForStatement* pNode, TIParentSyntax<Statement>* pParent);
	virtual bool Visit(const DoWhileStatement* pNode, TParentSyntaxConst<Statement>* pParent);
	virtual bool Visit(DoWhileStatement* pNode, TIParentSyntax<Statement>* pParent);
	virtual bool Visit(const WhileStatement* pNode, TParentSyntaxConst<Statement>* pParent);
	virtual bool Visit(WhileStatement* pNode, TIParentSyntax<Statement>* pParent);
	virtual bool Visit(const SelectionStatement* pNode, TParentSyntaxConst<Statement>* pParent);
	virtual bool Visit(SelectionStatement* pNode, TIParentSyntax<Statement>* pParent);
	virtual bool Visit(const CompoundStatement* pNode, TParentSyntaxConst<Statement>* pParent);
	virtual bool Visit(CompoundStatement* pNode, TIParentSyntax<Statement>* pParent);
	virtual bool Visit(const ExpressionStatement* pNode, TParentSyntaxConst<Statement>* pParent);
	virtual bool Visit(ExpressionStatement* pNode, TIParentSyntax<Statement>* pParent);
	virtual bool Visit(const DeclarationStatement* pNode, TParentSyntaxConst<Statement>* pParent);
	virtual bool Visit(DeclarationStatement* pNode, TIParentSyntax<Statement>* pParent);
	virtual bool Visit(const EmptyStatement* pNode, TParentSyntaxConst<Statement>* pParent);
	virtual bool Visit(EmptyStatement* pNode, TIParentSyntax<Statement>* pParent);
	virtual bool Visit(const Condition* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(Condition* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const FunctionCall* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(FunctionCall* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const Subscript* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(Subscript* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const FunctionSelection* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(FunctionSelection* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const FieldSelection* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(FieldSelection* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const Variable* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(Variable* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const Conditional* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(Conditional* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const BinaryOperator* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(BinaryOperator* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const PostOperator* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(PostOperator* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const UnaryOperator* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(UnaryOperator* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const FloatConstant* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(FloatConstant* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const IntConstant* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(IntConstant* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const BoolConstant* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(BoolConstant* pNode, TIParentSyntax<Expression>* pParent);
	virtual bool Visit(const Assignment* pNode, TParentSyntaxConst<Expression>* pParent);
	virtual bool Visit(Assignment* pNode, TIParentSyntax<Expression>* pParent);

protected:
	// Visits one replaceable child through its link, then every replacement put in its place.
	template <class T>
	bool _VisitChild(T* pChild, TIParentSyntax<T>* pLink)
	{
		if (!pChild)
			return true;
		if (!pChild->AcceptVisitor(this, pLink))
			return false;
		while (pLink->HasReplacement())
		{
			T* pReplacement = pLink->GetReplacement();
			if (!pLink->Replace())
				return false; // refused by the holder; the walk stops
			if (!pReplacement->AcceptVisitor(this, pLink))
				return false;
		}
		return true;
	}
	// A child replaceable through the holder's setter Method.
	template <auto Method, class T, class H>
	bool _VisitBound(H* pHolder, IParentSyntax* pHolderLink, T* pChild)
	{
		auto link = TParentSyntaxDelegate<T>::template Bind<Method>(pHolder, pHolderLink);
		return _VisitChild<T>(pChild, &link);
	}
	template <class T>
	bool _VisitChild(const T* pChild, const Syntax* pHolder)
	{
		TParentSyntaxConst<T> link(pHolder);
		return !pChild || pChild->AcceptVisitor(this, &link);
	}
	// Each element of a sequence, replaceable in place; indices stay valid if a visit appends.
	template <class T>
	bool _VisitElements(std::vector<T*>& vElements)
	{
		for (size_t i = 0; i < vElements.size(); ++i)
		{
			TParentSyntaxVectorElement<T> link(&vElements[i]);
			if (!_VisitChild<T>(vElements[i], &link))
				return false;
		}
		return true;
	}
	template <class T>
	bool _VisitElements(const std::vector<T*>& vElements, const Syntax* pHolder)
	{
		for (const T* pElement : vElements)
		{
			if (!_VisitChild<T>(pElement, pHolder))
				return false;
		}
		return true;
	}
	// Declarations and other nodes without a parent link.
	template <class T>
	bool _VisitAll(const std::vector<T*>& vNodes)
	{
		for (size_t i = 0; i < vNodes.size(); ++i)
		{
			if (vNodes[i] && !vNodes[i]->AcceptVisitor(this))
				return false;
		}
		return true;
	}
	template <class T>
	bool _VisitAllConst(const std::vector<T*>& vNodes)
	{
		for (size_t i = 0; i < vNodes.size(); ++i)
		{
			const T* pNode = vNodes[i];
			if (pNode && !pNode->AcceptVisitor(this))
				return false;
		}
		return true;
	}
};

} // namespace Tarsel::Effects
