// ZELSysTSTie<Derived, I, ImplClass>: a tie object, which carries the interface I for an object
// and hands each call on to the implementation object of class ImplClass (the object itself, its
// chained extension, or a transient extension made for this tie). ImplClass need not derive from
// I: the tie is the adapter. C++ cannot generate the forwarding of an arbitrary interface, so the
// tie class writes it, deriving from this template, which supplies IUnknown and Impl():
//
//   class ShapePrintTie final : public ZELSysTSTie<ShapePrintTie, IPrintable, Shape> {
//    public:
//     HRESULT Print(std::string& out) override { return Impl()->WriteDescription(out); }
//   };
//   ZELSYSTS_EXPORT_CREATOR(IPrintable, Shape, ShapePrintTie::Create)
//
// Counting: the tie has its own count, starting at 1 for the reference that the QueryInterface
// which made it counted on the object; each AddRef/Release of the tie moves the tie count and the
// object's count together (ZELSysTSTIEInternal). When the tie count reaches 0 the tie deletes
// itself. QueryInterface on a tie is QueryInterface on its object.
//
// Ownership of the implementation: the object itself and a chained extension belong to the
// object. A transient extension made for the tie belongs to the tie: the tie adds one reference
// on the object for it when it is made (the extension gives that reference back when it goes)
// and releases the extension when the tie goes.
//
// Thread safety: as the object's: the counts change under the object's lock.
#pragma once

#include <new>
#include <type_traits>

#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSCreators.h"
#include "ZELSysTSTIEInternal.h"
#include "ZELSysTSTypes.h"

template <class Derived, class I, class ImplClass>
class ZELSysTSTie : public I {
  static_assert(std::is_base_of_v<IUnknown, I>, "a tie carries an interface derived from IUnknown");
  static_assert(std::is_base_of_v<ZELSysTSBaseUnknown, ImplClass>,
                "a tie's implementation class derives from ZELSysTSBaseUnknown");

 public:
  // The creation function of I through this tie (a ZELSysTSInterfaceCreator): resolves the
  // implementation of `object` for ImplClass and binds a new Derived to it. Null when the
  // implementation cannot be found or made, or memory runs out; nothing is left counted then.
  static IUnknown* Create(ZELSysTSBaseUnknown* object, unsigned char /*threadSafe*/) {
    ZELSysTSBaseUnknown* impl = nullptr;
    if (ZELSysTSTIEInternal::Tie_Construct(object, ImplClass::MetaObject(),
                                           &ZELSysTSNewObject<ImplClass>, impl) < 0 ||
        impl == nullptr) {
      return nullptr;
    }
    const bool ownsImpl =
        ImplClass::type_of_class == ZELSysTSTypeTransientExtension && impl != object;
    // The transient extension gives one reference on the object back when it is destroyed.
    if (ownsImpl) object->AddRef();
    Derived* tie = new (std::nothrow) Derived();
    if (tie == nullptr) {
      if (ownsImpl) impl->Release();
      return nullptr;
    }
    ZELSysTSTie& base = *tie;
    base.object_ = object;
    base.impl_ = static_cast<ImplClass*>(impl);
    base.owns_impl_ = ownsImpl;
    base.tie_count_ = 1;
    I* itf = tie;
    return itf;
  }

  HRESULT QueryInterface(const _GUID& iid, void** ppv) override {
    return ZELSysTSTIEInternal::Tie_Query(object_, iid, ppv);
  }
  uint32_t AddRef() override {
    return static_cast<uint32_t>(ZELSysTSTIEInternal::Tie_AddRef(tie_count_, object_));
  }
  uint32_t Release() override {
    unsigned char mustDelete = 0;
    const int count = ZELSysTSTIEInternal::Tie_Release(tie_count_, object_, mustDelete);
    if (mustDelete != 0) delete this;
    return static_cast<uint32_t>(count);
  }

  ZELSysTSTie(const ZELSysTSTie&) = delete;
  ZELSysTSTie& operator=(const ZELSysTSTie&) = delete;

 protected:
  ZELSysTSTie() = default;
  virtual ~ZELSysTSTie() {
    if (owns_impl_ && impl_ != nullptr) static_cast<ZELSysTSBaseUnknown*>(impl_)->Release();
  }

  // The implementation object, to which the tie's methods forward. Never null in a tie made by
  // Create.
  ImplClass* Impl() const noexcept { return impl_; }
  // The object for which the tie carries I; null once the tie count has reached 0.
  ZELSysTSBaseUnknown* Object() const noexcept { return object_; }

 private:
  // Changed only by the ZELSysTSTIEInternal functions, under the object's lock.
  int tie_count_ = 0;
  ZELSysTSBaseUnknown* object_ = nullptr;
  // Constant after Create.
  ImplClass* impl_ = nullptr;
  bool owns_impl_ = false;
};
