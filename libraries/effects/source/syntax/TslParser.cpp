#include "syntax/TslParser.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <type_traits>

#include "generated/TslGrammar.h"

// The machine generated from TslGrammar.y.
void* TslGrammarAlloc(void* (*pMalloc)(size_t));
void TslGrammarFree(void* pMachine, void (*pFree)(void*));
void TslGrammar(void* pMachine, int token, Tarsel::Effects::TslSymbol value,
                Tarsel::Effects::TslParser* pParser);
int TslGrammarPendingSymbols(void* pMachine);

namespace Tarsel::Effects
{

#define TSL_CHECK_TERMINAL(name, terminal, text)                                                             \
	static_assert(kToken_##name == TSL_TOKEN_##terminal, "token " #terminal " is out of grammar order");
TSL_TOKENS(TSL_CHECK_TERMINAL)
#undef TSL_CHECK_TERMINAL

static_assert(std::is_trivially_copyable<TslSymbol>::value &&
                  std::is_trivially_default_constructible<TslSymbol>::value,
              "the machine keeps symbols in a C union");

namespace
{

template <class T>
T* As(const TslSymbol& symbol)
{
	return static_cast<T*>(symbol.pNode);
}

// Same rule as the nodes' SetRange(first, last), for spans that have no node yet.
TslRange Join(const TslRange& first, const TslRange& last)
{
	TslRange range = first;
	const std::string* pSource = last.pFiles ? last.pFiles->pSource : nullptr;
	if (pSource && pSource != (first.pFiles ? first.pFiles->pSource : nullptr))
		range.pFiles = SourceFiles::Intern(pSource, first.pFiles ? first.pFiles->pFile : nullptr);
	range.iEndLine = last.iEndLine;
	range.iEndColumn = last.iEndColumn;
	return range;
}

} // namespace

bool TslParser::Parse(Module* pModule, std::vector<std::string>& errors, const std::string& name,
                      const std::string& text, int lineOffset)
{
	return Parse(pModule, errors, name, text, LineMap(lineOffset));
}

bool TslParser::Parse(Module* pModule, std::vector<std::string>& errors, const std::string& name,
                      const std::string& text, const LineMap& lines)
{
	TslParser parser;
	const bool parsed = parser.Parse(pModule, name, text, lines);
	if (!parsed)
		errors.insert(errors.end(), parser._vErrors.begin(), parser._vErrors.end());
	return parsed;
}

TslParser::TslParser() = default;

TslParser::~TslParser()
{
	if (_pMachine)
		TslGrammarFree(_pMachine, std::free);
}

bool TslParser::Parse(Module* pModule, const std::string& name, const std::string& text, int lineOffset)
{
	return Parse(pModule, name, text, LineMap(lineOffset));
}

bool TslParser::Parse(Module* pModule, const std::string& name, const std::string& text, const LineMap& lines)
{
	_psName = &name;
	_pTokenFile = nullptr;
	_pTokenFiles = SourceFiles::Intern(_psName, nullptr);
	_psText = &text;
	_pModule = pModule;
	// A map without lines names no file, so only one with lines needs to live as long as the nodes.
	_pLines = lines.GetCountLines() > 0 ? pModule->KeepLineMap(lines) : &lines;
	_iLine = 0;
	_iErrorCount = 0;
	_vErrors.clear();
	_bStopped = false;
	_nNodes = 0;
	_setClassNames.clear();
	for (const ClassDefinition* pClass : pModule->GetClassDefinitions())
		_setClassNames.insert(pClass->GetName()->GetString());
	_iCurrentToken = kToken_End;
	_currentToken = TslSymbol{};
	_pMachine = TslGrammarAlloc(std::malloc);

	TslScanner scanner;
	scanner.Init(this, text, *_pLines);
	const bool scanned = scanner.Scan();
	if (!_bStopped)
		TslGrammar(_pMachine, kToken_End, TslSymbol{}, this);

	// Frees whatever a stopped or failed parse left on the stack.
	TslGrammarFree(_pMachine, std::free);
	_pMachine = nullptr;
	return scanned && _iErrorCount == 0;
}

// ----------------------------------------------------------------------------------------------------------
// Tokens from the scanner

// Makes the token current and pushes it into the machine; the strings of identifiers and floats are the
// token's until a rule hands them to a node.
bool TslParser::_Feed(int token, const LocationRange& range, long value, const char* pText, int length)
{
	if (_bStopped)
		return false;
	_iCurrentToken = token;
	_currentToken = TslSymbol{};
	if (range.GetFileWritten() != _pTokenFile)
	{
		_pTokenFile = range.GetFileWritten();
		_pTokenFiles = SourceFiles::Intern(_psName, _pTokenFile);
	}
	_currentToken.range = {_pTokenFiles, range._iBeginLine, range._iBeginColumn, range._iEndLine,
	                       range._iEndColumn};
	_currentToken.iValue = value;
	if (pText)
	{
		_sTokenText.assign(pText, size_t(length));
		_currentToken.pString = _pModule->CreateString(_sTokenText.c_str());
	}
	TslGrammar(_pMachine, token, _currentToken, this);
	if (!_bStopped && TslGrammarPendingSymbols(_pMachine) > kMaxPendingSymbols)
		_RefuseNesting();
	return true;
}

void TslParser::ParseConstantBool(const LocationRange& range, bool value)
{
	_Feed(kToken_BoolConstant, range, value, nullptr, 0);
}

bool TslParser::ParseConstantInt(const LocationRange& range, long value)
{
	return _Feed(kToken_IntConstant, range, value, nullptr, 0);
}

bool TslParser::ParseConstantFloat(const LocationRange& range, const char* text, int length)
{
	return _Feed(kToken_FloatConstant, range, 0, text, length);
}

bool TslParser::ParseKeyword(const LocationRange& range, int token)
{
	return _Feed(token, range, 0, nullptr, 0);
}

bool TslParser::ParseIdentifier(const LocationRange& range, const char* text, int length)
{
	return _Feed(kToken_Identifier, range, 0, text, length);
}

bool TslParser::NewLine()
{
	++_iLine;
	return true;
}

// ----------------------------------------------------------------------------------------------------------
// Messages

void TslParser::Error(const std::string& message)
{
	std::string line = message;
	line += " Near \"";
	line += TslTokenToString(_iCurrentToken);
	line += '"';
	if (_iCurrentToken == kToken_Identifier)
	{
		line += ' ';
		line += _sTokenText;
	}
	Error(line, 0);
}

void TslParser::Error(const std::string& message, int)
{
	const LineMap::Position position = _pLines->Resolve(_iLine + 1);
	char prefix[32];
	std::snprintf(prefix, sizeof(prefix), "(%d) : ", int(position.iLine));
	++_iErrorCount;
	_vErrors.push_back((position.pFile ? *position.pFile : *_psName) + prefix + message + "\n");
}

void TslParser::_RefuseNesting()
{
	Error("Nesting too deep.");
	_bStopped = true;
}

void TslParser::StackOverflow()
{
	// The machine has emptied its stack; nothing sensible can follow.
	_bStopped = true;
}

// ----------------------------------------------------------------------------------------------------------
// Ownership of symbols

void TslParser::ReleaseToken(TslSymbol& token)
{
	if (token.pString)
		_pModule->DestroyString(token.pString);
}

void TslParser::ReleaseNode(TslSymbol& symbol)
{
	delete symbol.pNode;
	symbol.pNode = nullptr;
}

String* TslParser::_Take(TslSymbol& token)
{
	String* pString = token.pString;
	token.pString = nullptr;
	return pString;
}

TslSymbol TslParser::_Node(Syntax* pNode, const TslRange& first, const TslRange& last)
{
	++_nNodes;
	TslSymbol symbol{};
	symbol.pNode = pNode;
	symbol.iHeight = 1;
	_SetRange(symbol, first, last);
	return symbol;
}

void TslParser::_SetRange(TslSymbol& symbol, const TslRange& first, const TslRange& last)
{
	const TslRange& range = symbol.range = Join(first, last);
	if (symbol.pNode)
		symbol.pNode->SetRange(LocationRange(range.pFiles, range.iBeginLine, range.iBeginColumn,
		                                     range.iEndLine, range.iEndColumn));
}

void TslParser::_Adopt(TslSymbol& parent, const TslSymbol& child)
{
	parent.iHeight = std::max(parent.iHeight, child.iHeight + 1);
	if (parent.iHeight > kMaxTreeHeight && !_bStopped)
		_RefuseNesting();
}

TslSymbol TslParser::Keyword(const TslSymbol& token, long value)
{
	TslSymbol symbol{};
	symbol.iValue = value;
	symbol.range = token.range;
	return symbol;
}

void TslParser::Close(TslSymbol& symbol, const TslSymbol& last)
{
	_SetRange(symbol, symbol.range, last.range);
}

TslSymbol TslParser::Widen(const TslSymbol& open, TslSymbol& expression, const TslSymbol& close)
{
	TslSymbol symbol = expression;
	_SetRange(symbol, open.range, close.range);
	return symbol;
}

// ----------------------------------------------------------------------------------------------------------
// Expressions

TslSymbol TslParser::CreateVariable(TslSymbol& name)
{
	return _Node(_pModule->CreateVariable(_Take(name)), name.range, name.range);
}

TslSymbol TslParser::CreateIntConstant(const TslSymbol& value)
{
	return _Node(_pModule->CreateIntConstant(value.iValue), value.range, value.range);
}

TslSymbol TslParser::CreateNegativeIntConstant(const TslSymbol& dash, const TslSymbol& value)
{
	// Negation wraps within 32 bits like the literal itself.
	const long negated = long(int32_t(0u - uint32_t(value.iValue)));
	return _Node(_pModule->CreateIntConstant(negated), dash.range, value.range);
}

TslSymbol TslParser::CreateFloatConstant(TslSymbol& literal)
{
	return _Node(_pModule->CreateFloatConstant(_Take(literal)), literal.range, literal.range);
}

TslSymbol TslParser::CreateNegativeFloatConstant(const TslSymbol& dash, TslSymbol& literal)
{
	// The sign goes into the text before the value is read from it.
	String* pText = _Take(literal);
	pText->AddPrefix("-");
	return _Node(_pModule->CreateFloatConstant(pText), dash.range, literal.range);
}

TslSymbol TslParser::CreateBoolConstant(const TslSymbol& value)
{
	return _Node(_pModule->CreateBoolConstant(value.iValue != 0), value.range, value.range);
}

TslSymbol TslParser::CreateSubscript(TslSymbol& array, TslSymbol& index, const TslSymbol& close)
{
	TslSymbol symbol = _Node(_pModule->CreateSubscript(As<Expression>(array), As<Expression>(index)),
	                         array.range, close.range);
	_Adopt(symbol, array);
	_Adopt(symbol, index);
	return symbol;
}

TslSymbol TslParser::CreateFieldSelection(TslSymbol& expression, TslSymbol& field)
{
	TslSymbol symbol = _Node(_pModule->CreateFieldSelection(As<Expression>(expression), _Take(field)),
	                         expression.range, field.range);
	_Adopt(symbol, expression);
	return symbol;
}

TslSymbol TslParser::CreateFunctionSelection(TslSymbol& expression, TslSymbol& call)
{
	TslSymbol symbol =
	    _Node(_pModule->CreateFunctionSelection(As<Expression>(expression), As<FunctionCall>(call)),
	          expression.range, call.range);
	_Adopt(symbol, expression);
	_Adopt(symbol, call);
	return symbol;
}

TslSymbol TslParser::CreatePostOperator(TslSymbol& expression, const TslSymbol& token, Operator op)
{
	TslSymbol symbol =
	    _Node(_pModule->CreatePostOperator(op, As<Expression>(expression)), expression.range, token.range);
	_Adopt(symbol, expression);
	return symbol;
}

TslSymbol TslParser::CreateConditional(TslSymbol& condition, TslSymbol& whenTrue, TslSymbol& whenFalse)
{
	TslSymbol symbol = _Node(_pModule->CreateConditional(As<Expression>(condition), As<Expression>(whenTrue),
	                                                     As<Expression>(whenFalse)),
	                         condition.range, whenFalse.range);
	_Adopt(symbol, condition);
	_Adopt(symbol, whenTrue);
	_Adopt(symbol, whenFalse);
	return symbol;
}

TslSymbol TslParser::CreateAssignment(const TslSymbol& op, TslSymbol& left, TslSymbol& right)
{
	TslSymbol symbol =
	    _Node(_pModule->CreateAssignment(Operator(op.iValue), As<Expression>(left), As<Expression>(right)),
	          left.range, right.range);
	_Adopt(symbol, left);
	_Adopt(symbol, right);
	return symbol;
}

TslSymbol TslParser::CreateUnaryOperator(const TslSymbol& op, TslSymbol& expression)
{
	TslSymbol symbol = _Node(_pModule->CreateUnaryOperator(Operator(op.iValue), As<Expression>(expression)),
	                         op.range, expression.range);
	_Adopt(symbol, expression);
	return symbol;
}

TslSymbol TslParser::CreateBinaryOperator(Operator op, TslSymbol& left, TslSymbol& right)
{
	TslSymbol symbol = _Node(_pModule->CreateBinaryOperator(op, As<Expression>(left), As<Expression>(right)),
	                         left.range, right.range);
	_Adopt(symbol, left);
	_Adopt(symbol, right);
	return symbol;
}

TslSymbol TslParser::CreateFunctionCall(TslSymbol& name)
{
	return _Node(_pModule->CreateFunctionCall(_Take(name)), name.range, name.range);
}

TslSymbol TslParser::CreateConstructor(TslSymbol& type)
{
	TslSymbol symbol = _Node(_pModule->CreateFunctionCall(As<Type>(type)), type.range, type.range);
	_Adopt(symbol, type);
	return symbol;
}

void TslParser::AddArgument(TslSymbol& call, TslSymbol& argument)
{
	As<FunctionCall>(call)->AddParameter(As<Expression>(argument));
	_Adopt(call, argument);
}

// ----------------------------------------------------------------------------------------------------------
// Types and declarations

TslSymbol TslParser::CreateType(const TslSymbol& keyword, TypeSpecifier type)
{
	return _Node(_pModule->CreateType(type), keyword.range, keyword.range);
}

TslSymbol TslParser::CreateUserType(TslSymbol& name)
{
	return _Node(_pModule->CreateUserType(_Take(name)), name.range, name.range);
}

TslSymbol TslParser::ArraySize(const TslSymbol& open, const TslSymbol* pLength, const TslSymbol& close)
{
	TslSymbol size{};
	if (pLength)
		size = CreateIntConstant(*pLength);
	size.range = Join(open.range, close.range);
	return size;
}

void TslParser::MakeArray(TslSymbol& type, TslSymbol& size)
{
	_MakeArray(As<Type>(type), type, size);
}

void TslParser::MakeArrayVariable(TslSymbol& declaration, TslSymbol& size)
{
	_MakeArray(As<VariableDeclaration>(declaration)->GetType(), declaration, size);
}

void TslParser::_MakeArray(Type* pType, TslSymbol& owner, TslSymbol& size)
{
	pType->SetArray(true);
	if (size.pNode)
		pType->SetLength(As<Expression>(size));
	_Adopt(owner, size);
	_SetRange(owner, owner.range, size.range);
}

TslSymbol TslParser::CreateVariableDeclaration(TslSymbol& type, TslSymbol& name)
{
	TslSymbol symbol = _Node(_pModule->CreateVariableDeclaration(As<Type>(type), _Take(name), nullptr),
	                         type.range, name.range);
	_Adopt(symbol, type);
	return symbol;
}

TslSymbol TslParser::CreateMember(const TslSymbol& first, TslSymbol& type, TslSymbol& name, int flags)
{
	const TslRange begin = first.range;
	TslSymbol symbol = CreateVariableDeclaration(type, name);
	VariableDeclaration* pDeclaration = As<VariableDeclaration>(symbol);
	pDeclaration->SetStatic((flags & kMemberStatic) != 0);
	pDeclaration->SetConst((flags & kMemberConst) != 0);
	if (flags & kMemberInput)
		pDeclaration->SetStorageQualifier(kStorage_Input);
	_SetRange(symbol, begin, symbol.range);
	return symbol;
}

void TslParser::SetInitializer(TslSymbol& declaration, TslSymbol& initializer, const TslSymbol& last)
{
	As<VariableDeclaration>(declaration)->SetInitializer(As<Expression>(initializer));
	_Adopt(declaration, initializer);
	_SetRange(declaration, declaration.range, last.range);
}

void TslParser::SetMemberInitializer(TslSymbol& declaration, TslSymbol& initializer, const TslSymbol& last)
{
	const VariableDeclaration* pDeclaration = As<VariableDeclaration>(declaration);
	Syntax* pInitializer = initializer.pNode;
	const bool connects = pDeclaration->GetStorageQualifier() == kStorage_Input &&
	                      pDeclaration->GetType()->GetClass() == kClass_UserType &&
	                      static_cast<Expression*>(pInitializer)->GetClass() == kClass_FunctionCall;
	if (connects)
	{
		FunctionCall* pCall = static_cast<FunctionCall*>(pInitializer);
		if (pCall->GetName() && !pCall->GetType())
		{
			UserType* pType = _pModule->CreateUserType(_pModule->CreateString(pCall->GetName()->c_str()));
			pType->SetRange(pCall->GetRange());
			pCall->SetType(pType);
		}
	}
	SetInitializer(declaration, initializer, last);
}

// ----------------------------------------------------------------------------------------------------------
// Functions

TslSymbol TslParser::CreateFunctionPrototype(TslSymbol& name)
{
	return _Node(_pModule->CreateFunctionPrototype(kFunction_None, nullptr, _Take(name)), name.range,
	             name.range);
}

TslSymbol TslParser::CreateFunctionParameter(TslSymbol& type, TslSymbol& name)
{
	TslSymbol symbol = _Node(_pModule->CreateFunctionParameter(As<Type>(type)), type.range, name.range);
	FunctionParameter* pParameter = As<FunctionParameter>(symbol);
	pParameter->SetName(_Take(name));
	pParameter->SetParameterQualifier(kParameter_In);
	_Adopt(symbol, type);
	return symbol;
}

TslSymbol TslParser::SetParameterQualifier(const TslSymbol& keyword, TslSymbol& parameter,
                                           ParameterQualifier qualifier)
{
	As<FunctionParameter>(parameter)->SetParameterQualifier(qualifier);
	TslSymbol symbol = parameter;
	_SetRange(symbol, keyword.range, parameter.range);
	return symbol;
}

void TslParser::AddParameter(TslSymbol& prototype, TslSymbol& parameter)
{
	As<FunctionPrototype>(prototype)->AddParameter(As<FunctionParameter>(parameter));
	_Adopt(prototype, parameter);
}

TslSymbol TslParser::SetReturnType(TslSymbol& type, TslSymbol& prototype)
{
	As<FunctionPrototype>(prototype)->SetReturnType(As<Type>(type));
	TslSymbol symbol = prototype;
	_Adopt(symbol, type);
	_SetRange(symbol, type.range, prototype.range);
	return symbol;
}

TslSymbol TslParser::CreateFunctionDefinition(TslSymbol& prototype, TslSymbol& body)
{
	TslSymbol symbol = _Node(
	    _pModule->CreateFunctionDefinition(As<FunctionPrototype>(prototype), As<CompoundStatement>(body)),
	    prototype.range, body.range);
	_Adopt(symbol, prototype);
	_Adopt(symbol, body);
	return symbol;
}

// ----------------------------------------------------------------------------------------------------------
// Statements

TslSymbol TslParser::CreateCompoundStatement(const TslSymbol& open)
{
	return _Node(_pModule->CreateCompoundStatement(), open.range, open.range);
}

void TslParser::AddStatement(TslSymbol& compound, TslSymbol& statement)
{
	As<CompoundStatement>(compound)->AddStatement(As<Statement>(statement));
	_Adopt(compound, statement);
}

TslSymbol TslParser::CreateDeclarationStatement(TslSymbol& declaration, const TslSymbol& semicolon)
{
	TslSymbol symbol = _Node(_pModule->CreateDeclarationStatement(As<VariableDeclaration>(declaration)),
	                         declaration.range, semicolon.range);
	_Adopt(symbol, declaration);
	return symbol;
}

TslSymbol TslParser::CreateEmptyStatement(const TslSymbol& semicolon)
{
	return _Node(_pModule->CreateEmptyStatement(), semicolon.range, semicolon.range);
}

TslSymbol TslParser::CreateExpressionStatement(TslSymbol& expression, const TslSymbol& semicolon)
{
	TslSymbol symbol = _Node(_pModule->CreateExpressionStatement(As<Expression>(expression)),
	                         expression.range, semicolon.range);
	_Adopt(symbol, expression);
	return symbol;
}

TslSymbol TslParser::CreateSelectionStatement(const TslSymbol& keyword, TslSymbol& condition, TslSymbol& then,
                                              TslSymbol* pElse)
{
	SelectionStatement* pSelection = _pModule->CreateSelectionStatement();
	pSelection->SetCondition(As<Expression>(condition));
	pSelection->SetThen(As<Statement>(then));
	TslSymbol symbol = _Node(pSelection, keyword.range, pElse ? pElse->range : then.range);
	_Adopt(symbol, condition);
	_Adopt(symbol, then);
	if (pElse)
	{
		pSelection->SetElse(As<Statement>(*pElse));
		_Adopt(symbol, *pElse);
	}
	return symbol;
}

TslSymbol TslParser::CreateCondition(TslSymbol& expression)
{
	TslSymbol symbol =
	    _Node(_pModule->CreateCondition(As<Expression>(expression)), expression.range, expression.range);
	_Adopt(symbol, expression);
	return symbol;
}

TslSymbol TslParser::CreateDeclarationCondition(TslSymbol& declaration)
{
	TslSymbol symbol =
	    _Node(_pModule->CreateCondition(As<Declaration>(declaration)), declaration.range, declaration.range);
	_Adopt(symbol, declaration);
	return symbol;
}

TslSymbol TslParser::CreateWhileStatement(const TslSymbol& keyword, TslSymbol& condition, TslSymbol& body)
{
	TslSymbol symbol = _Node(_pModule->CreateWhileStatement(As<Condition>(condition), As<Statement>(body)),
	                         keyword.range, body.range);
	_Adopt(symbol, condition);
	_Adopt(symbol, body);
	return symbol;
}

TslSymbol TslParser::CreateDoWhileStatement(const TslSymbol& keyword, TslSymbol& body, TslSymbol& expression,
                                            const TslSymbol& semicolon)
{
	TslSymbol symbol =
	    _Node(_pModule->CreateDoWhileStatement(As<Statement>(body), As<Expression>(expression)),
	          keyword.range, semicolon.range);
	_Adopt(symbol, body);
	_Adopt(symbol, expression);
	return symbol;
}

TslSymbol TslParser::CreateForStatement(const TslSymbol& keyword, TslSymbol& initialization,
                                        TslSymbol* pCondition)
{
	ForStatement* pFor = _pModule->CreateForStatement(nullptr);
	pFor->SetInitialization(As<Statement>(initialization));
	TslSymbol symbol = _Node(pFor, keyword.range, keyword.range);
	_Adopt(symbol, initialization);
	if (pCondition)
	{
		pFor->SetCondition(As<Condition>(*pCondition));
		_Adopt(symbol, *pCondition);
	}
	return symbol;
}

void TslParser::SetForBody(TslSymbol& loop, TslSymbol* pIteration, TslSymbol& body)
{
	ForStatement* pFor = As<ForStatement>(loop);
	if (pIteration)
	{
		pFor->SetIteration(As<Expression>(*pIteration));
		_Adopt(loop, *pIteration);
	}
	pFor->SetStatement(As<Statement>(body));
	_Adopt(loop, body);
	_SetRange(loop, loop.range, body.range);
}

TslSymbol TslParser::CreateJumpStatement(const TslSymbol& keyword, JumpType type, TslSymbol* pExpression,
                                         const TslSymbol& semicolon)
{
	TslSymbol symbol =
	    _Node(_pModule->CreateJumpStatement(type, pExpression ? As<Expression>(*pExpression) : nullptr),
	          keyword.range, semicolon.range);
	if (pExpression)
		_Adopt(symbol, *pExpression);
	return symbol;
}

// ----------------------------------------------------------------------------------------------------------
// Interfaces and classes

TslSymbol TslParser::CreateInterfaceDefinition(const TslSymbol& keyword, TslSymbol& name)
{
	return _Node(_pModule->CreateInterfaceDefinition(_Take(name)), keyword.range, name.range);
}

void TslParser::AddMemberFunction(TslSymbol& interface, TslSymbol& prototype)
{
	As<InterfaceDefinition>(interface)->AddMemberFunction(As<FunctionPrototype>(prototype));
	_Adopt(interface, prototype);
}

TslSymbol TslParser::CreateClassDefinition(const TslSymbol& keyword, TslSymbol& name)
{
	return _Node(_pModule->CreateClassDefinition(_Take(name)), keyword.range, name.range);
}

TslSymbol TslParser::CreateClassDefinition(const TslSymbol& keyword, TslSymbol& name,
                                           TslSymbol& interfaceName)
{
	TslSymbol symbol = CreateClassDefinition(keyword, name);
	As<ClassDefinition>(symbol)->SetInterface(_Take(interfaceName));
	_SetRange(symbol, keyword.range, interfaceName.range);
	return symbol;
}

void TslParser::AddCoord(TslSymbol& classDefinition, const TslSymbol& keyword, TslSymbol& type,
                         TslSymbol& name, const TslSymbol& semicolon)
{
	TslSymbol coord = CreateVariableDeclaration(type, name);
	VariableDeclaration* pCoord = As<VariableDeclaration>(coord);
	pCoord->SetStorageQualifier(kStorage_Coord);
	pCoord->SetTransformation(TransformationCoord(keyword.iValue));
	_SetRange(coord, keyword.range, semicolon.range);
	if (!As<ClassDefinition>(classDefinition)->AddCoord(pCoord))
	{
		Error("Conflicting coord declaration");
		ReleaseNode(coord);
		return;
	}
	_Adopt(classDefinition, coord);
}

void TslParser::AddOutput(TslSymbol& classDefinition, const TslSymbol&, TslSymbol& type, TslSymbol& name)
{
	if (!As<ClassDefinition>(classDefinition)->AddOutput(As<Type>(type), name.pString))
	{
		Error("Conflicting output declaration");
		ReleaseNode(type);
		ReleaseToken(name);
		return;
	}
	_Take(name);
	_Adopt(classDefinition, type);
}

void TslParser::AddMemberVariable(TslSymbol& classDefinition, TslSymbol& variable)
{
	As<ClassDefinition>(classDefinition)->AddMemberVariable(As<VariableDeclaration>(variable));
	_Adopt(classDefinition, variable);
}

void TslParser::AddMemberFunction(TslSymbol& classDefinition, TslSymbol& function, bool isStatic)
{
	FunctionDefinition* pFunction = As<FunctionDefinition>(function);
	pFunction->GetFunctionPrototype()->SetQualifier(isStatic ? kFunction_Static : kFunction_None);
	As<ClassDefinition>(classDefinition)->AddMemberFunction(pFunction);
	_Adopt(classDefinition, function);
}

// ----------------------------------------------------------------------------------------------------------
// Registration

// False (after releasing it) when the parse was stopped and the definition must not reach the module.
bool TslParser::_Register(TslSymbol& definition)
{
	if (!_bStopped)
		return true;
	ReleaseNode(definition);
	return false;
}

void TslParser::AddFunctionDefinition(TslSymbol& function)
{
	if (_Register(function))
		_pModule->AddFunctionDefinition(As<FunctionDefinition>(function));
}

void TslParser::AddInterfaceDefinition(TslSymbol& interface)
{
	if (!_Register(interface))
		return;
	InterfaceDefinition* pInterface = As<InterfaceDefinition>(interface);
	const std::string& name = pInterface->GetName()->GetString();
	if (_pModule->GetInterfaceDefinition(name))
	{
		Error("Duplicate interface definition: \"" + name + "\"", 0);
		ReleaseNode(interface);
		return;
	}
	_pModule->AddInterfaceDefinition(pInterface);
}

void TslParser::AddClassDefinition(TslSymbol& classDefinition)
{
	if (!_Register(classDefinition))
		return;
	ClassDefinition* pClass = As<ClassDefinition>(classDefinition);
	const std::string& name = pClass->GetName()->GetString();
	if (!_setClassNames.insert(name).second)
	{
		Error("Duplicate class definition: \"" + name + "\"", 0);
		ReleaseNode(classDefinition);
		return;
	}
	_pModule->AddClassDefinition(pClass);
}

void TslParser::AddStatement(TslSymbol& statement)
{
	if (_Register(statement))
		_pModule->AddStatement(As<Statement>(statement));
}

void TslParser::AddExpression(TslSymbol& expression)
{
	if (_Register(expression))
		_pModule->AddExpression(As<Expression>(expression));
}

} // namespace Tarsel::Effects
