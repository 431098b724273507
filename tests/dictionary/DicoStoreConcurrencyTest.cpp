// Inserts and finds from several threads at once: one record per pair whatever the
// interleaving, creators read without the lock, and registration under the recursive
// dictionary lock.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "core/ScopedLock.h"
#include "dictionary/DicoStore.h"

namespace {

constexpr int kThreads = 4;
constexpr int kPairs = 300;

int g_creator;

struct Pair {
  std::string cls;
  std::string itf;
  _GUID clsid;
  _GUID iid;
};

std::vector<Pair> MakePairs() {
  std::vector<Pair> pairs(kPairs);
  for (int i = 0; i < kPairs; ++i) {
    pairs[i].cls = "Class" + std::to_string(i);
    pairs[i].itf = "IItf" + std::to_string(i % 7);
    pairs[i].clsid = {static_cast<uint32_t>(i), 0x1234, 0x5678, {1, 2, 3, 4, 5, 6, 7, 8}};
    pairs[i].iid = {0xABCD0000u + static_cast<uint32_t>(i % 7), 0, 0, {0xC0}};
  }
  return pairs;
}

void RunTogether(const std::function<void(int)>& body) {
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      while (!go.load()) std::this_thread::yield();
      body(t);
    });
  }
  go.store(true);
  for (std::thread& thread : threads) thread.join();
}

TEST(DicoStoreConcurrencyTest, ThreadsInsertingTheSamePairsShareOneRecordPerPair) {
  const std::vector<Pair> pairs = MakePairs();
  std::vector<std::vector<DicoEntry*>> byNames(kThreads, std::vector<DicoEntry*>(kPairs));
  std::vector<std::vector<DicoEntry*>> byGuids(kThreads, std::vector<DicoEntry*>(kPairs));
  std::atomic<int> creatorsSeen{0};

  zeltest::StderrCapture err;
  RunTogether([&](int t) {
    for (int k = 0; k < kPairs; ++k) {
      const int i = t % 2 == 0 ? k : kPairs - 1 - k;
      const Pair& p = pairs[i];
      byNames[t][i] = DicoStore::InsertByNames(p.cls.c_str(), p.itf.c_str(), "libImpl", nullptr,
                                               nullptr, nullptr, nullptr);
      byGuids[t][i] = DicoStore::InsertByGuids(&p.clsid, &p.iid, &g_creator, byNames[t][i]);
      // Another thread's record, its creator read without the lock.
      const Pair& q = pairs[(i + 150) % kPairs];
      if (DicoEntry* other = DicoStore::FindByGuids(&q.clsid, &q.iid)) {
        if (other->Creator() == &g_creator) creatorsSeen.fetch_add(1);
      }
    }
  });
  EXPECT_EQ("", err.Take());

  for (int i = 0; i < kPairs; ++i) {
    DicoEntry* rec = byNames[0][i];
    ASSERT_NE(nullptr, rec) << i;
    for (int t = 0; t < kThreads; ++t) {
      EXPECT_EQ(rec, byNames[t][i]) << i;
      EXPECT_EQ(rec, byGuids[t][i]) << i;
    }
    EXPECT_EQ(rec, DicoStore::FindByNames(pairs[i].cls.c_str(), pairs[i].itf.c_str()));
    EXPECT_EQ(rec, DicoStore::FindByGuids(&pairs[i].clsid, &pairs[i].iid));
    EXPECT_STREQ("Impl", rec->library_name);

    DicoEntry* chain[64];
    const int length = DicoStore::NameChainForTesting(
        DicoStore::NameBucket(pairs[i].cls.c_str(), pairs[i].itf.c_str()), chain, 64);
    ASSERT_LE(length, 64);
    int linked = 0;
    for (int n = 0; n < length; ++n) linked += chain[n] == rec ? 1 : 0;
    EXPECT_EQ(1, linked) << i;
  }
  EXPECT_GT(creatorsSeen.load(), 0);
}

TEST(DicoStoreConcurrencyTest, FindOrRegisterUnderTheDictionaryLockRegistersOnce) {
  const _GUID clsid = {0x600DF00D, 1, 2, {3}};
  const _GUID metaId = {0xdc9a2804, 0x3801, 0x43de, {0xad, 0x64, 0x97, 0x1f, 0xae, 0x3c}};
  int candidates[kThreads];
  std::atomic<int> registered{0};
  void* seen[kThreads] = {};

  RunTogether([&](int t) {
    ScopedLock lock(DicoStore::DictionaryLock());
    DicoEntry* rec = DicoStore::FindByNames("Shared", "MetaObject");
    if (rec == nullptr) {
      rec = DicoStore::Register(&clsid, &metaId, "Shared", "MetaObject", nullptr, &candidates[t]);
      if (rec != nullptr) registered.fetch_add(1);
    }
    seen[t] = rec != nullptr ? rec->Creator() : nullptr;
  });

  EXPECT_EQ(1, registered.load());
  ASSERT_NE(nullptr, seen[0]);
  for (int t = 1; t < kThreads; ++t) EXPECT_EQ(seen[0], seen[t]);
  EXPECT_EQ(DicoStore::FindByNames("Shared", "MetaObject"),
            DicoStore::FindByGuids(&clsid, &metaId));
}

}  // namespace
