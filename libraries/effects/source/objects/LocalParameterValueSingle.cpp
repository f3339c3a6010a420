#include "objects/LocalParameterValueSingle.h"

#include "objects/IReferenceParameter.h"
#include "objects/ParameterValueConsole.h"
#include "objects/ParameterValueSingle.h"
#include "values/ValueFactory.h"

#include <type_traits>

namespace Tarsel::Effects
{

namespace
{
// The types a program can take as a plain uniform.
bool IsLocalType(TypeSpecifier eType)
{
	switch (eType)
	{
	case kType_Float:
	case kType_Int:
	case kType_Bool:
	case kType_Vec2:
	case kType_Vec3:
	case kType_Vec4:
	case kType_IVec2:
	case kType_IVec3:
	case kType_IVec4:
	case kType_Mat3:
	case kType_Mat4:
	case kType_Sampler2D:
	case kType_Primitive:
		return true;
	default:
		return false;
	}
}

bool CopyValues(TypeSpecifier eType, const IStorage& source, IStorage& target)
{
	bool bResult = true;
	DispatchValueType(eType,
	                  [&](auto* pTag)
	                  {
		                  typedef std::remove_pointer_t<decltype(pTag)> T;
		                  T value = ValueTraits<T>::Default();
		                  for (int i = 0; i < source.GetLength(); ++i)
			                  bResult = source.Get(value, i) && target.Set(value, i) && bResult;
	                  });
	return bResult;
}
} // namespace

LocalParameterValueSingle* LocalParameterValueSingle::Create(IQLPrimitive* pPrimitive,
                                                             IReferenceParameter* pReference)
{
	auto* pLocal = new ParameterValueAccessors<LocalParameterValueSingle>();
	if (pLocal->Init(pPrimitive, pReference))
		return pLocal;
	delete pLocal;
	return nullptr;
}

LocalParameterValueSingle::~LocalParameterValueSingle()
{
	Shutdown();
}

bool LocalParameterValueSingle::Init(IQLPrimitive* pPrimitive, IReferenceParameter* pReference)
{
	Shutdown();
	auto* pParameter = pReference ? dynamic_cast<ParameterValueSingle*>(pReference->GetParameter()) : nullptr;
	if (!pParameter || !pParameter->GetStorage())
		return false;
	const TypeSpecifier eType = pParameter->GetTypeSpecifier();
	if (!IsLocalType(eType))
	{
		ConsoleOf(pParameter->GetMgrEffects())->Message("LocalParameterValueSingle::Init TypeSpecifier\n");
		return false;
	}
	_pStorage = CreateStorageSeparate(pParameter->GetMgrEffects(), eType, pParameter->GetLength(),
	                                  pParameter->IsResizable());
	if (!_pStorage || !CopyValues(eType, *pParameter->GetStorage(), *_pStorage))
	{
		Shutdown();
		return false;
	}
	_pStorage->AddListenerChangeValue(MakeDelegate(this, &LocalParameterValueSingle::_OnChangeStorage));
	_pReference = pReference;
	_pPrimitive = pPrimitive;
	return true;
}

bool LocalParameterValueSingle::Shutdown()
{
	_setListenersDelete.Notify(static_cast<ILocalParameter*>(this));
	_setListenersDelete.clear();
	_setListenersChangeValue.clear();
	_pReference = nullptr;
	_pPrimitive = nullptr;
	delete _pStorage;
	_pStorage = nullptr;
	return true;
}

bool LocalParameterValueSingle::AddListenerDelete(const ListenerDelete& listener)
{
	return _setListenersDelete.Add(listener);
}

bool LocalParameterValueSingle::RemoveListenerDelete(const ListenerDelete& listener)
{
	return _setListenersDelete.Remove(listener);
}

bool LocalParameterValueSingle::AddListenerChangeValue(const ListenerChangeValue& listener)
{
	return _setListenersChangeValue.Add(listener);
}

bool LocalParameterValueSingle::RemoveListenerChangeValue(const ListenerChangeValue& listener)
{
	return _setListenersChangeValue.Remove(listener);
}

bool LocalParameterValueSingle::_OnChangeStorage(IStorage*)
{
	return _setListenersChangeValue.Notify(static_cast<ILocalParameter*>(this));
}

bool LocalParameterValueSingle::Apply(IQLPrimitive* pPrimitive, IQLProgram* pProgram, int iLocation)
{
	IParameter* pParameter = _pReference ? _pReference->GetParameter() : nullptr;
	return pParameter && _pStorage &&
	       _pStorage->Apply(pPrimitive, pProgram, pParameter->GetName(), iLocation);
}

} // namespace Tarsel::Effects
