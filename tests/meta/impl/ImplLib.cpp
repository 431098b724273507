// zelimpl: the implementation library of the meta and core integration tests. Its interface
// creators answer with their own name in place of an interface (QueryInterface hands it on and
// counts the reference on the object). Its initialisation registers MtFooExt (extending MtFoo),
// and MtInitThread from a thread of its own that it joins at once: were the library loaded under
// a lock that registration takes, the load would never end.
#include <cstdint>
#include <thread>

#include "ZELSysTSObjectModeler.h"

#define ZELIMPL_CREATOR(fn)                                      \
  extern "C" IUnknown* fn(ZELSysTSBaseUnknown*, unsigned char) { \
    return reinterpret_cast<IUnknown*>(const_cast<char*>(#fn));  \
  }

ZELIMPL_CREATOR(ZELSysTSCreateIBarMtFoo)
ZELIMPL_CREATOR(ZELSysTSCreateIBarLeafMtFoo)
ZELIMPL_CREATOR(ZELSysTSCreateIExtMtFooExt)

namespace {

const _GUID kClsidFooExt = {0x5EA10002, 0x1111, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 2}};
const _GUID kClsidInitThread = {0x5EA10003, 0x1111, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 3}};

[[maybe_unused]] const bool g_registered = [] {
  ZELSysTSFindOrCreateMetaObject("MtFooExt", ZELSysTSTypeChainedExtension, &kClsidFooExt, nullptr,
                                 "MtFoo");
  std::thread([] {
    ZELSysTSFindOrCreateMetaObject("MtInitThread", ZELSysTSTypeImplementation, &kClsidInitThread,
                                   nullptr, nullptr);
  }).join();
  return true;
}();

}  // namespace

extern "C" {

// Creation by class name.
void* fctZELSysTSCreateCoreBare(void* argument) {
  return argument;
}

// Creation by class identifier: the result and *ppv show the arguments it was given.
HRESULT ZELSysTSDllGetClassObject(const _GUID& clsid, const _GUID& iid, void** ppv) {
  *ppv = reinterpret_cast<void*>(static_cast<uintptr_t>(iid.Data1));
  return static_cast<HRESULT>(clsid.Data1 & 0xFF);
}

}  // extern "C"
