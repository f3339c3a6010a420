#include "objects/ParameterValueExpression.h"

#include "core/Assert.h"
#include "core/Result.h"
#include "objects/ParameterValueConsole.h"
#include "syntax/Syntax.h"
#include "values/IStorage.h"
#include "values/ValueTraits.h"

#include <climits>
#include <cmath>

namespace Tarsel::Effects
{

namespace
{
// Where an evaluation reports: fixed texts to the console, user-facing ones into the result.
class Report
{
public:
	Report(IMgrEffects* pMgrEffects, Result* pResult) : _pMgrEffects(pMgrEffects), _pResult(pResult) {}

	void Console(const char* pText) const { ConsoleOf(_pMgrEffects)->Message("%s", pText); }
	void Add(const std::string& sText) const
	{
		if (_pResult)
			_pResult->Add("%s", sText.c_str());
	}
	void AddUnsupported(const Expression* pExpression) const
	{
		Add(pExpression->GetRange().GetLocationText() + ": Unsupported Initializer");
	}

private:
	IMgrEffects* _pMgrEffects;
	Result* _pResult;
};

const FunctionCall* AsConstructor(const Expression* pExpression)
{
	if (!pExpression || pExpression->GetClass() != kClass_FunctionCall)
		return nullptr;
	const FunctionCall* pCall = static_cast<const FunctionCall*>(pExpression);
	return pCall->GetType() ? pCall : nullptr;
}

// Numbers are evaluated in double, with float literals cut toward zero at the leaves of int initializers.
bool GetNumber(const Report& report, const Expression* pExpression, bool bInt, double& dValue)
{
	switch (pExpression->GetClass())
	{
	case kClass_IntConstant:
		dValue = double(static_cast<const IntConstant*>(pExpression)->GetValue());
		return true;
	case kClass_FloatConstant:
		dValue = static_cast<const FloatConstant*>(pExpression)->GetValue();
		if (bInt)
			dValue = std::trunc(dValue);
		return true;
	case kClass_UnaryOperator:
	{
		const UnaryOperator* pUnary = static_cast<const UnaryOperator*>(pExpression);
		if (pUnary->GetOperator() != kOperator_Subtract)
		{
			report.Console("_GetExpressionValueUnaryOperator Unsupported Operator\n");
			report.Add(OperatorToString(pUnary->GetOperator()));
			report.Add("Unsupported unary operator");
			return false;
		}
		if (!GetNumber(report, pUnary->GetExpression(), bInt, dValue))
			return false;
		dValue = -dValue;
		return true;
	}
	default:
		report.Console("_GetExpressionValue Unsupported Expression\n");
		report.Add(ClassToString(pExpression->GetClass()));
		report.Add("Unsupported Expression");
		return false;
	}
}

// The scalar constant forms.
bool GetExpressionValue(const Report& report, const Expression* pExpression, bool& bValue)
{
	if (pExpression->GetClass() == kClass_BoolConstant)
	{
		bValue = static_cast<const BoolConstant*>(pExpression)->GetValue();
		return true;
	}
	report.Console("_GetExpressionValue Unsupported Expression Bool\n");
	report.Add(ClassToString(pExpression->GetClass()));
	report.Add("Unsupported boolean expression");
	return false;
}

bool GetExpressionValue(const Report& report, const Expression* pExpression, float& fValue)
{
	double dValue = 0;
	if (!GetNumber(report, pExpression, false, dValue))
		return false;
	fValue = float(dValue);
	return true;
}

bool GetExpressionValue(const Report& report, const Expression* pExpression, int& iValue)
{
	double dValue = 0;
	if (!GetNumber(report, pExpression, true, dValue))
		return false;
	if (dValue < double(INT_MIN) || dValue > double(INT_MAX))
	{
		report.Console("_GetExpressionValue Unsupported Expression\n");
		report.Add(ClassToString(pExpression->GetClass()));
		report.Add("Unsupported Expression");
		return false;
	}
	iValue = int(dValue);
	return true;
}

// A scalar: a constant form, or the type's own constructor of one argument evaluated by the same rules.
template <class T>
bool EvaluateScalar(const Report& report, const Expression* pExpression, T& value)
{
	if (pExpression->GetClass() != kClass_FunctionCall)
		return GetExpressionValue(report, pExpression, value);
	const FunctionCall* pCall = AsConstructor(pExpression);
	if (!pCall || pCall->GetType()->IsArray() ||
	    pCall->GetType()->GetTypeSpecifier() != ValueTraits<T>::Specifier() ||
	    pCall->GetCountParameters() != 1)
	{
		report.AddUnsupported(pExpression);
		return false;
	}
	return EvaluateScalar(report, pCall->GetParameters()[0], value);
}

// Vectors and matrices built from components C: N of them, or one that every component (a vector) or the
// diagonal (a matrix) takes.
template <class V, class C, int N>
struct Composite
{
	static V Broadcast(C component)
	{
		C aComponents[N];
		std::fill(aComponents, aComponents + N, component);
		return V(aComponents);
	}
};
template <>
struct Composite<Matrix33f, float, 9>
{
	static Matrix33f Broadcast(float fDiagonal) { return Matrix33f(fDiagonal); }
};
template <>
struct Composite<Matrix44f, float, 16>
{
	static Matrix44f Broadcast(float fDiagonal) { return Matrix44f(fDiagonal); }
};

template <class V, class C, int N>
bool EvaluateComposite(const Report& report, const Expression* pExpression, V& value)
{
	TARSEL_ASSERT(pExpression != NULL);
	TARSEL_ASSERT(pExpression->GetClass() == kClass_FunctionCall);
	const FunctionCall* pInitializer = AsConstructor(pExpression);
	if (pInitializer)
		TARSEL_ASSERT(pInitializer->GetType()->GetTypeSpecifier() != kType_UserDefined);
	if (!pInitializer || pInitializer->GetType()->IsArray() ||
	    pInitializer->GetType()->GetTypeSpecifier() != ValueTraits<V>::Specifier())
	{
		report.AddUnsupported(pExpression);
		return false;
	}
	const std::vector<Expression*>& aParameters = pInitializer->GetParameters();
	if (aParameters.size() != 1 && aParameters.size() != size_t(N))
	{
		report.Console("_InitInitializerTypeTuple Parameter Count\n");
		report.Add("Parameter Count");
		return false;
	}
	C aComponents[N];
	for (size_t i = 0; i < aParameters.size(); ++i)
		if (!EvaluateScalar(report, aParameters[i], aComponents[i]))
		{
			report.Add("Index " + std::to_string(i));
			return false;
		}
	value = aParameters.size() == 1 ? Composite<V, C, N>::Broadcast(aComponents[0]) : V(aComponents);
	return true;
}

// Evaluates and stores one element of type T; types without an initializer form refuse.
template <class T>
struct Initializer
{
	static bool Initialize(const Report& report, IStorage*, const Expression*, int)
	{
		report.Console("_InitializeValue Type\n");
		report.Add(TypeSpecifierToString(ValueTraits<T>::Specifier()));
		report.Add("Unsupported initializer");
		return false;
	}
};

template <class T>
struct InitializerScalar
{
	static bool Initialize(const Report& report, IStorage* pStorage, const Expression* pExpression, int index)
	{
		T value = T();
		if (!EvaluateScalar(report, pExpression, value))
			return false;
		if (pStorage->Set(value, index))
			return true;
		report.Add("Value Set failed");
		return false;
	}
};

template <class V, class C, int N>
struct InitializerComposite
{
	static bool Initialize(const Report& report, IStorage* pStorage, const Expression* pExpression, int index)
	{
		V value;
		if (!EvaluateComposite<V, C, N>(report, pExpression, value))
			return false;
		if (pStorage->Set(value, index))
			return true;
		report.Add("Value Set Failed");
		report.Add("Index " + std::to_string(index));
		return false;
	}
};

// clang-format off
template <> struct Initializer<float> : InitializerScalar<float> {};
template <> struct Initializer<int> : InitializerScalar<int> {};
template <> struct Initializer<bool> : InitializerScalar<bool> {};
template <> struct Initializer<Vector2f> : InitializerComposite<Vector2f, float, 2> {};
template <> struct Initializer<Vector3f> : InitializerComposite<Vector3f, float, 3> {};
template <> struct Initializer<Vector4f> : InitializerComposite<Vector4f, float, 4> {};
template <> struct Initializer<Vector2i> : InitializerComposite<Vector2i, int, 2> {};
template <> struct Initializer<Vector3i> : InitializerComposite<Vector3i, int, 3> {};
template <> struct Initializer<Vector4i> : InitializerComposite<Vector4i, int, 4> {};
template <> struct Initializer<Matrix33f> : InitializerComposite<Matrix33f, float, 9> {};
template <> struct Initializer<Matrix44f> : InitializerComposite<Matrix44f, float, 16> {};
// clang-format on
} // namespace

bool IsArrayConstructor(const Expression* pExpression)
{
	const FunctionCall* pCall = AsConstructor(pExpression);
	return pCall && pCall->GetType()->IsArray();
}

bool InitializeValue(IMgrEffects* pMgrEffects, IStorage* pStorage, TypeSpecifier eType,
                     const Expression* pInitializer, int index, Result* pResult)
{
	const Report report(pMgrEffects, pResult);
	if (!pStorage || !pInitializer)
		return false;
	bool bResult = false;
	const bool bKnown =
	    DispatchValueType(eType,
	                      [&](auto* pTag)
	                      {
		                      typedef std::remove_pointer_t<decltype(pTag)> T;
		                      bResult = Initializer<T>::Initialize(report, pStorage, pInitializer, index);
	                      });
	if (bKnown)
		return bResult;
	report.Console("_InitializeValue Type\n");
	report.Add(TypeSpecifierToString(eType));
	report.Add("Unsupported initializer");
	return false;
}

bool InitializeValueArray(IMgrEffects* pMgrEffects, IStorage* pStorage, TypeSpecifier eType,
                          const Expression* pInitializer, bool bResizable, Result* pResult)
{
	if (!pStorage || !pInitializer)
		return false;
	if (!IsArrayConstructor(pInitializer))
		return bResizable || InitializeValueArrayPartial(pMgrEffects, pStorage, eType, pInitializer, 0,
		                                                 pStorage->GetLength(), pResult);
	const std::vector<Expression*>& aArguments =
	    static_cast<const FunctionCall*>(pInitializer)->GetParameters();
	const int nArguments = int(aArguments.size());
	if (bResizable && pStorage->GetLength() != nArguments && !pStorage->SetLength(nArguments))
		return false;
	if (pStorage->GetLength() != nArguments)
	{
		const Report report(pMgrEffects, pResult);
		report.Console("_InitializeValueArray Length\n");
		report.Add("Length Mismatch");
		report.Add("Initializer");
		return false;
	}
	for (int i = 0; i < nArguments; ++i)
		if (!InitializeValue(pMgrEffects, pStorage, eType, aArguments[i], i, pResult))
		{
			Report(pMgrEffects, pResult).Add("Index " + std::to_string(i));
			return false;
		}
	return true;
}

bool InitializeValueArrayPartial(IMgrEffects* pMgrEffects, IStorage* pStorage, TypeSpecifier eType,
                                 const Expression* pInitializer, int iBegin, int iEnd, Result* pResult)
{
	if (!pInitializer || IsArrayConstructor(pInitializer))
		return true;
	for (int i = iBegin; i < iEnd; ++i)
		if (!InitializeValue(pMgrEffects, pStorage, eType, pInitializer, i, pResult))
			return false;
	return true;
}

} // namespace Tarsel::Effects
