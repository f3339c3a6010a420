#pragma once

#include <map>
#include <string>
#include <utility>

#include "effects/IShader.h"
#include "manager/Key.h"

namespace Tarsel::Effects
{

class ClassDefinition;
class FunctionCall;
class IMangleMethod;
class IGraph;
class ParameterCoord;
class PrototypeShader;
template <class T>
class TIParentSyntax;
class Expression;

class Shader : public IShader
{
public:
	Shader();
	~Shader() override;
	Shader(const Shader&) = delete;
	Shader& operator=(const Shader&) = delete;

	// definition is the prototype's template class.
	bool Init(PrototypeShader* prototype, const ClassDefinition* definition, Result* result);
	void Shutdown();

	bool AddListenerDelete(ListenerShader& listener) override;
	bool RemoveListenerDelete(ListenerShader& listener) override;
	bool CollectShader(Module* module) override;
	bool CollectDeclarationMethod(Module* module, const std::string& method) override;
	std::string GetInterfaceName() const override;
	std::string GetClassName() const override;
	std::string GetKeyString() const override { return _key.ToString(); }
	bool HasMethod(const std::string& method) const override;
	std::string GetMethodNameMangled(const std::string& method) const override;
	bool HasConstructor() override { return true; }
	std::string GetConstructor() const override;
	bool AddListenerChangeStructure(ListenerShader& listener) override;
	bool RemoveListenerChangeStructure(ListenerShader& listener) override;
	IPrototypeShader* GetPrototypeShader() override;
	IMgrEffects* GetMgrEffects() override;

	bool AddListenerCreateGraphSurface(ListenerCreateGraph& listener) override;
	bool RemoveListenerCreateGraphSurface(ListenerCreateGraph& listener) override;
	IGraph* GetGraphSurface() override;
	IGraph* PeekGraphSurface() override;
	void ShutdownGraphSurface() override;
	bool AddListenerCreateGraphFrame(ListenerCreateGraph& listener) override;
	bool RemoveListenerCreateGraphFrame(ListenerCreateGraph& listener) override;
	IGraph* GetGraphFrame() override;
	IGraph* PeekGraphFrame() override;
	void ShutdownGraphFrame() override;
	bool AddListenerCreateGraphPrefix(ListenerCreateGraph& listener) override;
	bool RemoveListenerCreateGraphPrefix(ListenerCreateGraph& listener) override;
	IGraph* GetGraphPrefix() override;
	IGraph* PeekGraphPrefix() override;
	void ShutdownGraphPrefix() override;

	IReferenceShader* AcquireReference(IGraph* graph) override;
	IReferenceShader* GetReference(IGraph* graph) override;
	bool ReleaseReference(IReferenceShader* reference) override;

	IParameter* GetParameter(const std::string& name) override;
	bool VisitParameters(VisitorParameter& visitor) override;
	IMember* GetMember(const std::string& name) override;
	bool VisitMembers(VisitorMember& visitor) override;
	IParameter* GetCoord(const std::string& name) override;
	bool VisitCoords(VisitorParameter& visitor) override;
	bool SetCoord(Result* result, const std::string& name, const std::string& value) override;
	bool VisitMethods(VisitorMethod& visitor) override;
	bool IsComplete() override;
	void SetName(const std::string& name) override { _sName = name; }
	std::string GetName() const override { return _sName; }

	bool SetParameter(Result* result, const std::string& name, bool value) override;
	bool SetParameter(Result* result, const std::string& name, int value) override;
	bool SetParameter(Result* result, const std::string& name, float value) override;
	bool SetParameter(Result* result, const std::string& name, const Vector2f& value) override;
	bool SetParameter(Result* result, const std::string& name, const Vector3f& value) override;
	bool SetParameter(Result* result, const std::string& name, const Vector4f& value) override;
	bool SetParameter(Result* result, const std::string& name, const Matrix33f& value) override;
	bool SetParameter(Result* result, const std::string& name, const Matrix44f& value) override;
	bool SetParameter(Result* result, const std::string& name, IShader* value) override;
	bool SetParameter(Result* result, const std::string& name, const IQLPrimitive* value) override;
	bool SetParameter(Result* result, const std::string& name, bool value, int index) override;
	bool SetParameter(Result* result, const std::string& name, int value, int index) override;
	bool SetParameter(Result* result, const std::string& name, float value, int index) override;
	bool SetParameter(Result* result, const std::string& name, const Vector2f& value, int index) override;
	bool SetParameter(Result* result, const std::string& name, const Vector3f& value, int index) override;
	bool SetParameter(Result* result, const std::string& name, const Vector4f& value, int index) override;
	bool SetParameter(Result* result, const std::string& name, const Matrix33f& value, int index) override;
	bool SetParameter(Result* result, const std::string& name, const Matrix44f& value, int index) override;
	bool SetParameter(Result* result, const std::string& name, IShader* value, int index) override;
	bool SetParameter(Result* result, const std::string& name, const IQLPrimitive* value, int index) override;
	bool SetParameter(Result* result, const std::string& name, QLtexture* value) override;
	bool SetParameter(Result* result, const std::string& name, const bool* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const int* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const float* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const Vector2i* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const Vector3i* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const Vector4i* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const Vector2f* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const Vector3f* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const Vector4f* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const Matrix33f* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const Matrix44f* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, const QLprimitive* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, QLtexture* const* values, int count) override;
	bool SetParameter(Result* result, const std::string& name, IShader** values, int count) override;

	shaderType GetShaderType() const override { return kShaderType_Shader; }

	const Key& GetKey() const { return _key; }
	const IMangleMethod* GetMangleMethod() const { return _pMangleMethod; }
	// This instance's code; null while the shader is incomplete.
	const Module* GetModule() const { return _pModule; }

private:
	typedef std::pair<IReferenceShader*, int> CountedReference;
	enum GraphKind
	{
		kGraph_Surface,
		kGraph_Frame,
		kGraph_Prefix,
		kGraph_Count
	};
	struct GraphSlot
	{
		IGraph* pGraph = nullptr;
		ListenerSet<ListenerCreateGraph> setListenersCreate;
	};

	bool _InitParameters(Result* result);
	bool _InitMembers(Result* result);
	bool _InitCoords();
	void _InitMethodNames(const ClassDefinition* definition);
	bool _BuildModule(Result* result);
	bool _CollectConstructor(Module* module);
	bool _RenameCalls(FunctionCall* call, TIParentSyntax<Expression>* parent);
	bool _OnChangeStructure();
	bool _ComputeComplete();
	bool _OnChangeStructurePrototype(PrototypeShader* prototype);
	bool _OnChangeStructureParameter(IParameter* parameter);
	bool _OnChangeLengthMember(IMember* member);

	IGraph* _GetGraph(GraphKind kind);
	void _ShutdownGraph(GraphKind kind);

	// Installs the caller's result as the manager's current one around a set, and reports a failure.
	template <class... Args>
	bool _SetValue(Result* result, const std::string& name, bool indexed, Args... args);
	bool _SetShaders(Result* result, const std::string& name, IShader** shaders, int count);
	bool _SetShader(Result* result, const std::string& name, IShader* shader, const int* index);

	PrototypeShader* _pPrototype;
	Module* _pModule;
	Key _key;
	std::string _sName;
	std::map<std::string, std::string> _mMethodNames;
	std::map<std::string, IParameter*> _mParameters;
	std::map<std::string, IMember*> _mMembers;
	std::map<std::string, ParameterCoord*> _mCoords;
	GraphSlot _aGraphs[kGraph_Count];
	std::map<IGraph*, CountedReference> _mReferences;
	ListenerSet<ListenerShader> _setListenersDelete;
	ListenerSet<ListenerShader> _setListenersChangeStructure;
	IMangleMethod* _pMangleMethod;
	// Whether the shader is complete, or -1 when not known: every change below a shader reaches it as a
	// structure change, which forgets the answer, so asking a graph of shaders stays linear.
	int _iComplete = -1;
};

} // namespace Tarsel::Effects
