// Interfaces and class identifiers of the kit's test components (libKitTestComponents.so),
// shared by the library and the tests that load it.
#pragma once

#include <string>

#include "ZELSysTSObjectModeler.h"

// Carried by the widget object itself. Name() is the object's class name.
class IKitName : public IUnknown {
 public:
  virtual std::string Name() = 0;
};
ZELSYSTS_DECLARE_INTERFACE(IKitName, "{4698981C-3083-4E90-ADD4-BF84E8A4F5BB}");

// Carried by the chained extension KitChained. Serial() tells instances apart; Next() counts.
class IKitCounter : public IUnknown {
 public:
  virtual int Serial() = 0;
  virtual int Next() = 0;
};
ZELSYSTS_DECLARE_INTERFACE(IKitCounter, "{D50737B2-048A-43B9-9681-5D073E0C280A}");

// The same, carried by the transient extension KitTransient.
class IKitTicket : public IKitCounter {};
ZELSYSTS_DECLARE_DERIVED_INTERFACE(IKitTicket, IKitCounter,
                                   "{D2C3A720-7344-4749-88B0-3B9312C8CFFD}");

// Carried by ties on the object itself, on its chained extension and on a transient extension.
// Label() is "<implementation class>#<implementation serial>".
class IKitLabel : public IUnknown {
 public:
  virtual std::string Label() = 0;
};
ZELSYSTS_DECLARE_INTERFACE(IKitLabel, "{3A822E7D-482D-4A9B-BDFA-A252D19089E0}");
class IKitChainedLabel : public IKitLabel {};
ZELSYSTS_DECLARE_DERIVED_INTERFACE(IKitChainedLabel, IKitLabel,
                                   "{3070BD39-52D4-462A-BEBA-CC4A307CA303}");
class IKitTransientLabel : public IKitLabel {};
ZELSYSTS_DECLARE_DERIVED_INTERFACE(IKitTransientLabel, IKitLabel,
                                   "{FA1BF66B-D318-4786-9B80-48B4DEFA6B0B}");

inline constexpr _GUID CLSID_KitWidget = ZELSysTSGuid("{1FE9C4B8-E417-4401-BDCB-03A87415B6E4}");
inline constexpr _GUID CLSID_KitWidgetA = ZELSysTSGuid("{D0496634-696A-4CA0-8B76-EC87876DBD0C}");
inline constexpr _GUID CLSID_KitWidgetB = ZELSysTSGuid("{841068E9-0BE5-4CA8-BFC8-80D7188C37FD}");
inline constexpr _GUID CLSID_KitWidgetC = ZELSysTSGuid("{E40672F5-1C35-4B8E-883B-053A69EB3768}");
inline constexpr _GUID CLSID_KitChained = ZELSysTSGuid("{F17432EA-B057-4C80-A528-92CC5C77E189}");
inline constexpr _GUID CLSID_KitTransient = ZELSysTSGuid("{24240434-1B0C-4471-8821-39E0A17299E2}");

// Exported by the library as KitTestLive: how many of its objects (kind 0) or ties (kind 1) are
// alive now.
extern "C" typedef int (*KitLiveFunction)(int kind);
