#pragma once

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "effects/IMgrEffects.h"
#include "effects/MgrOutputs.h"
#include "manager/MacroList.h"
#include "manager/MgrKeys.h"
#include "syntax/LineMap.h"

namespace Tarsel::Effects
{

class Library;
class IFactoryEffect;

class MgrEffectsImpl : public IMgrEffects
{
public:
	typedef std::set<std::string> DefinedNames;
	typedef MacroList Macros;
	typedef std::vector<std::pair<TypeSpecifier, std::string>> TypedNames;

	MgrEffectsImpl();
	~MgrEffectsImpl() override;
	MgrEffectsImpl(const MgrEffectsImpl&) = delete;
	MgrEffectsImpl& operator=(const MgrEffectsImpl&) = delete;

	// owner is the facade: every created object receives it as its manager.
	bool Init(IMgrEffects* owner, IMgrConsole* console, IQuillonContext* context, Result* result);

	bool Shutdown() override;
	MgrEffectsImpl* GetImplementation() override { return this; }
	bool AddLibrary(const std::string& name, const std::string& source, Result* result) override;
	bool AddLibrary(const std::string& path, Result* result) override;
	IPrototypeShader* GetPrototypeShader(const std::string& name, Result* result) override;
	IPrototypeInterface* GetPrototypeInterface(const std::string& name) override;
	bool VisitRayAttributes(VisitorTyped& visitor) override;
	bool VisitVariablesGlobal(VisitorTyped& visitor) override;
	bool VisitEffectsSurface(VisitorEffect& visitor) override;
	bool VisitEffectsRenderer(VisitorEffect& visitor) override;
	bool VisitEffectsPrefix(VisitorEffect& visitor) override;
	IShader* CreateShader(const std::string& className, Result* result) override;
	IShader* CreateShader(const std::string& className) override;
	void DestroyShader(IShader* shader) override;
	IEffect* CreateEffectSurface() override;
	void DestroyEffectSurface(IEffect* effect) override;
	IEffect* CreateEffectRenderer() override;
	void DestroyEffectRenderer(IEffect* effect) override;
	IEffect* CreateEffectPrefix() override;
	void DestroyEffectPrefix(IEffect* effect) override;
	bool AddListenerAddOutput(ListenerAddOutput& listener) override;
	bool RemoveListenerAddOutput(ListenerAddOutput& listener) override;
	bool AddListenerRemoveOutput(ListenerRemoveOutput& listener) override;
	bool RemoveListenerRemoveOutput(ListenerRemoveOutput& listener) override;
	bool AcquireOutput(TypeSpecifier type, const std::string& name) override;
	bool ReleaseOutput(const std::string& name) override;
	int GetCountOutputs() override;
	bool HasOutput(const std::string& name) override;
	bool VisitOutputs(VisitorTyped& visitor) override;
	bool SetOutputAttachmentIndex(const std::string& name, int index) override;
	bool GetOutputAttachmentIndex(int& index, const std::string& name) override;
	bool ClearOutputAttachmentIndex(const std::string& name) override;
	bool AddListenerChangeOutputIndices(ListenerChangeOutputIndices& listener) override;
	bool RemoveListenerChangeOutputIndices(ListenerChangeOutputIndices& listener) override;
	bool Update() override;
	bool Update(Result* result) override;
	Key CreateKey() override;
	bool DestroyKey(Key& key) override;
	IMgrConsole* GetConsole() const override { return _pConsole; }
	IQuillonContext* GetQuillonContext() const override { return _pContext; }
	Profiler* GetProfiler() const override { return _pProfiler; }

	// Installs the result that nested failures are reported into; null clears it.
	void SetResult(Result* result) { _pResult = result; }
	// Requires an installed result.
	void AddResult(Result& result);
	// Does nothing without an installed result.
	void AddResultMessage(const char* format, ...)
#if defined(__GNUC__)
	    __attribute__((format(printf, 2, 3)))
#endif
	    ;

	// Line-number correction of the text being loaded; maintained while files are spliced.
	int GetLineOffset() const
	{
		return _iLineOffset;
	}
	// File and line of every line of the text being loaded, handed to the library being created.
	const LineMap& GetLineMap() const
	{
		return _lineMap;
	}

	// Deepest nesting of included and imported texts in one load.
	static constexpr size_t kMaxIncludeDepth = 64;

	// The text a load of the named file would hand to library creation, for users who want to see what their
	// macros and includes did. Imported libraries are still registered.
	bool PreprocessFile(const std::string& name, std::string& path, std::string& text, Result* result);
	// Preprocesses a text as if it had been read from path.
	bool PreprocessText(const std::string& path, const std::string& source, std::string& text,
	                    Result* result);

protected:
	bool _AddLibrary(const std::string& name, DefinedNames& defined, Macros& macros, Result* result);
	bool _ReadFile(const std::string& name, std::string& path, std::string& text);
	bool _StreamAndProcessFile(const std::string& path, const std::string& text, std::stringstream& output,
	                           DefinedNames& defined, Macros& macros, Result* result);

	bool _OnAddOutput(TypeSpecifier type, const std::string& name);
	bool _OnRemoveOutput(const std::string& name);

private:
	struct Line;
	typedef std::vector<char> Conditions;

	bool _Directive(const std::string& path, const Line& line, Conditions& conditions, bool& error,
	                std::stringstream& output, DefinedNames& defined, Macros& macros, Result* result);
	bool _Include(const std::string& path, const std::string& word, std::stringstream& output,
	              DefinedNames& defined, Macros& macros, Result* result);
	bool _Import(const std::string& path, const std::string& word, bool active, DefinedNames& defined,
	             Macros& macros, Result* result);
	bool _Define(const std::string& path, const Line& line, DefinedNames& defined, Macros& macros);
	// True when path is in progress with the same defined names: entering it again would repeat that entry
	// without end.
	bool _IsCycle(const std::string& path, const DefinedNames& defined) const;
	// The texts in progress and the next one, joined by " -> ".
	std::string _Chain(const std::string& path) const;
	void _AddPadAttributes();

	IMgrEffects* _pMgrEffects;
	IMgrConsole* _pConsole;
	IQuillonContext* _pContext;
	Profiler* _pProfiler;
	TypedNames _vRayAttributes;
	TypedNames _vVariablesGlobal;
	IFactoryEffect* _pFactorySurface;
	IFactoryEffect* _pFactoryRenderer;
	IFactoryEffect* _pFactoryPrefix;
	std::map<std::string, Library*> _mLibraries;
	MgrOutputs _mgrOutputs;
	ListenerSet<ListenerAddOutput> _setListenersAddOutput;
	ListenerSet<ListenerRemoveOutput> _setListenersRemoveOutput;
	ListenerSet<ListenerChangeOutputIndices> _setListenersChangeOutputIndices;
	MgrKeys<int> _mgrKeys;
	Result* _pResult;
	int _iLineOffset;
	LineMap _lineMap;
	// Texts being processed in this load, innermost last, with the defined names each started with; tells a
	// guarded re-inclusion from an endless cycle.
	struct TextInProgress
	{
		std::string sPath;
		DefinedNames defined;
	};
	std::vector<TextInProgress> _vTextsInProgress;
};

} // namespace Tarsel::Effects
