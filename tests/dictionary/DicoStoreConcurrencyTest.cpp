// Inserts and finds from several threads at once: one record per pair whatever the
// interleaving, linked once in its chain, and creators read without the lock.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "dictionary/DicoStore.h"

namespace {

TEST(DicoStoreConcurrencyTest, ThreadsInsertingTheSamePairsShareOneRecordPerPair) {
  constexpr int kThreads = 4, kPairs = 300;
  static int creator;
  // Seven interfaces shared by all classes, so that threads meet in the same chains.
  auto cls = [](int i) { return "Class" + std::to_string(i); };
  auto itf = [](int i) { return "IItf" + std::to_string(i % 7); };
  auto clsid = [](int i) { return _GUID{uint32_t(i), 0x1234, 0x5678, {1, 2, 3, 4, 5, 6, 7, 8}}; };
  auto iid = [](int i) { return _GUID{0xABCD0000u + i % 7, 0, 0, {0xC0}}; };
  std::atomic<int> mismatches{0}, creatorsSeen{0};
  std::atomic<bool> go{false};

  zeltest::StderrCapture err;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      while (!go.load()) std::this_thread::yield();
      for (int k = 0; k < kPairs; ++k) {
        const int i = t % 2 == 0 ? k : kPairs - 1 - k;
        const _GUID id = clsid(i), itfId = iid(i);
        DicoEntry* byNames = DicoStore::InsertByNames(cls(i).c_str(), itf(i).c_str(), "libImpl",
                                                      nullptr, nullptr, nullptr, nullptr);
        DicoEntry* byGuids = DicoStore::InsertByGuids(&id, &itfId, &creator, byNames);
        if (byNames == nullptr || byGuids != byNames ||
            DicoStore::FindByNames(cls(i).c_str(), itf(i).c_str()) != byNames) {
          mismatches.fetch_add(1);
        }
        // Another thread's record, its creator read without the lock.
        const _GUID otherId = clsid((i + 150) % kPairs), otherItf = iid((i + 150) % kPairs);
        if (DicoEntry* other = DicoStore::FindByGuids(&otherId, &otherItf)) {
          if (other->Creator() == &creator) creatorsSeen.fetch_add(1);
        }
      }
    });
  }
  go.store(true);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ("", err.Take());
  EXPECT_EQ(0, mismatches.load());
  EXPECT_GT(creatorsSeen.load(), 0);

  for (int i = 0; i < kPairs; ++i) {
    DicoEntry* rec = DicoStore::FindByNames(cls(i).c_str(), itf(i).c_str());
    const _GUID id = clsid(i), itfId = iid(i);
    EXPECT_EQ(rec, DicoStore::FindByGuids(&id, &itfId)) << i;
    // Linked once in each table's chain.
    DicoEntry* chain[64];
    auto once = [&](int length) {
      return length <= 64 && std::count(chain, chain + length, rec) == 1;
    };
    EXPECT_TRUE(once(DicoStore::NameChainForTesting(
        DicoStore::NameBucket(cls(i).c_str(), itf(i).c_str()), chain, 64)))
        << i;
    EXPECT_TRUE(once(DicoStore::GuidChainForTesting(DicoStore::GuidBucket(&id, &itfId), chain, 64)))
        << i;
  }
}

}  // namespace
