// The shared tables used from a static initialiser, before main and before (or while) the
// library's own load-time step runs, as another library's initialisation may use them. What was
// put in them then must still be found afterwards: no load-time initialiser may reset a table.
#include <gtest/gtest.h>

#include "dictionary/ClsidTable.h"
#include "dictionary/IidTable.h"
#include "pools/GuidPool.h"
#include "pools/StringPool.h"

namespace {

const _GUID kEarly = {0xEA51, 0x1, 0x2, {3, 4, 5, 6, 7, 8, 9, 10}};

struct EarlyUse {
  const char* name = StringPool::Intern("EarlyName");
  const _GUID* guid = GuidPool::Intern(&kEarly);
  int iid_inserted = IidTable::Insert(kEarly, "IEarly");
  const ClsidEntry* clsid = ClsidTable::Insert(kEarly, "EarlyClass", "EarlyLib");
};

const EarlyUse g_early;

TEST(EarlyUseTest, WhatAStaticInitialiserPutInTheTablesIsStillThere) {
  ASSERT_NE(g_early.name, nullptr);
  EXPECT_EQ(StringPool::Intern("EarlyName"), g_early.name);
  ASSERT_NE(g_early.guid, nullptr);
  EXPECT_EQ(GuidPool::Intern(&kEarly), g_early.guid);

  ASSERT_EQ(g_early.iid_inserted, 1);
  EXPECT_STREQ(IidTable::FindName(kEarly), "IEarly");
  EXPECT_EQ(IidTable::Insert(kEarly, "IOther"), 0);  // still known under its first name

  ASSERT_NE(g_early.clsid, nullptr);
  EXPECT_EQ(ClsidTable::Find(kEarly), g_early.clsid);
}

}  // namespace
