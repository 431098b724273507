// The client kit: ZELSysTSPtr on a counting object; every kind of class in a real library, whose
// objects and ties all die by a case's end. Built twice: with KIT_THREADS, only the threads case.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <utility>

#include "KitTestInterfaces.h"
#include "TestSupport.h"

class IAlpha : public IUnknown {};
ZELSYSTS_DECLARE_INTERFACE(IAlpha, "{88BC63B6-FD25-4094-A4C5-20E6CD747537}");
class IBeta : public IUnknown {};
ZELSYSTS_DECLARE_INTERFACE(IBeta, "{34631391-FE17-4509-BD6B-730D1EF3F1AC}");

namespace {

using AlphaPtr = ZELSysTSPtr<IAlpha>;
using BetaPtr = ZELSysTSPtr<IBeta>;

// Objects and ties of the test library alive now; -1 before the system loads it.
int Live() {
  void* library = dlopen("libKitTestComponents.so", RTLD_NOW | RTLD_NOLOAD);
  void* live = library != nullptr ? dlsym(library, "kit_test_live") : nullptr;
  return live != nullptr ? static_cast<std::atomic<int>*>(live)->load() : -1;
}

class KitComponents : public ::testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(Live(), 0) << "objects or ties left alive"; }
  static uint32_t CountOf(IUnknown* p) { return p->AddRef(), p->Release(); }
  zeltest::ScopedEnv path_{"ZELDictionaryPath",
                           (zeltest::SourceDir() + "/tests/kit/dictionaries").c_str()};
};

#ifndef KIT_THREADS

// Offers IAlpha, and IBeta on another subobject when offers_beta. Starts with its creator's
// reference, is never deleted, and a Release too many wraps its count round.
struct Counting final : IAlpha, IBeta {
  HRESULT QueryInterface(const _GUID& iid, void** ppv) override {
    IUnknown* found = iid == ZELSysTSIIDOf<IAlpha>() ? static_cast<IAlpha*>(this) : nullptr;
    if (iid == ZELSysTSIIDOf<IBeta>() && offers_beta) found = static_cast<IBeta*>(this);
    return (*ppv = found) != nullptr ? (++count, S_OK) : E_NOINTERFACE;
  }
  uint32_t AddRef() override { return ++count; }
  uint32_t Release() override { return --count; }
  uint32_t count = 1;
  bool offers_beta = true;
};

TEST(KitPtr, EveryPathOwnsExactlyOneReferenceAndConversionIsAQuery) {
  Counting first, second;
  {
    AlphaPtr a = AlphaPtr::Attach(&first);  // takes over the creator's reference
    AlphaPtr b = a, c = std::move(b);
    EXPECT_TRUE(!b && first.count == 2u);  // NOLINT(bugprone-use-after-move)
    AlphaPtr d = AlphaPtr::Retain(&second);
    d = c;  // gives back second's reference
    EXPECT_TRUE(first.count == 3u && second.count == 1u);
    d = std::move(c);
    a.reset();
    EXPECT_TRUE(!a && first.count == 1u);  // d's
    a = AlphaPtr::Attach(d.Detach());
    // Receive gives back what it held, then owns what the callee wrote.
    EXPECT_EQ(second.QueryInterface(ZELSysTSIIDOf<IAlpha>(), a.Receive()), S_OK);
    EXPECT_TRUE(!d && first.count == 0u && second.count == 2u);
    BetaPtr beta = a;
    EXPECT_TRUE(beta.Get() == static_cast<IBeta*>(&second) && second.count == 3u);
    first.offers_beta = false;
    beta = AlphaPtr::Retain(&first);  // not offered: beta gives back its reference, holds none
    EXPECT_TRUE(!beta && first.count == 0u && second.count == 2u);
    EXPECT_DEATH(beta->AddRef(), "use of an empty interface pointer");
    EXPECT_FALSE(BetaPtr(AlphaPtr()) || BetaPtr::Query(nullptr));
  }
  EXPECT_EQ(second.count, 1u);  // the test's own
}

TEST_F(KitComponents, ObjectsByNameAndByClassIdAndTheirChainedAndTransientExtensions) {
  auto widget = ZELSysTSCreateObject<ZELSysTSBaseUnknown>("KitWidget");
  ZELSysTSPtr<IKitName> other = ZELSysTSCreateInstanceOf<IKitName>(CLSID_KitWidget);
  EXPECT_EQ(other->Name(), "KitWidget");
  EXPECT_EQ(CountOf(widget.Get()) + CountOf(other.Get()), 2u);  // each holds the only reference
  ZELSysTSPtr<IKitCounter> counter = widget;
  EXPECT_EQ(counter->Next(), 1);
  EXPECT_EQ(CountOf(widget.Get()), 2u);  // a reference on the extension is one on its object
  counter = widget;
  EXPECT_EQ(counter->Next(), 2);                          // the same instance, kept by the object
  EXPECT_EQ(ZELSysTSPtr<IKitCounter>(other)->Next(), 1);  // the other object's own
  ZELSysTSPtr<IKitTicket> one = widget, two = widget;
  EXPECT_TRUE(one->Next() + two->Next() == 2 && CountOf(widget.Get()) == 4u);  // two instances
  counter = nullptr;
  widget = nullptr;
  EXPECT_EQ(Live(), 6);  // the tickets hold the widget, which keeps its chained extension
  one = two = nullptr;
  EXPECT_EQ(Live(), 2);  // the other widget and its extension
}

TEST_F(KitComponents, TiesOnTheObjectAndOnATransientExtension) {
  auto widget = ZELSysTSCreateObject<ZELSysTSBaseUnknown>("KitWidget");
  ZELSysTSPtr<IKitLabel> label = widget;
  EXPECT_EQ(label->Name(), "KitWidget");
  EXPECT_EQ(label->AddRef(), 2u);  // the tie's count, which moves with the object's
  EXPECT_TRUE(CountOf(widget.Get()) == 3u && label->Release() == 1u);
  ZELSysTSPtr<IKitTicketLabel> ticketLabel = label;  // a tie's QueryInterface is its object's
  EXPECT_EQ(ticketLabel->Name(), "KitTransient");
  EXPECT_EQ(CountOf(widget.Get()), 4u);  // one for the tie, one that the extension gives back
  widget = nullptr;
  label = nullptr;
  EXPECT_EQ(Live(), 3);  // the last tie holds the object and its extension
  // An object created without the interface asked for is destroyed at once.
  HRESULT hr = S_OK;
  EXPECT_FALSE(ZELSysTSCreateObject<IKitProbe>("KitWidget") ||
               ZELSysTSCreateInstanceOf<IKitProbe>(CLSID_KitWidget, &hr));
  EXPECT_TRUE(hr == E_NOINTERFACE && Live() == 3);
}

#else

// 16 threads race the first load of the dictionary and of the library, then share one object
// through pointers, its chained extension, transient extensions and ties: counts stay exact.
TEST_F(KitComponents, ThreadsSharingAnObjectKeepExactCounts) {
  constexpr int kThreads = 16, kRounds = 100000;
  ZELSysTSPtr<ZELSysTSBaseUnknown> widget;
  std::once_flag made;
  std::atomic<int> failures{0};
  zeltest::RunTogether(kThreads, [&](int) {
    if (!ZELSysTSCreateObject<IKitName>("KitWidget")) ++failures;
    std::call_once(made, [&] { widget = ZELSysTSCreateObject<ZELSysTSBaseUnknown>("KitWidget"); });
    for (int i = 0; i < kRounds; ++i) {
      ZELSysTSPtr<IKitCounter> counter = widget;
      bool got = false;
      if (i % 3 == 0) got = ZELSysTSPtr<IKitTicket>(counter) != nullptr;
      if (i % 3 == 1) got = ZELSysTSPtr<IKitTicketLabel>(ZELSysTSPtr<IKitTicket>(counter)).Get();
      if (i % 3 == 2) got = ZELSysTSPtr<IKitLabel>(widget) != nullptr;
      if (!got || counter == nullptr) ++failures;
    }
  });
  EXPECT_EQ(failures.load(), 0);
  EXPECT_TRUE(CountOf(widget.Get()) == 1u && Live() == 2);  // the widget, its chained extension
  widget = nullptr;
}

#endif

}  // namespace
