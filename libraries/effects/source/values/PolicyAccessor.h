#pragma once

#include "quillon/QLTypes.h"
#include "values/AccessSeparate.h"
#include "values/IStorage.h"

namespace Tarsel::Effects
{

// Stacks Layer<..., T> once per element type, so each typed form is written once for all its types.
template <class Base, template <class, class> class Layer, class... Ts>
struct FoldLayers
{
	typedef Base Type;
};
template <class Base, template <class, class> class Layer, class T, class... Ts>
struct FoldLayers<Base, Layer, T, Ts...>
{
	typedef Layer<typename FoldLayers<Base, Layer, Ts...>::Type, T> Type;
};

// Every layer keeps the forms of the layers below visible. Each form answers false when the parameter has
// no storage (its Init failed, or it was shut down).
#define TARSEL_ACCESSOR_LAYER_BASE                                                                           \
public:                                                                                                      \
	using Base::Base;                                                                                        \
	using Base::Get;                                                                                         \
	using Base::Set;

template <class Base, class T>
class AccessorReferenceOffset : public Base
{
	TARSEL_ACCESSOR_LAYER_BASE
	bool Set(const T& value, int index) { return this->_pStorage && this->_pStorage->Set(value, index); }
	bool Get(T& value, int index) const { return this->_pStorage && this->_pStorage->Get(value, index); }
};

template <class Base, class T>
class AccessorReference : public Base
{
	TARSEL_ACCESSOR_LAYER_BASE
	bool Set(const T& value) { return this->_pStorage && this->_pStorage->Set(value, 0); }
	bool Get(T& value) const { return this->_pStorage && this->_pStorage->Get(value, 0); }
};

// Small types come by value; the storage takes a reference to a local copy.
template <class Base, class T>
class AccessorValueOffset : public Base
{
	TARSEL_ACCESSOR_LAYER_BASE
	bool Set(T value, int index)
	{
		const T tCopy = value;
		return this->_pStorage && this->_pStorage->Set(tCopy, index);
	}
	bool Get(T& value, int index) const { return this->_pStorage && this->_pStorage->Get(value, index); }
};

template <class Base, class T>
class AccessorValue : public Base
{
	TARSEL_ACCESSOR_LAYER_BASE
	bool Set(T value)
	{
		const T tCopy = value;
		return this->_pStorage && this->_pStorage->Set(tCopy, 0);
	}
	bool Get(T& value) const { return this->_pStorage && this->_pStorage->Get(value, 0); }
};
#undef TARSEL_ACCESSOR_LAYER_BASE

#define TARSEL_TYPES_BY_REFERENCE                                                                            \
	Vector2i, Vector3i, Vector4i, Vector2f, Vector3f, Vector4f, Matrix33f, Matrix44f
#define TARSEL_TYPES_BY_VALUE bool, int, float, QLprimitive, QLtexture*

template <class Base>
class PolicyAccessorReferenceOffsetStorage
    : public FoldLayers<Base, AccessorReferenceOffset, TARSEL_TYPES_BY_REFERENCE>::Type
{
public:
	using FoldLayers<Base, AccessorReferenceOffset, TARSEL_TYPES_BY_REFERENCE>::Type::Type;
};

template <class Base>
class PolicyAccessorReferenceStorage
    : public FoldLayers<Base, AccessorReference, TARSEL_TYPES_BY_REFERENCE>::Type
{
public:
	using FoldLayers<Base, AccessorReference, TARSEL_TYPES_BY_REFERENCE>::Type::Type;
};

template <class Base>
class PolicyAccessorValueOffsetStorage
    : public FoldLayers<Base, AccessorValueOffset, TARSEL_TYPES_BY_VALUE>::Type
{
public:
	using FoldLayers<Base, AccessorValueOffset, TARSEL_TYPES_BY_VALUE>::Type::Type;
};

template <class Base>
class PolicyAccessorValueStorage : public FoldLayers<Base, AccessorValue, TARSEL_TYPES_BY_VALUE>::Type
{
public:
	using FoldLayers<Base, AccessorValue, TARSEL_TYPES_BY_VALUE>::Type::Type;
};

#undef TARSEL_TYPES_BY_REFERENCE
#undef TARSEL_TYPES_BY_VALUE

// What a single value parameter adds over its storage: applying under its mangled name and renaming
// references to its declared name. P supplies _pStorage, GetName() and GetNameMangled().
template <class P>
class FacadeParameterValueSingle : public P
{
public:
	using P::P;

	bool Apply(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation)
	{
		return this->_pStorage &&
		       this->_pStorage->Apply(pPrimitive, pProgram, this->GetNameMangled(), iLocation);
	}

	bool VisitTransformations(IAccess::VisitorTransformation& delegate)
	{
		TVisitorSyntaxDelegate<Variable, TIParentSyntax<Expression>> visitor(
		    MakeDelegate(this, &FacadeParameterValueSingle::_RenameReference));
		return delegate(kClass_Variable, &visitor);
	}

private:
	bool _RenameReference(Variable* pVariable, TIParentSyntax<Expression>* pParent)
	{
		return RenameVariable(pVariable, pParent, this->GetName(), this->GetNameMangled());
	}
};

// The typed Set/Get family of a single value parameter, every form forwarding to its storage.
template <class P>
using ParameterValueSingleAccessors = PolicyAccessorValueStorage<PolicyAccessorValueOffsetStorage<
    PolicyAccessorReferenceStorage<PolicyAccessorReferenceOffsetStorage<FacadeParameterValueSingle<P>>>>>;

} // namespace Tarsel::Effects
