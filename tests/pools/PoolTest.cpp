// The string and GUID pools: equal content gives one pointer to a copy; a failed allocation
// stores nothing, and a later call succeeds.
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

bool g_refuse = false;
void* Refusing(size_t size) {
  return g_refuse ? nullptr : std::malloc(size);
}

// Without memory, a value that needs some (an index array, a new arena block: every eighth text
// is the longest there is, 511 GUIDs fill a first block) is refused and nothing is stored; with
// memory back it is pooled, and everything pooled before still gives its pointer.
TEST(PoolTest, AFailedAllocationStoresNothingAndALaterCallSucceeds) {
  StringPool::SetAllocatorForTesting(&Refusing);
  GuidPool::SetAllocatorForTesting(&Refusing);
  std::vector<std::pair<std::string, _GUID>> values;
  int refusedTexts = 0, refusedGuids = 0;
  for (uint32_t i = 1; i < 600; ++i) {
    const std::string text = i % 8 ? "Name" + std::to_string(i)
                                   : std::string(StringPool::kChunkBytes - 1, char('A' + i / 8));
    values.emplace_back(text, Guid(i));
    g_refuse = true;
    const auto refusedOrPooled =
        std::make_pair(StringPool::Intern(text.c_str()), GuidPool::Intern(&values.back().second));
    g_refuse = false;
    refusedTexts += !refusedOrPooled.first;
    refusedGuids += !refusedOrPooled.second;
    const auto pooled = InternTwice(text, values.back().second);
    EXPECT_TRUE(!refusedOrPooled.first || refusedOrPooled.first == pooled.first) << i;
    EXPECT_TRUE(!refusedOrPooled.second || refusedOrPooled.second == pooled.second) << i;
  }
  // Each index is refused its first array and four larger ones; more texts need a new block.
  EXPECT_TRUE(refusedTexts > 5 && refusedGuids == 6) << refusedTexts << " " << refusedGuids;
  for (const auto& value : values) InternTwice(value.first, value.second);
}

}  // namespace
