#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "pools/StringPool.h"

namespace {

std::vector<std::string> Chain(uint32_t bucket) {
  const char* texts[256];
  const int n = StringPool::ChainForTesting(bucket, texts, 256);
  return std::vector<std::string>(texts, texts + n);
}

TEST(StringPoolTest, BucketIsTheLowBitsOfTheWeightedUnsignedSum) {
  int32_t n = -1;
  EXPECT_EQ(StringPool::Bucket("", &n), 0u);
  EXPECT_EQ(n, 0);
  EXPECT_EQ(StringPool::Bucket("a", &n), 0u);  // the first byte has weight 0
  EXPECT_EQ(n, 1);
  EXPECT_EQ(StringPool::Bucket("ab", &n), 98u);
  EXPECT_EQ(StringPool::Bucket("\x01\xFF", nullptr), 255u);  // bytes above 0x7F count 128..255
  // 1*255 + 2*255 + ... + 20*255 = 53550; 53550 & 0xFFF = 302.
  EXPECT_EQ(StringPool::Bucket(std::string(21, '\xFF').c_str(), &n), 53550u & 0xFFFu);
  EXPECT_EQ(n, 21);
}

TEST(StringPoolTest, NullGivesNullAndEqualTextGivesOnePointer) {
  EXPECT_EQ(StringPool::Intern(nullptr), nullptr);

  const char* empty = StringPool::Intern("");
  ASSERT_NE(empty, nullptr);
  EXPECT_STREQ(empty, "");
  EXPECT_EQ(StringPool::Intern(std::string().c_str()), empty);

  std::string a = "IVehicle";
  std::string b = "IVehicle";
  const char* pa = StringPool::Intern(a.c_str());
  ASSERT_NE(pa, nullptr);
  EXPECT_NE(pa, a.c_str());  // a copy, not the caller's buffer
  EXPECT_EQ(StringPool::Intern(b.c_str()), pa);
  a[0] = 'X';  // the caller's buffer changing does not touch the pooled text
  EXPECT_STREQ(pa, "IVehicle");
  EXPECT_NE(StringPool::Intern("IVehiclE"), pa);
}

TEST(StringPoolTest, ChainsAreOrderedByLengthThenTextWhateverTheInterningOrder) {
  // Group random names by bucket and take the fullest bucket with several lengths.
  std::mt19937 rng(7);
  std::map<uint32_t, std::vector<std::string>> by_bucket;
  for (int i = 0; i < 60000; ++i) {
    std::string s(8 + rng() % 40, 'a');  // long enough for the sums to wrap past 4096
    for (char& c : s) c = static_cast<char>('a' + rng() % 26);
    auto& v = by_bucket[StringPool::Bucket(s.c_str(), nullptr)];
    if (std::find(v.begin(), v.end(), s) == v.end()) v.push_back(s);
  }
  std::vector<std::string> names;
  uint32_t bucket = 0;
  for (auto& [b, v] : by_bucket) {
    std::vector<size_t> lengths;
    for (auto& s : v) lengths.push_back(s.size());
    std::sort(lengths.begin(), lengths.end());
    if (b != 0 && std::unique(lengths.begin(), lengths.end()) - lengths.begin() >= 3 &&
        v.size() > names.size()) {
      names = v;
      bucket = b;
    }
  }
  ASSERT_GE(names.size(), 6u);
  std::shuffle(names.begin(), names.end(), rng);
  for (auto& s : names) ASSERT_NE(StringPool::Intern(s.c_str()), nullptr);

  std::vector<std::string> expected = names;
  std::sort(expected.begin(), expected.end(), [](const std::string& x, const std::string& y) {
    if (x.size() != y.size()) return x.size() > y.size();
    return x < y;
  });
  EXPECT_EQ(Chain(bucket), expected);
}

TEST(StringPoolTest, ChunkBoundaries) {
  const std::string fill(4999, 'x');
  const char* big = StringPool::Intern(fill.c_str());
  ASSERT_NE(big, nullptr);
  EXPECT_EQ(std::string(big), fill);
  EXPECT_EQ(StringPool::BytesLeftForTesting(), 0);  // 4999 + terminator fill a fresh chunk

  const std::string too_long(5000, 'y');
  EXPECT_EQ(StringPool::Intern(too_long.c_str()), nullptr);
  EXPECT_EQ(StringPool::BytesLeftForTesting(), 0);
  EXPECT_EQ(StringPool::Intern(std::string(100000, 'z').c_str()), nullptr);

  // A new chunk holds a first text of 10 bytes: 4989 left.
  ASSERT_NE(StringPool::Intern("0123456789"), nullptr);
  ASSERT_EQ(StringPool::BytesLeftForTesting(), 4989);
  // Exactly n bytes left do not hold n bytes plus the terminator: a new chunk is opened.
  const std::string exact(4989, 'e');
  const char* p = StringPool::Intern(exact.c_str());
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(StringPool::BytesLeftForTesting(), 5000 - 4990);
  // n - 1 bytes fit exactly.
  const std::string fits(9, 'f');
  ASSERT_NE(StringPool::Intern(fits.c_str()), nullptr);
  EXPECT_EQ(StringPool::BytesLeftForTesting(), 0);
  // Earlier texts are untouched by later chunks.
  EXPECT_EQ(std::string(big), fill);
  EXPECT_EQ(std::string(p), exact);
}

int g_allocations_before_failure = 0;
void* FailAfter(size_t size) {
  if (g_allocations_before_failure-- <= 0) return nullptr;
  return std::malloc(size);
}

TEST(StringPoolTest, AllocationFailureStoresNothingAndALaterCallSucceeds) {
  const char* known = StringPool::Intern("Known");
  ASSERT_NE(known, nullptr);
  const int32_t left = StringPool::BytesLeftForTesting();

  g_allocations_before_failure = 0;  // the node allocation fails
  StringPool::SetAllocatorForTesting(&FailAfter);
  EXPECT_EQ(StringPool::Intern("Fresh"), nullptr);
  EXPECT_EQ(StringPool::Intern("Known"), known);  // finding needs no memory
  EXPECT_EQ(StringPool::BytesLeftForTesting(), left);
  const uint32_t bucket = StringPool::Bucket("Fresh", nullptr);
  for (const std::string& s : Chain(bucket)) EXPECT_NE(s, "Fresh");

  // The node is obtained but the chunk is not: still nothing stored.
  StringPool::SetAllocatorForTesting(nullptr);
  ASSERT_NE(StringPool::Intern(std::string(static_cast<size_t>(left) - 1, 'q').c_str()), nullptr);
  ASSERT_EQ(StringPool::BytesLeftForTesting(), 0);
  g_allocations_before_failure = 1;
  StringPool::SetAllocatorForTesting(&FailAfter);
  EXPECT_EQ(StringPool::Intern("NeedsAChunk"), nullptr);
  EXPECT_EQ(StringPool::BytesLeftForTesting(), 0);

  StringPool::SetAllocatorForTesting(nullptr);
  const char* fresh = StringPool::Intern("Fresh");
  ASSERT_NE(fresh, nullptr);
  EXPECT_EQ(StringPool::Intern("Fresh"), fresh);
  EXPECT_NE(StringPool::Intern("NeedsAChunk"), nullptr);
}

}  // namespace
