// The system library's small primitives on one thread: ZELSmartMutex with each construction
// argument and its operations as pointer-to-member functions, and the strtok_r-like tokeniser.
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "ZELSysTSMutex.h"
#include "ZELSysTSStrtok.h"

namespace {

TEST(ZELSmartMutexTest, BuiltWithNonZeroHoldsNoMutexAndItsOperationsDoNothing) {
  for (int noMutex : {1, 7}) {
    ZELSmartMutex none(noMutex);
    EXPECT_EQ(none.Handle(), nullptr) << noMutex;
    EXPECT_EQ(none.LockF(), 0);
    EXPECT_EQ(none.UnlockF(), 0);
  }
}

TEST(ZELSmartMutexTest, HolderRelocksThroughPointerToMemberFunctions) {
  int (ZELMutex::*lock)() = &ZELMutex::LockF;
  int (ZELMutex::*unlock)() = &ZELMutex::UnlockF;
  ZELSmartMutex mutex(0);
  ZELMutex& base = mutex;
  EXPECT_EQ((base.*lock)(), 0);
  EXPECT_EQ((mutex.*lock)(), 0) << "the holder could not lock again";
  EXPECT_EQ((mutex.*unlock)(), 0);
  EXPECT_EQ((base.*unlock)(), 0);
  // A recursive pthread mutex refuses an unlock by a thread that does not hold it.
  EXPECT_EQ((base.*unlock)(), EPERM) << "lock and unlock calls were not balanced";
}

// Every field of `text`, each followed by '|'.
std::string Fields(std::string text, const char* separators) {
  std::string fields;
  char* state = nullptr;
  for (char* field = ZELSysTSStrtok(&text[0], separators, &state); field != nullptr;
       field = ZELSysTSStrtok(nullptr, separators, &state)) {
    fields.append(field).push_back('|');
  }
  return fields;
}

TEST(ZELSysTSStrtokTest, SplitsOnAnySeparatorAndSkipsEmptyFields) {
  EXPECT_EQ(Fields("/a:/b", ":"), "/a|/b|");
  EXPECT_EQ(Fields("::/a:::/b::", ":"), "/a|/b|");
  EXPECT_EQ(Fields("/only", ":"), "/only|");
  EXPECT_EQ(Fields("", ":"), "");
  EXPECT_EQ(Fields(":::", ":"), "");
  EXPECT_EQ(Fields("a b\tc  d", " \t"), "a|b|c|d|");
}

TEST(ZELSysTSStrtokTest, CutsInPlaceAndInterleavedTokenisationsKeepTheirOwnState) {
  char outer[] = "a:b";
  char inner[] = "1,2";
  char* outerState = nullptr;
  char* innerState = nullptr;
  EXPECT_EQ(ZELSysTSStrtok(outer, ":", &outerState), outer);
  EXPECT_EQ(ZELSysTSStrtok(inner, ",", &innerState), inner);
  EXPECT_EQ(ZELSysTSStrtok(nullptr, ":", &outerState), outer + 2);
  EXPECT_STREQ(outer, "a") << "the separator was not cut in place";
  EXPECT_EQ(ZELSysTSStrtok(nullptr, ",", &innerState), inner + 2);
  EXPECT_EQ(ZELSysTSStrtok(nullptr, ":", &outerState), nullptr);
  EXPECT_EQ(ZELSysTSStrtok(nullptr, ":", &outerState), nullptr) << "the end is not sticky";
  EXPECT_EQ(ZELSysTSStrtok(nullptr, ",", &innerState), nullptr);
}

}  // namespace
