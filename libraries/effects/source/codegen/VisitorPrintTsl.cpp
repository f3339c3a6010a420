#include "codegen/VisitorPrintTsl.h"

#include "core/Console.h"
#include "core/Result.h"
#include "effects/IMgrEffects.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>

namespace Tarsel::Effects
{

namespace
{

const char* const kMalformedAccumulate = "Malformed accumulate() call found during code generation - must be "
                                         "of the form accumulate(output, value)";
const char* const kAccumulateFirstParameter =
    "First parameter of an accumulate() call must be an output variable or int constant";
const char* const kNoOutputIndices = "CANNOT GENERATE QLSL WITHOUT OUTPUT ATTACHMENT INDEX ARRAY\n";
const char* const kOutputIndexPrefix = "__outputAttachmentIndex_";

const char* OptimizationReason(Optimization eMark)
{
	return eMark == kOptimization_NeverCalled ? "never-called" : "empty";
}

const char* PrecisionText(PrecisionQualifier ePrecision)
{
	switch (ePrecision)
	{
	case kPrecision_High:
		return "highp ";
	case kPrecision_Medium:
		return "mediump ";
	case kPrecision_Low:
		return "lowp ";
	default:
		return "";
	}
}

const char* TypeText(TypeSpecifier eType)
{
	return eType == kType_UserDefined ? "<user-defined>" : TypeSpecifierToString(eType);
}

// "in" is the default direction, so it is not spelled out.
const char* ParameterQualifierText(ParameterQualifier eQualifier)
{
	switch (eQualifier)
	{
	case kParameter_Out:
		return "out ";
	case kParameter_InOut:
		return "inout ";
	default:
		return "";
	}
}

// Only the built-in value types have constructors.
const char* ConstructorName(const Type* pType)
{
	const TypeSpecifier eType = pType ? pType->GetTypeSpecifier() : kType_Void;
	return eType >= kType_Float && eType <= kType_Mat4 ? TypeSpecifierToString(eType) : "";
}

// Stable, so that declarations comparing equal keep the order their producer gave them.
template <class N>
void SortByValue(std::vector<N*>& vNodes)
{
	std::stable_sort(vNodes.begin(), vNodes.end(), [](const N* pA, const N* pB) { return *pA < *pB; });
}

} // namespace

VisitorPrintTsl::VisitorPrintTsl(Result* pResult, IMgrEffects* pMgrEffects, bool bOutputIndices)
    : _pMgrEffects(pMgrEffects), _pResult(pResult), _bOutputIndices(bOutputIndices), _pModule(nullptr),
      _nIndent(0)
{
}

Syntax* VisitorPrintTsl::GetSyntaxForLine(int nLine) const
{
	if (nLine >= 1 && static_cast<size_t>(nLine) < _vLines.size())
		return _vLines[nLine - 1];
	return _pModule;
}

void VisitorPrintTsl::_Indent()
{
	_sResult.append(static_cast<size_t>(_nIndent), '\t');
}

void VisitorPrintTsl::StartNewLine(Syntax* p)
{
	_Indent();
	if (_vLines.empty())
		_vLines.push_back(p);
	else
		_vLines.back() = p;
}

void VisitorPrintTsl::EndLine(Syntax* p)
{
	_sResult += '\n';
	_vLines.push_back(p);
}

void VisitorPrintTsl::_AppendInt(long iValue)
{
	char buffer[16];
	const auto end = std::to_chars(buffer, buffer + sizeof(buffer), static_cast<int32_t>(iValue)).ptr;
	_sResult.append(buffer, end);
}

IMgrConsole* VisitorPrintTsl::_Console() const
{
	IMgrConsole* pConsole = _pMgrEffects ? _pMgrEffects->GetConsole() : nullptr;
	return pConsole ? pConsole : GetMgrConsole();
}

void VisitorPrintTsl::_Fail(const char* pMessage)
{
	_Console()->Error("%s\n", pMessage);
	_pModule->LogError(pMessage);
}

template <class N>
bool VisitorPrintTsl::_PrintLines(std::vector<N*>& vNodes, const char* pTerminator, Syntax* pOwner)
{
	for (N* pNode : vNodes)
	{
		if (!_PrintNode(pNode))
			return false;
		_sResult += pTerminator;
		EndLine(pOwner);
	}
	return true;
}

bool VisitorPrintTsl::Visit(Module* pModule)
{
	_vLines.clear();
	_sResult.clear();
	_nIndent = 0;
	_pModule = pModule;

	SortByValue(pModule->GetStructDefinitions());
	SortByValue(pModule->GetVariableDeclarations());
	SortByValue(pModule->GetFunctionDeclarations());
	SortByValue(pModule->GetFunctionDefinitions());

	_vLines.push_back(pModule);
	if (!_PrintLines(pModule->GetStructDefinitions(), "", pModule))
		return false;
	EndLine(pModule);
	for (DeclarationStatement* pDeclaration : pModule->GetVariableDeclarations())
	{
		if (!_Print(pDeclaration))
			return false;
	}
	EndLine(pModule);
	if (!_PrintLines(pModule->GetFunctionDeclarations(), ";", pModule))
		return false;
	EndLine(pModule);
	if (!_PrintLines(pModule->GetFunctionDefinitions(), "", pModule) ||
	    !_PrintLines(pModule->GetClassDefinitions(), "", pModule))
		return false;

	if (_bOutputIndices)
		_PrependOutputIndices();
	return true;
}

// Done once at the end: the used outputs are known only after the body is printed.
void VisitorPrintTsl::_PrependOutputIndices()
{
	std::string sPrefix;
	for (const std::string& sName : _setOutputsUsed)
		sPrefix.append("uniform int ").append(kOutputIndexPrefix).append(sName).append(";\n");
	sPrefix += '\n';
	_sResult.insert(0, sPrefix);
	_vLines.insert(_vLines.begin(), _setOutputsUsed.size() + 1, _pModule);
}

// Declarations

bool VisitorPrintTsl::Visit(ClassDefinition* pNode)
{
	return _PrintLines(pNode->GetMemberVariables(), ";", pNode) &&
	       _PrintLines(pNode->GetMemberFunctions(), "", pNode);
}

bool VisitorPrintTsl::Visit(StructDefinition* pNode)
{
	_sResult += pNode->IsUniform() ? "uniformblock" : "struct";
	if (pNode->GetName())
		_sResult.append(" ").append(pNode->GetName()->GetString());
	EndLine(pNode);
	_sResult += '{';
	EndLine(pNode);
	for (VariableDeclaration* pMember : pNode->GetMemberVariables())
	{
		_sResult += '\t';
		if (!_PrintNode(pMember))
			return false;
		_sResult += ';';
		EndLine(pNode);
	}
	_sResult += "};";
	EndLine(pNode);
	return true;
}

bool VisitorPrintTsl::Visit(FunctionParameter* pNode)
{
	_sResult += ParameterQualifierText(pNode->GetParameterQualifier());
	if (!_PrintNode(pNode->GetType()))
		return false;
	if (pNode->GetName())
		_sResult.append(" ").append(pNode->GetName()->GetString());
	if (pNode->GetType()->IsArray())
	{
		_sResult += '[';
		if (pNode->GetType()->GetLength() && !_Print(pNode->GetType()->GetLength()))
			return false;
		_sResult += ']';
	}
	return true;
}

bool VisitorPrintTsl::Visit(FunctionDefinition* pNode)
{
	if (pNode->GetOptimization() != kOptimization_Kept)
	{
		_sResult.append("// optimizer removed definition of ")
		    .append(OptimizationReason(pNode->GetOptimization()))
		    .append(" function ")
		    .append(pNode->GetFunctionPrototype()->GetName()->GetString());
		EndLine(pNode);
		return true;
	}
	if (!_PrintNode(pNode->GetFunctionPrototype()))
		return false;
	EndLine(pNode);
	return _Print(pNode->GetCompoundStatement());
}

bool VisitorPrintTsl::Visit(FunctionPrototype* pNode)
{
	if (pNode->GetOptimization() != kOptimization_Kept)
	{
		_sResult.append("// optimizer removed prototype for ")
		    .append(OptimizationReason(pNode->GetOptimization()))
		    .append(" function ")
		    .append(pNode->GetName()->GetString());
		return true;
	}
	StartNewLine(pNode);
	if (!_PrintNode(pNode->GetReturnType()))
		return false;
	_sResult.append(" ").append(pNode->GetName()->GetString()).append("(");
	const char* pSeparator = "";
	for (FunctionParameter* pParameter : pNode->GetParameters())
	{
		_sResult += pSeparator;
		if (!_PrintNode(pParameter))
			return false;
		pSeparator = ", ";
	}
	_sResult += ')';
	return true;
}

bool VisitorPrintTsl::Visit(VariableDeclaration* pNode)
{
	// Variables of struct, class or interface type have been flattened away before printing.
	if (pNode->GetType()->GetTypeSpecifier() == kType_UserDefined)
		return true;
	if (pNode->IsStatic())
		_sResult += "static ";
	if (pNode->IsConst())
		_sResult += "const ";
	if (pNode->GetStorageQualifier() != kStorage_None)
		_sResult.append(StorageQualifierToString(pNode->GetStorageQualifier())).append(" ");
	if (!_PrintNode(pNode->GetType()))
		return false;
	_sResult.append(" ").append(pNode->GetIdentifier()->GetString());
	if (Expression* pLength = pNode->GetType()->GetLength())
	{
		_sResult += '[';
		if (!_Print(pLength))
			return false;
		_sResult += ']';
	}
	if (Expression* pInitializer = pNode->GetInitializer())
	{
		_sResult += " = ";
		return _Print(pInitializer);
	}
	return true;
}

bool VisitorPrintTsl::Visit(UserType* pNode)
{
	_sResult += pNode->GetName()->GetString();
	return true;
}

bool VisitorPrintTsl::Visit(Type* pNode)
{
	_sResult.append(PrecisionText(pNode->GetPrecisionQualifier()))
	    .append(TypeText(pNode->GetTypeSpecifier()));
	return true;
}

// Statements

bool VisitorPrintTsl::Visit(JumpStatement* pNode, TIParentSyntax<Statement>*)
{
	StartNewLine(pNode);
	switch (pNode->GetType())
	{
	case kJump_Continue:
		_sResult += "continue";
		break;
	case kJump_Break:
		_sResult += "break";
		break;
	case kJump_Return:
		_sResult += "return ";
		if (pNode->GetExpression() && !_Print(pNode->GetExpression()))
			return false;
		break;
	default:
		break;
	}
	_sResult += ';';
	EndLine(pNode);
	return true;
}

bool VisitorPrintTsl::Visit(ForStatement* pNode, TIParentSyntax<Statement>*)
{
	StartNewLine(pNode);
	_sResult += "for(";
	// The initialization is a statement and brings its own ";" and newline; without one the loop
	// still needs its first ";".
	if (Statement* pInitialization = pNode->GetInitialization())
	{
		if (!_Print(pInitialization))
			return false;
	}
	else
		_sResult += ';';
	StartNewLine(pNode);
	if (pNode->GetCondition() && !_Print(pNode->GetCondition()))
		return false;
	_sResult += ';';
	if (pNode->GetIteration() && !_Print(pNode->GetIteration()))
		return false;
	_sResult += ')';
	EndLine(pNode);
	if (pNode->GetStatement())
		_Print(pNode->GetStatement());
	return true;
}

bool VisitorPrintTsl::Visit(DoWhileStatement* pNode, TIParentSyntax<Statement>*)
{
	StartNewLine(pNode);
	_sResult += "do";
	EndLine(pNode);
	if (!_Print(pNode->GetStatement()))
		return false;
	StartNewLine(pNode);
	_sResult += "while(";
	if (!_Print(pNode->GetExpression()))
		return false;
	_sResult += ");";
	EndLine(pNode->GetExpression());
	return true;
}

bool VisitorPrintTsl::Visit(WhileStatement* pNode, TIParentSyntax<Statement>*)
{
	StartNewLine(pNode);
	_sResult += "while(";
	if (!_Print(pNode->GetCondition()))
		return false;
	_sResult += ')';
	EndLine(pNode);
	return _Print(pNode->GetStatement());
}

bool VisitorPrintTsl::Visit(SelectionStatement* pNode, TIParentSyntax<Statement>*)
{
	StartNewLine(pNode);
	_sResult += "if (";
	if (!_Print(pNode->GetCondition()))
		return false;
	_sResult += ')';
	EndLine(pNode->GetCondition());

	Statement* pThen = pNode->GetThen();
	const int nThenIndent = pThen && pThen->GetClass() == kClass_CompoundStatement ? 0 : 1;
	_nIndent += nThenIndent;
	const bool bThen = _Print(pThen);
	_nIndent -= nThenIndent;
	if (!bThen)
		return false;

	Statement* pElse = pNode->GetElse();
	if (!pElse)
		return true;
	EndLine(pThen);
	StartNewLine(pElse);
	_sResult += "else";
	EndLine(pElse);
	StartNewLine(pElse);
	return _Print(pElse);
}

bool VisitorPrintTsl::Visit(CompoundStatement* pNode, TIParentSyntax<Statement>*)
{
	StartNewLine(pNode);
	_sResult += '{';
	EndLine(pNode);
	++_nIndent;
	for (Statement* pStatement : pNode->GetStatements())
	{
		if (!_Print(pStatement))
			return false;
	}
	--_nIndent;
	StartNewLine(pNode);
	_sResult += '}';
	EndLine(pNode);
	return true;
}

bool VisitorPrintTsl::Visit(ExpressionStatement* pNode, TIParentSyntax<Statement>*)
{
	StartNewLine(pNode);
	if (!_Print(pNode->GetExpression()))
		return false;
	_sResult += ';';
	EndLine(pNode);
	return true;
}

bool VisitorPrintTsl::Visit(DeclarationStatement* pNode, TIParentSyntax<Statement>*)
{
	StartNewLine(pNode);
	if (!_PrintNode(pNode->GetDeclaration()))
		return false;
	_sResult += ';';
	EndLine(pNode);
	return true;
}

bool VisitorPrintTsl::Visit(EmptyStatement*, TIParentSyntax<Statement>*)
{
	_sResult += ';';
	return true;
}

// Expressions

bool VisitorPrintTsl::Visit(Condition* pNode, TIParentSyntax<Expression>*)
{
	if (Declaration* pDeclaration = pNode->GetDeclaration())
		return _PrintNode(pDeclaration);
	return _Print(pNode->GetExpression());
}

bool VisitorPrintTsl::Visit(FunctionCall* pNode, TIParentSyntax<Expression>*)
{
	const String* pName = pNode->GetName();
	const std::string sName = pName ? pName->GetString() : ConstructorName(pNode->GetType());
	if (pName && pNode->GetOptimization() != kOptimization_Kept)
		return _PrintRemovedCall(pNode, sName);

	std::string sFirst;
	if (pName && sName == "accumulate")
	{
		bool bOmit = false;
		if (!_LowerAccumulate(pNode, bOmit, sFirst))
			return false;
		if (bOmit)
			return true;
	}

	_sResult.append(sName).append("(");
	const std::vector<Expression*>& vArguments = pNode->GetParameters();
	for (size_t i = 0; i < vArguments.size(); ++i)
	{
		if (i > 0)
			_sResult += ", ";
		if (i == 0 && !sFirst.empty())
			_sResult += sFirst;
		else
			_Print(vArguments[i]);
	}
	_sResult += ')';
	return true;
}

// The call is gone, but its arguments may have side effects, so they stay as a block of statements.
bool VisitorPrintTsl::_PrintRemovedCall(FunctionCall* pCall, const std::string& sName)
{
	_sResult.append("// optimizer removed call to ")
	    .append(OptimizationReason(pCall->GetOptimization()))
	    .append(" function ")
	    .append(sName);
	EndLine(pCall);
	if (pCall->GetParameters().empty())
		return true;
	_Indent();
	_sResult += "// emitting parameters of removed call as standalone expressions:";
	EndLine(pCall);
	_Indent();
	_sResult += '{';
	EndLine(pCall);
	++_nIndent;
	for (Expression* pArgument : pCall->GetParameters())
	{
		_Indent();
		if (!_Print(pArgument))
			return false;
		_sResult += ';';
		EndLine(pCall);
	}
	--_nIndent;
	_Indent();
	_sResult += '}';
	return true;
}

bool VisitorPrintTsl::_LowerAccumulate(FunctionCall* pCall, bool& bOmit, std::string& sFirst)
{
	const std::vector<Expression*>& vArguments = pCall->GetParameters();
	if (vArguments.size() != 2)
	{
		_Fail(kMalformedAccumulate);
		return false;
	}
	Expression* pOutput = vArguments[0];
	if (pOutput && pOutput->GetClass() == kClass_IntConstant)
	{
		sFirst = std::to_string(static_cast<int32_t>(static_cast<IntConstant*>(pOutput)->GetValue()));
		return true;
	}
	if (!pOutput || pOutput->GetClass() != kClass_Variable)
	{
		_Fail(kAccumulateFirstParameter);
		return false;
	}
	if (!_bOutputIndices)
	{
		_pModule->LogWarning(kNoOutputIndices);
		_Console()->Error("%s", kNoOutputIndices);
		return false;
	}
	const std::string& sOutput = static_cast<Variable*>(pOutput)->GetIdentifier()->GetString();
	if (_pMgrEffects && _pMgrEffects->HasOutput(sOutput))
	{
		sFirst = kOutputIndexPrefix + sOutput;
		_setOutputsUsed.insert(sOutput);
		return true;
	}
	const std::string sMessage =
	    "accumulate() call refers to unknown output '" + sOutput + "', call omitted...";
	_pModule->LogWarning(sMessage);
	_Console()->Error("%s\n", sMessage.c_str());
	bOmit = true;
	return true;
}

bool VisitorPrintTsl::Visit(Subscript* pNode, TIParentSyntax<Expression>*)
{
	if (!_Print(pNode->GetArray()))
		return false;
	_sResult += '[';
	if (!_Print(pNode->GetIndex()))
		return false;
	_sResult += ']';
	return true;
}

// A method call that no earlier pass resolved: the class of the object is unknown.
bool VisitorPrintTsl::Visit(FunctionSelection* pNode, TIParentSyntax<Expression>*)
{
	if (!_pResult)
		return false;
	const Expression* pObject = pNode->GetExpression();
	const std::string sLocation =
	    pObject ? pObject->GetRange().GetLocationText() : pNode->GetRange().GetLocationText();
	if (pObject && pObject->GetClass() == kClass_Variable)
		_pResult->Add("%s: Class \"%s\" cannot be found.", sLocation.c_str(),
		              static_cast<const Variable*>(pObject)->GetIdentifier()->c_str());
	else
		_pResult->Add("%s: Class for function selection cannot be resolved.", sLocation.c_str());
	return false;
}

bool VisitorPrintTsl::Visit(FieldSelection* pNode, TIParentSyntax<Expression>*)
{
	if (!_Print(pNode->GetExpression()))
		return false;
	_sResult.append(".").append(pNode->GetField()->GetString());
	return true;
}

bool VisitorPrintTsl::Visit(Variable* pNode, TIParentSyntax<Expression>*)
{
	_sResult += pNode->GetIdentifier()->GetString();
	return true;
}

bool VisitorPrintTsl::Visit(Conditional* pNode, TIParentSyntax<Expression>*)
{
	_sResult += '(';
	if (!_Print(pNode->GetCondition()))
		return false;
	_sResult += ") ? (";
	if (!_Print(pNode->GetTrue()))
		return false;
	_sResult += ") : (";
	if (!_Print(pNode->GetFalse()))
		return false;
	_sResult += ')';
	return true;
}

// Every binary operation is parenthesised, so the printed text never depends on precedence.
bool VisitorPrintTsl::Visit(BinaryOperator* pNode, TIParentSyntax<Expression>*)
{
	_sResult += '(';
	if (!_Print(pNode->GetLeft()))
		return false;
	_sResult += OperatorToString(pNode->GetOperator());
	if (!_Print(pNode->GetRight()))
		return false;
	_sResult += ')';
	return true;
}

bool VisitorPrintTsl::Visit(PostOperator* pNode, TIParentSyntax<Expression>*)
{
	if (!_Print(pNode->GetExpression()))
		return false;
	_sResult += OperatorToString(pNode->GetOperator());
	return true;
}

bool VisitorPrintTsl::Visit(UnaryOperator* pNode, TIParentSyntax<Expression>*)
{
	_sResult += OperatorToString(pNode->GetOperator());
	return _Print(pNode->GetExpression());
}

// The source text is kept so that the program shows the literal as written; QLSL has no 'f' suffix.
bool VisitorPrintTsl::Visit(FloatConstant* pNode, TIParentSyntax<Expression>*)
{
	String* pText = pNode->GetString();
	if (!pText || pText->GetString().empty())
	{
		char buffer[64];
		const int nLength = std::snprintf(buffer, sizeof(buffer), "%#.16g", pNode->GetValue());
		_sResult.append(buffer, static_cast<size_t>(nLength));
		return true;
	}
	const std::string& sText = pText->GetString();
	if (sText.back() == 'f')
		pText->SetString(sText.substr(0, sText.size() - 1));
	_sResult += pText->GetString();
	return true;
}

bool VisitorPrintTsl::Visit(IntConstant* pNode, TIParentSyntax<Expression>*)
{
	_AppendInt(pNode->GetValue());
	return true;
}

bool VisitorPrintTsl::Visit(BoolConstant* pNode, TIParentSyntax<Expression>*)
{
	_sResult += pNode->GetValue() ? "true" : "false";
	return true;
}

bool VisitorPrintTsl::Visit(Assignment* pNode, TIParentSyntax<Expression>*)
{
	if (!_Print(pNode->GetLeft()))
		return false;
	if (pNode->GetOperator() == kOperator_Assign)
		_sResult += " = ";
	else
		_sResult.append(OperatorToString(pNode->GetOperator())).append("= ");
	return _Print(pNode->GetRight());
}

} // namespace Tarsel::Effects
