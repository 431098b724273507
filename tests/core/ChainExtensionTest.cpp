// The extension chain node: it links once, never into a cycle, and owns nothing.
#include <gtest/gtest.h>

#include "ZELSysTSBaseUnknown.h"
#include "core/ZELSysTSChainExtension.h"

namespace {

TEST(ChainExtensionTest, HoldsItsExtensionAndReportsAnEmptyNode) {
  ZELSysTSBaseUnknown extension(0);
  ZELSysTSChainExtension node(&extension);
  ZELSysTSBaseUnknown* out = nullptr;
  EXPECT_EQ(node.GetExtension(out), S_OK);
  EXPECT_EQ(out, &extension);
  EXPECT_EQ(node.GetNext(), nullptr);

  ZELSysTSChainExtension empty(nullptr);
  out = &extension;
  EXPECT_EQ(empty.GetExtension(out), E_FAIL);
  EXPECT_EQ(out, nullptr);  // written in every case
}

TEST(ChainExtensionTest, SetNextLinksOnceAndOnlyAnUnlinkedNode) {
  ZELSysTSChainExtension a(nullptr), b(nullptr), c(nullptr), d(nullptr);
  EXPECT_EQ(a.SetNext(nullptr), E_FAIL);
  EXPECT_EQ(a.GetNext(), nullptr);

  EXPECT_EQ(b.SetNext(&c), S_OK);
  // b already has a next: it cannot go behind a, since c would then hang in two places.
  EXPECT_EQ(a.SetNext(&b), E_FAIL);
  EXPECT_EQ(a.GetNext(), nullptr);

  EXPECT_EQ(a.SetNext(&d), S_OK);
  EXPECT_EQ(a.GetNext(), &d);
  // a has its next: neither an unlinked node nor the same one replaces it.
  EXPECT_EQ(a.SetNext(&c), E_FAIL);
  EXPECT_EQ(a.SetNext(&d), E_FAIL);
  EXPECT_EQ(a.GetNext(), &d);
  EXPECT_EQ(b.GetNext(), &c);
}

TEST(ChainExtensionTest, DestroyingANodeFreesNeitherExtensionNorNext) {
  // Both live on past the node; AddressSanitizer would report a node that freed them.
  auto* extension = new ZELSysTSBaseUnknown(0);
  auto* next = new ZELSysTSChainExtension(nullptr);
  auto* node = new ZELSysTSChainExtension(extension);
  ASSERT_EQ(node->SetNext(next), S_OK);
  delete node;
  EXPECT_EQ(next->GetNext(), nullptr);
  EXPECT_EQ(extension->Release(), 0u);
  delete next;
}

}  // namespace
