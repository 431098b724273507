// zelcore_widgets: an implementation library written the way client libraries are. Its classes
// register their meta objects while the library initialises; interfaces are served by a tie
// (IWidgetInfo), a chained extension (IWidgetExtra) and a transient extension (IWidgetTemp).
#include <atomic>

#include "CoreWidgetInterfaces.h"

namespace {

std::atomic<int> g_live{0};
std::atomic<int> g_serial{0};

class CoreWidget : public ZELSysTSBaseUnknown {
 public:
  explicit CoreWidget(unsigned char threadSafe) : ZELSysTSBaseUnknown(threadSafe) { ++g_live; }
  ~CoreWidget() override { --g_live; }

  static ZELSysTSMetaClass* MetaObject() {
    static ZELSysTSMetaClass* const meta =
        ZELSysTSFindOrCreateMetaObject("CoreWidget", ZELSysTSTypeImplementation, &CLSID_CoreWidget,
                                       ZELSysTSBaseUnknown::MetaObject(), nullptr);
    return meta;
  }
  ZELSysTSMetaClass* GetMetaObject() const override { return MetaObject(); }

  virtual int Answer() const { return 42; }
};

class CoreWidgetDeluxe : public CoreWidget {
 public:
  explicit CoreWidgetDeluxe(unsigned char threadSafe) : CoreWidget(threadSafe) {}

  static ZELSysTSMetaClass* MetaObject() {
    static ZELSysTSMetaClass* const meta =
        ZELSysTSFindOrCreateMetaObject("CoreWidgetDeluxe", ZELSysTSTypeImplementation,
                                       &CLSID_CoreWidgetDeluxe, CoreWidget::MetaObject(), nullptr);
    return meta;
  }
  ZELSysTSMetaClass* GetMetaObject() const override { return MetaObject(); }

  int Answer() const override { return 4242; }
};

// The tie that carries IWidgetInfo for a widget and hands every call to its implementation.
class TIEIWidgetInfoCoreWidget final : public IWidgetInfo {
 public:
  static IUnknown* Make(ZELSysTSBaseUnknown* object) {
    auto* tie = new TIEIWidgetInfoCoreWidget(object);
    if (ZELSysTSTIEInternal::Tie_Construct(object, CoreWidget::MetaObject(), nullptr,
                                           tie->implementation_) != S_OK) {
      delete tie;
      return nullptr;
    }
    return tie;
  }

  HRESULT QueryInterface(const _GUID& iid, void** ppv) override {
    return ZELSysTSTIEInternal::Tie_Query(object_, iid, ppv);
  }
  uint32_t AddRef() override { return ZELSysTSTIEInternal::Tie_AddRef(count_, object_); }
  uint32_t Release() override {
    unsigned char mustDelete = 0;
    const int count = ZELSysTSTIEInternal::Tie_Release(count_, object_, mustDelete);
    if (mustDelete != 0) delete this;
    return count;
  }
  int Answer() override { return static_cast<CoreWidget*>(implementation_)->Answer(); }

 private:
  explicit TIEIWidgetInfoCoreWidget(ZELSysTSBaseUnknown* object) : object_(object) { ++g_live; }
  ~TIEIWidgetInfoCoreWidget() { --g_live; }

  int count_ = 1;  // the reference that QueryInterface counted on the object
  ZELSysTSBaseUnknown* object_;
  ZELSysTSBaseUnknown* implementation_ = nullptr;
};

// Chained extension: one per widget, owned by the widget.
class CoreWidgetExtra : public ZELSysTSBaseUnknown, public IWidgetExtra {
 public:
  CoreWidgetExtra() : ZELSysTSBaseUnknown(1) { ++g_live; }
  ~CoreWidgetExtra() override { --g_live; }

  static ZELSysTSMetaClass* MetaObject() {
    static ZELSysTSMetaClass* const meta = ZELSysTSFindOrCreateMetaObject(
        "CoreWidgetExtra", ZELSysTSTypeChainedExtension, &CLSID_CoreWidgetExtra,
        ZELSysTSBaseUnknown::MetaObject(), "CoreWidget");
    return meta;
  }
  ZELSysTSMetaClass* GetMetaObject() const override { return MetaObject(); }
  static ZELSysTSBaseUnknown* Create() { return new CoreWidgetExtra; }

  HRESULT QueryInterface(const _GUID& iid, void** ppv) override {
    return ZELSysTSBaseUnknown::QueryInterface(iid, ppv);
  }
  uint32_t AddRef() override { return ZELSysTSBaseUnknown::AddRef(); }
  uint32_t Release() override { return ZELSysTSBaseUnknown::Release(); }
  const void* Identity() override { return this; }
  ZELSysTSBaseUnknown* Owner() override {
    void* owner = nullptr;
    // The extension answers for its object, so IUnknown is the object.
    if (QueryInterface(IID_IUnknownForWidgets(), &owner) != S_OK) return nullptr;
    auto* object = static_cast<ZELSysTSBaseUnknown*>(static_cast<IUnknown*>(owner));
    object->Release();
    return object;
  }

 private:
  static const _GUID& IID_IUnknownForWidgets() {
    static const _GUID iid = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    return iid;
  }
};

// Transient extension: a new one for every request, with a count of its own.
class CoreWidgetTemp : public ZELSysTSBaseUnknown, public IWidgetTemp {
 public:
  CoreWidgetTemp() : ZELSysTSBaseUnknown(1), serial_(++g_serial) { ++g_live; }
  ~CoreWidgetTemp() override { --g_live; }

  static ZELSysTSMetaClass* MetaObject() {
    static ZELSysTSMetaClass* const meta = ZELSysTSFindOrCreateMetaObject(
        "CoreWidgetTemp", ZELSysTSTypeTransientExtension, &CLSID_CoreWidgetTemp,
        ZELSysTSBaseUnknown::MetaObject(), "CoreWidget");
    return meta;
  }
  ZELSysTSMetaClass* GetMetaObject() const override { return MetaObject(); }
  static ZELSysTSBaseUnknown* Create() { return new CoreWidgetTemp; }

  HRESULT QueryInterface(const _GUID& iid, void** ppv) override {
    return ZELSysTSBaseUnknown::QueryInterface(iid, ppv);
  }
  uint32_t AddRef() override { return ZELSysTSBaseUnknown::AddRef(); }
  uint32_t Release() override { return ZELSysTSBaseUnknown::Release(); }
  int Serial() override { return serial_; }

 private:
  int serial_;
};

// Registration while the library initialises.
struct RegisterAtLoad {
  RegisterAtLoad() {
    CoreWidget::MetaObject();
    CoreWidgetDeluxe::MetaObject();
    CoreWidgetExtra::MetaObject();
    CoreWidgetTemp::MetaObject();
  }
};
const RegisterAtLoad g_register_at_load;

// Called through the "CreateInterface" record: returns its argument, counting the calls.
std::atomic<int> g_gadget_record_calls{0};
void* CreateGadgetByRecord(void* argument) {
  ++g_gadget_record_calls;
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
int zelcore_gadget_record_calls() {
  return g_gadget_record_calls.load();
}

// argument: null, or an unsigned char that is the thread-safe flag (null: thread-safe).
void* fctZELSysTSCreateCoreWidget(void* argument) {
  const unsigned char threadSafe = argument != nullptr ? *static_cast<unsigned char*>(argument) : 1;
  return static_cast<ZELSysTSBaseUnknown*>(new CoreWidget(threadSafe));
}

void* fctZELSysTSCreateCoreWidgetDeluxe(void*) {
  return static_cast<ZELSysTSBaseUnknown*>(new CoreWidgetDeluxe(1));
}

// Never reached while the "CreateInterface" record holds a creator.
void* fctZELSysTSCreateCoreGadget(void*) {
  return nullptr;
}

IUnknown* ZELSysTSCreateIWidgetInfoCoreWidget(ZELSysTSBaseUnknown* object, unsigned char) {
  return TIEIWidgetInfoCoreWidget::Make(object);
}

IUnknown* ZELSysTSCreateIWidgetExtraCoreWidgetExtra(ZELSysTSBaseUnknown* object, unsigned char) {
  ZELSysTSBaseUnknown* impl = ZELSysTSBOAInternal::CreateBOA(object, CoreWidgetExtra::MetaObject(),
                                                             &CoreWidgetExtra::Create);
  return impl != nullptr ? static_cast<IWidgetExtra*>(static_cast<CoreWidgetExtra*>(impl))
                         : nullptr;
}

IUnknown* ZELSysTSCreateIWidgetTempCoreWidget(ZELSysTSBaseUnknown* object, unsigned char) {
  ZELSysTSBaseUnknown* impl =
      ZELSysTSBOAInternal::CreateBOA(object, CoreWidgetTemp::MetaObject(), &CoreWidgetTemp::Create);
  return impl != nullptr ? static_cast<IWidgetTemp*>(static_cast<CoreWidgetTemp*>(impl)) : nullptr;
}

static int g_echo_token;

HRESULT ZELSysTSDllGetClassObject(const _GUID& clsid, const _GUID& iid, void** ppv) {
  if (clsid == CLSID_CoreEcho) {
    *ppv = &g_echo_token;
    return kEchoResult;
  }
  if (clsid != CLSID_CoreWidget) {
    *ppv = nullptr;
    return E_FAIL;
  }
  auto* widget = new CoreWidget(1);
  const HRESULT result = widget->QueryInterface(iid, ppv);
  widget->Release();
  return result;
}

void* zelcore_echo_token() {
  return &g_echo_token;
}

}  // extern "C"
