// A client of the installed library: it includes the one umbrella header and nothing else of
// ours, registers a class, creates an object of it, queries and releases it, and converts a
// GUID text. Prints "client: ok" and exits 0 when every check holds.
#include <cstdio>
#include <cstring>

#include "ZELSysTSObjectModeler.h"

namespace {

const _GUID kProbeClassId = {
    0x1b9f3a10, 0x5c2d, 0x4e8f, {0x9a, 0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd}};
const _GUID kIUnknown = {0x00000000, 0x0000, 0x0000, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};
const _GUID kUnknownInterface = {
    0x0badf00d, 0x0001, 0x0002, {0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0a}};

int g_failures = 0;
int g_destroyed = 0;

#define CHECK(condition)                                                         \
  do {                                                                           \
    if (!(condition)) {                                                          \
      std::printf("client: check failed (line %d): %s\n", __LINE__, #condition); \
      ++g_failures;                                                              \
    }                                                                            \
  } while (0)

ZELSysTSMetaClass* ProbeMeta() {
  static ZELSysTSMetaClass* const meta =
      ZELSysTSFindOrCreateMetaObject("ZELInstallProbe", ZELSysTSTypeImplementation, &kProbeClassId,
                                     ZELSysTSBaseUnknown::MetaObject(), nullptr);
  return meta;
}

class ZELInstallProbe : public ZELSysTSBaseUnknown {
 public:
  ZELInstallProbe() : ZELSysTSBaseUnknown(1) {}
  ~ZELInstallProbe() override { ++g_destroyed; }
  ZELSysTSMetaClass* GetMetaObject() const override { return ProbeMeta(); }
};

}  // namespace

int main() {
  ZELSysTSMetaClass* meta = ProbeMeta();
  CHECK(meta != nullptr);
  if (meta == nullptr) return 1;
  CHECK(ZELSysTSFindOrCreateMetaObject("ZELInstallProbe", ZELSysTSTypeBase, nullptr, nullptr,
                                       nullptr) == meta);
  CHECK(std::strcmp(meta->GetClassName(), "ZELInstallProbe") == 0);
  CHECK(*meta->GetClassId() == kProbeClassId);
  CHECK(meta->IsAKindOf("ZELSysTSBaseUnknown") == 1);

  auto* object = new ZELInstallProbe;
  CHECK(object->HasMutex() == 1);
  CHECK(object->IsA() != nullptr && std::strcmp(object->IsA(), "ZELInstallProbe") == 0);

  void* unknown = nullptr;
  CHECK(object->QueryInterface(kIUnknown, &unknown) == S_OK);
  CHECK(unknown == static_cast<IUnknown*>(object));
  void* missing = &unknown;
  CHECK(object->QueryInterface(kUnknownInterface, &missing) == E_NOINTERFACE);
  CHECK(missing == nullptr);
  if (unknown != nullptr) CHECK(static_cast<IUnknown*>(unknown)->Release() == 1);
  CHECK(object->Release() == 0);
  CHECK(g_destroyed == 1);

  _GUID parsed{};
  CHECK(ZELSysTSConvertStringToGUID("{1B9F3A10-5C2D-4E8F-9A01-23456789ABCD}", parsed) == 0);
  CHECK(parsed == kProbeClassId);
  CHECK(ZELSysTSConvertStringToGUID("1B9F3A10-5C2D-4E8F-9A01-23456789ABCD", parsed) == 1);

  if (g_failures != 0) return 1;
  std::printf("client: ok\n");
  return 0;
}
