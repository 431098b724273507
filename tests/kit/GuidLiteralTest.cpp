// GUID literals: the compile-time parser agrees with the dictionary's run-time conversion, and
// rejects every malformation (at run time by throwing; compile-time rejection is checked by the
// KitCompileError tests).
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "ZELSysTSObjectModeler.h"

namespace {

constexpr _GUID kSample = ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D738784}");
static_assert(kSample.Data1 == 0x6DADD843u && kSample.Data2 == 0xBCD7 && kSample.Data3 == 0x4107);
static_assert(kSample.Data4[0] == 0xB9 && kSample.Data4[1] == 0xE9 && kSample.Data4[2] == 0x72 &&
              kSample.Data4[7] == 0x84);
static_assert(ZELSysTSSameGuid(kSample, ZELSysTSGuid("{6dadd843-bcd7-4107-b9e9-72342d738784}")),
              "hexadecimal digits of either case");
static_assert(!ZELSysTSSameGuid(kSample, ZELSysTSGuid("{6DADD843-BCD7-4107-B9E9-72342D738785}")),
              "the last byte counts");

// The text of each literal goes to both parsers.
#define KIT_EXPECT_SAME_AS_DICTIONARY(text)                                  \
  do {                                                                       \
    _GUID fromDictionary{};                                                  \
    ASSERT_EQ(ZELSysTSConvertStringToGUID(text, fromDictionary), 0) << text; \
    constexpr _GUID fromLiteral = ZELSysTSGuid(text);                        \
    EXPECT_TRUE(fromLiteral == fromDictionary) << text;                      \
  } while (0)

TEST(KitGuidLiteral, AgreesWithTheDictionaryConversion) {
  KIT_EXPECT_SAME_AS_DICTIONARY("{6DADD843-BCD7-4107-B9E9-72342D738784}");
  KIT_EXPECT_SAME_AS_DICTIONARY("{6dadd843-bcd7-4107-b9e9-72342d738784}");
  KIT_EXPECT_SAME_AS_DICTIONARY("{00000000-0000-0000-0000-000000000000}");
  KIT_EXPECT_SAME_AS_DICTIONARY("{FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF}");
  KIT_EXPECT_SAME_AS_DICTIONARY("{01234567-89AB-CDEF-0123-456789abcdef}");
  KIT_EXPECT_SAME_AS_DICTIONARY("{F0E1D2C3-B4A5-9687-7869-5A4B3C2D1E0F}");
}

TEST(KitGuidLiteral, KitIdentitiesMatchTheLibrarysConstants) {
  EXPECT_TRUE(ZELSysTSIIDOf<ZELSysTSBaseUnknown>() == CLSID_ZELSysTSBaseUnknown);
  EXPECT_TRUE(ZELSysTSGuid("{dc9a2804-3801-43de-ad64-971fae3c7f4a}") == CLSID_ZELSysTSMetaClass);
  _GUID iidUnknown{};
  ASSERT_EQ(ZELSysTSConvertStringToGUID("{00000000-0000-0000-C000-000000000046}", iidUnknown), 0);
  EXPECT_TRUE(ZELSysTSIIDOf<IUnknown>() == iidUnknown);
}

// Evaluated at run time (the argument is not a constant), a malformed literal throws.
TEST(KitGuidLiteral, RejectsEveryMalformationAtRunTime) {
  const char* const bad[] = {
      "(6DADD843-BCD7-4107-B9E9-72342D738784)",  // parentheses for braces
      "{6DADD843-BCD7-4107-B9E9-72342D738784 ",  // no closing brace
      "{6DADD843_BCD7_4107_B9E9_72342D738784}",  // underscores for dashes
      "{6DADD84-3BCD7-4107-B9E9-72342D738784}",  // dash one place early
      "{6DADD843-BCD7-4107-B9E972-342D738784}",  // last dash misplaced
      "{6DADD843-BCD7-4107-B9E9-72342D73878G}",  // not a hexadecimal digit
      "{6DADD843-BCD7-4107-B9E9-72342D73878 }",  // blank in a digit position
      "{?DADD843-BCD7-4107-B9E9-72342D738784}",  // not a hexadecimal digit in the first field
  };
  for (const char* text : bad) {
    char literal[39];
    std::memcpy(literal, text, sizeof literal);
    EXPECT_THROW(ZELSysTSGuid(literal), std::invalid_argument) << text;
  }
  char unterminated[39];
  std::memcpy(unterminated, "{6DADD843-BCD7-4107-B9E9-72342D738784}", sizeof unterminated);
  unterminated[38] = 'x';  // a character array, not a 38-character string
  EXPECT_THROW(ZELSysTSGuid(unterminated), std::invalid_argument);
}

}  // namespace
