// Each KIT_CASE is a mistake that the kit turns into a compile error; KIT_CASE 0 is the same code
// without the mistake and must compile. Built only by the KitCompileError tests.
#include "ZELSysTSObjectModeler.h"

#if KIT_CASE == 0
constexpr _GUID kGuid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D738784}");
#elif KIT_CASE == 1
constexpr _GUID kGuid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D73878}");  // 37 characters
#elif KIT_CASE == 2
constexpr _GUID kGuid = ZELSysTSGuid("(6DADD843-BCD7-4107-B9E9-72342D738784)");
#elif KIT_CASE == 3
constexpr _GUID kGuid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D73878G}");
#elif KIT_CASE == 4
constexpr _GUID kGuid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E97-2342D738784}");
#else
constexpr _GUID kGuid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D738784}");
#endif

class IKitProbe : public IUnknown {
 public:
  virtual int Probe() = 0;
};
#if KIT_CASE == 5
ZELSYSTS_DECLARE_INTERFACE(IKitProbe, "{6DADD843-BCD7-4107-B9E9-72342D73878}");
#else
ZELSYSTS_DECLARE_INTERFACE(IKitProbe, "{6DADD843-BCD7-4107-B9E9-72342D738785}");
#endif

class KitBaseClass : public ZELSysTSImplementation<KitBaseClass, ZELSysTSBaseUnknown, IKitProbe> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitBaseClass", kGuid};
  int Probe() override { return 0; }
};

class KitDerivedClass : public ZELSysTSImplementation<KitDerivedClass, KitBaseClass> {
 public:
#if KIT_CASE != 6
  static constexpr ZELSysTSClassInfo class_info{"KitDerivedClass"};
#endif
};

class KitNoInfo : public ZELSysTSImplementation<KitNoInfo, ZELSysTSBaseUnknown> {
 public:
#if KIT_CASE != 7
  static constexpr ZELSysTSClassInfo class_info{"KitNoInfo"};
#endif
};

class KitNotAnExtension : public ZELSysTSImplementation<KitNotAnExtension, ZELSysTSBaseUnknown> {
 public:
#if KIT_CASE == 8
  static constexpr const char* extends[] = {"KitBaseClass"};
  static constexpr ZELSysTSClassInfo class_info{"KitNotAnExtension", extends};
#else
  static constexpr ZELSysTSClassInfo class_info{"KitNotAnExtension"};
#endif
};

ZELSYSTS_REGISTER_CLASS(KitBaseClass);
ZELSYSTS_REGISTER_CLASS(KitDerivedClass);
ZELSYSTS_REGISTER_CLASS(KitNoInfo);
ZELSYSTS_REGISTER_CLASS(KitNotAnExtension);

#if KIT_CASE == 9
ZELSysTSPtr<KitBaseClass> kNotAnInterface;  // a class is not an interface: no identity declared
#endif
