// The GUID text form, the two bucket functions and the rules of the identifier tables.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "ZELSysTSConvertStringToGUID.h"
#include "dictionary/ClsidTable.h"
#include "dictionary/IidTable.h"
#include "pools/StringPool.h"

namespace {

const _GUID kIUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const _GUID kBase = {0x6DADD843, 0xBCD7, 0x4107, {0xB9, 0xE9, 0x72, 0x34, 0x2D, 0x73, 0x87, 0x84}};
const char kBaseText[] = "{6DADD843-BCD7-4107-B9E9-72342D738784}";

_GUID Filled(unsigned char byte) {
  _GUID g;
  std::memset(&g, byte, sizeof g);
  return g;
}

// kIUnknown but for byte 0, which has weight 0: the same IdentifierBucket.
const _GUID kTwin = {0x5A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// The IID known under name, or all bytes 0xEE when there is none.
_GUID IidOf(const char* name) {
  const _GUID* iid = IidTable::FindIid(name);
  return iid != nullptr ? *iid : Filled(0xEE);
}

TEST(GuidText, LengthAndBracesAreCheckedDigitsReadByPosition) {
  const struct {
    const char* text;
    _GUID expected;
  } accepted[] = {
      {kBaseText, kBase},
      {"{6dAdD843-bCd7-4107-B9e9-72342d738784}", kBase},
      {"{6DADD843_BCD7}4107\001B9E9\37772342D738784}", kBase},  // separators never read
      // Anything but a hex digit counts as 0: 'G', '?', a blank, a byte above 127.
      {"{6DADD84G-BC?7-4107-B9E9-7234 D73878\303}",
       {0x6DADD840, 0xBC07, 0x4107, {0xB9, 0xE9, 0x72, 0x34, 0x0D, 0x73, 0x87, 0x80}}},
      {"{01234567-89ab-cdef-0123-456789abcdef}",
       {0x01234567, 0x89AB, 0xCDEF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}}},
  };
  for (const auto& c : accepted) {
    _GUID g = Filled(0xA5);
    EXPECT_EQ(0, ZELSysTSConvertStringToGUID(c.text, g)) << c.text;
    EXPECT_EQ(c.expected, g) << c.text;
  }
  // A rejected text leaves the GUID as it was.
  const std::string good = kBaseText;
  for (const std::string& text :
       {good.substr(1, 36), good + " ", good + "\r", good.substr(0, 37), "(" + good.substr(1),
        good.substr(0, 37) + ")", std::string(), good + good}) {
    _GUID g = Filled(0xA5);
    EXPECT_EQ(1, ZELSysTSConvertStringToGUID(text.c_str(), g)) << text;
    EXPECT_EQ(Filled(0xA5), g) << text;
  }
  _GUID g = Filled(0xA5);
  EXPECT_EQ(1, ZELSysTSConvertStringToGUID(nullptr, g));
  EXPECT_EQ(Filled(0xA5), g);
}

TEST(IdentifierBuckets, SignedBytesWeightedByPositionLowTenBits) {
  EXPECT_EQ(538, IdentifierBucket(kIUnknown));
  EXPECT_EQ(556, IdentifierBucket(kBase));
  EXPECT_EQ(904, IdentifierBucket(Filled(0xFF)));  // -120 modulo 1024
  EXPECT_EQ(0, IdentifierBucket(_GUID{0xFF, 0, 0, {}}));
  EXPECT_EQ(1, IdentifierBucket(_GUID{0x100, 0, 0, {}}));
  const struct {
    const char* name;
    int bucket;
  } names[] = {{"IUnknown", 33},     {"A", 0}, {"", 0}, {"\xE9", 0}, {"x\xE9", 1024 - 23},
               {"x\x01\0garbage", 1}};
  for (const auto& n : names) EXPECT_EQ(n.bucket, InterfaceNameBucket(n.name)) << n.name;
}

TEST(IidTable, RelationStaysOneToOne) {
  char copy[] = "A";
  ASSERT_EQ(1, IidTable::Insert(kIUnknown, "A"));
  EXPECT_EQ(1, IidTable::Insert(kIUnknown, copy));  // the same pair again
  EXPECT_EQ(StringPool::Intern("A"), IidTable::FindName(kIUnknown));
  EXPECT_EQ(0, IidTable::Insert(kIUnknown, "IOther"));  // the IID under another name
  EXPECT_EQ(0, IidTable::Insert(kBase, "A"));           // the name with another IID
  EXPECT_EQ(0, IidTable::Insert(kBase, nullptr));
  EXPECT_EQ(nullptr, IidTable::FindIid("IOther"));
  EXPECT_EQ(nullptr, IidTable::FindName(kBase));

  // "A", "a" and "" share name bucket 0; kIUnknown and its twin share an IID bucket.
  EXPECT_EQ(1, IidTable::Insert(kTwin, "a"));
  EXPECT_EQ(1, IidTable::Insert(kBase, ""));
  EXPECT_STREQ("A", IidTable::FindName(kIUnknown));
  EXPECT_STREQ("a", IidTable::FindName(kTwin));
  EXPECT_STREQ("", IidTable::FindName(kBase));
  EXPECT_EQ(kIUnknown, IidOf("A"));
  EXPECT_EQ(kTwin, IidOf("a"));
  EXPECT_EQ(kBase, IidOf(""));
}

TEST(ClsidTable, AcceptanceRules) {
  const ClsidEntry* bare = ClsidTable::Insert(kBase, "Vehicle", nullptr);
  ASSERT_NE(nullptr, bare);
  // Accepted, but an entry made without a library never gains one.
  EXPECT_EQ(bare, ClsidTable::Insert(kBase, "Vehicle", "VehicleImpl"));
  EXPECT_EQ(nullptr, bare->library_name);
  EXPECT_EQ(nullptr, ClsidTable::Insert(kBase, "Car", "VehicleImpl"));

  const ClsidEntry* truck = ClsidTable::Insert(kIUnknown, "Truck", "libTruckImpl");
  ASSERT_NE(nullptr, truck);
  EXPECT_EQ(truck, ClsidTable::Insert(kIUnknown, "Truck", nullptr));
  EXPECT_EQ(truck, ClsidTable::Insert(kIUnknown, "Truck", "libTruckImpl"));
  EXPECT_EQ(nullptr, ClsidTable::Insert(kIUnknown, "Truck", "TruckImpl"));
  EXPECT_EQ(nullptr, ClsidTable::Insert(kIUnknown, "Car", nullptr));
  EXPECT_EQ(nullptr, ClsidTable::Insert(Filled(0xFF), nullptr, nullptr));
  EXPECT_EQ(nullptr, ClsidTable::Find(Filled(0xFF)));

  const ClsidEntry* twin = ClsidTable::Insert(kTwin, "Twin", nullptr);
  ASSERT_NE(nullptr, twin);
  EXPECT_EQ(twin, ClsidTable::Find(kTwin));
  EXPECT_EQ(truck, ClsidTable::Find(kIUnknown));
  EXPECT_STREQ("Vehicle", bare->class_name);
  EXPECT_STREQ("libTruckImpl", truck->library_name);  // as written, and never changed
}

}  // namespace
