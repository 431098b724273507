#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "pools/GuidPool.h"
#include "pools/StringPool.h"

namespace {

constexpr int kThreads = 8;
constexpr int kItems = 2000;

TEST(PoolConcurrencyTest, ManyThreadsInterningTheSameContentGetOnePointerEach) {
  std::vector<std::string> names;
  std::vector<_GUID> guids;
  for (int i = 0; i < kItems; ++i) {
    names.push_back("Class" + std::to_string(i * 7919 % 100003));
    guids.push_back({static_cast<uint32_t>(i * 2654435761u), static_cast<uint16_t>(i), 0, {1}});
  }
  std::vector<std::vector<const char*>> name_results(kThreads);
  std::vector<std::vector<const _GUID*>> guid_results(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      std::vector<int> order(kItems);
      for (int i = 0; i < kItems; ++i) order[static_cast<size_t>(i)] = i;
      std::shuffle(order.begin(), order.end(), std::mt19937(static_cast<unsigned>(t)));
      name_results[static_cast<size_t>(t)].assign(kItems, nullptr);
      guid_results[static_cast<size_t>(t)].assign(kItems, nullptr);
      for (int i : order) {
        const auto k = static_cast<size_t>(i);
        name_results[static_cast<size_t>(t)][k] = StringPool::Intern(names[k].c_str());
        guid_results[static_cast<size_t>(t)][k] = GuidPool::Intern(&guids[k]);
      }
    });
  }
  for (auto& th : threads) th.join();

  for (size_t k = 0; k < kItems; ++k) {
    ASSERT_NE(name_results[0][k], nullptr);
    ASSERT_EQ(std::string(name_results[0][k]), names[k]);
    ASSERT_EQ(*guid_results[0][k], guids[k]);
    for (size_t t = 1; t < kThreads; ++t) {
      ASSERT_EQ(name_results[t][k], name_results[0][k]);
      ASSERT_EQ(guid_results[t][k], guid_results[0][k]);
    }
  }
  // One node per content: every chain lists each text once.
  for (uint32_t b = 0; b < StringPool::kBuckets; ++b) {
    const char* texts[512];
    const int n = StringPool::ChainForTesting(b, texts, 512);
    for (int i = 1; i < n; ++i) ASSERT_NE(std::string(texts[i - 1]), std::string(texts[i]));
  }
}

}  // namespace
