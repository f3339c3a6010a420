#include "codegen/VisitorPrintTsl.h"
#include "codegen/SortByValue.h"

#include "core/Console.h"
#include "core/Result.h"
#include "effects/IMgrEffects.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>

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

bool IsOperatorCharacter(char c)
{
	return c != 0 && std::strchr("+-*/%=!&^|<>", c) != nullptr;
}

bool IsWordCharacter(char c)
{
	return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// Operator tokens longer than one character, comment openers included. Every prefix of one of them is a
// token too, so a longest match can grow one character at a time.
bool IsLongOperator(std::string_view s)
{
	static const char* const s_aTokens[] = {
	    "++", "--", "+=", "-=", "*=", "/=", "%=", "==",  "!=",  "&&", "||", "^^",
	    "&=", "^=", "|=", "<<", ">>", "<=", ">=", "<<=", ">>=", "//", "/*"};
	return std::find(std::begin(s_aTokens), std::end(s_aTokens), s) != std::end(s_aTokens);
}

// The last token of the operator characters that end the text, as the scanner reads them. A token starts
// wherever the two characters before its first do not form a long operator, since the last two characters
// of every long operator form one too; reading from there, not from where the run began, keeps runs such
// as "!!!!" linear to print.
std::string_view LastOperatorToken(const std::string& sText)
{
	const std::string_view sAll(sText);
	size_t nStart = sAll.size();
	while (nStart > 0 && IsOperatorCharacter(sAll[nStart - 1]))
	{
		--nStart;
		if (nStart > 0 && !IsLongOperator(sAll.substr(nStart - 1, 2)))
			break;
	}
	std::string_view sRun = sAll.substr(nStart);
	for (;;)
	{
		size_t nLength = 1;
		while (nLength < sRun.size() && nLength < 3 && IsLongOperator(sRun.substr(0, nLength + 1)))
			++nLength;
		if (nLength == sRun.size())
			return sRun;
		sRun.remove_prefix(nLength);
	}
}

// Digits that a '.' would turn into a float literal: an integer, not the fraction of a float.
bool EndsWithInteger(const std::string& sText)
{
	size_t nStart = sText.size();
	while (nStart > 0 && IsWordCharacter(sText[nStart - 1]))
		--nStart;
	if (nStart == sText.size() || (nStart > 0 && sText[nStart - 1] == '.'))
		return false;
	return std::all_of(sText.begin() + static_cast<std::ptrdiff_t>(nStart), sText.end(),
	                   [](char c) { return c >= '0' && c <= '9'; });
}

// Whether the scanner would read text followed by sNext as other tokens than the two sides alone.
bool WouldFuse(const std::string& sText, std::string_view sNext)
{
	if (sText.empty() || sNext.empty())
		return false;
	const char cLast = sText.back();
	const char cNext = sNext.front();
	if (IsOperatorCharacter(cLast) && IsOperatorCharacter(cNext))
	{
		std::string sJoined(LastOperatorToken(sText));
		sJoined += cNext;
		return IsLongOperator(sJoined);
	}
	if (IsWordCharacter(cLast))
		return IsWordCharacter(cNext) || (cNext == '.' && EndsWithInteger(sText));
	return cLast == '.' && cNext >= '0' && cNext <= '9';
}

// A point makes "2" and "09" (left by a trimmed 'f') read as floats; "09" would not even be one integer.
std::string FloatText(std::string sText)
{
	if (!sText.empty() && sText.back() == 'f')
		sText.pop_back();
	if (sText.find_first_of(".eE") == std::string::npos)
		sText += '.';
	return sText;
}

// A then-branch ending in an if without else would take the else of the if around it.
bool EndsWithOpenIf(const Statement* pStatement)
{
	while (pStatement)
	{
		switch (pStatement->GetClass())
		{
		case kClass_SelectionStatement:
		{
			const auto* pIf = static_cast<const SelectionStatement*>(pStatement);
			if (!pIf->GetElse())
				return true;
			pStatement = pIf->GetElse();
			break;
		}
		case kClass_WhileStatement:
		case kClass_ForStatement:
			pStatement = static_cast<const IterationStatement*>(pStatement)->GetStatement();
			break;
		default:
			return false;
		}
	}
	return false;
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

void VisitorPrintTsl::_Append(std::string_view sText)
{
	if (WouldFuse(_sResult, sText))
		_sResult += ' ';
	_sResult.append(sText);
}

// Only a literal past 32 bits scans negative; its bit pattern in hex reads back as the same constant,
// where "-1" would read back as a negation.
void VisitorPrintTsl::_AppendInt(long iValue)
{
	char buffer[16];
	const int32_t iValue32 = static_cast<int32_t>(iValue);
	char* pBegin = buffer;
	if (iValue32 < 0)
	{
		std::memcpy(buffer, "0x", 2);
		pBegin += 2;
	}
	const auto end =
	    iValue32 < 0 ? std::to_chars(pBegin, buffer + sizeof(buffer), static_cast<uint32_t>(iValue32), 16).ptr
	                 : std::to_chars(pBegin, buffer + sizeof(buffer), iValue32).ptr;
	_Append(std::string_view(buffer, static_cast<size_t>(end - buffer)));
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
	if (_PrintModule(pModule))
		return true;
	_sResult.clear();
	_vLines.assign(1, pModule);
	return false;
}

bool VisitorPrintTsl::_PrintModule(Module* pModule)
{
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
	// An array without a length keeps its brackets: dropping them would declare a scalar.
	if (pNode->GetType()->IsArray())
	{
		_sResult += '[';
		if (pNode->GetType()->GetLength() && !_Print(pNode->GetType()->GetLength()))
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
	// A loop without body runs an empty statement.
	if (!pNode->GetStatement())
	{
		_sResult += ';';
		return true;
	}
	return _Print(pNode->GetStatement());
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

// Else-if chains are walked here rather than recursed into, however long they are.
bool VisitorPrintTsl::Visit(SelectionStatement* pNode, TIParentSyntax<Statement>*)
{
	for (SelectionStatement* pIf = pNode;;)
	{
		StartNewLine(pIf);
		_sResult += "if (";
		if (!_Print(pIf->GetCondition()))
			return false;
		_sResult += ')';
		EndLine(pIf->GetCondition());

		Statement* pThen = pIf->GetThen();
		Statement* pElse = pIf->GetElse();
		bool bThen;
		if (pElse && EndsWithOpenIf(pThen))
			bThen = _PrintBracedThen(pThen);
		else
		{
			const int nThenIndent = pThen && pThen->GetClass() == kClass_CompoundStatement ? 0 : 1;
			_nIndent += nThenIndent;
			bThen = _Print(pThen);
			_nIndent -= nThenIndent;
		}
		if (!bThen)
			return false;

		if (!pElse)
			return true;
		EndLine(pThen);
		StartNewLine(pElse);
		_sResult += "else";
		EndLine(pElse);
		StartNewLine(pElse);
		if (pElse->GetClass() != kClass_SelectionStatement)
			return _Print(pElse);
		pIf = static_cast<SelectionStatement*>(pElse);
	}
}

bool VisitorPrintTsl::_PrintBracedThen(Statement* pThen)
{
	StartNewLine(pThen);
	_sResult += '{';
	EndLine(pThen);
	++_nIndent;
	const bool bThen = _Print(pThen);
	--_nIndent;
	if (!bThen)
		return false;
	StartNewLine(pThen);
	_sResult += '}';
	EndLine(pThen);
	return true;
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

	_Append(sName);
	// Array constructors such as float[3](...) keep their brackets.
	if (!pName && pNode->GetType() && pNode->GetType()->IsArray())
	{
		_sResult += '[';
		if (pNode->GetType()->GetLength() && !_Print(pNode->GetType()->GetLength()))
			return false;
		_sResult += ']';
	}
	_sResult += '(';
	const std::vector<Expression*>& vArguments = pNode->GetParameters();
	for (size_t i = 0; i < vArguments.size(); ++i)
	{
		if (i > 0)
			_sResult += ", ";
		if (i == 0 && !sFirst.empty())
			_sResult += sFirst;
		else if (!_Print(vArguments[i]))
			return false;
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
	if (!_PrintOperand(pNode->GetArray(), kRank_Postfix))
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
	if (!_PrintOperand(pNode->GetExpression(), kRank_Postfix))
		return false;
	_Append(".");
	_sResult += pNode->GetField()->GetString();
	return true;
}

bool VisitorPrintTsl::Visit(Variable* pNode, TIParentSyntax<Expression>*)
{
	_Append(pNode->GetIdentifier()->GetString());
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

VisitorPrintTsl::Rank VisitorPrintTsl::_RankOf(const Expression* pExpression)
{
	switch (pExpression->GetClass())
	{
	case kClass_UnaryOperator:
		return kRank_Unary;
	case kClass_Conditional:
		return kRank_Conditional;
	case kClass_Assignment:
		return kRank_Assignment;
	// A negative float literal prints with its sign, which binds like a prefix operator.
	case kClass_FloatConstant:
	{
		const auto* pFloat = static_cast<const FloatConstant*>(pExpression);
		const String* pText = pFloat->GetString();
		const bool bNegative = pText && !pText->GetString().empty() ? pText->GetString()[0] == '-'
		                                                            : std::signbit(pFloat->GetValue());
		return bNegative ? kRank_Unary : kRank_Postfix;
	}
	default:
		return kRank_Postfix;
	}
}

bool VisitorPrintTsl::_PrintOperand(Expression* pExpression, Rank eMaximum)
{
	if (!pExpression)
		return false;
	if (_RankOf(pExpression) <= eMaximum)
		return _Print(pExpression);
	_sResult += '(';
	if (!_Print(pExpression))
		return false;
	_sResult += ')';
	return true;
}

// Every binary operation is parenthesised. Left-nested chains (a + b + c ...) are walked here rather than
// recursed into, however long they are.
bool VisitorPrintTsl::Visit(BinaryOperator* pNode, TIParentSyntax<Expression>*)
{
	const size_t nBase = _vChain.size();
	Expression* pLeft = pNode;
	for (; pLeft && pLeft->GetClass() == kClass_BinaryOperator; pLeft = _vChain.back()->GetLeft())
		_vChain.push_back(static_cast<BinaryOperator*>(pLeft));
	_sResult.append(_vChain.size() - nBase, '(');
	// The operands of a sequence may be assignments; those of every other operator bind tighter.
	auto OperandRank = [](const BinaryOperator* p)
	{ return p->GetOperator() == kOperator_Comma ? kRank_Assignment : kRank_Unary; };
	bool bPrinted = _PrintOperand(pLeft, OperandRank(_vChain.back()));
	while (bPrinted && _vChain.size() > nBase)
	{
		BinaryOperator* pOperation = _vChain.back();
		_vChain.pop_back();
		_Append(OperatorToString(pOperation->GetOperator()));
		bPrinted = _PrintOperand(pOperation->GetRight(), OperandRank(pOperation));
		_sResult += ')';
	}
	_vChain.resize(nBase);
	return bPrinted;
}

bool VisitorPrintTsl::Visit(PostOperator* pNode, TIParentSyntax<Expression>*)
{
	if (!_PrintOperand(pNode->GetExpression(), kRank_Postfix))
		return false;
	_Append(OperatorToString(pNode->GetOperator()));
	return true;
}

bool VisitorPrintTsl::Visit(UnaryOperator* pNode, TIParentSyntax<Expression>*)
{
	Expression* pOperand = pNode;
	for (; pOperand && pOperand->GetClass() == kClass_UnaryOperator;
	     pOperand = static_cast<UnaryOperator*>(pOperand)->GetExpression())
		_Append(OperatorToString(static_cast<UnaryOperator*>(pOperand)->GetOperator()));
	return _PrintOperand(pOperand, kRank_Unary);
}

// The source text is kept so that the program shows the literal as written; QLSL has no 'f' suffix.
bool VisitorPrintTsl::Visit(FloatConstant* pNode, TIParentSyntax<Expression>*)
{
	String* pText = pNode->GetString();
	if (!pText || pText->GetString().empty())
	{
		char buffer[64];
		const int nLength = std::snprintf(buffer, sizeof(buffer), "%#.16g", pNode->GetValue());
		_Append(std::string_view(buffer, static_cast<size_t>(nLength)));
		return true;
	}
	const std::string sText = FloatText(pText->GetString());
	if (sText != pText->GetString())
		pText->SetString(sText);
	_Append(sText);
	return true;
}

bool VisitorPrintTsl::Visit(IntConstant* pNode, TIParentSyntax<Expression>*)
{
	_AppendInt(pNode->GetValue());
	return true;
}

bool VisitorPrintTsl::Visit(BoolConstant* pNode, TIParentSyntax<Expression>*)
{
	_Append(pNode->GetValue() ? "true" : "false");
	return true;
}

// Right-nested chains (x = y = z ...) are walked here rather than recursed into, however long they are.
bool VisitorPrintTsl::Visit(Assignment* pNode, TIParentSyntax<Expression>*)
{
	for (Assignment* pAssignment = pNode;;)
	{
		if (!_PrintOperand(pAssignment->GetLeft(), kRank_Unary))
			return false;
		if (pAssignment->GetOperator() == kOperator_Assign)
			_sResult += " = ";
		else
		{
			_Append(std::string(OperatorToString(pAssignment->GetOperator())) + "=");
			_sResult += ' ';
		}
		Expression* pRight = pAssignment->GetRight();
		if (!pRight || pRight->GetClass() != kClass_Assignment)
			return _Print(pRight);
		pAssignment = static_cast<Assignment*>(pRight);
	}
}

} // namespace Tarsel::Effects
