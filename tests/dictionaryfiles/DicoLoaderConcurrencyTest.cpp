// Loading raced from several threads: one walk, and every caller sees its whole result.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "ZELSysTSConvertStringToGUID.h"
#include "core/ScopedLock.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/ClsidTable.h"
#include "dictionaryfiles/DicoLoader.h"
#include "dictionaryfiles/IidTable.h"

namespace {

using zeltest::ScopedEnv;
using zeltest::StderrCapture;
using zeltest::TempDir;

std::string GuidText(int i) {
  char text[39];
  std::snprintf(text, sizeof text, "{%08X-0000-4000-8000-%012X}", static_cast<unsigned>(i),
                static_cast<unsigned>(i * 7));
  return text;
}

TEST(DicoLoaderConcurrency, RacingCallersShareOneWalk) {
  constexpr int kEntries = 3000;
  constexpr int kThreads = 8;
  TempDir dir;
  std::string iids, clsids, dicts;
  for (int i = 0; i < kEntries; ++i) {
    iids += GuidText(i) + " IItf" + std::to_string(i) + "\n";
    clsids += GuidText(i) + " Cls" + std::to_string(i) + " libImpl" + std::to_string(i % 7) + "\n";
    dicts += "Cls" + std::to_string(i) + " IItf" + std::to_string(i) + " Impl\n";
  }
  dir.Write("a.iidts", iids);
  dir.Write("b.clsidts", clsids);
  dir.Write("c.dicts", dicts + "a broken line with ITFLEAF\n");  // 5 fields, unknown keyword

  ScopedEnv path("ZELDictionaryPath", dir.path().c_str());
  ScopedEnv noFallback("ZELDictionaryNoPathNoFallback", nullptr);
  StderrCapture err;

  std::atomic<int> ready{0};
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  const std::string last = GuidText(kEntries - 1);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      ready.fetch_add(1);
      while (ready.load() < kThreads) std::this_thread::yield();
      DicoLoader::Load();
      // Without any lock: the whole walk must be visible once Load has returned.
      _GUID g{};
      ZELSysTSConvertStringToGUID(last.c_str(), g);
      const char* name = IidTable::FindName(g);
      const ClsidEntry* cls = ClsidTable::Find(g);
      const std::string expectedName = "IItf" + std::to_string(kEntries - 1);
      if (!DicoLoader::IsLoaded() || name == nullptr || expectedName != name || cls == nullptr ||
          DicoStore::FindByNames("Cls2999", "IItf2999") == nullptr) {
        failures.fetch_add(1);
      }
    });
  }
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(0, failures.load());
  // The rejected last line is reported once: one walk.
  EXPECT_EQ("Problem reading dico : " + dir.path() + "/c.dicts line " +
                std::to_string(kEntries + 1) + "\n",
            err.Take());
}

// Runs body while another thread holds both identifier tables' locks. A body that took either
// lock would wait for ever (and the test would time out).
template <typename Body>
void WhileTableLocksAreHeld(Body body) {
  std::mutex m;
  std::condition_variable cv;
  bool held = false;
  bool release = false;
  std::thread holder([&] {
    ScopedLock iidLock(IidTable::TableLock());
    ScopedLock clsidLock(ClsidTable::TableLock());
    std::unique_lock<std::mutex> lock(m);
    held = true;
    cv.notify_all();
    cv.wait(lock, [&] { return release; });
  });
  {
    std::unique_lock<std::mutex> lock(m);
    cv.wait(lock, [&] { return held; });
  }
  body();
  {
    std::lock_guard<std::mutex> lock(m);
    release = true;
  }
  cv.notify_all();
  holder.join();
}

TEST(DicoLoaderConcurrency, OnlyTheFirstInsertTakesTheTableLocks) {
  const _GUID g{1, 2, 3, {4}};
  const _GUID h{5, 6, 7, {8}};
  // Lookups on the empty tables neither initialise them nor wait for their locks.
  WhileTableLocksAreHeld([&] {
    EXPECT_EQ(nullptr, IidTable::FindName(g));
    EXPECT_EQ(nullptr, IidTable::FindIid("IVehicle"));
    EXPECT_EQ(nullptr, ClsidTable::Find(g));
  });
  // The first inserts initialise the tables under their locks.
  EXPECT_EQ(1, IidTable::Insert(g, "IVehicle"));
  EXPECT_NE(nullptr, ClsidTable::Insert(g, "Vehicle", nullptr));
  // Later inserts and lookups take no lock.
  WhileTableLocksAreHeld([&] {
    EXPECT_EQ(1, IidTable::Insert(h, "ITruck"));
    EXPECT_NE(nullptr, ClsidTable::Insert(h, "Truck", "TruckImpl"));
    EXPECT_STREQ("IVehicle", IidTable::FindName(g));
    EXPECT_EQ(h, *IidTable::FindIid("ITruck"));
    EXPECT_STREQ("TruckImpl", ClsidTable::Find(h)->library_name);
  });
}

}  // namespace
