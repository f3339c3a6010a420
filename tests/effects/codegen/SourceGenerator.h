#pragma once

#include <map>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Tarsel::Effects::Testing
{

// Random source from a small grammar with a fixed seed. A symbol expands to one of its productions, whose
// words are symbols or text; at depth 0 (and now and then before) it takes a leaf instead. Words are
// separated by blanks, so that the source itself never depends on how adjacent tokens lex.
class SourceGenerator
{
public:
	struct Symbol
	{
		Symbol(std::vector<std::string> vLeaves_, std::vector<std::string> vProductions_ = {})
		    : vLeaves(std::move(vLeaves_)), vProductions(std::move(vProductions_))
		{
		}
		std::vector<std::string> vLeaves;
		std::vector<std::string> vProductions;
	};
	typedef std::map<std::string, Symbol> Grammar;

	SourceGenerator(const Grammar& grammar, unsigned nSeed) : _grammar(grammar), _random(nSeed) {}

	std::string Expand(const std::string& sSymbol, int nDepth)
	{
		const Symbol& symbol = _grammar.at(sSymbol);
		const bool bLeaf = symbol.vProductions.empty() || nDepth <= 0 || _Pick(100) < 20;
		const std::vector<std::string>& vChoices = bLeaf ? symbol.vLeaves : symbol.vProductions;
		std::istringstream words(vChoices[size_t(_Pick(int(vChoices.size())))]);
		std::string sText, sWord;
		while (words >> sWord)
		{
			sText += sText.empty() ? "" : " ";
			sText += _grammar.count(sWord) ? Expand(sWord, nDepth - 1) : sWord;
		}
		return sText;
	}

private:
	int _Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(_random); }

	const Grammar& _grammar;
	std::mt19937 _random;
};

// Every expression and statement form of the language, untyped: each operator, literal form, nesting,
// conditional, assignment and prefix chain. Levels follow the grammar, so the source always parses.
inline const SourceGenerator::Grammar& AnyCode()
{
	static const SourceGenerator::Grammar s_grammar = {
	    {"Expr", {{"Assign"}, {"Assign", "Assign", "Assign , Assign"}}},
	    {"Assign", {{"Cond"}, {"Cond", "Unary AssignOp Assign"}}},
	    {"Cond", {{"Binary"}, {"Binary", "Binary", "Binary ? Expr : Assign"}}},
	    {"Binary", {{"Unary"}, {"Unary", "Binary BinaryOp Unary", "Binary BinaryOp Unary BinaryOp Unary"}}},
	    {"Unary", {{"Postfix"}, {"Postfix", "Postfix", "UnaryOp Unary"}}},
	    {"Postfix",
	     {{"Name", "Literal"},
	      {"Name", "Literal", "( Expr )", "Postfix [ Expr ]", "Postfix . Field", "Postfix ++", "Postfix --",
	       "Callee ( )", "Callee ( Assign )", "Callee ( Assign , Assign , Assign )"}}},
	    {"AssignOp", {{"=", "*=", "/=", "%=", "+=", "-=", "<<=", ">>=", "&=", "^=", "|="}}},
	    {"BinaryOp",
	     {{"||", "^^", "&&", "|", "^", "&", "==", "!=", "<", ">", "<=", ">=", "<<", ">>", "+", "-", "*", "/",
	       "%"}}},
	    {"UnaryOp", {{"++", "--", "+", "-", "!", "~"}}},
	    {"Name", {{"a", "b", "i", "v", "w_2"}}},
	    {"Field", {{"x", "yz", "rgb"}}},
	    {"Callee", {{"f", "mix3", "vec3", "ivec2", "float", "bvec2", "mat3", "int", "bool"}}},
	    {"Literal", {{"0",   "7",      "42",     "0x2A", "0X1f", "017",   "1.0", "0.5", ".5",   "2.",
	                  "1e3", "1.5e-2", "2.5E+1", "2f",   "09f",  "0.25f", ".5f", "3.f", "true", "false"}}},
	    {"Statement",
	     {{"Expr ;", "Type d = Assign ;", "Type d [ 3 ] ;", "return ;", "return Expr ;", "break ;",
	       "continue ;", ";"},
	      {"Expr ;", "Type d = Assign ;", "if ( Expr ) Statement", "if ( Expr ) Statement else Statement",
	       "while ( Condition ) Statement", "do Statement while ( Expr ) ;",
	       "for ( ForInit Condition ; Expr ) Statement", "for ( ForInit ; ) Statement", "{ }",
	       "{ Statement Statement Statement }"}}},
	    {"Type", {{"float", "int", "bool", "vec4", "ivec3", "bvec2", "mat4", "sampler2D", "primitive"}}},
	    {"Condition", {{"Expr", "Expr", "float c = Assign"}}},
	    {"ForInit", {{";", "int k = Assign ;", "Expr ;"}}},
	};
	return s_grammar;
}

// Well-typed QLSL bodies over float a, fa; int i, n; bool p, q; vec3 v, w: nothing needs a conversion.
// Binary operations come in parentheses so that the types stay those intended; divisors and shift counts
// are leaves, so that no constant folds to an error. Scalar times vector only with the vector first: the
// reference device types the other order as a scalar today.
inline const SourceGenerator::Grammar& TypedCode()
{
	static const SourceGenerator::Grammar s_grammar = {
	    {"F",
	     {{"a", "fa", "v . x", "w . z", "FloatLiteral"},
	      {"( F + F )", "( F - F )", "( F * F )", "( F / FloatLiteral )", "- F", "+ F", "- - F",
	       "( B ? F : F )", "float ( I )", "( V ) . y", "dot ( V , V )", "( fa = F )", "( fa += F )", "fa ++",
	       "-- fa", "( F )"}}},
	    {"I",
	     {{"i", "n", "1", "3", "42", "0x2A", "017"},
	      {"( I + I )", "( I - I )", "( I * I )", "( I & I )", "( I | I )", "( I ^ I )", "( I / n )",
	       "( I % 3 )", "( I << 1 )", "( I >> 2 )", "- I", "~ I", "( B ? I : I )", "int ( F )", "( n = I )",
	       "( n += I )", "( I + ++ n )", "( I - n -- )"}}},
	    {"B",
	     {{"true", "false", "p", "q"},
	      {"( F < F )", "( F >= F )", "( I == I )", "( I != I )", "( B && B )", "( B || B )", "( B ^^ B )",
	       "( B == B )", "! B", "( B ? B : B )", "( q = B )"}}},
	    {"V",
	     {{"v", "w", "vec3 ( FloatLiteral )"},
	      {"( V + V )", "( V - V )", "( V * F )", "- V", "( B ? V : V )", "vec3 ( F , F , F )", "( w = V )",
	       "( w += V )", "normalize ( V )"}}},
	    {"FloatLiteral",
	     {{"1.0", "0.5", ".5", "2.", "1e3", "1.5e-2", "2.5E+1", "2f", "09f", "0.25f", "3.f"}}},
	    {"T",
	     {{"fa = F ;", "fa *= F ;", "n -= I ;", "q = B ;", "w = V ;", "n ++ ;", "-- n ;"},
	      {"fa += F ;", "n ^= I ;", "if ( B ) T", "if ( B ) T else T", "for ( int k = 0 ; k < 3 ; k ++ ) T",
	       "while ( B ) { T break ; }", "do { T } while ( B ) ;", "{ T T }"}}},
	};
	return s_grammar;
}

} // namespace Tarsel::Effects::Testing
