// What a static initialiser (as in another library) put in the shared tables is still there later.
#include <gtest/gtest.h>

#include "dictionary/ClsidTable.h"
#include "dictionary/IidTable.h"
#include "pools/GuidPool.h"
#include "pools/StringPool.h"

namespace {

const _GUID kEarly = {0xEA51, 0x1, 0x2, {3, 4, 5, 6, 7, 8, 9, 10}};

const struct EarlyUse {
  const char* name = StringPool::Intern("EarlyName");
  const _GUID* guid = GuidPool::Intern(&kEarly);
  int iidInserted = IidTable::Insert(kEarly, "IEarly");
  const ClsidEntry* clsid = ClsidTable::Insert(kEarly, "EarlyClass", "EarlyLib");
} g_early;

TEST(EarlyUseTest, WhatAStaticInitialiserPutInTheTablesIsStillThere) {
  EXPECT_EQ(StringPool::Intern("EarlyName"), g_early.name);
  EXPECT_EQ(GuidPool::Intern(&kEarly), g_early.guid);
  EXPECT_STREQ(IidTable::FindName(kEarly), "IEarly");
  EXPECT_TRUE(g_early.clsid != nullptr && ClsidTable::Find(kEarly) == g_early.clsid);
}

}  // namespace
