#pragma once

#include <list>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "effects/IPrototypeShader.h"

namespace Tarsel::Effects
{

class FunctionCall;
class IPrototypeInterface;
class IPrototypeMember;
class IPrototypeParameter;
class Library;
class Module;
class PrototypeInterface;
class VariableDeclaration;

class PrototypeShader : public IPrototypeShader
{
public:
	typedef FastDelegate1<PrototypeShader*, bool> ListenerChangeStructure;
	typedef FastDelegate2<const std::string&, IPrototypeParameter*, bool> VisitorPrototypeParameter;
	typedef FastDelegate2<const std::string&, IPrototypeMember*, bool> VisitorPrototypeMember;
	typedef FastDelegate1<IPrototypeShader*, bool> VisitorPrototypeShader;

	PrototypeShader();
	~PrototypeShader() override;
	PrototypeShader(const PrototypeShader&) = delete;
	PrototypeShader& operator=(const PrototypeShader&) = delete;

	bool Init(Library* library, ClassDefinition* definition, Result* result);
	void Shutdown();
	// Destroys the shaders the host did not give back, with the remaining-shaders message.
	void ShutdownShaders();

	bool AddListenerDelete(ListenerDelete& listener) override;
	bool RemoveListenerDelete(ListenerDelete& listener) override;
	std::string GetClassName() const override;
	IMgrEffects* GetMgrEffects() const override;
	const ClassDefinition* GetDefinition() const override { return _pClass; }
	ReferencePrototypeShader* AcquireReference(IGraph* graph) override;
	bool ReleaseReference(ReferencePrototypeShader* reference) override;
	bool VisitParameters(VisitorParameter& visitor) override;
	IParameter* GetParameter(const std::string& name) override;
	bool VisitMembers(VisitorMember& visitor) override;
	IMember* GetMember(const std::string& name) override;
	bool VisitCoords(VisitorCoord& visitor) override;
	bool VisitOutputs(VisitorOutput& visitor) override;
	bool HasConstructorStatic() override { return true; }
	std::string GetConstructorStatic() const override;
	bool ReplaceStatic(FunctionSelection* selection, TIParentSyntax<Expression>* parent,
	                   Result* result) override;
	bool IsComplete() override;

	bool SetParameter(const std::string& name, QLtexture* const* values, int count) override;
	bool SetParameter(const std::string& name, IShader** values, int count) override;
	bool SetParameter(const std::string& name, const QLprimitive* values, int count) override;
	bool SetParameter(const std::string& name, const Matrix44f* values, int count) override;
	bool SetParameter(const std::string& name, const Matrix33f* values, int count) override;
	bool SetParameter(const std::string& name, const Vector4f* values, int count) override;
	bool SetParameter(const std::string& name, const Vector3f* values, int count) override;
	bool SetParameter(const std::string& name, const Vector2f* values, int count) override;
	bool SetParameter(const std::string& name, const float* values, int count) override;
	bool SetParameter(const std::string& name, const Vector4i* values, int count) override;
	bool SetParameter(const std::string& name, const Vector3i* values, int count) override;
	bool SetParameter(const std::string& name, const Vector2i* values, int count) override;
	bool SetParameter(const std::string& name, const int* values, int count) override;
	bool SetParameter(const std::string& name, const bool* values, int count) override;
	bool SetParameter(const std::string& name, IShader* value, int index) override;
	bool SetParameter(const std::string& name, QLtexture* value, int index) override;
	bool SetParameter(const std::string& name, QLprimitive value, int index) override;
	bool SetParameter(const std::string& name, const Matrix44f& value, int index) override;
	bool SetParameter(const std::string& name, const Matrix33f& value, int index) override;
	bool SetParameter(const std::string& name, const Vector4f& value, int index) override;
	bool SetParameter(const std::string& name, const Vector3f& value, int index) override;
	bool SetParameter(const std::string& name, const Vector2f& value, int index) override;
	bool SetParameter(const std::string& name, float value, int index) override;
	bool SetParameter(const std::string& name, int value, int index) override;
	bool SetParameter(const std::string& name, IShader* value) override;
	bool SetParameter(const std::string& name, QLtexture* value) override;
	bool SetParameter(const std::string& name, QLprimitive value) override;
	bool SetParameter(const std::string& name, const Matrix44f& value) override;
	bool SetParameter(const std::string& name, const Matrix33f& value) override;
	bool SetParameter(const std::string& name, const Vector4f& value) override;
	bool SetParameter(const std::string& name, const Vector3f& value) override;
	bool SetParameter(const std::string& name, const Vector2f& value) override;
	bool SetParameter(const std::string& name, float value) override;
	bool SetParameter(const std::string& name, int value) override;
	bool SetParameter(const std::string& name, bool value) override;

	std::string GetInterfaceName() const;
	bool SetParameter(const std::string& name, bool value, int index);

	// Shaders are owned here; a shader not made by this prototype is left alone.
	IShader* CreateShader(Result* result);
	void DestroyShader(IShader* shader);
	size_t GetCountShaders() const { return _vShaders.size(); }

	Library* GetLibrary() const { return _pLibrary; }
	IPrototypeInterface* GetInterface() const { return _pPrototypeInterface; }
	// The class that instances are made from; null while the prototype is incomplete.
	ClassDefinition* GetTemplate() const;
	// The class-wide code; null while the prototype is incomplete.
	const Module* GetStatic() const { return _pStatic; }
	const std::map<std::string, IPrototypeParameter*>& GetPrototypeParameters() const
	{
		return _mPrototypeParameters;
	}
	const std::map<std::string, IPrototypeMember*>& GetPrototypeMembers() const { return _mPrototypeMembers; }
	IPrototypeParameter* GetPrototypeParameter(const std::string& name) const;
	IPrototypeMember* GetPrototypeMember(const std::string& name) const;
	bool VisitPrototypeParameters(VisitorPrototypeParameter& visitor);
	bool VisitPrototypeMembers(VisitorPrototypeMember& visitor);
	// The classes whose static methods this class's code calls.
	bool VisitPrototypeShadersStatic(VisitorPrototypeShader& visitor);
	std::string GetStaticMethodNameMangled(const std::string& name) const;
	bool AddListenerChangeStructure(ListenerChangeStructure& listener);
	bool RemoveListenerChangeStructure(ListenerChangeStructure& listener);
	// Lends the class-wide code to a graph's module (see Module::Borrow).
	bool CollectShader(Module* module);

private:
	typedef std::pair<ReferencePrototypeShader*, int> CountedReference;

	// A class named in this class's code: own library first, then every library.
	IPrototypeInterface* _FindPrototypeInterface(const std::string& name);
	IPrototypeShader* _FindPrototypeShader(const std::string& name, Result* result);

	bool _InitPrototypeInterface();
	bool _ImplementsInterface(Result* result);
	void _InitMethodNames();
	bool _InitParameters(Result* result);
	bool _InitParameterInterface(VariableDeclaration* declaration, Result* result);
	bool _InitMembers(Result* result);
	bool _InitPrototypeParameters(Result* result);
	bool _InitPrototypeParameterInterface(VariableDeclaration* declaration, Result* result);
	bool _InitPrototypeMembers();
	bool _InitModules(Result* result);
	bool _InitStatic(Result* result);
	bool _InitStaticConstructor(Module* module);
	bool _InitStaticMethods(Module* module);
	bool _InitTemplate(Result* result);
	bool _ReplaceStaticCalls(Module* module, Result* result);
	bool _ApplyTransformations(Module* module);
	void _ShutdownModules();
	void _AddStaticParameter(const std::string& name, IParameter* parameter);

	bool _ReplaceFunctionSelectionStatic(FunctionSelection* selection, TIParentSyntax<Expression>* parent,
	                                     Result* result);
	bool _ReplaceFunctionCallStatic(FunctionCall* call, TIParentSyntax<Expression>* parent);
	bool _OnDeleteReferenceStatic(IPrototypeShader* prototype);
	bool _OnChangeStructureParameter(IParameter* parameter);
	bool _OnChangeLengthMember(IMember* member);
	bool _OnChangeStructureCommon();

	template <class... Args>
	bool _SetParameter(const std::string& name, Args... args);

	Library* _pLibrary;
	Module* _pStatic;
	Module* _pTemplate;
	// In order of first use, so that graphs collect them in the same order on every run.
	std::vector<IPrototypeShader*> _vPrototypeShadersStatic;
	std::map<std::string, std::string> _mMethodNames;
	std::map<std::string, IParameter*> _mParameters;
	std::map<std::string, IMember*> _mMembers;
	std::map<IGraph*, CountedReference> _mReferences;
	IPrototypeInterface* _pPrototypeInterface;
	ClassDefinition* _pClass;
	std::map<std::string, IPrototypeParameter*> _mPrototypeParameters;
	std::map<std::string, IPrototypeMember*> _mPrototypeMembers;
	// In creation order; the index makes destroying one shader cheap however many there are.
	std::list<IShader*> _vShaders;
	std::unordered_map<IShader*, std::list<IShader*>::iterator> _mShaderPositions;
	ListenerSet<ListenerDelete> _setListenersDelete;
	ListenerSet<ListenerChangeStructure> _setListenersChangeStructure;
};

} // namespace Tarsel::Effects
