// Inserts and finds from several threads at once: one record per pair whatever the
// interleaving, linked once in each chain, and creators read without the lock.
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
  std::vector<std::string> classes(kPairs);
  std::vector<_GUID> clsids(kPairs);
  for (int i = 0; i < kPairs; ++i) {
    classes[i] = "Class" + std::to_string(i);
    clsids[i] = {static_cast<uint32_t>(i), 0x1234, 0x5678, {1, 2, 3, 4, 5, 6, 7, 8}};
  }
  // Seven interfaces shared by all classes, so that threads meet in the same chains.
  auto itf = [](int i) { return "IItf" + std::to_string(i % 7); };
  auto iid = [](int i) { return _GUID{0xABCD0000u + i % 7, 0, 0, {0xC0}}; };
  std::vector<std::vector<DicoEntry*>> byNames(kThreads, std::vector<DicoEntry*>(kPairs));
  std::vector<std::vector<DicoEntry*>> byGuids = byNames;
  std::atomic<int> creatorsSeen{0};
  std::atomic<bool> go{false};

  zeltest::StderrCapture err;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      while (!go.load()) std::this_thread::yield();
      for (int k = 0; k < kPairs; ++k) {
        const int i = t % 2 == 0 ? k : kPairs - 1 - k;
        byNames[t][i] = DicoStore::InsertByNames(classes[i].c_str(), itf(i).c_str(), "libImpl",
                                                 nullptr, nullptr, nullptr, nullptr);
        const _GUID id = iid(i);
        byGuids[t][i] = DicoStore::InsertByGuids(&clsids[i], &id, &creator, byNames[t][i]);
        // Another thread's record, its creator read without the lock.
        const int j = (i + 150) % kPairs;
        const _GUID otherId = iid(j);
        if (DicoEntry* other = DicoStore::FindByGuids(&clsids[j], &otherId)) {
          if (other->Creator() == &creator) creatorsSeen.fetch_add(1);
        }
      }
    });
  }
  go.store(true);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ("", err.Take());

  for (int i = 0; i < kPairs; ++i) {
    DicoEntry* rec = byNames[0][i];
    ASSERT_NE(nullptr, rec) << i;
    for (int t = 0; t < kThreads; ++t) {
      EXPECT_EQ(rec, byNames[t][i]) << i;
      EXPECT_EQ(rec, byGuids[t][i]) << i;
    }
    const _GUID id = iid(i);
    EXPECT_EQ(rec, DicoStore::FindByGuids(&clsids[i], &id));
    EXPECT_STREQ("Impl", rec->library_name);
    DicoEntry* chain[64];
    const int length = DicoStore::NameChainForTesting(
        DicoStore::NameBucket(classes[i].c_str(), itf(i).c_str()), chain, 64);
    ASSERT_LE(length, 64);
    EXPECT_EQ(1, std::count(chain, chain + length, rec)) << i;
  }
  EXPECT_GT(creatorsSeen.load(), 0);
}

}  // namespace
