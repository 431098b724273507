// A library whose initialisation registers classes, from the loading thread and from a thread
// of its own, is loaded by a resolution while other threads query and register: the load must
// not run under any lock that registration or the other queries need.
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "MetaIntegrationSupport.h"

namespace zelmeta {
namespace {

TEST_F(MetaResolution, LibraryLoadedByAResolutionRegistersWhileOthersQuery) {
  std::atomic<bool> stop{false};
  std::atomic<int> failures{0};
  std::atomic<int> rounds{0};
  std::vector<std::thread> others;
  for (int t = 0; t < 2; ++t) {
    others.emplace_back([&, t] {
      for (int i = 0; !stop.load(); ++i) {
        if (QueryOnNewObject(foo_, kIidBar) != S_OK) failures.fetch_add(1);
        const std::string name = "MtOther" + std::to_string(t) + "_" + std::to_string(i);
        if (ZELSysTSFindOrCreateMetaObject(name.c_str(), ZELSysTSTypeImplementation, nullptr, foo_,
                                           nullptr) == nullptr) {
          failures.fetch_add(1);
        }
        rounds.fetch_add(1);
      }
    });
  }
  while (rounds.load() < 4) std::this_thread::yield();

  // Two resolutions of the loading interface at once, on two objects of one class.
  std::atomic<int> loaded{0};
  std::thread second([&] { loaded.fetch_add(QueryOnNewObject(foo_, kIidInit) == S_OK); });
  loaded.fetch_add(QueryOnNewObject(foo_, kIidInit) == S_OK);
  second.join();
  stop.store(true);
  for (auto& thread : others) thread.join();

  EXPECT_EQ(loaded.load(), 2);
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(ZelMetaProbeNoted(), 1) << "the library's own thread could not register in time";
  EXPECT_EQ(*Register("MtInitThread", ZELSysTSTypeBase)->GetClassId(), kClsidInitThread);
  ZELSysTSMetaClass* own = Register("MtInitOwn", ZELSysTSTypeBase);
  EXPECT_EQ(Register("MtInitOwn", ZELSysTSTypeImplementation), own);
  EXPECT_EQ(QueryOnNewObject(foo_, kIidInit), S_OK);
  EXPECT_EQ(LastCreator(), "ZELSysTSCreateIInitMtFoo");
}

}  // namespace
}  // namespace zelmeta
