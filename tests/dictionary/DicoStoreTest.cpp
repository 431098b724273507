// The dictionary store's tables: bucket functions, chain order, insert-or-merge by names and by
// GUIDs with their conflict rules, and the allocation seam.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "TestSupport.h"
#include "dictionary/DicoStore.h"
#include "pools/GuidPool.h"

namespace {

using zeltest::StderrCapture;

const std::string kMessage = "Problem allocating structure dico\n";
int g_a, g_b;
void* const kFnA = &g_a;
void* const kFnB = &g_b;
const _GUID kZero = {};
const _GUID kIUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const _GUID kCls = {0x11111111, 0x2222, 0x3333, {0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 1, 2}};
const _GUID kItf = {0xAAAAAAAA, 0xBBBB, 0xCCCC, {0xDD, 0xEE, 0xFF, 0, 1, 2, 3, 4}};

DicoEntry* Names(const char* cls, const char* itf, const char* lib = nullptr,
                 const char* leaf = nullptr, const char* ext = nullptr, void* fn = nullptr,
                 DicoEntry* rec = nullptr) {
  return DicoStore::InsertByNames(cls, itf, lib, leaf, ext, fn, rec);
}

int NameChainLength(const char* cls, const char* itf) {
  return DicoStore::NameChainForTesting(DicoStore::NameBucket(cls, itf), nullptr, 0);
}

TEST(DicoStoreBucketTest, SignedBytesWeightsFromOneAndASignedRemainder) {
  EXPECT_EQ(DicoStore::NameBucket("A", "B"), 3);
  EXPECT_EQ(DicoStore::NameBucket("Foo", "IBar"), 457);
  EXPECT_EQ(DicoStore::NameBucket("", "\xE9"), 23);          // 0xE9 counts as -23
  EXPECT_EQ(DicoStore::NameBucket("abcdefghij", ""), 1569);  // 1*97 + ... + 10*106 = 5665
  // Ten 0x80 bytes: -128 * 55 = -7040, whose truncated remainder is -2944.
  EXPECT_EQ(DicoStore::NameBucket(std::string(10, '\x80').c_str(), ""), 2944);
  _GUID ones;
  std::memset(&ones, 0xFF, sizeof(ones));
  const _GUID top = {0x01000000, 0, 0, {0}};  // Data1's top byte is byte 3, of weight 4
  EXPECT_EQ(DicoStore::GuidBucket(&ones, &kZero), 136);
  EXPECT_EQ(DicoStore::GuidBucket(&kIUnknown, &kZero), 544);
  EXPECT_EQ(DicoStore::GuidBucket(&top, &kZero), 4);
}

TEST(DicoStoreChainTest, CollidingPairsAreChainedInOrderOfFirstInsertion) {
  DicoEntry* low = Names("\x17", "");
  DicoEntry* high = Names("\xE9", "", "Impl");
  ASSERT_NE(nullptr, low);
  ASSERT_NE(low, high);
  EXPECT_EQ(low, Names("\x17", "", "Impl"));
  DicoEntry* chain[4] = {};
  ASSERT_EQ(2, DicoStore::NameChainForTesting(23, chain, 4));
  EXPECT_EQ(low, chain[0]);
  EXPECT_EQ(high, chain[1]);
  EXPECT_EQ(high, DicoStore::FindByNames("\xE9", ""));
  EXPECT_EQ(low, DicoStore::FindByNames("\x17", ""));

  // Swapped GUIDs share a bucket (the sums are xor'ed): two records, appended in order.
  const int bucket = DicoStore::GuidBucket(&kItf, &kCls);
  ASSERT_EQ(bucket, DicoStore::GuidBucket(&kCls, &kItf));
  DicoEntry* forward = DicoStore::InsertByGuids(&kCls, &kItf, kFnA, nullptr);
  DicoEntry* backward = DicoStore::InsertByGuids(&kItf, &kCls, kFnB, nullptr);
  ASSERT_NE(forward, backward);
  DicoEntry* guidChain[4] = {};
  ASSERT_EQ(2, DicoStore::GuidChainForTesting(bucket, guidChain, 4));
  EXPECT_EQ(forward, guidChain[0]);
  EXPECT_EQ(backward, guidChain[1]);
  EXPECT_EQ(backward, DicoStore::FindByGuids(&kItf, &kCls));
}

// A name insert written "lib|leaf|ext|creator" (an empty part is null; the creator is A or B),
// and a record's fields written the same way.
DicoEntry* Insert(const std::string& cls, const std::string& args) {
  std::istringstream in(args);
  std::string p[4];
  for (std::string& part : p) std::getline(in, part, '|');
  auto arg = [&p](int i) { return p[i].empty() ? nullptr : p[i].c_str(); };
  void* fn = p[3] == "A" ? kFnA : p[3] == "B" ? kFnB : nullptr;
  return Names(cls.c_str(), "IMerge", arg(0), arg(1), arg(2), fn);
}
std::string Fields(const DicoEntry* r) {
  auto text = [](const char* s) { return std::string(s != nullptr ? s : ""); };
  const void* fn = r->Creator();
  return text(r->library_name) + "|" + text(r->itf_leaf) + "|" + text(r->extended_by) + "|" +
         (fn == kFnA ? "A" : "") + (fn == kFnB ? "B" : "");
}

// A second name insert on a pair merges (same record, silent) or fails (null, one message,
// nothing changed).
TEST(DicoStoreInsertByNamesTest, MergeAndConflictRules) {
  const struct {
    const char *what, *first, *second;
    bool merges;
    const char* after;
  } rows[] = {
      {"same library twice", "libFoo|||", "libFoo|||", true, "Foo|||"},
      {"cut and uncut library", "libFoo|||", "Foo|||", true, "Foo|||"},
      {"no library", "Foo|||", "|||", true, "Foo|||"},
      {"library clash", "libFoo|||", "Bar|L|E|A", false, "Foo|||"},
      {"leaf filled later", "Foo|||", "|L||", true, "Foo|L||"},
      {"ext and creator filled later", "Foo|||", "||E|A", true, "Foo||E|A"},
      {"same everything", "libF|L|E|A", "F|L|E|A", true, "F|L|E|A"},
      {"leaf clash", "|L||", "Foo|M|E|", false, "|L||"},
      {"ext clash", "||E|", "|L|F|", false, "||E|"},
      {"creator clash", "|||A", "Foo|||B", false, "|||A"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.what);
    const std::string cls = std::string("Merge ") + r.what;
    DicoEntry* rec = Insert(cls, r.first);
    ASSERT_NE(nullptr, rec);
    StderrCapture err;
    EXPECT_EQ(r.merges ? rec : nullptr, Insert(cls, r.second));
    EXPECT_EQ(r.merges ? "" : kMessage, err.Take());
    EXPECT_EQ(r.after, Fields(rec));
    EXPECT_EQ(1, NameChainLength(cls.c_str(), "IMerge"));
  }
  // Only a leading lower-case "lib" is cut, once.
  for (auto [given, stored] :
       {std::pair{"lib", ""}, {"Libfoo", "Libfoo"}, {"li", "li"}, {"liblibX", "libX"}}) {
    DicoEntry* rec = Names("LibCut", given, given);
    ASSERT_NE(nullptr, rec);
    EXPECT_STREQ(stored, rec->library_name);
  }

  // A name that cannot be interned fails after every other field was filled; as a key, it links
  // nothing. Null keys give null silently.
  const std::string tooLong(5000, 'x');
  DicoEntry* rec = Names("Truck", "ILoad");
  StderrCapture err;
  EXPECT_EQ(nullptr, Names("Truck", "ILoad", tooLong.c_str(), "L", nullptr, kFnA));
  EXPECT_EQ(nullptr, Names("Truck", tooLong.c_str()));
  EXPECT_EQ(nullptr, Names(nullptr, "ILoad", "Impl"));
  EXPECT_EQ(nullptr, Names("Truck", nullptr, "Impl"));
  EXPECT_EQ(kMessage + kMessage, err.Take());
  EXPECT_EQ("|L||A", Fields(rec));
  EXPECT_EQ(0, NameChainLength("Truck", tooLong.c_str()));
}

TEST(DicoStoreInsertByNamesTest, AGivenRecordIsLinkedOnlyWhereItCanHoldThePair) {
  DicoEntry* drive = Names("Bus", "IDrive", "BusImpl");
  ASSERT_NE(nullptr, Names("Bus", "IStop"));
  StderrCapture err;
  EXPECT_EQ(nullptr, Names("Bus", "IStop", nullptr, nullptr, nullptr, nullptr, drive));
  EXPECT_EQ(nullptr, Names("Tram", "IDrive", nullptr, nullptr, nullptr, nullptr, drive));
  EXPECT_EQ(nullptr, Names("Bus", "IPark", nullptr, nullptr, nullptr, nullptr, drive));
  EXPECT_EQ(kMessage + kMessage + kMessage, err.Take());
  EXPECT_EQ(nullptr, DicoStore::FindByNames("Tram", "IDrive"));
  EXPECT_EQ(nullptr, DicoStore::FindByNames("Bus", "IPark"));
  EXPECT_EQ(drive, Names("Bus", "IDrive", "libBusImpl", nullptr, nullptr, nullptr, drive));

  // A record known only by GUIDs gains the names and becomes reachable by them.
  DicoEntry* byGuids = DicoStore::InsertByGuids(&kCls, &kItf, kFnA, nullptr);
  EXPECT_EQ(byGuids, Names("Bus", "IGuid", "libBusImpl", nullptr, nullptr, kFnA, byGuids));
  EXPECT_EQ("BusImpl|||A", Fields(byGuids));
  EXPECT_EQ(byGuids, DicoStore::FindByNames("Bus", "IGuid"));
}

TEST(DicoStoreInsertByGuidsTest, TheCreatorIsDefendedAndNullIdentifiersAreSetEvenOnFailure) {
  DicoEntry* rec = DicoStore::InsertByGuids(&kCls, &kItf, kFnA, nullptr);
  ASSERT_NE(nullptr, rec);
  const _GUID classCopy = kCls;
  DicoEntry* named = Names("Boat", "ISail");
  // Records owned by the test, never linked, each with one field that clashes.
  static DicoEntry clashingClass{};
  clashingClass.class_id = GuidPool::Intern(&kIUnknown);
  static DicoEntry clashingCreator{};
  clashingCreator.creator.store(kFnB);

  StderrCapture err;
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&kCls, &kZero, nullptr, nullptr));
  EXPECT_EQ(rec, DicoStore::InsertByGuids(&classCopy, &kItf, kFnA, nullptr));
  EXPECT_EQ(rec, DicoStore::InsertByGuids(&kCls, &kItf, kFnA, rec));
  EXPECT_EQ("", err.Take());
  StderrCapture failures;
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&kCls, &kItf, kFnB, nullptr));
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&kCls, &kItf, kFnA, named));
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&kCls, &kZero, kFnA, &clashingClass));
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&kZero, &kItf, kFnA, &clashingCreator));
  EXPECT_EQ(kMessage + kMessage + kMessage + kMessage, failures.Take());

  EXPECT_EQ(kFnA, rec->Creator());
  EXPECT_EQ(nullptr, named->class_id);
  EXPECT_EQ(nullptr, named->Creator());
  EXPECT_EQ(GuidPool::Intern(&kIUnknown), clashingClass.class_id);
  EXPECT_EQ(GuidPool::Intern(&kZero), clashingClass.interface_id);
  EXPECT_EQ(GuidPool::Intern(&kZero), clashingCreator.class_id);
  EXPECT_EQ(GuidPool::Intern(&kItf), clashingCreator.interface_id);
  EXPECT_EQ(nullptr, DicoStore::FindByGuids(&kCls, &kZero));
}

// True when another thread can take the dictionary lock right now.
bool DictionaryLockIsFree() {
  bool free = false;
  std::thread([&free] {
    pthread_mutex_t* mutex = DicoStore::DictionaryLock().Handle();
    free = pthread_mutex_trylock(mutex) == 0 && pthread_mutex_unlock(mutex) == 0;
  }).join();
  return free;
}

// The store may allocate this many more blocks, then gets null.
int g_allocations_left = 0;
void* AllocateWhileAllowed(size_t size) {
  return g_allocations_left-- > 0 ? std::calloc(1, size) : nullptr;
}

TEST(DicoStoreAllocationTest, AnInsertWithoutMemoryFailsCleanly) {
  const int guidBucket = DicoStore::GuidBucket(&kCls, &kItf);
  DicoStore::SetAllocatorForTesting(&AllocateWhileAllowed);
  for (int allowed : {0, 1}) {  // no node; a node but no record
    g_allocations_left = allowed;
    StderrCapture err;
    EXPECT_EQ(nullptr, Names("Plane", "IFly", "PlaneImpl"));
    g_allocations_left = allowed;
    EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&kCls, &kItf, kFnA, nullptr));
    EXPECT_EQ(kMessage + kMessage, err.Take());
    EXPECT_TRUE(DictionaryLockIsFree());
  }
  EXPECT_EQ(0, NameChainLength("Plane", "IFly"));
  EXPECT_EQ(0, DicoStore::GuidChainForTesting(guidBucket, nullptr, 0));

  g_allocations_left = 2;
  DicoEntry* rec = Names("Plane", "IFly", "PlaneImpl");
  ASSERT_NE(nullptr, rec);
  EXPECT_EQ(rec, Names("Plane", "IFly", nullptr, "IFlyLeaf"));  // a merge needs no memory
  StderrCapture err;
  EXPECT_EQ(nullptr, DicoStore::InsertByGuids(&kCls, &kItf, kFnA, rec));
  EXPECT_EQ(kMessage, err.Take());
  EXPECT_EQ("PlaneImpl|IFlyLeaf||", Fields(rec));
  EXPECT_EQ(nullptr, rec->class_id);
  DicoStore::SetAllocatorForTesting(nullptr);
  EXPECT_EQ(rec, DicoStore::InsertByGuids(&kCls, &kItf, kFnA, rec));
  EXPECT_EQ(1, NameChainLength("Plane", "IFly"));
}

}  // namespace
