#include <algorithm>

#include "core/Assert.h"
#include "core/Assets.h"
#include "core/Console.h"
#include "core/Path.h"
#include "manager/MgrEffectsImpl.h"
#include "quillon/IQuillonContext.h"

namespace Tarsel::Effects
{

namespace
{
const char* const kDifferentialSupport = "_HAS_DIFFERENTIAL_SUPPORT";

// Condition-stack entries. A block opened inside an inactive region stays inactive through its #else.
enum Condition : char
{
	kCondition_Inactive = 0,
	kCondition_Active = 1,
	kCondition_Dead = 2
};

bool IsBlank(char c)
{
	return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

size_t SkipBlanks(const std::string& text, size_t at)
{
	while (at < text.size() && IsBlank(text[at]))
		++at;
	return at;
}

size_t SkipWord(const std::string& text, size_t at)
{
	while (at < text.size() && !IsBlank(text[at]))
		++at;
	return at;
}

std::string CleanRemainder(const std::string& text, size_t at)
{
	while (at < text.size() && (text[at] == ' ' || text[at] == '\t'))
		++at;
	size_t end = text.size();
	while (end > at && text[end - 1] == '\r')
		--end;
	while (end > at && (text[end - 1] == ' ' || text[end - 1] == '\t'))
		--end;
	return text.substr(at, end - at);
}

// The name between the first and the last double quote, or everything after a lone one.
bool FileNameOf(const std::string& word, std::string& name)
{
	const size_t first = word.find('"');
	if (first == std::string::npos)
		return false;
	const size_t last = word.rfind('"');
	name = last == first ? word.substr(first + 1) : word.substr(first + 1, last - first - 1);
	return true;
}

// Starts a load with a fresh line offset and line map, and gives the importer's back however it ends.
class SaveLineOffset
{
public:
	SaveLineOffset(int& offset, LineMap& lines) : _rOffset(offset), _iSaved(offset), _rLines(lines)
	{
		_rOffset = 0;
		std::swap(_rLines, _saved);
	}
	~SaveLineOffset()
	{
		_rOffset = _iSaved;
		std::swap(_rLines, _saved);
	}
	SaveLineOffset(const SaveLineOffset&) = delete;
	SaveLineOffset& operator=(const SaveLineOffset&) = delete;

private:
	int& _rOffset;
	int _iSaved;
	LineMap& _rLines;
	LineMap _saved;
};
} // namespace

struct MgrEffectsImpl::Line
{
	std::string sDirective;
	std::string sArgument;
	std::string sRemainder;

	// False for ordinary lines; every directive starts with '#', so most lines are rejected at once.
	bool Parse(const std::string& text)
	{
		const size_t begin = SkipBlanks(text, 0);
		if (begin == text.size() || text[begin] != '#')
			return false;
		const size_t endDirective = SkipWord(text, begin);
		sDirective.assign(text, begin, endDirective - begin);
		static const char* const kDirectives[] = {"#include", "#import", "#define", "#undef",
		                                          "#ifdef",   "#ifndef", "#else",   "#endif"};
		if (std::find(std::begin(kDirectives), std::end(kDirectives), sDirective) == std::end(kDirectives))
			return false;
		const size_t beginArgument = SkipBlanks(text, endDirective);
		const size_t endArgument = SkipWord(text, beginArgument);
		sArgument.assign(text, beginArgument, endArgument - beginArgument);
		sRemainder = CleanRemainder(text, endArgument);
		return true;
	}
};

bool MgrEffectsImpl::_AddLibrary(const std::string& name, DefinedNames& defined, Macros& macros,
                                 Result* result)
{
	SaveLineOffset saved(_iLineOffset, _lineMap);
	std::string path;
	std::string text;
	if (!_ReadFile(name, path, text))
		return false;
	if (_IsCycle(path, defined))
	{
		_pConsole->Error("Effects Manager: Pre-Processor include cycle detected at '%s' in file '%s'\n",
		                 name.c_str(), _vTextsInProgress.back().sPath.c_str());
		return false;
	}
	std::stringstream output;
	if (!_StreamAndProcessFile(path, text, output, defined, macros, result))
		return false;
	return AddLibrary(path, output.str(), result);
}

bool MgrEffectsImpl::_ReadFile(const std::string& name, std::string& path, std::string& text)
{
	IMgrAssets* pMgrAssets = GetMgrAssets();
	TARSEL_ASSERT(pMgrAssets != NULL);
	if (pMgrAssets == NULL)
		return false;
	IAsset::Status status = IAsset::Status();
	IAsset* asset = pMgrAssets->Acquire(Path(name.c_str()), 1, status);
	if (asset == nullptr)
	{
		_pConsole->Error("Failed to read shader source file '%s' (%s)\n", name.c_str(),
		                 IAsset::StatusString(status));
		return false;
	}
	const char* description = asset->GetDescription();
	path = description ? description : "";
	_pConsole->Message("Acquired shader source asset successfully: '%s'\n", path.c_str());
	const char* data = asset->GetData();
	text = data ? data : "";
	pMgrAssets->Release(asset);
	return !text.empty();
}

bool MgrEffectsImpl::_StreamAndProcessFile(const std::string& path, const std::string& text,
                                           std::stringstream& output, DefinedNames& defined, Macros& macros,
                                           Result* result)
{
	if (_vTextsInProgress.size() >= kMaxIncludeDepth)
	{
		_pConsole->Error("Effects Manager: Pre-Processor includes nested deeper than %d: %s\n",
		                 int(kMaxIncludeDepth), _Chain(path).c_str());
		return false;
	}
	Conditions conditions(1, kCondition_Active);
	bool error = false;
	bool success = true;
	if (_pContext != nullptr && _pContext->IsDifferentialSupported())
	{
		defined.insert(kDifferentialSupport);
		macros.Append(kDifferentialSupport, "1");
	}
	_vTextsInProgress.push_back({path, defined});
	std::string current;
	Line line;
	int32_t number = 0;
	for (size_t begin = 0; begin < text.size() && success && !error;)
	{
		size_t end = text.find('\n', begin);
		if (end == std::string::npos)
			end = text.size();
		current.assign(text, begin, end - begin);
		begin = end + 1;
		++number;
		const bool directive = line.Parse(current);
		// Every line but an #include yields one line of output; an included text maps its own lines.
		if (!directive || line.sDirective != "#include")
			_lineMap.AddLine(path, number);
		if (directive)
			success = _Directive(path, line, conditions, error, output, defined, macros, result);
		else if (conditions.back() == kCondition_Active)
		{
			macros.Substitute(current);
			output << current << '\n';
		}
		else
			output << '\n';
	}
	_vTextsInProgress.pop_back();
	if (error || conditions.size() != 1)
	{
		_pConsole->Error("Effects Manager: Pre-Processor Condition Stack mismatch while reading file '%s'\n",
		                 path.c_str());
		return false;
	}
	return success;
}

bool MgrEffectsImpl::_Directive(const std::string& path, const Line& line, Conditions& conditions,
                                bool& error, std::stringstream& output, DefinedNames& defined, Macros& macros,
                                Result* result)
{
	const bool active = conditions.back() == kCondition_Active;
	const std::string& directive = line.sDirective;
	if (directive == "#include")
		return !active || _Include(path, line.sArgument, output, defined, macros, result);
	// Every other directive keeps its line, so that line numbers after it still match the file.
	output << '\n';
	if (directive == "#import")
		return _Import(path, line.sArgument, active, defined, macros, result);
	if (!active && (directive == "#define" || directive == "#undef"))
		return true;
	if (directive == "#define")
		return _Define(path, line, defined, macros);
	if (directive == "#undef")
	{
		const int position = macros.Find(line.sArgument);
		if (position >= 0 && defined.erase(line.sArgument) > 0)
			macros.Erase(position);
	}
	else if (directive == "#ifdef" || directive == "#ifndef")
	{
		const bool wanted = (directive == "#ifdef");
		const bool isDefined = defined.count(line.sArgument) > 0;
		conditions.push_back(!active ? kCondition_Dead
		                             : (isDefined == wanted ? kCondition_Active : kCondition_Inactive));
	}
	else if (directive == "#else")
	{
		if (conditions.size() < 2)
			error = true;
		else if (conditions.back() != kCondition_Dead)
			conditions.back() =
			    conditions.back() == kCondition_Active ? kCondition_Inactive : kCondition_Active;
	}
	else // #endif
	{
		conditions.pop_back();
		error = error || conditions.empty();
	}
	return true;
}

bool MgrEffectsImpl::_Include(const std::string& path, const std::string& word, std::stringstream& output,
                              DefinedNames& defined, Macros& macros, Result* result)
{
	std::string name;
	if (!FileNameOf(word, name))
	{
		_pConsole->Error("Effects Manager: Failed to interpret '#include filename %s' in file '%s'\n",
		                 word.c_str(), path.c_str());
		return false;
	}
	std::string includedPath;
	std::string includedText;
	const bool read = _ReadFile(name, includedPath, includedText);
	// The included lines replace one line, so everything after them is numbered that much further down.
	_iLineOffset -= static_cast<int>(std::count(includedText.begin(), includedText.end(), '\n'));
	_iLineOffset += 1;
	if (!read)
		return false;
	if (_IsCycle(includedPath, defined))
	{
		_pConsole->Error("Effects Manager: Pre-Processor include cycle detected at '%s' in file '%s'\n",
		                 name.c_str(), path.c_str());
		return false;
	}
	return _StreamAndProcessFile(includedPath, includedText, output, defined, macros, result);
}

bool MgrEffectsImpl::_Import(const std::string& path, const std::string& word, bool active,
                             DefinedNames& defined, Macros& macros, Result* result)
{
	_pConsole->Message("Effects Manager: Deprecated preprocessor directive #import %s' in file '%s'\n",
	                   word.c_str(), path.c_str());
	if (!active)
		return true;
	std::string name;
	if (!FileNameOf(word, name))
	{
		_pConsole->Error("Effects Manager: Failed to interpret '#import filename %s' in file '%s'\n",
		                 word.c_str(), path.c_str());
		return false;
	}
	return _AddLibrary(name, defined, macros, result);
}

bool MgrEffectsImpl::_Define(const std::string& path, const Line& line, DefinedNames& defined, Macros& macros)
{
	const std::string& name = line.sArgument;
	// An empty name would match everywhere without advancing through the line.
	if (name.empty())
	{
		_pConsole->Error("Effects Manager: Pre-Processor found #define without a name in file '%s'\n",
		                 path.c_str());
		return false;
	}
	const int position = defined.count(name) > 0 ? macros.Find(name) : -1;
	if (position >= 0)
	{
		_pConsole->Message("Effects Manager: Pre-Processor found redefinition of '%s' as '%s' (was '%s')\n",
		                   name.c_str(), line.sRemainder.c_str(),
		                   macros.GetMacros()[position].second.c_str());
		defined.erase(name);
		macros.Erase(position);
	}
	defined.insert(name);
	macros.Append(name, line.sRemainder);
	return true;
}

bool MgrEffectsImpl::_IsCycle(const std::string& path, const DefinedNames& defined) const
{
	// Every text starts by defining the differential name, so an entry never differs by that name alone.
	DefinedNames withDifferential;
	const DefinedNames* pDefined = &defined;
	if (_pContext != nullptr && _pContext->IsDifferentialSupported() &&
	    defined.count(kDifferentialSupport) == 0)
	{
		withDifferential = defined;
		withDifferential.insert(kDifferentialSupport);
		pDefined = &withDifferential;
	}
	// Directives are never substituted, so the names alone decide what a text includes next.
	return std::any_of(_vTextsInProgress.begin(), _vTextsInProgress.end(),
	                   [&](const TextInProgress& text)
	                   { return text.sPath == path && text.defined == *pDefined; });
}

std::string MgrEffectsImpl::_Chain(const std::string& path) const
{
	std::string chain;
	for (const TextInProgress& text : _vTextsInProgress)
		chain += text.sPath + " -> ";
	return chain + path;
}

bool MgrEffectsImpl::PreprocessFile(const std::string& name, std::string& path, std::string& text,
                                    Result* result)
{
	SaveLineOffset saved(_iLineOffset, _lineMap);
	std::string source;
	return _ReadFile(name, path, source) && PreprocessText(path, source, text, result);
}

bool MgrEffectsImpl::PreprocessText(const std::string& path, const std::string& source, std::string& text,
                                    Result* result)
{
	SaveLineOffset saved(_iLineOffset, _lineMap);
	DefinedNames defined;
	Macros macros;
	std::stringstream output;
	if (!_StreamAndProcessFile(path, source, output, defined, macros, result))
		return false;
	text = output.str();
	return true;
}

} // namespace Tarsel::Effects
