// The three line readers: what each accepts, its messages byte for byte, and what it enters.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "dictionary/ClsidTable.h"
#include "dictionary/DicoStore.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DictionaryReaders.h"

// GUID texts as literals, so that expected messages read byte for byte.
#define GUID_A "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5}"
#define GUID_B "{F5E4D3C2-B1A0-9F8E-7D6C-5B4A3F2E1D0C}"
#define GUID_U "{00000000-0000-0000-C000-000000000046}"

namespace {

// "library leaf extended_by" of a store entry, "-" for a null name; "none" for no entry.
std::string Describe(const DicoEntry* e) {
  if (e == nullptr) return "none";
  auto text = [](const char* t) { return std::string(t != nullptr ? t : "-"); };
  return text(e->library_name) + " " + text(e->itf_leaf) + " " + text(e->extended_by);
}

TEST(Readers, EachLineGivesItsResultAndMessages) {
  ZELSysTSDicReader dic;
  ZELSysTSIidReader iid;
  ZELSysTSClsidReader cls;
  // Rows run in order against the same tables: later rows meet what earlier rows entered. Each
  // line is handed over split on spaces, as line 7 of "/d/x".
  const struct {
    ZELSysTSDictionaryReader* reader;
    std::string line;
    HRESULT result;
    std::string err;
  } rows[] = {
      {&dic, "Bad", E_FAIL, "Problem reading dico : /d/x line 7\n"},
      {&dic, "Bad IBad", E_FAIL, "Problem reading dico : /d/x line 7\n"},
      {&dic, "Bad IBad Lib ITFLEAF", E_FAIL, "Problem reading dico : /d/x line 7\n"},
      {&dic, "Bad IBad Lib itfleaf L", E_FAIL, "Problem reading dico : /d/x line 7\n"},
      {&dic, "Vehicle IVehicle libVehicleImpl", S_OK, ""},
      {&dic, "Vehicle IPrintable VehicleImpl ITFLEAF ILeaf", S_OK, ""},
      {&dic, "Vehicle IPersist PersistImpl EXTENDED_BY Ext", S_OK, ""},
      // The store refuses with its own message; the line is not rejected.
      {&dic, "Vehicle IVehicle OtherImpl", S_OK, "Problem allocating structure dico\n"},
      {&iid, GUID_A, E_FAIL, "Error in IId dictionary /d/x line 7\n"},
      {&iid, GUID_A " IVehicle #x", E_FAIL, "Error in IId dictionary /d/x line 7\n"},
      {&iid, "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5 IVehicle", E_FAIL,
       "Error in dictionary /d/x line 7\nInvalid iid :{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5\n\n"},
      {&iid, GUID_A " IVehicle", S_OK, ""},
      {&iid, GUID_A " IVehicle", S_OK, ""},
      {&iid, GUID_B " IOther", S_OK, ""},
      {&iid, GUID_A " ITruck", E_FAIL,
       "Error in dictionary /d/x line 7\nCan not add interface '" GUID_A " ITruck'\n"
       "The iid is already defined with interface name 'IVehicle'\nCheck dictionaries.\n\n"},
      {&iid, GUID_U " IVehicle", E_FAIL,
       "Error in dictionary /d/x line 7\nCan not add interface '" GUID_U " IVehicle'\n"
       "The interface name is already defined with another iid\n"},
      // Both conflicts at once: the IID's name is the one reported.
      {&iid, GUID_A " IOther", E_FAIL,
       "Error in dictionary /d/x line 7\nCan not add interface '" GUID_A " IOther'\n"
       "The iid is already defined with interface name 'IVehicle'\nCheck dictionaries.\n\n"},
      {&cls, GUID_A, E_FAIL, "Problem reading dico name /d/x line 7\n"},
      {&cls, GUID_A " Vehicle Lib x", E_FAIL, "Problem reading dico name /d/x line 7\n"},
      {&cls, GUID_A "x Vehicle", E_FAIL, "Problem converting CLSID in /d/x line 7\n"},
      {&cls, GUID_A " Vehicle", S_OK, ""},
      {&cls, GUID_A " Vehicle VehicleImpl", S_OK, ""},
      {&cls, GUID_B " Truck libTruckImpl", S_OK, ""},
      {&cls, GUID_B " Truck", S_OK, ""},
      {&cls, GUID_A " Car", E_FAIL,
       "Error in dictionary /d/x line 7\nCan not add class 'Car " GUID_A " (null)'\n"},
      {&cls, GUID_B " Truck TruckImpl", E_FAIL,
       "Error in dictionary /d/x line 7\nCan not add class 'Truck " GUID_B " TruckImpl'\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    std::string text = row.line;  // the readers get writable fields
    char* fields[5] = {};
    int count = 0;
    for (char* p = std::strtok(text.data(), " "); p != nullptr; p = std::strtok(nullptr, " ")) {
      fields[count++] = p;
    }
    zeltest::StderrCapture err;
    EXPECT_EQ(row.result, row.reader->ProcessLine(fields, count, "/d/x", 7));
    EXPECT_EQ(row.err, err.Take());
  }

  EXPECT_EQ("none", Describe(DicoStore::FindByNames("Bad", "IBad")));
  EXPECT_EQ("VehicleImpl - -", Describe(DicoStore::FindByNames("Vehicle", "IVehicle")));
  EXPECT_EQ("VehicleImpl ILeaf -", Describe(DicoStore::FindByNames("Vehicle", "IPrintable")));
  EXPECT_EQ("PersistImpl - Ext", Describe(DicoStore::FindByNames("Vehicle", "IPersist")));
  const _GUID vehicle = {
      0x0C1D2E3F, 0x4A5B, 0x6C7D, {0x8E, 0x9F, 0xA0, 0xB1, 0xC2, 0xD3, 0xE4, 0xF5}};
  EXPECT_STREQ("IVehicle", IidTable::FindName(vehicle));
  EXPECT_EQ(nullptr, IidTable::FindIid("ITruck"));
  const ClsidEntry* entry = ClsidTable::Find(vehicle);
  ASSERT_NE(nullptr, entry);
  EXPECT_STREQ("Vehicle", entry->class_name);
  EXPECT_EQ(nullptr, entry->library_name);
}

}  // namespace
