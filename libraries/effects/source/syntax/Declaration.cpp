#include "syntax/Syntax.h"
#include "syntax/SyntaxHelpers.h"

namespace Tarsel::Effects
{

using namespace Detail;

namespace
{

// Three-way comparison of plain values, for the lexicographic orders below.
template <class T>
int Compare(const T& a, const T& b)
{
	return a < b ? -1 : (b < a ? 1 : 0);
}

} // namespace

// ---------------------------------------------------------------------------------------------------------
// Types
// ---------------------------------------------------------------------------------------------------------

Type::~Type()
{
	_Destroy(_pLength);
}

void Type::_CopyInto(Type* pClone, Module* pModule) const
{
	pClone->_ePrecision = _ePrecision;
	pClone->_bArray = _bArray;
	if (_bArray && _pLength)
		pClone->_pLength = _pLength->Clone(pModule);
	pClone->SetRange(GetRange());
}

Type* Type::Clone(Module* pModule) const
{
	Type* pClone = pModule->CreateType(_eType);
	_CopyInto(pClone, pModule);
	return pClone;
}

// The class is compared too, so that a plain type never equals a user type whatever its specifier.
bool Type::Equals(const Type* pOther) const
{
	return pOther && pOther->GetClass() == GetClass() && _eType == pOther->_eType &&
	       _ePrecision == pOther->_ePrecision && _bArray == pOther->_bArray &&
	       EqualNodes(_pLength, pOther->_pLength);
}

UserType::~UserType()
{
	ReleaseString(GetModule(), _pName);
}

void UserType::SetName(String* pName)
{
	ReplaceString(GetModule(), _pName, pName);
}

UserType* UserType::Clone(Module* pModule) const
{
	UserType* pClone = pModule->CreateUserType(CloneString(_pName, pModule));
	_CopyInto(pClone, pModule);
	return pClone;
}

// Deliberately never equal, not even to itself: declarations involving user types never compare equal.
bool UserType::Equals(const Type*) const
{
	return false;
}

// ---------------------------------------------------------------------------------------------------------
// Variables and parameters
// ---------------------------------------------------------------------------------------------------------

VariableDeclaration::VariableDeclaration(Module* pModule, Type* pType, String* pIdentifier,
                                         Expression* pInitializer)
    : Declaration(pModule), _pType(pType), _pIdentifier(pIdentifier), _pInitializer(pInitializer)
{
}

VariableDeclaration::~VariableDeclaration()
{
	_Destroy(_pType);
	ReleaseString(GetModule(), _pIdentifier);
	_Destroy(_pInitializer);
}

VariableDeclaration* VariableDeclaration::Clone(Module* pModule) const
{
	Expression* pInitializer = CloneNode(_pInitializer, pModule);
	String* pIdentifier = CloneString(_pIdentifier, pModule);
	VariableDeclaration* pClone =
	    pModule->CreateVariableDeclaration(CloneNode(_pType, pModule), pIdentifier, pInitializer);
	pClone->_bStatic = _bStatic;
	pClone->_bConst = _bConst;
	pClone->_eStorage = _eStorage;
	pClone->_eTransformation = _eTransformation;
	return WithRange(pClone, this);
}

bool VariableDeclaration::Equals(const Declaration* pOther) const
{
	const VariableDeclaration* p = SameClass<VariableDeclaration>(pOther);
	return p && EqualNodes(_pInitializer, p->_pInitializer) && EqualNodes(_pType, p->_pType) &&
	       StringsEqual(_pIdentifier, p->_pIdentifier) && _bStatic == p->_bStatic && _bConst == p->_bConst &&
	       _eStorage == p->_eStorage && _eTransformation == p->_eTransformation;
}

bool VariableDeclaration::operator<(const VariableDeclaration& other) const
{
	if (int i = Compare(GetClass(), other.GetClass()))
		return i < 0;
	if (int i = Compare(_eStorage, other._eStorage))
		return i < 0;
	return CompareStrings(_pIdentifier, other._pIdentifier) < 0;
}

FunctionParameter::~FunctionParameter()
{
	_Destroy(_pType);
	ReleaseString(_pModule, _pName);
}

void FunctionParameter::SetName(String* pName)
{
	ReplaceString(_pModule, _pName, pName);
}

FunctionParameter* FunctionParameter::Clone(Module* pModule) const
{
	FunctionParameter* pClone = pModule->CreateFunctionParameter(CloneNode(_pType, pModule));
	pClone->_pName = CloneString(_pName, pModule);
	pClone->_eQualifier = _eQualifier;
	return WithRange(pClone, this);
}

bool FunctionParameter::Equals(const FunctionParameter* pOther) const
{
	return pOther && EqualNodes(_pType, pOther->_pType) && StringsEqual(_pName, pOther->_pName) &&
	       _eQualifier == pOther->_eQualifier;
}

bool FunctionParameter::operator<(const FunctionParameter& other) const
{
	const int iTypeA = _pType ? _pType->GetTypeSpecifier() : -1;
	const int iTypeB = other._pType ? other._pType->GetTypeSpecifier() : -1;
	if (int i = Compare(iTypeA, iTypeB))
		return i < 0;
	if (int i = Compare(_eQualifier, other._eQualifier))
		return i < 0;
	return CompareStrings(_pName, other._pName) < 0;
}

// ---------------------------------------------------------------------------------------------------------
// Functions
// ---------------------------------------------------------------------------------------------------------

FunctionPrototype::FunctionPrototype(Module* pModule, FunctionQualifier eQualifier, Type* pReturnType,
                                     String* pName)
    : Declaration(pModule), _eQualifier(eQualifier), _pReturnType(pReturnType), _pName(pName)
{
}

FunctionPrototype::~FunctionPrototype()
{
	DestroySequence(_vParameters);
	_Destroy(_pReturnType);
	ReleaseString(GetModule(), _pName);
}

FunctionPrototype* FunctionPrototype::Clone(Module* pModule) const
{
	FunctionPrototype* pClone = pModule->CreateFunctionPrototype(
	    _eQualifier, CloneNode(_pReturnType, pModule), CloneString(_pName, pModule));
	for (const FunctionParameter* pParameter : _vParameters)
		pClone->AddParameter(CloneNode(pParameter, pModule));
	return WithRange(pClone, this);
}

bool FunctionPrototype::_CompareTo(const Declaration* pOther, bool bNames) const
{
	const FunctionPrototype* p = SameClass<FunctionPrototype>(pOther);
	if (!p || _eQualifier != p->_eQualifier || !EqualNodes(_pReturnType, p->_pReturnType) ||
	    !StringsEqual(_pName, p->_pName) || _vParameters.size() != p->_vParameters.size())
		return false;
	for (size_t i = 0; i < _vParameters.size(); ++i)
	{
		const FunctionParameter* pA = _vParameters[i];
		const FunctionParameter* pB = p->_vParameters[i];
		if (bNames ? !EqualNodes(pA, pB)
		           : (!pA || !pB || pA->GetParameterQualifier() != pB->GetParameterQualifier() ||
		              !EqualNodes(pA->GetType(), pB->GetType())))
			return false;
	}
	return true;
}

bool FunctionPrototype::Equals(const Declaration* pOther) const
{
	return _CompareTo(pOther, true);
}

bool FunctionPrototype::Equivalent(const Declaration* pOther) const
{
	return _CompareTo(pOther, false);
}

bool FunctionPrototype::operator<(const FunctionPrototype& other) const
{
	if (int i = Compare(GetClass(), other.GetClass()))
		return i < 0;
	if (int i = Compare(_eQualifier, other._eQualifier))
		return i < 0;
	if (int i = CompareStrings(_pName, other._pName))
		return i < 0;
	const int iReturnA = _pReturnType ? _pReturnType->GetTypeSpecifier() : -1;
	const int iReturnB = other._pReturnType ? other._pReturnType->GetTypeSpecifier() : -1;
	if (int i = Compare(iReturnA, iReturnB))
		return i < 0;
	if (int i = Compare(_vParameters.size(), other._vParameters.size()))
		return i < 0;
	for (size_t i = 0; i < _vParameters.size(); ++i)
	{
		const FunctionParameter* pA = _vParameters[i];
		const FunctionParameter* pB = other._vParameters[i];
		if (!pA || !pB)
		{
			if (pA != pB)
				return !pA;
			continue;
		}
		if (*pA < *pB)
			return true;
		if (*pB < *pA)
			return false;
	}
	return false;
}

FunctionDefinition::FunctionDefinition(Module* pModule, FunctionPrototype* pPrototype,
                                       CompoundStatement* pBody)
    : Declaration(pModule), _pPrototype(pPrototype), _pBody(pBody)
{
}

FunctionDefinition::~FunctionDefinition()
{
	_Destroy(_pPrototype);
	_Destroy(_pBody);
}

FunctionDefinition* FunctionDefinition::Clone(Module* pModule) const
{
	return WithRange(
	    pModule->CreateFunctionDefinition(CloneNode(_pPrototype, pModule), CloneNode(_pBody, pModule)), this);
}

bool FunctionDefinition::Equals(const Declaration* pOther) const
{
	const FunctionDefinition* p = SameClass<FunctionDefinition>(pOther);
	return p && EqualNodes(_pPrototype, p->_pPrototype) && EqualNodes(_pBody, p->_pBody);
}

bool FunctionDefinition::operator<(const FunctionDefinition& other) const
{
	if (!_pPrototype || !other._pPrototype)
		return !_pPrototype && other._pPrototype;
	return *_pPrototype < *other._pPrototype;
}

// ---------------------------------------------------------------------------------------------------------
// Structs, interfaces, classes
// ---------------------------------------------------------------------------------------------------------

StructDefinition::~StructDefinition()
{
	DestroySequence(_vMembers);
	ReleaseString(GetModule(), _pName);
}

void StructDefinition::SetName(String* pName)
{
	ReplaceString(GetModule(), _pName, pName);
}

StructDefinition* StructDefinition::Clone(Module* pModule) const
{
	StructDefinition* pClone = pModule->CreateStructDefinition(CloneString(_pName, pModule));
	pClone->_bUniform = _bUniform;
	for (const VariableDeclaration* pMember : _vMembers)
		pClone->AddMemberVariable(CloneNode(pMember, pModule));
	return WithRange(pClone, this);
}

bool StructDefinition::Equals(const Declaration* pOther) const
{
	const StructDefinition* p = SameClass<StructDefinition>(pOther);
	return p && StringsEqual(_pName, p->_pName) && _bUniform == p->_bUniform &&
	       EqualSequences(_vMembers, p->_vMembers);
}

bool StructDefinition::operator<(const StructDefinition& other) const
{
	if (int i = Compare(GetClass(), other.GetClass()))
		return i < 0;
	return CompareStrings(_pName, other._pName) < 0;
}

InterfaceDefinition::~InterfaceDefinition()
{
	DestroySequence(_vFunctions);
	ReleaseString(GetModule(), _pName);
}

void InterfaceDefinition::SetName(String* pName)
{
	ReplaceString(GetModule(), _pName, pName);
}

InterfaceDefinition* InterfaceDefinition::Clone(Module* pModule) const
{
	InterfaceDefinition* pClone = pModule->CreateInterfaceDefinition(CloneString(_pName, pModule));
	for (const FunctionPrototype* pFunction : _vFunctions)
		pClone->AddMemberFunction(CloneNode(pFunction, pModule));
	return WithRange(pClone, this);
}

// Names are not compared: two interfaces with the same methods are interchangeable.
bool InterfaceDefinition::Equals(const Declaration* pOther) const
{
	const InterfaceDefinition* p = SameClass<InterfaceDefinition>(pOther);
	return p && EqualSequences(_vFunctions, p->_vFunctions);
}

ClassDefinition::~ClassDefinition()
{
	DestroySequence(_vFunctions);
	DestroySequence(_vVariables);
	for (auto& coord : _mCoords)
		Syntax::Destroy(coord.second);
	_mCoords.clear();
	for (auto& output : _mOutputs)
	{
		Syntax::Destroy(output.second);
		String* pName = output.first;
		ReleaseString(GetModule(), pName);
	}
	_mOutputs.clear();
	ReleaseString(GetModule(), _pName);
	ReleaseString(GetModule(), _pInterface);
}

void ClassDefinition::SetName(String* pName)
{
	ReplaceString(GetModule(), _pName, pName);
}

void ClassDefinition::SetInterface(String* pInterface)
{
	ReplaceString(GetModule(), _pInterface, pInterface);
}

bool ClassDefinition::AddCoord(VariableDeclaration* pCoord)
{
	if (!pCoord || !pCoord->GetIdentifier())
		return false;
	return _mCoords.emplace(pCoord->GetIdentifier()->GetString(), pCoord).second;
}

bool ClassDefinition::AddOutput(Type* pType, String* pName)
{
	if (!pName)
		return false;
	for (const auto& output : _mOutputs)
	{
		if (StringsEqual(output.first, pName))
			return false;
	}
	return _mOutputs.emplace(pName, pType).second;
}

ClassDefinition* ClassDefinition::Clone(Module* pModule) const
{
	ClassDefinition* pClone = pModule->CreateClassDefinition(CloneString(_pName, pModule));
	pClone->_pInterface = CloneString(_pInterface, pModule);
	for (const FunctionDefinition* pFunction : _vFunctions)
		pClone->AddMemberFunction(CloneNode(pFunction, pModule));
	for (const VariableDeclaration* pVariable : _vVariables)
		pClone->AddMemberVariable(CloneNode(pVariable, pModule));
	for (const auto& coord : _mCoords)
		pClone->AddCoord(CloneNode(coord.second, pModule));
	for (const auto& output : _mOutputs)
		pClone->AddOutput(CloneNode(output.second, pModule), CloneString(output.first, pModule));
	return WithRange(pClone, this);
}

// Outputs are matched by name text rather than by name object, so that a clone equals its source.
bool ClassDefinition::Equals(const Declaration* pOther) const
{
	const ClassDefinition* p = SameClass<ClassDefinition>(pOther);
	if (!p || !StringsEqual(_pName, p->_pName))
		return false;
	if (_pInterface && !StringsEqual(_pInterface, p->_pInterface))
		return false;
	if (!EqualSequences(_vFunctions, p->_vFunctions) || !EqualSequences(_vVariables, p->_vVariables))
		return false;
	if (_mCoords.size() != p->_mCoords.size() || _mOutputs.size() != p->_mOutputs.size())
		return false;
	for (const auto& coord : _mCoords)
	{
		auto it = p->_mCoords.find(coord.first);
		if (it == p->_mCoords.end() || !EqualNodes(coord.second, it->second))
			return false;
	}
	for (const auto& output : _mOutputs)
	{
		bool bFound = false;
		for (const auto& otherOutput : p->_mOutputs)
		{
			if (StringsEqual(output.first, otherOutput.first))
			{
				bFound = EqualNodes(output.second, otherOutput.second);
				break;
			}
		}
		if (!bFound)
			return false;
	}
	return true;
}

} // namespace Tarsel::Effects
