// zelcore_widgets: an implementation library written the way client libraries are. CoreWidget's
// IWidgetExtra is served by its chained extension CoreWidgetExtra; CoreGadget is made through a
// "CreateInterface" record.
#include <atomic>
#include <cstdint>

#include "CoreWidgetInterfaces.h"

namespace {

std::atomic<int> g_live{0};  // widgets and extensions alive now

// A class of this library, registered on first use, counted in g_live.
template <const char* Name, const _GUID* Clsid, ZELSysTSTypeOfClass Type, const char* Extended>
class Widget : public ZELSysTSBaseUnknown {
 public:
  Widget() : ZELSysTSBaseUnknown(1) { ++g_live; }
  ~Widget() override { --g_live; }
  static ZELSysTSMetaClass* MetaObject() {
    static ZELSysTSMetaClass* const meta = ZELSysTSFindOrCreateMetaObject(
        Name, Type, Clsid, ZELSysTSBaseUnknown::MetaObject(), Extended);
    return meta;
  }
  ZELSysTSMetaClass* GetMetaObject() const override { return MetaObject(); }
  static ZELSysTSBaseUnknown* Create() { return new Widget; }
};

constexpr char kWidget[] = "CoreWidget";
constexpr char kExtra[] = "CoreWidgetExtra";
using CoreWidget = Widget<kWidget, &CLSID_CoreWidget, ZELSysTSTypeImplementation, nullptr>;
using CoreWidgetExtra =
    Widget<kExtra, &CLSID_CoreWidgetExtra, ZELSysTSTypeChainedExtension, kWidget>;

// Both classes are known from the moment the library is loaded.
[[maybe_unused]] const bool g_registered =
    CoreWidget::MetaObject() != nullptr && CoreWidgetExtra::MetaObject();

void* CreateGadgetByRecord(void* argument) {
  return argument;
}
// Recorded with the creator type, called with one untyped argument: the generic function
// pointer type in between keeps the conversion explicit.
const ZELSysTSFillDictionary g_gadget_record(
    "CoreGadget", "CreateInterface",
    reinterpret_cast<ZELSysTSInterfaceCreator>(
        reinterpret_cast<void (*)()>(&CreateGadgetByRecord)));

}  // namespace

extern "C" {

int zelcore_widgets_live() {
  return g_live.load();
}

void* fctZELSysTSCreateCoreWidget(void*) {
  return CoreWidget::Create();
}

// Never reached while the "CreateInterface" record holds a creator.
void* fctZELSysTSCreateCoreGadget(void*) {
  return nullptr;
}

IUnknown* ZELSysTSCreateIWidgetExtraCoreWidgetExtra(ZELSysTSBaseUnknown* object, unsigned char) {
  return ZELSysTSBOAInternal::CreateBOA(object, CoreWidgetExtra::MetaObject(),
                                        &CoreWidgetExtra::Create);
}

HRESULT ZELSysTSDllGetClassObject(const _GUID& clsid, const _GUID& iid, void** ppv) {
  *ppv = reinterpret_cast<void*>(static_cast<uintptr_t>(iid.Data1));
  return clsid == CLSID_CoreWidget ? kEchoResult : E_FAIL;
}

}  // extern "C"
