#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "syntax/Syntax.h"
#include "syntax/TslScanner.h"

namespace Tarsel::Effects
{

// A LocationRange without constructors: the machine keeps symbols in a C union, which takes only plain
// records.
struct TslRange
{
	const SourceFiles* pFiles;
	int32_t iBeginLine;
	int32_t iBeginColumn;
	int32_t iEndLine;
	int32_t iEndColumn;
};

// One entry of the parsing machine's stack: a token's value, or the node that a rule has built so far.
struct TslSymbol
{
	union
	{
		Syntax* pNode;   // nonterminals: owned until a rule hands it to its parent or the module
		String* pString; // identifier and float tokens: owned until a node takes it
	};
	long iValue;     // integer and bool tokens; operator, qualifier and type codes of nonterminals
	TslRange range;  // source span of the token or of everything the rule has consumed
	int32_t iHeight; // levels of nodes in pNode's tree, counted to refuse trees too deep to unwind
};

// Flags of a class member declaration.
enum TslMemberFlag
{
	kMemberStatic = 1,
	kMemberConst = 2,
	kMemberInput = 4,
};

// Push parser of one library text: the scanner feeds it tokens, the generated machine calls the rule
// operations below, and definitions land in the module. Messages are lines "name(line) : message\n".
class TslParser : public IParser
{
public:
	// Trees deeper than this are refused, and so is nesting that keeps more symbols pending on the
	// machine's stack. Visitor walks recurse once per level (about 110 bytes a level in an optimised
	// build, 400 with sanitizers), so this height stays well inside a default 8 MB stack while leaving room
	// for generated chains of ten thousand terms.
	static constexpr int kMaxTreeHeight = 12000;
	static constexpr int kMaxPendingSymbols = 4 * kMaxTreeHeight;

	// Parses text into pModule; on failure appends the messages to errors. Messages and node ranges give
	// each line as the line map places it: in the file it was written in, under that file's own number.
	// The module keeps a copy of the map, whose file names the ranges point to.
	static bool Parse(Module* pModule, std::vector<std::string>& errors, const std::string& name,
	                  const std::string& text, const LineMap& lines);
	static bool Parse(Module* pModule, std::vector<std::string>& errors, const std::string& name,
	                  const std::string& text, int lineOffset);

	TslParser();
	~TslParser();
	TslParser(const TslParser&) = delete;
	TslParser& operator=(const TslParser&) = delete;

	bool Init() { return true; }
	bool Shutdown() { return true; }
	// True when the whole text was scanned and nothing was reported.
	bool Parse(Module* pModule, const std::string& name, const std::string& text, const LineMap& lines);
	bool Parse(Module* pModule, const std::string& name, const std::string& text, int lineOffset);

	void ParseConstantBool(const LocationRange& range, bool value) override;
	bool ParseConstantInt(const LocationRange& range, long value) override;
	bool ParseConstantFloat(const LocationRange& range, const char* text, int length) override;
	bool ParseKeyword(const LocationRange& range, int token) override;
	bool ParseIdentifier(const LocationRange& range, const char* text, int length) override;
	bool NewLine() override;

	// The last token fed; its string may since have passed to a node or been released.
	const TslSymbol& GetCurrentToken() const { return _currentToken; }
	int GetCurrentTokenCode() const { return _iCurrentToken; }
	const std::vector<std::string>& GetErrors() const { return _vErrors; }
	int GetErrorCount() const { return _iErrorCount; }
	// Nodes the rules have built in this parse, kept or not.
	int GetCountNodes() const { return _nNodes; }

	// Appends the Near part naming the current token.
	void Error(const std::string& message);
	// Records the message as it is.
	void Error(const std::string& message, int);

	// The operations below are the grammar's: each takes the symbols of a rule and builds or extends nodes,
	// giving them the range of the symbols they span.

	TslSymbol Keyword(const TslSymbol& token, long value);
	// Extends a symbol's range to a closing token.
	void Close(TslSymbol& symbol, const TslSymbol& last);
	// A parenthesised expression spans its parentheses.
	TslSymbol Widen(const TslSymbol& open, TslSymbol& expression, const TslSymbol& close);

	TslSymbol CreateVariable(TslSymbol& name);
	TslSymbol CreateIntConstant(const TslSymbol& value);
	TslSymbol CreateNegativeIntConstant(const TslSymbol& dash, const TslSymbol& value);
	TslSymbol CreateFloatConstant(TslSymbol& literal);
	TslSymbol CreateNegativeFloatConstant(const TslSymbol& dash, TslSymbol& literal);
	TslSymbol CreateBoolConstant(const TslSymbol& value);
	TslSymbol CreateSubscript(TslSymbol& array, TslSymbol& index, const TslSymbol& close);
	TslSymbol CreateFieldSelection(TslSymbol& expression, TslSymbol& field);
	TslSymbol CreateFunctionSelection(TslSymbol& expression, TslSymbol& call);
	TslSymbol CreatePostOperator(TslSymbol& expression, const TslSymbol& token, Operator op);
	TslSymbol CreateConditional(TslSymbol& condition, TslSymbol& whenTrue, TslSymbol& whenFalse);
	TslSymbol CreateAssignment(const TslSymbol& op, TslSymbol& left, TslSymbol& right);
	TslSymbol CreateUnaryOperator(const TslSymbol& op, TslSymbol& expression);
	TslSymbol CreateBinaryOperator(Operator op, TslSymbol& left, TslSymbol& right);
	TslSymbol CreateFunctionCall(TslSymbol& name);
	TslSymbol CreateConstructor(TslSymbol& type);
	void AddArgument(TslSymbol& call, TslSymbol& argument);

	TslSymbol CreateType(const TslSymbol& keyword, TypeSpecifier type);
	TslSymbol CreateUserType(TslSymbol& name);
	TslSymbol ArraySize(const TslSymbol& open, const TslSymbol* pLength, const TslSymbol& close);
	// Makes a type, or the type of a variable, an array of the given size.
	void MakeArray(TslSymbol& type, TslSymbol& size);
	void MakeArrayVariable(TslSymbol& declaration, TslSymbol& size);
	TslSymbol CreateVariableDeclaration(TslSymbol& type, TslSymbol& name);
	TslSymbol CreateMember(const TslSymbol& first, TslSymbol& type, TslSymbol& name, int flags);
	void SetInitializer(TslSymbol& declaration, TslSymbol& initializer, const TslSymbol& last);
	// As SetInitializer; `input Light l = Spot();` also types the call as the class it constructs.
	void SetMemberInitializer(TslSymbol& declaration, TslSymbol& initializer, const TslSymbol& last);

	TslSymbol CreateFunctionPrototype(TslSymbol& name);
	TslSymbol CreateFunctionParameter(TslSymbol& type, TslSymbol& name);
	TslSymbol SetParameterQualifier(const TslSymbol& keyword, TslSymbol& parameter,
	                                ParameterQualifier qualifier);
	void AddParameter(TslSymbol& prototype, TslSymbol& parameter);
	TslSymbol SetReturnType(TslSymbol& type, TslSymbol& prototype);
	TslSymbol CreateFunctionDefinition(TslSymbol& prototype, TslSymbol& body);

	TslSymbol CreateCompoundStatement(const TslSymbol& open);
	void AddStatement(TslSymbol& compound, TslSymbol& statement);
	TslSymbol CreateDeclarationStatement(TslSymbol& declaration, const TslSymbol& semicolon);
	TslSymbol CreateEmptyStatement(const TslSymbol& semicolon);
	TslSymbol CreateExpressionStatement(TslSymbol& expression, const TslSymbol& semicolon);
	TslSymbol CreateSelectionStatement(const TslSymbol& keyword, TslSymbol& condition, TslSymbol& then,
	                                   TslSymbol* pElse);
	TslSymbol CreateCondition(TslSymbol& expression);
	TslSymbol CreateDeclarationCondition(TslSymbol& declaration);
	TslSymbol CreateWhileStatement(const TslSymbol& keyword, TslSymbol& condition, TslSymbol& body);
	TslSymbol CreateDoWhileStatement(const TslSymbol& keyword, TslSymbol& body, TslSymbol& expression,
	                                 const TslSymbol& semicolon);
	TslSymbol CreateForStatement(const TslSymbol& keyword, TslSymbol& initialization, TslSymbol* pCondition);
	void SetForBody(TslSymbol& loop, TslSymbol* pIteration, TslSymbol& body);
	TslSymbol CreateJumpStatement(const TslSymbol& keyword, JumpType type, TslSymbol* pExpression,
	                              const TslSymbol& semicolon);

	TslSymbol CreateInterfaceDefinition(const TslSymbol& keyword, TslSymbol& name);
	void AddMemberFunction(TslSymbol& interface, TslSymbol& prototype);
	TslSymbol CreateClassDefinition(const TslSymbol& keyword, TslSymbol& name);
	TslSymbol CreateClassDefinition(const TslSymbol& keyword, TslSymbol& name, TslSymbol& interfaceName);
	void AddCoord(TslSymbol& classDefinition, const TslSymbol& keyword, TslSymbol& type, TslSymbol& name,
	              const TslSymbol& semicolon);
	void AddOutput(TslSymbol& classDefinition, const TslSymbol& keyword, TslSymbol& type, TslSymbol& name);
	void AddMemberVariable(TslSymbol& classDefinition, TslSymbol& variable);
	void AddMemberFunction(TslSymbol& classDefinition, TslSymbol& function, bool isStatic);

	// Registrations in the module; after a refused nesting they release instead.
	void AddFunctionDefinition(TslSymbol& function);
	void AddInterfaceDefinition(TslSymbol& interface);
	void AddClassDefinition(TslSymbol& classDefinition);
	void AddStatement(TslSymbol& statement);
	void AddExpression(TslSymbol& expression);

	// The machine discards symbols through these.
	void ReleaseToken(TslSymbol& token);
	void ReleaseNode(TslSymbol& symbol);
	void StackOverflow();

private:
	bool _Feed(int token, const LocationRange& range, long value, const char* pText, int length);
	TslSymbol _Node(Syntax* pNode, const TslRange& first, const TslRange& last);
	void _SetRange(TslSymbol& symbol, const TslRange& first, const TslRange& last);
	// Records that child now hangs below parent; refuses the parse when the tree gets too deep.
	void _Adopt(TslSymbol& parent, const TslSymbol& child);
	void _RefuseNesting();
	void _MakeArray(Type* pType, TslSymbol& owner, TslSymbol& size);
	// Hands a token's string to a node: the symbol no longer owns it.
	String* _Take(TslSymbol& token);
	bool _Register(TslSymbol& definition);

	const std::string* _psName = nullptr;
	// The names of the last token's file, kept since the file changes only at included text.
	const std::string* _pTokenFile = nullptr;
	const SourceFiles* _pTokenFiles = nullptr;
	const std::string* _psText = nullptr;
	void* _pMachine = nullptr;
	Module* _pModule = nullptr;
	int32_t _iCurrentToken = kToken_End;
	TslSymbol _currentToken{};
	int32_t _iLine = 0; // newlines seen
	const LineMap* _pLines = nullptr;
	std::vector<std::string> _vErrors;
	int32_t _iErrorCount = 0;
	// Text of the last identifier or float fed, kept for messages after its string has moved on.
	std::string _sTokenText;
	// Set when nesting was refused or the stack could not grow: the rest of the text is not parsed.
	bool _bStopped = false;
	int _nNodes = 0;
	// Names of the module's classes: the module finds classes by a linear search, too slow for every
	// registration of a large library.
	std::unordered_set<std::string> _setClassNames;
};

} // namespace Tarsel::Effects
