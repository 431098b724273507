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
  std::atomic<int> rounds{0};
  std::atomic<int> failures{0};
  std::vector<std::thread> others;
  for (int t = 0; t < 2; ++t) {
    others.emplace_back([&, t] {
      for (int i = 0; !stop.load(); ++i) {
        if (Resolve(foo_, kBar) != "ZELSysTSCreateIBarMtFoo") failures.fetch_add(1);
        const std::string name = "MtOther" + std::to_string(t) + "_" + std::to_string(i);
        if (Register(name.c_str(), ZELSysTSTypeImplementation, foo_) == nullptr)
          failures.fetch_add(1);
        rounds.fetch_add(1);
      }
    });
  }
  while (rounds.load() < 4) std::this_thread::yield();

  // Two resolutions of the loading interface at once, on two objects of one class.
  std::string second;
  std::thread racer([&] { second = Resolve(foo_, kInit); });
  EXPECT_EQ(Resolve(foo_, kInit), "ZELSysTSCreateIInitMtFoo");
  racer.join();
  stop.store(true);
  for (auto& thread : others) thread.join();

  EXPECT_EQ(second, "ZELSysTSCreateIInitMtFoo");
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(*Register("MtInitThread", ZELSysTSTypeBase)->GetClassId(), kClsidInitThread);
  EXPECT_EQ(*Register("MtFooExt", ZELSysTSTypeBase)->GetClassId(), kClsidFooExt);
}

}  // namespace
}  // namespace zelmeta
