// The string and GUID pools: equal content gives one pointer to a copy; a failed allocation
// stores nothing; when the index and the sorted mirrors cannot grow, the chains are walked.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "pools/GuidPool.h"
#include "pools/StringPool.h"

namespace {

const auto Guid = [](uint32_t i) { return _GUID{i * 2654435761u, uint16_t(i), 7, {1, 2, 3}}; };
const _GUID kGuid = Guid(1);

// Interns both values, then copies of them, and expects one pooled copy of each; returns them.
std::pair<const char*, const _GUID*> InternTwice(const std::string& text, const _GUID& guid) {
  const char* pooledText = StringPool::Intern(text.c_str());
  const _GUID* pooledGuid = GuidPool::Intern(&guid);
  EXPECT_STREQ(pooledText, text.c_str());
  EXPECT_TRUE(pooledGuid != nullptr && *pooledGuid == guid) << guid.Data1;
  const _GUID copy = guid;
  EXPECT_EQ(StringPool::Intern(std::string(text).c_str()), pooledText) << "two copies: " << text;
  EXPECT_EQ(GuidPool::Intern(&copy), pooledGuid) << "two copies of GUID " << guid.Data1;
  return {pooledText, pooledGuid};
}

TEST(PoolTest, EqualContentGivesOnePointerAndNullGivesNull) {
  EXPECT_TRUE(StringPool::Intern(nullptr) == nullptr && GuidPool::Intern(nullptr) == nullptr);
  std::string text = "IVehicle";
  _GUID guid = kGuid;
  const auto pooled = InternTwice(text, guid);
  text[0] = 'X';  // the caller's copies change, the pooled ones do not
  guid.Data4[7] = 9;
  EXPECT_TRUE(pooled.first && std::string(pooled.first) == "IVehicle" && *pooled.second == kGuid);
  const auto other = InternTwice(text, guid);
  EXPECT_TRUE(other.first != pooled.first && other.second != pooled.second);
  EXPECT_EQ(StringPool::Intern(std::string(StringPool::kChunkBytes, 'y').c_str()), nullptr);
}

int g_granted = 0;  // how many more allocations Countdown grants
const auto Countdown = [](size_t size) { return g_granted-- > 0 ? std::malloc(size) : nullptr; };

TEST(PoolTest, AFailedAllocationStoresNothingAndALaterCallSucceeds) {
  const auto known = InternTwice("Known", kGuid);
  // Granting none fails a text's node and a GUID's copy; granting one fails a text's chunk (the
  // longest text there is needs a chunk of its own) and a GUID's node.
  for (int granted : {0, 1}) {
    const std::string text(StringPool::kChunkBytes - 1, static_cast<char>('a' + granted));
    const _GUID guid = Guid(2 + granted);
    g_granted = granted;
    StringPool::SetAllocatorForTesting(Countdown);
    EXPECT_EQ(StringPool::Intern(text.c_str()), nullptr) << granted;
    g_granted = granted;
    GuidPool::SetAllocatorForTesting(Countdown);
    EXPECT_EQ(GuidPool::Intern(&guid), nullptr) << granted;
    EXPECT_EQ(std::make_pair(StringPool::Intern("Known"), GuidPool::Intern(&kGuid)), known)
        << "finding needs no memory";
    StringPool::SetAllocatorForTesting(nullptr);
    GuidPool::SetAllocatorForTesting(nullptr);
    InternTwice(text, guid);
  }
}

// Refuses the arrays that grow by doubling (index slots, sorted mirrors: power-of-two sizes from
// 32 bytes), never a GUID, a node or a chunk. An index that is refused gives up for good.
int g_refused = 0;
void* NoGrowingArrays(size_t size) {
  return size < 32 || (size & (size - 1)) != 0 ? std::malloc(size) : (++g_refused, nullptr);
}

TEST(PoolTest, WhenTheIndexAndMirrorsCannotGrowTheChainsAreWalked) {
  StringPool::SetAllocatorForTesting(&NoGrowingArrays);
  GuidPool::SetAllocatorForTesting(&NoGrowingArrays);
  constexpr int kValues = 20000;  // several in each of the 4096 chains of each pool
  std::vector<std::pair<const char*, const _GUID*>> first;
  for (int i = 0; i < 2 * kValues && !HasFailure(); ++i) {  // twice over all values
    const auto pooled = InternTwice("Name" + std::to_string(i % kValues), Guid(i % kValues));
    if (i < kValues) first.push_back(pooled);
    EXPECT_EQ(pooled, first[i % kValues]);
  }
  EXPECT_GT(g_refused, 2) << "no sorted mirror was refused";  // the two indexes ask once
}

}  // namespace
