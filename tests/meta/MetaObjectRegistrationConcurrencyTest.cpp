// Registration from many threads at once: one meta object per name, every generated identifier
// used exactly once, and extended classes added from several threads kept once each.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "dictionary/DicoStore.h"
#include "meta/ZELSysTSMetaClassExt.h"

namespace {

ZELSysTSMetaClass* Reg(const std::string& name, int kind, ZELSysTSMetaClass* base = nullptr,
                       const char* extended = nullptr) {
  return ZELSysTSFindOrCreateMetaObject(name.c_str(), static_cast<ZELSysTSTypeOfClass>(kind),
                                        nullptr, base, extended);
}

// A base whose effective meta object takes a while to come: building a meta object on it widens
// the window between the lookup of a name and the recording of its new meta object, which
// registration must close with the dictionary lock.
class SlowBase : public ZELSysTSMetaClassBase {
 public:
  using ZELSysTSMetaClassBase::ZELSysTSMetaClassBase;
  ZELSysTSMetaClass* GetEffectiveMetaObject() override {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    return this;
  }
};

TEST(MetaObjectRegistrationConcurrency, OneMetaObjectPerNameAndEveryIdentifierOnce) {
  constexpr int kThreads = 8, kNames = 50, kExtended = 10;
  std::vector<std::vector<ZELSysTSMetaClass*>> shared(kThreads), own(kThreads);
  static SlowBase slow(&CLSID_ZELSysTSMetaClass, "Slow", nullptr);
  std::atomic<int> ready{0};
  zeltest::StderrCapture err;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      ready.fetch_add(1);
      while (ready.load() < kThreads) std::this_thread::yield();
      // All threads ask for the same shared name at about the same time, between names that
      // only one thread uses.
      for (int i = 0; i < kNames; ++i) {
        shared[t].push_back(Reg("Shared" + std::to_string(i), t % 6, &slow));
        own[t].push_back(Reg("Own" + std::to_string(t) + "_" + std::to_string(i), 1));
        Reg("SharedExt", 5, nullptr, ("Extended" + std::to_string((i + t) % kExtended)).c_str());
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(err.Take(), "");

  std::set<ZELSysTSMetaClass*> distinct;
  for (int t = 0; t < kThreads; ++t) {
    for (int i = 0; i < kNames; ++i) {
      const std::string name = "Shared" + std::to_string(i);
      EXPECT_EQ(shared[t][i], DicoStore::FindMetaObject(name.c_str())) << name;
    }
    for (ZELSysTSMetaClass* meta : own[t]) distinct.insert(meta);
    distinct.insert(shared[t].begin(), shared[t].end());
  }
  ZELSysTSMetaClass* ext = DicoStore::FindMetaObject("SharedExt");
  distinct.insert(ext);
  // One identifier per meta object built, none skipped, none given twice.
  ASSERT_EQ(distinct.count(nullptr), 0u);
  std::vector<uint32_t> ids;
  for (ZELSysTSMetaClass* meta : distinct) ids.push_back(meta->GetClassId()->Data1);
  std::sort(ids.begin(), ids.end());
  ASSERT_EQ(ids.size(), size_t{kNames + kThreads * kNames + 1});
  for (size_t i = 0; i < ids.size(); ++i) EXPECT_EQ(ids[i], i + 1);

  auto* list = static_cast<ZELSysTSMetaClassBase*>(ext)->GetExtensionMetaClass();
  ASSERT_EQ(list->ExtendedCountForTesting(), kExtended);
  EXPECT_EQ(list->ExtendedCapacityForTesting(), 12);
  std::set<std::string> names;
  for (int i = 0; i < kExtended; ++i) names.insert(list->ExtendedClassForTesting(i));
  EXPECT_EQ(names.size(), size_t{kExtended});
}

}  // namespace
