#pragma once

#include <random>
#include <string>
#include <vector>

namespace Tarsel::Effects::Testing
{

// Random shading-language source with a fixed seed, tokens separated by blanks so that the source itself
// never depends on how adjacent tokens lex.
class SourceGenerator
{
public:
	explicit SourceGenerator(unsigned nSeed) : _random(nSeed) {}

	// Any expression the grammar accepts, typed or not: every operator, literal form and nesting.
	std::string Expression(int nDepth)
	{
		std::string s = _Assignment(nDepth);
		while (_Chance(8))
			s += " , " + _Assignment(nDepth);
		return s;
	}

	std::string Statement(int nDepth)
	{
		switch (nDepth > 0 ? _Pick(12) : _Pick(5))
		{
		case 0:
			return Expression(nDepth) + " ;";
		case 1:
			return _OneOf(kTypes) + " d" + std::to_string(_nNames++) + (_Chance(30) ? " [ 3 ]" : "") +
			       (_Chance(60) ? " = " + _Assignment(nDepth) : std::string()) + " ;";
		case 2:
			return _OneOf({"return ;", "break ;", "continue ;", ";"});
		case 3:
			return "return " + Expression(nDepth) + " ;";
		case 4:
			return _Expression0() + " ;";
		case 5:
		case 6:
			return "if ( " + Expression(nDepth - 1) + " ) " + Statement(nDepth - 1) +
			       (_Chance(60) ? " else " + Statement(nDepth - 1) : std::string());
		case 7:
			return "while ( " + _Condition(nDepth - 1) + " ) " + Statement(nDepth - 1);
		case 8:
			return "do " + Statement(nDepth - 1) + " while ( " + Expression(nDepth - 1) + " ) ;";
		case 9:
			return "for ( " + _ForInitialization(nDepth - 1) + " " +
			       (_Chance(70) ? _Condition(nDepth - 1) : std::string()) + " ; " +
			       (_Chance(70) ? Expression(nDepth - 1) : std::string()) + " ) " + Statement(nDepth - 1);
		default:
		{
			std::string s = "{";
			for (int i = _Pick(4); i > 0; --i)
				s += " " + Statement(nDepth - 1);
			return s + " }";
		}
		}
	}

	// A well-typed function of QLSL (implicit conversions never needed), returning a float.
	std::string TypedFunction(const std::string& sName, int nStatements, int nDepth)
	{
		std::string s = "float " + sName +
		                " ( float a , int i , bool p , vec3 v ) { float fa = a ; int n = i ; "
		                "bool q = p ; vec3 w = v ;";
		// Declarations only at the top, where every compiler accepts them.
		for (int k = 0; k < nStatements; ++k)
			s += _Chance(25) ? " float t" + std::to_string(k) + " = " + _Float(nDepth) + " ;"
			                 : " " + _TypedStatement(nDepth);
		return s + " return " + _Float(nDepth) + " ; }";
	}

private:
	int _Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(_random); }
	bool _Chance(int nPercent) { return _Pick(100) < nPercent; }
	std::string _OneOf(const std::vector<std::string>& v) { return v[size_t(_Pick(int(v.size())))]; }

	inline static const std::vector<std::string> kTypes = {"float", "int",  "bool",      "vec2",
	                                                       "vec3",  "vec4", "ivec3",     "bvec2",
	                                                       "mat3",  "mat4", "sampler2D", "primitive"};
	inline static const std::vector<std::string> kIntLiterals = {"0", "7", "42", "0x2A", "0X1f", "017"};
	inline static const std::vector<std::string> kFloatLiterals = {
	    "1.0", "0.5", ".5", "2.", "1e3", "1.5e-2", "2.5E+1", "2f", "09f", "0.25f", ".5f", "3.f", "1.0f"};

	std::string _Literal()
	{
		switch (_Pick(3))
		{
		case 0:
			return _OneOf(kIntLiterals);
		case 1:
			return _OneOf(kFloatLiterals);
		default:
			return _OneOf({"true", "false"});
		}
	}

	std::string _Expression0() { return _OneOf({"a", "b", "i", "v"}) + " " + _OneOf({"++", "--"}); }

	std::string _Assignment(int nDepth)
	{
		if (nDepth > 0 && _Chance(20))
			return _Unary(nDepth - 1) + " " +
			       _OneOf({"=", "*=", "/=", "%=", "+=", "-=", "<<=", ">>=", "&=", "^=", "|="}) + " " +
			       _Assignment(nDepth - 1);
		if (nDepth > 0 && _Chance(12))
			return _Binary(nDepth - 1) + " ? " + Expression(nDepth - 1) + " : " + _Assignment(nDepth - 1);
		return _Binary(nDepth);
	}

	// Operators of every level in one flat sequence: the parser sorts out their precedence.
	std::string _Binary(int nDepth)
	{
		std::string s = _Unary(nDepth);
		for (int n = _Pick(4); n > 0; --n)
			s += " " +
			     _OneOf({"||", "^^", "&&", "|", "^", "&", "==", "!=", "<", ">", "<=", ">=", "<<", ">>", "+",
			             "-", "*", "/", "%"}) +
			     " " + _Unary(nDepth);
		return s;
	}

	std::string _Unary(int nDepth)
	{
		if (_Chance(22))
			return _OneOf({"++", "--", "+", "-", "!", "~"}) + " " + _Unary(nDepth);
		return _Postfix(nDepth);
	}

	std::string _Postfix(int nDepth)
	{
		std::string s = _Primary(nDepth);
		while (_Chance(18))
		{
			switch (_Pick(3))
			{
			case 0:
				s += " [ " + Expression(nDepth > 0 ? nDepth - 1 : 0) + " ]";
				break;
			case 1:
				s += " . " + _OneOf({"x", "yz", "rgb", "w"});
				break;
			default:
				s += " " + _OneOf({"++", "--"});
				break;
			}
		}
		return s;
	}

	std::string _Primary(int nDepth)
	{
		switch (nDepth > 0 ? _Pick(8) : _Pick(4))
		{
		case 0:
		case 1:
			return _OneOf({"a", "b", "c", "i", "n", "v", "w_2"});
		case 2:
		case 3:
			return _Literal();
		case 4:
		case 5:
			return "( " + Expression(nDepth - 1) + " )";
		default:
		{
			std::string s =
			    _OneOf({"f", "mix3", "vec3", "ivec2", "float", "bvec2", "mat3", "int", "bool"}) + " (";
			for (int n = _Pick(4); n > 0; --n)
				s += (s.back() == '(' ? " " : " , ") + _Assignment(nDepth - 1);
			return s + " )";
		}
		}
	}

	std::string _Condition(int nDepth)
	{
		if (_Chance(25))
			return "float c" + std::to_string(_nNames++) + " = " + _Assignment(nDepth);
		return Expression(nDepth);
	}

	std::string _ForInitialization(int nDepth)
	{
		switch (_Pick(3))
		{
		case 0:
			return ";";
		case 1:
			return "int k" + std::to_string(_nNames++) + " = " + _Assignment(nDepth) + " ;";
		default:
			return Expression(nDepth) + " ;";
		}
	}

	// Typed expressions. Binary operations come in parentheses, so that the types stay those intended;
	// divisors and shift counts are leaves, so that no constant folds to an error.
	std::string _FloatLeaf() { return _OneOf({"a", "fa", "v . x", "w . z", _OneOf(kFloatLiterals)}); }
	std::string _IntLeaf() { return _OneOf({"i", "n", "1", "3", "42", "0x2A", "017"}); }

	std::string _Float(int nDepth)
	{
		if (nDepth <= 0 || _Chance(25))
			return _FloatLeaf();
		const int d = nDepth - 1;
		switch (_Pick(11))
		{
		case 0:
			return "( " + _Float(d) + " " + _OneOf({"+", "-", "*"}) + " " + _Float(d) + " )";
		case 1:
			return "( " + _Float(d) + " / " + _FloatLeaf() + " )";
		case 2:
			return _OneOf({"-", "+"}) + " " + _Float(d);
		case 3:
			return "( " + _Bool(d) + " ? " + _Float(d) + " : " + _Float(d) + " )";
		case 4:
			return "float ( " + _Int(d) + " )";
		case 5:
			return "( " + _Vec3(d) + " ) . " + _OneOf({"x", "y", "z"});
		case 6:
			return "dot ( " + _Vec3(d) + " , " + _Vec3(d) + " )";
		case 7:
			return "( fa " + _OneOf({"=", "+=", "-=", "*="}) + " " + _Float(d) + " )";
		case 8:
			return _OneOf({"fa ++", "fa --", "++ fa", "-- fa"});
		case 9:
			return "- - " + _Float(d);
		default:
			return "( " + _Float(d) + " )";
		}
	}

	std::string _Int(int nDepth)
	{
		if (nDepth <= 0 || _Chance(25))
			return _IntLeaf();
		const int d = nDepth - 1;
		switch (_Pick(9))
		{
		case 0:
			return "( " + _Int(d) + " " + _OneOf({"+", "-", "*", "&", "|", "^"}) + " " + _Int(d) + " )";
		case 1:
			return "( " + _Int(d) + " " + _OneOf({"/", "%"}) + " " + _OneOf({"i", "n", "3"}) + " )";
		case 2:
			return "( " + _Int(d) + " " + _OneOf({"<<", ">>"}) + " " + _OneOf({"1", "2"}) + " )";
		case 3:
			return _OneOf({"-", "~", "+"}) + " " + _Int(d);
		case 4:
			return "( " + _Bool(d) + " ? " + _Int(d) + " : " + _Int(d) + " )";
		case 5:
			return "int ( " + _Float(d) + " )";
		case 6:
			return "( n " + _OneOf({"=", "+=", "-=", "<<=", "|=", "%="}) + " " + _Int(d) + " )";
		case 7:
			return "( " + _Int(d) + " + " + _OneOf({"++ n", "-- n", "n ++", "n --"}) + " )";
		default:
			return "( " + _Int(d) + " )";
		}
	}

	std::string _Bool(int nDepth)
	{
		if (nDepth <= 0 || _Chance(25))
			return _OneOf({"true", "false", "p", "q"});
		const int d = nDepth - 1;
		switch (_Pick(7))
		{
		case 0:
			return "( " + _Float(d) + " " + _OneOf({"<", ">", "<=", ">="}) + " " + _Float(d) + " )";
		case 1:
			return "( " + _Int(d) + " " + _OneOf({"==", "!="}) + " " + _Int(d) + " )";
		case 2:
			return "( " + _Bool(d) + " " + _OneOf({"&&", "||", "^^", "==", "!="}) + " " + _Bool(d) + " )";
		case 3:
			return "! " + _Bool(d);
		case 4:
			return "( " + _Bool(d) + " ? " + _Bool(d) + " : " + _Bool(d) + " )";
		case 5:
			return "( q = " + _Bool(d) + " )";
		default:
			return "( " + _Bool(d) + " )";
		}
	}

	std::string _Vec3(int nDepth)
	{
		if (nDepth <= 0 || _Chance(25))
			return _OneOf({"v", "w", "vec3 ( " + _FloatLeaf() + " )"});
		const int d = nDepth - 1;
		switch (_Pick(8))
		{
		case 0:
			return "( " + _Vec3(d) + " " + _OneOf({"+", "-"}) + " " + _Vec3(d) + " )";
		case 1:
			return "( " + _Vec3(d) + " * " + _Float(d) + " )";
		// Scalar times vector only with the vector first: the reference device types the other order as a
		// scalar today.
		case 2:
		case 3:
			return "- " + _Vec3(d);
		case 4:
			return "( " + _Bool(d) + " ? " + _Vec3(d) + " : " + _Vec3(d) + " )";
		case 5:
			return "vec3 ( " + _Float(d) + " , " + _Float(d) + " , " + _Float(d) + " )";
		case 6:
			return "( w " + _OneOf({"=", "+=", "*="}) + " " + _Vec3(d) + " )";
		default:
			return "normalize ( " + _Vec3(d) + " )";
		}
	}

	std::string _TypedStatement(int nDepth)
	{
		switch (nDepth > 0 ? _Pick(10) : _Pick(5))
		{
		case 0:
			return "fa " + _OneOf({"=", "+=", "*="}) + " " + _Float(nDepth) + " ;";
		case 1:
			return "n " + _OneOf({"=", "-=", "^="}) + " " + _Int(nDepth) + " ;";
		case 2:
			return "q = " + _Bool(nDepth) + " ;";
		case 3:
			return "w = " + _Vec3(nDepth) + " ;";
		case 4:
			return _OneOf({"n ++ ;", "-- n ;", "fa -= 1.0 ;"});
		case 5:
		case 6:
			return "if ( " + _Bool(nDepth - 1) + " ) " + _TypedStatement(nDepth - 1) +
			       (_Chance(60) ? " else " + _TypedStatement(nDepth - 1) : std::string());
		case 7:
			return "for ( int k = 0 ; k < 3 ; k ++ ) " + _TypedStatement(nDepth - 1);
		case 8:
			return _Chance(50)
			           ? "while ( " + _Bool(nDepth - 1) + " ) { " + _TypedStatement(nDepth - 1) + " break ; }"
			           : "do { " + _TypedStatement(nDepth - 1) + " } while ( " + _Bool(nDepth - 1) + " ) ;";
		default:
			return "{ " + _TypedStatement(nDepth - 1) + " " + _TypedStatement(nDepth - 1) + " }";
		}
	}

	std::mt19937 _random;
	int _nNames = 0;
};

} // namespace Tarsel::Effects::Testing
