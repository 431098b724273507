// The first load raced from several threads: one walk, and every caller sees all of it.
#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "TestSupport.h"
#include "dictionary/DicoStore.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DicoLoader.h"

TEST(DicoLoaderConcurrency, RacingCallersShareOneCompleteWalk) {
  zeltest::DictionaryPath dir;
  std::string iids, dicts;
  for (int i = 1000; i < 4000; ++i) {  // decimal digits, read as hexadecimal ones
    const std::string n = std::to_string(i);
    iids += "{0000" + n + "-0000-0000-0000-000000000000} IItf" + n + "\n";
    dicts += "Cls" + n + " IItf Impl\n";
  }
  dir.Write("a.iidts", iids);
  dir.Write("b.dicts", dicts + "a broken line with ITFLEAF\n");  // an unknown keyword
  const _GUID last = {0x3999, 0, 0, {}};
  std::atomic<int> incomplete{0};
  const std::string err = zeltest::StderrOf([&] {
    zeltest::RunTogether(8, [&](int) {
      DicoLoader::Load();
      // The identifier table is read without a lock: all of the walk is visible after Load.
      const char* name = IidTable::FindName(last);
      if (!DicoLoader::IsLoaded() || name == nullptr || std::string("IItf3999") != name ||
          DicoStore::FindByNames("Cls3999", "IItf") == nullptr) {
        incomplete.fetch_add(1);
      }
    });
  });
  EXPECT_EQ(0, incomplete.load());
  EXPECT_EQ("Problem reading dico : " + dir.path() + "/b.dicts line 3001\n", err);  // one walk
}

// The identifier table is read without a lock, also while a load fills it (a load can come late,
// once the path is given): a reader gets null or the right name, and never reads freed memory.
TEST(DicoLoaderConcurrency, IdentifierTableReadWhileALateLoadFillsIt) {
  zeltest::DictionaryPath dir;
  std::string iids;
  for (int i = 1000; i < 9000; ++i) {
    iids += "{0000" + std::to_string(i) + "-0000-0000-0000-000000000000} IItf" + std::to_string(i) +
            "\n";
  }
  dir.Write("a.iidts", iids);
  std::atomic<bool> loaded{false};
  std::atomic<int> wrong{0};
  zeltest::RunTogether(5, [&](int thread) {
    if (thread == 0) {
      DicoLoader::Load();
      loaded = true;
    }
    for (int i = 1000; !loaded; i = i < 8999 ? i + 1 : 1000) {
      const _GUID iid = {
          static_cast<uint32_t>(std::stoul(std::to_string(i), nullptr, 16)), 0, 0, {}};
      const char* name = IidTable::FindName(iid);
      if (name != nullptr && "IItf" + std::to_string(i) != name) wrong.fetch_add(1);
    }
  });
  EXPECT_EQ(0, wrong.load());
  EXPECT_STREQ("IItf8999", IidTable::FindName({0x8999, 0, 0, {}}));
}
