// ZELSysTSFillDictionary: records a class's "CreateInterface" creation function in the
// dictionary by names, where creation by class name finds it.
#include <cstring>

#include "ZELSysTSFindOrCreateMetaObject.h"
#include "dictionary/DicoStore.h"

namespace {

// The one interface name that this helper records.
constexpr char kCreateInterface[] = "CreateInterface";

}  // namespace

ZELSysTSFillDictionary::ZELSysTSFillDictionary(const char* className, const char* interfaceName,
                                               ZELSysTSInterfaceCreator creator) {
  if (interfaceName == nullptr || creator == nullptr || className == nullptr) return;
  if (std::strcmp(interfaceName, kCreateInterface) != 0) return;
  // A refusal by the store is not reported here (the store writes its own line).
  DicoStore::InsertByNames(className, kCreateInterface, nullptr, nullptr, nullptr,
                           reinterpret_cast<void*>(creator), nullptr);
}

ZELSysTSFillDictionary::ZELSysTSFillDictionary(const ZELSysTSMetaClass*, const ZELSysTSMetaClass*,
                                               ZELSysTSInterfaceCreator) {}

int ZELSysTSFillDictionary::InitMetaClasses(ZELSysTSMetaClass*, ZELSysTSMetaClass*) {
  return 1;
}
