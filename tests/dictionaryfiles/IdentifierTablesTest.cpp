// The bucket functions and the rules of the interface and class identifier tables.
#include <gtest/gtest.h>

#include <cstring>

#include "dictionary/StringPool.h"
#include "dictionaryfiles/ClsidTable.h"
#include "dictionaryfiles/IidTable.h"

namespace {

const _GUID kIUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const _GUID kBaseUnknown = {
    0x6DADD843, 0xBCD7, 0x4107, {0xB9, 0xE9, 0x72, 0x34, 0x2D, 0x73, 0x87, 0x84}};

_GUID AllFF() {
  _GUID g;
  std::memset(&g, 0xFF, sizeof g);
  return g;
}

// A GUID whose first byte in memory differs from g's: same bucket (byte 0 has weight 0).
_GUID OtherFirstByte(_GUID g) {
  g.Data1 ^= 0x5A;
  return g;
}

TEST(IdentifierBuckets, GuidBucketUsesSignedBytesAndLowTenBits) {
  EXPECT_EQ(538, IdentifierBucket(kIUnknown));
  EXPECT_EQ(556, IdentifierBucket(kBaseUnknown));
  EXPECT_EQ(904, IdentifierBucket(AllFF()));
  EXPECT_EQ(0, IdentifierBucket(_GUID{}));
  EXPECT_EQ(IdentifierBucket(kBaseUnknown), IdentifierBucket(OtherFirstByte(kBaseUnknown)));
  // Byte 1 (weight 1) is the second byte of the 32-bit field.
  EXPECT_EQ(1, IdentifierBucket(_GUID{0x100, 0, 0, {}}));
}

TEST(IdentifierBuckets, NameBucketUsesSignedBytesAndWeightsFromZero) {
  EXPECT_EQ(33, InterfaceNameBucket("IUnknown"));
  EXPECT_EQ(0, InterfaceNameBucket("A"));
  EXPECT_EQ(0, InterfaceNameBucket(""));
  EXPECT_EQ(0, InterfaceNameBucket("\xE9"));
  EXPECT_EQ(1024 - 23, InterfaceNameBucket("x\xE9"));   // -23 taken modulo 1024
  EXPECT_EQ(1, InterfaceNameBucket("x\x01\0garbage"));  // the name ends at its NUL
}

TEST(IidTable, SamePairTwiceIsKeptOnce) {
  EXPECT_EQ(1, IidTable::Insert(kIUnknown, "IUnknown"));
  char copy[] = "IUnknown";
  EXPECT_EQ(1, IidTable::Insert(kIUnknown, copy));
  const char* name = IidTable::FindName(kIUnknown);
  ASSERT_NE(nullptr, name);
  EXPECT_STREQ("IUnknown", name);
  EXPECT_EQ(StringPool::Intern("IUnknown"), name);  // the pooled copy, not the caller's text
  const _GUID* iid = IidTable::FindIid(copy);
  ASSERT_NE(nullptr, iid);
  EXPECT_EQ(kIUnknown, *iid);
}

TEST(IidTable, RelationStaysOneToOne) {
  ASSERT_EQ(1, IidTable::Insert(kIUnknown, "IUnknown"));
  // The IID under another name.
  EXPECT_EQ(0, IidTable::Insert(kIUnknown, "IOther"));
  EXPECT_STREQ("IUnknown", IidTable::FindName(kIUnknown));
  EXPECT_EQ(nullptr, IidTable::FindIid("IOther"));
  // The name with another IID.
  EXPECT_EQ(0, IidTable::Insert(kBaseUnknown, "IUnknown"));
  EXPECT_EQ(kIUnknown, *IidTable::FindIid("IUnknown"));
  EXPECT_EQ(nullptr, IidTable::FindName(kBaseUnknown));
  // Case matters: another name altogether.
  EXPECT_EQ(1, IidTable::Insert(kBaseUnknown, "IUNKNOWN"));
  EXPECT_STREQ("IUNKNOWN", IidTable::FindName(kBaseUnknown));
  EXPECT_EQ(kIUnknown, *IidTable::FindIid("IUnknown"));
  EXPECT_EQ(0, IidTable::Insert(kBaseUnknown, nullptr));
}

TEST(IidTable, EntriesSharingBucketsAreAllFound) {
  const _GUID other = OtherFirstByte(kIUnknown);
  // Both IIDs share a bucket, and so do the names "A", "B" and "" (bucket 0).
  ASSERT_EQ(1, IidTable::Insert(kIUnknown, "A"));
  ASSERT_EQ(1, IidTable::Insert(other, "B"));
  ASSERT_EQ(1, IidTable::Insert(AllFF(), ""));
  EXPECT_STREQ("A", IidTable::FindName(kIUnknown));
  EXPECT_STREQ("B", IidTable::FindName(other));
  EXPECT_STREQ("", IidTable::FindName(AllFF()));
  EXPECT_EQ(kIUnknown, *IidTable::FindIid("A"));
  EXPECT_EQ(other, *IidTable::FindIid("B"));
  EXPECT_EQ(AllFF(), *IidTable::FindIid(""));
  EXPECT_EQ(nullptr, IidTable::FindIid("C"));
}

TEST(ClsidTable, ALibraryIsNeverAddedToAnEntryMadeWithoutOne) {
  EXPECT_EQ(nullptr, ClsidTable::Find(kBaseUnknown));
  const ClsidEntry* first = ClsidTable::Insert(kBaseUnknown, "Vehicle", nullptr);
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first, ClsidTable::Insert(kBaseUnknown, "Vehicle", "VehicleImpl"));
  const ClsidEntry* found = ClsidTable::Find(kBaseUnknown);
  ASSERT_EQ(first, found);
  EXPECT_STREQ("Vehicle", found->class_name);
  EXPECT_EQ(nullptr, found->library_name);
  EXPECT_EQ(kBaseUnknown, *found->class_id);
}

TEST(ClsidTable, LibraryRulesAndClassNameConflicts) {
  const ClsidEntry* entry = ClsidTable::Insert(kIUnknown, "Vehicle", "libVehicleImpl");
  ASSERT_NE(nullptr, entry);
  EXPECT_STREQ("libVehicleImpl", entry->library_name);  // kept as written
  EXPECT_EQ(entry, ClsidTable::Insert(kIUnknown, "Vehicle", nullptr));
  EXPECT_EQ(entry, ClsidTable::Insert(kIUnknown, "Vehicle", "libVehicleImpl"));
  EXPECT_EQ(nullptr, ClsidTable::Insert(kIUnknown, "Vehicle", "VehicleImpl"));
  EXPECT_EQ(nullptr, ClsidTable::Insert(kIUnknown, "Truck", "libVehicleImpl"));
  EXPECT_EQ(nullptr, ClsidTable::Insert(kIUnknown, "Truck", nullptr));
  EXPECT_EQ(nullptr, ClsidTable::Insert(kIUnknown, nullptr, nullptr));
  EXPECT_STREQ("libVehicleImpl", ClsidTable::Find(kIUnknown)->library_name);
  EXPECT_STREQ("Vehicle", ClsidTable::Find(kIUnknown)->class_name);
}

TEST(ClsidTable, IdentifiersOfOneBucketAreAllFound) {
  const _GUID other = OtherFirstByte(kBaseUnknown);
  const ClsidEntry* a = ClsidTable::Insert(kBaseUnknown, "A", "LibA");
  const ClsidEntry* b = ClsidTable::Insert(other, "B", nullptr);
  ASSERT_NE(nullptr, a);
  ASSERT_NE(nullptr, b);
  EXPECT_NE(a, b);
  EXPECT_EQ(a, ClsidTable::Find(kBaseUnknown));
  EXPECT_EQ(b, ClsidTable::Find(other));
  EXPECT_EQ(nullptr, ClsidTable::Find(AllFF()));
}

}  // namespace
