// The owning interface pointer: every path adds and gives back exactly the references it should.
#include <gtest/gtest.h>

#include <utility>

#include "CountingObject.h"

namespace {

TEST(KitPtr, AttachTakesOverRetainAddsAndDestructionGivesBack) {
  CountingObject object;  // count 1: the creator's reference
  {
    ZELSysTSPtr<IAlpha> owner = ZELSysTSPtr<IAlpha>::Attach(&object);
    EXPECT_EQ(object.count, 1);
    {
      ZELSysTSPtr<IAlpha> shared = ZELSysTSPtr<IAlpha>::Retain(&object);
      EXPECT_EQ(object.count, 2);
      EXPECT_EQ(shared.Get(), owner.Get());
    }
    EXPECT_EQ(object.count, 1);
  }
  EXPECT_EQ(object.count, 0);
  EXPECT_EQ(object.underflows, 0);
  EXPECT_EQ(object.queries, 0);

  EXPECT_FALSE(ZELSysTSPtr<IAlpha>::Attach(nullptr));
  EXPECT_FALSE(ZELSysTSPtr<IAlpha>::Retain(nullptr));
}

TEST(KitPtr, CopyAddsMoveTransfers) {
  CountingObject object;
  ZELSysTSPtr<IAlpha> a = ZELSysTSPtr<IAlpha>::Attach(&object);
  ZELSysTSPtr<IAlpha> b = a;
  EXPECT_EQ(object.count, 2);
  ZELSysTSPtr<IAlpha> c = std::move(b);
  EXPECT_EQ(object.count, 2);
  EXPECT_FALSE(b);  // NOLINT(bugprone-use-after-move): a moved-from pointer is empty
  EXPECT_EQ(c.Get(), &object);

  ZELSysTSPtr<IAlpha> d;
  d = c;
  EXPECT_EQ(object.count, 3);
  d = std::move(c);  // d's old reference is given back, c's moves in
  EXPECT_EQ(object.count, 2);
  EXPECT_FALSE(c);  // NOLINT(bugprone-use-after-move)
  a.Release();
  d.Release();
  EXPECT_EQ(object.count, 0);
  EXPECT_EQ(object.underflows, 0);
}

TEST(KitPtr, AssignmentGivesBackTheOldReferenceAndSurvivesSelfAssignment) {
  CountingObject first;
  CountingObject second;
  ZELSysTSPtr<IAlpha> p = ZELSysTSPtr<IAlpha>::Attach(&first);
  ZELSysTSPtr<IAlpha> q = ZELSysTSPtr<IAlpha>::Attach(&second);
  p = q;
  EXPECT_EQ(first.count, 0);
  EXPECT_EQ(second.count, 2);

  ZELSysTSPtr<IAlpha>& alias = p;
  p = alias;
  EXPECT_EQ(second.count, 2);
  EXPECT_EQ(p.Get(), &second);
  p = std::move(alias);
  EXPECT_EQ(second.count, 2);
  EXPECT_EQ(p.Get(), &second);

  p = nullptr;
  EXPECT_EQ(second.count, 1);
  q.reset();
  EXPECT_EQ(second.count, 0);
  EXPECT_EQ(first.underflows + second.underflows, 0);
}

TEST(KitPtr, ConversionToAnotherInterfaceQueriesTheObject) {
  CountingObject object;
  ZELSysTSPtr<IAlpha> alpha = ZELSysTSPtr<IAlpha>::Attach(&object);
  ZELSysTSPtr<IBeta> beta = alpha;
  EXPECT_EQ(object.queries, 1);
  EXPECT_EQ(object.count, 2);
  ASSERT_TRUE(beta);
  EXPECT_EQ(beta.Get(), static_cast<IBeta*>(&object));  // the subobject QueryInterface gave
  EXPECT_EQ(beta->Beta(), 2);
  EXPECT_TRUE(alpha);  // the source keeps its reference

  // Assigning from another interface gives back what the target held.
  ZELSysTSPtr<IAlpha> again;
  again = beta;
  EXPECT_EQ(object.queries, 2);
  EXPECT_EQ(object.count, 3);
  again = beta;
  EXPECT_EQ(object.count, 3);

  // Query from any IUnknown*.
  ZELSysTSPtr<IBeta> viaRaw = ZELSysTSPtr<IBeta>::Query(alpha.Get());
  EXPECT_EQ(viaRaw.Get(), static_cast<IBeta*>(&object));
  EXPECT_EQ(object.count, 4);
  EXPECT_FALSE(ZELSysTSPtr<IBeta>::Query(nullptr));

  alpha.Release();
  beta.Release();
  again.Release();
  viaRaw.Release();
  EXPECT_EQ(object.count, 0);
  EXPECT_EQ(object.underflows, 0);
}

TEST(KitPtr, FailedConversionIsEmptyAndTakesNoReference) {
  CountingObject object;
  ZELSysTSPtr<IAlpha> alpha = ZELSysTSPtr<IAlpha>::Attach(&object);
  ZELSysTSPtr<IGamma> gamma = alpha;
  EXPECT_FALSE(gamma);
  EXPECT_EQ(gamma.Get(), nullptr);
  EXPECT_EQ(object.queries, 1);
  EXPECT_EQ(object.count, 1);

  // A failed assignment still gives back what the target held.
  CountingObject other;
  ZELSysTSPtr<IBeta> beta = ZELSysTSPtr<IBeta>::Query(static_cast<IAlpha*>(&other));
  EXPECT_EQ(other.count, 2);
  ZELSysTSPtr<IGamma> g2;
  g2 = beta;
  EXPECT_FALSE(g2);
  EXPECT_EQ(other.count, 2);

  // From an empty pointer nothing is asked.
  ZELSysTSPtr<IAlpha> empty;
  ZELSysTSPtr<IBeta> fromEmpty = empty;
  EXPECT_FALSE(fromEmpty);
  EXPECT_EQ(object.queries, 1);
  EXPECT_EQ(object.underflows + other.underflows, 0);
}

TEST(KitPtr, ReleaseEmptiesThePointerBeforeTheObjectRunsItsRelease) {
  CountingObject object;
  ZELSysTSPtr<IAlpha> holder = ZELSysTSPtr<IAlpha>::Attach(&object);
  IAlpha* seen = &object;
  object.on_release = [&] { seen = holder.Get(); };
  holder.Release();
  EXPECT_EQ(seen, nullptr);
  EXPECT_EQ(object.count, 0);
  holder.Release();  // nothing left to give back
  EXPECT_EQ(object.underflows, 0);
}

TEST(KitPtr, DetachAndReceiveHandReferencesAcrossRawInterfaces) {
  CountingObject object;
  ZELSysTSPtr<IAlpha> alpha = ZELSysTSPtr<IAlpha>::Attach(&object);
  IAlpha* raw = alpha.Detach();
  EXPECT_FALSE(alpha);
  EXPECT_EQ(object.count, 1);

  // Receive: an out-parameter that receives a reference; the old one is given back first.
  ZELSysTSPtr<IBeta> beta = ZELSysTSPtr<IBeta>::Query(raw);
  EXPECT_EQ(object.count, 2);
  HRESULT hr = raw->QueryInterface(ZELSysTSIIDOf<IBeta>(), beta.Receive());
  EXPECT_EQ(hr, S_OK);
  EXPECT_EQ(object.count, 2);
  EXPECT_EQ(beta.Get(), static_cast<IBeta*>(&object));
  hr = raw->QueryInterface(ZELSysTSIIDOf<IGamma>(), beta.Receive());
  EXPECT_EQ(hr, E_NOINTERFACE);
  EXPECT_FALSE(beta);
  EXPECT_EQ(object.count, 1);
  raw->Release();
  EXPECT_EQ(object.count, 0);
  EXPECT_EQ(object.underflows, 0);
}

// A kit class on the real base object: asking for the base class's identifier reaches the
// object behind any of its interfaces.
class KitPlainCounted final : public ZELSysTSPlainClass<KitPlainCounted, ZELSysTSBaseUnknown> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"KitPlainCounted"};
};

TEST(KitPtr, TheBaseObjectIsReachableFromIUnknown) {
  ZELSysTSPtr<IUnknown> unknown =
      ZELSysTSPtr<IUnknown>::Attach(static_cast<ZELSysTSBaseUnknown*>(new KitPlainCounted));
  ZELSysTSPtr<ZELSysTSBaseUnknown> object = unknown;
  ASSERT_TRUE(object);
  EXPECT_STREQ(object->IsA(), "KitPlainCounted");
  EXPECT_EQ(object->AddRef(), 3u);  // unknown, object, and this one
  EXPECT_EQ(object->Release(), 2u);
  ZELSysTSPtr<IAlpha> none = unknown;  // a plain class offers nothing else
  EXPECT_FALSE(none);
  unknown.Release();
  EXPECT_EQ(object->AddRef(), 2u);
  EXPECT_EQ(object->Release(), 1u);
}

}  // namespace
