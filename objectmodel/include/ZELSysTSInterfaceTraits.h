// ZELSysTSInterfaceTraits<I>: the identity of an interface type, attached once so that client
// code asks for an interface by its type and never spells its GUID again:
//
//   class IShape : public IUnknown { ... };
//   ZELSYSTS_DECLARE_INTERFACE(IShape, "{5B7A3C10-2D4E-4F60-8A91-0C1D2E3F4A5B}");
//   class ISvgExporter : public IExporter { ... };
//   ZELSYSTS_DECLARE_DERIVED_INTERFACE(ISvgExporter, IExporter, "{...}");
//
// The primary template is left undefined: using an interface whose identity was not declared is
// a compile error. The macros specialise the template, so they stand at global scope (an
// interface inside a namespace is named with its qualified name; its dictionary name is then the
// qualified spelling, so keep dictionary interfaces at global scope).
//
// An interface that the dictionary names as a leaf interface (ITFLEAF) must also have a meta
// object, registered in the library that offers it with ZELSYSTS_REGISTER_INTERFACE: the meta
// object's class identifier is the interface's IID and its base is the parent interface's meta
// object, which is how the system checks that the leaf derives from the interface asked for.
//
// Thread safety: the traits are constants; ZELSysTSInterfaceMetaObject keeps the registered meta
// object in a function-local atomic and may be called from any thread.
#pragma once

#include <atomic>
#include <type_traits>

#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "ZELSysTSGuid.h"
#include "ZELSysTSTypes.h"

// Specialisations hold: `iid` (constexpr _GUID), `name` (the interface's name as the dictionary
// spells it) and `parent` (the interface it derives from; void for IUnknown itself).
template <class I>
struct ZELSysTSInterfaceTraits;

#define ZELSYSTS_DECLARE_DERIVED_INTERFACE(Interface, Parent, guidText) \
  template <>                                                           \
  struct ZELSysTSInterfaceTraits<Interface> {                           \
    static_assert(std::is_base_of<Parent, Interface>::value,            \
                  #Interface " must derive from " #Parent);             \
    static constexpr _GUID iid = ZELSysTSGuid(guidText);                \
    static constexpr const char* name = #Interface;                     \
    using parent = Parent;                                              \
  }

#define ZELSYSTS_DECLARE_INTERFACE(Interface, guidText) \
  ZELSYSTS_DECLARE_DERIVED_INTERFACE(Interface, IUnknown, guidText)

template <>
struct ZELSysTSInterfaceTraits<IUnknown> {
  static constexpr _GUID iid = ZELSysTSIID_IUnknown;
  static constexpr const char* name = "IUnknown";
  using parent = void;
};

// QueryInterface answers CLSID_ZELSysTSBaseUnknown with the object itself, so the base class can
// be asked for like an interface: ZELSysTSPtr<ZELSysTSBaseUnknown> reaches the object behind any
// of its interfaces (its class name, its meta object).
template <>
struct ZELSysTSInterfaceTraits<ZELSysTSBaseUnknown> {
  static constexpr _GUID iid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D738784}");
  static constexpr const char* name = "ZELSysTSBaseUnknown";
  using parent = IUnknown;
};

// Whether I has a declared identity (a specialisation of ZELSysTSInterfaceTraits).
template <class I, class = void>
struct ZELSysTSHasInterfaceTraits : std::false_type {};
template <class I>
struct ZELSysTSHasInterfaceTraits<I, std::void_t<decltype(ZELSysTSInterfaceTraits<I>::iid)>>
    : std::true_type {};

// The IID of interface I.
template <class I>
constexpr const _GUID& ZELSysTSIIDOf() {
  return ZELSysTSInterfaceTraits<I>::iid;
}

// The meta object of interface I (plain kind, class identifier = its IID, base = the meta object
// of its parent interface; interfaces deriving directly from IUnknown have no base), registered
// on the first call. Null when registration refuses the name or memory runs out; a registration
// that failed is tried again at the next call.
template <class I>
ZELSysTSMetaClass* ZELSysTSInterfaceMetaObject() {
  using Traits = ZELSysTSInterfaceTraits<I>;
  static std::atomic<ZELSysTSMetaClass*> meta{nullptr};
  ZELSysTSMetaClass* known = meta.load(std::memory_order_acquire);
  if (known != nullptr) return known;
  ZELSysTSMetaClass* parentMeta = nullptr;
  if constexpr (!std::is_void_v<typename Traits::parent> &&
                !std::is_same_v<typename Traits::parent, IUnknown>) {
    parentMeta = ZELSysTSInterfaceMetaObject<typename Traits::parent>();
    if (parentMeta == nullptr) return nullptr;  // no memory: registered at a later call
  }
  known = ZELSysTSFindOrCreateMetaObject(Traits::name, ZELSysTSTypeBase, &Traits::iid, parentMeta,
                                         nullptr);
  if (known != nullptr) meta.store(known, std::memory_order_release);
  return known;
}
