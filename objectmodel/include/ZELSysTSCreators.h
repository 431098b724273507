// The functions that an implementation library exports for the system to find by name, and the
// templates behind them.
//
//   ZELSYSTS_EXPORT_BOA(IShape, Shape, Shape)
//       defines ZELSysTSCreateIShapeShape: the interface IShape, for objects of class Shape (and
//       of its derived classes), carried by the implementation object of class Shape itself.
//   ZELSYSTS_EXPORT_CREATOR(IPrintable, Shape, ShapePrintTie::Create)
//       defines ZELSysTSCreateIPrintableShape with any creation function (here a tie's).
//   ZELSYSTS_EXPORT_FACTORY(Circle, Circle)
//       defines fctZELSysTSCreateCircle, for ZELSysTSCreateExternalObject.
//   ZELSYSTS_EXPORT_CLASS_OBJECTS(Circle, Rectangle)
//       defines ZELSysTSDllGetClassObject, for ZELSysTSCreateInstance.
//
// The interface and class parts of a creator's name are the ones the dictionary composes: the
// requested interface, or the line's ITFLEAF interface; the queried object's class (or the base
// class whose meta object answers), or the line's EXTENDED_BY class. They are written as plain
// identifiers, so the name in the library is exactly the name looked up.
//
// Every exported function has C linkage and default visibility, so a library built with hidden
// visibility still exports them. Use the macros at global scope, once per name per library.
//
// Conventions of the kit for creation by name and by identifier: the function made by
// ZELSYSTS_EXPORT_FACTORY returns the new object as an IUnknown* that holds the creation
// reference (ZELSysTSCreateObject<I> takes it over); the object is built from the caller's
// argument when the class has a constructor taking void*, else with its default constructor.
#pragma once

#include <new>
#include <type_traits>

#include "ZELSysTSBOAInternal.h"
#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSMetaClass.h"
#include "ZELSysTSTypes.h"

#define ZELSYSTS_C_EXPORT extern "C" __attribute__((visibility("default")))

// A new instance of C with its creation reference, as the resolution's `create` wants it; null
// when C cannot be default-constructed (an abstract class: the implementation can only be the
// queried object itself) or memory runs out.
template <class C>
ZELSysTSBaseUnknown* ZELSysTSNewObject() noexcept {
  if constexpr (std::is_default_constructible_v<C>) {
    return new (std::nothrow) C();
  } else {
    return nullptr;
  }
}

// A new instance of C built from `argument` when C has a constructor taking void*, otherwise
// default-constructed. Null when memory runs out.
template <class C>
C* ZELSysTSNewObjectFrom(void* argument) noexcept {
  if constexpr (std::is_constructible_v<C, void*>) {
    return new (std::nothrow) C(argument);
  } else {
    static_assert(std::is_default_constructible_v<C>,
                  "a created class has a default constructor or one taking void*");
    (void)argument;
    return new (std::nothrow) C();
  }
}

// Basic-object-adapter creation function: the object that implements I for `object` (the
// object itself when its class is Impl or derives from it; the chained or a new transient
// extension when Impl is an extension class), returned as its interface I. Not AddRef'd: the
// QueryInterface that calls it counts the reference on `object`.
template <class I, class Impl>
IUnknown* ZELSysTSCreateBOA(ZELSysTSBaseUnknown* object, unsigned char /*threadSafe*/) {
  static_assert(std::is_base_of_v<I, Impl>, "the implementation class derives from its interface");
  ZELSysTSBaseUnknown* found =
      ZELSysTSBOAInternal::CreateBOA(object, Impl::MetaObject(), &ZELSysTSNewObject<Impl>);
  if (found == nullptr) return nullptr;
  I* itf = static_cast<Impl*>(found);
  return itf;
}

// What fctZELSysTSCreate<Class> returns: a new C as IUnknown*, holding one reference; or null.
template <class C>
void* ZELSysTSFactory(void* argument) noexcept {
  ZELSysTSBaseUnknown* object = ZELSysTSNewObjectFrom<C>(argument);
  return object != nullptr ? static_cast<IUnknown*>(object) : nullptr;
}

namespace ZELSysTSCreatorsDetail {

// When C's registered class identifier is clsid: makes a C, asks it for iid into *ppv, gives back
// the creation reference, stores the result in hr and answers true. Otherwise false.
template <class C>
bool MakeIfClass(const _GUID& clsid, const _GUID& iid, void** ppv, HRESULT& hr) {
  ZELSysTSMetaClass* meta = C::MetaObject();
  const _GUID* id = meta != nullptr ? meta->GetClassId() : nullptr;
  if (id == nullptr || !(*id == clsid)) return false;
  ZELSysTSBaseUnknown* object = ZELSysTSNewObjectFrom<C>(nullptr);
  if (object == nullptr) {
    hr = E_FAIL;
    return true;
  }
  hr = object->QueryInterface(iid, ppv);
  object->Release();
  return true;
}

}  // namespace ZELSysTSCreatorsDetail

// What ZELSysTSDllGetClassObject does: *ppv = null, then an object of the listed class whose
// class identifier is clsid, asked for iid (QueryInterface's result is returned: E_NOINTERFACE
// when the class does not offer iid, and then nothing is left alive). E_FAIL for a null ppv or a
// class identifier that none of the classes has.
template <class... Classes>
HRESULT ZELSysTSGetClassObject(const _GUID& clsid, const _GUID& iid, void** ppv) {
  if (ppv == nullptr) return E_FAIL;
  *ppv = nullptr;
  HRESULT hr = E_FAIL;
  (void)(ZELSysTSCreatorsDetail::MakeIfClass<Classes>(clsid, iid, ppv, hr) || ...);
  return hr;
}

// extern "C" ZELSysTSCreate<Interface><Class>(object, threadSafe) calling the creation function
// given as the remaining argument (a template-id may hold commas).
#define ZELSYSTS_EXPORT_CREATOR(Interface, Class, ...)                                      \
  ZELSYSTS_C_EXPORT IUnknown* ZELSysTSCreate##Interface##Class(ZELSysTSBaseUnknown* object, \
                                                               unsigned char threadSafe) {  \
    return (__VA_ARGS__)(object, threadSafe);                                               \
  }

// A basic-object-adapter creator for Interface and Class, implemented by the class Impl.
#define ZELSYSTS_EXPORT_BOA(Interface, Class, ...) \
  ZELSYSTS_EXPORT_CREATOR(Interface, Class, ZELSysTSCreateBOA<Interface, __VA_ARGS__>)

// extern "C" fctZELSysTSCreate<ClassName>(argument), making objects of the C++ class given last.
#define ZELSYSTS_EXPORT_FACTORY(ClassName, ...)                          \
  ZELSYSTS_C_EXPORT void* fctZELSysTSCreate##ClassName(void* argument) { \
    return ZELSysTSFactory<__VA_ARGS__>(argument);                       \
  }

// extern "C" ZELSysTSDllGetClassObject(clsid, iid, ppv) for the classes listed. One per library.
#define ZELSYSTS_EXPORT_CLASS_OBJECTS(...)                                                  \
  ZELSYSTS_C_EXPORT HRESULT ZELSysTSDllGetClassObject(const _GUID& clsid, const _GUID& iid, \
                                                      void** ppv) {                         \
    return ZELSysTSGetClassObject<__VA_ARGS__>(clsid, iid, ppv);                            \
  }
