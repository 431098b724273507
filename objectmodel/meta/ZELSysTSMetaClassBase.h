// ZELSysTSMetaClassBase: the plain meta object (kinds 0, 2, 3 and any unknown kind): name,
// identifier and base. It has no interface table, hence no lock.
//
// Invariants: class_id and class_name are pooled and never null after construction (unless a
// pool failed); base_meta is what the base's GetEffectiveMetaObject() returned. None of the three
// changes after construction, so they are read without a lock.
//
// Meta objects are built only by registration, under the dictionary lock, and never deleted
// once handed out.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstring>
#include <new>

#include "ZELSysTSMetaClass.h"
#include "ZELSysTSTypes.h"

class ZELSysTSMetaClassExt;

class ZELSysTSMetaClassBase : public ZELSysTSMetaClass {
 public:
  ZELSysTSMetaClassBase(const _GUID* classId, const char* className, ZELSysTSMetaClass* baseMeta);
  ~ZELSysTSMetaClassBase() override;

  using ZELSysTSMetaClass::IsAKindOf;
  const char* GetClassName() override;
  // Walks base_meta (the field; past a meta object written elsewhere, its GetBaseMetaObject()),
  // comparing names by strcmp. Stops on a cycle.
  int IsAKindOf(const char* className) override;
  const _GUID* GetClassId() override;
  // The same walk, comparing identifiers as four 32-bit words.
  int IsAKindOf(const _GUID* classId) override;
  ZELSysTSMetaClass* GetBaseMetaObject() override;
  // Returns this.
  ZELSysTSMetaClass* GetEffectiveMetaObject() override;

  // The creation function of iid for this class, or null. A plain meta object has none.
  virtual ZELSysTSInterfaceCreator FindInterfaceCreator(const _GUID& iid);
  // This meta object as an extension meta object, or null when the class is not an extension.
  virtual ZELSysTSMetaClassExt* GetExtensionMetaClass();

  // Meta objects live until the process ends: registration cuts them from one arena, under the
  // dictionary lock, with no allocator header each and their fresh pages made present in bulk.
  // Null when the arena needs a block and cannot get one. Deleting one (a registration that
  // failed after building it) gives its room back when it was the last one cut.
  static void* operator new(size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* memory, size_t size) noexcept;

 protected:
  // Constant after construction.
  const _GUID* class_id;
  const char* class_name;
  ZELSysTSMetaClass* base_meta;
};

// Which of the library's own meta classes an object is (by its dynamic type), or kForeign: for
// null and for a meta class written elsewhere (the abstract class is public), which is never
// taken for one of the library's.
enum class LibraryMetaKind { kForeign, kPlain, kImplementation, kExtension };

// The virtual tables of the library's three meta classes, indexed by kind (kPlain - 1, ...).
// Each is stored by registration when it builds the first meta object of that class, always with
// the same value, before the meta object is handed out; read without a lock.
extern std::atomic<const void*> g_library_meta_vtables[3];

// The kind of meta, told by its virtual table pointer without a call: this test sits on the path
// of every QueryInterface, AddRef and Release.
inline LibraryMetaKind LibraryMetaKindOf(const ZELSysTSMetaClass* meta) {
  if (meta == nullptr) return LibraryMetaKind::kForeign;
  const void* vtable;
  std::memcpy(&vtable, static_cast<const void*>(meta), sizeof vtable);
  // Implementation classes first: they answer most queries.
  const auto is = [vtable](LibraryMetaKind kind) {
    const int slot = static_cast<int>(kind) - 1;
    return g_library_meta_vtables[slot].load(std::memory_order_acquire) == vtable;
  };
  if (is(LibraryMetaKind::kImplementation)) return LibraryMetaKind::kImplementation;
  if (is(LibraryMetaKind::kPlain)) return LibraryMetaKind::kPlain;
  if (is(LibraryMetaKind::kExtension)) return LibraryMetaKind::kExtension;
  return LibraryMetaKind::kForeign;
}

// Whether meta is one of the library's own meta objects (a ZELSysTSMetaClassBase or derived,
// built by registration). False for null.
inline bool IsLibraryMetaObject(const ZELSysTSMetaClass* meta) {
  return LibraryMetaKindOf(meta) != LibraryMetaKind::kForeign;
}
// Registration calls this for every meta object it builds, before handing it out, with the kind
// of class it built.
void RememberLibraryMetaClass(const ZELSysTSMetaClassBase* meta, LibraryMetaKind kind);

// Whether from, or a meta object reached from it through GetBaseMetaObject(), satisfies matches.
// Floyd's tortoise and hare: a base chain that loops back (possible only through meta objects
// written elsewhere) ends the walk with false instead of running for ever.
template <typename Match>
bool AnyInBaseChain(ZELSysTSMetaClass* from, Match matches) {
  ZELSysTSMetaClass* slow = from;
  for (ZELSysTSMetaClass* fast = from; fast != nullptr;) {
    if (matches(fast)) return true;
    fast = fast->GetBaseMetaObject();
    if (fast == nullptr) return false;
    if (matches(fast)) return true;
    fast = fast->GetBaseMetaObject();
    slow = slow->GetBaseMetaObject();
    if (fast == slow) return false;
  }
  return false;
}

// The library's own meta object behind meta (its effective meta object) and its kind. The
// library's meta objects are their own effective meta object, so only a meta object written
// elsewhere costs the virtual call; its effective meta object must be one of the library's, or
// the view is {null, kForeign} (a class the library treats as having no interfaces). Null meta:
// {null, kForeign}.
struct EffectiveMetaView {
  ZELSysTSMetaClassBase* meta;
  LibraryMetaKind kind;
};
inline EffectiveMetaView EffectiveMetaViewOf(ZELSysTSMetaClass* meta) {
  LibraryMetaKind kind = LibraryMetaKindOf(meta);
  if (kind == LibraryMetaKind::kForeign && meta != nullptr) {
    meta = meta->GetEffectiveMetaObject();
    kind = LibraryMetaKindOf(meta);
  }
  if (kind == LibraryMetaKind::kForeign) return EffectiveMetaView{nullptr, kind};
  return EffectiveMetaView{static_cast<ZELSysTSMetaClassBase*>(meta), kind};
}

// The library's own meta object behind meta, or null (see EffectiveMetaViewOf).
inline ZELSysTSMetaClassBase* EffectiveMetaOf(ZELSysTSMetaClass* meta) {
  return EffectiveMetaViewOf(meta).meta;
}
