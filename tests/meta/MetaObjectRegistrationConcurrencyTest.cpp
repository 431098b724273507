// Registration from many threads at once: one meta object per name, every generated identifier
// used exactly once, and extended classes added from several threads kept once each.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "ZELSysTSFindOrCreateMetaObject.h"
#include "dictionary/DicoStore.h"
#include "meta/ZELSysTSMetaClassExt.h"

namespace {

constexpr int kThreads = 8;
constexpr int kSharedNames = 50;
constexpr int kOwnNames = 50;

// Every thread registers the shared names, in an order of its own, and names that only it uses.
TEST(MetaObjectRegistrationConcurrency, OneMetaObjectPerNameAndConsecutiveIdentifiers) {
  std::vector<std::vector<ZELSysTSMetaClass*>> shared(
      kThreads, std::vector<ZELSysTSMetaClass*>(kSharedNames));
  std::vector<std::vector<ZELSysTSMetaClass*>> own(kThreads);
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      ready.fetch_add(1);
      while (ready.load() < kThreads) std::this_thread::yield();
      for (int i = 0; i < kSharedNames + kOwnNames; ++i) {
        if (i % 2 == 0 && i / 2 < kSharedNames) {
          const int n = (i / 2 + 7 * t) % kSharedNames;
          const std::string name = "Shared" + std::to_string(n);
          shared[t][n] = ZELSysTSFindOrCreateMetaObject(
              name.c_str(), static_cast<ZELSysTSTypeOfClass>(t % 6), nullptr, nullptr, nullptr);
        } else {
          const std::string name = "Own" + std::to_string(t) + "_" + std::to_string(i);
          own[t].push_back(ZELSysTSFindOrCreateMetaObject(name.c_str(), ZELSysTSTypeImplementation,
                                                          nullptr, nullptr, nullptr));
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();

  std::set<ZELSysTSMetaClass*> distinct;
  std::vector<uint32_t> ids;
  for (int n = 0; n < kSharedNames; ++n) {
    ZELSysTSMetaClass* meta = shared[0][n];
    ASSERT_NE(meta, nullptr);
    for (int t = 1; t < kThreads; ++t) EXPECT_EQ(shared[t][n], meta) << "name " << n;
    EXPECT_EQ(DicoStore::FindMetaObject(("Shared" + std::to_string(n)).c_str()), meta);
    distinct.insert(meta);
    ids.push_back(meta->GetClassId()->Data1);
  }
  for (int t = 0; t < kThreads; ++t) {
    for (ZELSysTSMetaClass* meta : own[t]) {
      ASSERT_NE(meta, nullptr);
      EXPECT_TRUE(distinct.insert(meta).second);
      ids.push_back(meta->GetClassId()->Data1);
    }
  }
  // One identifier per meta object built, none skipped, none given twice.
  std::sort(ids.begin(), ids.end());
  ASSERT_EQ(ids.size(), distinct.size());
  for (size_t i = 0; i < ids.size(); ++i) EXPECT_EQ(ids[i], i + 1);
}

TEST(MetaObjectRegistrationConcurrency, ExtendedClassesAddedFromManyThreads) {
  constexpr int kClasses = 10;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < kClasses; ++i) {
        const std::string extended = "Extended" + std::to_string((i + t) % kClasses);
        ZELSysTSFindOrCreateMetaObject("ConcurrentExt", ZELSysTSTypeTransientExtension, nullptr,
                                       nullptr, extended.c_str());
      }
    });
  }
  for (auto& thread : threads) thread.join();
  auto* ext = static_cast<ZELSysTSMetaClassBase*>(DicoStore::FindMetaObject("ConcurrentExt"))
                  ->GetExtensionMetaClass();
  ASSERT_NE(ext, nullptr);
  EXPECT_EQ(ext->ExtendedCountForTesting(), kClasses);
  EXPECT_EQ(ext->ExtendedCapacityForTesting(), 12);
  std::set<std::string> names;
  for (int i = 0; i < kClasses; ++i) names.insert(ext->ExtendedClassForTesting(i));
  EXPECT_EQ(names.size(), static_cast<size_t>(kClasses));
}

}  // namespace
