// Interfaces of libKitTestComponents.so. Each answers the class of the object that implements it
// (for a tie, of the object the tie forwards to) and how many times Next was called on that one.
#pragma once

#include <atomic>
#include <string>

#include "ZELSysTSObjectModeler.h"

class IKitProbe : public IUnknown {
 public:
  virtual std::string Name() = 0;
  virtual int Next() = 0;
};
ZELSYSTS_DECLARE_INTERFACE(IKitProbe, "{0BADF00D-0001-0002-0304-05060708090A}");  // offered by none

#define KIT_INTERFACE(I, guidText) \
  class I : public IKitProbe {};   \
  ZELSYSTS_DECLARE_INTERFACE(I, guidText)
// On the widget, its chained extension, a transient one; ties on the widget and on a transient one.
KIT_INTERFACE(IKitName, "{4698981C-3083-4E90-ADD4-BF84E8A4F5BB}");
KIT_INTERFACE(IKitCounter, "{D50737B2-048A-43B9-9681-5D073E0C280A}");
KIT_INTERFACE(IKitTicket, "{D2C3A720-7344-4749-88B0-3B9312C8CFFD}");
KIT_INTERFACE(IKitLabel, "{3A822E7D-482D-4A9B-BDFA-A252D19089E0}");
KIT_INTERFACE(IKitTicketLabel, "{FA1BF66B-D318-4786-9B80-48B4DEFA6B0B}");

inline constexpr _GUID CLSID_KitWidget = ZELSysTSGuid("{1FE9C4B8-E417-4401-BDCB-03A87415B6E4}");
// The number of the library's objects and ties alive now.
ZELSYSTS_C_EXPORT std::atomic<int> kit_test_live;
