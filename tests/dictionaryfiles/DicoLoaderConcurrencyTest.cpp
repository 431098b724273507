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
