// The dictionary store's tables: bucket functions, insert-or-merge by names and by GUIDs with
// their conflict rules, chain order, the allocation seam and the one-time initialisation.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "TestSupport.h"
#include "dictionary/DicoStore.h"
#include "dictionary/GuidPool.h"
#include "dictionary/StringPool.h"

namespace {

using zeltest::StderrCapture;

const std::string kMessage = "Problem allocating structure dico\n";

int g_creator_a;
int g_creator_b;
void* const kFnA = &g_creator_a;
void* const kFnB = &g_creator_b;

const _GUID kZero = {};
const _GUID kIUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
// A class and an interface identifier of their own for each test.
_GUID ClassId(uint8_t test) {
  return {0x11111111, 0x2222, 0x3333, {0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 1, test}};
}
_GUID InterfaceId(uint8_t test) {
  return {0xAAAAAAAA, 0xBBBB, 0xCCCC, {0xDD, 0xEE, 0xFF, 0, 1, 2, 3, test}};
}

DicoEntry* Names(const char* cls, const char* itf, const char* lib = nullptr,
                 const char* leaf = nullptr, const char* ext = nullptr, void* fn = nullptr,
                 DicoEntry* rec = nullptr) {
  return DicoStore::InsertByNames(cls, itf, lib, leaf, ext, fn, rec);
}

int NameChainLength(const char* cls, const char* itf) {
  return DicoStore::NameChainForTesting(DicoStore::NameBucket(cls, itf), nullptr, 0);
}

// True when another thread can take the dictionary lock right now.
bool DictionaryLockIsFree() {
  bool free = false;
  std::thread([&free] {
    pthread_mutex_t* mutex = DicoStore::DictionaryLock().Handle();
    if (pthread_mutex_trylock(mutex) == 0) {
      free = true;
      pthread_mutex_unlock(mutex);
    }
  }).join();
  return free;
}

int g_allocations_left = 0;
void* AllocateWhileAllowed(size_t size) {
  if (g_allocations_left <= 0) return nullptr;
  --g_allocations_left;
  return std::calloc(1, size);
}

// Lets the store allocate `allowed` more blocks, then refuses; restores the default at the end.
class ScopedAllocationLimit {
 public:
  explicit ScopedAllocationLimit(int allowed) {
    g_allocations_left = allowed;
    DicoStore::SetAllocatorForTesting(&AllocateWhileAllowed);
  }
  ~ScopedAllocationLimit() { DicoStore::SetAllocatorForTesting(nullptr); }
};

TEST(DicoStoreBucketTest, NameBucketsUseSignedBytesWeightsFromOneAndASignedRemainder) {
  EXPECT_EQ(3, DicoStore::NameBucket("A", "B"));
  EXPECT_EQ(457, DicoStore::NameBucket("Foo", "IBar"));
  EXPECT_EQ(293, DicoStore::NameBucket("ab", ""));
  EXPECT_EQ(0, DicoStore::NameBucket("IVehicle", "IVehicle"));
  EXPECT_EQ(23, DicoStore::NameBucket("\xE9", ""));
  EXPECT_EQ(23, DicoStore::NameBucket("\x17", ""));
  EXPECT_EQ(23, DicoStore::NameBucket("", "\xE9"));
  // 1*97 + 2*98 + ... + 10*106 = 5665, one turn past 4096.
  EXPECT_EQ(1569, DicoStore::NameBucket("abcdefghij", ""));
  // Ten 0x80 bytes: -128 * 55 = -7040, whose truncated remainder is -2944.
  EXPECT_EQ(2944, DicoStore::NameBucket(std::string(10, '\x80').c_str(), ""));
}

TEST(DicoStoreBucketTest, GuidBucketsUseSignedBytesInMemoryOrder) {
  _GUID ones;
  std::memset(&ones, 0xFF, sizeof(ones));
  EXPECT_EQ(136, DicoStore::GuidBucket(&ones, &kZero));
  EXPECT_EQ(544, DicoStore::GuidBucket(&kIUnknown, &kZero));
  EXPECT_EQ(544, DicoStore::GuidBucket(&kZero, &kIUnknown));
  // Data1 lies low byte first: its top byte is byte 3, of weight 4.
  const _GUID top = {0x01000000, 0, 0, {0}};
  EXPECT_EQ(4, DicoStore::GuidBucket(&top, &kZero));
}

TEST(DicoStoreInsertByNamesTest, RepeatedInsertsGiveTheSameRecordSilently) {
  StderrCapture err;
  DicoEntry* rec = Names("Vehicle", "IVehicle", "libVehicleImpl");
  ASSERT_NE(nullptr, rec);
  EXPECT_EQ(rec, Names("Vehicle", "IVehicle", "libVehicleImpl"));
  EXPECT_EQ(rec, Names("Vehicle", "IVehicle", "VehicleImpl"));
  EXPECT_EQ(rec, Names("Vehicle", "IVehicle"));
  EXPECT_EQ("", err.Take());

  EXPECT_EQ(StringPool::Intern("Vehicle"), rec->class_name);
  EXPECT_EQ(StringPool::Intern("IVehicle"), rec->interface_name);
  EXPECT_STREQ("VehicleImpl", rec->library_name);
  EXPECT_EQ(nullptr, rec->class_id);
  EXPECT_EQ(rec, DicoStore::FindByNames("Vehicle", "IVehicle"));
  EXPECT_EQ(1, NameChainLength("Vehicle", "IVehicle"));
  EXPECT_EQ(nullptr, DicoStore::FindByNames("Vehicle", "IOther"));
}

TEST(DicoStoreInsertByNamesTest, OnlyALowerCaseLibPrefixIsCut) {
  const struct {
    const char* itf;
    const char* given;
    const char* stored;
  } cases[] = {{"I1", "libFoo", "Foo"}, {"I2", "lib", ""},         {"I3", "Libfoo", "Libfoo"},
               {"I4", "li", "li"},      {"I5", "liblibX", "libX"}, {"I6", "Foo", "Foo"}};
  for (const auto& c : cases) {
    DicoEntry* rec = Names("LibCase", c.itf, c.given);
    ASSERT_NE(nullptr, rec) << c.given;
    EXPECT_STREQ(c.stored, rec->library_name) << c.given;
  }
}

TEST(DicoStoreInsertByNamesTest, ConflictFailsWithTheMessageAndChangesNothing) {
  DicoEntry* rec = Names("Car", "IDrive", "libFoo");
  ASSERT_NE(nullptr, rec);
  StderrCapture err;
  EXPECT_EQ(nullptr, Names("Car", "IDrive", "Bar", "IDriveLeaf", "CarExt", kFnA));
  EXPECT_EQ(kMessage, err.Take());
  EXPECT_STREQ("Foo", rec->library_name);
  EXPECT_EQ(nullptr, rec->itf_leaf);
  EXPECT_EQ(nullptr, rec->extended_by);
  EXPECT_EQ(nullptr, rec->Creator());
}

TEST(DicoStoreInsertByNamesTest, EmptyFieldsAreFilledLaterAndSetOnesDefended) {
  DicoEntry* rec = Names("Car", "IPrint", "Impl");
  ASSERT_NE(nullptr, rec);
  EXPECT_EQ(rec, Names("Car", "IPrint", nullptr, "IPrintLeaf"));
  EXPECT_EQ(rec, Names("Car", "IPrint", nullptr, nullptr, "CarExt", kFnA));
  EXPECT_STREQ("IPrintLeaf", rec->itf_leaf);
  EXPECT_STREQ("CarExt", rec->extended_by);
  EXPECT_EQ(kFnA, rec->Creator());

  StderrCapture err;
  EXPECT_EQ(nullptr, Names("Car", "IPrint", nullptr, "OtherLeaf"));
  EXPECT_EQ(nullptr, Names("Car", "IPrint", nullptr, nullptr, "OtherExt"));
  EXPECT_EQ(nullptr, Names("Car", "IPrint", nullptr, nullptr, nullptr, kFnB));
  EXPECT_EQ(rec, Names("Car", "IPrint", "libImpl", "IPrintLeaf", "CarExt", kFnA, rec));
  EXPECT_EQ(kMessage + kMessage + kMessage, err.Take());
  EXPECT_STREQ("IPrintLeaf", rec->itf_leaf);
  EXPECT_STREQ("CarExt", rec->extended_by);
  EXPECT_EQ(kFnA, rec->Creator());
}

TEST(DicoStoreInsertByNamesTest, AGivenRecordIsLinkedOnlyWhereItCanHoldThePair) {
  const _GUID cls = ClassId(1);
  const _GUID itf = InterfaceId(1);
  DicoEntry* drive = Names("Bus", "IDrive", "BusImpl");
  DicoEntry* stop = Names("Bus", "IStop");
  ASSERT_NE(nullptr, drive);
  ASSERT_NE(nullptr, stop);
  StderrCapture err;
  EXPECT_EQ(nullptr, Names("Bus", "IStop", nullptr, nullptr, nullptr, nullptr, drive));
  EXPECT_EQ(nullptr, Names("Tram", "IDrive", "Other", nullptr, nullptr, nullptr, drive));
  EXPECT_EQ(nullptr, Names("Bus", "IPark", nullptr, nullptr, nullptr, nullptr, drive));
  EXPECT_EQ(kMessage + kMessage + kMessage, err.Take());
  EXPECT_EQ(nullptr, DicoStore::FindByNames("Tram", "IDrive"));
  EXPECT_EQ(nullptr, DicoStore::FindByNames("Bus", "IPark"));
  EXPECT_STREQ("BusImpl", drive->library_name);
  EXPECT_STREQ("IDrive", drive->interface_name);

  // A record known only by GUIDs gains the names and becomes reachable by them.
  DicoEntry* byGuids = DicoStore::InsertByGuids(&cls, &itf, kFnA, nullptr);
  ASSERT_NE(nullptr, byGuids);
  EXPECT_EQ(byGuids, Names("Bus", "IGuid", "libBusImpl", nullptr, nullptr, kFnA, byGuids));
  EXPECT_STREQ("Bus", byGuids->class_name);
  EXPECT_STREQ("BusImpl", byGuids->library_name);
  EXPECT_EQ(byGuids, DicoStore::FindByNames("Bus", "IGuid"));
  EXPECT_EQ(byGuids, DicoStore::FindByGuids(&cls, &itf));
}

TEST(DicoStoreInsertByNamesTest, ANameThatCannotBeInternedFailsAfterTheOtherFieldsAreFilled) {
  const std::string tooLong(5000, 'x');
  DicoEntry* rec = Names("Truck", "ILoad");
  ASSERT_NE(nullptr, rec);
  StderrCapture err;
  EXPECT_EQ(nullptr, Names("Truck", "ILoad", tooLong.c_str(), "ILoadLeaf", nullptr, kFnA));
  EXPECT_EQ(nullptr, Names("Truck", tooLong.c_str()));
  EXPECT_EQ(kMessage + kMessage, err.Take());
  EXPECT_EQ(nullptr, rec->library_name);
  EXPECT_STREQ("ILoadLeaf", rec->itf_leaf);
  EXPECT_EQ(kFnA, rec->Creator());
  EXPECT_EQ(nullptr, DicoStore::FindByNames("Truck", tooLong.c_str()));
  EXPECT_EQ(0, NameChainLength("Truck", tooLong.c_str()));
}

TEST(DicoStoreInsertTest, NullKeysAndANullCreatorGiveNullSilently) {
  const _GUID cls = ClassId(2);
  const _GUID itf = InterfaceId(2);
  StderrCapture err;
  EXPECT_EQ(nullptr, Names(nullptr, "IDrive", "Impl"));
  EXPECT_EQ(nullptr, Names("Car", nullptr, "Impl"));
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&cls, &itf, nullptr, nullptr));
  EXPECT_EQ("", err.Take());
  EXPECT_EQ(nullptr, DicoStore::FindByGuids(&cls, &itf));
  EXPECT_EQ(nullptr, DicoStore::FindByNames("Car", nullptr));
}

TEST(DicoStoreInsertByGuidsTest, TheCreatorIsPublishedOnceAndDefended) {
  const _GUID cls = ClassId(3);
  const _GUID itf = InterfaceId(3);
  DicoEntry* rec = DicoStore::InsertByGuids(&cls, &itf, kFnA, nullptr);
  ASSERT_NE(nullptr, rec);
  EXPECT_EQ(GuidPool::Intern(&cls), rec->class_id);
  EXPECT_EQ(GuidPool::Intern(&itf), rec->interface_id);
  EXPECT_EQ(kFnA, rec->Creator());
  EXPECT_EQ(nullptr, rec->class_name);

  const _GUID classCopy = cls;
  StderrCapture err;
  EXPECT_EQ(rec, DicoStore::InsertByGuids(&classCopy, &itf, kFnA, nullptr));
  EXPECT_EQ(rec, DicoStore::InsertByGuids(&cls, &itf, kFnA, rec));
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&cls, &itf, kFnB, nullptr));
  EXPECT_EQ(kMessage, err.Take());
  EXPECT_EQ(kFnA, rec->Creator());
  EXPECT_EQ(rec, DicoStore::FindByGuids(&classCopy, &itf));
}

TEST(DicoStoreInsertByGuidsTest, AFailureKeepsTheIdentifiersItSetOnAGivenRecord) {
  const _GUID cls = ClassId(4);
  const _GUID itf = InterfaceId(4);
  DicoEntry* named = Names("Boat", "ISail");
  ASSERT_NE(nullptr, DicoStore::InsertByGuids(&cls, &itf, kFnA, nullptr));

  // Records owned by the test, never linked: the inserts below all fail.
  static DicoEntry clashingClass{};
  clashingClass.class_id = GuidPool::Intern(&kIUnknown);
  static DicoEntry clashingCreator{};
  clashingCreator.creator.store(kFnB);

  StderrCapture err;
  // The pair is held by another record.
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&cls, &itf, kFnA, named));
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&cls, &kZero, kFnA, &clashingClass));
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&kZero, &itf, kFnA, &clashingCreator));
  EXPECT_EQ(kMessage + kMessage + kMessage, err.Take());

  EXPECT_EQ(nullptr, named->class_id);
  EXPECT_EQ(nullptr, named->Creator());
  EXPECT_EQ(GuidPool::Intern(&kIUnknown), clashingClass.class_id);
  EXPECT_EQ(GuidPool::Intern(&kZero), clashingClass.interface_id);
  EXPECT_EQ(nullptr, clashingClass.Creator());
  EXPECT_EQ(GuidPool::Intern(&kZero), clashingCreator.class_id);
  EXPECT_EQ(GuidPool::Intern(&itf), clashingCreator.interface_id);
  EXPECT_EQ(kFnB, clashingCreator.Creator());
  EXPECT_EQ(nullptr, DicoStore::FindByGuids(&cls, &kZero));
  EXPECT_EQ(nullptr, DicoStore::FindByGuids(&kZero, &itf));
}

TEST(DicoStoreChainTest, CollidingPairsAreChainedInOrderOfFirstInsertion) {
  const _GUID cls = ClassId(5);
  const _GUID itf = InterfaceId(5);
  DicoEntry* low = Names("\x17", "");
  DicoEntry* high = Names("\xE9", "", "Impl");
  ASSERT_NE(nullptr, low);
  ASSERT_NE(nullptr, high);
  ASSERT_NE(low, high);
  EXPECT_EQ(low, Names("\x17", "", "Impl"));
  DicoEntry* chain[4] = {};
  ASSERT_EQ(2, DicoStore::NameChainForTesting(23, chain, 4));
  EXPECT_EQ(low, chain[0]);
  EXPECT_EQ(high, chain[1]);
  EXPECT_EQ(high, DicoStore::FindByNames("\xE9", ""));
  EXPECT_EQ(low, DicoStore::FindByNames("\x17", ""));

  // Swapping the two GUIDs of a pair keeps its bucket (the sums are xor'ed): both records are
  // appended to that chain, in order.
  const int bucket = DicoStore::GuidBucket(&itf, &cls);
  const int before = DicoStore::GuidChainForTesting(bucket, nullptr, 0);
  DicoEntry* forward = DicoStore::InsertByGuids(&cls, &itf, kFnA, nullptr);
  DicoEntry* backward = DicoStore::InsertByGuids(&itf, &cls, kFnB, nullptr);
  ASSERT_NE(nullptr, forward);
  ASSERT_NE(nullptr, backward);
  ASSERT_NE(forward, backward);
  DicoEntry* guidChain[16] = {};
  ASSERT_EQ(before + 2, DicoStore::GuidChainForTesting(bucket, guidChain, 16));
  ASSERT_LE(before + 2, 16);
  EXPECT_EQ(forward, guidChain[before]);
  EXPECT_EQ(backward, guidChain[before + 1]);
  EXPECT_EQ(backward, DicoStore::FindByGuids(&itf, &cls));
}

TEST(DicoStoreAllocationTest, AnInsertWithoutMemoryFailsCleanly) {
  const _GUID cls = ClassId(6);
  const _GUID itf = InterfaceId(6);
  const int guidBucket = DicoStore::GuidBucket(&cls, &itf);
  const int guidChainBefore = DicoStore::GuidChainForTesting(guidBucket, nullptr, 0);
  {
    ScopedAllocationLimit noMemory(0);
    StderrCapture err;
    EXPECT_EQ(nullptr, Names("Plane", "IFly", "PlaneImpl"));
    EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&cls, &itf, kFnA, nullptr));
    EXPECT_EQ(kMessage + kMessage, err.Take());
    EXPECT_TRUE(DictionaryLockIsFree());
  }
  {
    ScopedAllocationLimit nodeButNoRecord(1);
    StderrCapture err;
    EXPECT_EQ(nullptr, Names("Plane", "IFly", "PlaneImpl"));
    EXPECT_EQ(kMessage, err.Take());
    EXPECT_TRUE(DictionaryLockIsFree());
  }
  EXPECT_EQ(0, NameChainLength("Plane", "IFly"));
  EXPECT_EQ(guidChainBefore, DicoStore::GuidChainForTesting(guidBucket, nullptr, 0));

  DicoEntry* rec = Names("Plane", "IFly", "PlaneImpl");
  ASSERT_NE(nullptr, rec);
  EXPECT_EQ(1, NameChainLength("Plane", "IFly"));
  {
    ScopedAllocationLimit noMemory(0);
    // Merging into a recorded pair needs no memory.
    EXPECT_EQ(rec, Names("Plane", "IFly", nullptr, "IFlyLeaf"));
    // A record given to a GUID insert is left untouched when no node can be had.
    StderrCapture err;
    EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&cls, &itf, kFnA, rec));
    EXPECT_EQ(kMessage, err.Take());
    EXPECT_EQ(nullptr, rec->class_id);
    EXPECT_EQ(nullptr, rec->Creator());
  }
  EXPECT_STREQ("IFlyLeaf", rec->itf_leaf);
  EXPECT_EQ(rec, DicoStore::InsertByGuids(&cls, &itf, kFnA, rec));
}

TEST(DicoStoreInitializeTest, TheFirstInsertInitializesAndLaterCallsClearNothing) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";  // a fresh process for the check
  EXPECT_EXIT(
      {
        const bool before = DicoStore::IsInitialized();
        Names("Early", "IEarly");
        std::_Exit(!before && DicoStore::IsInitialized() ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");

  DicoEntry* rec = Names("Kept", "IKept");
  ASSERT_NE(nullptr, rec);
  DicoStore::Initialize();
  EXPECT_TRUE(DicoStore::IsInitialized());
  EXPECT_EQ(rec, DicoStore::FindByNames("Kept", "IKept"));
}

}  // namespace
