// The owning interface pointer on an object that counts its references, with no library behind
// it: every path adds and gives back exactly the references it should. And GUID literals, which
// agree with the dictionary's conversion and throw on a malformation when evaluated at run time
// (in a constant expression that is a compile error: see the KitCompileErrors test). Built with
// assertions whatever the build type, so that the empty-pointer check is seen.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <utility>

#include "ZELSysTSObjectModeler.h"

class IAlpha : public IUnknown {};
ZELSYSTS_DECLARE_INTERFACE(IAlpha, "{88BC63B6-FD25-4094-A4C5-20E6CD747537}");
class IBeta : public IUnknown {};
ZELSYSTS_DECLARE_INTERFACE(IBeta, "{34631391-FE17-4509-BD6B-730D1EF3F1AC}");

namespace {

using AlphaPtr = ZELSysTSPtr<IAlpha>;
using BetaPtr = ZELSysTSPtr<IBeta>;

// Offers IUnknown and IAlpha on one subobject and, when offers_beta, IBeta on another; never the
// base object's identifier. Starts with the creator's reference and is never deleted, so counts
// are read after the last Release. A Release made while `watched` is set records what that
// pointer holds at that moment.
class Counting final : public IAlpha, public IBeta {
 public:
  HRESULT QueryInterface(const _GUID& iid, void** ppv) override {
    *ppv = nullptr;
    if (iid == ZELSysTSIIDOf<IUnknown>() || iid == ZELSysTSIIDOf<IAlpha>()) {
      *ppv = static_cast<IAlpha*>(this);
    } else if (iid == ZELSysTSIIDOf<IBeta>() && offers_beta) {
      *ppv = static_cast<IBeta*>(this);
    }
    if (*ppv == nullptr) return E_NOINTERFACE;
    ++count;
    return S_OK;
  }
  uint32_t AddRef() override { return ++count; }
  uint32_t Release() override {
    EXPECT_GT(count, 0u) << "one Release too many";
    if (watched != nullptr) seen = watched->Get();
    return count == 0 ? 0 : --count;
  }

  uint32_t count = 1;
  bool offers_beta = true;
  const AlphaPtr* watched = nullptr;
  IAlpha* seen = this;
};

TEST(KitPtr, CopyAddsMoveTransfersAssignmentGivesBackAndDestructionReleases) {
  Counting first, second;
  {
    AlphaPtr a = AlphaPtr::Attach(&first);  // takes over the creator's reference
    AlphaPtr b = a;
    EXPECT_EQ(first.count, 2u);
    AlphaPtr c = std::move(b);
    EXPECT_EQ(first.count, 2u);
    EXPECT_FALSE(b);  // NOLINT(bugprone-use-after-move): a moved-from pointer is empty
    AlphaPtr d = AlphaPtr::Retain(&second);
    d = c;  // second's reference goes back, first gets one more
    EXPECT_EQ(first.count, 3u);
    EXPECT_EQ(second.count, 1u);
    d = std::move(c);
    EXPECT_EQ(first.count, 2u);
    EXPECT_FALSE(c);  // NOLINT(bugprone-use-after-move)
    AlphaPtr& alias = d;
    d = alias;
    d = std::move(alias);
    EXPECT_EQ(first.count, 2u);
    EXPECT_EQ(d.Get(), &first);
  }
  EXPECT_EQ(first.count, 0u);
  EXPECT_EQ(second.count, 1u);  // the test's own
  EXPECT_FALSE(AlphaPtr::Attach(nullptr) || AlphaPtr::Retain(nullptr));
}

TEST(KitPtr, ConversionQueriesAndAFailedOneHoldsNothing) {
  Counting object, plain;
  plain.offers_beta = false;
  AlphaPtr alpha = AlphaPtr::Attach(&object);
  BetaPtr beta = alpha;
  EXPECT_EQ(beta.Get(), static_cast<IBeta*>(&object));  // the subobject QueryInterface gave
  AlphaPtr again = AlphaPtr::Retain(&object);
  again = beta;  // queries, and gives back what it held
  EXPECT_EQ(again.Get(), &object);
  EXPECT_EQ(object.count, 3u);
  EXPECT_EQ(BetaPtr::Query(again.Get()).Get(), beta.Get());
  EXPECT_FALSE(ZELSysTSPtr<ZELSysTSBaseUnknown>(alpha));  // not offered
  EXPECT_EQ(object.count, 3u);
  beta = AlphaPtr::Attach(&plain);  // fails, yet the old reference still goes back
  EXPECT_FALSE(beta);
  EXPECT_EQ(object.count, 2u);
  EXPECT_EQ(plain.count, 0u);
  EXPECT_FALSE(BetaPtr(AlphaPtr()) || BetaPtr::Query(nullptr));

  object.watched = &again;
  again = nullptr;
  EXPECT_EQ(object.seen, nullptr);  // emptied before the object's Release ran
  object.watched = nullptr;
  // Detach hands the reference over; Receive gives back the old one, then owns what is written.
  IAlpha* raw = alpha.Detach();
  EXPECT_FALSE(alpha);
  beta = BetaPtr::Retain(&object);
  EXPECT_EQ(raw->QueryInterface(ZELSysTSIIDOf<IBeta>(), beta.Receive()), S_OK);
  EXPECT_EQ(object.count, 2u);
  EXPECT_EQ(raw->QueryInterface(ZELSysTSIIDOf<ZELSysTSBaseUnknown>(), beta.Receive()),
            E_NOINTERFACE);
  EXPECT_FALSE(beta);
  raw->Release();
  EXPECT_EQ(object.count, 0u);
}

TEST(KitPtr, UsingAnEmptyPointerAsserts) {
  AlphaPtr empty;
  EXPECT_DEATH(empty->AddRef(), "empty interface pointer");
  EXPECT_DEATH((*empty).AddRef(), "empty interface pointer");
}

TEST(KitGuidLiteral, AgreesWithTheConversionAndRejectsMalformations) {
  const struct {
    char text[39];
    bool valid;
  } rows[] = {
      {"{01234567-89ab-cdef-0123-456789ABCDEF}", true},
      {"{00000000-0000-0000-C000-000000000046}", true},
      {"(6DADD843-BCD7-4107-B9E9-72342D738784)", false},  // parentheses for braces
      {"{6DADD843-BCD7-4107-B9E9-72342D738784 ", false},  // no closing brace
      {"{6DADD843ABCD7-4107-B9E9-72342D738784}", false},  // first dash replaced by a digit
      {"{6DADD843-BCD7-4107-B9E9A72342D738784}", false},  // last dash replaced by a digit
      {"{?DADD843-BCD7-4107-B9E9-72342D738784}", false},  // not a hexadecimal digit
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    if (!row.valid) {
      EXPECT_THROW(ZELSysTSGuid(row.text), std::invalid_argument);
      continue;
    }
    _GUID converted{};
    ASSERT_EQ(ZELSysTSConvertStringToGUID(row.text, converted), 0);
    EXPECT_TRUE(ZELSysTSGuid(row.text) == converted &&
                ZELSysTSSameGuid(ZELSysTSGuid(row.text), converted));
  }
  char unterminated[39];
  std::memcpy(unterminated, rows[0].text, sizeof unterminated);
  unterminated[38] = 'x';  // a character array, not a 38-character string
  EXPECT_THROW(ZELSysTSGuid(unterminated), std::invalid_argument);
  static_assert(!ZELSysTSSameGuid(ZELSysTSGuid("{00000000-0000-0000-0000-000000000001}"),
                                  ZELSysTSGuid("{00000000-0000-0000-0000-000000000000}")));
  // The kit's identities of IUnknown and of the base object are the library's.
  EXPECT_TRUE(ZELSysTSIIDOf<IUnknown>() == ZELSysTSGuid(rows[1].text));
  EXPECT_TRUE(ZELSysTSIIDOf<ZELSysTSBaseUnknown>() == CLSID_ZELSysTSBaseUnknown);
}

}  // namespace
