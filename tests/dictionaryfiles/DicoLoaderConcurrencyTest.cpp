// Loading raced from several threads: one walk, and every caller sees its whole result.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "ZELSysTSConvertStringToGUID.h"
#include "dictionary/ClsidTable.h"
#include "dictionary/DicoStore.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DicoLoader.h"

namespace {

std::string GuidText(int i) {
  char text[39];
  std::snprintf(text, sizeof text, "{%08X-0000-4000-8000-%012X}", static_cast<unsigned>(i),
                static_cast<unsigned>(i * 7));
  return text;
}

TEST(DicoLoaderConcurrency, RacingCallersShareOneWalk) {
  constexpr int kEntries = 3000;
  constexpr int kThreads = 8;
  zeltest::TempDir dir;
  std::string iids, clsids, dicts;
  for (int i = 0; i < kEntries; ++i) {
    const std::string n = std::to_string(i);
    iids += GuidText(i) + " IItf" + n + "\n";
    clsids += GuidText(i) + " Cls" + n + " libImpl" + std::to_string(i % 7) + "\n";
    dicts += "Cls" + n + " IItf" + n + " Impl\n";
  }
  dir.Write("a.iidts", iids);
  dir.Write("b.clsidts", clsids);
  dir.Write("c.dicts", dicts + "a broken line with ITFLEAF\n");  // unknown keyword

  zeltest::ScopedEnv path("ZELDictionaryPath", dir.path().c_str());
  zeltest::ScopedEnv noFallback("ZELDictionaryNoPathNoFallback", nullptr);
  zeltest::StderrCapture err;
  std::atomic<int> ready{0};
  std::atomic<int> failures{0};
  _GUID last{};
  ASSERT_EQ(0, ZELSysTSConvertStringToGUID(GuidText(kEntries - 1).c_str(), last));
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      ready.fetch_add(1);
      while (ready.load() < kThreads) std::this_thread::yield();
      DicoLoader::Load();
      // Without any lock: the whole walk must be visible once Load has returned.
      const char* name = IidTable::FindName(last);
      const ClsidEntry* cls = ClsidTable::Find(last);
      if (!DicoLoader::IsLoaded() || name == nullptr || std::string("IItf2999") != name ||
          cls == nullptr || std::string("libImpl3") != cls->library_name ||
          DicoStore::FindByNames("Cls2999", "IItf2999") == nullptr) {
        failures.fetch_add(1);
      }
    });
  }
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(0, failures.load());
  // The rejected last line is reported once: one walk.
  EXPECT_EQ("Problem reading dico : " + dir.path() + "/c.dicts line 3001\n", err.Take());
}

}  // namespace
