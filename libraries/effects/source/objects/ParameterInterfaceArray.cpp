#include "objects/ParameterInterfaceArray.h"

#include <set>
#include <unordered_set>

#include "core/Assert.h"
#include "manager/MgrEffectsImpl.h"
#include "objects/ParameterValue.h"
#include "objects/ParameterValueConsole.h"
#include "objects/ParameterValueExpression.h"
#include "objects/UnrollForStatementInterfaceArray.h"
#include "syntax/Syntax.h"
#include "syntax/VisitorDelegate.h"

namespace Tarsel::Effects
{

namespace
{
const char* const kThis = "iThis";
const char* const kFailedDefault = "ParameterInterfaceArray::_InitInitializer Default Shader Construction\n";

Expression* CreateConstructor(Module* pModule, TypeSpecifier eType, Expression* pArgument)
{
	FunctionCall* pCall = pModule->CreateFunctionCall(pModule->CreateType(eType));
	pCall->AddParameter(pArgument);
	return pCall;
}
} // namespace

Expression* CreateZeroValue(Module* pModule, const Type* pType)
{
	if (pType == nullptr || pType->IsArray())
		return nullptr;
	const TypeSpecifier eType = pType->GetTypeSpecifier();
	switch (eType)
	{
	case kType_Float:
		return pModule->CreateFloatConstant(pModule->CreateString("0.0"), 0.0);
	case kType_Int:
		return pModule->CreateIntConstant(0);
	case kType_Bool:
		return pModule->CreateBoolConstant(false);
	case kType_Vec2:
	case kType_Vec3:
	case kType_Vec4:
	case kType_Mat2:
	case kType_Mat3:
	case kType_Mat4:
		return CreateConstructor(pModule, eType,
		                         pModule->CreateFloatConstant(pModule->CreateString("0.0"), 0.0));
	case kType_BVec2:
	case kType_BVec3:
	case kType_BVec4:
		return CreateConstructor(pModule, eType, pModule->CreateBoolConstant(false));
	case kType_IVec2:
	case kType_IVec3:
	case kType_IVec4:
		return CreateConstructor(pModule, eType, pModule->CreateIntConstant(0));
	default:
		return nullptr;
	}
}

ParameterInterfaceArray* ParameterInterfaceArray::Create(IMgrEffects* pMgrEffects,
                                                         const VariableDeclaration* pDecl,
                                                         const InterfaceDefinition* pInterface,
                                                         const ClassDefinition* pClass,
                                                         const std::string& sName, const std::string& sOwner,
                                                         int nLength, Result* pResult)
{
	auto* pParameter = new ParameterInterfaceArray();
	const bool bInit = pInterface
	                       ? pParameter->Init(pMgrEffects, pDecl, pInterface, sName, sOwner, nLength, pResult)
	                       : pParameter->Init(pMgrEffects, pDecl, pClass, sName, sOwner, nLength, pResult);
	if (bInit)
		return pParameter;
	delete pParameter;
	return nullptr;
}

bool ParameterInterfaceArray::Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                                   const InterfaceDefinition* pInterface, const std::string& sName,
                                   const std::string&, int nLength, Result* pResult)
{
	Shutdown();
	_pInterface = pInterface;
	_pClassDefinition = nullptr;
	return pInterface && _Init(pMgrEffects, pDecl, sName, nLength, pResult);
}

bool ParameterInterfaceArray::Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                                   const ClassDefinition* pClass, const std::string& sName,
                                   const std::string&, int nLength, Result* pResult)
{
	Shutdown();
	_pInterface = nullptr;
	_pClassDefinition = pClass;
	return pClass && _Init(pMgrEffects, pDecl, sName, nLength, pResult);
}

bool ParameterInterfaceArray::_Init(IMgrEffects* pMgrEffects, const VariableDeclaration* pDecl,
                                    const std::string& sName, int nLength, Result* pResult)
{
	if (nLength < 0 ||
	    !_InitCommon(pMgrEffects, pDecl, "ParameterInterfaceArray", nLength ? nLength : 1, nLength == 0))
		return false;
	_sName = sName;
	_sNameCount = _sNameMangled + "_Count";
	if (pDecl->GetInitializer() && !_InitInitializer(pResult))
	{
		Shutdown();
		return false;
	}
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Defaults
// ---------------------------------------------------------------------------------------------------------

const FunctionCall* ParameterInterfaceArray::_GetSingleConstructor() const
{
	const Expression* pInit = _pDecl ? _pDecl->GetInitializer() : nullptr;
	if (!pInit || pInit->GetClass() != kClass_FunctionCall || IsArrayConstructor(pInit))
		return nullptr;
	return static_cast<const FunctionCall*>(pInit);
}

bool ParameterInterfaceArray::_InitInitializer(Result* pResult)
{
	const Expression* pExpressionInit = _pDecl->GetInitializer();
	if (IsArrayConstructor(pExpressionInit))
		return _InitDefaultsArray(static_cast<const FunctionCall*>(pExpressionInit), pResult);
	TARSEL_ASSERT(pExpressionInit->GetClass() == kClass_FunctionCall);
	if (pExpressionInit->GetClass() != kClass_FunctionCall)
		return false;
	const Type* pTypeInit = static_cast<const FunctionCall*>(pExpressionInit)->GetType();
	TARSEL_ASSERT(pTypeInit->GetClass() == kClass_UserType);
	if (!pTypeInit || pTypeInit->GetClass() != kClass_UserType)
		return false;
	const UserType* pUserTypeInit = static_cast<const UserType*>(pTypeInit);
	TARSEL_ASSERT(pUserTypeInit->GetName() != NULL);
	return _InitDefaults(static_cast<const FunctionCall*>(pExpressionInit), 0, GetLength(), pResult);
}

bool ParameterInterfaceArray::_InitDefaults(const FunctionCall* pInit, int iBegin, int iEnd, Result* pResult)
{
	for (int iParam = iBegin; iParam < iEnd; ++iParam)
	{
		TARSEL_ASSERT(_pValue->Get(iParam) == NULL);
		IShader* pShader = _CreateDefault(pInit, kFailedDefault, pResult);
		if (pShader == nullptr)
			return false;
		_Store(iParam, pShader, true);
	}
	return true;
}

bool ParameterInterfaceArray::_InitDefaultsArray(const FunctionCall* pInit, Result* pResult)
{
	const int nArguments = static_cast<int>(pInit->GetCountParameters());
	if (nArguments != GetLength())
	{
		if (!IsResizable())
		{
			ConsoleOf(_pMgrEffects)->Message("ParameterInterfaceArray::_InitInitializer Length Mismatch\n");
			return false;
		}
		_Resize(nArguments);
	}
	for (int iParam = 0; iParam < nArguments; ++iParam)
	{
		const Expression* pArgument = pInit->GetParameters()[iParam];
		if (pArgument->GetClass() != kClass_FunctionCall)
		{
			ConsoleOf(_pMgrEffects)
			    ->Message("ParameterInterfaceArray::_InitInitializer Expression Not A Constructor\n");
			return false;
		}
		IShader* pShader =
		    _CreateDefault(static_cast<const FunctionCall*>(pArgument), kFailedDefault, pResult);
		if (pShader == nullptr)
			return false;
		_Store(iParam, pShader, true);
	}
	return true;
}

// ---------------------------------------------------------------------------------------------------------
// Connecting
// ---------------------------------------------------------------------------------------------------------

bool ParameterInterfaceArray::_ReportMismatch(IShader* pShader) const
{
	if (MgrEffectsImpl* pImpl = _Impl())
		pImpl->AddResultMessage("Interface mismatch. Expected \"%s\" but got \"%s::%s\"", _sType.c_str(),
		                        pShader->GetInterfaceName().c_str(), pShader->GetClassName().c_str());
	return false;
}

bool ParameterInterfaceArray::Set(IShader* pShader, int index)
{
	if (!_pValue)
		return false;
	if (index < 0 || index >= GetLength())
	{
		ConsoleOf(_pMgrEffects)->Message("ParameterInterfaceArray::Set Index Out of Bounds\n");
		if (MgrEffectsImpl* pImpl = _Impl())
			pImpl->AddResultMessage("Index (%d) out of bounds (length=%d)", index, GetLength());
		return false;
	}
	if (pShader && !_Fits(pShader))
		return _ReportMismatch(pShader);
	if (pShader == _GetSlot(index))
		return true;
	_Release(index);
	_Store(index, pShader, false);
	return _NotifyChangeStructure();
}

bool ParameterInterfaceArray::Set(IShader** ppShaders, int nCount)
{
	if (!_pValue || nCount < 0 || (nCount > 0 && !ppShaders))
		return false;
	for (int index = 0; index < nCount; ++index)
		if (ppShaders[index] && !_Fits(ppShaders[index]))
			return _ReportMismatch(ppShaders[index]);
	if (nCount > GetLength())
	{
		ConsoleOf(_pMgrEffects)->Message("Value::SetArray Array Out of Bounds\n");
		return false;
	}
	// A default handed back in the new elements is no longer the input's to destroy.
	_ReleaseAll(std::set<IShader*>(ppShaders, ppShaders + nCount));
	for (int index = 0; index < nCount; ++index)
		_Store(index, ppShaders[index], false);
	return _NotifyChangeStructure();
}

bool ParameterInterfaceArray::SetLength(int nLength)
{
	if (!_pValue || nLength < 0)
		return false;
	const int nOld = GetLength();
	if (nLength == nOld)
		return true;
	if (!IsResizable())
	{
		ConsoleOf(_pMgrEffects)->Message("Value::SetLength Not Resizable\n");
		return false;
	}
	for (int index = nLength; index < nOld; ++index)
		_Release(index);
	_Resize(nLength);
	const FunctionCall* pInit = _GetSingleConstructor();
	const bool bDefaults = !pInit || nLength < nOld || _InitDefaults(pInit, nOld, nLength, nullptr);
	return _NotifyChangeStructure() && bDefaults;
}

// ---------------------------------------------------------------------------------------------------------
// Code
// ---------------------------------------------------------------------------------------------------------

bool ParameterInterfaceArray::CollectShader(Module* pModule)
{
	return AddUniformDeclaration(pModule, pModule->CreateType(kType_Int), _sNameCount);
}

bool ParameterInterfaceArray::CollectShaderGenerated(Module* pModule)
{
	return _CreateFunctionsSwitch(pModule);
}

std::vector<const FunctionPrototype*> ParameterInterfaceArray::_GetMethods() const
{
	std::vector<const FunctionPrototype*> vMethods;
	if (_pInterface)
		vMethods.assign(_pInterface->GetMemberFunctions().begin(), _pInterface->GetMemberFunctions().end());
	else if (_pClassDefinition)
		for (const FunctionDefinition* pFunction : _pClassDefinition->GetMemberFunctions())
			if (pFunction->GetFunctionPrototype()->GetQualifier() != kFunction_Static)
				vMethods.push_back(pFunction->GetFunctionPrototype());
	return vMethods;
}

bool ParameterInterfaceArray::_HasDispatch(const std::string& sMethod) const
{
	for (const FunctionPrototype* pMethod : _GetMethods())
		if (pMethod->GetName()->GetString() == sMethod)
			return true;
	return false;
}

bool ParameterInterfaceArray::_CreateFunctionsSwitch(Module* pModule)
{
	for (const FunctionPrototype* pMethod : _GetMethods())
		if (!_CreateFunctionSwitch(pModule, pMethod))
			return false;
	return true;
}

bool ParameterInterfaceArray::_CreateFunctionSwitch(Module* pModule, const FunctionPrototype* pMethod)
{
	FunctionPrototype* pPrototype = pMethod->Clone(pModule);
	pPrototype->GetName()->SetString(GetNameDispatch(pMethod->GetName()->GetString()));
	FunctionParameter* pThis = pModule->CreateFunctionParameter(pModule->CreateType(kType_Int));
	pThis->SetName(pModule->CreateString(kThis));
	pPrototype->GetParameters().insert(pPrototype->GetParameters().begin(), pThis);
	CompoundStatement* pBody = pModule->CreateCompoundStatement();
	FunctionDefinition* pFunction = pModule->CreateFunctionDefinition(pPrototype, pBody);
	if (!_CreateFunctionSwitchBody(pModule, pMethod, pBody))
	{
		Syntax::Destroy(pFunction);
		return false;
	}
	return pModule->AddFunctionDefinition(pFunction);
}

bool ParameterInterfaceArray::_CreateFunctionSwitchBody(Module* pModule, const FunctionPrototype* pMethod,
                                                        CompoundStatement* pBody)
{
	const std::string sMethod = pMethod->GetName()->GetString();
	const bool bVoid =
	    pMethod->GetReturnType()->GetTypeSpecifier() == kType_Void && !pMethod->GetReturnType()->IsArray();
	// A shader in several slots is declared once. Hashed: an ordered set would compare long, alike names
	// at every one of thousands of elements.
	std::unordered_set<std::string> setDeclared;
	setDeclared.reserve(static_cast<size_t>(GetLength()));
	for (int index = 0; index < GetLength(); ++index)
	{
		IShader* pShader = _GetSlot(index);
		if (pShader == nullptr || !pShader->HasMethod(sMethod))
		{
			ConsoleOf(_pMgrEffects)
			    ->Message("ParameterInterfaceArray::_CreateFunctionSwitchBody Element Incomplete\n");
			return false;
		}
		const std::string sName = pShader->GetMethodNameMangled(sMethod);
		SelectionStatement* pSelection = pModule->CreateSelectionStatement();
		pSelection->SetCondition(pModule->CreateBinaryOperator(
		    kOperator_Equal, pModule->CreateVariable(pModule->CreateString(kThis)),
		    pModule->CreateIntConstant(index)));
		pSelection->SetThen(_CreateStatementFunctionSwitch(pModule, pMethod, sName));
		pBody->AddStatement(pSelection);
		if (setDeclared.insert(sName).second)
		{
			FunctionPrototype* pDeclaration = pMethod->Clone(pModule);
			pDeclaration->GetName()->SetString(sName);
			pModule->AddFunctionDeclaration(pDeclaration);
		}
	}
	// The fall-through: void functions need no return once something came before it.
	Expression* pZero = CreateZeroValue(pModule, pMethod->GetReturnType());
	if (pZero || (bVoid && GetLength() == 0))
		pBody->AddStatement(pModule->CreateJumpStatement(kJump_Return, pZero));
	return true;
}

FunctionCall* ParameterInterfaceArray::_CreateCallFunctionSwitch(Module* pModule,
                                                                 const FunctionPrototype* pMethod,
                                                                 const std::string& sName)
{
	FunctionCall* pCall = pModule->CreateFunctionCall(pModule->CreateString(sName));
	for (const FunctionParameter* pParameter : pMethod->GetParameters())
		if (pParameter->GetName())
			pCall->AddParameter(
			    pModule->CreateVariable(pModule->CreateString(pParameter->GetName()->GetString())));
	return pCall;
}

Statement* ParameterInterfaceArray::_CreateStatementFunctionSwitch(Module* pModule,
                                                                   const FunctionPrototype* pMethod,
                                                                   const std::string& sName)
{
	FunctionCall* pCall = _CreateCallFunctionSwitch(pModule, pMethod, sName);
	if (pMethod->GetReturnType()->GetTypeSpecifier() == kType_Void && !pMethod->GetReturnType()->IsArray())
		return pModule->CreateExpressionStatement(pCall);
	return pModule->CreateJumpStatement(kJump_Return, pCall);
}

// ---------------------------------------------------------------------------------------------------------
// Rewriting the owner's code
// ---------------------------------------------------------------------------------------------------------

bool ParameterInterfaceArray::VisitTransformations(VisitorTransformation& delegate)
{
	TVisitorSyntaxDelegate<ForStatement, TIParentSyntax<Statement>> loops(
	    MakeDelegate(this, &ParameterInterfaceArray::_UnrollLoop));
	// Loops first: unrolling needs the element calls as written. Calls and lengths are then rewritten in
	// one walk, which meets a length inside a call's arguments before the call itself.
	TVisitorSyntaxDelegatePair<FunctionSelection, FieldSelection, TIParentSyntax<Expression>> references(
	    MakeDelegate(this, &ParameterInterfaceArray::_ReplaceReference),
	    MakeDelegate(this, &ParameterInterfaceArray::_ReplaceReferenceLength));
	return delegate(kClass_FunctionSelection, &loops) && delegate(kClass_FunctionSelection, &references);
}

bool ParameterInterfaceArray::_UnrollLoop(ForStatement* pLoop, TIParentSyntax<Statement>* pParent)
{
	const std::string sVariable = PredicateUnrollForStatementInterfaceArray(pLoop, _sName);
	if (sVariable.empty())
		return true;
	UnrollForStatementInterfaceArray unroll(this);
	CompoundStatement* pUnrolled = unroll.Unroll(pLoop, sVariable);
	if (pUnrolled == nullptr)
		return false;
	if (pParent->SetReplacement(pUnrolled))
		return true;
	Syntax::Destroy(pUnrolled);
	return false;
}

// array[index].m(args) becomes the dispatch call m(index, args).
bool ParameterInterfaceArray::_ReplaceReference(FunctionSelection* pSelection,
                                                TIParentSyntax<Expression>* pParent)
{
	Expression* pObject = pSelection->GetExpression();
	if (pObject && pObject->GetClass() == kClass_Variable &&
	    static_cast<Variable*>(pObject)->GetIdentifier()->GetString() == _sName)
	{
		if (MgrEffectsImpl* pImpl = _Impl())
			pImpl->AddResultMessage("%s: Calling array input \"%s\" as single value.\n",
			                        pSelection->GetRange().GetLocationText().c_str(), _sName.c_str());
		return false;
	}
	if (!IsElementOf(pObject, _sName))
		return true;
	const FunctionCall* pCall = pSelection->GetFunction();
	const std::string sMethod = pCall && pCall->GetName() ? pCall->GetName()->GetString() : std::string();
	if (!_HasDispatch(sMethod))
	{
		if (MgrEffectsImpl* pImpl = _Impl())
			pImpl->AddResultMessage("%s: %s \"%s\" has no method named \"%s\".\n",
			                        pSelection->GetRange().GetLocationText().c_str(),
			                        _pInterface ? "Interface" : "Class", _sType.c_str(), sMethod.c_str());
		return false;
	}
	Expression* pIndex = static_cast<Subscript*>(pObject)->GetIndex()->Clone(pSelection->GetModule());
	return ReplaceSelectionByCall(pSelection, pParent, GetNameDispatch(sMethod), pIndex);
}

bool ParameterInterfaceArray::_ReplaceReferenceLength(FieldSelection* pSelection,
                                                      TIParentSyntax<Expression>* pParent)
{
	return ReplaceReferenceLength(pSelection, pParent, _sName, _sNameCount);
}

} // namespace Tarsel::Effects
