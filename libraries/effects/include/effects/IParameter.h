#pragma once

#include "core/Delegate.h"
#include "effects/ITypedValues.h"
#include "effects/Types.h"

#include <string>

namespace Tarsel::Effects
{

class CompoundStatement;
class IGraph;
class IReferenceParameter;
class Module;
class Visitor;

// One input of a shader or of a shader class: a value, a vertex coordinate or a connection to other shaders.
class TARSEL_EFFECTS_EXPORT IParameter : public ITypedValues
{
public:
	enum ParameterClass
	{
		kParameterClass_Value = 1,
		kParameterClass_Coord = 2,
		kParameterClass_Interface = 3
	};

	typedef FastDelegate1<IParameter*, bool> Listener;
	// Offered rewriting visitor with the node class it visits; the visitor lives for the call only.
	typedef FastDelegate2<Class, Visitor*, bool> VisitorTransformation;

	using ITypedValues::Get;
	using ITypedValues::Set;

	~IParameter() override {}

	virtual bool AddListenerChangeValue(const Listener& listener) = 0;
	virtual bool RemoveListenerChangeValue(const Listener& listener) = 0;
	virtual bool AddListenerChangeStructure(const Listener& listener) = 0;
	virtual bool RemoveListenerChangeStructure(const Listener& listener) = 0;

	// The per-graph side of this parameter; owned by the caller, given back through DestroyReference.
	virtual IReferenceParameter* CreateReference(IGraph* pGraph) = 0;
	virtual bool DestroyReference(IReferenceParameter* pReference) = 0;

	virtual bool CollectConstructor(CompoundStatement* pBody) = 0;
	virtual bool CollectShader(Module* pModule) = 0;
	// Adds code that the parameter generates whole, once the owner's code has been rewritten: no rewriting
	// applies to it, and the rewriting walks stay the size of the class's own code.
	virtual bool CollectShaderGenerated(Module* pModule) = 0;
	virtual bool VisitTransformations(VisitorTransformation& delegate) = 0;

	virtual bool IsComplete() const = 0;
	virtual ParameterClass GetClass() const = 0;
	virtual TypeSpecifier GetTypeSpecifier() const = 0;
	// The language's name of the declared type.
	virtual std::string GetType() const = 0;
	virtual std::string GetName() const = 0;

	virtual bool IsArray() const = 0;
	virtual int GetLength() const = 0;
	virtual bool SetLength(int nLength) = 0;
	virtual bool IsResizable() const = 0;

	virtual bool IsDefault(int index) const = 0;
	virtual bool IsDefault() const = 0;

	virtual bool GetAsString(std::string& sValue, int index) const = 0;
	virtual bool GetAsString(std::string& sValue) const = 0;
};

} // namespace Tarsel::Effects
