// A client of the installed package, through its umbrella header alone: declares a class with the
// kit, makes an object of it, asks it for IUnknown and lets it go. Prints "client: ok" when the
// object answered as its class and was destroyed with its last reference.
#include <cstdio>
#include <cstring>

#include "ZELSysTSObjectModeler.h"

namespace {

int g_destroyed = 0;

class InstallProbe final : public ZELSysTSImplementation<InstallProbe, ZELSysTSBaseUnknown> {
 public:
  static constexpr ZELSysTSClassInfo class_info{
      "InstallProbe", ZELSysTSGuid("{1B9F3A10-5C2D-4E8F-9A01-23456789ABCD}")};
  ~InstallProbe() override { ++g_destroyed; }
};

}  // namespace

int main() {
  auto object = ZELSysTSPtr<ZELSysTSBaseUnknown>::Attach(new InstallProbe);
  ZELSysTSPtr<IUnknown> unknown = object;  // QueryInterface
  const bool answered = unknown && std::strcmp(object->IsA(), "InstallProbe") == 0 &&
                        object->IsAKindOf("ZELSysTSBaseUnknown") == 1;
  object = nullptr;
  const bool alive = g_destroyed == 0;
  unknown = nullptr;
  std::printf("client: %s\n", answered && alive && g_destroyed == 1 ? "ok" : "failed");
  return 0;
}
