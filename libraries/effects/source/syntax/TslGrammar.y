/*
** The Tarsel shading language
** ===========================
**
** This file is the grammar of the language and the reference for it: read it top to bottom to learn what a
** shader library may contain. The build runs it through the lemon parser generator, which writes the LALR(1)
** tables that TslParser drives one token at a time. Every rule shows the form it accepts; the code in braces
** builds the syntax tree node for it and is safe to skip when you only want to learn the language.
**
** A library is a sequence of definitions:
**
**     interface Light                          // an interface: method prototypes only
**     {
**         vec3 Illuminate(vec3 position);
**     }
**
**     class Spot : Light                       // a class, optionally implementing one interface
**     {
**         coord vec3 position;                 // coordinates the renderer transforms for the class
**         output vec3 color;                   // outputs the class writes
**         input vec3 intensity = vec3(1.0);    // inputs set by the host, with defaults
**         input Light next;                    // an input of interface type connects another shader
**         static const float kPi = 3.14159;    // class-wide values and methods
**         float falloff;                       // per-instance members
**
**         vec3 Illuminate(vec3 position) { return intensity * falloff; }
**     }
**
**     float Square(float x) { return x * x; }  // free functions
**
** There is no preprocessing here (that has happened before the text arrives) and no semicolon after the
** closing brace of a class or interface. Statements and expressions follow the familiar C forms; the
** operator precedence is spelt out level by level in the expression section at the end.
**
** Comments run from // to the end of the line, or from /* to the first star-slash after it (they do not
** nest). Every keyword is reserved, so `normal`, `tangent`, `coord`, `input`, `output`, `in`, `out` and
** `primitive` cannot name anything; words such as `uniform` or `discard` are ordinary names here.
**
** Terminals are written in capitals. Their order below is the order of the scanner's token codes (see
** TslScanner.h): lemon numbers terminals by first appearance, so these lines fix the codes. `input`,
** `struct` and RESERVED have codes but `struct` and RESERVED appear in no rule: using them is an error.
*/

%name TslGrammar
%token_prefix TSL_TOKEN_
%extra_argument {TslParser* pParser}
%token_type {TslSymbol}
%default_type {TslSymbol}
%start_symbol library

/* A stack of 0 means the stack grows on the heap: nesting is limited by TslParser, not by lemon. */
%stack_size 0

%include {
#include <cstdlib>

#include "syntax/TslParser.h"

using namespace Tarsel::Effects;
}

/* Symbols waiting on the machine's stack: TslParser refuses nesting that piles up too many. */
%code {
int TslGrammarPendingSymbols(void* pMachine)
{
	const yyParser* pParser = static_cast<const yyParser*>(pMachine);
	return int(pParser->yytos - pParser->yystack);
}
}

%token LBRACKET RBRACKET LBRACE RBRACE INTERFACE IDENTIFIER CLASS COLON SEMICOLON COORD NORMAL TANGENT.
%token OUTPUT OUT FLOAT VEC2 VEC3 VEC4 INTCONSTANT STATIC CONST EQUAL DASH FLOATCONSTANT BOOLCONSTANT.
%token RPAREN COMMA LPAREN BOOL INT IVEC2 IVEC3 IVEC4 MAT2 MAT3 MAT4 INPUT VOID IN INOUT.
%token IF WHILE DO FOR CONTINUE BREAK RETURN ELSE DOT INC_OP DEC_OP BVEC2 BVEC3 BVEC4.
%token PLUS BANG TILDE STAR SLASH PERCENT LEFT_OP RIGHT_OP LEFT_ANGLE RIGHT_ANGLE LE_OP GE_OP EQ_OP NE_OP.
%token AMPERSAND CARET VERTICAL_BAR AND_OP XOR_OP OR_OP QUESTION.
%token MUL_ASSIGN DIV_ASSIGN MOD_ASSIGN ADD_ASSIGN SUB_ASSIGN LEFT_ASSIGN RIGHT_ASSIGN.
%token AND_ASSIGN XOR_ASSIGN OR_ASSIGN SAMPLER2D SAMPLER3D SAMPLERCUBE PRIMITIVE RESERVED STRUCT.

/* An `else` belongs to the nearest `if` that has none: the parser shifts it rather than closing the if. */
%right ELSE.

/* Whatever a discarded symbol still owns goes with it, so failed parses leave nothing behind. */
%token_destructor { pParser->ReleaseToken($$); }
%default_destructor { pParser->ReleaseNode($$); }
/* These hold nothing: what they carried has been registered in the module. */
%destructor library { (void)$$; }
%destructor definitions { (void)$$; }
%destructor definition { (void)$$; }

%syntax_error { (void)yymajor; (void)yyminor; pParser->Error("Syntax Error."); }
%parse_failure { pParser->Error("Parse Failure."); }
%stack_overflow { pParser->StackOverflow(); }

/* ===================================== Library ===================================================== */

library ::= definitions.

definitions ::= .
definitions ::= definitions definition.

/* Besides interfaces, classes and functions, two bracketed forms carry a lone statement or expression;
** code generation and tests use them, libraries do not. */
definition ::= function_definition(F).          { pParser->AddFunctionDefinition(F); }
definition ::= interface_definition(I).         { pParser->AddInterfaceDefinition(I); }
definition ::= class_definition(C).             { pParser->AddClassDefinition(C); }
definition ::= LBRACKET statement(S) RBRACKET.  { pParser->AddStatement(S); }
definition ::= LBRACE expression(E) RBRACE.     { pParser->AddExpression(E); }

/* ===================================== Interfaces ================================================== */

/*     interface Name { float Method(vec3 p); void Other(); }
** Only prototypes, each ended by a semicolon. */

interface_definition(A) ::= interface_members(A) RBRACE(R).  { pParser->Close(A, R); }

interface_members(A) ::= INTERFACE(K) IDENTIFIER(N) LBRACE.  { A = pParser->CreateInterfaceDefinition(K, N); }
interface_members(A) ::= interface_members(A) function_prototype(P) SEMICOLON.
                                                             { pParser->AddMemberFunction(A, P); }

/* ===================================== Classes ===================================================== */

/*     class Name { ... }   or   class Name : Interface { ... }
** A class holds coordinates, outputs, member variables and inputs, and methods, in any order. */

class_definition(A) ::= class_members(A) RBRACE(R).  { pParser->Close(A, R); }

class_members(A) ::= CLASS(K) IDENTIFIER(N) LBRACE.  { A = pParser->CreateClassDefinition(K, N); }
class_members(A) ::= CLASS(K) IDENTIFIER(N) COLON IDENTIFIER(I) LBRACE.
                                                     { A = pParser->CreateClassDefinition(K, N, I); }

/* Coordinates: geometry the renderer hands to the class in the space the keyword names.
**     coord vec3 P;     normal vec3 N;     tangent vec3 T;     coord normal vec3 N;     coord tangent vec3 T;
** A name may be a coordinate only once per class. */
class_members(A) ::= class_members(A) coord_keyword(K) coord_type(T) IDENTIFIER(N) SEMICOLON(S).
                                                     { pParser->AddCoord(A, K, T, N, S); }

coord_keyword(A) ::= COORD(K).    { A = pParser->Keyword(K, kTransformation_Coord); }
coord_keyword(A) ::= NORMAL(K).   { A = pParser->Keyword(K, kTransformation_Normal); }
coord_keyword(A) ::= TANGENT(K).  { A = pParser->Keyword(K, kTransformation_Tangent); }
coord_keyword(A) ::= COORD(K) NORMAL.   { A = pParser->Keyword(K, kTransformation_Normal); }
coord_keyword(A) ::= COORD(K) TANGENT.  { A = pParser->Keyword(K, kTransformation_Tangent); }

coord_type(A) ::= FLOAT(K).  { A = pParser->CreateType(K, kType_Float); }
coord_type(A) ::= VEC2(K).   { A = pParser->CreateType(K, kType_Vec2); }
coord_type(A) ::= VEC3(K).   { A = pParser->CreateType(K, kType_Vec3); }
coord_type(A) ::= VEC4(K).   { A = pParser->CreateType(K, kType_Vec4); }

/* Outputs: the colours a class writes.     output vec4 color;   (or the short `out`)
** A name may be an output only once per class. */
class_members(A) ::= class_members(A) output_keyword(K) output_type(T) IDENTIFIER(N) SEMICOLON.
                                                     { pParser->AddOutput(A, K, T, N); }

output_keyword(A) ::= OUTPUT(K).  { A = pParser->Keyword(K, 0); }
output_keyword(A) ::= OUT(K).     { A = pParser->Keyword(K, 0); }

output_type(A) ::= VEC3(K).  { A = pParser->CreateType(K, kType_Vec3); }
output_type(A) ::= VEC4(K).  { A = pParser->CreateType(K, kType_Vec4); }

/* Member variables and inputs. One name per declaration.
**     float roughness;                 static const float kScale = 2.0;
**     input vec3 tint = vec3(1.0);     input float weights[3] = float[3](0.2, 0.3, 0.5);
**     input Light lights[];            static input int count = -1;
** Members have built-in types; an input may instead name an interface, which makes it a connection to
** another shader. Brackets make an array, with or without a length. */
class_members(A) ::= class_members(A) member_variable(V).  { pParser->AddMemberVariable(A, V); }

member_variable(A) ::= member_declarator(A) SEMICOLON(S).  { pParser->Close(A, S); }
member_variable(A) ::= member_declarator(A) EQUAL member_initializer(I) SEMICOLON(S).
                                                           { pParser->SetMemberInitializer(A, I, S); }

member_declarator(A) ::= member_head(A).
member_declarator(A) ::= member_head(A) array_size(S).     { pParser->MakeArrayVariable(A, S); }

member_head(A) ::= type(T) IDENTIFIER(N).                  { A = pParser->CreateMember(T, T, N, 0); }
member_head(A) ::= CONST(K) type(T) IDENTIFIER(N).         { A = pParser->CreateMember(K, T, N, kMemberConst); }
member_head(A) ::= STATIC(K) type(T) IDENTIFIER(N).        { A = pParser->CreateMember(K, T, N, kMemberStatic); }
member_head(A) ::= STATIC(K) CONST type(T) IDENTIFIER(N).
                                           { A = pParser->CreateMember(K, T, N, kMemberStatic | kMemberConst); }
member_head(A) ::= INPUT(K) input_type(T) IDENTIFIER(N).   { A = pParser->CreateMember(K, T, N, kMemberInput); }
member_head(A) ::= STATIC(K) INPUT input_type(T) IDENTIFIER(N).
                                           { A = pParser->CreateMember(K, T, N, kMemberStatic | kMemberInput); }

input_type(A) ::= type(A).
input_type(A) ::= IDENTIFIER(N).  { A = pParser->CreateUserType(N); }

/* `[]` or `[n]` after a name. */
array_size(A) ::= LBRACKET(L) RBRACKET(R).                 { A = pParser->ArraySize(L, nullptr, R); }
array_size(A) ::= LBRACKET(L) INTCONSTANT(I) RBRACKET(R).  { A = pParser->ArraySize(L, &I, R); }

/* A member's initial value is a literal, a negated number literal, or a constructor whose arguments may
** be any expressions:   1   -2   0.5   -0.5f   true   vec3(0.0, 1.0, 0.0)   float[2](1.0, 2.0)   Spot() */
member_initializer(A) ::= INTCONSTANT(I).             { A = pParser->CreateIntConstant(I); }
member_initializer(A) ::= DASH(D) INTCONSTANT(I).     { A = pParser->CreateNegativeIntConstant(D, I); }
member_initializer(A) ::= FLOATCONSTANT(F).           { A = pParser->CreateFloatConstant(F); }
member_initializer(A) ::= DASH(D) FLOATCONSTANT(F).   { A = pParser->CreateNegativeFloatConstant(D, F); }
member_initializer(A) ::= BOOLCONSTANT(B).            { A = pParser->CreateBoolConstant(B); }
member_initializer(A) ::= constructor(A).

constructor(A) ::= constructor_head(A) RPAREN(R).       { pParser->Close(A, R); }
constructor(A) ::= constructor_arguments(A) RPAREN(R).  { pParser->Close(A, R); }

constructor_arguments(A) ::= constructor_head(A) assignment_expression(E).        { pParser->AddArgument(A, E); }
constructor_arguments(A) ::= constructor_arguments(A) COMMA assignment_expression(E).
                                                                                   { pParser->AddArgument(A, E); }

constructor_head(A) ::= constant_type(T) LPAREN.                 { A = pParser->CreateConstructor(T); }
constructor_head(A) ::= constant_type(T) array_size(S) LPAREN.   { pParser->MakeArray(T, S); A = pParser->CreateConstructor(T); }
constructor_head(A) ::= IDENTIFIER(N) LPAREN.                    { A = pParser->CreateFunctionCall(N); }
constructor_head(A) ::= IDENTIFIER(N) array_size(S) LPAREN.
                               { TslSymbol T = pParser->CreateUserType(N); pParser->MakeArray(T, S); A = pParser->CreateConstructor(T); }

/* Methods look like free functions; a `static` method belongs to the class rather than to an instance. */
class_members(A) ::= class_members(A) function_definition(F).         { pParser->AddMemberFunction(A, F, false); }
class_members(A) ::= class_members(A) STATIC function_definition(F).  { pParser->AddMemberFunction(A, F, true); }

/* ===================================== Functions =================================================== */

/*     vec3 Shade(in vec3 n, out float weights[4]) { ... }      void Reset(void) { ... }
** Parameters are named, have built-in types, and are `in` (the default), `out` or `inout`. */

function_definition(A) ::= function_prototype(P) compound_statement(B).  { A = pParser->CreateFunctionDefinition(P, B); }

function_prototype(A) ::= type(T) function_header(H).  { A = pParser->SetReturnType(T, H); }
function_prototype(A) ::= VOID(V) function_header(H).  { TslSymbol T = pParser->CreateType(V, kType_Void); A = pParser->SetReturnType(T, H); }

function_header(A) ::= function_header_start(A) RPAREN(R).        { pParser->Close(A, R); }
function_header(A) ::= function_header_start(A) VOID RPAREN(R).   { pParser->Close(A, R); }
function_header(A) ::= function_parameters(A) RPAREN(R).          { pParser->Close(A, R); }

function_parameters(A) ::= function_header_start(A) parameter(P).        { pParser->AddParameter(A, P); }
function_parameters(A) ::= function_parameters(A) COMMA parameter(P).    { pParser->AddParameter(A, P); }

function_header_start(A) ::= IDENTIFIER(N) LPAREN.  { A = pParser->CreateFunctionPrototype(N); }

parameter(A) ::= parameter_declarator(A).
parameter(A) ::= IN(K) parameter_declarator(P).     { A = pParser->SetParameterQualifier(K, P, kParameter_In); }
parameter(A) ::= OUT(K) parameter_declarator(P).    { A = pParser->SetParameterQualifier(K, P, kParameter_Out); }
parameter(A) ::= INOUT(K) parameter_declarator(P).  { A = pParser->SetParameterQualifier(K, P, kParameter_InOut); }

parameter_declarator(A) ::= type(T) IDENTIFIER(N).  { A = pParser->CreateFunctionParameter(T, N); }
parameter_declarator(A) ::= type(T) IDENTIFIER(N) LBRACKET(L) INTCONSTANT(I) RBRACKET(R).
                                 { TslSymbol S = pParser->ArraySize(L, &I, R); pParser->MakeArray(T, S); A = pParser->CreateFunctionParameter(T, N); }

/* ===================================== Types ======================================================= */

/* Three nested sets: a member initializer may construct a constant_type; code may also construct the
** boolean vectors; and samplers and primitives can be declared but never constructed. `void` is only a
** return type. */

type(A) ::= constructor_type(A).
type(A) ::= SAMPLER2D(K).    { A = pParser->CreateType(K, kType_Sampler2D); }
type(A) ::= SAMPLER3D(K).    { A = pParser->CreateType(K, kType_Sampler3D); }
type(A) ::= SAMPLERCUBE(K).  { A = pParser->CreateType(K, kType_SamplerCube); }
type(A) ::= PRIMITIVE(K).    { A = pParser->CreateType(K, kType_Primitive); }

constructor_type(A) ::= constant_type(A).
constructor_type(A) ::= BVEC2(K).  { A = pParser->CreateType(K, kType_BVec2); }
constructor_type(A) ::= BVEC3(K).  { A = pParser->CreateType(K, kType_BVec3); }
constructor_type(A) ::= BVEC4(K).  { A = pParser->CreateType(K, kType_BVec4); }

constant_type(A) ::= FLOAT(K).  { A = pParser->CreateType(K, kType_Float); }
constant_type(A) ::= INT(K).    { A = pParser->CreateType(K, kType_Int); }
constant_type(A) ::= BOOL(K).   { A = pParser->CreateType(K, kType_Bool); }
constant_type(A) ::= VEC2(K).   { A = pParser->CreateType(K, kType_Vec2); }
constant_type(A) ::= VEC3(K).   { A = pParser->CreateType(K, kType_Vec3); }
constant_type(A) ::= VEC4(K).   { A = pParser->CreateType(K, kType_Vec4); }
constant_type(A) ::= IVEC2(K).  { A = pParser->CreateType(K, kType_IVec2); }
constant_type(A) ::= IVEC3(K).  { A = pParser->CreateType(K, kType_IVec3); }
constant_type(A) ::= IVEC4(K).  { A = pParser->CreateType(K, kType_IVec4); }
constant_type(A) ::= MAT2(K).   { A = pParser->CreateType(K, kType_Mat2); }
constant_type(A) ::= MAT3(K).   { A = pParser->CreateType(K, kType_Mat3); }
constant_type(A) ::= MAT4(K).   { A = pParser->CreateType(K, kType_Mat4); }

/* ===================================== Statements ================================================== */

statement(A) ::= compound_statement(A).
statement(A) ::= declaration_statement(A).
statement(A) ::= expression_statement(A).
statement(A) ::= selection_statement(A).
statement(A) ::= iteration_statement(A).
statement(A) ::= jump_statement(A).

/*     { statement statement ... }     (possibly empty) */
compound_statement(A) ::= statement_list(A) RBRACE(R).  { pParser->Close(A, R); }

statement_list(A) ::= LBRACE(L).                        { A = pParser->CreateCompoundStatement(L); }
statement_list(A) ::= statement_list(A) statement(S).   { pParser->AddStatement(A, S); }

/* Local variables: one name, a built-in type or the name of a struct, class or interface, optional array
** brackets and an optional initializer. No `const` or `static` inside functions.
**     vec3 n = normalize(N);     float w[4];     Light l; */
declaration_statement(A) ::= local_declaration(D) SEMICOLON(S).  { A = pParser->CreateDeclarationStatement(D, S); }

local_declaration(A) ::= local_declarator(A).
local_declaration(A) ::= local_declarator(A) EQUAL assignment_expression(I).  { pParser->SetInitializer(A, I, I); }

local_declarator(A) ::= local_head(A).
local_declarator(A) ::= local_head(A) array_size(S).   { pParser->MakeArrayVariable(A, S); }

local_head(A) ::= type(T) IDENTIFIER(N).        { A = pParser->CreateVariableDeclaration(T, N); }
local_head(A) ::= IDENTIFIER(U) IDENTIFIER(N).  { TslSymbol T = pParser->CreateUserType(U); A = pParser->CreateVariableDeclaration(T, N); }

/*     ;     or     expression ; */
expression_statement(A) ::= SEMICOLON(S).                { A = pParser->CreateEmptyStatement(S); }
expression_statement(A) ::= expression(E) SEMICOLON(S).  { A = pParser->CreateExpressionStatement(E, S); }

/*     if (condition) statement     or     if (condition) statement else statement */
selection_statement(A) ::= IF(K) LPAREN expression(C) RPAREN statement(T). [ELSE]
                                           { A = pParser->CreateSelectionStatement(K, C, T, nullptr); }
selection_statement(A) ::= IF(K) LPAREN expression(C) RPAREN statement(T) ELSE statement(F).
                                           { A = pParser->CreateSelectionStatement(K, C, T, &F); }

/*     while (condition) statement          do statement while (expression);
**     for (initialization condition; iteration) statement
** The initialization is an expression statement or a declaration (each ends in its own semicolon); the
** condition and the iteration may be left out. A while or for condition may declare a variable:
**     while (float d = Step()) ... */
iteration_statement(A) ::= WHILE(K) LPAREN condition(C) RPAREN statement(B).
                                           { A = pParser->CreateWhileStatement(K, C, B); }
iteration_statement(A) ::= DO(K) statement(B) WHILE LPAREN expression(E) RPAREN SEMICOLON(S).
                                           { A = pParser->CreateDoWhileStatement(K, B, E, S); }
iteration_statement(A) ::= for_loop(A) RPAREN statement(B).                { pParser->SetForBody(A, nullptr, B); }
iteration_statement(A) ::= for_loop(A) expression(E) RPAREN statement(B).  { pParser->SetForBody(A, &E, B); }

for_loop(A) ::= FOR(K) LPAREN for_initialization(I) SEMICOLON.              { A = pParser->CreateForStatement(K, I, nullptr); }
for_loop(A) ::= FOR(K) LPAREN for_initialization(I) condition(C) SEMICOLON. { A = pParser->CreateForStatement(K, I, &C); }

for_initialization(A) ::= expression_statement(A).
for_initialization(A) ::= declaration_statement(A).

condition(A) ::= expression(E).  { A = pParser->CreateCondition(E); }
condition(A) ::= type(T) IDENTIFIER(N) EQUAL assignment_expression(I).
                                 { TslSymbol D = pParser->CreateVariableDeclaration(T, N); pParser->SetInitializer(D, I, I); A = pParser->CreateDeclarationCondition(D); }

/*     continue;     break;     return;     return expression; */
jump_statement(A) ::= CONTINUE(K) SEMICOLON(S).             { A = pParser->CreateJumpStatement(K, kJump_Continue, nullptr, S); }
jump_statement(A) ::= BREAK(K) SEMICOLON(S).                { A = pParser->CreateJumpStatement(K, kJump_Break, nullptr, S); }
jump_statement(A) ::= RETURN(K) SEMICOLON(S).               { A = pParser->CreateJumpStatement(K, kJump_Return, nullptr, S); }
jump_statement(A) ::= RETURN(K) expression(E) SEMICOLON(S). { A = pParser->CreateJumpStatement(K, kJump_Return, &E, S); }

/* ===================================== Expressions ================================================= */

/* From the loosest binding to the tightest. Every binary level is left-associative (a - b - c is
** (a - b) - c); assignments and the conditional associate to the right (a = b = c is a = (b = c)).
**
**     ,                              sequence
**     = *= /= %= += -= <<= >>= &= ^= |=   assignment (the left side is a unary expression)
**     ?:                             conditional
**     ||   ^^   &&                   logical or, exclusive or, and
**     |    ^    &                    bitwise or, exclusive or, and
**     ==  !=                         equality
**     <  >  <=  >=                   relational
**     <<  >>                         shift
**     +  -                           additive
**     *  /  %                        multiplicative
**     ++ -- + - ! ~                  prefix operators
**     [] . ++ --  calls              postfix operators, field and method selection
*/

expression(A) ::= assignment_expression(A).
expression(A) ::= expression(L) COMMA assignment_expression(R).  { A = pParser->CreateBinaryOperator(kOperator_Comma, L, R); }

assignment_expression(A) ::= conditional_expression(A).
assignment_expression(A) ::= unary_expression(L) assignment_operator(O) assignment_expression(R).
                                                                 { A = pParser->CreateAssignment(O, L, R); }

/* `=` is operator 0; a compound assignment carries the operator it applies. */
assignment_operator(A) ::= EQUAL(K).         { A = pParser->Keyword(K, kOperator_Assign); }
assignment_operator(A) ::= MUL_ASSIGN(K).    { A = pParser->Keyword(K, kOperator_Multiply); }
assignment_operator(A) ::= DIV_ASSIGN(K).    { A = pParser->Keyword(K, kOperator_Divide); }
assignment_operator(A) ::= MOD_ASSIGN(K).    { A = pParser->Keyword(K, kOperator_Modulo); }
assignment_operator(A) ::= ADD_ASSIGN(K).    { A = pParser->Keyword(K, kOperator_Add); }
assignment_operator(A) ::= SUB_ASSIGN(K).    { A = pParser->Keyword(K, kOperator_Subtract); }
assignment_operator(A) ::= LEFT_ASSIGN(K).   { A = pParser->Keyword(K, kOperator_ShiftLeft); }
assignment_operator(A) ::= RIGHT_ASSIGN(K).  { A = pParser->Keyword(K, kOperator_ShiftRight); }
assignment_operator(A) ::= AND_ASSIGN(K).    { A = pParser->Keyword(K, kOperator_BitAnd); }
assignment_operator(A) ::= XOR_ASSIGN(K).    { A = pParser->Keyword(K, kOperator_BitXor); }
assignment_operator(A) ::= OR_ASSIGN(K).     { A = pParser->Keyword(K, kOperator_BitOr); }

/*     condition ? expression : assignment_expression */
conditional_expression(A) ::= logical_or_expression(A).
conditional_expression(A) ::= logical_or_expression(C) QUESTION expression(T) COLON assignment_expression(F).
                                                  { A = pParser->CreateConditional(C, T, F); }

logical_or_expression(A) ::= logical_xor_expression(A).
logical_or_expression(A) ::= logical_or_expression(L) OR_OP logical_xor_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_LogicalOr, L, R); }

logical_xor_expression(A) ::= logical_and_expression(A).
logical_xor_expression(A) ::= logical_xor_expression(L) XOR_OP logical_and_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_LogicalXor, L, R); }

logical_and_expression(A) ::= inclusive_or_expression(A).
logical_and_expression(A) ::= logical_and_expression(L) AND_OP inclusive_or_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_LogicalAnd, L, R); }

inclusive_or_expression(A) ::= exclusive_or_expression(A).
inclusive_or_expression(A) ::= inclusive_or_expression(L) VERTICAL_BAR exclusive_or_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_BitOr, L, R); }

exclusive_or_expression(A) ::= and_expression(A).
exclusive_or_expression(A) ::= exclusive_or_expression(L) CARET and_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_BitXor, L, R); }

and_expression(A) ::= equality_expression(A).
and_expression(A) ::= and_expression(L) AMPERSAND equality_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_BitAnd, L, R); }

equality_expression(A) ::= relational_expression(A).
equality_expression(A) ::= equality_expression(L) EQ_OP relational_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_Equal, L, R); }
equality_expression(A) ::= equality_expression(L) NE_OP relational_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_NotEqual, L, R); }

relational_expression(A) ::= shift_expression(A).
relational_expression(A) ::= relational_expression(L) LEFT_ANGLE shift_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_Less, L, R); }
relational_expression(A) ::= relational_expression(L) RIGHT_ANGLE shift_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_Greater, L, R); }
relational_expression(A) ::= relational_expression(L) LE_OP shift_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_LessEqual, L, R); }
relational_expression(A) ::= relational_expression(L) GE_OP shift_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_GreaterEqual, L, R); }

shift_expression(A) ::= additive_expression(A).
shift_expression(A) ::= shift_expression(L) LEFT_OP additive_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_ShiftLeft, L, R); }
shift_expression(A) ::= shift_expression(L) RIGHT_OP additive_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_ShiftRight, L, R); }

additive_expression(A) ::= multiplicative_expression(A).
additive_expression(A) ::= additive_expression(L) PLUS multiplicative_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_Add, L, R); }
additive_expression(A) ::= additive_expression(L) DASH multiplicative_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_Subtract, L, R); }

multiplicative_expression(A) ::= unary_expression(A).
multiplicative_expression(A) ::= multiplicative_expression(L) STAR unary_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_Multiply, L, R); }
multiplicative_expression(A) ::= multiplicative_expression(L) SLASH unary_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_Divide, L, R); }
multiplicative_expression(A) ::= multiplicative_expression(L) PERCENT unary_expression(R).
                                                  { A = pParser->CreateBinaryOperator(kOperator_Modulo, L, R); }

/* Prefix operators apply right to left: - ! x is -(!x). */
unary_expression(A) ::= postfix_expression(A).
unary_expression(A) ::= unary_operator(O) unary_expression(E).  { A = pParser->CreateUnaryOperator(O, E); }

unary_operator(A) ::= INC_OP(K).  { A = pParser->Keyword(K, kOperator_Increment); }
unary_operator(A) ::= DEC_OP(K).  { A = pParser->Keyword(K, kOperator_Decrement); }
unary_operator(A) ::= PLUS(K).    { A = pParser->Keyword(K, kOperator_Add); }
unary_operator(A) ::= DASH(K).    { A = pParser->Keyword(K, kOperator_Subtract); }
unary_operator(A) ::= BANG(K).    { A = pParser->Keyword(K, kOperator_Not); }
unary_operator(A) ::= TILDE(K).   { A = pParser->Keyword(K, kOperator_Complement); }

/* Postfix operators apply left to right: a.b[i].c(x)++ */
postfix_expression(A) ::= primary_expression(A).
postfix_expression(A) ::= function_call(A).
postfix_expression(A) ::= postfix_expression(E) LBRACKET expression(I) RBRACKET(R).  { A = pParser->CreateSubscript(E, I, R); }
postfix_expression(A) ::= postfix_expression(E) DOT IDENTIFIER(F).                  { A = pParser->CreateFieldSelection(E, F); }
postfix_expression(A) ::= postfix_expression(E) DOT function_call(C).               { A = pParser->CreateFunctionSelection(E, C); }
postfix_expression(A) ::= postfix_expression(E) INC_OP(K).  { A = pParser->CreatePostOperator(E, K, kOperator_Increment); }
postfix_expression(A) ::= postfix_expression(E) DEC_OP(K).  { A = pParser->CreatePostOperator(E, K, kOperator_Decrement); }

/* Calls of functions and methods by name, and constructors of built-in types:
**     Shade(p, n)     Reset()     Reset(void)     vec4(color, 1.0) */
function_call(A) ::= call_head(A) RPAREN(R).         { pParser->Close(A, R); }
function_call(A) ::= call_head(A) VOID RPAREN(R).    { pParser->Close(A, R); }
function_call(A) ::= call_arguments(A) RPAREN(R).    { pParser->Close(A, R); }

call_arguments(A) ::= call_head(A) assignment_expression(E).              { pParser->AddArgument(A, E); }
call_arguments(A) ::= call_arguments(A) COMMA assignment_expression(E).   { pParser->AddArgument(A, E); }

call_head(A) ::= IDENTIFIER(N) LPAREN.        { A = pParser->CreateFunctionCall(N); }
call_head(A) ::= constructor_type(T) LPAREN.  { A = pParser->CreateConstructor(T); }

/*     name     42  0x2a  052     1.5  .5f  1e-3     true  false     ( expression ) */
primary_expression(A) ::= IDENTIFIER(N).     { A = pParser->CreateVariable(N); }
primary_expression(A) ::= INTCONSTANT(I).    { A = pParser->CreateIntConstant(I); }
primary_expression(A) ::= FLOATCONSTANT(F).  { A = pParser->CreateFloatConstant(F); }
primary_expression(A) ::= BOOLCONSTANT(B).   { A = pParser->CreateBoolConstant(B); }
primary_expression(A) ::= LPAREN(L) expression(E) RPAREN(R).  { A = pParser->Widen(L, E, R); }
