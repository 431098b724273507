// The store (insert-or-merge, pairs in one bucket, Register, no memory); IID <-> interface name
// 1:1, CLSID -> class and library.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "TestSupport.h"
#include "ZELSysTSGuid.h"
#include "dictionary/ClsidTable.h"
#include "dictionary/DicoStore.h"
#include "dictionary/IidTable.h"

namespace {

const std::string kMessage = "Problem allocating structure dico\n";
int g_fn[2];
void *const kFnA = &g_fn[0], *const kFnB = &g_fn[1];
const _GUID kCls = {0x11111111, 0x2222, 0x3333, {0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 1, 2}};
// Byte 0 set to 2, byte 1 set to 1: (kCls, kItf1) and (kCls, kItf2) share a GUID bucket.
const _GUID kItf1 = {0x02, 0, 0, {}}, kItf2 = {0x0100, 0, 0, {}};

bool g_refuse = false;
void* Allocate(size_t size) {
  return g_refuse ? nullptr : std::malloc(size);
}

class DicoStoreTest : public ::testing::Test {
  void SetUp() override { DicoStore::SetAllocatorForTesting(&Allocate); }
};

DicoEntry* Names(const char* cls, const char* itf, const char* lib = nullptr,
                 const char* leaf = nullptr, void* fn = nullptr, DicoEntry* rec = nullptr) {
  return DicoStore::InsertByNames(cls, itf, lib, leaf, nullptr, fn, rec);
}
DicoEntry* Guids(const _GUID& cls, const _GUID& itf, void* fn, DicoEntry* rec = nullptr) {
  return DicoStore::InsertByGuids(&cls, &itf, fn, rec);
}
// "lib|leaf|ext|creator" of a record (creator A or B; "" for null).
std::string Fields(const DicoEntry* r) {
  auto text = [](const char* s) { return std::string(s != nullptr ? s : ""); };
  const void* fn = r->Creator();
  return text(r->library_name) + "|" + text(r->itf_leaf) + "|" + text(r->extended_by) + "|" +
         (fn == kFnA ? "A" : "") + (fn == kFnB ? "B" : "");
}

// A second insert on a pair merges (same record, only empty fields filled, silent) or is refused
// (null, one message, nothing changed). A leading "lib" is cut, once.
TEST_F(DicoStoreTest, NameInsertsFillOnlyEmptyFieldsAndRefuseConflicts) {
  struct Args {
    const char *lib = nullptr, *leaf = nullptr, *ext = nullptr;
    void* fn = nullptr;
  };
  const struct {
    Args first, second;
    const char* after;  // null: the second insert is refused
  } rows[] = {
      {{"libFoo"}, {"Foo"}, "Foo|||"},
      {{"Foo"}, {0, "L", "E", kFnA}, "Foo|L|E|A"},
      {{"lib", "L", "E", kFnA}, {0, "L", "E", kFnA}, "|L|E|A"},
      {{"liblibX"}, {"liblibX"}, "libX|||"},
      {{"Libfoo"}, {"Bar", "L", "E", kFnA}, nullptr},
      {{0, "L"}, {"Foo", "M", "E"}, nullptr},
      {{0, 0, "E"}, {0, "L", "F"}, nullptr},
      {{0, 0, 0, kFnA}, {"Foo", 0, 0, kFnB}, nullptr},
  };
  for (const auto& r : rows) {
    const std::string cls = "Row" + std::to_string(&r - rows);
    SCOPED_TRACE(cls);
    auto insert = [&cls](const Args& a) {
      return DicoStore::InsertByNames(cls.c_str(), "I", a.lib, a.leaf, a.ext, a.fn, nullptr);
    };
    DicoEntry* rec = insert(r.first);
    ASSERT_NE(nullptr, rec);
    const std::string before = Fields(rec);
    EXPECT_EQ(r.after ? "" : kMessage,
              zeltest::StderrOf([&] { EXPECT_EQ(r.after ? rec : nullptr, insert(r.second)); }));
    EXPECT_EQ(r.after ? r.after : before, Fields(rec));
    EXPECT_EQ(rec, DicoStore::FindByNames(cls.c_str(), "I"));
  }
  EXPECT_TRUE(Names(nullptr, "I", "Impl") == nullptr && Names("Foo", nullptr, "Impl") == nullptr);
}

TEST_F(DicoStoreTest, NamesInOneBucketAreComparedWhole) {
  const char *seat = "IVehicleSeatBelt", *tcbt = "IVehicleTcbtBelt";  // a long common prefix
  ASSERT_EQ(DicoStore::NameBucket("Car", seat), DicoStore::NameBucket("Car", tcbt));
  DicoEntry *first = Names("Car", seat, "SeatImpl"), *second = Names("Car", tcbt, "TcbtImpl");
  ASSERT_TRUE(first != nullptr && second != nullptr && first != second);
  EXPECT_EQ(first, DicoStore::FindByNames("Car", seat));
  EXPECT_EQ(second, DicoStore::FindByNames("Car", tcbt));
}

// One CLSID with two IIDs in one bucket: two records. A GUID insert merges only with the same
// creator and the record that holds the pair.
TEST_F(DicoStoreTest, GuidInsertsMatchBothIdentifiersAndTheCreator) {
  ASSERT_EQ(DicoStore::GuidBucket(&kCls, &kItf1), DicoStore::GuidBucket(&kCls, &kItf2));
  DicoEntry *one = Guids(kCls, kItf1, kFnA), *two = Guids(kCls, kItf2, kFnB);
  ASSERT_TRUE(one != nullptr && two != nullptr && one != two);
  EXPECT_EQ(two, DicoStore::FindByGuids(&kCls, &kItf2));
  EXPECT_EQ(nullptr, DicoStore::FindByGuids(&kItf1, &kCls));  // swapped: the same bucket
  DicoEntry* named = Names("Boat", "ISail");
  EXPECT_TRUE(Guids(kCls, kItf1, kFnA) == one && Guids(kCls, kItf1, kFnA, one) == one);
  EXPECT_EQ(kMessage + kMessage + kMessage, zeltest::StderrOf([&] {
              EXPECT_EQ(nullptr, Guids(kCls, kItf1, kFnB));
              EXPECT_EQ(nullptr, Guids(kCls, kItf1, kFnA, named));  // the pair is one's
              EXPECT_EQ(nullptr, Guids(kItf2, kCls, kFnA, one));    // one holds other GUIDs
              EXPECT_EQ(nullptr, Guids(kItf2, kCls, nullptr));      // no creator: silent
            }));
  EXPECT_TRUE(one->Creator() == kFnA && !named->class_id && !DicoStore::FindByGuids(&kItf2, &kCls));
}

TEST_F(DicoStoreTest, RegisterMakesOneRecordReachableByNamesAndGuids) {
  DicoEntry* line = Names("Car", "ICar", "libCarImpl");  // as a dictionary line makes it
  EXPECT_EQ(line, DicoStore::Register(&kCls, &kItf1, "Car", "ICar", nullptr, kFnA));
  EXPECT_TRUE(DicoStore::FindByGuids(&kCls, &kItf1) == line && Fields(line) == "CarImpl|||A");
  DicoEntry* bus = DicoStore::Register(&kCls, &kItf2, "Bus", "IBus", "libBusImpl", kFnB);
  EXPECT_TRUE(bus != nullptr && bus == DicoStore::FindByNames("Bus", "IBus") &&
              bus == DicoStore::FindByGuids(&kCls, &kItf2));
  // A given record is not linked under another class's names.
  EXPECT_EQ(kMessage, zeltest::StderrOf([&] { Names("Tram", "ICar", 0, 0, 0, line); }));
  EXPECT_EQ(nullptr, DicoStore::FindByNames("Tram", "ICar"));

  // A meta object: the creator of (clsid, CLSID_ZELSysTSMetaClass) and (name, "MetaObject").
  auto meta = [](void* m) {
    return DicoStore::Register(&kCls, &CLSID_ZELSysTSMetaClass, "Gadget", "MetaObject", 0, m);
  };
  DicoEntry* gadget = meta(kFnA);
  EXPECT_EQ(kMessage + kMessage, zeltest::StderrOf([&] { EXPECT_EQ(nullptr, meta(kFnB)); }));
  EXPECT_EQ(kFnA, static_cast<void*>(DicoStore::FindMetaObject("Gadget")));
  EXPECT_EQ(gadget, DicoStore::FindByGuids(&kCls, &CLSID_ZELSysTSMetaClass));
}

// Without memory, an insert that needs some (a larger table, a new block of records) fails with
// the message and links nothing; with memory back it succeeds. A merge needs none.
TEST_F(DicoStoreTest, AnInsertWithoutMemoryChangesNothing) {
  DicoEntry* rec = Names("Plane", "IFly", "PlaneImpl");
  g_refuse = true;
  EXPECT_EQ(rec, Names("Plane", "IFly", nullptr, "Leaf"));
  EXPECT_EQ(kMessage, zeltest::StderrOf([&] { EXPECT_EQ(nullptr, Guids(kCls, kItf1, kFnA)); }));
  EXPECT_TRUE(Fields(rec) == "PlaneImpl|Leaf||" && !DicoStore::FindByGuids(&kCls, &kItf1));
  int refused = 0;
  for (int i = 0; refused < 3 && i < 1000; ++i) {  // the table grows twice, then the records
    const std::string cls = "Jet" + std::to_string(i);
    g_refuse = true;
    DicoEntry* got = nullptr;
    const std::string said = zeltest::StderrOf([&] { got = Names(cls.c_str(), "IFly"); });
    refused += got == nullptr;
    EXPECT_TRUE(got ? said.empty()
                    : said == kMessage && !DicoStore::FindByNames(cls.c_str(), "IFly"));
    g_refuse = false;
    EXPECT_NE(nullptr, Names(cls.c_str(), "IFly", "JetImpl"));
    EXPECT_EQ(rec, DicoStore::FindByNames("Plane", "IFly"));
  }
  EXPECT_EQ(3, refused);
  EXPECT_TRUE(Guids(kCls, kItf1, kFnA, rec) == rec && DicoStore::FindByGuids(&kCls, &kItf1) == rec);
}

// Bytes weighted by position from 0 sum to 2 in all three: one IID bucket.
const _GUID kA = {0x0200, 0, 0, {}}, kB = {0x010000, 0, 0, {}}, kC = {0x0201, 0, 0, {}};

TEST_F(DicoStoreTest, IidTableKeepsOneNamePerIidAndOneIidPerNameTheFirstKept) {
  const char *seat = "IVehicleSeatBelt", *tcbt = "IVehicleTcbtBelt";     // one name bucket
  for (int i = 0; i < 2; ++i) EXPECT_EQ(1, IidTable::Insert(kA, seat));  // and the same again
  EXPECT_EQ(1, IidTable::Insert(kB, tcbt));                              // a long common prefix
  EXPECT_EQ(0, IidTable::Insert(kA, "IOther"));  // the IID under another name
  EXPECT_EQ(0, IidTable::Insert(kC, seat));      // the name with another IID
  EXPECT_STREQ(seat, IidTable::FindName(kA));
  EXPECT_STREQ(tcbt, IidTable::FindName(kB));
  EXPECT_EQ(nullptr, IidTable::FindName(kC));
  EXPECT_TRUE(IidTable::FindIid(seat) != nullptr && *IidTable::FindIid(seat) == kA);
  EXPECT_TRUE(IidTable::FindIid(tcbt) != nullptr && *IidTable::FindIid(tcbt) == kB);
}

TEST(ClsidTable, AClassPerClsidAndTheLibraryAsFirstWritten) {
  const struct {
    const _GUID& clsid;
    const char *cls, *lib;
    bool accepted;
  } rows[] = {
      {kA, "Vehicle", nullptr, true},    {kA, "Vehicle", "VehicleImpl", true},  // adds no library
      {kA, "Car", "VehicleImpl", false}, {kB, "Truck", "libTruckImpl", true},
      {kB, "Truck", nullptr, true},      {kB, "Truck", "TruckImpl", false},
      {kB, "Car", nullptr, false},       {kC, nullptr, nullptr, false},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.accepted, ClsidTable::Insert(row.clsid, row.cls, row.lib) != nullptr)
        << &row - rows;
  const ClsidEntry *vehicle = ClsidTable::Find(kA), *truck = ClsidTable::Find(kB);
  ASSERT_TRUE(vehicle != nullptr && truck != nullptr);
  EXPECT_TRUE(vehicle->library_name == nullptr && ClsidTable::Find(kC) == nullptr);
  EXPECT_STREQ("libTruckImpl", truck->library_name);
}

}  // namespace
