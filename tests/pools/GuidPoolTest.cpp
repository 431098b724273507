#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "pools/GuidPool.h"

namespace {

_GUID FromBytes(const unsigned char (&bytes)[16]) {
  _GUID g;
  std::memcpy(&g, bytes, 16);
  return g;
}

const _GUID kZero = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
const _GUID kUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

TEST(GuidPoolTest, BucketCountsTheFirstFieldAndWeightedBytes) {
  EXPECT_EQ(GuidPool::Bucket(&kZero), 0u);
  EXPECT_EQ(GuidPool::Bucket(&kUnknown), 2586u);
  unsigned char ff[16];
  std::memset(ff, 0xFF, 16);
  _GUID all = FromBytes(ff);
  EXPECT_EQ(GuidPool::Bucket(&all), 1927u);
  // Byte 1 counts inside the first field (x256) and with weight 1.
  unsigned char one[16] = {0, 0x80};
  _GUID g = FromBytes(one);
  EXPECT_EQ(GuidPool::Bucket(&g), (0x8000u + 0x80u) & 0xFFFu);
}

TEST(GuidPoolTest, EqualContentGivesOnePointerAndNullGivesNull) {
  EXPECT_EQ(GuidPool::Intern(nullptr), nullptr);
  _GUID a = kUnknown;
  _GUID b = kUnknown;
  const _GUID* pa = GuidPool::Intern(&a);
  ASSERT_NE(pa, nullptr);
  EXPECT_NE(pa, &a);
  EXPECT_EQ(GuidPool::Intern(&b), pa);
  a.Data1 = 99;
  EXPECT_EQ(std::memcmp(pa, &kUnknown, 16), 0);
  _GUID c = kUnknown;
  c.Data4[7] = 0x47;
  EXPECT_NE(GuidPool::Intern(&c), pa);
}

TEST(GuidPoolTest, ChainsKeepTheOrderOfFirstInterning) {
  // Byte 0 counts once (inside the first field) and byte 15 with weight 15: raising byte 0 by
  // 15 and lowering byte 15 by 1 keeps the bucket.
  std::vector<_GUID> guids;
  for (uint8_t k : {3, 1, 4, 0}) {
    guids.push_back({15u * k, 0, 0, {0, 0, 0, 0, 0, 0, 0, static_cast<uint8_t>(10 - k)}});
  }
  const uint32_t bucket = GuidPool::Bucket(&guids[0]);
  for (const _GUID& g : guids) ASSERT_EQ(GuidPool::Bucket(&g), bucket);
  std::vector<const _GUID*> pooled;
  for (const _GUID& g : guids) pooled.push_back(GuidPool::Intern(&g));
  GuidPool::Intern(&guids[1]);  // a repeat does not move anything

  const _GUID* chain[16];
  const int n = GuidPool::ChainForTesting(bucket, chain, 16);
  ASSERT_EQ(n, 4);
  for (int i = 0; i < n; ++i) EXPECT_EQ(chain[i], pooled[static_cast<size_t>(i)]);
}

void* AlwaysFail(size_t) {
  return nullptr;
}

TEST(GuidPoolTest, AllocationFailureStoresNothing) {
  const _GUID known = {1, 2, 3, {4}};
  const _GUID* pk = GuidPool::Intern(&known);
  GuidPool::SetAllocatorForTesting(&AlwaysFail);
  const _GUID fresh = {5, 6, 7, {8}};
  EXPECT_EQ(GuidPool::Intern(&fresh), nullptr);
  EXPECT_EQ(GuidPool::Intern(&known), pk);
  const _GUID* chain[16];
  const int n = GuidPool::ChainForTesting(GuidPool::Bucket(&fresh), chain, 16);
  for (int i = 0; i < n; ++i) EXPECT_NE(*chain[i], fresh);
  GuidPool::SetAllocatorForTesting(nullptr);
  const _GUID* pf = GuidPool::Intern(&fresh);
  ASSERT_NE(pf, nullptr);
  EXPECT_EQ(std::memcmp(pf, &fresh, 16), 0);
}

}  // namespace
