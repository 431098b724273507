// The tokeniser: strtok_r's behaviour, with the dictionary path's ":" as separator.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZELSysTSStrtok.h"

namespace {

std::vector<std::string> Fields(std::string text, const char* separators) {
  std::vector<std::string> fields;
  char* state = nullptr;
  for (char* field = ZELSysTSStrtok(&text[0], separators, &state); field != nullptr;
       field = ZELSysTSStrtok(nullptr, separators, &state)) {
    fields.emplace_back(field);
  }
  return fields;
}

using Strings = std::vector<std::string>;

TEST(ZELSysTSStrtokTest, SplitsOnSeparatorsAndSkipsEmptyFields) {
  EXPECT_EQ(Fields("/a:/b", ":"), (Strings{"/a", "/b"}));
  EXPECT_EQ(Fields("::/a:::/b::", ":"), (Strings{"/a", "/b"}));
  EXPECT_EQ(Fields("/only", ":"), (Strings{"/only"}));
  EXPECT_EQ(Fields("", ":"), Strings{});
  EXPECT_EQ(Fields(":::", ":"), Strings{});
  EXPECT_EQ(Fields("a b\tc  d", " \t"), (Strings{"a", "b", "c", "d"}));
}

TEST(ZELSysTSStrtokTest, CutsInPlaceAndKeepsReturningNullAtTheEnd) {
  char text[] = "x:y";
  char* state = nullptr;
  char* first = ZELSysTSStrtok(text, ":", &state);
  ASSERT_EQ(first, text);
  EXPECT_STREQ(first, "x");
  char* second = ZELSysTSStrtok(nullptr, ":", &state);
  ASSERT_EQ(second, text + 2);
  EXPECT_STREQ(second, "y");
  EXPECT_EQ(ZELSysTSStrtok(nullptr, ":", &state), nullptr);
  EXPECT_EQ(ZELSysTSStrtok(nullptr, ":", &state), nullptr);
}

TEST(ZELSysTSStrtokTest, TwoTokenisationsInterleaveWithoutSharingState) {
  char outer[] = "a:b:c";
  char inner[] = "1,2";
  char* outerState = nullptr;
  char* innerState = nullptr;
  EXPECT_STREQ(ZELSysTSStrtok(outer, ":", &outerState), "a");
  EXPECT_STREQ(ZELSysTSStrtok(inner, ",", &innerState), "1");
  EXPECT_STREQ(ZELSysTSStrtok(nullptr, ":", &outerState), "b");
  EXPECT_STREQ(ZELSysTSStrtok(nullptr, ",", &innerState), "2");
  EXPECT_STREQ(ZELSysTSStrtok(nullptr, ":", &outerState), "c");
  EXPECT_EQ(ZELSysTSStrtok(nullptr, ",", &innerState), nullptr);
  EXPECT_EQ(ZELSysTSStrtok(nullptr, ":", &outerState), nullptr);
}

}  // namespace
