// ZELSysTSClass: what gives a client class its meta object and its IUnknown.
//
//   class Circle : public ZELSysTSImplementation<Circle, Shape> {
//    public:
//     static constexpr ZELSysTSClassInfo class_info{"Circle", ZELSysTSGuid("{...}")};
//     ...
//   };
//   ZELSYSTS_REGISTER_CLASS(Circle);   // in one .cpp of the library
//
// ZELSysTSClass<Derived, Kind, Base, Interfaces...> derives from Base (ZELSysTSBaseUnknown or a
// class derived from it) and from the interfaces that Derived implements in C++. It supplies:
//  - MetaObject(), static: the class's meta object, registered on the first call with
//    ZELSysTSFindOrCreateMetaObject (name and class identifier from Derived::class_info, the kind
//    Kind, and Base::MetaObject() as the base meta object); an extension is registered once for
//    each class that it extends, so each name reaches the extended-class list;
//  - GetMetaObject(), overridden to return MetaObject(), so that IsA(), IsAKindOf() and
//    QueryInterface see the object as a Derived;
//  - ClassName() and ClassId(), static, hiding those of the base;
//  - QueryInterface, AddRef and Release, the single final overriders of both the base object's
//    and every listed interface's IUnknown, all routed to the base object.
//
// The kinds, as aliases:
//   ZELSysTSImplementation<D, Base, I...>       interfaces resolved through the dictionary
//   ZELSysTSChainedExtension<D, Base, I...>     one instance per extended object, owned by it
//   ZELSysTSTransientExtension<D, Base, I...>   a new instance for every request
//   ZELSysTSPlainClass<D, Base>                  a class without interfaces of its own
// An extension declares the classes it extends in its class_info:
//   static constexpr const char* extends[] = {"Drawing"};
//   static constexpr ZELSysTSClassInfo class_info{"DrawingStatistics", ZELSysTSGuid("{..}"),
//   extends};
//
// Registration at library load: ZELSYSTS_REGISTER_CLASS(C) defines a static object whose
// constructor calls C::MetaObject(). A library whose classes are named by EXTENDED_BY lines
// must register them this way: the system loads the library and then looks for the meta object.
//
// Thread safety: MetaObject() keeps the registered meta object in a function-local atomic, read
// without a lock; until a registration has succeeded each call registers (registration is
// find-or-create under the dictionary lock, so concurrent callers get one meta object). Everything
// else is the base object's.
#pragma once

#include <atomic>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "ZELSysTSInterfaceTraits.h"
#include "ZELSysTSMetaClass.h"
#include "ZELSysTSTypes.h"

// Name, class identifier and, for an extension, the names of the classes it extends. The
// strings and the list are referred to, not copied: give them static storage (literals and
// static constexpr arrays). Without a class identifier the system generates one.
struct ZELSysTSClassInfo {
  const char* name;
  _GUID id;
  bool has_id;
  const char* const* extended_classes;
  std::size_t extended_count;

  constexpr explicit ZELSysTSClassInfo(const char* className)
      : name(className), id{}, has_id(false), extended_classes(nullptr), extended_count(0) {}
  constexpr ZELSysTSClassInfo(const char* className, const _GUID& classId)
      : name(className), id(classId), has_id(true), extended_classes(nullptr), extended_count(0) {}
  template <std::size_t N>
  constexpr ZELSysTSClassInfo(const char* className, const _GUID& classId,
                              const char* const (&extends)[N])
      : name(className), id(classId), has_id(true), extended_classes(extends), extended_count(N) {}
  template <std::size_t N>
  constexpr ZELSysTSClassInfo(const char* className, const char* const (&extends)[N])
      : name(className), id{}, has_id(false), extended_classes(extends), extended_count(N) {}
};

// Equality of two class names, usable in constant expressions.
constexpr bool ZELSysTSSameClassName(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return a == b;
  while (*a != '\0' && *a == *b) {
    ++a;
    ++b;
  }
  return *a == *b;
}

template <class T, class = void>
struct ZELSysTSHasClassInfo : std::false_type {};
template <class T>
struct ZELSysTSHasClassInfo<T, std::void_t<decltype(T::class_info)>> : std::true_type {};

template <class Derived, ZELSysTSTypeOfClass Kind, class Base, class... Interfaces>
class ZELSysTSClass : public Base, public Interfaces... {
  static_assert(std::is_base_of_v<ZELSysTSBaseUnknown, Base>,
                "the base class of a registered class derives from ZELSysTSBaseUnknown");
  static_assert((std::is_base_of_v<IUnknown, Interfaces> && ...),
                "the interfaces of a class derive from IUnknown");

 public:
  static constexpr ZELSysTSTypeOfClass type_of_class = Kind;

  // A new object is thread-safe (ZELSysTSBaseUnknown gets 1: it has a mutex) unless a
  // constructor argument says otherwise; arguments, when given, are handed to Base.
  template <class B = Base, std::enable_if_t<std::is_same_v<B, ZELSysTSBaseUnknown>, int> = 0>
  ZELSysTSClass() : Base(static_cast<unsigned char>(1)) {}
  template <class B = Base, std::enable_if_t<!std::is_same_v<B, ZELSysTSBaseUnknown>, int> = 0>
  ZELSysTSClass() : Base() {}
  template <class First, class... Rest>
  explicit ZELSysTSClass(First&& first, Rest&&... rest)
      : Base(std::forward<First>(first), std::forward<Rest>(rest)...) {}

  HRESULT QueryInterface(const _GUID& iid, void** ppv) override {
    return Base::QueryInterface(iid, ppv);
  }
  uint32_t AddRef() override { return Base::AddRef(); }
  uint32_t Release() override { return Base::Release(); }

  ZELSysTSMetaClass* GetMetaObject() const override { return MetaObject(); }

  // The meta object of Derived, registered on the first call (see the file comment). A
  // registration that failed for lack of memory (null) is tried again at the next call; two
  // threads registering at once get the same meta object.
  static ZELSysTSMetaClass* MetaObject() {
    static std::atomic<ZELSysTSMetaClass*> meta{nullptr};
    ZELSysTSMetaClass* known = meta.load(std::memory_order_acquire);
    if (known != nullptr) return known;
    known = Register();
    if (known != nullptr) meta.store(known, std::memory_order_release);
    return known;
  }
  static const char* ClassName() {
    ZELSysTSMetaClass* meta = MetaObject();
    return meta != nullptr ? meta->GetClassName() : nullptr;
  }
  static const _GUID* ClassId() {
    ZELSysTSMetaClass* meta = MetaObject();
    return meta != nullptr ? meta->GetClassId() : nullptr;
  }

 private:
  static ZELSysTSMetaClass* Register() {
    static_assert(ZELSysTSHasClassInfo<Derived>::value,
                  "a registered class declares: static constexpr ZELSysTSClassInfo class_info");
    if constexpr (ZELSysTSHasClassInfo<Base>::value) {
      // Compared by content: a class that inherits its base's class_info has its base's name.
      static_assert(!ZELSysTSSameClassName(Derived::class_info.name, Base::class_info.name),
                    "every registered class declares its own class_info (this one inherits it)");
    }
    constexpr bool isExtension =
        Kind == ZELSysTSTypeChainedExtension || Kind == ZELSysTSTypeTransientExtension;
    static_assert(isExtension || Derived::class_info.extended_count == 0,
                  "only extensions list the classes they extend");

    const ZELSysTSClassInfo& info = Derived::class_info;
    const _GUID* id = info.has_id ? &info.id : nullptr;
    ZELSysTSMetaClass* baseMeta = Base::MetaObject();
    const char* firstExtended = info.extended_count > 0 ? info.extended_classes[0] : nullptr;
    ZELSysTSMetaClass* meta =
        ZELSysTSFindOrCreateMetaObject(info.name, Kind, id, baseMeta, firstExtended);
    // Every extended class must be in the list before the meta object is kept: a call that ran
    // out of memory gives null, and the next MetaObject() registers again.
    for (std::size_t i = 1; meta != nullptr && i < info.extended_count; ++i) {
      meta =
          ZELSysTSFindOrCreateMetaObject(info.name, Kind, id, baseMeta, info.extended_classes[i]);
    }
    return meta;
  }
};

template <class Derived, class Base, class... Interfaces>
using ZELSysTSImplementation =
    ZELSysTSClass<Derived, ZELSysTSTypeImplementation, Base, Interfaces...>;
template <class Derived, class Base, class... Interfaces>
using ZELSysTSChainedExtension =
    ZELSysTSClass<Derived, ZELSysTSTypeChainedExtension, Base, Interfaces...>;
template <class Derived, class Base, class... Interfaces>
using ZELSysTSTransientExtension =
    ZELSysTSClass<Derived, ZELSysTSTypeTransientExtension, Base, Interfaces...>;
template <class Derived, class Base>
using ZELSysTSPlainClass = ZELSysTSClass<Derived, ZELSysTSTypeBase, Base>;

// Static registration objects: constructing one registers the meta object of a class (anything
// with a static MetaObject()) or of an interface.
template <class C>
struct ZELSysTSClassRegistration {
  ZELSysTSClassRegistration() { C::MetaObject(); }
};
template <class I>
struct ZELSysTSInterfaceRegistration {
  ZELSysTSInterfaceRegistration() { ZELSysTSInterfaceMetaObject<I>(); }
};

#define ZELSYSTS_KIT_CONCAT_(a, b) a##b
#define ZELSYSTS_KIT_CONCAT(a, b) ZELSYSTS_KIT_CONCAT_(a, b)

// Registers the meta object of a class when the library (or program) that holds this line is
// loaded. Use once per class, at namespace scope of a .cpp file.
#define ZELSYSTS_REGISTER_CLASS(...)                                                        \
  [[maybe_unused]] static const ZELSysTSClassRegistration<__VA_ARGS__> ZELSYSTS_KIT_CONCAT( \
      zelsysts_class_registration_, __COUNTER__)

// Registers the meta object of an interface (see ZELSysTSInterfaceTraits.h) at load.
#define ZELSYSTS_REGISTER_INTERFACE(...)                                                        \
  [[maybe_unused]] static const ZELSysTSInterfaceRegistration<__VA_ARGS__> ZELSYSTS_KIT_CONCAT( \
      zelsysts_interface_registration_, __COUNTER__)
