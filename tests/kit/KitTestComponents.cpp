// libKitTestComponents.so: an implementation, a chained and a transient extension of it, ties on
// the first and the last.
#include "KitTestInterfaces.h"

std::atomic<int> kit_test_live;

namespace {

// The three classes differ only in kind, interface and class_info.
template <ZELSysTSTypeOfClass Kind, class I, const ZELSysTSClassInfo& Info>
class KitClass final : public ZELSysTSClass<KitClass<Kind, I, Info>, Kind, ZELSysTSBaseUnknown, I> {
 public:
  static constexpr const ZELSysTSClassInfo& class_info = Info;
  KitClass() { ++kit_test_live; }
  ~KitClass() override { --kit_test_live; }
  std::string Name() override { return this->IsA(); }
  int Next() override { return ++calls; }
  int calls = 0;
};
constexpr const char* kExtends[] = {"KitWidget"};
constexpr ZELSysTSClassInfo kWidget{"KitWidget", CLSID_KitWidget};
constexpr ZELSysTSClassInfo kChained{"KitChained", kExtends};
constexpr ZELSysTSClassInfo kTransient{"KitTransient", kExtends};

template <class I, class ImplClass>
class KitTie final : public ZELSysTSTie<KitTie<I, ImplClass>, I, ImplClass> {
 public:
  KitTie() { ++kit_test_live; }
  ~KitTie() override { --kit_test_live; }
  std::string Name() override { return this->Impl()->IsA(); }
  int Next() override { return this->Impl()->Next(); }
};

}  // namespace

using KitWidget = KitClass<ZELSysTSTypeImplementation, IKitName, kWidget>;
using KitChained = KitClass<ZELSysTSTypeChainedExtension, IKitCounter, kChained>;
using KitTransient = KitClass<ZELSysTSTypeTransientExtension, IKitTicket, kTransient>;
ZELSYSTS_REGISTER_CLASS(KitWidget);
ZELSYSTS_REGISTER_CLASS(KitChained);
ZELSYSTS_REGISTER_CLASS(KitTransient);

ZELSYSTS_EXPORT_BOA(IKitName, KitWidget, KitWidget)
ZELSYSTS_EXPORT_BOA(IKitCounter, KitChained, KitChained)
ZELSYSTS_EXPORT_BOA(IKitTicket, KitTransient, KitTransient)
ZELSYSTS_EXPORT_CREATOR(IKitLabel, KitWidget, KitTie<IKitLabel, KitWidget>::Create)
ZELSYSTS_EXPORT_CREATOR(IKitTicketLabel, KitWidget, KitTie<IKitTicketLabel, KitTransient>::Create)
ZELSYSTS_EXPORT_FACTORY(KitWidget, KitWidget)
ZELSYSTS_EXPORT_CLASS_OBJECTS(KitWidget)
