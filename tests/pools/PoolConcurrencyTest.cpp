// Many threads interning the same texts and GUIDs at once get one pointer for each content.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "pools/GuidPool.h"
#include "pools/StringPool.h"

namespace {

TEST(PoolConcurrencyTest, ThreadsInterningTheSameContentGetOnePointerForIt) {
  constexpr int kThreads = 8, kValues = 2000;
  std::vector<std::string> texts;
  std::vector<_GUID> guids;
  for (uint32_t i = 0; i < kValues; ++i) {
    texts.push_back("Class" + std::to_string(i));
    guids.push_back({i * 2654435761u, static_cast<uint16_t>(i), 7, {1, 2, 3}});
  }
  std::vector<std::pair<const char*, const _GUID*>> pooled(kThreads *
                                                           kValues);  // [t * kValues + i]
  zeltest::RunTogether(kThreads, [&](int t) {
    for (int i = 0; i < kValues; ++i) {
      pooled[t * kValues + i] = {StringPool::Intern(texts[i].c_str()), GuidPool::Intern(&guids[i])};
    }
  });
  for (int k = 0; k < kThreads * kValues; ++k) {
    const int i = k % kValues;  // thread 0 got the same value at i
    ASSERT_STREQ(pooled[k].first, texts[i].c_str());
    ASSERT_TRUE(pooled[k].second != nullptr && *pooled[k].second == guids[i]) << i;
    ASSERT_EQ(pooled[k], pooled[i]) << "two copies of value " << i;
  }
}

}  // namespace
