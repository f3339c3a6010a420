#pragma once

#include "core/Delegate.h"
#include "syntax/Enumerations.h"

#include <string>

namespace Tarsel::Effects
{

class CompoundStatement;
class IGraph;
class IReferenceMember;
class Module;
class Visitor;

// A plain member variable of a shader or a shader class: declared and initialised in generated code only.
class IMember
{
public:
	typedef FastDelegate1<IMember*, bool> ListenerChangeLength;
	typedef FastDelegate2<Class, Visitor*, bool> VisitorTransformation;

	virtual ~IMember() {}
	virtual bool AddListenerChangeLength(const ListenerChangeLength& listener) = 0;
	virtual bool RemoveListenerChangeLength(const ListenerChangeLength& listener) = 0;
	// The per-graph side of this member; owned by the caller, given back through DestroyReference.
	virtual IReferenceMember* CreateReference(IGraph* pGraph) = 0;
	virtual bool DestroyReference(IReferenceMember* pReference) = 0;
	virtual bool CollectConstructor(CompoundStatement* pBody) = 0;
	virtual bool CollectShader(Module* pModule) = 0;
	virtual bool VisitTransformations(VisitorTransformation& delegate) = 0;
	// The language's name of the declared type.
	virtual std::string GetType() const = 0;
	virtual std::string GetName() const = 0;
	virtual bool IsArray() const = 0;
	virtual int GetLength() const = 0;
	virtual bool SetLength(int nLength) = 0;
	virtual bool IsResizable() const = 0;
};

} // namespace Tarsel::Effects
