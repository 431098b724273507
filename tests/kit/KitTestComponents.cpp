// libKitTestComponents.so: one class of each kind declared with the kit, their creators, ties
// on each kind of implementation, and counters of live objects for leak checks.
#include <atomic>
#include <string>

#include "KitTestInterfaces.h"

namespace {

std::atomic<int> g_live_objects{0};
std::atomic<int> g_live_ties{0};
std::atomic<int> g_next_serial{1};

// Counts the instances of the class it is a member of.
struct LiveObject {
  LiveObject() : serial(g_next_serial++) { ++g_live_objects; }
  ~LiveObject() { --g_live_objects; }
  LiveObject(const LiveObject&) = delete;
  LiveObject& operator=(const LiveObject&) = delete;
  const int serial;
};

struct LiveTie {
  LiveTie() { ++g_live_ties; }
  ~LiveTie() { --g_live_ties; }
  LiveTie(const LiveTie&) = delete;
  LiveTie& operator=(const LiveTie&) = delete;
};

std::string LabelOf(const ZELSysTSBaseUnknown* impl, int serial) {
  return std::string(impl->IsA()) + "#" + std::to_string(serial);
}

}  // namespace

class KitWidget
    : public ZELSysTSImplementation<KitWidget, ZELSysTSBaseUnknown, IKitName, IKitLeaf> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitWidget", CLSID_KitWidget};
  std::string Name() override { return IsA(); }
  std::string Kind() override { return "leaf"; }
  int Depth() override { return 2; }
  std::string Label() { return LabelOf(this, live.serial); }

 private:
  LiveObject live;
};

class KitWidgetA final : public ZELSysTSImplementation<KitWidgetA, KitWidget> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitWidgetA", CLSID_KitWidgetA};
};
class KitWidgetB final : public ZELSysTSImplementation<KitWidgetB, KitWidget> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitWidgetB", CLSID_KitWidgetB};
};
class KitWidgetC final : public ZELSysTSImplementation<KitWidgetC, KitWidget> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitWidgetC", CLSID_KitWidgetC};
};

// A class without a class identifier of its own: the system generates one.
class KitAnonymous final : public ZELSysTSPlainClass<KitAnonymous, ZELSysTSBaseUnknown> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitAnonymous"};
};

class KitChained final
    : public ZELSysTSChainedExtension<KitChained, ZELSysTSBaseUnknown, IKitCounter> {
 public:
  // Two extended classes: each must reach the extension's list.
  static constexpr const char* extends[] = {"KitWidgetA", "KitWidgetB"};
  static constexpr ZELSysTSClassInfo class_info{"KitChained", CLSID_KitChained, extends};
  int Serial() override { return live.serial; }
  int Next() override { return ++count; }
  std::string Label() { return LabelOf(this, live.serial); }

 private:
  LiveObject live;
  int count = 0;
};

class KitTransient final
    : public ZELSysTSTransientExtension<KitTransient, ZELSysTSBaseUnknown, IKitTicket> {
 public:
  static constexpr const char* extends[] = {"KitWidgetA"};
  static constexpr ZELSysTSClassInfo class_info{"KitTransient", CLSID_KitTransient, extends};
  int Serial() override { return live.serial; }
  std::string Label() { return LabelOf(this, live.serial); }

 private:
  LiveObject live;
};

class KitLabelTie final : public ZELSysTSTie<KitLabelTie, IKitLabel, KitWidget> {
 public:
  std::string Label() override { return Impl()->Label(); }

 private:
  LiveTie live;
};
class KitChainedLabelTie final
    : public ZELSysTSTie<KitChainedLabelTie, IKitChainedLabel, KitChained> {
 public:
  std::string Label() override { return Impl()->Label(); }

 private:
  LiveTie live;
};
class KitTransientLabelTie final
    : public ZELSysTSTie<KitTransientLabelTie, IKitTransientLabel, KitTransient> {
 public:
  std::string Label() override { return Impl()->Label(); }

 private:
  LiveTie live;
};

ZELSYSTS_REGISTER_CLASS(KitWidget);
ZELSYSTS_REGISTER_CLASS(KitWidgetA);
ZELSYSTS_REGISTER_CLASS(KitWidgetB);
ZELSYSTS_REGISTER_CLASS(KitWidgetC);
ZELSYSTS_REGISTER_CLASS(KitAnonymous);
ZELSYSTS_REGISTER_CLASS(KitChained);
ZELSYSTS_REGISTER_CLASS(KitTransient);
ZELSYSTS_REGISTER_INTERFACE(IKitLeaf);

ZELSYSTS_EXPORT_BOA(IKitName, KitWidget, KitWidget)
ZELSYSTS_EXPORT_BOA(IKitLeaf, KitWidget, KitWidget)
ZELSYSTS_EXPORT_BOA(IKitCounter, KitChained, KitChained)
ZELSYSTS_EXPORT_BOA(IKitTicket, KitTransient, KitTransient)
ZELSYSTS_EXPORT_CREATOR(IKitLabel, KitWidget, KitLabelTie::Create)
ZELSYSTS_EXPORT_CREATOR(IKitChainedLabel, KitWidget, KitChainedLabelTie::Create)
ZELSYSTS_EXPORT_CREATOR(IKitTransientLabel, KitWidget, KitTransientLabelTie::Create)
ZELSYSTS_EXPORT_FACTORY(KitWidgetA, KitWidgetA)
ZELSYSTS_EXPORT_FACTORY(KitWidgetB, KitWidgetB)
ZELSYSTS_EXPORT_FACTORY(KitWidgetC, KitWidgetC)
ZELSYSTS_EXPORT_CLASS_OBJECTS(KitWidgetA, KitWidgetB)

ZELSYSTS_C_EXPORT int KitTestLiveObjects() {
  return g_live_objects.load();
}
ZELSYSTS_C_EXPORT int KitTestLiveTies() {
  return g_live_ties.load();
}
