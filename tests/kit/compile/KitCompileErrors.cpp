// What the kit checks at compile time (KitCompileErrors): with KIT_CASE=0 this file compiles; each
// line selecting a case n with "expect: <text>" must fail with a diagnostic that contains it.
#include "ZELSysTSObjectModeler.h"

// A literal gives the fields of its text, Data4 on both sides of the last dash.
constexpr _GUID kId = ZELSysTSGuid("{01234567-89ab-CDEF-1032-547698BADCFE}");
static_assert(ZELSysTSSameGuid(
    kId, _GUID{0x01234567, 0x89AB, 0xCDEF, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}}));
static_assert(!ZELSysTSSameGuid(kId, ZELSysTSGuid("{01234567-89ab-CDEF-1032-547698BADCFF}")));

#if KIT_CASE == 1  // expect: ZELSysTSGuid
constexpr _GUID kBad = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D73878}");
#elif KIT_CASE == 2  // expect: GUID literal: braces
constexpr _GUID kBad = ZELSysTSGuid("(6DADD843-BCD7-4107-B9E9-72342D738784)");
#elif KIT_CASE == 3  // expect: not a hexadecimal digit
constexpr _GUID kBad = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D73878G}");
#elif KIT_CASE == 4  // expect: dashes belong at positions
constexpr _GUID kBad = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9A72342D738784}");
#elif KIT_CASE == 5  // expect: needs the identity of I
struct IKitUndeclared : IUnknown {};
ZELSysTSPtr<IKitUndeclared> undeclared;
#endif

struct KitBase : ZELSysTSImplementation<KitBase, ZELSysTSBaseUnknown> {
  static constexpr ZELSysTSClassInfo class_info{"KitBase", kId};
};
struct KitDerived : ZELSysTSImplementation<KitDerived, KitBase> {
#if KIT_CASE != 6  // expect: declares its own class_info
  static constexpr ZELSysTSClassInfo class_info{"KitDerived"};
#endif
};
ZELSYSTS_REGISTER_CLASS(KitDerived);
