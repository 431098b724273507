// Creating objects in other libraries, by class name and by class identifier, through zelimpl
// loaded by name; the object model's own library stands for one without the functions looked for.
#include <gtest/gtest.h>

#include <cstdint>
#include <tuple>

#include "LibraryManagerCounter.h"
#include "TestSupport.h"
#include "ZELSysTSObjectModeler.h"

namespace {

TEST(CoreCreation, ByNameTheRecordedCreatorComesFirstByIdentifierTheListedGetterAnswers) {
  zeltest::DictionaryPath dir;
  dir.Write("core.dicts", "CoreBare CreateInterface zelimpl\n");
  dir.Write("core.clsidts",
            "{5A1E0001-0C0E-4A11-9001-102030405060} CoreWidget zelimpl\n"
            "{5A1E0002-0C0E-4A11-9001-102030405060} CoreNoLibrary\n"
            "{5A1E0003-0C0E-4A11-9001-102030405060} CoreNoGetter ZELSysTSObjectModeler\n");
  // Called as the type it is recorded with, the argument in its first parameter.
  const ZELSysTSFillDictionary record(
      "CoreGadget", "CreateInterface",
      [](ZELSysTSBaseUnknown* arg, unsigned char) { return reinterpret_cast<IUnknown*>(arg); });
  int argument = 0;
  // Class name, library, whether the object is made, function lookups.
  const std::tuple<const char*, const char*, bool, unsigned long> cases[] = {
      {nullptr, "zelimpl", false, 0},
      {"CoreGadget", nullptr, true, 0},                  // the record's creator...
      {"CoreGadget", "ZELSysTSObjectModeler", true, 0},  // ...before any library
      {"CoreBare", nullptr, true, 1},                    // the record names the library
      {"CoreBare", "ZELSysTSObjectModeler", false, 1},   // the caller's library comes first
      {"CoreMissing", "zelimpl", false, 1},
      {"CoreNothing", nullptr, false, 0},
  };
  for (const auto& [className, library, made, lookups] : cases) {
    SCOPED_TRACE(::testing::Message()
                 << (className ? className : "null") << " in " << (library ? library : "null"));
    const unsigned long before = zeltest::FunctionLookups();
    EXPECT_EQ(ZELSysTSCreateExternalObject(className, library, &argument),
              made ? &argument : nullptr);
    EXPECT_EQ(zeltest::FunctionLookups() - before, lookups);
  }

  // By class identifier: the getter of the library listed for the class answers.
  const _GUID iid = {0x1F0E0001, 0xAB01, 0x4C22, {0x81, 0x02, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F}};
  _GUID clsid = {0x5A1E0001, 0x0C0E, 0x4A11, {0x90, 0x01, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60}};
  void* out = &out;
  EXPECT_EQ(ZELSysTSCreateInstance(clsid, iid, &out), 0x01);
  EXPECT_EQ(out, reinterpret_cast<void*>(static_cast<uintptr_t>(iid.Data1)));
  // Listed without a library; listed with a library without the getter; not listed.
  for (uint32_t first : {0x5A1E0002u, 0x5A1E0003u, 0x5A1E0004u}) {
    clsid.Data1 = first;
    out = &out;
    EXPECT_TRUE(ZELSysTSCreateInstance(clsid, iid, &out) == E_FAIL && out == &out);
  }
}

}  // namespace
