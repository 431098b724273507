#include "ZELSysTSBaseUnknown.h"

#include <atomic>

#include "ZELSysTSFindOrCreateMetaObject.h"
#include "ZELSysTSGuid.h"
#include "core/ScopedObjectLock.h"
#include "core/ZELSysTSBaseUnknownAccess.h"
#include "core/ZELSysTSChainExtension.h"
#include "meta/ZELSysTSMetaClassBase.h"
#include "meta/ZELSysTSMetaClassExt.h"
#include "util/ThreadAnnotations.h"

const _GUID CLSID_ZELSysTSBaseUnknown = {
    0x6DADD843, 0xBCD7, 0x4107, {0xB9, 0xE9, 0x72, 0x34, 0x2D, 0x73, 0x87, 0x84}};

ZELSysTSMetaClass* ZELSysTSBaseUnknown::meta_object = nullptr;

namespace {

// What AddRef and Release forward to: the object that an extension extends and the extension's
// kind. `extended` is null for an ordinary object and for an extension that has no object yet;
// both then count for themselves. The link is read only once the object is known to be an
// extension: an extension's link is set once, before the extension is handed out, so it is read
// without the lock; an ordinary object's link is its chain head, which a QueryInterface appends
// to under the lock, and is not read here at all.
//
// The extension view (meta object, effective meta object, extension meta class) is told by the
// effective meta object's class: only an extension meta object has an extension meta class,
// itself, so no call beyond GetMetaObject() is made for the library's own meta objects.
struct Forwarding {
  bool extension;
  ZELSysTSBaseUnknown* extended;
  ZELSysTSTypeOfClass type;
};

inline Forwarding ForwardingOf(const ZELSysTSBaseUnknown* object) {
  const EffectiveMetaView view = EffectiveMetaViewOf(object->GetMetaObject());
  if (view.kind != LibraryMetaKind::kExtension) return Forwarding{false, nullptr, ZELSysTSTypeBase};
  ZELSysTSBaseUnknown* extended = ZELSysTSBaseUnknownAccess::Extended(object);
  if (extended == nullptr) return Forwarding{true, nullptr, ZELSysTSTypeBase};
  return Forwarding{true, extended,
                    static_cast<ZELSysTSMetaClassExt*>(view.meta)->GetTypeOfClass()};
}

// The last reference to object is gone: an ordinary object takes its chain with it (in chain
// order; an extension's count stands for references on this object, so it is destroyed
// outright, not released), then the object is destroyed. Release tears down an object found
// without a link as an ordinary one: it may have gained a chain since (only an ordinary object
// does), and an unlinked extension has none.
__attribute__((noinline)) void DestroyLast(ZELSysTSBaseUnknown* object, bool extension) {
  if (!extension) {
    ZELSysTSChainExtension* node = ZELSysTSBaseUnknownAccess::ChainHead(object);
    ZELSysTSBaseUnknownAccess::SetLink(object, nullptr);
    while (node != nullptr) {
      ZELSysTSChainExtension* next = node->GetNext();
      ZELSysTSBaseUnknown* chained = nullptr;
      if (node->GetExtension(chained) == S_OK) delete chained;
      delete node;
      node = next;
    }
  }
  delete object;
}

}  // namespace

ZELSysTSBaseUnknown::ZELSysTSBaseUnknown(unsigned char threadSafe)
    : mutex(threadSafe == 0 ? 1 : 0), reference_count(1), link(nullptr), lock_count(0) {}

ZELSysTSBaseUnknown::~ZELSysTSBaseUnknown() {
  // The last reference may go while its holder still has the object locked (Tie_Release calls
  // Release inside the lock); release every level still counted so the mutex dies unlocked.
  while (lock_count > 0) Unlock();
  link = nullptr;
}

ZELSysTSMetaClass* ZELSysTSBaseUnknown::MetaObject() {
  // Kept once registered, read without a lock; until a registration succeeds (it fails only for
  // lack of memory) each call registers again. Registration is a find-or-create under the
  // dictionary lock, so concurrent first callers all get the one meta object.
  static std::atomic<ZELSysTSMetaClass*> registered{nullptr};
  ZELSysTSMetaClass* meta = registered.load(std::memory_order_acquire);
  if (meta != nullptr) return meta;
  meta = ZELSysTSFindOrCreateMetaObject("ZELSysTSBaseUnknown", ZELSysTSTypeBase,
                                        &CLSID_ZELSysTSBaseUnknown, nullptr, nullptr);
  ZELSysTSMetaClass* expected = nullptr;
  // One writer of meta_object: the caller that publishes the meta object first.
  if (meta != nullptr && registered.compare_exchange_strong(expected, meta)) meta_object = meta;
  return meta;
}

const char* ZELSysTSBaseUnknown::ClassName() {
  ZELSysTSMetaClass* meta = MetaObject();
  return meta != nullptr ? meta->GetClassName() : nullptr;
}

const _GUID* ZELSysTSBaseUnknown::ClassId() {
  ZELSysTSMetaClass* meta = MetaObject();
  return meta != nullptr ? meta->GetClassId() : nullptr;
}

ZELSysTSMetaClass* ZELSysTSBaseUnknown::GetMetaObject() const {
  return MetaObject();
}

const char* ZELSysTSBaseUnknown::IsA() const {
  ZELSysTSMetaClass* meta = GetMetaObject();
  return meta != nullptr ? meta->GetClassName() : nullptr;
}

int ZELSysTSBaseUnknown::IsAKindOf(const char* name) const {
  ZELSysTSMetaClass* meta = GetMetaObject();
  return meta != nullptr ? meta->IsAKindOf(name) : 0;
}

// The object's mutex is taken only when the object has one, so the lock is held across calls in
// a way the static analysis cannot follow; ScopedObjectLock pairs these calls.
void ZELSysTSBaseUnknown::Lock() NO_THREAD_SAFETY_ANALYSIS {
  (mutex.*(&ZELMutex::LockF))();
  ++lock_count;
}

void ZELSysTSBaseUnknown::Unlock() NO_THREAD_SAFETY_ANALYSIS {
  --lock_count;
  (mutex.*(&ZELMutex::UnlockF))();
}

HRESULT ZELSysTSBaseUnknown::QueryInterface(const _GUID& iid, void** ppv) {
  if (ppv == nullptr) return E_UNEXPECTED;
  *ppv = nullptr;

  ZELSysTSBaseUnknown* extended = nullptr;
  {
    ScopedObjectLock lock(this);
    if (reference_count == 0) return E_UNEXPECTED;
    // No meta object, or no effective meta object of the library's own: no interfaces.
    const EffectiveMetaView eff = EffectiveMetaViewOf(GetMetaObject());
    if (eff.meta == nullptr) return E_NOINTERFACE;

    if (eff.kind != LibraryMetaKind::kExtension) {
      if (iid == ZELSysTSIID_IUnknown || iid == CLSID_ZELSysTSBaseUnknown) {
        ++reference_count;
        *ppv = this;
        return S_OK;
      }
      // A plain meta object has no creators; an implementation meta object is asked without a
      // virtual call (its class is known, and FindInterfaceCreator is FindCreator).
      ZELSysTSInterfaceCreator creator =
          eff.kind == LibraryMetaKind::kImplementation
              ? static_cast<ZELSysTSMetaClassImpl*>(eff.meta)->FindCreator(iid)
              : nullptr;
      if (creator == nullptr) return E_NOINTERFACE;
      // The creator runs under this object's lock: it may resolve (and append to) the
      // extension chain, which locks the object again.
      IUnknown* created = creator(this, HasMutex());
      if (created == nullptr) return E_NOINTERFACE;
      ++reference_count;
      *ppv = created;
      return S_OK;
    }
    extended = static_cast<ZELSysTSBaseUnknown*>(link);
  }
  // An extension answers for the object that it extends. Forwarded after its own lock is
  // released, so that no thread holds two objects' locks.
  if (extended == nullptr) return E_UNEXPECTED;
  return extended->QueryInterface(iid, ppv);
}

// An object without a link counts for itself whatever its class, so the extension view (a call
// of GetMetaObject()) is worked out only for an object that has one: a chained or transient
// extension, or an ordinary object with chained extensions. That work is kept out of line, so
// that the common path is the lock pair around the count and little else.
uint32_t ZELSysTSBaseUnknown::AddRef() {
  if (ZELSysTSBaseUnknownAccess::LinkUnlocked(this) != nullptr) {
    const auto linked = [this]() __attribute__((noinline))->uint32_t {
      const Forwarding to = ForwardingOf(this);
      ZELSysTSBaseUnknown* extended = to.extended;
      if (extended != nullptr && to.type == ZELSysTSTypeChainedExtension) {
        // A chained extension lives as long as its object: its references are the object's.
        return extended->AddRef();
      }
      uint32_t count;
      {
        ScopedObjectLock lock(this);
        count = ++reference_count;
      }
      // Each reference on a transient extension holds one on the object it extends.
      if (extended != nullptr && to.type == ZELSysTSTypeTransientExtension) extended->AddRef();
      return count;
    };
    return linked();
  }
  ScopedObjectLock lock(this);
  return ++reference_count;
}

uint32_t ZELSysTSBaseUnknown::Release() {
  if (ZELSysTSBaseUnknownAccess::LinkUnlocked(this) != nullptr) {
    const auto linked = [this]() __attribute__((noinline))->uint32_t {
      const Forwarding to = ForwardingOf(this);
      ZELSysTSBaseUnknown* extended = to.extended;
      if (extended != nullptr && to.type == ZELSysTSTypeChainedExtension) {
        return extended->Release();
      }
      uint32_t count;
      {
        ScopedObjectLock lock(this);
        count = --reference_count;
      }
      if (extended != nullptr && to.type == ZELSysTSTypeTransientExtension) {
        if (count == 0) delete this;
        extended->Release();
        return count;
      }
      if (count == 0) DestroyLast(this, to.extension);
      return count;
    };
    return linked();
  }
  uint32_t count;
  {
    ScopedObjectLock lock(this);
    count = --reference_count;
  }
  if (count == 0) DestroyLast(this, false);
  return count;
}
