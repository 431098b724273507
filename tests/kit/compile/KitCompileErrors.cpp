// Mistakes that the kit turns into compile errors rather than into a wrong GUID or a class
// registered under the wrong name or kind. Compiled only by the KitCompileErrors test: with
// KIT_CASE=0 the file has no mistake and must compile; each line that selects a case n by
// "KIT_CASE == n" or "KIT_CASE != n" names after "expect:" what the diagnostic must contain.
#include "ZELSysTSObjectModeler.h"

#if KIT_CASE == 1  // expect: ZELSysTSGuid
constexpr _GUID kGuid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D73878}");
#elif KIT_CASE == 2  // expect: GUID literal: braces
constexpr _GUID kGuid = ZELSysTSGuid("(6DADD843-BCD7-4107-B9E9-72342D738784)");
#elif KIT_CASE == 3  // expect: not a hexadecimal digit
constexpr _GUID kGuid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D73878G}");
#elif KIT_CASE == 4  // expect: dashes belong at positions
constexpr _GUID kGuid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9A72342D738784}");
#else
constexpr _GUID kGuid = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D738784}");
#endif

class KitBaseClass : public ZELSysTSImplementation<KitBaseClass, ZELSysTSBaseUnknown> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitBaseClass", kGuid};
};

class KitDerivedClass : public ZELSysTSImplementation<KitDerivedClass, KitBaseClass> {
 public:
#if KIT_CASE != 5  // expect: declares its own class_info
  static constexpr ZELSysTSClassInfo class_info{"KitDerivedClass"};
#endif
};

class KitOtherClass : public ZELSysTSImplementation<KitOtherClass, ZELSysTSBaseUnknown> {
 public:
#if KIT_CASE == 6  // expect: only extensions list the classes they extend
  static constexpr const char* extends[] = {"KitBaseClass"};
  static constexpr ZELSysTSClassInfo class_info{"KitOtherClass", extends};
#else
  static constexpr ZELSysTSClassInfo class_info{"KitOtherClass"};
#endif
};

ZELSYSTS_REGISTER_CLASS(KitBaseClass);
ZELSYSTS_REGISTER_CLASS(KitDerivedClass);
ZELSYSTS_REGISTER_CLASS(KitOtherClass);
