// libKitTestComponents.so: a class of each kind declared with the kit, their creators, ties on
// each kind of implementation, and counts of live objects and ties for leak checks.
#include <atomic>
#include <string>

#include "KitTestInterfaces.h"

namespace {

std::atomic<int> g_live[2];  // objects, ties
std::atomic<int> g_next_serial{1};

// A member that counts the live instances of its owner's kind and tells them apart.
struct Live {
  explicit Live(int kind) : kind(kind) { ++g_live[kind]; }
  ~Live() { --g_live[kind]; }
  const int kind;
  const int serial = g_next_serial++;
};

// "<class>#<serial>" of an implementation object.
template <class C>
std::string LabelOf(C* impl) {
  return impl->IsA() + ("#" + std::to_string(impl->live.serial));
}

}  // namespace

class KitWidget : public ZELSysTSImplementation<KitWidget, ZELSysTSBaseUnknown, IKitName> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitWidget", CLSID_KitWidget};
  std::string Name() override { return IsA(); }
  Live live{0};
};
class KitWidgetA final : public ZELSysTSImplementation<KitWidgetA, KitWidget> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitWidgetA", CLSID_KitWidgetA};
};
class KitWidgetB final : public ZELSysTSImplementation<KitWidgetB, KitWidget> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitWidgetB", CLSID_KitWidgetB};
};
// Named for IKitCounter by the dictionary, but not among the classes KitChained extends.
class KitWidgetC final : public ZELSysTSImplementation<KitWidgetC, KitWidget> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitWidgetC", CLSID_KitWidgetC};
};
// Without a class identifier of its own: the system generates one.
class KitAnonymous final : public ZELSysTSPlainClass<KitAnonymous, ZELSysTSBaseUnknown> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitAnonymous"};
};

class KitChained final
    : public ZELSysTSChainedExtension<KitChained, ZELSysTSBaseUnknown, IKitCounter> {
 public:
  static constexpr const char* extends[] = {"KitWidgetA", "KitWidgetB"};
  static constexpr ZELSysTSClassInfo class_info{"KitChained", CLSID_KitChained, extends};
  int Serial() override { return live.serial; }
  int Next() override { return ++count; }
  Live live{0};
  int count = 0;
};
class KitTransient final
    : public ZELSysTSTransientExtension<KitTransient, ZELSysTSBaseUnknown, IKitTicket> {
 public:
  static constexpr const char* extends[] = {"KitWidgetA"};
  static constexpr ZELSysTSClassInfo class_info{"KitTransient", CLSID_KitTransient, extends};
  int Serial() override { return live.serial; }
  int Next() override { return 0; }
  Live live{0};
};

// The label interface I through a tie on the implementation class ImplClass.
template <class I, class ImplClass>
class KitLabelTie final : public ZELSysTSTie<KitLabelTie<I, ImplClass>, I, ImplClass> {
 public:
  std::string Label() override { return LabelOf(this->Impl()); }
  Live live{1};
};

ZELSYSTS_REGISTER_CLASS(KitWidget);
ZELSYSTS_REGISTER_CLASS(KitWidgetA);
ZELSYSTS_REGISTER_CLASS(KitWidgetB);
ZELSYSTS_REGISTER_CLASS(KitWidgetC);
ZELSYSTS_REGISTER_CLASS(KitAnonymous);
ZELSYSTS_REGISTER_CLASS(KitChained);
ZELSYSTS_REGISTER_CLASS(KitTransient);

ZELSYSTS_EXPORT_BOA(IKitName, KitWidget, KitWidget)
ZELSYSTS_EXPORT_BOA(IKitCounter, KitChained, KitChained)
ZELSYSTS_EXPORT_BOA(IKitTicket, KitTransient, KitTransient)
ZELSYSTS_EXPORT_CREATOR(IKitLabel, KitWidget, KitLabelTie<IKitLabel, KitWidget>::Create)
ZELSYSTS_EXPORT_CREATOR(IKitChainedLabel, KitWidget,
                        KitLabelTie<IKitChainedLabel, KitChained>::Create)
ZELSYSTS_EXPORT_CREATOR(IKitTransientLabel, KitWidget,
                        KitLabelTie<IKitTransientLabel, KitTransient>::Create)
ZELSYSTS_EXPORT_FACTORY(KitWidgetA, KitWidgetA)
ZELSYSTS_EXPORT_FACTORY(KitWidgetB, KitWidgetB)
ZELSYSTS_EXPORT_FACTORY(KitWidgetC, KitWidgetC)
ZELSYSTS_EXPORT_CLASS_OBJECTS(KitWidgetA, KitWidgetB)

ZELSYSTS_C_EXPORT int KitTestLive(int kind) {
  return g_live[kind].load();
}
